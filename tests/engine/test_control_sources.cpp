// Control sources and event processors of a processing element: who owns them, the
// order they run in around the element, and how they are written and read back.
#include "element/ElementFactory.h"
#include "element/ElementTestSupport.h"
#include "element/ParameterRegistry.h"
#include "engine/ControlSignalSource.h"
#include "engine/Engine.h"
#include "engine/EventProcessor.h"
#include "engine/ProcessingElement.h"
#include "support/EngineRenderRig.h"
#include "tape/FluxDeckProcessor.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace oxa;
using test::load;
using test::save;

namespace
{
std::vector<std::string>& renderLog()
{
    static std::vector<std::string> log;
    return log;
}

/** Counts its control blocks and logs each one. */
class CountingSource : public ControlSignalSource
{
public:
    explicit CountingSource(const char* name = "Counter") : ControlSignalSource(String("TestCountingSource"), String(name)) {}

    void handleEvents(RenderContext&, EventList& events, uint32_t) override { eventsHeard += (int) events.size(); }

    int blocks = 0;
    int eventsHeard = 0;

protected:
    float computeValue(RenderContext&, ControlSignalSourceState&, uint32_t) override
    {
        renderLog().push_back("source");
        return (float) ++blocks;
    }
};

/** Moves note numbers by its "TestTranspose" semitones. */
class Transposer : public EventProcessor
{
public:
    static uint32_t transposeId()
    {
        static const uint32_t id = ParameterRegistry::instance().registerInt(
            ParameterDescription<int>("TestTranspose", 0, -48, 48));
        return id;
    }

    explicit Transposer(const char* name = "Transposer") : EventProcessor(String("TestTransposer"), String(name))
    {
        addParameters({}, { new ParameterInfo<int>(transposeId(), this, &Transposer::transpose, &Transposer::setTranspose) });
    }

    void processEvents(RenderContext&, EventList& events, uint32_t) override
    {
        ++calls;
        for (EngineEvent& e : events)
            if (e.type == EventType::noteOn)
                e.data1 = (uint32_t) ((int) e.data1 + semitones);
    }

    int semitones = 0;
    int calls = 0;

private:
    int transpose(const ElementState&) const { return semitones; }
    void setTranspose(ElementState&, int v) { semitones = v; }
};

/** Records what it hears and when it renders. */
class Owner : public ProcessingElement
{
public:
    Owner() : ProcessingElement(String("TestOwner"), String("Owner")) {}

    void handleEvents(RenderContext&, EventList& events, uint32_t) override
    {
        for (const EngineEvent& e : events)
            notesHeard.push_back(e.data1);
    }
    void renderControlBlock(RenderContext&, ElementState*, uint32_t) override { renderLog().push_back("owner"); }

    std::vector<uint32_t> notesHeard;
};

void registerTestTypes()
{
    auto& factory = ElementFactory::instance();
    factory.registerType("Counting source", "TestCountingSource", [] { return std::make_shared<CountingSource>(); });
    factory.registerType("Transposer", "TestTransposer", [] { return std::make_shared<Transposer>(); });
    factory.registerType("Plain", "TestPlainElement",
                         [] { return std::make_shared<ProcessingElement>(String("TestPlainElement"), String("Plain")); });
    // A source type under the rule tag, so that a rule which were not skipped would show up.
    factory.registerType("Rule", "SimpleActivationRule", [] { return std::make_shared<CountingSource>("Rule"); });
}

class ControlSources : public ::testing::Test
{
protected:
    void SetUp() override
    {
        registerTestTypes();
        renderLog().clear();
    }
};
} // namespace

