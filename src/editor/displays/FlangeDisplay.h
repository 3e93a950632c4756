#pragma once
// Where the second deck's tape sits against the first: two sine cycles, deck one
// at the nominal delay, deck two moved by the live flange position (and turned
// over with phase invert). At position -1 the two coincide.

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

    static float firstDeckHeightAt(const Values& values, float x, float width);
    static float secondDeckHeightAt(const Values& values, float x, float width);

    void paint(juce::Graphics& g) override;

private:
    void timerCallback() override;

    Values values;
    std::unique_ptr<ParameterWatch> watch;
    std::unique_ptr<ProcessorLink> processor;
};
} // namespace oxa
