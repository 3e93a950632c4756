#pragma once
// Turns what the host's play head says into the engine's TransportInfo, and
// notices jumps and start/stop between blocks.

#include "engine/RenderContext.h"

#include <optional>

namespace oxa
{
/** The play head's answer for one block; every field may be missing. */
struct HostPosition
{
    std::optional<double> bpm;
    std::optional<int> numerator, denominator;
    std::optional<double> ppqPosition;
    std::optional<double> ppqLastBarStart;
    std::optional<double> loopStart, loopEnd;
    bool looping = false;
    bool playing = false;
};

class HostTransportTracker
{
public:
    /** Builds this block's transport. Returns false (and leaves `out` alone) with no play head
        answer. */
    bool update(const std::optional<HostPosition>& position, int numSamples, double sampleRate, bool offline,
                TransportInfo& out);

    double expectedPosition = 0;
    TransportInfo lastTransport;
};
} // namespace oxa
