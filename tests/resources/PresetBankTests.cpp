// Loading, applying, saving and walking module presets on a real processor
// element: bad files change nothing, locks and the kept values hold, and the
// factory banks in the module's archive are complete and readable.
#include "element/ElementTestSupport.h"
#include "resources/VolumeTable.h"
#include "resources/presets/PresetBank.h"
#include "tape/FluxDeckProcessor.h"

#include <gtest/gtest.h>
#include <juce_core/juce_core.h>

#include <algorithm>
#include <set>

namespace oxa
{
namespace
{

const char* const fullAttributes[] = {
    "Name", "Bypass", "SyncToHost", "Fade", "MaxRelativeDelay", "RelativeDelay", "Delay", "PhaseInvert",
    "MagneticHardness", "Hysteresis", "NoiseGain", "Spacing", "Thickness", "Azimuth", "TrackWidthRatio", "Speed",
    "WowMod", "WowRate", "FlutterMod", "FlutterRate", "NoiseMod", "NoiseRate", "Feedback", "InputGain",
    "OutputGain", "ApplyPlayheadFilter", "NoiseReductionEncoder", "NoiseReductionDecoder", "FlangeMode", "LFOFreq",
    "LFOPhase", "LFOShape", "LFOSymmetry", "LFOSwing", "ApplyRecordHead", "ApplyTransport", "Drive", "NoiseSync",
    "Mix", "NRLink", "DegradeDepth", "DegradeRate", "ApplyNoiseGate", "ApplyCompander", "ApplyFeedbackCompensation",
    "ApplyLowLatency", "OutputPad", "FluxDeckVersion"};

class PresetTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ensureDefaultVolumes();
        folder.createDirectory();
        processor->prepare(48000.0, 256);
        full.bind(processor);
        tape.bind(processor);
    }
    void TearDown() override { folder.deleteRecursively(); }

    Path write(const char* name, const std::string& text)
    {
        const auto file = folder.getChildFile(name);
        file.replaceWithText(juce::String::fromUTF8(text.data(), (int) text.size()), false, false, nullptr);
        return Path(file.getFullPathName());
    }
    // A preset of this effect with the given attributes and nothing else.
    Path preset(const char* name, const std::string& attributes, const char* tag = "FluxDeck")
    {
        return write(name, std::string("<ModulePreset>\n    <") + tag + " " + attributes + "/>\n</ModulePreset>\n");
    }
    float value(const char* name) const { return processor->floatParameter(processor->parameterId(name)); }
    bool flag(const char* name) const { return processor->boolParameter(processor->parameterId(name)); }
    int number(const char* name) const { return processor->intParameter(processor->parameterId(name)); }
    void set(const char* name, float v) { processor->setFloatParameter(processor->parameterId(name), v); }
    std::string snapshot() { return test::save(*processor); }

    juce::TemporaryFile scratch;
    juce::File folder = scratch.getFile();
    std::shared_ptr<FluxDeckProcessor> processor = std::make_shared<FluxDeckProcessor>(String("FluxDeck"));
    FullPresetBank full { Path("$Resource/resource/presets"), Path(folder.getChildFile("User").getFullPathName()) };
    TapePresetBank tape { Path("$Resource/resource/tapepresets"), Path(folder.getChildFile("Tape").getFullPathName()) };
};

TEST_F(PresetTest, RefusedFilesLeaveTheEffectUnchanged)
{
    set("Mix", 0.3f);
    processor->setProperty("PresetPath", "before");
    const std::string before = snapshot();
    const std::string good = "<ModulePreset><FluxDeck Mix=\"0.9\" Feedback=\"0.5\"/></ModulePreset>";
    const std::pair<const char*, std::string> cases[] = {
        {"not xml", "this is not xml"},
        {"empty", ""},
        {"wrong root", "<Preset><FluxDeck Mix=\"0.9\"/></Preset>"},
        {"no child", "<ModulePreset>text only</ModulePreset>"},
        {"other module", "<ModulePreset><TapeEcho Mix=\"0.9\"/></ModulePreset>"},
        {"truncated", good.substr(0, good.size() / 2)},
        {"ten megabytes", "<ModulePreset><FluxDeck Mix=\"0.9\" " + std::string(10 << 20, ' ') + "</ModulePreset>"},
    };
    for (const auto& [name, text] : cases)
    {
        EXPECT_FALSE(full.loadPreset(write("bad.fxps", text))) << name;
        EXPECT_FALSE(tape.loadPreset(write("bad.fxps", text))) << name;
        EXPECT_EQ(snapshot(), before) << name;
    }
    EXPECT_FALSE(full.loadPreset(Path(folder.getChildFile("missing.fxps").getFullPathName())));
    FullPresetBank unbound;
    EXPECT_FALSE(unbound.loadPreset(preset("ok.fxps", "Mix=\"0.9\"")));
    EXPECT_EQ(snapshot(), before);
}

