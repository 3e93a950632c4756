// Parameter records on an element: registry ids, reads, immediate and deferred sets,
// notifications and the dump.
#include "ElementTestSupport.h"
#include "element/ElementParamEnvelope.h"
#include "element/StoredFloat.h"

#include <boost/ptr_container/exception.hpp>
#include <gtest/gtest.h>
#include <juce_events/juce_events.h>

#include <atomic>
#include <cmath>
#include <thread>

using namespace oxa;
using oxa::test::ProbeElement;

TEST(ParameterRegistryIds, CommonIdsFirstSameNameTwiceTwoIdsUnregisterForgets)
{
    const auto& common = Element::commonIds();
    ProbeElement probe("p");
    EXPECT_LT(common.alias[127], ProbeElement::ids().gain);
    auto& registry = ParameterRegistry::instance();
    EXPECT_EQ(registry.kindOf(common.alias[5]), ParameterKind::Alias);
    EXPECT_EQ(registry.nameOf(common.alias[5]), "Param5");
    EXPECT_EQ(Element::aliasIndex(common.alias[17]), 17);
    EXPECT_EQ(Element::aliasIndex(common.bypass), -1);

    const uint32_t a = registry.registerFloat(ParameterDescription<float>("Twice", 0, 0, 1));
    const uint32_t b = registry.registerFloat(ParameterDescription<float>("Twice", 0, 0, 1));
    EXPECT_NE(a, b);
    EXPECT_EQ(registry.floatDescription(b)->id, b);
    EXPECT_EQ(registry.intDescription(b), nullptr);
    registry.unregister(a);
    EXPECT_FALSE(registry.isKnown(a));
    EXPECT_EQ(registry.kindOf(a), ParameterKind::Invalid);
    EXPECT_TRUE(registry.nameOf(a).isEmpty());
    EXPECT_EQ(registry.floatDescription(a), nullptr);
    EXPECT_EQ(registry.kindOf(0), ParameterKind::Invalid);
}

TEST(ParameterDescriptions, DefaultMapperRangeAndTextForms)
{
    ParameterDescription<float> synced("S", 0, 0, 1, 6);
    EXPECT_NE(dynamic_cast<const SyncLinearParameterMapper*>(&synced.conversionMapper()), nullptr);
    ParameterDescription<float> plain("P", 0, 0, 10);
    EXPECT_EQ(dynamic_cast<const SyncLinearParameterMapper*>(&plain.conversionMapper()), nullptr);

    ParameterDescription<int> unranged("I", 3);
    EXPECT_FALSE(unranged.hasRange());
    EXPECT_EQ(unranged.clamp(99), 99);

    ParameterDescription<bool> flag("B", false);
    bool parsed = false;
    EXPECT_EQ(flag.valueToText(nullptr, true), "true");
    EXPECT_TRUE(flag.textToValue(nullptr, "2", parsed));
    EXPECT_TRUE(parsed);
    EXPECT_FALSE(flag.textToValue(nullptr, "yes", parsed));

    plain.formatter = [](float v, const Element*) { return String("<%1>").arg(v, 1); };
    EXPECT_EQ(plain.valueToText(nullptr, 2.0f), "<2.0>");
}

TEST(ElementParameters, EnvelopesOnlyForModulatableInputsAndANullRecordThrows)
{
    ProbeElement probe("p");
    // gain, band, mode, enabled; not the output level, not the global label or the common ones
    EXPECT_EQ(probe.envelopes().size(), 4u);
    EXPECT_EQ(probe.findFloatInfo(ProbeElement::ids().level)->envelope(), nullptr);
    ASSERT_NE(probe.findFloatInfo(ProbeElement::ids().gain)->envelope(), nullptr);
    EXPECT_EQ(probe.findElement("Gain"), probe.findFloatInfo(ProbeElement::ids().gain)->envelope());
    // vector kept in id order
    for (std::size_t i = 1; i < probe.parameterCount(); ++i)
        EXPECT_LT(probe.parameterAt(i - 1).id, probe.parameterAt(i).id);
    EXPECT_EQ(probe.parameterId("Mode"), ProbeElement::ids().mode);
    EXPECT_EQ(probe.parameterId("Bypass"), 0u); // declared, bound by processing elements

    const std::size_t before = probe.parameterCount();
    auto* stray = new ParameterInfo<float>(ProbeElement::ids().gain, &probe, &ProbeElement::gain,
                                           &ProbeElement::setGain);
    try
    {
        probe.addParameters({stray, nullptr});
        FAIL() << "expected a throw";
    }
    catch (const boost::bad_pointer& e)
    {
        EXPECT_STREQ(e.what(), "Null pointer in 'push_back()'");
    }
    EXPECT_EQ(probe.parameterCount(), before);
}

