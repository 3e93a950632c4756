#include "editor/SectionPanels.h"

namespace oxa
{
namespace
{
WidgetStyle sectionStyle(juce::Justification comboJustification = juce::Justification::centred)
{
    WidgetStyle style;
    style.knobValuePopup = true; // no value labels here: the bubble shows the value
    style.comboJustification = comboJustification;
    return style;
}

void place(juce::Component& c, const layout::Panel& table)
{
    c.setBounds(table.bounds.x, table.bounds.y, table.bounds.w, table.bounds.h);
}
} // namespace

TapeSection::TapeSection(EngineProxy* proxy) : BoundPanel(proxy, layout::tapeSection(), sectionStyle())
{
    place(*this, table());
}

PlaybackSection::PlaybackSection(EngineProxy* proxy) : BoundPanel(proxy, layout::playbackSection(), sectionStyle())
{
    place(*this, table());
}

TransportSection::TransportSection(EngineProxy* proxy)
    : BoundPanel(proxy, layout::transportSection(), sectionStyle())
{
    place(*this, table());
}

CompanderSection::CompanderSection(EngineProxy* proxy)
    : BoundPanel(proxy, layout::companderSection(), sectionStyle())
{
    place(*this, table());
    // With the link on the encoder's choice drives the decoder too, so its box goes.
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
