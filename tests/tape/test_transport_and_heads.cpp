#include "tape/TapeEffect.h"
#include "tape/TransportGenerator.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace oxa
{
namespace
{

// Ticks a transport over a history ring and returns the lowest and highest speed written.
std::pair<double, double> speedRange(TransportGenerator& transport, std::uint64_t ticks, std::size_t ring,
                                     double nominal = 1.0)
{
    std::vector<double> history(ring, 0.0);
    double low = 1e9, high = -1e9;
    for (std::uint64_t b = 0; b < ticks; ++b)
    {
        transport.tick(b, 0.0, nominal, history.data(), history.size());
        low = std::min(low, history[b % ring]);
        high = std::max(high, history[b % ring]);
        EXPECT_TRUE(transport.randomPhase >= 0.0 && transport.randomPhase < 2.0) << b;
    }
    return {low, high};
}

TEST(TransportGenerator, OffHoldsTheNominalSpeedWowSwingsThirtyPercentAndDriftIsBounded)
{
    TransportGenerator transport;
    transport.prepare(48000.0);
    transport.wowDepth = 0.3;
    transport.wowRate = 1.5;
    transport.flutterDepth = 0.05;
    transport.randomDepth = 0.1;
    transport.transportOn = 0;
    EXPECT_EQ(speedRange(transport, 1000, 100, 1.25), std::make_pair(1.25, 1.25));
    EXPECT_EQ(transport.deviationAt(17), 0.0f);

    transport.flutterDepth = 0.0;
    transport.randomDepth = 0.0;
    transport.transportOn = 1;
    const auto [low, high] = speedRange(transport, 3000, 1500);
    EXPECT_NEAR(low, 0.7, 1e-4);
    EXPECT_NEAR(high, 1.3, 1e-4);

    // Random drift alone, faster than one segment per few ticks, stays within its depth.
    transport.wowDepth = 0.0;
    transport.randomDepth = 0.1;
    transport.randomRate = 100.0;
    const auto [driftLow, driftHigh] = speedRange(transport, 20000, 64);
    EXPECT_GE(driftLow, 0.95 - 1e-12);
    EXPECT_LE(driftHigh, 1.05 + 1e-12);
}

// A prepared single-channel effect whose decks can be inspected per tick.
struct Rig
{
    TapeEffectState state;
    std::vector<float> buffer, speed, dry;
    float hostTempo = 120.0f;

    explicit Rig(double sampleRate, std::uint32_t channels = 1, std::uint32_t block = 32)
    {
        state.prepare(sampleRate, block, channels);
        state.forEachDeck([](TapeDeck& deck) {
            deck.setRecordHeadOn(false);
            deck.setPlaybackFilterOn(false);
        });
        buffer.assign(static_cast<std::size_t>(block) * channels, 0.0f);
        speed.assign(block, 0.0f);
        dry.assign(block, 0.0f);
    }

    void render(std::uint32_t n)
    {
        std::vector<float*> pointers;
        for (std::size_t c = 0; c < state.channels.size(); ++c)
            pointers.push_back(buffer.data() + c * n);
        state.render(pointers.data(), static_cast<std::uint32_t>(pointers.size()), n, TapeHostInfo{}, false,
                     hostTempo, speed.data(), dry.data());
    }

    void run(int ticks)
    {
        for (int i = 0; i < ticks; ++i)
            render(32);
    }
};

TEST(TapeHead, ForwardHeadSettlesAtTheLatency)
{
    for (double sampleRate : {44100.0, 48000.0, 96000.0})
    {
        Rig rig(sampleRate);
        rig.state.setFlangeMode(TapeChannel::manualMode);
        rig.state.setRelativeDelay(0.0); // the second deck at the nominal delay too
        rig.run(2000);
        for (const TapeDeck& deck : rig.state.channels[0].decks)
        {
            const TapeHead& head = deck.heads[0];
            EXPECT_NEAR((head.currentDelay + 1.0) * 32.0, 0.06 * sampleRate, 1e-3) << sampleRate;
            EXPECT_NEAR(head.delayInSamples(0), 0.06 * sampleRate, 1e-3);
            const TapeHead& back = deck.heads[1];
            EXPECT_NEAR((back.currentDelay + 1.0) * 32.0, 0.016 * sampleRate, 1e-3);
        }
    }
}

TEST(TapeHead, LowLatencyMovesTheForwardHeadsAndLimitsTheDepth)
{
    Rig rig(44100.0);
    rig.run(200);
    rig.state.setLowLatency(true, 0.015);
    EXPECT_EQ(rig.state.latency, 0.01f);
    EXPECT_EQ(rig.state.channels[0].decks[1].flangeDepth, 0.009);
    rig.state.setFlangeDepth(0.012);
    EXPECT_EQ(rig.state.channels[0].decks[1].flangeDepth, 0.009);
    rig.state.setFlangeMode(TapeChannel::manualMode);
    rig.state.setRelativeDelay(0.0);
    rig.run(2000); // past the half-second ramp
    for (const TapeDeck& deck : rig.state.channels[0].decks)
        EXPECT_NEAR(deck.heads[0].delayInSamples(0), 441.0, 1e-3);
}

TEST(TapeHead, SecondDeckObeysTheMovingTapeIdentity)
{
    // With a moving speed, the tape between the heads stays constant:
    // 1 - dD/dt = v(t) / v(t - D).
    Rig rig(48000.0);
    rig.state.forEachDeck([](TapeDeck& deck) {
        deck.transport.wowDepth = 0.3;
        deck.transport.wowRate = 1.5;
        deck.transport.flutterDepth = 0.02;
        deck.transport.flutterRate = 7.0;
    });
    const TapeDeck& deck = rig.state.channels[0].decks[1];
    const std::size_t ticks = 9000;
    std::vector<double> delay(ticks), speed(ticks);
    for (std::size_t b = 0; b < ticks; ++b)
    {
        rig.render(32);
        delay[b] = deck.heads[0].currentDelay + 1.0; // ticks of tape behind the end of tick b
        speed[b] = deck.speedHistory[b % deck.speedHistory.size()];
    }
    double largestSlope = 0.0, worst = 0.0;
    for (std::size_t b = 3000; b + 1 < ticks; ++b)
    {
        const double slope = (delay[b + 1] - delay[b - 1]) * 0.5;
        // Speed at the read position, tick b + 0.5 - D (speeds stand for tick centres).
        const double at = static_cast<double>(b) + 0.5 - delay[b];
        const auto i = static_cast<std::size_t>(std::floor(at - 0.5));
        const double f = at - 0.5 - static_cast<double>(i);
        const double past = speed[i] + f * (speed[i + 1] - speed[i]);
        const double now = 0.5 * (speed[b] + speed[b + 1]);
        worst = std::max(worst, std::fabs((1.0 - slope) - now / past));
        largestSlope = std::max(largestSlope, std::fabs(slope));
    }
    EXPECT_GT(largestSlope, 0.05); // the identity is not met trivially
    EXPECT_LT(worst, 2e-3);
}

TEST(TapeHead, SpeedChangeKeepsTheDelayAfterTheRamp)
{
    Rig rig(48000.0);
    rig.run(1000);
    const double before = rig.state.channels[0].decks[0].heads[0].currentDelay;
    rig.state.setTapeSpeed(0.5);
    rig.run(1500);
    const TapeHead& head = rig.state.channels[0].decks[0].heads[0];
    EXPECT_NEAR(head.currentDelay, before, 1e-6);
    EXPECT_DOUBLE_EQ(head.tapeLength, 0.03);
}

TEST(TapeHead, LongDelayStopsShortOfTheWritePosition)
{
    Rig rig(48000.0);
    rig.state.setFeedbackDelay(1.0);
    rig.state.setTapeSpeed(2.0);
    rig.state.forEachDeck([](TapeDeck& deck) { deck.speed = 0.1; }); // needs 20 s of a 2 s tape
    const TapeDeck& deck = rig.state.channels[0].decks[0];
    const auto m = static_cast<double>(deck.speedHistory.size());
    for (int i = 0; i < 10000; ++i)
    {
        rig.render(32);
        const TapeHead& head = deck.heads[1];
        ASSERT_LT(head.currentDelay, m);
        const std::uint64_t lastTick = deck.sampleCounter / 32 - 1;
        ASSERT_NE(head.readTick, lastTick % deck.speedHistory.size());
        ASSERT_NE(head.readTick, (lastTick + 1) % deck.speedHistory.size());
    }
}

TEST(TapeHead, HistoryRewrittenUnderTheHeadStillReadsInsideTheTape)
{
    // A head that has counted a second of tape, whose history is then rewritten with
    // much slower tape, used to end up with a negative delay and read outside the ring.
    TapeHead head;
    head.prepare(1500.0);
    head.setDelay(0.01);
    std::vector<double> history(3000, 1.0);
    std::uint64_t tick = 0;
    for (; tick < 400; ++tick)
        head.tick(tick, history.data(), history.size());
    std::fill(history.begin(), history.end(), 1e-6);
    std::vector<double> ring(96000, 0.25);
    for (; tick < 1200; ++tick)
    {
        head.tick(tick, history.data(), history.size());
        ASSERT_GE(head.currentDelay, 0.0) << tick;
        for (std::uint32_t offset : {0u, 31u})
            ASSERT_EQ(TapeHead::readAt(ring.data(), ring.size(), tick % ring.size(), head.delayInSamples(offset)), 0.25);
    }
    EXPECT_EQ(TapeHead::readAt(ring.data(), ring.size(), 5, std::nan("")), 0.25);
    EXPECT_EQ(TapeHead::readAt(ring.data(), ring.size(), 5, -40.0), 0.25);
}

TEST(TapeHead, SpeedChangeKeepsEveryHeadBehindThePresent)
{
    // Slowest tape to fastest at the shortest delays: the heads' lengths glide while the
    // tape speeds up. A tape that jumped to the new speed would carry more than a short
    // head's length within one tick and bring its read position up to the present.
    Rig rig(48000.0);
    rig.state.setLowLatency(true, 0.009);
    rig.state.setFeedbackDelay(0.0025);
    rig.state.setTapeSpeed(0.1);
    rig.run(200);
    rig.state.setTapeSpeed(1.995);
    const TapeChannel& channel = rig.state.channels[0];
    struct Case
    {
        const TapeHead& head;
        double lowest, highest; // seconds
    };
    const Case cases[] = {
        {channel.decks[0].heads[TapeDeck::forwardHead], 0.01, 0.01},
        {channel.decks[0].heads[TapeDeck::feedbackHeadIndex], 0.0025, 0.0025},
        {channel.decks[1].heads[TapeDeck::forwardHead], 0.001, 0.019},
    };
    for (int i = 0; i < 1500; ++i)
    {
        rig.render(32);
        for (int c = 0; c < 3; ++c)
        {
            const double seconds = cases[c].head.delayInSamples(0) / 48000.0;
            ASSERT_GT(seconds, 0.8 * cases[c].lowest) << "head " << c << ", tick " << i;
            ASSERT_LT(seconds, 1.3 * cases[c].highest) << "head " << c << ", tick " << i;
        }
    }
}

TEST(TapeHead, HeadShorterThanOneTickStaysAtThePresentPastTheFirstLap)
{
    // Three quarters of a tick of tape: the walk forward stops at the newest tick on
    // every lap of the history, not only before the tick number first wraps round.
    TapeHead head;
    head.prepare(1500.0);
    head.setDelay(0.0005);
    std::vector<double> history(3000, 0.0);
    for (std::uint64_t tick = 0; tick < 7000; ++tick)
    {
        history[tick % history.size()] = 1.0;
        head.tick(tick, history.data(), history.size());
        ASSERT_EQ(head.currentDelay, 0.0) << tick;
        ASSERT_EQ(head.distance, 1.0) << tick;
    }
}

TEST(NoiseSync, OffRunsIdenticalModulationOnDrifts)
{
    for (bool unsync : {false, true})
    {
        Rig rig(48000.0, 2);
        rig.state.forEachDeck([](TapeDeck& deck) {
            deck.transport.randomDepth = 0.1;
            deck.transport.randomRate = 50.0;
            deck.transport.wowDepth = 0.1;
        });
        rig.state.setNoiseSync(unsync);
        rig.run(500);
        const auto& channels = rig.state.channels;
        for (std::size_t deck : {0, 1})
            EXPECT_EQ(channels[0].decks[deck].speedHistory == channels[1].decks[deck].speedHistory, !unsync) << deck;
    }
}

} // namespace
} // namespace oxa
