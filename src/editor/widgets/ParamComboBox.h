#pragma once
// A combo box over the value names of an int or bool parameter. The window's boxes are
// drawn by the background; this draws only the text and opens the menu.

#include "editor/widgets/ParameterAccess.h"

#include <juce_gui_basics/juce_gui_basics.h>

namespace oxa
{
class ParamComboBox : public juce::ComboBox, public SimpleElementParameterView
{
public:
    ParamComboBox(EngineProxy* proxy, const String& path, uint32_t id);
    ~ParamComboBox() override;

    bool openSettingsOnAltRightClick = true;
    bool openSettingsOnRightClick = true;
    bool settingsThirdOption = true;

    /** Writes a value as the menu does: one gesture around one write. */
    void choose(int value);
    /** The parameter's value that an item id stands for. */
    int valueOfItem(int itemId) const { return itemId - 1 + firstValue; }

    void elementChanged(const String& path) override;
    void intChanged(const String& path, unsigned id, int value) override;
    void boolChanged(const String& path, unsigned id, bool value) override;

    void showPopup() override;
    void mouseDown(const juce::MouseEvent& e) override;

private:
    void fillItems();

    GestureBracket gesture;
    int firstValue = 0;
};
} // namespace oxa