TEST_F(PresetTest, OddValuesAreClampedOrDefaulted)
{
    set("Feedback", 0.7f);
    set("Drive", 12.0f);
    ASSERT_TRUE(full.loadPreset(preset("odd.fxps", "Mix=\"nan\" Feedback=\"inf\" Drive=\"1e30\" InputGain=\"-1e30\" "
                                                   "OutputGain=\"abc\" NoiseGain=\"-1e999\" FlangeMode=\"7\" "
                                                   "Unknown=\"3\" FluxDeckVersion=\"1\"")));
    EXPECT_EQ(value("Mix"), 1.0f);          // NaN: the default
    EXPECT_EQ(value("Feedback"), 0.0f);     // infinity: the default
    EXPECT_EQ(value("Drive"), 40.0f);       // huge: clamped
    EXPECT_EQ(value("InputGain"), -40.0f);
    EXPECT_EQ(value("OutputGain"), 0.0f);   // unreadable: the default
    EXPECT_EQ(value("NoiseGain"), -80.0f);
    EXPECT_EQ(number("FlangeMode"), 1);
    EXPECT_EQ(value("Delay"), 0.016f);      // missing: the default
}

TEST_F(PresetTest, FullLoadKeepsNameBypassAndLockedValues)
{
    processor->setBoolParameter(processor->parameterId("Bypass"), false);
    set("Mix", 0.25f);
    processor->setParameterLocked(processor->parameterId("Mix"), true);
    processor->setProperty("TapePresetPath", "$Resource/resource/tapepresets/11 VHS.fxps");
    processor->setModified();

    const Path path = preset("full.fxps", "Name=\"Other\" Bypass=\"1\" Mix=\"0.8\" Feedback=\"0.4\" "
                                          "FluxDeckVersion=\"1\"");
    ASSERT_TRUE(full.loadPreset(path));
    EXPECT_EQ(processor->name().text(), String("FluxDeck"));
    EXPECT_FALSE(flag("Bypass"));
    EXPECT_EQ(value("Mix"), 0.25f);
    EXPECT_FLOAT_EQ(value("Feedback"), 0.4f);
    EXPECT_EQ(full.currentPreset(), path);
    EXPECT_FALSE(processor->hasProperty("TapePresetPath"));
    EXPECT_FALSE(processor->isModified());

    unlockAll(*processor);
    EXPECT_FALSE(processor->isParameterLocked(processor->parameterId("Mix")));
    ASSERT_TRUE(full.loadPreset(path));
    EXPECT_FLOAT_EQ(value("Mix"), 0.8f);
}

TEST_F(PresetTest, UnlockAllReleasesExactlyItsFive)
{
    for (const auto& record : processor->parameters())
        processor->setParameterLocked(record->id(), true);
    unlockAll(*processor);
    const std::set<std::string> released(lockableParameterNames().begin(), lockableParameterNames().end());
    for (const auto& record : processor->parameters())
        EXPECT_EQ(processor->isParameterLocked(record->id()), released.count(record->name().str()) == 0)
            << record->name();
}

TEST_F(PresetTest, SyncedValuesSurviveBecauseBoolsComeFirstAndOldFilesConvertHysteresis)
{
    ASSERT_TRUE(full.loadPreset(preset("synced.fxps", "LFOFreq=\"16\" SyncToHost=\"1\" FluxDeckVersion=\"1\"")));
    EXPECT_EQ(value("LFOFreq"), 16.0f);
    ASSERT_TRUE(full.loadPreset(preset("free.fxps", "LFOFreq=\"16\" SyncToHost=\"0\" FluxDeckVersion=\"1\"")));
    EXPECT_EQ(value("LFOFreq"), 10.0f);

    ASSERT_TRUE(full.loadPreset(preset("old.fxps", "Hysteresis=\"0.5\"")));
    EXPECT_FLOAT_EQ(value("Hysteresis"), 0.6666667f);
    ASSERT_TRUE(tape.loadPreset(preset("oldtape.fxps", "Hysteresis=\"0.5\"")));
    EXPECT_FLOAT_EQ(value("Hysteresis"), 0.6666667f);
    ASSERT_TRUE(full.loadPreset(preset("new.fxps", "Hysteresis=\"0.5\" FluxDeckVersion=\"1\"")));
    EXPECT_FLOAT_EQ(value("Hysteresis"), 0.5f);
}

