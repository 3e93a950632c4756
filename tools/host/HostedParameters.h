#pragma once
// Finding and writing a hosted plug-in's parameters by the names and texts the host shows.

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

/** The texts a stepped parameter shows, one a step; empty for a continuous one. */
juce::StringArray stepTexts(const juce::AudioProcessorParameter& parameter);

/** A text of the parameter's own that shows how to write it: "Mix=50.00%". */
juce::String exampleSetting(const juce::AudioProcessorParameter& parameter);

/** A setting turned into the value a host writes. */
struct InterpretedSetting
{
    juce::AudioProcessorParameter* parameter = nullptr;
    float normalised = 0.0f;
    juce::String error;
};

/** Reads the text the way the parameter's own texts are written: one of its step texts
    for a stepped parameter, a number (with or without the unit) for a continuous one.
    Text the parameter would not understand is an error naming the parameter, with an
    example, rather than a silent no-op. */
InterpretedSetting interpretSetting(juce::AudioProcessor& processor, const ParameterSetting& setting);

/** What the plug-in made of a write. */
struct AppliedSetting
{
    juce::String readBack; // the parameter's text after the write
    bool clamped = false;  // the text asked for more than the range holds
};

/** Writes the value as a host does (a gesture around one change) and reads it back.
    The caller lets the write reach the plug-in before reading readBack again if needed. */
AppliedSetting writeSetting(const InterpretedSetting& interpreted, const juce::String& requestedText);

/** True when the text asks for a number beyond what the read-back text shows at an end
    of the range: "150%" read back as "100.00%". */
bool wasClamped(const juce::String& requestedText, const juce::String& readBack, float normalised);

/** One line an automatable parameter: index, name, normalised value, text. */
juce::String describeParameters(juce::AudioProcessor& processor);
} // namespace oxa::host
