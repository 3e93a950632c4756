#include "editor/CompanderSection.h"

#include "editor/widgets/BoxArt.h"

namespace oxa
{
void LinkedDecoderBox::setLinked(bool isLinked)
{
    linked = isLinked;
    setTooltip(linked ? "Decoder linked to the encoder" : "");
    repaint();
}

void LinkedDecoderBox::paint(juce::Graphics& g)
{
    boxArt::drawComboBox(g, getLocalBounds().toFloat(), !linked);
    if (!linked)
        return;
    // Where a combo box's label would put it, a shade lighter: a reading, not a menu.
    // Read at paint time, so it is the encoder's text after every change has landed.
    g.setColour(juce::Colour(layout::legendColour).withAlpha(0.45f));
    g.setFont(getLookAndFeel().getComboBoxFont(const_cast<juce::ComboBox&>(encoder)));
    g.drawFittedText(getLinkedText(), boxArt::comboBoxTextBorder(getWidth()).subtractedFrom(getLocalBounds()),
                     juce::Justification::centred, 1, boxArt::comboBoxTextSqueeze);
}

CompanderSection::CompanderSection(EngineProxy* proxy)
    : BoundPanel(proxy, layout::companderSection(), sectionStyle())
{
    const layout::Box& b = layout::companderSection().bounds;
    setBounds(b.x, b.y, b.w, b.h);
    decoderBox = std::make_unique<LinkedDecoderBox>(*comboBox("NoiseReductionEncoder"));
    const layout::Box& d = table().at(layout::Kind::comboBox, "NoiseReductionDecoder").bounds;
    decoderBox->setBounds(d.x, d.y, d.w, d.h);
    addAndMakeVisible(*decoderBox);
    decoderBox->toBack(); // under the live combo box

    linkView = std::make_unique<ElementParameterValue<bool>>(proxy, effectPath(), parameterIdByName("NRLink"),
                                                             [this](bool linked) { showLink(linked); });
    encoderView = std::make_unique<ElementParameterValue<int>>(
        proxy, effectPath(), parameterIdByName("NoiseReductionEncoder"), [this](int) { decoderBox->repaint(); });
}

CompanderSection::~CompanderSection()
{
    encoderView.reset();
    linkView.reset();
}

void CompanderSection::showLink(bool linked)
{
    if (ParamComboBox* decoder = comboBox("NoiseReductionDecoder"))
        decoder->setVisible(!linked);
    decoderBox->setLinked(linked);
}
} // namespace oxa