TEST(ElementParameters, ReadsAndImmediateSets)
{
    ProbeElement probe("p");
    probe.main().gain = 0.75f;
    probe.main().bands[2] = -0.5f;
    probe.meter = 0.125f;
    probe.publishParameters(); // written behind the element's back
    bool error = true;
    EXPECT_FLOAT_EQ(probe.floatParameter(ProbeElement::ids().gain, &error), 0.75f);
    EXPECT_FALSE(error);
    EXPECT_FLOAT_EQ(probe.floatParameter(ProbeElement::ids().band), -0.5f);
    EXPECT_FLOAT_EQ(probe.floatParameter(ProbeElement::ids().level), 0.125f);
    EXPECT_EQ(probe.stringParameter(Element::commonIds().displayType), "Probe");
    EXPECT_EQ(probe.findIntInfo(ProbeElement::ids().gain), nullptr); // other kind
    EXPECT_EQ(probe.findFloatInfo(99999), nullptr);

    // An immediate set writes both states and passes index arguments.
    probe.setFloatParameter(ProbeElement::ids().gain, 0.3f);
    EXPECT_FLOAT_EQ(probe.main().gain, 0.3f);
    EXPECT_FLOAT_EQ(probe.second().gain, 0.3f);
    probe.setFloatParameter(ProbeElement::ids().band, 0.9f);
    EXPECT_FLOAT_EQ(probe.main().bands[2], 0.9f);
    EXPECT_FLOAT_EQ(probe.main().bands[0], 0.0f);
    probe.setStringParameter(ProbeElement::ids().label, "tape");
    EXPECT_EQ(probe.labelText, "tape");
    // a NaN leaves the old value
    probe.setFloatParameter(ProbeElement::ids().gain, std::nanf(""));
    EXPECT_FLOAT_EQ(probe.main().gain, 0.3f);
    // setting an id of another kind or an unknown id does nothing
    probe.setIntParameter(ProbeElement::ids().gain, 7);
    probe.setBoolParameter(424242, true);
    EXPECT_FLOAT_EQ(probe.main().gain, 0.3f);
}

TEST(ElementDeferred, ReadsSeeTheLastValueAndApplyCountsOnce)
{
    ProbeElement probe("p");
    probe.setFloatParameter(ProbeElement::ids().gain, 0.1f);
    probe.setFloatParameter(ProbeElement::ids().gain, 0.8f, true);
    EXPECT_FLOAT_EQ(probe.main().gain, 0.1f); // state untouched
    EXPECT_FLOAT_EQ(probe.floatParameter(ProbeElement::ids().gain), 0.8f);
    const uint16_t counter = probe.updateCounter();
    probe.applyPendingParameters(probe.mainState());
    EXPECT_FLOAT_EQ(probe.main().gain, 0.8f);
    EXPECT_EQ(probe.updateCounter(), static_cast<uint16_t>(counter + 1));
    EXPECT_FALSE(probe.findFloatInfo(ProbeElement::ids().gain)->isPending());

    // Two deferred sets move the counter once and the last wins.
    probe.setIntParameter(ProbeElement::ids().mode, 1, true);
    probe.setIntParameter(ProbeElement::ids().mode, 3, true);
    probe.applyPendingParameters(probe.mainState());
    probe.applyPendingParameters(probe.mainState());
    EXPECT_EQ(probe.main().mode, 3);
    EXPECT_EQ(probe.updateCounter(), static_cast<uint16_t>(counter + 2));

    // An immediate set after a deferred one drops the deferred value.
    probe.setBoolParameter(ProbeElement::ids().enabled, true, true);
    probe.setBoolParameter(ProbeElement::ids().enabled, false);
    EXPECT_FALSE(probe.boolParameter(ProbeElement::ids().enabled));
    probe.applyPendingParameters(probe.mainState());
    EXPECT_FALSE(probe.main().enabled);

    // "Not deferred" as a third argument writes the main state only, and counts an update;
    // syncState then mirrors the current values into the second state.
    const float secondBefore = probe.second().gain;
    const uint16_t before = probe.updateCounter();
    probe.setFloatParameter(ProbeElement::ids().gain, 0.6f, false);
    EXPECT_FLOAT_EQ(probe.main().gain, 0.6f);
    EXPECT_FLOAT_EQ(probe.second().gain, secondBefore);
    probe.applyPendingParameters(probe.mainState());
    EXPECT_EQ(probe.updateCounter(), static_cast<uint16_t>(before + 1));
    probe.syncState(nullptr, nullptr);
    EXPECT_FLOAT_EQ(probe.second().gain, 0.6f);
}

