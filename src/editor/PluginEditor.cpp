#include "editor/PluginEditor.h"

#include "editor/OxaLookAndFeel.h"
#include "plugin/Plugin.h"

namespace oxa
{
PluginEditor::PluginEditor(Plugin& plugin, bool createTooltipWindow)
    : juce::AudioProcessorEditor(plugin), plugin(plugin), proxy(plugin.getProxy())
{
    static bool lookInstalled = false;
    if (!lookInstalled)
    {
        lookInstalled = true;
        juce::LookAndFeel::setDefaultLookAndFeel(&OxaLookAndFeel::instance());
    }
    if (createTooltipWindow)
        tooltipWindow = std::make_unique<juce::TooltipWindow>(nullptr, 700);
}

PluginEditor::~PluginEditor() = default;

void PluginEditor::setContentComponent(juce::Component* newContent)
{
    content = newContent;
    resized();
}

void PluginEditor::resized()
{
    if (content != nullptr)
        content->setBounds(getLocalBounds());
}
} // namespace oxa
