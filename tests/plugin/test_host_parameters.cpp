// The host's flat parameter list over the element tree: conversions by kind,
// deferred writes, notifications, saved bindings, and the product's 45 slots.
#include "engine/EngineTestRig.h"
#include "plugin/ExportedPluginParameter.h"
#include "plugin/FluxDeckPlugin.h"

#include <gtest/gtest.h>
#include <tinyxml2.h>

#include <cmath>
#include <limits>
#include <vector>

using namespace oxa;

namespace
{
using test::GainEffect;

/** The generic frame over an engine with one gain effect at "/Box": a slot for each of its
    parameters, and a spare. */
class BoxPlugin : public Plugin
{
public:
    BoxPlugin()
        : Plugin(FluxDeckPluginDefinition::instance(),
                 BusesProperties()
                     .withInput("Input", juce::AudioChannelSet::stereo(), true)
                     .withOutput("Output", juce::AudioChannelSet::stereo(), true))
    {
        box = std::make_shared<GainEffect>("Box");
        auto engine = std::make_shared<Engine>();
        engine->addElement(box);
        setEngine(engine);
        level = exportParameter(String("/Box"), GainEffect::gainId(), String(), true);
        choice = exportParameter(String("/Box"), GainEffect::choiceId(), String(), true);
        toggle = exportParameter(String("/Box"), GainEffect::switchId(), String("Switch"), true);
        spare = exportParameter(String("Spare"));
    }
    ~BoxPlugin() override { setEngine(nullptr); }
    juce::AudioProcessorEditor* createEditor() override { return nullptr; }

    std::shared_ptr<GainEffect> box;
    ExportedPluginParameter* level = nullptr;
    ExportedPluginParameter* choice = nullptr;
    ExportedPluginParameter* toggle = nullptr;
    ExportedPluginParameter* spare = nullptr;
};

struct HostSide : juce::AudioProcessorParameter::Listener
{
    void parameterValueChanged(int index, float value) override
    {
        ++changes;
        lastIndex = index;
        lastValue = value;
    }
    void parameterGestureChanged(int index, bool starting) override
    {
        gestures.push_back((starting ? 1 : -1) * (index + 1));
    }
    int changes = 0;
    std::vector<int> gestures; // +index+1 for a begin, -(index+1) for an end
    int lastIndex = -1;
    float lastValue = -1.0f;
};
} // namespace

TEST(HostParameters, ConversionsByKind)
{
    BoxPlugin plugin;
    for (auto* bound : {plugin.level, plugin.choice, plugin.toggle})
        ASSERT_TRUE(bound->isBound());

    EXPECT_FLOAT_EQ(plugin.level->getValue(), 0.5f);
    EXPECT_FLOAT_EQ(plugin.level->getDefaultValue(), 0.5f);
    EXPECT_FALSE(plugin.level->isDiscrete());
    EXPECT_EQ(plugin.level->getName(100), juce::String("Test Gain"));
    EXPECT_EQ(plugin.level->getName(4), juce::String("Test"));
    EXPECT_EQ(plugin.toggle->getName(100), juce::String("Switch")) << "an own display name wins";

    // integer 0..3: four steps, and the middle rounds up to 2
    EXPECT_EQ(plugin.choice->getNumSteps(), 4);
    EXPECT_TRUE(plugin.choice->isDiscrete());
    EXPECT_FALSE(plugin.choice->isBoolean());
    EXPECT_FLOAT_EQ(plugin.choice->getDefaultValue(), 1.0f / 3.0f);
    plugin.choice->setValue(0.5f);
    EXPECT_EQ(plugin.box->intParameter(GainEffect::choiceId()), 2);
    EXPECT_FLOAT_EQ(plugin.choice->getValue(), 2.0f / 3.0f);

    // bool: exactly one half is still off
    EXPECT_EQ(plugin.toggle->getNumSteps(), 2);
    EXPECT_TRUE(plugin.toggle->isBoolean());
    plugin.toggle->setValue(1.0f);
    plugin.toggle->setValue(0.5f);
    EXPECT_FALSE(plugin.box->boolParameter(GainEffect::switchId()));
    EXPECT_FLOAT_EQ(plugin.toggle->getValue(), 0.0f);
    plugin.toggle->setValue(0.51f);
    EXPECT_FLOAT_EQ(plugin.toggle->getValue(), 1.0f);

    // text goes through the parameter's own form, both ways
    for (float v : {0.0f, 0.3f, 1.0f})
        EXPECT_NEAR(plugin.level->getValueForText(plugin.level->getText(v, 100)), v, 1e-3f);
    EXPECT_NEAR(plugin.choice->getValueForText(plugin.choice->getText(1.0f, 100)), 1.0f, 1e-6f);
    EXPECT_FLOAT_EQ(plugin.level->getValueForText("not a number"), plugin.level->getValue());

    // an unbound slot keeps what the host wrote and shows its default name
    EXPECT_FALSE(plugin.spare->isBound());
    plugin.spare->setValue(0.7f);
    EXPECT_FLOAT_EQ(plugin.spare->getValue(), 0.7f);
    EXPECT_EQ(plugin.spare->getName(100), juce::String("Spare"));
    EXPECT_FALSE(plugin.spare->isDiscrete());
}

