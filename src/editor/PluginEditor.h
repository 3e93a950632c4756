#pragma once
// The engine's editor base: the window of a plug-in, bound to its engine proxy.

#include <juce_audio_processors/juce_audio_processors.h>

#include "element/Signal.h"

#include <memory>

namespace oxa
{
class Plugin;
class EngineProxy;

class PluginEditor : public juce::AudioProcessorEditor,
                     public juce::DragAndDropContainer,
                     public Trackable,
                     private juce::Timer
{
public:
    PluginEditor(Plugin& plugin, bool createTooltipWindow);
    ~PluginEditor() override;

    Plugin& getPlugin() const { return plugin; }
    EngineProxy* getProxy() const { return proxy; }
    /** A component that resized() stretches over the whole editor (optional). */
    void setContentComponent(juce::Component* content);

    void resized() override;

private:
    void timerCallback() override {}

    Plugin& plugin;
    EngineProxy* proxy;
    std::unique_ptr<juce::TooltipWindow> tooltipWindow;
    juce::Component* content = nullptr;
};
} // namespace oxa
