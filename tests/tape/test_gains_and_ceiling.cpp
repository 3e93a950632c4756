#include "tape/Decibels.h"
#include "tape/TapeCeiling.h"
#include "tape/TapeEffect.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

namespace oxa
{
namespace
{
// Pink noise (a sum of one-pole filtered white noise) scaled to the given peak.
std::vector<float> pinkNoise(std::size_t length, double peak)
{
    std::mt19937 rng(5);
    std::uniform_real_distribution<double> white(-1.0, 1.0);
    const double poles[] = {0.99886, 0.99332, 0.969, 0.8665, 0.55};
    const double weights[] = {0.0555179, 0.0750759, 0.153852, 0.3104856, 0.5329522};
    double rows[5] = {};
    std::vector<double> y(length);
    double largest = 0.0;
    for (double& v : y)
    {
        const double w = white(rng);
        v = 0.5362 * w;
        for (int r = 0; r < 5; ++r)
            v += rows[r] = poles[r] * rows[r] + weights[r] * w;
        largest = std::max(largest, std::fabs(v));
    }
    std::vector<float> x(length);
    for (std::size_t n = 0; n < length; ++n)
        x[n] = static_cast<float>(y[n] * peak / largest);
    return x;
}

void render(TapeEffectState& state, std::vector<float>& x, std::uint32_t block)
{
    float tempo = 120.0f;
    std::vector<float> speed(block), dry(block);
    for (std::size_t done = 0; done + block <= x.size(); done += block)
    {
        float* channel = x.data() + done;
        state.render(&channel, 1, block, TapeHostInfo{}, false, tempo, speed.data(), dry.data());
    }
}

TEST(GainGlides, GlideOverTwentyMillisecondsUnlessFreshOrAskedToJump)
{
    TapeEffectState state;
    state.prepare(48000.0, 480, 1);
    std::vector<float> x(480, 0.0f);
    state.mix = 0.25f; // written before the first block: taken at once
    render(state, x, 480);
    EXPECT_FALSE(state.dryGain.isMoving());
    EXPECT_EQ(state.dryGain.value(), 0.75f);

    state.mix = 1.0f;
    state.forEachDeck([](TapeDeck& deck) { deck.inputGain = 0.5; });
    render(state, x, 480);
    EXPECT_EQ(state.dryGain.length, 960);
    EXPECT_NEAR(state.dryGain.value(), 0.375f, 1e-6f) << "half way after 10 ms";
    EXPECT_EQ(state.channels[0].decks[1].inputGainRamp.length, 960);

    state.outputGain = 0.1f;
    state.jumpToTargetsAtNextBlock(); // a preset loaded while the host stands still
    render(state, x, 480);
    EXPECT_FALSE(state.wetGain.isMoving());
    EXPECT_EQ(state.wetGain.value(), 0.1f * state.outputPad);
    EXPECT_EQ(state.dryGain.value(), 0.0f);
    EXPECT_EQ(state.channels[0].decks[0].inputGainRamp.value(), 0.5f);
}

TEST(TapeCeiling, PassesTheKneeUntouchedAndNeverPassesTheCeiling)
{
    for (double x : {0.0, 0.3, -1.0, TapeCeiling::knee, -TapeCeiling::knee})
        EXPECT_EQ(TapeCeiling::apply(x), x);
    for (double x : {2.6, 4.0, -10.0, 1e6, -1e300})
    {
        EXPECT_LE(std::fabs(TapeCeiling::apply(x)), TapeCeiling::ceiling);
        EXPECT_GT(std::fabs(TapeCeiling::apply(x)), TapeCeiling::knee);
    }
}

// With compensation on, full-scale programme never brings a deck up to the knee, whatever
// the feedback: the ceiling leaves the normal range exactly as it was.
TEST(TapeCeiling, NormalRangeNeverReachesTheKnee)
{
    const auto noise = pinkNoise(48000 * 3 / 2, 1.0);
    for (double feedback : {0.5, 1.0})
        for (double delay : {0.002, 0.016})
            for (double speed : {1.0, 2.0})
            {
                TapeEffectState state;
                state.prepare(48000.0, 512, 1);
                state.forEachDeck([feedback](TapeDeck& deck) {
                    deck.feedback = feedback;
                    deck.noiseGain = dbToLinear(-80.0f);
                });
                state.setFeedbackDelay(delay);
                state.setTapeSpeed(speed);
                auto x = noise;
                render(state, x, 512);
                double loudest = 0.0;
                for (const TapeDeck& deck : state.channels[0].decks)
                    for (double v : deck.outputRing)
                        loudest = std::max(loudest, std::fabs(v));
                EXPECT_LT(loudest, TapeCeiling::knee) << feedback << " " << delay << " " << speed;
            }
}

// A Drive change hands over from the old record path to the new one: the level holds
// through a step (1 ms windows, against the settled levels either side), on quiet material
// and on loud material that drives the head deep into saturation, until and after the new
// path has taken over. Gliding through the drives in between missed by 6 to 13 dB on loud
// material: a saturated head sounds different at each.
TEST(DriveFade, StepsKeepTheLevel)
{
    const std::size_t step = 36000, window = 48;
    struct Step
    {
        double peak;
        float from, to;
        double tolerance;
    };
    for (auto [peak, from, to, tolerance] : {Step{0.03, 0, 20, 1}, Step{0.03, 40, 0, 1}, Step{0.03, 10, 30, 1},
                                             Step{0.3, 0, 40, 1}, Step{0.3, 40, 0, 1}, Step{0.3, 0, 20, 1},
                                             Step{1.0, 0, 40, 1}, Step{1.0, 40, 20, 1}, Step{1.0, 0, 10, 1},
                                             Step{1.0, 20, 23, 1}, Step{1.0, 40, 37, 1}, Step{0.3, 0, 6, 1},
                                             Step{1.0, 10, 22, 1}, Step{0.3, 30, 18, 1}})
    {
        const auto noise = pinkNoise(step + 48000, peak);
        auto run = [&noise, step](float fromDb, float toDb) {
            TapeEffectState state;
            state.prepare(48000.0, 480, 1);
            state.forEachDeck([fromDb](TapeDeck& deck) { deck.setDrive(dbToLinear(fromDb)); });
            auto x = noise;
            std::vector<float> head(x.begin(), x.begin() + step), tail(x.begin() + step, x.end());
            render(state, head, 480);
            state.forEachDeck([toDb](TapeDeck& deck) { deck.setDrive(dbToLinear(toDb)); });
            render(state, tail, 480);
            head.insert(head.end(), tail.begin(), tail.end());
            return head;
        };
        const auto before = run(from, from), after = run(to, to), stepped = run(from, to);
        auto level = [](const std::vector<float>& y, std::size_t start, std::size_t length) {
            double sum = 1e-30;
            for (std::size_t n = start; n < start + length; ++n)
                sum += static_cast<double>(y[n]) * y[n];
            return 10.0 * std::log10(sum / static_cast<double>(length));
        };
        // The level is judged where the programme is: windows 10 dB below it are quiet
        // moments whose depth the head's memory shapes, step or no step.
        const std::size_t rest = noise.size() - step;
        const double floor = std::min(level(before, step, rest), level(after, step, rest)) - 10.0;
        double worst = 0.0;
        for (std::size_t start = step; start + window <= noise.size(); start += window)
        {
            const double a = std::max(floor, level(before, start, window));
            const double b = std::max(floor, level(after, start, window));
            const double s = std::max(floor, level(stepped, start, window));
            worst = std::max({worst, s - std::max(a, b), std::min(a, b) - s});
        }
        EXPECT_LT(worst, tolerance) << "peak " << peak << ": " << from << " dB -> " << to << " dB";
    }
}

} // namespace
} // namespace oxa