TEST(HostParameters, HostWritesAreDeferredFilteredAndNotEchoed)
{
    BoxPlugin plugin;
    plugin.prepareToPlay(48000.0, 64);
    ParameterChangedAsyncSignal::drainNow();
    HostSide host;
    plugin.level->addListener(&host);

    // the same value does not touch the element at all
    plugin.box->applyPendingParameters(plugin.box->mainState());
    plugin.level->setValue(0.5f);
    EXPECT_FALSE(plugin.box->hasPendingUpdate());

    // a new value is only noted; the render applies it
    plugin.level->setValue(0.8f);
    EXPECT_TRUE(plugin.box->hasPendingUpdate());
    EXPECT_FLOAT_EQ(plugin.box->gainValue, 1.0f);
    EXPECT_FLOAT_EQ(plugin.level->getValue(), 0.8f);
    EXPECT_EQ(host.changes, 0) << "no echo while the host writes";
    juce::AudioBuffer<float> buffer(2, 64);
    buffer.clear();
    juce::MidiBuffer midi;
    plugin.processBlock(buffer, midi);
    EXPECT_FLOAT_EQ(plugin.box->gainValue, 1.6f);
    ParameterChangedAsyncSignal::drainNow();
    EXPECT_EQ(host.changes, 0) << "nor once the write's change notice comes back";

    // broken host values change nothing
    ParameterChangedAsyncSignal::drainNow();
    host.changes = 0;
    plugin.level->setValue(std::numeric_limits<float>::quiet_NaN());
    plugin.level->setValue(std::numeric_limits<float>::infinity());
    plugin.choice->setValue(-std::numeric_limits<float>::infinity());
    EXPECT_FLOAT_EQ(plugin.level->getValue(), 0.8f);
    EXPECT_EQ(plugin.box->intParameter(GainEffect::choiceId()), 1);

    // a change made on the element's side reaches the host once, normalised
    plugin.box->setFloatParameter(GainEffect::gainId(), 0.4f);
    EXPECT_EQ(host.changes, 0);
    ParameterChangedAsyncSignal::drainNow();
    EXPECT_EQ(host.changes, 1);
    EXPECT_EQ(host.lastIndex, plugin.level->getParameterIndex());
    EXPECT_FLOAT_EQ(host.lastValue, 0.2f);

    // A host value beyond the range is answered with the value the element took.
    host.changes = 0;
    plugin.level->setValue(1.5f);
    ParameterChangedAsyncSignal::drainNow();
    EXPECT_EQ(host.changes, 1);
    EXPECT_FLOAT_EQ(host.lastValue, 1.0f);

    // A host write overtaken by a change on the element's side: the host hears the latter.
    host.changes = 0;
    plugin.level->setValue(0.7f);
    plugin.box->setFloatParameter(GainEffect::gainId(), 0.2f);
    ParameterChangedAsyncSignal::drainNow();
    EXPECT_GE(host.changes, 1);
    EXPECT_FLOAT_EQ(host.lastValue, 0.1f);
    plugin.level->removeListener(&host);
}

