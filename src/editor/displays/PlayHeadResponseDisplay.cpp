#include "editor/displays/PlayHeadResponseDisplay.h"

#include "tape/Decibels.h"
#include "tape/FluxDeckParameters.h"
#include "tape/TapeControls.h"

namespace oxa
{
void PlayHeadResponseDisplay::bind(EngineProxy* proxy, const String& elementPath)
{
    const auto& id = FluxDeckParameters::ids();
    follow(proxy, elementPath,
           {id.speed, id.spacing, id.thickness, id.azimuth, id.trackWidthRatio, id.applyPlayheadFilter},
           [](const ParameterWatch& w) { return Values {w[0], w[1], w[2], w[3], w[4], w[5] != 0.0f}; });
}

float PlayHeadResponseDisplay::decibelsAt(const Values& v, float frequency)
{
    if (!v.applyPlayheadFilter)
        return 0.0f;
    const PlaybackHeadSettings head =
        TapeControls::playbackHead(v.speed, v.spacing, v.thickness, v.azimuth, v.trackWidthRatio);
    return linearToDb(static_cast<float>(PlaybackHeadResponse::magnitude(frequency, head)));
}
} // namespace oxa
