// Watching the tree through the proxy: elements coming and going, a whole engine
// replaced, parameter changes on the message thread, errors, and the views.
#include "EngineTestRig.h"
#include "engine/ElementView.h"
#include "engine/EngineProxy.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace oxa;
using test::GainEffect;

namespace
{
std::shared_ptr<Engine> engineWithEffect(std::shared_ptr<GainEffect>& fx)
{
    auto engine = std::make_shared<Engine>();
    fx = std::make_shared<GainEffect>();
    engine->addElement(fx);
    return engine;
}

/** Two engines, each with an effect at "/Fx"; the proxy watches the first. */
class EngineProxyTest : public ::testing::Test
{
protected:
    std::shared_ptr<GainEffect> fxA, fxB;
    std::shared_ptr<Engine> engineA = engineWithEffect(fxA);
    std::shared_ptr<Engine> engineB = engineWithEffect(fxB);
    EngineProxy proxy {nullptr, engineA.get(), true};
};

struct CopyingErrorListener : ErrorListener
{
    void errorReported(Error* error) override { messages.push_back(error->message.str()); }
    std::vector<std::string> messages;
};
} // namespace

TEST_F(EngineProxyTest, BoundListenerFollowsTheTree)
{
    std::vector<Element*> seen;
    int owner = 0;
    proxy.addElementBoundListener(&owner, String("/Fx"), [&](Element* e) { seen.push_back(e); });
    // a whole new engine is one call with the new element; the same engine again is none
    proxy.setEngine(engineB.get());
    proxy.setEngine(engineB.get());
    EXPECT_EQ(seen, (std::vector<Element*> {fxA.get(), fxB.get()}));

    // the element leaves and comes back within the same engine
    engineB->removeChild(fxB.get());
    auto fxC = std::make_shared<GainEffect>();
    engineB->addElement(fxC);
    EXPECT_EQ(seen, (std::vector<Element*> {fxA.get(), fxB.get(), nullptr, fxC.get()}));

    // a path that matches nothing is still watched; a removed listener hears nothing more
    std::vector<Element*> late;
    int lateOwner = 0;
    proxy.addElementBoundListener(&lateOwner, String("/Later"), [&](Element* e) { late.push_back(e); });
    EXPECT_TRUE(late.empty());
    engineB->addElement(std::make_shared<GainEffect>("Later"));
    ASSERT_EQ(late.size(), 1u);
    EXPECT_NE(late[0], nullptr);

    proxy.removeElementBoundListener(&owner, String("/Fx"));
    proxy.setEngine(engineA.get());
    EXPECT_EQ(seen.size(), 4u);
    EXPECT_EQ(late.back(), nullptr);
}

TEST_F(EngineProxyTest, ParameterChangesArriveQueuedAndSurviveReplacement)
{
    ParameterChangedAsyncSignal::drainNow();

    std::vector<std::pair<Element*, unsigned>> calls;
    using Calls = std::vector<std::pair<Element*, unsigned>>;
    int owner = 0;
    const unsigned id = GainEffect::gainId();
    proxy.addParameterChangeListener(&owner, String("/Fx"), id,
                                     [&](Element* e, unsigned changed) { calls.emplace_back(e, changed); });

    fxA->setFloatParameter(id, 0.25f);
    EXPECT_TRUE(calls.empty()) << "delivery waits for the message thread's drain";
    // another parameter of the same element is not this listener's business
    fxA->setBoolParameter(GainEffect::switchId(), true);
    ParameterChangedAsyncSignal::drainNow();
    EXPECT_EQ(calls, (Calls {{fxA.get(), id}}));

    calls.clear();
    proxy.setEngine(engineB.get());
    EXPECT_EQ(calls, (Calls {{fxB.get(), id}})) << "a replaced element is announced to parameter listeners";

    calls.clear();
    fxA->setFloatParameter(id, 0.5f); // the old tree is no longer watched
    fxB->setFloatParameter(id, 0.75f);
    ParameterChangedAsyncSignal::drainNow();
    EXPECT_EQ(calls, (Calls {{fxB.get(), id}}));

    calls.clear();
    proxy.removeParameterChangeListener(&owner, String("/Fx"), id);
    fxB->setFloatParameter(id, 0.1f);
    ParameterChangedAsyncSignal::drainNow();
    EXPECT_TRUE(calls.empty());
}

