#pragma once
// What the plug-in hands to every render call: transport, tuning, scratch memory,
// outgoing events and the lookup of an element's render state.

#include "engine/EngineEvent.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace oxa
{
class Element;
class ElementState;

struct TransportInfo
{
    float tempo = 120.0f;
    int32_t playing = -1; // -1 unknown, 0 stopped, 1 playing
    uint32_t flags = 0;   // bit 0: position jumped or transport state changed
    int32_t numerator = 4;
    int32_t denominator = 4;
    double stoppedPosition = 0;
    double position = 0;
    double positionInBar = 0;
    double samplesToNextBeat = 0;
    double samplesToNextBar = 0;
    int64_t looping = 0;
    double loopStart = 0;
    double loopEnd = 0;
    bool offline = false;
};

/** Chunked bump allocator: reset each block, never freed while rendering. */
class ScratchArena
{
public:
    explicit ScratchArena(size_t firstChunkBytes);

    void* allocate(size_t bytes);
    float* allocateSamples(size_t count) { return static_cast<float*>(allocate(count * sizeof(float))); }

    /** Where the cursor stands; restoring it frees what was taken since. */
    struct Mark
    {
        size_t chunk;
        size_t cursor;
    };
    Mark mark() const { return { chunkIndex, cursor }; }
    void restore(Mark m)
    {
        chunkIndex = m.chunk;
        cursor = m.cursor;
    }
    void reset() { restore({ 0, 0 }); }
    size_t chunkCount() const { return chunks.size(); }

private:
    struct Chunk
    {
        std::unique_ptr<unsigned char[]> bytes;
        size_t size;
    };
    std::vector<Chunk> chunks;
    size_t firstChunkSize;
    size_t chunkIndex = 0;
    size_t cursor = 0;
};

class RenderContext
{
public:
    RenderContext();

    TransportInfo transport;
    float tuning = 440.0f;
    float sampleRate = 44100.0f;
    void* voiceContext = nullptr;
    ScratchArena arena1 { 512000 };
    ScratchArena arena2 { 512000 };
    ScratchArena arena3 { 51200 };
    uint64_t blockCounter = 1;
    uint64_t sampleCounter = 0;
    double clock = 0;
    std::vector<EngineEvent> outputEvents;

    void setSampleRate(float rate) { sampleRate = rate; }
    void setTuning(float hz) { tuning = hz; }

    /** The state an element renders with: its main state outside a voice. */
    ElementState* stateFor(Element& element) const;

    /** Counts the block, resets the per-block arenas and advances the beat clock. */
    void endOfBlock(uint32_t numSamples);
};
} // namespace oxa
