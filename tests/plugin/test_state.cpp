// The host's state chunk: its layout, round trips, hostile input and the threads
// that may call get and set.

#include "plugin/FluxDeckPlugin.h"
#include "support/StateChunks.h"

#include <gtest/gtest.h>
#include <juce_core/juce_core.h>
#include <tinyxml2.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>
#include <thread>

using namespace oxa;
using namespace oxa::test;

namespace
{
void scatter(juce::AudioProcessor& plugin, float offset)
{
    auto& parameters = plugin.getParameters();
    for (int i = 0; i < parameters.size(); ++i)
        parameters[i]->setValueNotifyingHost(std::fmod(offset + 0.137f * (float) i, 1.0f));
}

int32_t intAt(const juce::MemoryBlock& chunk, size_t offset)
{
    int32_t value = 0;
    std::memcpy(&value, static_cast<const char*>(chunk.getData()) + offset, 4);
    return (int32_t) juce::ByteOrder::swapIfBigEndian((uint32_t) value);
}

void pumpMessages() { juce::MessageManager::getInstance()->runDispatchLoopUntil(30); }

std::string withValue(std::string xml, const std::string& attribute, const std::string& value)
{
    const size_t at = xml.find(" " + attribute + "=\"");
    if (at == std::string::npos)
        return xml;
    const size_t start = at + attribute.size() + 3;
    return xml.replace(start, xml.find('"', start) - start, value);
}
} // namespace

TEST(StateChunk, LayoutAndContent)
{
    FluxDeckPlugin plugin;
    const juce::MemoryBlock chunk = stateOf(plugin);
    ASSERT_GT(chunk.getSize(), 12u);
    EXPECT_EQ(std::memcmp(chunk.getData(), "OXA4", 4), 0);
    EXPECT_EQ(intAt(chunk, 4), 1);
    const std::string xml = xmlOf(chunk);
    EXPECT_EQ((size_t) intAt(chunk, 8), xml.size());
    EXPECT_EQ(static_cast<const uint8_t*>(chunk.getData())[12], 0x78) << "zlib wrapping";

    EXPECT_EQ(xml.rfind("<OXA4>\n    <Engine Name=\"Engine\"", 0), 0u) << xml.substr(0, 200);
    EXPECT_NE(xml.find("\n        <FluxDeck Name=\"FluxDeck\""), std::string::npos);
    EXPECT_NE(xml.find("FluxDeckVersion=\"1\""), std::string::npos);
    tinyxml2::XMLDocument parsed;
    ASSERT_EQ(parsed.Parse(xml.data(), xml.size()), tinyxml2::XML_SUCCESS);
    const auto* automation = parsed.RootElement()->FirstChildElement("Engine")->FirstChildElement("Automation");
    ASSERT_NE(automation, nullptr);
    int bindings = 0;
    for (auto* c = automation->FirstChildElement("AutomationConnection"); c != nullptr;
         c = c->NextSiblingElement("AutomationConnection"))
        ++bindings;
    EXPECT_EQ(bindings, 45);
}

TEST(StateChunk, RoundTripRestoresEveryHostParameterAndSavesTheSameBytes)
{
    // 0 is a fresh instance; 0.5 and 0.77 leave the flange in Manual mode
    for (const float offset : {0.0f, 0.31f, 0.5f, 0.77f})
    {
        FluxDeckPlugin source;
        source.prepareToPlay(48000.0, 256);
        juce::AudioBuffer<float> buffer(2, 256);
        buffer.clear();
        juce::MidiBuffer midi;
        if (offset > 0.0f)
        {
            scatter(source, offset);
            source.processBlock(buffer, midi); // the deferred host writes land in the state
            // A manual position set once the mode is in place (the mode's own write moves it).
            for (auto* parameter : source.getParameters())
                if (parameter->getName(100) == "Manual Flange")
                    parameter->setValueNotifyingHost(0.8f);
            source.processBlock(buffer, midi);
        }
        const std::vector<float> expected = hostValues(source);
        const juce::MemoryBlock chunk = stateOf(source);
        const std::string when = "offset " + std::to_string(offset);

        FluxDeckPlugin target;
        target.prepareToPlay(44100.0, 256);
        Engine* before = target.getEngine().get();
        setState(target, chunk);
        EXPECT_NE(target.getEngine().get(), before) << "a new engine replaces the old one";
        EXPECT_TRUE(target.getEngine()->isPrepared()) << "buses rebuilt at once";
        expectSameValues(hostValues(target), expected, when);
        EXPECT_EQ(xmlOf(stateOf(target)), xmlOf(chunk)) << when << ": reloading and saving again changes no byte";
        for (int i = 0; i < target.getParameters().size(); ++i)
            EXPECT_EQ(target.getParameters()[i]->getName(100), source.getParameters()[i]->getName(100))
                << "a reopened project shows the host the same names";
        target.processBlock(buffer, midi); // renders with the new tree
    }
}

