#pragma once
// A bypass that keeps time: the dry input is held back by the latency the plug-in
// reports, and the output crossfades between the processed block and that delayed
// input. A block the engine could not render uses the delayed input too, so that a
// state load never shifts the track against the rest of the mix.

#include <vector>

namespace oxa
{
class LatencyBypass
{
public:
    /** Allocates; not on the audio thread. */
    void prepare(int channelCount, double sampleRate, int maxBlockSize, int maxLatency);

    /** Whether a block of this size and latency fits what was prepared. */
    bool canHandle(int numChannels, int numSamples, int latency) const;

    /** Before rendering: keeps the block's input. */
    void pushInput(const float* const* channels, int numChannels, int numSamples);

    /** After rendering: blends the delayed input into the output. With `rendered` false
        the buffer still holds the input, and the delayed input replaces it outright. */
    void mixOutput(float* const* channels, int numChannels, int numSamples, int latency, bool bypassed,
                   bool rendered);

    /** The share of delayed input in the last sample written, 0 (processed) to 1 (bypassed). */
    float dryShare() const { return gain; }

    static constexpr double fadeSeconds = 0.005;

private:
    std::vector<std::vector<float>> rings;
    unsigned mask = 0;
    unsigned writePosition = 0;
    unsigned blockStart = 0;
    int maxBlock = 0;
    int preparedChannels = -1;
    double preparedRate = 0.0;
    int preparedLatency = -1;
    float gain = 0.0f;
    float step = 1.0f;
};
} // namespace oxa