TEST(HostParameters, EditorGesturesReachOnlyTheirOwnSlot)
{
    BoxPlugin plugin;
    HostSide host;
    plugin.level->addListener(&host);
    plugin.choice->addListener(&host);
    EngineProxy& proxy = *plugin.getProxy();
    const int level = plugin.level->getParameterIndex() + 1;

    proxy.beginGesture(*plugin.box, GainEffect::gainId());
    proxy.endGesture(*plugin.box, GainEffect::gainId());
    EXPECT_EQ(host.gestures, (std::vector<int> {level, -level}));

    // another element with the same id, or an id no slot exports, is not ours
    GainEffect stranger("Box");
    host.gestures.clear();
    proxy.beginGesture(stranger, GainEffect::gainId());
    proxy.beginGesture(*plugin.box, GainEffect::switchId() + 1000);
    EXPECT_TRUE(host.gestures.empty());

    // an unbound slot says nothing to the host
    plugin.unbindSlot(0, false);
    proxy.beginGesture(*plugin.box, GainEffect::gainId());
    EXPECT_TRUE(host.gestures.empty());
    plugin.level->removeListener(&host);
    plugin.choice->removeListener(&host);
}

TEST(HostParameters, SlotsFollowAReplacedEngine)
{
    BoxPlugin plugin;
    auto box = std::make_shared<GainEffect>("Box");
    box->gainValue = 0.2f;
    box->publishParameters(); // written behind the element's back
    auto engine = std::make_shared<Engine>();
    engine->addElement(box);
    plugin.setEngine(engine);
    plugin.box.reset();
    ASSERT_TRUE(plugin.level->isBound());
    EXPECT_FLOAT_EQ(plugin.level->getValue(), 0.1f);
    plugin.level->setValue(0.3f);
    EXPECT_FLOAT_EQ(box->floatParameter(GainEffect::gainId()), 0.6f);
    EXPECT_EQ(plugin.findSlot(String("/Box"), GainEffect::gainId()), std::optional<size_t>(0));

    // an engine without the element: slots stay, unbound, with their default names
    plugin.setEngine(std::make_shared<Engine>());
    EXPECT_FALSE(plugin.level->isBound());
    EXPECT_FLOAT_EQ(plugin.level->getValue(), 0.0f);
    EXPECT_FALSE(plugin.findSlot(String("/Box"), GainEffect::gainId()).has_value());
}

TEST(HostParameters, BindingsSaveLoadAndBind)
{
    BoxPlugin plugin;
    tinyxml2::XMLDocument doc;
    auto* automation = doc.NewElement("Automation");
    doc.InsertEndChild(automation);
    ASSERT_TRUE(plugin.save(automation));
    int children = 0;
    for (auto* c = automation->FirstChildElement("AutomationConnection"); c; c = c->NextSiblingElement())
        ++children;
    EXPECT_EQ(children, 3);
    const auto* second = automation->FirstChildElement()->NextSiblingElement();
    EXPECT_EQ(second->UnsignedAttribute("sourceIndex"), 1u);
    EXPECT_STREQ(second->Attribute("targetPath"), "/Box");
    EXPECT_STREQ(second->Attribute("parameterName"), "TestChoice");

    // bad children are skipped, the good one still loads
    tinyxml2::XMLDocument bad;
    ASSERT_EQ(bad.Parse("<Automation>"
                        "<AutomationConnection sourceIndex='45' targetPath='/Box' parameterName='TestGain'/>"
                        "<AutomationConnection targetPath='/Box' parameterName='TestGain'/>"
                        "<AutomationConnection sourceIndex='2' targetPath='/Nowhere' parameterName='TestGain'/>"
                        "<AutomationConnection sourceIndex='1' targetPath='/Box' parameterName='NoSuchName'/>"
                        "<AutomationConnection sourceIndex='3' targetPath='/Box' parameterName='TestGain'/>"
                        "</Automation>"),
              tinyxml2::XML_SUCCESS);
    plugin.load(bad.RootElement());
    for (auto* unbound : {plugin.level, plugin.choice, plugin.toggle})
        EXPECT_FALSE(unbound->isBound());
    ASSERT_TRUE(plugin.spare->isBound());
    EXPECT_EQ(plugin.spare->getName(100), juce::String("Test Gain"))
        << "without a saved display name the slot shows the parameter's own, as before the save";
    EXPECT_FLOAT_EQ(plugin.spare->getValue(), 0.5f);

    // bind: a known target is refused, a free target goes back to its old slot first
    EXPECT_FALSE(plugin.bind({String("/Box"), String("TestGain")}, String()));
    EXPECT_FALSE(plugin.bind({String("/Box"), String("NoSuchName")}, String()));
    EXPECT_TRUE(plugin.bind({String("/Box"), String("TestSwitch")}, String()));
    EXPECT_TRUE(plugin.toggle->isBound());
    plugin.unbind({String("/Box"), String("TestSwitch")});
    EXPECT_FALSE(plugin.toggle->isBound());
    EXPECT_TRUE(plugin.bind({String("/Box"), String("TestChoice")}, String()));
    EXPECT_TRUE(plugin.bind({String("/Box"), String("TestSwitch")}, String()));
    EXPECT_FALSE(plugin.bind({String("/Box"), String("TestSwitch")}, String()));
    EXPECT_TRUE(plugin.choice->isBound());
    EXPECT_TRUE(plugin.toggle->isBound());
    EXPECT_TRUE(plugin.level->targetPath().isEmpty());
}

