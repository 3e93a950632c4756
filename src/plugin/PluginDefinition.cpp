#include "plugin/PluginDefinition.h"

namespace oxa
{
std::string PluginDefinition::auxBusName(int busNumber) const
{
    return "Out " + std::to_string(busNumber + 2);
}

uint32_t PluginDefinition::auxChannelCount(size_t index) const
{
    const uint32_t* counts = auxChannelCounts();
    return counts != nullptr ? counts[index] : 0;
}

uint32_t PluginDefinition::findBusConfiguration(uint32_t inputs, uint32_t outputs) const
{
    const auto* pairs = busConfigurations();
    for (uint32_t i = 0; i < busConfigurationCount(); ++i)
        if (pairs[i].first == inputs && pairs[i].second == outputs)
            return i;
    return busConfigurationCount();
}

const FluxDeckPluginDefinition& FluxDeckPluginDefinition::instance()
{
    static const FluxDeckPluginDefinition definition; // thread-safe on first use, lives to exit
    return definition;
}

FluxDeckPluginDefinition::FluxDeckPluginDefinition()
{
    const std::string id = identifier();
    key = id.substr(0, id.find('.'));
}

const std::pair<uint32_t, uint32_t>* FluxDeckPluginDefinition::busConfigurations() const
{
    static const std::pair<uint32_t, uint32_t> pairs[] = { { 2, 2 }, { 1, 1 }, { 1, 2 } };
    return pairs;
}

std::string settingsPath(const PluginDefinition& definition, const std::string& pattern)
{
    std::string out;
    for (size_t i = 0; i < pattern.size(); ++i)
    {
        if (pattern[i] == '%' && i + 1 < pattern.size() && (pattern[i + 1] == '1' || pattern[i + 1] == '2'))
        {
            out += pattern[i + 1] == '1' ? definition.makerKey() : definition.displayName();
            ++i;
        }
        else
            out += pattern[i];
    }
    return out;
}
} // namespace oxa