TEST_F(ControlSources, AddRemoveAndClearKeepChildrenAndSignalsInStep)
{
    auto owner = std::make_shared<Owner>();
    std::vector<std::string> seen;
    int token = 0;
    auto named = [](Element* e) { return e != nullptr ? e->name().text().str() : std::string("empty"); };
    owner->controlSourceAdded.connect(&token, [&](ProcessingElement*, ControlSignalSource* s) { seen.push_back("+" + named(s)); });
    owner->controlSourceRemoved.connect(&token, [&](ProcessingElement*, ControlSignalSource* s) {
        EXPECT_EQ(s->parent(), owner.get()); // still a child while listeners hear of it
        seen.push_back("-" + named(s));
    });
    owner->eventProcessorAdded.connect(&token, [&](ProcessingElement*, EventProcessor* p) { seen.push_back("+" + named(p)); });
    owner->eventProcessorRemoved.connect(&token, [&](ProcessingElement*, EventProcessor* p) { seen.push_back("-" + named(p)); });

    auto a = std::make_shared<CountingSource>("A");
    owner->addControlSource(a);
    owner->addControlSource(a); // a second add changes nothing
    owner->addControlSource(std::make_shared<CountingSource>("B"));
    owner->addControlSource(nullptr);
    EXPECT_EQ(owner->controlSourceCount(), 2u);
    EXPECT_EQ(owner->findElement(String("A")), a.get()); // reachable by name, as connections look for it

    auto transposer = std::make_shared<Transposer>();
    owner->addEventProcessor(transposer);
    owner->addEventProcessor(nullptr);
    EXPECT_EQ(owner->eventProcessorCount(), 2u);
    EXPECT_EQ(owner->eventProcessor(1), nullptr);

    EXPECT_TRUE(owner->removeControlSource(a.get()));
    EXPECT_FALSE(owner->removeControlSource(a.get()));
    EXPECT_EQ(a->parent(), nullptr);
    EXPECT_EQ(owner->findElement(String("A")), nullptr);
    EXPECT_TRUE(owner->removeEventProcessor(nullptr));
    EXPECT_EQ(owner->eventProcessorCount(), 1u);

    owner->clearControlSources();
    owner->clearEventProcessors();
    EXPECT_EQ(owner->controlSourceCount(), 0u);
    EXPECT_EQ(owner->eventProcessorCount(), 0u);
    EXPECT_EQ(owner->findElement(String("Transposer")), nullptr);
    EXPECT_EQ(seen, (std::vector<std::string> { "+A", "+B", "+Transposer", "+empty", "-A", "-empty", "-B", "-Transposer" }));
}

TEST_F(ControlSources, PreparedWithTheirOwnerAndWhenAddedLater)
{
    auto owner = std::make_shared<Owner>();
    auto early = std::make_shared<CountingSource>("Early");
    auto transposer = std::make_shared<Transposer>();
    owner->addControlSource(early);
    owner->addEventProcessor(transposer);
    owner->addEventProcessor(nullptr);
    owner->prepare(48000.0, 256);
    EXPECT_TRUE(early->isPrepared());
    EXPECT_EQ(early->maxBlockSize(), 256);
    EXPECT_TRUE(transposer->isPrepared());
    EXPECT_FLOAT_EQ(transposer->sampleRate(), 48000.0f);
    // 256 samples are 8 control blocks, with one spare slot
    EXPECT_EQ(static_cast<ControlSignalSourceState*>(early->mainState())->values.size(), 9u);

    auto late = std::make_shared<CountingSource>("Late");
    owner->addControlSource(late);
    EXPECT_TRUE(late->isPrepared());
    EXPECT_EQ(late->maxBlockSize(), 256);

    owner->prepare(44100.0, 64);
    EXPECT_EQ(late->maxBlockSize(), 64);
    EXPECT_FLOAT_EQ(transposer->sampleRate(), 44100.0f);
}

TEST_F(ControlSources, MonophonicSourceRendersOncePerBlockBeforeItsOwner)
{
    auto owner = std::make_shared<Owner>();
    auto source = std::make_shared<CountingSource>();
    owner->addControlSource(source);
    owner->prepare(48000.0, 64);
    RenderContext context;

    owner->render(context, 64);
    // a second pull in the same block (a connection's, say) must not render it again
    source->render(context, 64);
    EXPECT_EQ(renderLog(), (std::vector<std::string> { "source", "source", "owner" }));
    context.endOfBlock(64);

    renderLog().clear();
    owner->render(context, 20);
    EXPECT_EQ(renderLog(), (std::vector<std::string> { "source", "owner" }));
    EXPECT_EQ(source->blocks, 3);
    EXPECT_FLOAT_EQ(source->valuesFor(context)->valueAt(0), 3.0f);

    // a polyphonic source renders from the voices, not from its owner
    source->setPolyphonic(true);
    context.endOfBlock(20);
    owner->render(context, 20);
    EXPECT_EQ(source->blocks, 3);
}

