// The processor's parameter table and the routing of writes into the decks.
#include "element/LegacyScales.h"
#include "element/ParameterInfo.h"
#include "element/ParameterRegistry.h"
#include "element/StoredFloat.h"
#include "tape/FluxDeckProcessor.h"

#include <gtest/gtest.h>
#include <tinyxml2.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <tuple>
#include <vector>

using namespace oxa;

namespace
{
using Ids = FluxDeckProcessor::Ids;

std::shared_ptr<FluxDeckProcessor> makeProcessor()
{
    auto processor = std::make_shared<FluxDeckProcessor>();
    processor->prepare(44100.0, 512);
    return processor;
}

const FluxDeckProcessor::State& mainOf(const FluxDeckProcessor& p)
{
    return *static_cast<const FluxDeckProcessor::State*>(p.mainState());
}

struct ChangeLog
{
    explicit ChangeLog(Element& observed) : element(observed)
    {
        element.signals().parameterChanged.connect(this, [this](const Element&, unsigned id) { ids.push_back(id); });
    }
    ~ChangeLog() { element.signals().parameterChanged.disconnect(this); }
    bool saw(uint32_t id) const { return std::find(ids.begin(), ids.end(), id) != ids.end(); }
    Element& element;
    std::vector<uint32_t> ids;
};
} // namespace

TEST(ProcessorTable, ListParametersShowAndParseTheirLabels)
{
    const Ids& id = FluxDeckProcessor::ids();
    const auto* encoder = ParameterRegistry::instance().intDescription(id.noiseReductionEncoder);
    const auto* mode = ParameterRegistry::instance().intDescription(id.flangeMode);
    ASSERT_TRUE(encoder != nullptr && mode != nullptr);
    for (auto [list, value, text] : {std::tuple{encoder, 1, "Basic PreEmphasis"}, {encoder, 3, "Type B"},
                                     {mode, 0, "Manual"}, {mode, 1, "LFO"}})
        EXPECT_EQ(list->valueToText(nullptr, value), text);
    int value = -1;
    EXPECT_TRUE(encoder->textToValue(nullptr, String("Type A"), value));
    EXPECT_EQ(value, 2);
    EXPECT_TRUE(mode->textToValue(nullptr, String("1"), value));
    EXPECT_EQ(value, 1);
    EXPECT_FALSE(mode->textToValue(nullptr, String("Sideways"), value));
}

TEST(ProcessorParameters, EveryRowReadsBackWhatWasWritten)
{
    auto processor = makeProcessor();
    auto& registry = ParameterRegistry::instance();
    for (uint32_t row : FluxDeckProcessor::ids().exposedOrder)
    {
        if (const auto* f = registry.floatDescription(row))
        {
            // Two points inside the range, so a getter that returns a constant fails. A
            // value comes back exactly as its saved text would give it, not an ulp beside.
            for (float fraction : {0.23f, 0.81f})
            {
                const float value = f->min + fraction * (f->max - f->min);
                processor->setFloatParameter(row, value);
                EXPECT_EQ(processor->floatParameter(row), storedFloat(value)) << f->name.c_str();
                EXPECT_NEAR(storedFloat(value), value, 1e-6f * std::max(1.0f, std::fabs(value)));
            }
        }
        else if (const auto* i = registry.intDescription(row))
        {
            for (int value = i->max; value >= i->min; --value)
            {
                processor->setIntParameter(row, value);
                EXPECT_EQ(processor->intParameter(row), value) << i->name.c_str();
            }
        }
        else if (const auto* b = registry.boolDescription(row))
        {
            processor->setBoolParameter(row, !b->defaultValue);
            EXPECT_EQ(processor->boolParameter(row), !b->defaultValue) << b->name.c_str();
            processor->setBoolParameter(row, b->defaultValue);
            EXPECT_EQ(processor->boolParameter(row), b->defaultValue) << b->name.c_str();
        }
        else
            ADD_FAILURE() << "row without a description";
    }
}

