#include "editor/displays/MagneticWaveformDisplay.h"

#include "editor/displays/CurvePlot.h"
#include "editor/displays/ParameterWatch.h"
#include "tape/FluxDeckParameters.h"
#include "tape/TapeControls.h"

#include <cmath>

namespace oxa
{
namespace
{
constexpr float twoCycles = 12.566370964050293f; // 4 pi: two periods across the width
}

MagneticWaveformDisplay::MagneticWaveformDisplay()
{
    setInterceptsMouseClicks(false, false);
    model.noiseLevel = 0.0; // the picture shows the law, not the hiss
}

MagneticWaveformDisplay::~MagneticWaveformDisplay() = default;

void MagneticWaveformDisplay::bind(EngineProxy* proxy, const String& elementPath)
{
    const auto& id = FluxDeckParameters::ids();
    watch.reset();
    watch = std::make_unique<ParameterWatch>(
        proxy, elementPath, std::initializer_list<unsigned>{id.magneticHardness, id.hysteresis, id.applyRecordHead},
        [this](const ParameterWatch& w) { setValues({w[0], w[1], w[2] != 0.0f}); });
}

void MagneticWaveformDisplay::setValues(const Values& newValues)
{
    if (newValues == values)
        return;
    values = newValues;
    curve.invalidate();
    repaint();
}

std::vector<float> MagneticWaveformDisplay::heights(float width)
{
    std::vector<float> result;
    if (!(width > 0.0f))
        return result;
    const int last = static_cast<int>(std::floor(width / CurvePlot::step));
    result.resize(static_cast<std::size_t>(last) + 1);
    auto sine = [width](int i) { return std::sin(static_cast<float>(i) * CurvePlot::step * twoCycles / width); };

    if (!values.applyRecordHead)
    {
        for (int i = 0; i <= last; ++i)
            result[static_cast<std::size_t>(i)] = 0.5f + 0.5f * sine(i);
        return result;
    }

    // A quarter pixel a sample at 1000 samples a second per pixel: the two cycles
    // are a 500 Hz tone at any width, so the picture does not change with its size.
    model.on = 1;
    model.a = TapeControls::recordHardness(values.magneticHardness);
    model.k = TapeControls::recordResistance(values.hysteresis);
    model.prepare(1000.0 * width);
    for (int i = 0; i <= last; ++i)
        model.process(sine(i));
    for (int i = 0; i <= last; ++i)
    {
        const double out = model.process(sine(i));
        result[static_cast<std::size_t>(i)] = std::isfinite(out) ? 0.5f + 0.5f * static_cast<float>(out) : 0.5f;
    }
    return result;
}

void MagneticWaveformDisplay::paint(juce::Graphics& g)
{
    const auto width = static_cast<float>(getWidth());
    const auto height = static_cast<float>(getHeight());
    if (width <= 0.0f || height <= 0.0f)
        return;
    CurvePlot::drawLevelLine(g, width, height, 0.5f);
    const juce::Path& path = curve.get(width, height, [&] {
        const std::vector<float> points = heights(width);
        std::size_t next = 0;
        return CurvePlot::trace(width, height, [&](float) { return points[next++]; });
    });
    CurvePlot::stroke(g, path, juce::Colour(curveColour), 2.0f);
}
} // namespace oxa
