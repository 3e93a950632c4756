#pragma once
// Noise reduction: encoder, decoder and their link. While linked the encoder's choice
// drives the decoder too, so the decoder's box stops being a menu and shows, greyed,
// the type the decoder follows.

#include "editor/BoundPanel.h"

#include <memory>

namespace oxa
{
/** The decoder's box, drawn by the panel so that it can change with the link: under
    the live combo box it is the usual box with its arrow; while linked it has no
    arrow and shows the encoder's choice. */
class LinkedDecoderBox : public juce::Component, public juce::SettableTooltipClient
{
public:
    /** The box whose choice it shows while linked; it must outlive this one. */
    explicit LinkedDecoderBox(const juce::ComboBox& encoder) : encoder(encoder) {}

    void setLinked(bool isLinked);
    bool isLinked() const { return linked; }
    /** What it shows while linked: the encoder's choice as the encoder's box shows it. */
    juce::String getLinkedText() const { return encoder.getText(); }

    void paint(juce::Graphics& g) override;

private:
    const juce::ComboBox& encoder;
    bool linked = false;
};

class CompanderSection : public BoundPanel
{
public:
    explicit CompanderSection(EngineProxy* proxy);
    ~CompanderSection() override;

    const LinkedDecoderBox& getDecoderBox() const { return *decoderBox; }

private:
    void showLink(bool linked);

    std::unique_ptr<LinkedDecoderBox> decoderBox;
    std::unique_ptr<ElementParameterValue<bool>> linkView;
    std::unique_ptr<ElementParameterValue<int>> encoderView;
};
} // namespace oxa
