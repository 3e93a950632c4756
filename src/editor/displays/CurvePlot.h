#pragma once
// Drawing shared by the small curve pictures: each samples a function of the x
// pixel every quarter pixel, from 0 up to and including the width, and maps a
// normalised height (1 at the top) into the picture with room for the stroke.

#include <juce_graphics/juce_graphics.h>

#include <cmath>

namespace oxa::CurvePlot
{
constexpr float step = 0.25f;

inline float yFor(float normalisedHeight, float height) noexcept
{
    return (1.0f - normalisedHeight) * (height - 5.0f) + 2.5f;
}

// Frequency in hertz at pixel x on a log axis from 20 Hz to 20 kHz across the width.
inline float logFrequency(float x, float width) noexcept
{
    return 20.0f * std::pow(10.0f, 3.0f * x / width);
}

// The polyline of heightAt(x): a move to the first point, lines to the rest.
template <class HeightAt>
juce::Path trace(float width, float height, HeightAt&& heightAt)
{
    juce::Path path;
    const int last = static_cast<int>(std::floor(width / step));
    path.preallocateSpace(3 * (last + 1));
    for (int i = 0; i <= last; ++i)
    {
        const float x = static_cast<float>(i) * step;
        const float y = yFor(heightAt(x), height);
        if (i == 0)
            path.startNewSubPath(x, y);
        else
            path.lineTo(x, y);
    }
    return path;
}

// A curve kept between paints: rebuilt only after invalidate() or at a new size,
// so a picture that is merely uncovered again costs a stroke, not its maths.
class CachedCurve
{
public:
    void invalidate() noexcept { stale = true; }

    template <class Make>
    const juce::Path& get(float width, float height, Make&& make)
    {
        if (stale || width != builtWidth || height != builtHeight)
        {
            path = make();
            builtWidth = width;
            builtHeight = height;
            stale = false;
        }
        return path;
    }

private:
    juce::Path path;
    float builtWidth = -1.0f, builtHeight = -1.0f;
    bool stale = true;
};

void stroke(juce::Graphics& g, const juce::Path& path, juce::Colour colour, float thickness);

// Faint reference lines behind a curve: the decades 100 Hz, 1 kHz and 10 kHz of
// the log frequency axis, and one level (0 dB, or zero) as a normalised height.
void drawFrequencyGrid(juce::Graphics& g, float width, float height);
void drawLevelLine(juce::Graphics& g, float width, float height, float normalisedHeight);
} // namespace oxa::CurvePlot
