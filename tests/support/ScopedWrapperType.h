#pragma once
// Plug-ins made inside the scope believe they run in the given wrapper (a test can
// build the standalone application's tree without the application).
#include <juce_audio_processors/juce_audio_processors.h>

namespace oxa::test
{
class ScopedWrapperType
{
public:
    explicit ScopedWrapperType(juce::AudioProcessor::WrapperType type)
        : previous(juce::PluginHostType::jucePlugInClientCurrentWrapperType)
    {
        juce::PluginHostType::jucePlugInClientCurrentWrapperType = type;
        juce::AudioProcessor::setTypeOfNextNewPlugin(type);
    }
    ~ScopedWrapperType()
    {
        juce::PluginHostType::jucePlugInClientCurrentWrapperType = previous;
        juce::AudioProcessor::setTypeOfNextNewPlugin(juce::AudioProcessor::wrapperType_Undefined);
    }

private:
    juce::AudioProcessor::WrapperType previous;
};
} // namespace oxa::test
