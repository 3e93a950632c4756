#include "editor/displays/RecordResponseDisplay.h"

#include "tape/FluxDeckParameters.h"
#include "tape/RecordHead.h"
#include "tape/TapeControls.h"

#include <cmath>

namespace oxa
{
void RecordResponseDisplay::bind(EngineProxy* proxy, const String& elementPath)
{
    const auto& id = FluxDeckParameters::ids();
    follow(proxy, elementPath, {id.magneticHardness, id.hysteresis, id.applyRecordHead},
           [](const ParameterWatch& w) { return Values {w[0], w[1], w[2] != 0.0f}; });
}

float RecordResponseDisplay::decibelsAt(const Values& v, float frequency)
{
    if (!v.applyRecordHead)
        return 0.0f;
    const double gain = RecordHead::smallSignalGain(frequency, TapeControls::recordHardness(v.magneticHardness),
                                                    TapeControls::recordResistance(v.hysteresis));
    return gain < 1e-20 ? -400.0f : static_cast<float>(20.0 * std::log10(gain));
}
} // namespace oxa
