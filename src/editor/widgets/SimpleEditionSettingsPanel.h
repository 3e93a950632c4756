#pragma once
// The small modal panel of one parameter's control: which MIDI controller drives it
// (chosen from the list, or learnt by moving a controller while the panel is open),
// and, for a parameter the host sees, its index among the host's parameters.

#include "engine/MidiLearn.h"

#include <juce_gui_basics/juce_gui_basics.h>

#include <memory>

namespace oxa
{
class EngineProxy;

class SimpleEditionSettingsPanel : public juce::Component
{
public:
    static constexpr int panelWidth = 250;
    static constexpr float fontHeight = 16.0f;

    /** With `asModulation` a controller moves the parameter around its own value
        instead of setting it over its range. */
    SimpleEditionSettingsPanel(EngineProxy* proxy, const String& path, uint32_t id, bool asModulation = false);
    ~SimpleEditionSettingsPanel() override;

    /** Opens a panel over the window that holds `from`, centred and modal; it deletes
        itself when dismissed. Null when one is open already or the parameter takes no
        controller. */
    static SimpleEditionSettingsPanel* open(juce::Component& from, EngineProxy* proxy, const String& path,
                                            uint32_t id, bool asModulation = false);
    static bool isAnyOpen();

    // ---- what it shows and does ----
    juce::String getTitle() const;
    /** "None", or "MIDI CC <n>" of the controller that drives the parameter. */
    juce::String getBindingText() const;
    /** The host's index of the parameter; empty when the host does not see it. */
    juce::String getHostIndexText() const;
    /** The controllers, "MIDI CC <n> (<name>)"; an item's id is the controller plus one. */
    juce::PopupMenu controllerMenu() const;
    void chooseController(int number);
    void clear();
    void close();
    bool isLearning() const { return learner != nullptr && learner->isListening(); }

    void paint(juce::Graphics& g) override;
    void resized() override;
    void mouseDown(const juce::MouseEvent& e) override;
    bool keyPressed(const juce::KeyPress& key) override;
    void inputAttemptWhenModal() override { close(); }

private:
    class FlatButton;
    juce::Rectangle<int> bindingBox() const;
    void refresh();

    EngineProxy* proxy;
    const String path;
    const uint32_t parameterId;
    const bool asModulation;
    MidiLearn binding;
    std::unique_ptr<NextControllerLearner> learner;
    std::unique_ptr<FlatButton> clearButton, closeButton;
    juce::String bindingText;
};
} // namespace oxa
