// The preset bars and A/B compare in an open window: what a load, a step, "Default"
// and a compare press change, and what they must leave alone.
#include "EditorTestRig.h"

#include "resources/presets/ABCompare.h"

using namespace oxa;
using namespace oxa::test;

namespace
{
class PresetBarTest : public EditorTest
{
protected:
    ModulePresetDisplay& topBar() { return ui->getToolBar().getPresetDisplay(); }
    TapeModulePresetDisplay& tapeBar() { return ui->getEditor().getTapePresetDisplay(); }
    uint32_t id(const char* name) { return parameterIdByName(name); }
    float value(const char* name) { return effect().floatParameter(id(name)); }
    void set(const char* name, float v) { effect().setFloatParameter(id(name), v, true); }
    void lock(const char* name, bool on) { effect().setParameterLocked(id(name), on); }
    std::string property(const char* key) { return effect().property(String(key)).valueOr(String()).c_str(); }

    /** Every parameter's value: what the audio hears. */
    std::vector<double> values()
    {
        std::vector<double> all;
        for (const auto& p : effect().parameters())
            switch (p->kind())
            {
                case ParameterKind::Float: all.push_back(effect().floatParameter(p->id())); break;
                case ParameterKind::Int: all.push_back(effect().intParameter(p->id())); break;
                case ParameterKind::Bool: all.push_back(effect().boolParameter(p->id()) ? 1.0 : 0.0); break;
                default: break;
            }
        return all;
    }
};

TEST_F(PresetBarTest, NameFollowsTheFileAndMarksAChangeOnlyInTheTopBar)
{
    EXPECT_EQ(topBar().getNameLabel().getText(), "default");
    EXPECT_EQ(tapeBar().getNameLabel().getText(), "default");
    EXPECT_FALSE(topBar().getPrevButton().isVisible());
    EXPECT_FALSE(topBar().getNextButton().isVisible());

    // The arrows walk the bank from the loaded file (the walk's wrapping is the bank's own).
    const std::vector<Path> presets = topBar().getBank().listPresets();
    ASSERT_GE(presets.size(), 36u);
    ASSERT_TRUE(topBar().step(+1)); // no path yet: the first factory preset
    ASSERT_TRUE(topBar().step(-1)); // and back round to the last
    EXPECT_EQ(presets.back().str(), property("PresetPath"));
    ASSERT_TRUE(topBar().step(+1));
    EXPECT_EQ(presets.front().str(), property("PresetPath"));
    EXPECT_EQ(topBar().getNameLabel().getText(), "Classic Drive");
    ASSERT_TRUE(tapeBar().step(+1));
    EXPECT_EQ(tapeBar().getNameLabel().getText(), "00 Flat");

    set("Feedback", 0.42f);
    topBar().getNameLabel().refresh();
    tapeBar().getNameLabel().refresh();
    EXPECT_EQ(topBar().getNameLabel().getText(), "Classic Drive*");
    EXPECT_EQ(tapeBar().getNameLabel().getText(), "00 Flat");
}

TEST_F(PresetBarTest, ALockedMixSurvivesAPresetAndDefault)
{
    set("Mix", 0.37f);
    lock("Mix", true);
    ASSERT_TRUE(topBar().step(+1));
    EXPECT_FLOAT_EQ(value("Mix"), 0.37f);
    set("Feedback", 0.6f);
    ASSERT_TRUE(topBar().loadDefaults());
    EXPECT_FLOAT_EQ(value("Mix"), 0.37f);
    EXPECT_NE(value("Feedback"), 0.6f); // the rest did go back
    EXPECT_EQ(topBar().getNameLabel().getText(), "default");

    lock("Mix", false);
    ASSERT_TRUE(topBar().loadDefaults());
    EXPECT_NE(value("Mix"), 0.37f);
}

TEST_F(PresetBarTest, AFailingPresetFileLeavesEverythingAsItWas)
{
    ASSERT_TRUE(topBar().step(+1));
    const std::vector<double> before = values();
    const std::string path = property("PresetPath");
    const juce::String name = topBar().getNameLabel().getText();

    // Which files are refused is the bank's business; here the bars must not move.
    juce::TemporaryFile scratch(".fxps");
    ASSERT_TRUE(scratch.getFile().replaceWithText("<ModulePreset><OtherEffect Mix=\"0.1\"/></ModulePreset>"));
    EXPECT_FALSE(topBar().loadPreset(Path(scratch.getFile().getFullPathName())));
    EXPECT_FALSE(tapeBar().loadPreset(Path(scratch.getFile().getFullPathName())));
    EXPECT_EQ(values(), before);
    EXPECT_EQ(property("PresetPath"), path);
    EXPECT_EQ(topBar().getNameLabel().getText(), name);
}

TEST_F(PresetBarTest, MenuListsLoadSaveDefaultAndOneSubmenuPerFactoryBank)
{
    ASSERT_TRUE(topBar().step(+1));
    const juce::PopupMenu menu = topBar().buildMenu();
    std::vector<juce::String> top, banks;
    int ticked = 0;
    for (juce::PopupMenu::MenuItemIterator it(menu); it.next();)
    {
        const juce::PopupMenu::Item& item = it.getItem();
        if (item.subMenu != nullptr)
        {
            banks.push_back(item.text);
            for (juce::PopupMenu::MenuItemIterator inner(*item.subMenu); inner.next();)
                ticked += inner.getItem().isTicked ? inner.getItem().itemID : 0;
        }
        else if (item.text.isNotEmpty())
            top.push_back(item.text);
    }
    ASSERT_GE(top.size(), 4u);
    EXPECT_EQ(top[0], "Load");
    EXPECT_EQ(top[1], "Save");
    EXPECT_EQ(top[2], "Factory Presets");
    EXPECT_EQ(top[3], "Default");
    const std::vector<juce::String> expected = {"Classic", "Guitar", "Keys", "Drums", "Vocal", "Bass"};
    ASSERT_GE(banks.size(), expected.size());
    EXPECT_TRUE(std::equal(expected.begin(), expected.end(), banks.begin()));
    EXPECT_EQ(ticked, ModulePresetDisplay::firstPresetId); // the loaded preset

    topBar().menuItemChosen(ModulePresetDisplay::firstPresetId + 1);
    EXPECT_EQ(topBar().getBank().listPresets()[1].str(), property("PresetPath"));
}

TEST_F(PresetBarTest, FirstPressStoresThenCompareSwapsEveryParameterLockedOnesTooAndThePresetNames)
{
    ABToolBar& bar = ui->getToolBar();
    EXPECT_EQ(bar.getMemoryState(), 0);
    EXPECT_EQ(bar.getABButton().getTooltip(), "Store Current State to Memory A");
    lock("Mix", true);
    set("Mix", 0.25f);
    set("Feedback", 0.1f);
    effect().setProperty(String("PresetPath"), String("a/First.fxps"));
    const std::vector<double> a = values();
    bar.compare(); // the first press only stores A
    EXPECT_EQ(values(), a);
    EXPECT_EQ(bar.getMemoryState(), 1);
    EXPECT_EQ(bar.getABButton().getTooltip(), "Store Current State to Memory B and restore Memory A");
    EXPECT_FALSE(property(abStateProperty).empty());

    set("Mix", 0.75f);
    set("Feedback", 0.5f);
    effect().setProperty(String("PresetPath"), String("b/Second.fxps"));
    effect().setProperty(String("TapePresetPath"), String("t/Tape.fxps"));
    const std::vector<double> b = values();

    bar.compare();
    EXPECT_EQ(bar.getMemoryState(), 2);
    EXPECT_EQ(values(), a);
    EXPECT_EQ(property("PresetPath"), "a/First.fxps");
    EXPECT_FALSE(effect().hasProperty(String("TapePresetPath")));
    EXPECT_TRUE(effect().isParameterLocked(id("Mix"))); // locks are not part of a memory
    EXPECT_EQ(bar.getABButton().getTooltip(), "Store Current State to Memory A and restore Memory B");

    bar.compare();
    EXPECT_EQ(bar.getMemoryState(), 1);
    EXPECT_EQ(values(), b);
    EXPECT_EQ(property("TapePresetPath"), "t/Tape.fxps");
}

TEST_F(PresetBarTest, ACorruptStoredStateChangesNothing)
{
    ABToolBar& bar = ui->getToolBar();
    const char* corrupt[] = {"<Preset><FluxDeck Mix=", "<Preset/>", "<Other><FluxDeck Mix=\"0.1\"/></Other>",
                             "<Preset><OtherEffect Mix=\"0.1\"/></Preset>"};
    for (const char* text : corrupt)
    {
        effect().setProperty(String(abStateProperty), String(text));
        const std::vector<double> before = values();
        bar.compare();
        EXPECT_EQ(values(), before) << text;
        EXPECT_EQ(bar.getMemoryState(), 1) << text;
    }
}

TEST_F(PresetBarTest, TheStoredMemoryTravelsWithTheHostStateAndANewWindowSwapsWithIt)
{
    set("Mix", 0.3f);
    ui->getToolBar().compare();
    set("Mix", 0.8f);
    juce::MemoryBlock state;
    plugin->getStateInformation(state);
    set("Mix", 0.5f);
    plugin->setStateInformation(state.getData(), int(state.getSize()));
    pump();
    openWindow();
    EXPECT_FLOAT_EQ(value("Mix"), 0.8f);
    EXPECT_EQ(ui->getToolBar().getMemoryState(), 0);
    ui->getToolBar().compare(); // the memory stored before the project was saved
    EXPECT_FLOAT_EQ(value("Mix"), 0.3f);
    EXPECT_EQ(ui->getToolBar().getMemoryState(), 1);

    ASSERT_TRUE(topBar().step(+1)); // the bars are bound to the new tree
    EXPECT_EQ(topBar().getNameLabel().getText(), "Classic Drive");
}
} // namespace
