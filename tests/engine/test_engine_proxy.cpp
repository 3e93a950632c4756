// Watching the tree through the proxy: elements coming and going, a whole engine
// replaced, parameter changes on the message thread, errors, and the views.
#include "element/ElementView.h"
#include "element/ParameterRegistry.h"
#include "engine/BasicProcessingElement.h"
#include "engine/Engine.h"
#include "engine/EngineProxy.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace oxa;

namespace
{
class WatchedEffect : public BasicProcessingElement
{
public:
    static uint32_t levelId()
    {
        static const uint32_t id = [] {
            (void) ProcessingElement::syncToHostId();
            return ParameterRegistry::instance().registerFloat(ParameterDescription<float>("WatchLevel", 0.0f, 0, 1));
        }();
        return id;
    }
    static uint32_t switchId()
    {
        static const uint32_t id =
            ParameterRegistry::instance().registerBool(ParameterDescription<bool>("WatchSwitch", false));
        return id;
    }

    explicit WatchedEffect(const char* name = "Fx") : BasicProcessingElement(String("WatchedEffect"), String(name))
    {
        addParameters({new ParameterInfo<float>(levelId(), this, &WatchedEffect::level, &WatchedEffect::setLevel)}, {},
                      {new ParameterInfo<bool>(switchId(), this, &WatchedEffect::isOn, &WatchedEffect::setOn)});
    }

    void processAudio(RenderContext&, ElementState*, uint32_t, float* const*, const bool*) override {}

    float levelValue = 0.0f;
    bool on = false;

private:
    float level(const ElementState&) const { return levelValue; }
    void setLevel(ElementState&, float v) { levelValue = v; }
    bool isOn(const ElementState&) const { return on; }
    void setOn(ElementState&, bool v) { on = v; }
};

std::shared_ptr<Engine> engineWithEffect(std::shared_ptr<WatchedEffect>& fx)
{
    auto engine = std::make_shared<Engine>();
    fx = std::make_shared<WatchedEffect>();
    engine->addElement(fx);
    return engine;
}

struct CopyingErrorListener : ErrorListener
{
    void errorReported(Error* error) override { messages.push_back(error->message.str()); }
    std::vector<std::string> messages;
};

void deliverQueuedChanges()
{
    ParameterChangedAsyncSignal::drainNow();
}
} // namespace

TEST(EngineProxy, BoundListenerFollowsTheTree)
{
    std::shared_ptr<WatchedEffect> fxA, fxB;
    auto engineA = engineWithEffect(fxA);
    auto engineB = engineWithEffect(fxB);
    EngineProxy proxy(nullptr, engineA.get(), true);

    std::vector<Element*> seen;
    int owner = 0;
    proxy.addElementBoundListener(&owner, String("/Fx"), [&](Element* e) { seen.push_back(e); });
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen[0], fxA.get());

    // a whole new engine: one call, with the new element
    proxy.setEngine(engineB.get());
    ASSERT_EQ(seen.size(), 2u);
    EXPECT_EQ(seen[1], fxB.get());

    // the same engine again changes nothing
    proxy.setEngine(engineB.get());
    EXPECT_EQ(seen.size(), 2u);

    // the element leaves and comes back within the same engine
    engineB->removeChild(fxB.get());
    ASSERT_EQ(seen.size(), 3u);
    EXPECT_EQ(seen[2], nullptr);
    auto fxC = std::make_shared<WatchedEffect>();
    engineB->addElement(fxC);
    ASSERT_EQ(seen.size(), 4u);
    EXPECT_EQ(seen[3], fxC.get());

    // a path that matches nothing is still watched; a removed listener hears nothing more
    std::vector<Element*> late;
    int lateOwner = 0;
    proxy.addElementBoundListener(&lateOwner, String("/Later"), [&](Element* e) { late.push_back(e); });
    EXPECT_TRUE(late.empty());
    engineB->addElement(std::make_shared<WatchedEffect>("Later"));
    ASSERT_EQ(late.size(), 1u);
    EXPECT_NE(late[0], nullptr);

    proxy.removeElementBoundListener(&owner, String("/Fx"));
    proxy.setEngine(engineA.get());
    EXPECT_EQ(seen.size(), 4u);
    EXPECT_EQ(late.back(), nullptr);
}

TEST(EngineProxy, ParameterChangesArriveQueuedAndSurviveReplacement)
{
    std::shared_ptr<WatchedEffect> fxA, fxB;
    auto engineA = engineWithEffect(fxA);
    auto engineB = engineWithEffect(fxB);
    EngineProxy proxy(nullptr, engineA.get(), true);
    deliverQueuedChanges();

    std::vector<std::pair<Element*, unsigned>> calls;
    int owner = 0;
    const unsigned id = WatchedEffect::levelId();
    proxy.addParameterChangeListener(&owner, String("/Fx"), id,
                                     [&](Element* e, unsigned changed) { calls.emplace_back(e, changed); });

    fxA->setFloatParameter(id, 0.25f);
    EXPECT_TRUE(calls.empty()) << "delivery waits for the message thread's drain";
    deliverQueuedChanges();
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_EQ(calls[0].first, fxA.get());
    EXPECT_EQ(calls[0].second, id);

    // another parameter of the same element is not this listener's business
    fxA->setBoolParameter(WatchedEffect::switchId(), true);
    deliverQueuedChanges();
    EXPECT_EQ(calls.size(), 1u);

    calls.clear();
    proxy.setEngine(engineB.get());
    ASSERT_EQ(calls.size(), 1u) << "a replaced element is announced to parameter listeners";
    EXPECT_EQ(calls[0].first, fxB.get());

    calls.clear();
    fxA->setFloatParameter(id, 0.5f); // the old tree is no longer watched
    fxB->setFloatParameter(id, 0.75f);
    deliverQueuedChanges();
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_EQ(calls[0].first, fxB.get());

    calls.clear();
    proxy.removeParameterChangeListener(&owner, String("/Fx"), id);
    fxB->setFloatParameter(id, 0.1f);
    deliverQueuedChanges();
    EXPECT_TRUE(calls.empty());
}

