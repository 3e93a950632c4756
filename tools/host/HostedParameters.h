#pragma once
// Finding and writing a hosted plug-in's parameters by the names the host shows.

#include <juce_audio_processors/juce_audio_processors.h>

#include <optional>

namespace oxa::host
{
/** "Name=text": a parameter name and a value in that parameter's own text form. */
struct ParameterSetting
{
    juce::String name;
    juce::String text;
};

/** Splits at the first '='; the name is trimmed and must not be empty. */
std::optional<ParameterSetting> parseParameterSetting(const juce::String& assignment);

/** The parameters a host offers for automation, in host order: a VST3 plug-in may list
    more (stand-ins for MIDI controllers), which nobody should write as values. */
juce::Array<juce::AudioProcessorParameter*> automatableParameters(juce::AudioProcessor& processor);

/** The automatable parameter whose host name matches exactly, or null. */
juce::AudioProcessorParameter* findParameter(juce::AudioProcessor& processor, const juce::String& name);

/** Host names of the automatable parameters, in host order. */
juce::StringArray parameterNames(juce::AudioProcessor& processor);

/** Parses the text with the parameter's own parser and writes the result as a host
    would. Returns an error message, empty on success. */
juce::String applyParameterSetting(juce::AudioProcessor& processor, const ParameterSetting& setting);

/** One line an automatable parameter: index, name, normalised value, text. */
juce::String describeParameters(juce::AudioProcessor& processor);
} // namespace oxa::host