TEST_F(ControlSources, ProcessorsRewriteWhatTheOwnerAndItsSourcesHear)
{
    auto owner = std::make_shared<Owner>();
    auto first = std::make_shared<Transposer>("Up");
    auto second = std::make_shared<Transposer>("Down");
    first->semitones = 12;
    second->semitones = -5;
    owner->addEventProcessor(first);
    owner->addEventProcessor(nullptr); // an empty slot is passed over
    owner->addEventProcessor(second);
    auto listening = std::make_shared<CountingSource>("Listening");
    listening->setBehaviour(ProcessingElement::receivesEvents, true);
    auto deaf = std::make_shared<CountingSource>("Deaf");
    owner->addControlSource(listening);
    owner->addControlSource(deaf);
    owner->prepare(48000.0, 64);

    RenderContext context;
    EventList events;
    events.reserve(8);
    events.push_back(test::engineEvent(EventType::noteOn, 60, 100, 10));
    events.push_back(test::engineEvent(EventType::noteOn, 40, 100, 2));
    owner->processEvents(context, events, 64);

    // sorted by offset, then moved up 12 and down 5 in slot order
    EXPECT_EQ(owner->notesHeard, (std::vector<uint32_t> { 47, 67 }));
    EXPECT_EQ(first->calls, 1);
    EXPECT_EQ(listening->eventsHeard, 2); // once, though it is a child as well
    EXPECT_EQ(deaf->eventsHeard, 0);
    EXPECT_EQ(events[0].data1, 60u); // the caller's list stays as it was

    // Without processors the list goes straight through, still once to the source.
    owner->clearEventProcessors();
    owner->notesHeard.clear();
    owner->processEvents(context, events, 64);
    EXPECT_EQ(owner->notesHeard, (std::vector<uint32_t> { 60, 40 }));
    EXPECT_EQ(listening->eventsHeard, 4);
}

TEST_F(ControlSources, GroupsRoundTripWithEmptySlotAndWithoutUnsavedEntries)
{
    auto owner = std::make_shared<Owner>();
    owner->setProperty(String("Colour"), String("red"));
    owner->addControlSource(std::make_shared<CountingSource>("Kept"));
    auto scratch = std::make_shared<CountingSource>("Scratch");
    scratch->setSaved(false);
    owner->addControlSource(scratch);
    auto up = std::make_shared<Transposer>("Up");
    up->setIntParameter(Transposer::transposeId(), 7);
    owner->addEventProcessor(up);
    owner->addEventProcessor(nullptr);
    auto hidden = std::make_shared<Transposer>("Hidden");
    hidden->setSaved(false);
    owner->addEventProcessor(hidden);
    owner->addEventProcessor(std::make_shared<Transposer>("Last"));

    const std::string text = save(*owner);
    const size_t properties = text.find("<Properties");
    const size_t sources = text.find("<ControlSignalSources>");
    const size_t processors = text.find("<EventProcessors>");
    ASSERT_NE(properties, std::string::npos);
    EXPECT_LT(properties, sources);
    EXPECT_LT(sources, processors);
    EXPECT_EQ(text.find("Scratch"), std::string::npos);
    EXPECT_EQ(text.find("Hidden"), std::string::npos);
    EXPECT_NE(text.find("<EmptyEventProcessor/>"), std::string::npos);

    auto loaded = std::make_shared<Owner>();
    loaded->addControlSource(std::make_shared<CountingSource>("Stale"));
    ASSERT_TRUE(load(*loaded, text));
    ASSERT_EQ(loaded->controlSourceCount(), 1u);
    EXPECT_EQ(loaded->controlSource(0)->name().text(), String("Kept"));
    EXPECT_EQ(loaded->findElement(String("Stale")), nullptr);
    ASSERT_EQ(loaded->eventProcessorCount(), 3u);
    EXPECT_EQ(loaded->eventProcessor(0)->intParameter(Transposer::transposeId()), 7);
    EXPECT_EQ(loaded->eventProcessor(1), nullptr);
    EXPECT_EQ(loaded->eventProcessor(2)->name().text(), String("Last"));
    EXPECT_EQ(loaded->eventProcessor(2)->parent(), loaded.get());

    EXPECT_EQ(save(*loaded), text);

    // the old layout writes them flat, without the empty slot, and reads them back
    const std::string flat = save(*owner, test::legacyLayout());
    EXPECT_EQ(flat.find("ControlSignalSources"), std::string::npos);
    EXPECT_EQ(flat.find("EmptyEventProcessor"), std::string::npos);
    Owner reread;
    ASSERT_TRUE(load(reread, flat));
    EXPECT_EQ(reread.controlSourceCount(), 1u);
    ASSERT_EQ(reread.eventProcessorCount(), 2u);
    EXPECT_EQ(reread.eventProcessor(0)->intParameter(Transposer::transposeId()), 7);
    EXPECT_EQ(reread.eventProcessor(1)->name().text(), String("Last"));
}

