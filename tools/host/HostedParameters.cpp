#include "host/HostedParameters.h"

namespace oxa::host
{
namespace
{
constexpr int kFullNameLength = 1024;
}

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

juce::String applyParameterSetting(juce::AudioProcessor& processor, const ParameterSetting& setting)
{
    auto* parameter = findParameter(processor, setting.name);

    if (parameter == nullptr)
        return "unknown parameter \"" + setting.name + "\" (use --list-parameters to see the names)";

    if (setting.text.isEmpty())
        return "no value given for parameter \"" + setting.name + "\"";

    const auto value = parameter->getValueForText(setting.text);

    if (!std::isfinite(value))
        return "\"" + setting.text + "\" is not a value of parameter \"" + setting.name + "\"";

    parameter->setValueNotifyingHost(juce::jlimit(0.0f, 1.0f, value));
    return {};
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
