#include "engine/RenderContext.h"
#include "element/Element.h"

#include <algorithm>

namespace oxa
{
ScratchArena::ScratchArena(size_t firstChunkBytes) : firstChunkSize(firstChunkBytes)
{
    chunks.push_back({ std::unique_ptr<unsigned char[]>(new unsigned char[firstChunkBytes]), firstChunkBytes });
}

void* ScratchArena::allocate(size_t bytes)
{
    bytes = (bytes + 15) & ~size_t(15);
    while (chunkIndex < chunks.size())
    {
        Chunk& c = chunks[chunkIndex];
        if (cursor + bytes <= c.size)
        {
            void* p = c.bytes.get() + cursor;
            cursor += bytes;
            return p;
        }
        ++chunkIndex;
        cursor = 0;
    }
    // Out of room: grow. Only happens when a block asks for more than ever before.
    const size_t size = std::max(bytes, firstChunkSize);
    chunks.push_back({ std::unique_ptr<unsigned char[]>(new unsigned char[size]), size });
    chunkIndex = chunks.size() - 1;
    cursor = bytes;
    return chunks.back().bytes.get();
}

RenderContext::RenderContext()
{
    outputEvents.reserve(4096);
}

ElementState* RenderContext::stateFor(Element& element) const
{
    return element.mainState();
}

void RenderContext::endOfBlock(uint32_t numSamples)
{
    ++blockCounter;
    sampleCounter += numSamples;
    arena1.reset();
    arena2.reset();
    clock += (double) transport.tempo / 60.0 / (double) sampleRate * (double) numSamples;
}
} // namespace oxa
