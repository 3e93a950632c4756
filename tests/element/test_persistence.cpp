// Writing elements and the engine as XML and reading them back: text forms, tolerant
// loading, properties, versions, connections, listeners, files and host bindings.

#include "ElementTestSupport.h"
#include "element/ElementFactory.h"
#include "element/ElementParamEnvelope.h"
#include "element/ElementPersistence.h"
#include "engine/EngineTestRig.h"
#include "plugin/AutomationParameterInterface.h"
#include "resources/VolumeTable.h"

#include "element/ConnectionSpec.h"
#include "engine/SignalConnection.h"

#include <gtest/gtest.h>
#include <juce_core/juce_core.h>
#include <tinyxml2.h>

#include <limits>

namespace oxa::test
{
namespace
{
std::string document(const std::string& attributes, const std::string& children = "")
{
    return "<OXA4><SyncedProbe " + attributes + ">" + children + "</SyncedProbe></OXA4>";
}

ElementParamEnvelope* envelopeOf(Element& element, uint32_t id) { return element.findInfo(id)->envelope(); }
} // namespace

TEST(ElementPersistenceText, AttributesInOrderWithTheirTextForms)
{
    SyncedProbe probe("a&b");
    const auto& ids = ProbeElement::ids();
    probe.setFloatParameter(ids.gain, 0.01f);
    probe.setIntParameter(ids.mode, 2);
    probe.setBoolParameter(ids.enabled, true);
    probe.setStringParameter(ids.label, String("<x>"));

    const std::string text = save(probe);
    EXPECT_EQ(text.rfind("<OXA4>\n    <SyncedProbe Name=\"a&amp;b\"", 0), 0u) << text;
    EXPECT_NE(text.find("Gain=\"0.0099999998\""), std::string::npos) << text;
    EXPECT_NE(text.find("Mode=\"2\" Enabled=\"1\" Label=\"&lt;x&gt;\""), std::string::npos) << text;
    EXPECT_EQ(text.find("Level="), std::string::npos) << "not persistent";
    EXPECT_NE(text.find("SyncedProbeVersion=\"3\"/>"), std::string::npos) << "version last";
    EXPECT_LT(text.find("Gain="), text.find("PersistRate=")) << "declaration order";
    EXPECT_EQ(text.find("<?xml"), std::string::npos);
    EXPECT_EQ(text.find("Properties"), std::string::npos) << "nothing to write";
    EXPECT_EQ(text.find("Connections"), std::string::npos);
    EXPECT_NE(text.back(), '\0');

    probe.savedVersion = 0;
    EXPECT_EQ(save(probe).find("SyncedProbeVersion"), std::string::npos);
    EXPECT_EQ(save(probe, legacyLayout()).rfind("<HarrierProgram>", 0), 0u);
}

TEST(ElementPersistenceText, SaveLoadSaveIsByteIdentical)
{
    SyncedProbe probe;
    const auto& ids = ProbeElement::ids();
    probe.setFloatParameter(ids.gain, 0.123456789f);
    probe.setFloatParameter(ids.band, -4.8216374e-17f);
    probe.setFloatParameter(SyncedProbe::rateId(), 1.0f / 3.0f);
    probe.setProperty("b", "2");
    probe.setProperty("a", "1");
    const std::string first = save(probe);

    SyncedProbe copy("other");
    ASSERT_TRUE(load(copy, first));
    EXPECT_EQ(save(copy), first);
    EXPECT_EQ(copy.name().text(), "probe");
    EXPECT_FLOAT_EQ(copy.floatParameter(ids.gain), 0.123456789f);
    EXPECT_LT(first.find("a=\"1\""), first.find("b=\"2\"")) << "properties in key order";
}

TEST(ElementPersistenceLoad, MissingUnknownAndBadValues)
{
    const auto& ids = ProbeElement::ids();
    SyncedProbe probe;
    probe.setFloatParameter(ids.gain, 0.9f);
    probe.setIntParameter(ids.mode, 3);
    probe.setBoolParameter(ids.enabled, true);
    probe.setStringParameter(ids.label, String("kept?"));

    ASSERT_TRUE(load(probe, document("Mystery=\"7\" Band=\"abc\" Mode=\"99\" Enabled=\"true\"")));
    EXPECT_EQ(probe.name().text(), "") << "an absent name empties it";
    EXPECT_FLOAT_EQ(probe.floatParameter(ids.gain), 0.5f) << "missing resets to the default";
    EXPECT_FLOAT_EQ(probe.floatParameter(ids.band), 0.0f) << "text takes the default";
    EXPECT_EQ(probe.intParameter(ids.mode), 3) << "clamped to the range";
    EXPECT_FALSE(probe.boolParameter(ids.enabled)) << "\"true\" is not a number";
    EXPECT_EQ(probe.stringParameter(ids.label).str(), "none");
    EXPECT_EQ(save(probe).find("Mystery"), std::string::npos) << "unknown attributes are dropped";

    for (const char* bad : {"nan", "NaN", "inf", "-inf", "1e999"})
    {
        probe.setFloatParameter(ids.gain, 0.9f);
        ASSERT_TRUE(load(probe, document(std::string("Gain=\"") + bad + "\"")));
        EXPECT_FLOAT_EQ(probe.floatParameter(ids.gain), 0.5f) << bad;
    }

    ASSERT_TRUE(load(probe, document("Gain=\"-3\" Band=\"7\" Mode=\"-2\" Enabled=\"2\"")));
    EXPECT_FLOAT_EQ(probe.floatParameter(ids.gain), 0.0f);
    EXPECT_FLOAT_EQ(probe.floatParameter(ids.band), 1.0f);
    EXPECT_EQ(probe.intParameter(ids.mode), 0);
    EXPECT_TRUE(probe.boolParameter(ids.enabled));
    ASSERT_TRUE(load(probe, document("Enabled=\"-1\"")));
    EXPECT_FALSE(probe.boolParameter(ids.enabled));
}

TEST(ElementPersistenceLoad, SyncedValuesUnclampedInAnyOrderAndVersionsReachTheClass)
{
    SyncedProbe probe;
    ASSERT_TRUE(load(probe, document("PersistRate=\"4\" SyncToHost=\"1\"")));
    EXPECT_TRUE(probe.synced());
    EXPECT_FLOAT_EQ(probe.rate(), 4.0f) << "a note length, not a rate";

    ASSERT_TRUE(load(probe, document("PersistRate=\"4\" SyncToHost=\"0\"")));
    EXPECT_FLOAT_EQ(probe.rate(), 1.0f);

    // Versions reach the derived class; the old layout is told by the root.
    const std::string oldLayout = "<HarrierProgram><SyncedProbe SyncedProbeVersion=\"5\"/></HarrierProgram>";
    for (auto [text, version] : {std::pair{document("SyncedProbeVersion=\"5\""), 5}, {document(""), 0},
                                 {document("SyncedProbeVersion=\"x\""), 0}, {oldLayout, -1}})
    {
        ASSERT_TRUE(load(probe, text)) << text;
        EXPECT_EQ(probe.loadedVersion, version) << text;
    }
}

TEST(ElementPersistenceLoad, RefusedDocumentsChangeNothing)
{
    const auto& ids = ProbeElement::ids();
    SyncedProbe probe;
    probe.setFloatParameter(ids.gain, 0.75f);
    for (const std::string& bad :
         {std::string(), std::string("garbage"), std::string("<OXA4/>"), std::string("<OXA4><Probe Gain=\"0\"/></OXA4>"),
          std::string("<OXA4><SyncedProbe Gain=\"0\">"), std::string("<OXA4>text only</OXA4>")})
    {
        EXPECT_FALSE(load(probe, bad)) << bad;
        EXPECT_FLOAT_EQ(probe.floatParameter(ids.gain), 0.75f) << bad;
        EXPECT_EQ(probe.name().text(), "probe") << bad;
    }
}

TEST(ElementPersistenceProperties, PersistentOnesAreReplacedOthersStay)
{
    SyncedProbe probe;
    probe.setProperty("old", "1");
    probe.setProperty("session", "x", false);
    probe.setProperty(String("empty"), ElementProperty());
    probe.extras().properties[String("empty")].isPersistent = 1;
    const std::string text = save(probe);
    EXPECT_NE(text.find("<Properties empty=\"\" old=\"1\"/>"), std::string::npos) << text;
    EXPECT_EQ(text.find("session"), std::string::npos);

    ASSERT_TRUE(load(probe, document("", "<Properties new=\"a &amp; b\"/>")));
    EXPECT_FALSE(probe.hasProperty("old"));
    EXPECT_TRUE(probe.hasProperty("session"));
    EXPECT_EQ(probe.property("new").value.str(), "a & b");
    EXPECT_EQ(probe.property("new").isPersistent, 1);

    ASSERT_TRUE(load(probe, document("", "<Properties/>")));
    EXPECT_FALSE(probe.hasProperty("new"));
    EXPECT_TRUE(probe.hasProperty("session"));
}

TEST(ElementPersistenceConnections, SavedUnderTheirParameterAndReadBack)
{
    SignalConnection::registerType();
    const uint32_t gain = ProbeElement::ids().gain;
    SyncedProbe probe;
    ConnectionSpec spec;
    spec.source = String("Somewhere");
    spec.parameter = gain;
    spec.ratio = 0.25f;
    ASSERT_TRUE(probe.addConnection(spec, false));

    const std::string text = save(probe);
    EXPECT_NE(text.find("<Connections>\n            <SignalConnection "), std::string::npos) << text;
    EXPECT_NE(text.find("ModulationDestination=\"Gain\""), std::string::npos) << text;
    EXPECT_EQ(save(probe, legacyLayout()).find("Connections"), std::string::npos);

    SyncedProbe copy;
    ASSERT_TRUE(load(copy, text));
    ASSERT_EQ(envelopeOf(copy, gain)->children().size(), 1u);
    EXPECT_EQ(save(copy), text);
}

TEST(ElementPersistenceListener, CountsAndVetoes)
{
    struct Listener : ElementLoadListener
    {
        bool onElement(Element&, SaveOptions&, int version) override
        {
            seenVersion = version;
            return allow;
        }
        void onProgress() override { ++progress; }
        bool allow = true;
        int progress = 0;
        int seenVersion = 0;
    } listener;

    SaveOptions options;
    options.loadListener = &listener;
    SyncedProbe probe;
    ASSERT_TRUE(load(probe, document("Gain=\"0.1\"", "<Properties a=\"1\"/>"), options));
    EXPECT_EQ(listener.progress, 3);
    EXPECT_EQ(listener.seenVersion, currentDocumentVersion);

    listener.allow = false;
    EXPECT_FALSE(load(probe, document("Gain=\"0.9\""), options));
    EXPECT_FLOAT_EQ(probe.floatParameter(ProbeElement::ids().gain), 0.1f);
}

TEST(ElementPersistenceVolumes, NeededVolumesAreWrittenAndAMissingOneIsReported)
{
    ensureDefaultVolumes();
    SyncedProbe probe;
    SaveOptions options;
    options.usedVolumes.insert({"/nowhere/bank.img", nullptr});
    const std::string text = save(probe, options);
    ASSERT_NE(text.find("\n    <NeededFS Source=\"/nowhere/bank.img\"/>"), std::string::npos) << text;
    EXPECT_GT(text.find("NeededFS"), text.find("<SyncedProbe"));

    auto engine = std::make_shared<Engine>();
    std::vector<std::string> errors;
    engine->errorSignal.connect(&errors, [&](Error* e) { errors.push_back(e->context.str() + ": " + e->message.str()); });
    ASSERT_TRUE(load(*engine, "<OXA4><Engine Name=\"Engine\"/><NeededFS Source=\"/nowhere/bank.img\"/></OXA4>"));
    ASSERT_EQ(errors.size(), 1u);
    EXPECT_EQ(errors[0], "Loading: Unable to mount the Volume from '/nowhere/bank.img' (File not found)");
    engine->errorSignal.disconnect(&errors);
}

TEST(ElementPersistenceFiles, ThroughPaths)
{
    ensureDefaultVolumes();
    const juce::File folder = juce::File::createTempFile("persist");
    ASSERT_TRUE(folder.createDirectory());
    const Path file(folder.getChildFile("probe.xml").getFullPathName());

    SyncedProbe probe;
    probe.setFloatParameter(ProbeElement::ids().gain, 0.25f);
    SaveOptions options;
    ASSERT_TRUE(saveToFile(probe, file, options));
    SyncedProbe copy;
    SaveOptions readOptions;
    ASSERT_TRUE(loadFromFile(copy, file, readOptions));
    EXPECT_FLOAT_EQ(copy.floatParameter(ProbeElement::ids().gain), 0.25f);
    EXPECT_EQ(readOptions.documentFolder.str(), file.parent().str());

    tinyxml2::XMLDocument xml;
    ASSERT_TRUE(readXmlFile(xml, file));
    EXPECT_STREQ(xml.RootElement()->Name(), "OXA4");
    const Path copyPath(folder.getChildFile("copy.xml").getFullPathName());
    ASSERT_TRUE(writeXmlFile(xml, copyPath));
    EXPECT_EQ(juce::File(copyPath.text()).loadFileAsString(), juce::File(file.text()).loadFileAsString());

    ASSERT_TRUE(folder.getChildFile("empty.xml").create());
    for (const char* bad : {"missing.xml", "empty.xml"})
        EXPECT_FALSE(loadFromFile(copy, Path(folder.getChildFile(bad).getFullPathName()), options)) << bad;
    EXPECT_FALSE(readXmlFile(xml, Path(folder.getChildFile("missing.xml").getFullPathName())));
    folder.deleteRecursively();
}

// The engine as a document: children rebuilt by type name, the host bindings held
// until the engine is prepared, and a vetoing listener that keeps the tree.
namespace
{
struct Bindings : AutomationParameterInterface
{
    bool bind(const AutomationTarget&, const String&) override { return false; }
    void unbind(const AutomationTarget&) override {}
    bool save(tinyxml2::XMLElement* node) override
    {
        if (!bound)
            return false;
        node->InsertNewChildElement("AutomationConnection")->SetAttribute("sourceIndex", 3);
        return true;
    }
    void load(const tinyxml2::XMLElement* node) override
    {
        ++loads;
        lastIndex = node->FirstChildElement("AutomationConnection")->IntAttribute("sourceIndex", -1);
    }
    bool bound = true;
    int loads = 0;
    int lastIndex = -1;
};

void registerKnob()
{
    ElementFactory::instance().registerType("Gain", "GainEffect", [] { return std::make_shared<GainEffect>("Knob"); });
}

GainEffect* knobOf(Engine& engine) { return dynamic_cast<GainEffect*>(engine.findElement(String("Knob"))); }
} // namespace

TEST(EnginePersistence, ChildrenAndBindingsRoundTrip)
{
    registerKnob();
    Bindings bindings;
    Engine source;
    source.setAutomation(&bindings);
    auto knob = std::make_shared<GainEffect>("Knob");
    source.addElement(knob);
    knob->setFloatParameter(GainEffect::gainId(), 1.5f);

    const std::string text = save(source);
    EXPECT_NE(text.find("\n        <GainEffect Name=\"Knob\""), std::string::npos) << text;
    EXPECT_NE(text.find("<Automation>\n            <AutomationConnection sourceIndex=\"3\"/>"), std::string::npos);

    Engine copy;
    copy.setAutomation(&bindings);
    ASSERT_TRUE(load(copy, text));
    ASSERT_NE(knobOf(copy), nullptr);
    EXPECT_FLOAT_EQ(knobOf(copy)->gainValue, 1.5f);
    EXPECT_EQ(bindings.loads, 0) << "held until the engine is prepared";
    ASSERT_NE(copy.heldAutomationXml(), nullptr);
    copy.prepare(48000.0, 64);
    copy.applyHeldAutomation();
    EXPECT_EQ(bindings.loads, 1);
    EXPECT_EQ(bindings.lastIndex, 3);
    EXPECT_EQ(copy.heldAutomationXml(), nullptr);

    // a prepared engine applies them as soon as the load has finished
    ASSERT_TRUE(load(copy, text));
    EXPECT_EQ(bindings.loads, 2);

    bindings.bound = false;
    EXPECT_EQ(save(source).find("Automation"), std::string::npos);
}

TEST(EnginePersistence, UnknownChildrenFailTheLoadButTheRestLoadsAndAVetoKeepsThem)
{
    registerKnob();
    Engine engine;
    const size_t envelopes = engine.envelopes().size();
    ASSERT_GT(envelopes, 0u);
    EXPECT_FALSE(load(engine, "<OXA4><Engine Name=\"Engine\" Tempo=\"90\" SyncToHost=\"0\"><Alien/><GainEffect Name=\"Knob\" "
                              "TestGain=\"9\"/><Properties a=\"1\"/></Engine></OXA4>"));
    ASSERT_NE(knobOf(engine), nullptr);
    EXPECT_FLOAT_EQ(knobOf(engine)->gainValue, 2.0f) << "clamped";
    EXPECT_EQ(engine.renderOrder().size(), 1u) << "the properties group is no child element";
    EXPECT_FLOAT_EQ(engine.floatParameter(Engine::ids().tempo), 90.0f);
    EXPECT_EQ(engine.children().size(), envelopes + 1) << "the engine's own envelopes survive a load";

    // A vetoing listener keeps the children.
    struct Veto : ElementLoadListener
    {
        bool onElement(Element&, SaveOptions&, int) override { return false; }
        void onProgress() override {}
    } veto;
    SaveOptions options;
    options.loadListener = &veto;
    EXPECT_FALSE(load(engine, "<OXA4><Engine Name=\"Engine\"/></OXA4>", options));
    EXPECT_NE(knobOf(engine), nullptr);
}
} // namespace oxa::test