TEST(ProcessorParameters, NonlinearRowsLandInTheDecksAndBadValuesAreHeldOrRefused)
{
    const Ids& id = FluxDeckProcessor::ids();
    auto processor = std::make_shared<FluxDeckProcessor>();
    AudioBus bus(2, 512);
    processor->setBus(0, &bus);
    processor->prepare(44100.0, 512);
    processor->setFloatParameter(id.hysteresis, 0.5f);
    processor->setFloatParameter(id.speed, 1.0f);
    processor->setFloatParameter(id.magneticHardness, 0.25f);
    processor->setFloatParameter(id.inputGain, -6.0f);
    processor->setFloatParameter(id.wowMod, 0.5f);
    const auto& s = mainOf(*processor);
    ASSERT_EQ(s.channels.size(), 2u);
    for (const TapeChannel& channel : s.channels)
        for (const TapeDeck& deck : channel.decks)
        {
            EXPECT_NEAR(deck.recordHead.k, 100.0 * std::pow(10.0, 1.5), 1e-3);
            EXPECT_NEAR(deck.speed, 1.0, 1e-7);
            EXPECT_DOUBLE_EQ(deck.recordHead.a, 4.0);
            EXPECT_NEAR(deck.inputGain, 0.501187, 1e-5);
            EXPECT_NEAR(deck.transport.wowDepth, 0.15, 1e-7);
        }

    processor->setFloatParameter(id.mix, 0.4f);
    processor->setFloatParameter(id.mix, std::nanf(""));
    EXPECT_FLOAT_EQ(processor->floatParameter(id.mix), 0.4f);
    processor->setFloatParameter(id.speed, 50.0f);
    EXPECT_NEAR(processor->floatParameter(id.speed), 1.3f, 1e-5f);
    processor->setIntParameter(id.noiseReductionEncoder, 99);
    EXPECT_EQ(processor->intParameter(id.noiseReductionEncoder), 3);
    processor->setFloatParameter(id.lfoFreq, -1.0f);
    EXPECT_GT(processor->floatParameter(id.lfoFreq), 0.0f);
}

TEST(ProcessorParameters, GenericNamesFollowTheExposedOrder)
{
    auto owner = std::make_shared<FluxDeckProcessor>();
    FluxDeckProcessor& processor = *owner;
    const auto& common = Element::commonIds();
    const Ids& id = FluxDeckProcessor::ids();
    // The generic names count from the element's first own row; the base's
    // parameters (Bypass, SyncToHost, ...) stand before it.
    std::size_t first = 0;
    while (first < processor.parameterCount() && processor.parameterAt(first).id != id.fade)
        ++first;
    ASSERT_GE(first, 2u);
    ASSERT_LT(first + 44, 128u);
    EXPECT_EQ(processor.mapParameterId(common.alias[first]), id.flangeMode);
    EXPECT_EQ(processor.mapParameterId(common.alias[first + 1]), id.lfoFreq);
    EXPECT_EQ(processor.mapParameterId(common.alias[first + 25]), id.applyLowLatency);
    EXPECT_EQ(processor.mapParameterId(common.alias[first + 43]), id.outputPad);
    EXPECT_EQ(processor.mapParameterId(common.alias[first - 1]), common.alias[first - 1]);
    EXPECT_EQ(processor.mapParameterId(common.alias[first + 44]), common.alias[first + 44]);
    EXPECT_EQ(processor.mapParameterId(id.mix), id.mix);
}

// An old document's resistance is rescaled through the scale the presets use (their tests
// hold the in-range values); a current one reads back unchanged in the state round trips.
TEST(ProcessorPersistence, OldDocumentsClampTheResistanceOnTheOldScale)
{
    tinyxml2::XMLDocument document;
    tinyxml2::XMLElement* node = document.NewElement("FluxDeck");
    node->SetAttribute("Hysteresis", -1.0f);
    auto old = makeProcessor();
    old->loadXmlAttributes(node, 0);
    const float loaded = old->floatParameter(FluxDeckProcessor::ids().hysteresis);
    EXPECT_NEAR(loaded, LegacyScales::toCurrent("Hysteresis", 0.0f, 0), 1e-7f);
    EXPECT_NEAR(loaded, 0.33333334f, 1e-6f);
}

TEST(ProcessorInterplay, SyncToHostConvertsTheRateBothWays)
{
    const Ids& id = FluxDeckProcessor::ids();
    auto processor = makeProcessor();
    const uint32_t sync = ProcessingElement::syncToHostId();
    processor->setBoolParameter(sync, false);
    processor->setFloatParameter(id.lfoFreq, 0.1f);
    ChangeLog log(*processor);

    processor->setBoolParameter(sync, true); // 120 bpm
    EXPECT_FLOAT_EQ(processor->floatParameter(id.lfoFreq), 20.0f);
    EXPECT_TRUE(log.saw(id.lfoFreq));
    processor->setBoolParameter(sync, false);
    EXPECT_NEAR(processor->floatParameter(id.lfoFreq), 0.1f, 1e-6f);
}

