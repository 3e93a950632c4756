#pragma once
// Where the second deck's tape sits against the first: two sine cycles, deck one
// at the nominal delay, deck two moved by the live flange position (and turned
// over with phase invert). At position 0, where both decks read the same delay,
// the two coincide; at -1 and 1 deck two leads or trails by the whole depth.

#include <juce_gui_basics/juce_gui_basics.h>

#include <memory>

namespace oxa
{
class EngineProxy;
class ParameterWatch;
class ProcessorLink;
class String;

class FlangeDisplay : public juce::Component, private juce::Timer
{
public:
    struct Values
    {
        float maxRelativeDelay = 0.005f;
        bool phaseInvert = false;
        float flangePosition = 0.0f; // -1..1, live from the processor

        bool operator==(const Values& o) const
        {
            return maxRelativeDelay == o.maxRelativeDelay && phaseInvert == o.phaseInvert
                && flangePosition == o.flangePosition;
        }
    };

    static constexpr juce::uint32 firstDeckColour = 0xFFBABABA;
    static constexpr juce::uint32 secondDeckColour = 0xFF906AAE;
    static constexpr int refreshMilliseconds = 20;

    FlangeDisplay();
    ~FlangeDisplay() override;

    // Follows the two parameters and, every 20 ms while the processor exists, its
    // flange position.
    void bind(EngineProxy* proxy, const String& elementPath);

    void setValues(const Values& newValues);
    const Values& getValues() const noexcept { return values; }

    // How far right each deck's cycle is moved, in pixels. Phase invert turns deck
    // two's sine over, which for a sine is a shift by half its period.
    static float firstDeckShift(const Values& values, float width);
    static float secondDeckShift(const Values& values, float width);
    static float firstDeckHeightAt(const Values& values, float x, float width);
    static float secondDeckHeightAt(const Values& values, float x, float width);

    void paint(juce::Graphics& g) override;

private:
    void timerCallback() override;
    // Each deck's curve is the same sine moved sideways: it is drawn once into a
    // strip one period wider than the picture, and each frame only places the strip.
    void prepareStrips(int width, int height, float scale);
    /** Where a deck's strip is drawn for its shift, in whole device pixels of the last paint. */
    float stripOffset(float shift, float width) const;
    void drawStrip(juce::Graphics& g, const juce::Image& strip, float shift, float width) const;

    Values values;
    juce::Image deckOneStrip, deckTwoStrip;
    int stripWidth = 0, stripHeight = 0;
    float stripScale = 0.0f;
    std::unique_ptr<ParameterWatch> watch;
    std::unique_ptr<ProcessorLink> processor;
};
} // namespace oxa
