// Feeds arbitrary bytes to the plug-in's state reader. An input that starts with
// 'C' is first wrapped into a well-formed compressed chunk, so that the fuzzer also
// reaches the XML behind the header; anything else goes to the host call as it is.
#include "plugin/FluxDeckPlugin.h"

#include <juce_events/juce_events.h>
#include <tinyxml2.h>

#include <cstdint>
#include <cstdlib>
#include <memory>

namespace
{
oxa::FluxDeckPlugin& plugin()
{
    // Both live until the process ends: libFuzzer leaves through exit(), after JUCE's
    // own static tables are gone, so nothing here may be torn down by a destructor.
    static auto* juce = new juce::ScopedJuceInitialiser_GUI();
    static auto* instance = [] {
        auto* made = new oxa::FluxDeckPlugin();
        made->prepareToPlay(48000.0, 256);
        return made;
    }();
    (void) juce;
    return *instance;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    auto& target = plugin();
    if (size > 0 && data[0] == 'C')
    {
        juce::MemoryBlock chunk;
        oxa::Plugin::writeStateChunk(reinterpret_cast<const char*>(data + 1), (int) (size - 1), chunk);
        target.setStateInformation(chunk.getData(), (int) chunk.getSize());
    }
    else
        target.setStateInformation(data, (int) size);

    // whatever was loaded must save again and read back as a document
    juce::MemoryBlock saved;
    target.getStateInformation(saved);
    auto document = oxa::Plugin::parseStateChunk(saved.getData(), (int) saved.getSize());
    if (document->RootElement() == nullptr)
        std::abort();

    juce::AudioBuffer<float> buffer(2, 256);
    buffer.clear();
    juce::MidiBuffer midi;
    target.processBlock(buffer, midi);
    return 0;
}
