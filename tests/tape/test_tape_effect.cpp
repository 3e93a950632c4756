#include "tape/Decibels.h"
#include "tape/TapeEffect.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

namespace oxa
{
namespace
{
constexpr double pi = 3.141592653589793;

std::vector<float> testSignal(std::size_t length, unsigned seed)
{
    std::mt19937 rng(seed);
    std::uniform_real_distribution<float> noise(-0.3f, 0.3f);
    std::vector<float> x(length);
    for (std::size_t n = 0; n < length; ++n)
        x[n] = 0.5f * static_cast<float>(std::sin(2.0 * pi * 220.0 * n / 44100.0)) + noise(rng);
    return x;
}

// Renders channel signals through the state in blocks of the given size.
std::vector<std::vector<float>> process(TapeEffectState& state, std::vector<std::vector<float>> signals,
                                        std::uint32_t block, std::vector<float>* monitor = nullptr)
{
    float hostTempo = 120.0f;
    const std::size_t length = signals[0].size();
    std::vector<float> speed(block), dry(block);
    for (std::size_t done = 0; done < length; done += block)
    {
        const auto n = static_cast<std::uint32_t>(std::min<std::size_t>(block, length - done));
        std::vector<float*> pointers;
        for (auto& s : signals)
            pointers.push_back(s.data() + done);
        state.render(pointers.data(), static_cast<std::uint32_t>(pointers.size()), n, TapeHostInfo{}, false,
                     hostTempo, speed.data(), dry.data());
        if (monitor)
            monitor->insert(monitor->end(), speed.begin(), speed.begin() + n);
    }
    return signals;
}

// Sum of squared differences from `from` on; an empty b stands for silence.
double squaredDistance(const std::vector<float>& a, const std::vector<float>& b, std::size_t from)
{
    double sum = 0.0;
    for (std::size_t n = from; n < a.size(); ++n)
        sum += std::pow(a[n] - (b.empty() ? 0.0f : b[n]), 2);
    return sum;
}

// One channel at 44.1 kHz with the record head, playback filters and transport all off.
void prepareWithStagesOff(TapeEffectState& state)
{
    state.prepare(44100.0, 256, 1);
    state.forEachDeck([](TapeDeck& deck) {
        deck.setRecordHeadOn(false);
        deck.setPlaybackFilterOn(false);
        deck.transport.transportOn = 0;
    });
    state.outputPad = 1.0f;
}

TEST(TapeEffect, DryMixIsTheInputDelayedBitForBit)
{
    for (bool low : {false, true})
        for (std::uint32_t block : {512u, 100u, 4096u}) // the last exceeds the prepared block
        {
            TapeEffectState state;
            state.prepare(44100.0, 512, 2);
            state.mix = 0.0f;
            state.outputGain = dbToLinear(12.0f);
            if (low)
                state.setLowLatency(true, 0.005);
            const auto left = testSignal(20000, 1), right = testSignal(20000, 2);
            const auto out = process(state, {left, right}, block);
            const std::size_t delay = low ? 441 : 2646;
            for (std::size_t n = 0; n < left.size(); ++n)
            {
                ASSERT_EQ(out[0][n], n >= delay ? left[n - delay] : 0.0f) << n;
                ASSERT_EQ(out[1][n], n >= delay ? right[n - delay] : 0.0f) << n;
            }
        }
}

// Stages off, the wet path is the saturated input in time with the dry; a coincident or
// silent second deck leaves it alone, an inverted coincident one cancels it exactly.
TEST(TapeEffect, AllStagesOffIsTheSaturatedInputOrItsCancellation)
{
    enum Setup { lfoWithoutDepth, manualCoincident, manualAtTheEnd, invertedCoincident };
    const auto x = testSignal(30000, 3);
    for (Setup setup : {lfoWithoutDepth, manualCoincident, manualAtTheEnd, invertedCoincident})
    {
        TapeEffectState state;
        prepareWithStagesOff(state);
        state.setFlangeMode(setup == lfoWithoutDepth ? TapeChannel::lfoMode : TapeChannel::manualMode);
        if (setup == lfoWithoutDepth)
            state.forEachDeck([](TapeDeck& deck) { deck.flangeDepth = 0.0; });
        if (setup == manualCoincident || setup == invertedCoincident)
            state.setRelativeDelay(0.0);
        state.channels[0].phaseInvert = setup == invertedCoincident;
        const auto out = process(state, {x}, 256);
        for (std::size_t n = 8000; n < x.size(); ++n)
        {
            // The float tape length puts the head 6e-5 samples off the whole delay.
            if (setup == invertedCoincident)
                ASSERT_EQ(out[0][n], 0.0f) << n;
            else
                ASSERT_NEAR(out[0][n], std::tanh(x[n - 2646] * 0.01) * 100.0, 5e-5) << n << " setup " << setup;
        }
    }
}

TEST(TapeEffect, MatchedNoiseReductionIsNearlyTransparent)
{
    const auto x = testSignal(20000, 9);
    std::vector<float> reference;
    for (int type = 0; type <= 3; ++type)
    {
        TapeEffectState state;
        prepareWithStagesOff(state);
        state.forEachDeck([type](TapeDeck& deck) {
            deck.setEncoderType(type);
            deck.setDecoderType(type);
        });
        const auto out = process(state, {x}, 256)[0];
        if (type == 0)
        {
            reference = out;
            continue;
        }
        const double level = squaredDistance(reference, {}, 10000);
        EXPECT_LT(squaredDistance(out, reference, 10000) / level, type == 1 ? 1e-12 : 1e-4) << "type " << type;

        // Encoding alone is audible: the stage sits in the path.
        state.forEachDeck([](TapeDeck& deck) { deck.setDecoderType(0); });
        EXPECT_GT(squaredDistance(process(state, {x}, 256)[0], reference, 10000) / level, 1e-3) << "type " << type;
    }
}

TEST(TapeEffect, DropoutsNeedTheRecordHead)
{
    const auto x = testSignal(44100, 10);
    auto energy = [&x](double depth, bool recordHead) {
        TapeEffectState state;
        state.prepare(44100.0, 512, 1);
        state.forEachDeck([&](TapeDeck& deck) {
            deck.setRecordHeadOn(recordHead);
            deck.noiseGain = 0.0;
            deck.setDegradeDepth(depth);
            deck.setDegradeRate(50.0);
        });
        return squaredDistance(process(state, {x}, 512)[0], {}, 4000);
    };
    EXPECT_LT(energy(1.0, true), 0.9 * energy(0.0, true));
    EXPECT_EQ(energy(1.0, false), energy(0.0, false));
}

TEST(TapeEffect, AddedChannelsKeepTheSettings)
{
    TapeEffectState state;
    state.prepare(44100.0, 512, 1);
    state.forEachDeck([](TapeDeck& deck) { deck.setDrive(10.0); });
    state.setFlangeMode(TapeChannel::manualMode);
    state.prepare(48000.0, 256, 2);
    const TapeChannel& added = state.channels[1];
    EXPECT_EQ(added.flangeMode, TapeChannel::manualMode);
    EXPECT_EQ(added.decks[0].drive, 10.0);

    // Channels added after prepare, when the bus arrives: same settings, own blank tape,
    // and they play like the first channel (the hiss aside, which each deck has of its own).
    state.forEachDeck([](TapeDeck& deck) { deck.noiseGain = 0.0; });
    (void) process(state, {testSignal(4096, 1), testSignal(4096, 2)}, 256);
    state.setChannelCount(4);
    ASSERT_EQ(state.channels.size(), 4u);
    ASSERT_EQ(state.dryDelays.size(), 4u);
    for (const TapeChannel& channel : state.channels)
    {
        EXPECT_EQ(channel.decks[1].inputRing.size(), 96000u);
        EXPECT_EQ(channel.decks[1].sampleCounter, 0u);
    }
    const auto x = testSignal(8192, 5);
    const auto out = process(state, {x, x, x, x}, 256);
    for (std::size_t c = 1; c < out.size(); ++c)
        for (std::size_t n = 0; n < x.size(); ++n)
            ASSERT_NEAR(out[c][n], out[0][n], 1e-4f) << "channel " << c << ", sample " << n;
    state.setChannelCount(1);
    EXPECT_EQ(state.channels.size(), 1u);
    EXPECT_EQ(state.dryDelays.size(), 1u);
}

TEST(TapeEffect, LfoSweepsTheFlangeAndReportsItsPosition)
{
    TapeEffectState state;
    state.prepare(48000.0, 480, 1);
    state.setLfoFrequency(1.0f, false, 120.0f);
    float hostTempo = 120.0f;
    std::vector<float> x(480, 0.1f), speed(480), dry(480);
    float low = 2.0f, high = -2.0f;
    double shortest = 1e9, longest = 0.0;
    for (int block = 0; block < 300; ++block)
    {
        float* channel = x.data();
        const float position =
            state.render(&channel, 1, 480, TapeHostInfo{}, false, hostTempo, speed.data(), dry.data());
        if (block > 20)
        {
            low = std::min(low, position);
            high = std::max(high, position);
            const TapeDeck& second = state.channels[0].decks[1];
            const double delay = second.heads[0].delayInSamples(0);
            // The first deck reads at the dry path's time, so the second passes it where
            // the relative delay crosses zero.
            ASSERT_NEAR(state.channels[0].decks[0].heads[0].delayInSamples(0), 0.06 * 48000.0, 1e-3);
            shortest = std::min(shortest, delay);
            longest = std::max(longest, delay);
        }
    }
    EXPECT_LT(low, -0.95f);
    EXPECT_GT(high, 0.95f);
    // Default depth of 5 ms around the 60 ms latency.
    EXPECT_NEAR(shortest, 0.055 * 48000.0, 20.0);
    EXPECT_NEAR(longest, 0.065 * 48000.0, 20.0);
}

TEST(TapeEffect, HostTransportSyncsTheLfo)
{
    TapeEffectState state;
    state.prepare(48000.0, 64, 1);
    state.setLfoFrequency(2.0f, true, 120.0f); // two beats a cycle
    float hostTempo = 120.0f;
    std::vector<float> x(64, 0.0f), speed(64), dry(64);
    float* channel = x.data();
    TapeHostInfo host{140.0, true, 5.5};
    state.render(&channel, 1, 64, host, true, hostTempo, speed.data(), dry.data());
    EXPECT_EQ(hostTempo, 140.0f);
    const TapeDeck& deck = state.channels[0].decks[0];
    EXPECT_FLOAT_EQ(deck.lfoRate, 140.0f * 0.016666668f / 2.0f);
    EXPECT_NEAR(deck.lfoPhaseAccumulator, 0.75f + 64.0f * deck.lfoRate / 48000.0f, 1e-6f);
}

TEST(TapeEffect, BadInputBurstsLeaveTheEffectWorking)
{
    TapeEffectState reference;
    reference.prepare(44100.0, 512, 2);
    reference.forEachDeck([](TapeDeck& deck) {
        deck.transport.wowDepth = 0.3;
        deck.transport.flutterDepth = 0.05;
        deck.transport.randomDepth = 0.1;
        deck.feedback = 0.9;
        deck.setDrive(dbToLinear(20.0f));
    });
    reference.mix = 0.5f;
    TapeEffectState burst = *reference.clone(); // same noise seeds

    auto x = testSignal(44100, 6);
    auto clean = x;
    const float bad[] = {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(),
                         -std::numeric_limits<float>::infinity(), 1e-40f, -1e-42f};
    for (std::size_t n = 10000; n < 12000; ++n)
    {
        x[n] = bad[n % 5];
        clean[n] = 0.0f; // what the effect must make of them
    }
    const auto expected = process(reference, {clean, clean}, 512);
    const auto out = process(burst, {x, x}, 512);
    for (std::size_t c = 0; c < 2; ++c)
        for (std::size_t n = 0; n < x.size(); ++n)
            ASSERT_EQ(out[c][n], expected[c][n]) << n; // bad samples would not compare equal
}

TEST(TapeEffect, HeavySettingsStayFiniteAndBounded)
{
    TapeEffectState state;
    state.prepare(48000.0, 512, 2);
    state.setLowLatency(true, 0.015);
    state.setNoiseSync(true);
    state.forEachDeck([](TapeDeck& deck) {
        deck.transport.wowDepth = 0.3;
        deck.transport.wowRate = 1.5;
        deck.transport.flutterDepth = 0.05;
        deck.transport.flutterRate = 100.0;
        deck.transport.randomDepth = 0.1;
        deck.transport.randomRate = 100.0;
        deck.feedback = 1.0;
        deck.noiseGain = 0.1;
        deck.setDrive(100.0);
        deck.setRecordHardness(1.0);
        deck.setRecordResistance(100000.0);
        deck.LFOShape = 0.99f;
        deck.LFOSymmetry = 1.0f;
        deck.LFOSwing = 1.0f;
    });
    state.setFeedbackDelay(0.002);
    state.setLfoFrequency(10.0f, false, 120.0f);
    std::vector<float> x(48000 * 3);
    for (std::size_t n = 0; n < x.size(); ++n)
        x[n] = (n / 4800) % 2 ? 1.0f : -1.0f;
    std::vector<float> monitor;
    const auto out = process(state, {x, x}, 512, &monitor);
    for (const auto& channel : out)
        for (float v : channel)
            ASSERT_TRUE(std::isfinite(v) && std::fabs(v) < 1000.0f);
    for (float v : monitor)
        ASSERT_LT(std::fabs(v), 0.45f);
}

TEST(TapeEffect, AReplayFromResetIsBitIdenticalAndChannelsStillDiffer)
{
    // Hiss, wow, flutter, unsynced drift, dropouts and the LFO all running.
    auto configure = [](TapeEffectState& state) {
        state.prepare(48000.0, 256, 2);
        state.forEachDeck([](TapeDeck& deck) {
            deck.noiseGain = 0.01;
            deck.recordHead.gateOn = 0;
            deck.transport.wowDepth = 0.2;
            deck.transport.flutterDepth = 0.03;
            deck.transport.randomDepth = 0.1;
            deck.setDegradeDepth(0.5);
        });
        state.setNoiseSync(true);
        state.setLfoFrequency(3.0f, false, 120.0f);
    };
    const auto x = testSignal(48000, 3);
    TapeEffectState played, fresh;
    configure(played);
    configure(fresh);
    const auto first = process(played, {x, x}, 256);
    played.setNoiseSync(true); // a second write draws new seeds...
    (void) process(played, {x, x}, 100);
    played.reset(); // ...and a reset starts the same sequence again
    fresh.reset();
    const auto again = process(played, {x, x}, 256);
    EXPECT_EQ(again, first) << "a replay from the start repeats itself sample for sample";
    EXPECT_EQ(process(fresh, {x, x}, 256), first) << "so does another instance with the same settings";
    EXPECT_NE(first[0], first[1]) << "the channels still get noise and drift of their own";
}

} // namespace
} // namespace oxa