namespace
{
juce::AudioProcessorParameter& hostSlot(FluxDeckPlugin& plugin, const char* shownName)
{
    for (auto* p : plugin.getParameters())
        if (p->getName(100) == shownName)
            return *p;
    ADD_FAILURE() << shownName;
    return *plugin.getParameters()[0];
}
} // namespace

TEST(FluxDeckHostParameters, WritesOfOneBatchKeepTheirMeaning)
{
    struct Write
    {
        const char* parameter;
        float value;
    };
    struct Case
    {
        const char* what;
        std::vector<Write> batch;
        const char* checked;
        float expected;
    };
    const Case cases[] = {
        {"position, then Manual mode", {{"Manual Flange", 0.75f}, {"Flange Mode", 0.0f}}, "Manual Flange", 0.75f},
        {"Manual mode, then position", {{"Flange Mode", 0.0f}, {"Manual Flange", 0.75f}}, "Manual Flange", 0.75f},
        {"Manual mode alone starts the sweep at its end", {{"Flange Mode", 0.0f}}, "Manual Flange", 0.0f},
        {"linked encoder, then decoder None",
         {{"Noise Reduction Encoder", 1.0f / 3.0f}, {"Noise Reduction Decoder", 0.0f}},
         "Noise Reduction Decoder", 0.0f},
        {"linked encoder alone drives the decoder", {{"Noise Reduction Encoder", 1.0f / 3.0f}},
         "Noise Reduction Decoder", 1.0f / 3.0f},
        {"decoder None (no change), then linked encoder",
         {{"Noise Reduction Decoder", 0.0f}, {"Noise Reduction Encoder", 1.0f / 3.0f}},
         "Noise Reduction Decoder", 1.0f / 3.0f},
    };
    for (const Case& c : cases)
    {
        FluxDeckPlugin plugin;
        plugin.prepareToPlay(48000.0, 32);
        juce::AudioBuffer<float> buffer(2, 32);
        juce::MidiBuffer midi;
        hostSlot(plugin, "Manual Flange").setValue(0.25f); // away from both ends, in LFO mode
        plugin.processBlock(buffer, midi);
        for (const Write& w : c.batch) // one batch: no block in between
            hostSlot(plugin, w.parameter).setValue(w.value);
        plugin.processBlock(buffer, midi);
        EXPECT_NEAR(hostSlot(plugin, c.checked).getValue(), c.expected, 1e-6f) << c.what;
    }
}

TEST(FluxDeckHostParameters, ARepeatedHostPositionDoesNotSetTheElementAgain)
{
    FluxDeckPlugin plugin;
    Element* fx = plugin.getEngine()->findElement(String("FluxDeck"));
    auto& gain = hostSlot(plugin, "Input Gain"); // -40..40 dB: rounding shows on many positions
    int rewritten = 0;
    for (int i = 0; i <= 2000; ++i)
    {
        const float v = (float) i / 2000.0f;
        gain.setValue(v);
        plugin.applyPendingWrites();
        gain.setValue(v);
        if (fx->hasPendingUpdate())
            ++rewritten;
        plugin.applyPendingWrites();
    }
    EXPECT_EQ(rewritten, 0);
    ParameterChangedAsyncSignal::drainNow();
}
