#include "engine/HostTransport.h"

#include <cmath>

namespace oxa
{
bool HostTransportTracker::update(const std::optional<HostPosition>& host, int numSamples, double sampleRate,
                                  bool offline, TransportInfo& out)
{
    if (!host.has_value())
        return false;

    TransportInfo t;
    t.tempo = (float) host->bpm.value_or(120.0);
    if (host->numerator && host->denominator)
    {
        t.numerator = *host->numerator;
        t.denominator = *host->denominator;
    }
    t.position = host->ppqPosition.value_or(0.0);
    t.stoppedPosition = t.position;

    const double barLength = (double) t.numerator / (double) t.denominator * 4.0;
    if (host->ppqLastBarStart && *host->ppqLastBarStart > 0.0)
        t.positionInBar = t.position - *host->ppqLastBarStart;
    else
        t.positionInBar = std::fmod(t.position, barLength);

    if (host->loopStart && host->loopEnd)
    {
        t.loopStart = *host->loopStart;
        t.loopEnd = *host->loopEnd;
    }
    t.looping = host->looping ? 1 : 0;
    t.playing = host->playing ? 1 : 0;
    t.offline = offline;

    if (t.playing != lastTransport.playing)
        t.flags |= 1;
    const double reference = t.playing == 1 ? t.position : t.stoppedPosition;
    if (std::abs(expectedPosition - reference) > 1.0)
        t.flags |= 1;

    const double samplesPerBeat = 60.0 / (double) t.tempo * sampleRate;
    t.samplesToNextBar = (barLength - t.positionInBar) * samplesPerBeat;
    t.samplesToNextBeat = (1.0 - std::fmod(t.position, 1.0)) * samplesPerBeat;

    out = t;
    lastTransport = t;

    if (t.playing == 1)
        expectedPosition = (double) t.tempo * (1.0 / 60.0) * (double) numSamples / sampleRate + t.position;
    else
        expectedPosition = t.stoppedPosition;
    return true;
}
} // namespace oxa
