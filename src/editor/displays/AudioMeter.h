#pragma once
// One channel of the processor's output as a narrow vertical bar, -70 to +6 dB.
// The peaks come from the audio thread without a lock; the bar jumps up at once
// and falls 20 dB a second, as a studio peak meter does, with a short peak hold.

#include <juce_gui_basics/juce_gui_basics.h>

#include <memory>

namespace oxa
{
class EngineProxy;
class ProcessorLink;
class String;

// Draws the bar; its colours are those of the AudioMeter that holds it.
class AudioMeterVU : public juce::Component
{
public:
    AudioMeterVU();

    void setLevels(float levelDecibels, float holdDecibels);

    // Share of the bar's height for a level: -70..6 dB map to 0..1.
    static float proportionOf(float decibels);

    void paint(juce::Graphics& g) override;

private:
    juce::Colour colourOf(int colourId) const;

    float level = 0.0f, hold = 0.0f; // as proportions
};

class AudioMeter : public juce::Component, private juce::Timer
{
public:
    enum ColourIds
    {
        backgroundColourId = 0x20022000,
        overColourId = 0x20022004,
        levelColourId = 0x20022006,
        notchColourId = 0x20022007
    };

    static constexpr float floorDecibels = -70.0f;
    static constexpr float ceilingDecibels = 6.0f;
    static constexpr float fallDecibelsPerSecond = 20.0f;
    static constexpr float holdSeconds = 1.5f;
    static constexpr int refreshMilliseconds = 20;

    explicit AudioMeter(int channel);
    ~AudioMeter() override;

    // Reads the output of the processor at the path from now on.
    void bind(EngineProxy* proxy, const String& elementPath);

    // One reading: the linear peak since the last one, `seconds` after it.
    void addPeak(float linearPeak, float seconds);
    float getShownDecibels() const noexcept { return shown; }
    float getHoldDecibels() const noexcept { return held; }

    void resized() override;

private:
    void timerCallback() override;

    const int channel;
    float shown = floorDecibels;
    float held = floorDecibels;
    float heldFor = 0.0f;
    double lastTick = 0.0;
    AudioMeterVU vu;
    std::unique_ptr<ProcessorLink> processor;
};
} // namespace oxa
