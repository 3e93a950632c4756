#include "editor/CompanderSection.h"

namespace oxa
{
CompanderSection::CompanderSection(EngineProxy* proxy)
    : BoundPanel(proxy, layout::companderSection(), sectionStyle())
{
    const layout::Box& b = layout::companderSection().bounds;
    setBounds(b.x, b.y, b.w, b.h);
    linkView = std::make_unique<ElementParameterValue<bool>>(
        proxy, effectPath(), parameterIdByName("NRLink"), [this](bool linked) {
            if (ParamComboBox* decoder = comboBox("NoiseReductionDecoder"))
                decoder->setVisible(!linked);
        });
}

CompanderSection::~CompanderSection()
{
    linkView.reset();
}
} // namespace oxa
