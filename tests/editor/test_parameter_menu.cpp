// The right-click menu of a lockable control and the MIDI settings panel behind
// "MIDI Learn" and the other controls' right clicks.
#include "EditorTestRig.h"

#include "editor/ParameterContextMenu.h"
#include "editor/widgets/SimpleEditionSettingsPanel.h"
#include "engine/MidiLearn.h"

using namespace oxa;
using namespace oxa::test;

namespace
{
struct MenuItemState
{
    juce::String text;
    bool enabled, ticked;
};

std::vector<MenuItemState> itemsOf(const juce::PopupMenu& menu)
{
    std::vector<MenuItemState> items;
    for (juce::PopupMenu::MenuItemIterator it(menu); it.next();)
        items.push_back({it.getItem().text, it.getItem().isEnabled, it.getItem().isTicked});
    return items;
}

TEST_F(EditorTest, LockableMenuLocksLearnsUnlearnsAndUnlocksAll)
{
    EngineProxy& proxy = *ui->getProxy();
    const uint32_t mix = parameterIdByName("Mix");
    const ParameterContextMenu menu(proxy, String("/FluxDeck"), mix);

    std::vector<MenuItemState> items = itemsOf(menu.build());
    ASSERT_EQ(items.size(), 4u);
    EXPECT_EQ(items[0].text, "Locked");
    EXPECT_FALSE(items[0].ticked);
    EXPECT_EQ(items[1].text, "Unlock all Parameters");
    EXPECT_EQ(items[2].text, "MIDI Learn");
    EXPECT_EQ(items[3].text, "MIDI Unlearn");
    EXPECT_FALSE(items[3].enabled);

    menu.perform(ParameterContextMenu::lockedId, *ui);
    EXPECT_TRUE(effect().isParameterLocked(mix));
    ASSERT_TRUE(MidiLearn(proxy, String("/FluxDeck"), mix).bind(74));
    items = itemsOf(menu.build());
    EXPECT_TRUE(items[0].ticked);
    EXPECT_EQ(items[3].text, "MIDI Unlearn (CC #74)");
    EXPECT_TRUE(items[3].enabled);

    menu.perform(ParameterContextMenu::unlearnId, *ui);
    EXPECT_EQ(menu.unlearnText(), "MIDI Unlearn");
    EXPECT_FALSE(MidiLearn(proxy, String("/FluxDeck"), mix).hasMidiConnection());

    // Which parameters "Unlock all" releases is the preset code's rule; the item must reach it.
    menu.perform(ParameterContextMenu::unlockAllId, *ui);
    EXPECT_FALSE(effect().isParameterLocked(mix));
}

TEST_F(EditorTest, SettingsPanelShowsTitleBindingControllerListAndHostIndex)
{
    const uint32_t speed = parameterIdByName("Speed");
    SimpleEditionSettingsPanel panel(ui->getProxy(), String("/FluxDeck"), speed);
    const auto slot = plugin->findSlot(String("/FluxDeck"), speed);
    ASSERT_TRUE(slot.has_value());
    EXPECT_EQ(panel.getWidth(), SimpleEditionSettingsPanel::panelWidth);
    EXPECT_EQ(panel.getTitle(), "MIDI/Automation Control: Tape Speed");
    EXPECT_EQ(panel.getHostIndexText(), juce::String(int(*slot)));
    EXPECT_EQ(panel.getBindingText(), "None");
    EXPECT_TRUE(panel.isLearning());

    const std::vector<MenuItemState> list = itemsOf(panel.controllerMenu());
    ASSERT_EQ(list.size(), 128u);
    EXPECT_EQ(list[0].text, "MIDI CC 0 (Bank Select)");
    EXPECT_TRUE(list[74].text.startsWith("MIDI CC 74 ("));

    panel.chooseController(74);
    EXPECT_EQ(panel.getBindingText(), "MIDI CC 74");
    EXPECT_TRUE(itemsOf(panel.controllerMenu())[74].ticked);
    panel.clear();
    EXPECT_EQ(panel.getBindingText(), "None");

    SimpleEditionSettingsPanel modulation(ui->getProxy(), String("/FluxDeck"), speed, true);
    EXPECT_EQ(modulation.getTitle(), "MIDI Modulation: Tape Speed");
}

TEST_F(EditorTest, RightClickOnOtherControlsOpensOneCentredSettingsPanelAtOnce)
{
    ui->setExpanded(true);
    FluxDeckEditor& main = ui->getEditor();
    juce::Component* controls[] = {main.knob("OutputPad"), main.getPlaybackSection().knob("Speed"),
                                   main.button("ApplyRecordHead")};
    for (juce::Component* control : controls)
    {
        ASSERT_NE(control, nullptr);
        SCOPED_TRACE(control->getName().toStdString());
        ASSERT_FALSE(SimpleEditionSettingsPanel::isAnyOpen());
        control->mouseDown(clickOn(*control, juce::ModifierKeys::rightButtonModifier));
        control->mouseDown(clickOn(*control, juce::ModifierKeys::rightButtonModifier)); // one panel at a time
        SimpleEditionSettingsPanel* panel = nullptr;
        for (juce::Component* child : ui->getChildren())
            if (auto* p = dynamic_cast<SimpleEditionSettingsPanel*>(child))
            {
                EXPECT_EQ(panel, nullptr);
                panel = p;
            }
        ASSERT_NE(panel, nullptr);
        EXPECT_EQ(panel->getBounds().getCentre(), ui->getLocalBounds().getCentre());
        control->mouseUp(clickOn(*control, juce::ModifierKeys::rightButtonModifier));
        panel->close();
        pump();
        EXPECT_FALSE(SimpleEditionSettingsPanel::isAnyOpen());
    }
}

TEST_F(EditorTest, RightClickOnTheLockableSwitchLeavesItAsItIs)
{
    ParamButton* lowLatency = ui->getEditor().button("ApplyLowLatency");
    ASSERT_NE(lowLatency, nullptr);
    const uint32_t id = parameterIdByName("ApplyLowLatency");
    const bool before = effect().boolParameter(id);
    lowLatency->mouseDown(clickOn(*lowLatency, juce::ModifierKeys::rightButtonModifier));
    lowLatency->mouseUp(clickOn(*lowLatency, juce::ModifierKeys::rightButtonModifier));
    pump();
    EXPECT_EQ(effect().boolParameter(id), before);
    EXPECT_FALSE(SimpleEditionSettingsPanel::isAnyOpen()); // its menu is the panel's, not a settings panel
}
} // namespace