TEST(ElementNotification, SyncOnTheCallerAsyncLaterAndNothingWhenUnheard)
{
    ProbeElement probe("p");
    std::vector<unsigned> sync, async;
    int owner = 0;
    probe.signals().parameterChanged.connect(&owner, [&](const Element&, unsigned id) { sync.push_back(id); });
    probe.signals().parameterChangedAsync.connect(&owner, [&](const Element&, unsigned id) { async.push_back(id); });
    ParameterChangedAsyncSignal::drainNow();
    async.clear();
    probe.setFloatParameter(ProbeElement::ids().gain, 0.2f);
    probe.setIntParameter(ProbeElement::ids().mode, 2, true);
    EXPECT_EQ(sync, (std::vector<unsigned>{ProbeElement::ids().gain, ProbeElement::ids().mode}));
    EXPECT_TRUE(async.empty());
    for (int i = 0; i < 50 && async.size() < 2; ++i)
        juce::MessageManager::getInstance()->runDispatchLoopUntil(10);
    EXPECT_EQ(async, sync);

    ProbeElement unheard("q");
    unheard.setFloatParameter(ProbeElement::ids().gain, 0.2f);
    EXPECT_FALSE(unheard.hasSignals());
    EXPECT_EQ(ParameterChangedAsyncSignal::queuedMessages(), 0u);
}

TEST(ElementDeferred, AWriteReadsBackWhileTheAudioThreadAppliesIt)
{
    // A host reads a parameter straight after writing it, while the audio thread may be
    // in the middle of applying that very write: the read must never go back to the
    // value before the write, or the host records the stale one.
    ProbeElement probe("p");
    const uint32_t gain = ProbeElement::ids().gain, mode = ProbeElement::ids().mode;
    std::atomic<bool> done {false};
    std::thread audio([&] {
        while (!done.load())
            probe.applyPendingParameters(probe.mainState());
    });
    int stale = 0, k = 1;
    for (; k <= 20000 && stale == 0; ++k)
    {
        const float value = storedFloat((float) (k % 1000) * 0.001f);
        probe.setFloatParameter(gain, value, true);
        probe.setIntParameter(mode, k % 4, true);
        for (int read = 0; read < 20; ++read)
        {
            stale += probe.floatParameter(gain) != value;
            stale += probe.pendingFloatParameter(gain) != value;
            stale += probe.intParameter(mode) != k % 4;
        }
    }
    done.store(true);
    audio.join();
    EXPECT_EQ(stale, 0);
    probe.applyPendingParameters(probe.mainState());
    EXPECT_EQ(probe.main().mode, (k - 1) % 4);
}

TEST(ElementMemory, CountsTheParametersOfTheElementAndItsDescendants)
{
    auto element = std::make_shared<Element>("Plain", "Counted");
    const double own = element->ownMemorySize();
    ASSERT_GT(own, 0.0);
    element->addChild(std::make_shared<Element>("Plain", "Child"));
    EXPECT_NEAR(element->floatParameter(Element::commonIds().memorySize), 2 * own, 1e-9);
}