TEST(EngineProxy, ErrorsReachListenersOrWaitInTheEngine)
{
    std::shared_ptr<WatchedEffect> fx;
    auto engine = engineWithEffect(fx);
    EngineProxy proxy(nullptr, engine.get(), true);
    CopyingErrorListener listener;

    fx->reportError(String("before anyone listened"), String("Loading"));
    EXPECT_EQ(engine->keptErrorCount(), 1u);
    proxy.addErrorListener(&listener);
    EXPECT_EQ(engine->keptErrorCount(), 0u) << "a first listener drains what the engine kept";
    ASSERT_EQ(listener.messages.size(), 1u);
    EXPECT_EQ(listener.messages[0], "before anyone listened");

    proxy.raiseError(String("raised here"), String("Test"));
    ASSERT_EQ(listener.messages.size(), 2u);
    EXPECT_EQ(listener.messages[1], "raised here");

    proxy.removeErrorListener(&listener);
    fx->reportError(String("nobody hears this"), String("Loading"));
    EXPECT_EQ(engine->keptErrorCount(), 1u);
    EXPECT_EQ(listener.messages.size(), 2u);

    // a new engine with an error waiting hands it over once someone listens
    std::shared_ptr<WatchedEffect> fx2;
    auto engine2 = engineWithEffect(fx2);
    fx2->reportError(String("from the new tree"), String("Loading"));
    proxy.addErrorListener(&listener);
    proxy.setEngine(engine2.get());
    EXPECT_EQ(engine2->keptErrorCount(), 0u);
    EXPECT_EQ(listener.messages.back(), "from the new tree");
    proxy.removeErrorListener(&listener);
}

TEST(EngineProxy, AcquiredProxiesAreCountedAndWriteThrough)
{
    std::shared_ptr<WatchedEffect> fx;
    auto engine = engineWithEffect(fx);
    EngineProxy proxy(nullptr, engine.get(), true);

    EXPECT_EQ(proxy.acquireProxy(String("/Fx")), fx.get());
    EXPECT_EQ(proxy.acquireProxy(String("/Nothing"), true), nullptr);

    Element* first = proxy.acquireProxy(String("/Fx"), true);
    ASSERT_NE(first, nullptr);
    ASSERT_NE(first, fx.get());
    EXPECT_EQ(proxy.acquireProxy(String("/Fx"), true), first);
    first->setFloatParameter(WatchedEffect::levelId(), 0.5f);
    EXPECT_FLOAT_EQ(fx->floatParameter(WatchedEffect::levelId()), 0.5f);
    EXPECT_FLOAT_EQ(first->floatParameter(WatchedEffect::levelId()), 0.5f);

    proxy.releaseProxy(first);
    proxy.releaseProxy(first); // count reaches zero: a new acquisition builds a new one
    Element* again = proxy.acquireProxy(String("/Fx"), true);
    ASSERT_NE(again, nullptr);
    proxy.releaseProxy(again);
}

TEST(ElementViews, WatchedValueFollowsItsParameter)
{
    std::shared_ptr<WatchedEffect> fxA, fxB;
    auto engineA = engineWithEffect(fxA);
    auto engineB = engineWithEffect(fxB);
    fxB->on = true;
    fxB->publishParameters(); // written behind the element's back
    EngineProxy proxy(nullptr, engineA.get(), true);
    deliverQueuedChanges();

    std::vector<bool> values;
    std::vector<bool> presence;
    ElementParameterValue<bool> watched(
        &proxy, String("/Fx"), WatchedEffect::switchId(), [&](bool v) { values.push_back(v); },
        [&](bool present) { presence.push_back(present); });
    EXPECT_EQ(watched.kind(), ParameterKind::Bool);
    ASSERT_EQ(values.size(), 1u);
    EXPECT_FALSE(values[0]);

    fxA->setBoolParameter(WatchedEffect::switchId(), true);
    deliverQueuedChanges();
    ASSERT_EQ(values.size(), 2u);
    EXPECT_TRUE(watched.get());

    watched.bypass = true;
    fxA->setBoolParameter(WatchedEffect::switchId(), false);
    deliverQueuedChanges();
    EXPECT_EQ(values.size(), 2u);
    watched.bypass = false;

    proxy.setEngine(engineB.get());
    EXPECT_TRUE(presence.back());
    EXPECT_TRUE(watched.get()) << "the new element's value is read at once";

    // a write from the view lands deferred in the element, without calling back at once
    const size_t before = values.size();
    watched.set(false);
    EXPECT_EQ(values.size(), before);
    EXPECT_FALSE(fxB->boolParameter(WatchedEffect::switchId()));
    EXPECT_TRUE(fxB->hasPendingUpdate());

    engineB->removeChild(fxB.get());
    EXPECT_FALSE(presence.back());
    EXPECT_EQ(watched.getElement(), nullptr);
}