TEST_F(PresetTest, TapeLoadTouchesOnlyTheTapeTable)
{
    // Everything away from its default, then a tape file that names every attribute.
    std::string attributes;
    std::map<std::string, float> before;
    for (const auto& record : processor->parameters())
        if (record->kind() == ParameterKind::Float)
        {
            const auto& d = static_cast<const ParameterDescription<float>&>(*record->description());
            processor->setFloatParameter(record->id(), d.min + 0.3f * (d.max - d.min));
            attributes += record->name().str() + "=\"" + std::to_string(d.min + 0.6f * (d.max - d.min)) + "\" ";
            before[record->name().str()] = processor->floatParameter(record->id());
        }
    processor->setProperty("PresetPath", "kept");

    const Path path = preset("tape.fxps", attributes + "FluxDeckVersion=\"1\"");
    ASSERT_TRUE(tape.loadPreset(path));
    const auto& table = TapePresetBank::tapeParameterNames();
    EXPECT_EQ(table.size(), 26u);
    for (const auto& [name, old] : before)
    {
        const bool inTable = std::any_of(table.begin(), table.end(), [&](const char* n) { return name == n; });
        EXPECT_EQ(value(name.c_str()) != old, inTable) << name;
    }
    EXPECT_EQ(tape.currentPreset(), path);
    EXPECT_EQ(processor->property("PresetPath").value, String("kept"));
}

TEST_F(PresetTest, SaveReloadSaveIsByteIdentical)
{
    const Path userRoot = full.userRoot;
    EXPECT_FALSE(userRoot.exists());
    EXPECT_TRUE(full.listPresets().size() == 36u); // a missing user folder lists nothing
    set("Feedback", 0.123456f);
    set("Delay", 0.0333f);
    processor->setParameterLocked(processor->parameterId("Drive"), true);

    const Path first = userRoot.joined("Mine");
    ASSERT_TRUE(full.savePreset(first));
    EXPECT_TRUE(userRoot.exists());
    const Path saved(first.str() + ".fxps");
    EXPECT_EQ(full.currentPreset(), saved);
    const juce::File file(saved.text());
    const auto bytesOnce = file.loadFileAsString();
    EXPECT_FALSE(bytesOnce.contains("\r"));
    EXPECT_FALSE(bytesOnce.startsWith("<?xml"));
    EXPECT_TRUE(bytesOnce.contains("\n    <FluxDeck "));

    ASSERT_TRUE(full.loadPreset(saved));
    ASSERT_TRUE(full.savePreset(saved));
    EXPECT_EQ(file.loadFileAsString(), bytesOnce);

    // The user's file follows the factory bank in the walk, which wraps at both ends.
    const auto all = full.listPresets();
    ASSERT_EQ(all.size(), 37u);
    EXPECT_EQ(all.back(), saved);
    EXPECT_EQ(full.stepFrom(saved, 1), all.front());
    EXPECT_EQ(full.stepFrom(all.front(), -1), saved);
    EXPECT_EQ(full.stepFrom(all[3], 2), all[5]);
    EXPECT_EQ(full.stepFrom(Path("elsewhere.fxps"), -1), saved);

    // A save that cannot be written leaves the property alone.
    EXPECT_FALSE(full.savePreset(Path(file.getChildFile("under a file").getFullPathName())));
    EXPECT_EQ(full.currentPreset(), saved);
}

TEST_F(PresetTest, FactoryBanksAreCompleteAndLoad)
{
    const auto presets = full.listPresets();
    const auto tapes = tape.listPresets();
    ASSERT_EQ(presets.size(), 36u);
    ASSERT_EQ(tapes.size(), 18u);
    EXPECT_EQ(presets.front().str(), "$Resource/resource/presets/01 Classic/Classic Drive.fxps");
    EXPECT_EQ(tapes.front().str(), "$Resource/resource/tapepresets/00 Flat.fxps");
    EXPECT_EQ(tapes.back().str(), "$Resource/resource/tapepresets/18 Studio Vintage.fxps");

    for (const Path& path : presets)
    {
        auto in = path.openInput();
        ASSERT_NE(in, nullptr) << path.str();
        const auto text = in->readEntireStreamAsString();
        EXPECT_TRUE(text.contains("\r\n") && !text.replace("\r\n", "").contains("\n")) << path.str();
        tinyxml2::XMLDocument document;
        ASSERT_EQ(document.Parse(text.toRawUTF8()), tinyxml2::XML_SUCCESS) << path.str();
        std::vector<std::string> names;
        for (auto* a = document.RootElement()->FirstChildElement()->FirstAttribute(); a != nullptr; a = a->Next())
            names.emplace_back(a->Name());
        EXPECT_EQ(names, std::vector<std::string>(std::begin(fullAttributes), std::end(fullAttributes)))
            << path.str();
        EXPECT_TRUE(full.loadPreset(path)) << path.str();
    }
    for (const Path& path : tapes)
        EXPECT_TRUE(tape.loadPreset(path)) << path.str();
}

} // namespace
} // namespace oxa