TEST_F(ControlSources, GroupsSkipUnknownAndMisplacedTags)
{
    const std::string text = "<OXA4><TestOwner Name=\"Owner\">"
                             "<ControlSignalSources><NoSuchSource/><TestTransposer Name=\"Wrong\"/>"
                             "<TestCountingSource Name=\"Good\"/></ControlSignalSources>"
                             "<EventProcessors><NoSuchProcessor/><TestPlainElement/><EmptyEventProcessor/>"
                             "<TestCountingSource Name=\"AlsoWrong\"/></EventProcessors>"
                             "</TestOwner></OXA4>";
    Owner owner;
    ASSERT_TRUE(load(owner, text));
    ASSERT_EQ(owner.controlSourceCount(), 1u);
    EXPECT_EQ(owner.controlSource(0)->name().text(), String("Good"));
    ASSERT_EQ(owner.eventProcessorCount(), 1u);
    EXPECT_EQ(owner.eventProcessor(0), nullptr);
}

TEST_F(ControlSources, OldLayoutReadsDirectChildrenOfElementsAndTheEngine)
{
    const std::string text = "<HarrierProgram><TestOwner Name=\"Owner\">"
                             "<SimpleActivationRule Name=\"Rule\"/><TestPlainElement/><Unknown/>"
                             "<TestCountingSource Name=\"Env\"/><TestTransposer Name=\"Octave\" TestTranspose=\"12\"/>"
                             "<ControlSignalSources><TestCountingSource Name=\"Grouped\"/></ControlSignalSources>"
                             "</TestOwner></HarrierProgram>";
    Owner owner;
    ASSERT_TRUE(load(owner, text));
    ASSERT_EQ(owner.controlSourceCount(), 1u);
    EXPECT_EQ(owner.controlSource(0)->name().text(), String("Env"));
    ASSERT_EQ(owner.eventProcessorCount(), 1u);
    EXPECT_EQ(owner.eventProcessor(0)->intParameter(Transposer::transposeId()), 12);
    EXPECT_EQ(owner.findElement(String("Rule")), nullptr);

    // an old engine takes its sources once and renders only its elements
    Engine engine;
    load(engine, "<HarrierProgram><Engine Name=\"Engine\"><TestCountingSource Name=\"Env\"/>"
                 "<TestPlainElement Name=\"Plain\"/></Engine></HarrierProgram>");
    ASSERT_EQ(engine.controlSourceCount(), 1u);
    ASSERT_EQ(engine.renderOrder().size(), 1u);
    EXPECT_EQ(engine.renderOrder()[0]->name().text(), String("Plain"));
}

TEST_F(ControlSources, NothingToWriteWritesNoGroups)
{
    // An element without sources, or with only unsaved ones, writes what the base writes.
    FluxDeckProcessor effect;
    Owner owner;
    auto unsaved = std::make_shared<CountingSource>("Unsaved");
    unsaved->setSaved(false);
    owner.addControlSource(unsaved);
    auto hidden = std::make_shared<Transposer>("Hidden");
    hidden->setSaved(false);
    owner.addEventProcessor(hidden);
    for (Element* element : {(Element*) &effect, (Element*) &owner})
        for (const char* group : {"ControlSignalSources", "EventProcessors", "EmptyEventProcessor"})
            EXPECT_EQ(save(*element).find(group), std::string::npos) << element->typeName().text().str() << " " << group;
}
