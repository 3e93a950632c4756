#pragma once
// The plug-in's state chunk as a host holds it ("OXA4", version, length, zlib-wrapped XML),
// read and written here with JUCE alone, so that tests do not trust the plug-in's own
// reader to check its writer.
#include <gtest/gtest.h>
#include <juce_audio_processors/juce_audio_processors.h>

#include <string>
#include <vector>

namespace oxa::test
{
inline juce::MemoryBlock stateOf(juce::AudioProcessor& plugin)
{
    juce::MemoryBlock chunk;
    plugin.getStateInformation(chunk);
    return chunk;
}

inline void setState(juce::AudioProcessor& plugin, const juce::MemoryBlock& chunk)
{
    plugin.setStateInformation(chunk.getData(), (int) chunk.getSize());
}

/** The XML text inside a chunk; empty when the chunk is too short to hold any. */
inline std::string xmlOf(const juce::MemoryBlock& chunk)
{
    if (chunk.getSize() < 12)
        return {};
    juce::MemoryInputStream raw(static_cast<const char*>(chunk.getData()) + 12, chunk.getSize() - 12, false);
    juce::GZIPDecompressorInputStream inflated(raw);
    return inflated.readEntireStreamAsString().toStdString();
}

inline juce::MemoryBlock chunkOf(const std::string& xml)
{
    juce::MemoryOutputStream out;
    out.write("OXA4", 4);
    out.writeInt(1);
    out.writeInt((int) xml.size());
    {
        juce::GZIPCompressorOutputStream deflater(out);
        deflater.write(xml.data(), xml.size());
    }
    return out.getMemoryBlock();
}

/** Every parameter's normalised value, in the host's order. */
inline std::vector<float> hostValues(juce::AudioProcessor& plugin)
{
    std::vector<float> values;
    for (auto* p : plugin.getParameters())
        values.push_back(p->getValue());
    return values;
}

/** Two readings of the parameters agree exactly, slot for slot. */
inline void expectSameValues(const std::vector<float>& actual, const std::vector<float>& expected, const std::string& when)
{
    ASSERT_EQ(actual.size(), expected.size()) << when;
    for (size_t i = 0; i < actual.size(); ++i)
        EXPECT_EQ(actual[i], expected[i]) << when << ", parameter " << i;
}
} // namespace oxa::test
