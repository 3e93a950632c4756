// The engine as a document: children rebuilt by type name, the host bindings held
// until the engine is prepared, and a vetoing listener that keeps the tree.

#include "element/ElementFactory.h"
#include "element/ElementPersistence.h"
#include "engine/BasicProcessingElement.h"
#include "engine/Engine.h"
#include "plugin/AutomationParameterInterface.h"

#include <gtest/gtest.h>
#include <tinyxml2.h>

namespace oxa::test
{
namespace
{
class Knob : public BasicProcessingElement
{
public:
    static uint32_t levelId()
    {
        static const uint32_t id = ParameterRegistry::instance().registerFloat(
            ParameterDescription<float>("PersistKnobLevel", 1.0f, 0.0f, 2.0f));
        return id;
    }
    Knob() : BasicProcessingElement(String("PersistKnob"), String("Knob"))
    {
        addParameters({new ParameterInfo<float>(levelId(), this, &Knob::level, &Knob::setLevel)});
    }
    void processAudio(RenderContext&, ElementState*, uint32_t, float* const*, const bool*) override {}

    float levelValue = 1.0f;

private:
    float level(const ElementState&) const { return levelValue; }
    void setLevel(ElementState&, float v) { levelValue = v; }
};

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
    ElementFactory::instance().registerType("Knob", "PersistKnob",
                                            [] { return std::shared_ptr<Element>(std::make_shared<Knob>()); });
}

Knob* knobOf(Engine& engine) { return dynamic_cast<Knob*>(engine.findElement(String("Knob"))); }
} // namespace

TEST(EnginePersistence, ChildrenAndBindingsRoundTrip)
{
    registerKnob();
    Bindings bindings;
    Engine source;
    source.setAutomation(&bindings);
    auto knob = std::make_shared<Knob>();
    source.addElement(knob);
    knob->setFloatParameter(Knob::levelId(), 1.5f);

    std::string text;
    SaveOptions options;
    saveToBytes(source, text, options);
    EXPECT_NE(text.find("\n        <PersistKnob Name=\"Knob\""), std::string::npos) << text;
    EXPECT_NE(text.find("<Automation>\n            <AutomationConnection sourceIndex=\"3\"/>"), std::string::npos);

    Engine copy;
    copy.setAutomation(&bindings);
    ASSERT_TRUE(loadFromBytes(copy, text, options));
    ASSERT_NE(knobOf(copy), nullptr);
    EXPECT_FLOAT_EQ(knobOf(copy)->levelValue, 1.5f);
    EXPECT_EQ(bindings.loads, 0) << "held until the engine is prepared";
    ASSERT_NE(copy.heldAutomationXml(), nullptr);
    copy.prepare(48000.0, 64);
    copy.applyHeldAutomation();
    EXPECT_EQ(bindings.loads, 1);
    EXPECT_EQ(bindings.lastIndex, 3);
    EXPECT_EQ(copy.heldAutomationXml(), nullptr);

    // a prepared engine applies them as soon as the load has finished
    ASSERT_TRUE(loadFromBytes(copy, text, options));
    EXPECT_EQ(bindings.loads, 2);

    bindings.bound = false;
    std::string unbound;
    saveToBytes(source, unbound, options);
    EXPECT_EQ(unbound.find("Automation"), std::string::npos);
}

TEST(EnginePersistence, UnknownChildrenFailTheLoadButTheRestLoadsAndAVetoKeepsThem)
{
    registerKnob();
    Engine engine;
    const size_t envelopes = engine.envelopes().size();
    ASSERT_GT(envelopes, 0u);
    SaveOptions options;
    EXPECT_FALSE(loadFromBytes(engine,
                               "<OXA4><Engine Name=\"Engine\" Tempo=\"90\" SyncToHost=\"0\"><Alien/><PersistKnob Name=\"Knob\" "
                               "PersistKnobLevel=\"9\"/><Properties a=\"1\"/></Engine></OXA4>",
                               options));
    ASSERT_NE(knobOf(engine), nullptr);
    EXPECT_FLOAT_EQ(knobOf(engine)->levelValue, 2.0f) << "clamped";
    EXPECT_EQ(engine.renderOrder().size(), 1u) << "the properties group is no child element";
    EXPECT_FLOAT_EQ(engine.floatParameter(Engine::ids().tempo), 90.0f);
    EXPECT_EQ(engine.children().size(), envelopes + 1) << "the engine's own envelopes survive a load";

    // A vetoing listener keeps the children.
    struct Veto : ElementLoadListener
    {
        bool onElement(Element&, SaveOptions&, int) override { return false; }
        void onProgress() override {}
    } veto;
    options.loadListener = &veto;
    EXPECT_FALSE(loadFromBytes(engine, "<OXA4><Engine Name=\"Engine\"/></OXA4>", options));
    EXPECT_NE(knobOf(engine), nullptr);
}
} // namespace oxa::test
