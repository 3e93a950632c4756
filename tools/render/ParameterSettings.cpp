#include "render/ParameterSettings.h"

namespace oxa::render
{
SettingsReport applySettingsInOrder(juce::AudioProcessor& plugin, host::OfflineRenderer& renderer,
                                    const std::vector<host::ParameterSetting>& settings)
{
    SettingsReport report;

    for (const auto& setting : settings)
    {
        const auto interpreted = host::interpretSetting(plugin, setting);

        if (interpreted.error.isNotEmpty())
        {
            report.error = interpreted.error;
            return report;
        }

        host::writeSetting(interpreted, setting.text);
        renderer.deliverPendingChanges();

        // Read back after delivery: what the plug-in took, not what was sent.
        auto& parameter = *interpreted.parameter;
        const auto value = parameter.getValue();
        const auto readBack = parameter.getText(value, 1024);
        auto line = setting.name + " = " + readBack;

        if (host::wasClamped(setting.text, readBack, value))
            line << "  (clamped: \"" << setting.text << "\" is beyond the range)";

        report.lines.add(line);
    }

    return report;
}
} // namespace oxa::render