TEST(StateChunk, PlainXmlIsAcceptedAndSetBeforePrepareWaitsForIt)
{
    FluxDeckPlugin source;
    scatter(source, 0.57f);
    const std::string xml = xmlOf(stateOf(source));

    FluxDeckPlugin target;
    target.setStateInformation(xml.data(), (int) xml.size());
    expectSameValues(hostValues(target), hostValues(source), "plain XML");
    EXPECT_FALSE(target.getEngine()->isPrepared());
    target.prepareToPlay(48000.0, 128);
    EXPECT_TRUE(target.getEngine()->isPrepared());
}

TEST(StateChunk, HostileChunksChangeNothing)
{
    FluxDeckPlugin plugin;
    scatter(plugin, 0.11f);
    const juce::MemoryBlock good = stateOf(plugin);
    const std::string goodXml = xmlOf(good);
    const std::vector<float> values = hostValues(plugin);

    auto edited = [&](auto change) {
        juce::MemoryBlock chunk(good);
        change(chunk);
        return chunk;
    };
    auto withLength = [&](int32_t length) {
        return edited([&](juce::MemoryBlock& c) { std::memcpy(static_cast<char*>(c.getData()) + 8, &length, 4); });
    };
    std::vector<juce::MemoryBlock> bad {
        juce::MemoryBlock(),
        juce::MemoryBlock("OXA4", 4),
        edited([](juce::MemoryBlock& c) { c[4] = 2; }), // a version this build does not know
        juce::MemoryBlock(good.getData(), good.getSize() / 2), // truncated gzip
        edited([](juce::MemoryBlock& c) {
            for (size_t i = 20; i < c.getSize(); i += 7)
                c[i] = (char) (c[i] ^ 0x5a);
        }),
        withLength(0x7fffffff),
        withLength(-5),
    };
    std::mt19937 random(7);
    for (int n : {1, 3, 100, 5000})
    {
        juce::MemoryBlock noise((size_t) n);
        for (size_t i = 0; i < noise.getSize(); ++i)
            noise[i] = (char) random();
        bad.push_back(noise);
    }
    std::string nested = "<OXA4>";
    for (int i = 0; i < 5000; ++i)
        nested += "<Engine>";
    bad.push_back(chunkOf(nested));
    bad.push_back(chunkOf("<Foreign><Engine/></Foreign>"));
    bad.push_back(chunkOf("<OXA4><NoSuchElementType/></OXA4>"));
    bad.push_back(chunkOf("<OXA4>" + std::string(1 << 16, ' ') + "</OXA4>"));
    bad.push_back(chunkOf("<OXA4><Engine Name=\"" + std::string(1 << 20, 'x') + "\">"));

    for (size_t i = 0; i < bad.size(); ++i)
    {
        setState(plugin, bad[i]);
        pumpMessages();
        expectSameValues(hostValues(plugin), values, "hostile chunk " + std::to_string(i));
        EXPECT_EQ(xmlOf(stateOf(plugin)), goodXml) << "hostile chunk " << i;
    }
}

