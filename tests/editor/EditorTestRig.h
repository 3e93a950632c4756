#pragma once
// A plug-in with its window open, no display needed: the window is never put on the
// desktop, and its parameter notifications are delivered by pumping the message loop.

#include "editor/FluxDeckPluginUI.h"
#include "editor/WindowSettings.h"
#include "editor/widgets/ImageLoader.h"
#include "element/ParameterRegistry.h"
#include "plugin/ExportedPluginParameter.h"
#include "plugin/FluxDeckPlugin.h"
#include "tape/FluxDeckProcessor.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>

namespace oxa::test
{
inline void pump(int milliseconds = 40)
{
    juce::MessageManager::getInstance()->runDispatchLoopUntil(milliseconds);
}

/** A click at the middle of `target`, as the mouse would deliver it. */
inline juce::MouseEvent clickOn(juce::Component& target, juce::ModifierKeys mods = juce::ModifierKeys::leftButtonModifier)
{
    const juce::Point<float> centre = target.getLocalBounds().getCentre().toFloat();
    const juce::Time now = juce::Time::getCurrentTime();
    return juce::MouseEvent(juce::Desktop::getInstance().getMainMouseSource(), centre, mods,
                            juce::MouseInputSource::defaultPressure, 0.0f, 0.0f, 0.0f, 0.0f, &target, &target, now,
                            centre, now, 1, false);
}

/** Counts the gestures the host hears. */
struct GestureCounter : juce::AudioProcessorListener
{
    int begins = 0, ends = 0;
    void audioProcessorParameterChanged(juce::AudioProcessor*, int, float) override {}
    void audioProcessorChanged(juce::AudioProcessor*, const ChangeDetails&) override {}
    void audioProcessorParameterChangeGestureBegin(juce::AudioProcessor*, int) override { ++begins; }
    void audioProcessorParameterChangeGestureEnd(juce::AudioProcessor*, int) override { ++ends; }
};

class EditorTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        overrideDisplayImageScale(1);
        plugin = std::make_unique<FluxDeckPlugin>();
        plugin->prepareToPlay(48000.0, 256);
        openWindow();
    }

    void TearDown() override
    {
        ui.reset();
        plugin.reset();
        overrideDisplayImageScale(0);
    }

    void openWindow()
    {
        ui.reset();
        ui.reset(dynamic_cast<FluxDeckPluginUI*>(plugin->createEditor()));
        ASSERT_NE(ui, nullptr);
        pump();
    }

    Element& effect() { return *plugin->getEngine()->findElement(String("FluxDeck")); }

    /** The host's slot of a parameter, by name. */
    juce::AudioProcessorParameter& hostParameter(const char* name)
    {
        const auto slot = plugin->findSlot(String("/FluxDeck"), parameterIdByName(name));
        EXPECT_TRUE(slot.has_value()) << name;
        return *plugin->getParameters()[int(slot.value_or(0))];
    }

    /** Every component below the window, depth first. */
    void walk(juce::Component& c, const std::function<void(juce::Component&)>& visit)
    {
        visit(c);
        for (juce::Component* child : c.getChildren())
            walk(*child, visit);
    }

    const windowSettings::KeptAsTheUserLeftThem keep; // put back after the windows below have closed
    std::unique_ptr<FluxDeckPlugin> plugin;
    std::unique_ptr<FluxDeckPluginUI> ui;
};
} // namespace oxa::test
