#include "editor/displays/AudioMeter.h"

#include "editor/displays/ProcessorLink.h"
#include "tape/Decibels.h"
#include "tape/FluxDeckProcessor.h"

#include <algorithm>
#include <cmath>

namespace oxa
{
AudioMeterVU::AudioMeterVU()
{
    setInterceptsMouseClicks(false, false);
}

float AudioMeterVU::proportionOf(float decibels)
{
    const float clamped = std::clamp(decibels, AudioMeter::floorDecibels, AudioMeter::ceilingDecibels);
    return (clamped - AudioMeter::floorDecibels) / (AudioMeter::ceilingDecibels - AudioMeter::floorDecibels);
}

void AudioMeterVU::setLevels(float levelDecibels, float holdDecibels)
{
    const float nextLevel = proportionOf(levelDecibels), nextHold = proportionOf(holdDecibels);
    // Repaint only when a pixel would change.
    const auto h = static_cast<float>(getHeight());
    if (std::round(nextLevel * h) == std::round(level * h) && std::round(nextHold * h) == std::round(hold * h))
        return;
    level = nextLevel;
    hold = nextHold;
    repaint();
}

juce::Colour AudioMeterVU::colourOf(int colourId) const
{
    if (auto* meter = getParentComponent())
        return meter->findColour(colourId);
    return findColour(colourId);
}

void AudioMeterVU::paint(juce::Graphics& g)
{
    const auto width = static_cast<float>(getWidth());
    const auto height = static_cast<float>(getHeight());
    g.fillAll(colourOf(AudioMeter::backgroundColourId));

    const float zeroDb = proportionOf(0.0f);
    const float top = height * (1.0f - level);
    const float zeroY = height * (1.0f - zeroDb);
    g.setColour(colourOf(AudioMeter::levelColourId));
    g.fillRect(0.0f, std::max(top, zeroY), width, height - std::max(top, zeroY));
    if (top < zeroY)
    {
        g.setColour(colourOf(AudioMeter::overColourId));
        g.fillRect(0.0f, top, width, zeroY - top);
    }

    // Notches every 10 dB break the bar into segments.
    g.setColour(colourOf(AudioMeter::notchColourId));
    for (float db = 0.0f; db > AudioMeter::floorDecibels; db -= 10.0f)
        g.fillRect(0.0f, std::round(height * (1.0f - proportionOf(db))), width, 1.0f);

    if (hold > level && hold > 0.0f)
    {
        g.setColour(colourOf(hold > zeroDb ? AudioMeter::overColourId : AudioMeter::levelColourId).darker(0.3f));
        g.fillRect(0.0f, std::round(height * (1.0f - hold)), width, 1.0f);
    }
}

AudioMeter::AudioMeter(int channelIndex) : channel(channelIndex)
{
    setColour(backgroundColourId, juce::Colours::white);
    setColour(overColourId, juce::Colour(0xFF906AAE));
    setColour(levelColourId, juce::Colour(0xFFA3A3A3));
    setColour(notchColourId, juce::Colours::white);
    setInterceptsMouseClicks(false, false);
    addAndMakeVisible(vu);
}

AudioMeter::~AudioMeter()
{
    stopTimer();
}

void AudioMeter::bind(EngineProxy* proxy, const String& elementPath)
{
    processor.reset();
    processor = std::make_unique<ProcessorLink>(proxy, elementPath, [this](bool present) {
        if (present)
        {
            lastTick = juce::Time::getMillisecondCounterHiRes();
            startTimer(refreshMilliseconds);
        }
        else
        {
            stopTimer();
            addPeak(0.0f, 1000.0f); // nothing plays: the bar drops
        }
    });
}

void AudioMeter::addPeak(float linearPeak, float seconds)
{
    const float elapsed = std::max(0.0f, seconds);
    const float incoming = linearToDb(linearPeak);
    shown = std::max(incoming, shown - fallDecibelsPerSecond * elapsed);
    shown = std::clamp(shown, floorDecibels, ceilingDecibels);

    heldFor += elapsed;
    if (shown >= held)
    {
        held = shown;
        heldFor = 0.0f;
    }
    else if (heldFor > holdSeconds)
        held = std::max(shown, held - fallDecibelsPerSecond * elapsed);
    vu.setLevels(shown, held);
}

void AudioMeter::timerCallback()
{
    const double now = juce::Time::getMillisecondCounterHiRes();
    const auto seconds = static_cast<float>((now - lastTick) * 0.001);
    lastTick = now;
    const auto live = processor != nullptr ? processor->lock() : nullptr;
    const float peak = live != nullptr ? live->outputLevels.take(static_cast<std::uint32_t>(channel)) : 0.0f;
    addPeak(peak, seconds);
}

void AudioMeter::resized()
{
    vu.setBounds(getLocalBounds());
}
} // namespace oxa
