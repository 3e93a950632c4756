#include "host/HostedParameters.h"

namespace oxa::host
{
namespace
{
constexpr int kFullNameLength = 1024;
// Parameters with more steps than this are written as numbers, like continuous ones.
constexpr int kMostNamedSteps = 64;
constexpr int kStepsShownInErrors = 8;

juce::String quoted(const juce::String& text)
{
    return "\"" + text + "\"";
}

/** The leading number of a text such as "-3.5 dB" or "50%", if it starts with one. */
std::optional<double> leadingNumber(const juce::String& text)
{
    const auto trimmed = text.trimStart();
    auto p = trimmed.getCharPointer();
    auto digits = 0;

    if (*p == '+' || *p == '-')
        ++p;
    while (juce::CharacterFunctions::isDigit(*p))
        ++p, ++digits;
    if (*p == '.')
        for (++p; juce::CharacterFunctions::isDigit(*p); ++p)
            ++digits;

    if (digits == 0)
        return std::nullopt;

    return trimmed.getDoubleValue();
}

bool isStepped(const juce::AudioProcessorParameter& parameter)
{
    const auto steps = parameter.getNumSteps();
    return (parameter.isDiscrete() || parameter.isBoolean()) && steps >= 2 && steps <= kMostNamedSteps;
}
} // namespace

std::optional<ParameterSetting> parseParameterSetting(const juce::String& assignment)
{
    const auto equals = assignment.indexOfChar('=');

    if (equals < 0)
        return std::nullopt;

    ParameterSetting setting{ assignment.substring(0, equals).trim(), assignment.substring(equals + 1).trim() };

    if (setting.name.isEmpty())
        return std::nullopt;

    return setting;
}

juce::Array<juce::AudioProcessorParameter*> automatableParameters(juce::AudioProcessor& processor)
{
    juce::Array<juce::AudioProcessorParameter*> result;

    for (auto* parameter : processor.getParameters())
        if (parameter->isAutomatable())
            result.add(parameter);

    return result;
}

juce::AudioProcessorParameter* findParameter(juce::AudioProcessor& processor, const juce::String& name)
{
    for (auto* parameter : automatableParameters(processor))
        if (parameter->getName(kFullNameLength) == name)
            return parameter;

    return nullptr;
}

juce::StringArray parameterNames(juce::AudioProcessor& processor)
{
    juce::StringArray names;

    for (auto* parameter : automatableParameters(processor))
        names.add(parameter->getName(kFullNameLength));

    return names;
}

juce::StringArray stepTexts(const juce::AudioProcessorParameter& parameter)
{
    juce::StringArray texts;

    if (!isStepped(parameter))
        return texts;

    const auto last = parameter.getNumSteps() - 1;
    for (int step = 0; step <= last; ++step)
        texts.add(parameter.getText((float) step / (float) last, kFullNameLength));

    return texts;
}

juce::String exampleSetting(const juce::AudioProcessorParameter& parameter)
{
    const auto name = parameter.getName(kFullNameLength);
    const auto steps = stepTexts(parameter);

    // A step other than the current one, so that the example changes something.
    if (!steps.isEmpty())
    {
        const auto current = parameter.getText(parameter.getValue(), kFullNameLength);
        return name + "=" + (steps[steps.size() - 1] != current ? steps[steps.size() - 1] : steps[0]);
    }

    return name + "=" + parameter.getText(parameter.getDefaultValue(), kFullNameLength).trim();
}

InterpretedSetting interpretSetting(juce::AudioProcessor& processor, const ParameterSetting& setting)
{
    InterpretedSetting result;
    result.parameter = findParameter(processor, setting.name);

    if (result.parameter == nullptr)
    {
        result.error = "unknown parameter " + quoted(setting.name) + " (use --list-parameters to see the names)";
        return result;
    }

    auto& parameter = *result.parameter;
    const auto example = "e.g. --set " + quoted(exampleSetting(parameter));

    if (setting.text.isEmpty())
    {
        result.error = "no value given for parameter " + quoted(setting.name) + ", " + example;
        return result;
    }

    if (const auto steps = stepTexts(parameter); !steps.isEmpty())
    {
        const auto index = steps.indexOf(setting.text, true);

        if (index < 0)
        {
            auto shown = steps;
            if (shown.size() > kStepsShownInErrors)
                shown.removeRange(kStepsShownInErrors, shown.size());
            result.error = quoted(setting.text) + " is not a value of parameter " + quoted(setting.name) + ", which takes "
                           + shown.joinIntoString(", ") + (shown.size() < steps.size() ? ", ..." : "") + "; " + example;
            return result;
        }

        // The parameter's own parser knows where its steps lie; the even spread is the
        // fallback for parsers that do not take their own texts back.
        const auto parsed = parameter.getValueForText(steps[index]);
        const auto evenly = (float) index / (float) (steps.size() - 1);
        result.normalised = std::isfinite(parsed) && parameter.getText(parsed, kFullNameLength) == steps[index]
                                ? parsed
                                : evenly;
        return result;
    }

    // Continuous: a number in the parameter's unit, or one of the texts it shows at its ends ("-inf dB").
    const auto atEnd = setting.text.equalsIgnoreCase(parameter.getText(0.0f, kFullNameLength).trim())
                       || setting.text.equalsIgnoreCase(parameter.getText(1.0f, kFullNameLength).trim());

    if (!atEnd && !leadingNumber(setting.text))
    {
        result.error = quoted(setting.text) + " is not a value of parameter " + quoted(setting.name)
                       + ", which is written like its own texts, " + example;
        return result;
    }

    const auto value = parameter.getValueForText(setting.text);

    if (!std::isfinite(value))
    {
        result.error = quoted(setting.text) + " is not a value of parameter " + quoted(setting.name) + ", " + example;
        return result;
    }

    result.normalised = juce::jlimit(0.0f, 1.0f, value);
    return result;
}

bool wasClamped(const juce::String& requestedText, const juce::String& readBack, float normalised)
{
    if (normalised > 0.0f && normalised < 1.0f)
        return false;

    const auto requested = leadingNumber(requestedText);
    const auto shown = leadingNumber(readBack);

    if (!requested || !shown)
        return false;

    // The read-back text is rounded for display; anything beyond that rounding was cut off.
    const auto tolerance = 0.01 * juce::jmax(1.0, std::abs(*shown));
    return std::abs(*requested - *shown) > tolerance;
}

AppliedSetting writeSetting(const InterpretedSetting& interpreted, const juce::String& requestedText)
{
    auto& parameter = *interpreted.parameter;

    parameter.beginChangeGesture();
    parameter.setValueNotifyingHost(interpreted.normalised);
    parameter.endChangeGesture();

    AppliedSetting applied;
    applied.readBack = parameter.getText(parameter.getValue(), kFullNameLength);
    applied.clamped = wasClamped(requestedText, applied.readBack, parameter.getValue());
    return applied;
}

juce::String describeParameters(juce::AudioProcessor& processor)
{
    juce::String lines;
    const auto parameters = automatableParameters(processor);

    for (int index = 0; index < parameters.size(); ++index)
    {
        auto* parameter = parameters[index];
        const auto value = parameter->getValue();

        lines << juce::String(index).paddedLeft(' ', 3) << "  "
              << parameter->getName(kFullNameLength).paddedRight(' ', 30) << "  "
              << juce::String(value, 6) << "  "
              << parameter->getText(value, kFullNameLength) << "\n";
    }

    return lines;
}
} // namespace oxa::host