TEST(ProcessorInterplay, NoiseReductionLinkCompanderAndManualMode)
{
    const Ids& id = FluxDeckProcessor::ids();
    auto processor = makeProcessor();
    const auto& s = mainOf(*processor);

    // Linked: the encoder drags the decoder along, a decoder write stays alone.
    processor->setBoolParameter(id.applyCompander, true);
    processor->setIntParameter(id.noiseReductionEncoder, 2);
    EXPECT_EQ(processor->intParameter(id.noiseReductionDecoder), 2);
    processor->setIntParameter(id.noiseReductionDecoder, 1);
    EXPECT_EQ(processor->intParameter(id.noiseReductionEncoder), 2);
    EXPECT_TRUE(processor->boolParameter(id.nrLink));

    // Off: decks run without noise reduction, the choice is kept.
    processor->setBoolParameter(id.applyCompander, false);
    EXPECT_EQ(s.channels[0].decks[1].encoderType, 0);
    EXPECT_EQ(s.encoderType, 2);
    // A write while off engages that type regardless.
    processor->setIntParameter(id.noiseReductionEncoder, 3);
    EXPECT_EQ(s.channels[0].decks[0].encoderType, 3);
    EXPECT_EQ(processor->intParameter(id.noiseReductionEncoder), 3);
    EXPECT_FALSE(processor->boolParameter(id.applyCompander));
    // Back on restores the stored pair.
    processor->setBoolParameter(id.applyCompander, true);
    EXPECT_EQ(s.channels[0].decks[0].decoderType, 3);

    processor->setBoolParameter(id.nrLink, false);
    processor->setIntParameter(id.noiseReductionDecoder, 1);
    processor->setIntParameter(id.noiseReductionEncoder, 2);
    EXPECT_EQ(processor->intParameter(id.noiseReductionDecoder), 1);
    ChangeLog log(*processor);
    processor->setBoolParameter(id.nrLink, true);
    EXPECT_EQ(processor->intParameter(id.noiseReductionDecoder), 2);
    EXPECT_TRUE(log.saw(id.noiseReductionDecoder));

    processor->setFloatParameter(id.relativeDelay, 0.5f);
    log.ids.clear();
    processor->setIntParameter(id.flangeMode, 0);
    EXPECT_FLOAT_EQ(processor->floatParameter(id.relativeDelay), -1.0f) << "the state moved: the written 0.5 is gone";
    EXPECT_TRUE(log.saw(id.relativeDelay));

    // A document saved in Manual mode keeps its position, though the mode loads after it.
    processor->setFloatParameter(id.relativeDelay, 0.25f);
    tinyxml2::XMLDocument doc;
    auto* node = doc.NewElement("FluxDeck");
    doc.InsertEndChild(node);
    int version = 0;
    processor->saveXmlAttributes(node, version);
    auto reopened = makeProcessor();
    reopened->loadXmlAttributes(node, version);
    EXPECT_EQ(reopened->intParameter(id.flangeMode), 0);
    EXPECT_EQ(reopened->floatParameter(id.relativeDelay), 0.25f);
}

TEST(ProcessorInterplay, WowDepthLowLatencyAndFeedbackCompensation)
{
    const Ids& id = FluxDeckProcessor::ids();
    auto processor = makeProcessor();
    ChangeLog log(*processor);
    processor->setFloatParameter(id.wowRate, 1.0f);
    EXPECT_TRUE(log.saw(id.wowMod));

    processor->setFloatParameter(id.maxRelativeDelay, 0.014f);
    processor->setBoolParameter(id.applyLowLatency, true);
    EXPECT_LE(processor->floatParameter(id.maxRelativeDelay), 0.009f + 1e-7f);
    EXPECT_FLOAT_EQ(mainOf(*processor).latency, 0.01f);

    const auto& deck = mainOf(*processor).channels[0].decks[0];
    processor->setFloatParameter(id.trackWidthRatio, 1.0f);
    const float compensated = deck.feedbackCompensation;
    processor->setBoolParameter(id.applyFeedbackCompensation, false);
    EXPECT_EQ(deck.feedbackCompensation, 1.0f);
    processor->setBoolParameter(id.applyFeedbackCompensation, true);
    EXPECT_EQ(deck.feedbackCompensation, compensated);
    processor->setBoolParameter(id.applyPlayheadFilter, false);
    EXPECT_EQ(deck.feedbackCompensation, 1.0f);
}
