#pragma once
// A preset bar: the menu button, the preset's name, and previous and next arrows that
// show only while the mouse is over the bar. The menu loads and saves files through
// file choosers, brings back the defaults, and lists the factory and user presets as
// trees. The files themselves are the preset model's business (PresetBank); the top
// bar's bank sets the whole effect, the tape bar's only the tape.

#include "editor/Layout.h"
#include "editor/PresetName.h"
#include "editor/widgets/Button.h"
#include "engine/ElementView.h"
#include "resources/presets/PresetBank.h"

#include <juce_gui_basics/juce_gui_basics.h>

#include <memory>
#include <vector>

namespace oxa
{
class ModulePresetDisplay : public juce::Component, public SimpleElementView, private juce::AsyncUpdater
{
public:
    /** The look of a bar's name box. */
    struct NameStyle
    {
        juce::Colour colour;
        float fontHeight;
        juce::Justification justification;
        bool showModifiedMark;
    };

    /** The top bar's: the whole effect, at its table's places. */
    explicit ModulePresetDisplay(EngineProxy* proxy);
    ~ModulePresetDisplay() override;

    // ---- what the bar's controls do; tools and tests call them directly ----
    /** False, with nothing changed, for a file that is not a preset of this effect. */
    bool loadPreset(const Path& path);
    bool savePreset(const Path& path);
    bool loadDefaults();
    /** Loads the preset before (-1) or after (+1) the current one, wrapping at the ends;
        from no preset, the first one. False when there is none or it fails. */
    bool step(int direction);

    /** The menu as the menu button shows it. */
    juce::PopupMenu buildMenu();
    /** Acts on a result of that menu (0: dismissed). */
    void menuItemChosen(int result);
    /** Shows the menu; the options place it (by default at the menu button). */
    void showMenu(juce::PopupMenu::Options options);
    void showMenu();

    /** Shows or hides what the mouse over the bar shows: the arrows and the faded name. */
    void showHover(bool over);

    PresetName& getNameLabel() { return nameLabel; }
    Button& getMenuButton() { return menuButton; }
    Button& getPrevButton() { return prevButton; }
    Button& getNextButton() { return nextButton; }
    PresetBank& getBank() { return *bank; }

    enum MenuIds
    {
        loadId = 1,
        saveId = 2,
        defaultId = 3,
        firstPresetId = 100 // then one id for each file of the listing, in its order
    };

    void elementChanged(const String& path) override;
    void resized() override;
    void mouseEnter(const juce::MouseEvent&) override { triggerAsyncUpdate(); }
    void mouseExit(const juce::MouseEvent&) override { triggerAsyncUpdate(); }
    void mouseDown(const juce::MouseEvent& e) override;

protected:
    ModulePresetDisplay(EngineProxy* proxy, std::unique_ptr<PresetBank> bank, const layout::Panel& table,
                        const NameStyle& style);

private:
    void handleAsyncUpdate() override;
    void setUpButton(Button& button, const char* role, const char* componentName);
    void openLoadChooser();
    void openSaveChooser();
    void afterChange();

    std::unique_ptr<PresetBank> bank;
    const layout::Panel& table;
    PresetName nameLabel;
    Button menuButton {"MenuButton"}, prevButton {"PrevButton"}, nextButton {"NextButton"};
    std::unique_ptr<juce::FileChooser> chooser;
    std::vector<Path> menuPresets; // the listing the open menu's ids point into
};
} // namespace oxa