TEST_F(EngineProxyTest, ErrorsReachListenersOrWaitInTheEngine)
{
    CopyingErrorListener listener;

    fxA->reportError(String("before anyone listened"), String("Loading"));
    EXPECT_EQ(engineA->keptErrorCount(), 1u);
    proxy.addErrorListener(&listener);
    EXPECT_EQ(engineA->keptErrorCount(), 0u) << "a first listener drains what the engine kept";
    proxy.raiseError(String("raised here"), String("Test"));
    EXPECT_EQ(listener.messages, (std::vector<std::string> {"before anyone listened", "raised here"}));

    proxy.removeErrorListener(&listener);
    fxA->reportError(String("nobody hears this"), String("Loading"));
    EXPECT_EQ(engineA->keptErrorCount(), 1u);
    EXPECT_EQ(listener.messages.size(), 2u);

    // a new engine with an error waiting hands it over once someone listens
    fxB->reportError(String("from the new tree"), String("Loading"));
    proxy.addErrorListener(&listener);
    proxy.setEngine(engineB.get());
    EXPECT_EQ(engineB->keptErrorCount(), 0u);
    EXPECT_EQ(listener.messages.back(), "from the new tree");
    proxy.removeErrorListener(&listener);

    // with nobody listening for a long time only the newest are kept
    for (int i = 0; i < 10000; ++i)
        fxB->reportError(String(std::to_string(i)), String("Loading"));
    EXPECT_EQ(engineB->keptErrorCount(), Engine::maxKeptErrors);
    listener.messages.clear();
    proxy.addErrorListener(&listener);
    ASSERT_EQ(listener.messages.size(), Engine::maxKeptErrors);
    EXPECT_EQ(listener.messages.back(), "9999");
    proxy.removeErrorListener(&listener);
}

TEST_F(EngineProxyTest, AcquiredProxiesAreCountedAndWriteThrough)
{
    EXPECT_EQ(proxy.acquireProxy(String("/Fx")), fxA.get());
    EXPECT_EQ(proxy.acquireProxy(String("/Nothing"), true), nullptr);

    Element* first = proxy.acquireProxy(String("/Fx"), true);
    ASSERT_NE(first, nullptr);
    ASSERT_NE(first, fxA.get());
    EXPECT_EQ(proxy.acquireProxy(String("/Fx"), true), first);
    first->setFloatParameter(GainEffect::gainId(), 0.5f);
    EXPECT_FLOAT_EQ(fxA->floatParameter(GainEffect::gainId()), 0.5f);
    EXPECT_FLOAT_EQ(first->floatParameter(GainEffect::gainId()), 0.5f);

    proxy.releaseProxy(first);
    proxy.releaseProxy(first); // count reaches zero: a new acquisition builds a new one
    Element* again = proxy.acquireProxy(String("/Fx"), true);
    ASSERT_NE(again, nullptr);
    proxy.releaseProxy(again);
}

TEST_F(EngineProxyTest, ViewWatchedValueFollowsItsParameter)
{
    fxB->on = true;
    fxB->publishParameters(); // written behind the element's back
    ParameterChangedAsyncSignal::drainNow();

    std::vector<bool> values;
    std::vector<bool> presence;
    ElementParameterValue<bool> watched(
        &proxy, String("/Fx"), GainEffect::switchId(), [&](bool v) { values.push_back(v); },
        [&](bool present) { presence.push_back(present); });
    EXPECT_EQ(watched.kind(), ParameterKind::Bool);
    ASSERT_EQ(values.size(), 1u);
    EXPECT_FALSE(values[0]);

    fxA->setBoolParameter(GainEffect::switchId(), true);
    ParameterChangedAsyncSignal::drainNow();
    ASSERT_EQ(values.size(), 2u);
    EXPECT_TRUE(watched.get());

    watched.bypass = true;
    fxA->setBoolParameter(GainEffect::switchId(), false);
    ParameterChangedAsyncSignal::drainNow();
    EXPECT_EQ(values.size(), 2u);
    watched.bypass = false;

    proxy.setEngine(engineB.get());
    EXPECT_TRUE(presence.back());
    EXPECT_TRUE(watched.get()) << "the new element's value is read at once";

    // a write from the view lands deferred in the element, without calling back at once
    const size_t before = values.size();
    watched.set(false);
    EXPECT_EQ(values.size(), before);
    EXPECT_FALSE(fxB->boolParameter(GainEffect::switchId()));
    EXPECT_TRUE(fxB->hasPendingUpdate());

    engineB->removeChild(fxB.get());
    EXPECT_FALSE(presence.back());
    EXPECT_EQ(watched.getElement(), nullptr);
}