TEST(StateChunk, OddValuesAreClampedOrDefaulted)
{
    FluxDeckPlugin plugin;
    const std::string xml = xmlOf(stateOf(plugin));
    Element* fx = plugin.getEngine()->findElement(String("FluxDeck"));
    ASSERT_NE(fx, nullptr);
    const uint32_t mix = fx->parameterId("Mix");
    ASSERT_NE(mix, 0u);
    const float defaultMix = fx->floatParameter(mix);

    // Every host value stays a finite normalised value: the odd ones were clamped or defaulted.
    for (const char* odd : {"nan", "inf", "-inf", "abc", "1e30", "-1e30", ""})
    {
        std::string edited = withValue(withValue(xml, "Mix", odd), "Drive", odd);
        edited = withValue(edited, "Name", std::string(100000, 'n'));
        setState(plugin, chunkOf(edited));
        ASSERT_NE(plugin.getEngine()->findElement(String("FluxDeck")), nullptr) << odd;
        const std::vector<float> values = hostValues(plugin);
        for (size_t i = 0; i < values.size(); ++i)
            EXPECT_TRUE(values[i] >= -1.0e-6f && values[i] <= 1.0f + 1.0e-6f) << odd << " parameter " << i << " " << values[i];
    }
    setState(plugin, chunkOf(withValue(xml, "Mix", "nan")));
    EXPECT_FLOAT_EQ(plugin.getEngine()->findElement(String("FluxDeck"))->floatParameter(mix), defaultMix);
}

TEST(StateChunkThreads, ASetOffTheMessageThreadReadsBackWhenItReturns)
{
    FluxDeckPlugin a, b, target;
    target.prepareToPlay(48000.0, 64);
    scatter(a, 0.2f);
    scatter(b, 0.7f);
    const juce::MemoryBlock first = stateOf(a), second = stateOf(b);

    std::vector<float> seenFirst, seenSecond;
    juce::MemoryBlock savedAtOnce;
    std::thread host([&] {
        setState(target, first);
        seenFirst = hostValues(target);
        setState(target, second);
        seenSecond = hostValues(target);
        target.getStateInformation(savedAtOnce); // waits for the message thread below
    });
    while (savedAtOnce.getSize() == 0)
        juce::MessageManager::getInstance()->runDispatchLoopUntil(5);
    host.join();
    expectSameValues(seenFirst, hostValues(a), "first, read by the setting thread");
    expectSameValues(seenSecond, hostValues(b), "second, read by the setting thread");
    EXPECT_EQ(xmlOf(savedAtOnce), xmlOf(second));

    // a refused chunk after a good one keeps the good one
    std::thread again([&] {
        setState(target, first);
        setState(target, juce::MemoryBlock("junk", 4));
    });
    again.join();
    expectSameValues(hostValues(target), hostValues(a), "junk refused");
    pumpMessages();
    expectSameValues(hostValues(target), hostValues(a), "and the interface side agrees");
}

TEST(StateChunkThreads, AQueuedInterfaceStepOutlivingThePluginDoesNothing)
{
    FluxDeckPlugin source;
    scatter(source, 0.4f);
    const juce::MemoryBlock chunk = stateOf(source);
    {
        FluxDeckPlugin target;
        std::thread host([&] { setState(target, chunk); });
        host.join();
    } // gone before its queued message-thread steps run
    pumpMessages();
}

TEST(StateChunk, WritesWhileNothingRendersGetTheirSideEffectsFromTheMessageThread)
{
    FluxDeckPlugin plugin;
    plugin.prepareToPlay(48000.0, 64);
    Element* fx = plugin.getEngine()->findElement(String("FluxDeck"));
    const uint32_t decoder = fx->parameterId("NoiseReductionDecoder");
    plugin.getParameters()[41]->setValue(1.0f); // the encoder moves the linked decoder
    juce::MessageManager::getInstance()->runDispatchLoopUntil(200);
    EXPECT_FALSE(fx->hasPendingUpdate()) << "applied, as no block came";
    EXPECT_EQ(fx->intParameter(decoder), 3);
}
