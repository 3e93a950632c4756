// The standalone application's test voice: how its tree is put together, and that it
// sounds while a key is held, and only then.
#include "EngineTestRig.h"
#include "engine/SignalConnection.h"
#include "engine/instrument/BandLimitedOscillator.h"
#include "engine/instrument/DahdsrEnvelope.h"
#include "engine/instrument/Keygroup.h"
#include "engine/instrument/MinBlepGenerator.h"
#include "engine/instrument/TestInstrument.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace oxa;

namespace
{
/** The instrument ahead of a unity-gain effect, rendering silence in, like the standalone. */
struct InstrumentRig : test::EngineRenderRig
{
    InstrumentRig() : EngineRenderRig(512, 0.0f)
    {
        program = TestInstrument::addTo(*engine);
        engine->addElement(effect);
        prepare(48000.0, 512);
    }

    void note(uint32_t type, uint32_t key, uint32_t velocity, uint64_t offset = 0)
    {
        events.push_back(test::engineEvent(type, key, velocity, offset));
    }

    /** Renders `blocks` blocks of 512 and gives the RMS of the last one. */
    float render(int blocks = 1)
    {
        float rms = 0.0f;
        for (int b = 0; b < blocks; ++b)
        {
            std::fill(left.begin(), left.end(), 0.0f);
            std::fill(right.begin(), right.end(), 0.0f);
            EngineRenderRig::render(512, true);
            double sum = 0.0;
            for (float v : left)
                sum += (double) v * v;
            rms = (float) std::sqrt(sum / 512.0);
        }
        return rms;
    }

    Keygroup& keygroup() { return *dynamic_cast<Keygroup*>(engine->findElement(String("/Program/Layer 0/Keygroup 0"))); }

    std::shared_ptr<test::GainEffect> effect = std::make_shared<test::GainEffect>("FluxDeck");
    std::shared_ptr<Program> program;
};
} // namespace

TEST(TestInstrument, TreeIsBuiltAheadOfTheEffectWithItsEnvelopeConnected)
{
    InstrumentRig rig;
    const auto& order = rig.engine->renderOrder();
    ASSERT_EQ(order.size(), 2u);
    EXPECT_EQ(order[0]->typeName().text(), String("Program"));
    EXPECT_EQ(order[1], rig.effect.get());
    EXPECT_EQ(rig.effect->path(), String("/FluxDeck")) << "the instrument leaves the effect's path alone";
    EXPECT_EQ(rig.engine->findElement(String("/FluxDeck")), rig.effect.get());

    // The envelope drives the keygroup's volume; made after its source, the connection found it at once.
    ASSERT_NE(rig.engine->findElement(String("/Program/Layer 0/Keygroup 0")), nullptr);
    Keygroup& keygroup = rig.keygroup();
    EXPECT_EQ(keygroup.oscillator()->intParameter(MinBlepGenerator::waveformId()), 1);
    ASSERT_EQ(keygroup.controlSourceCount(), 1u);
    EXPECT_EQ(keygroup.controlSource(0)->name().text(), String("Amp. Env"));
    auto* connection = dynamic_cast<SignalConnection*>(
        keygroup.findInfo(Keygroup::volumeId())->envelope()->findElement(String("AmpEnvMod")));
    ASSERT_NE(connection, nullptr);
    EXPECT_EQ(connection->source(), String("Amp. Env"));
    EXPECT_TRUE(connection->ratio() == 1.0f && !connection->isBypassed() && !connection->isEdition());
    EXPECT_EQ(connection->resolvedSource(), keygroup.controlSource(0));
}

TEST(TestInstrument, SoundsWhileAKeyIsHeldAndAVelocityZeroNoteOnReleasesIt)
{
    for (uint32_t releaseType : {EventType::noteOff, EventType::noteOn})
    {
        InstrumentRig rig;
        EXPECT_EQ(rig.render(2), 0.0f) << "no key, no sound";

        rig.note(EventType::noteOn, 57, 100, 100);
        const float held = rig.render();
        EXPECT_GT(held, 0.02f);
        EXPECT_EQ(rig.left[50], 0.0f) << "nothing before the key";
        EXPECT_GT(rig.render(10), 0.02f) << "sustains";

        rig.note(releaseType, 57, 0);
        rig.render();
        EXPECT_EQ(rig.render(20), 0.0f) << "released after the envelope's release, type " << releaseType;
    }
}

TEST(TestInstrument, NewestKeySoundsAndReleasingItFallsBackToTheOlder)
{
    InstrumentRig rig;
    rig.note(EventType::noteOn, 45, 100);
    rig.render(4);
    rig.note(EventType::noteOn, 69, 100);
    rig.render(4);
    // 69 is A at the context's tuning: about 48000 / 440 samples a period
    int rising = 0;
    for (size_t i = 1; i < rig.left.size(); ++i)
        rising += rig.left[i - 1] > 0.0f && rig.left[i] <= 0.0f ? 1 : 0;
    EXPECT_NEAR(rising, 512.0 * 440.0 / 48000.0, 1.5);

    rig.note(EventType::noteOff, 69, 0);
    EXPECT_GT(rig.render(20), 0.02f) << "the older key still holds the voice";
    rig.note(EventType::noteOff, 45, 0);
    EXPECT_EQ(rig.render(20), 0.0f);
}

TEST(BandLimitedOscillator, StepsStayInRangeAndAverageToZero)
{
    for (int waveform : {BandLimitedOscillator::sine, BandLimitedOscillator::sawtooth, BandLimitedOscillator::square})
    {
        BandLimitedOscillator osc;
        double sum = 0.0;
        float peak = 0.0f;
        const int n = 48000;
        for (int i = 0; i < n; ++i)
        {
            const float v = osc.next(waveform, 441.0 / 48000.0);
            sum += v;
            peak = std::max(peak, std::abs(v));
        }
        EXPECT_LT(std::abs(sum / n), 0.01) << waveform;
        EXPECT_LE(peak, 1.0001f) << waveform;
        EXPECT_GT(peak, 0.9f) << waveform;
    }
}
