// The tree: children, paths, aliases, wildcards, modified flags, properties, errors
// and the factory.
#include "ElementTestSupport.h"
#include "element/ElementFactory.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace oxa;

namespace
{
std::shared_ptr<Element> plain(const String& name, const String& type = "Plain")
{
    return std::make_shared<Element>(type, name);
}

std::vector<String> found(Element& from, const char* pattern)
{
    std::vector<Element*> elements;
    from.findElements(pattern, elements);
    std::vector<String> names;
    for (auto* e : elements)
        names.push_back(e->name().text());
    std::sort(names.begin(), names.end());
    return names;
}

// root ("Root" type, empty name) / A / B, with siblings Ch1, Ch2, Other under the root
struct Tree
{
    std::shared_ptr<Element> root = plain("", "Root");
    std::shared_ptr<Element> a = plain("A", "Group");
    std::shared_ptr<Element> b = plain("B", "Leaf");
    Tree()
    {
        root->addChild(a);
        a->addChild(b);
        for (const char* n : {"Ch2", "Other", "Ch1"})
            root->addChild(plain(n));
        for (Element* e : {root.get(), a.get(), b.get()})
            e->clearModified();
    }
};
} // namespace

TEST(ElementChildren, KeptSortedWithSignalsAndDetachedOnDestruction)
{
    auto parent = plain("P");
    std::vector<String> added, removed;
    int owner = 0;
    parent->signals().childAdded.connect(&owner, [&](Element* p, Element* c) {
        EXPECT_EQ(p, parent.get());
        added.push_back(c->name().text());
    });
    parent->signals().childRemoved.connect(&owner, [&](Element*, Element* c) { removed.push_back(c->name().text()); });
    for (const char* n : {"c", "a", "b"})
        parent->addChild(plain(n));
    ASSERT_EQ(parent->children().size(), 3u);
    EXPECT_EQ(parent->children()[0]->name(), "a");
    EXPECT_EQ(parent->children()[2]->name(), "c");
    EXPECT_EQ(parent->children()[1]->parent(), parent.get());

    auto held = parent->children()[1];
    parent->removeChild(held.get());
    EXPECT_EQ(held->parent(), nullptr);
    EXPECT_EQ(parent->findElement("b"), nullptr);
    EXPECT_EQ(added, (std::vector<String>{"c", "a", "b"}));
    EXPECT_EQ(removed, (std::vector<String>{"b"}));

    auto replacement = plain("a", "Other");
    parent->replaceChild(replacement);
    EXPECT_EQ(parent->children().size(), 2u);
    EXPECT_EQ(parent->findElement("a"), replacement.get());

    // Destruction fires once and detaches children held elsewhere.
    int destroyed = 0;
    parent->signals().destroyed.connect(&owner, [&](Element*) { ++destroyed; });
    auto survivor = parent->children()[0];
    parent.reset();
    EXPECT_EQ(destroyed, 1);
    EXPECT_EQ(survivor->parent(), nullptr);
}

TEST(ElementPaths, PathsUniqueNamesAndLookups)
{
    Tree t;
    EXPECT_EQ(t.b->path(), "/A/B");
    EXPECT_EQ(t.a->path(), "/A");
    EXPECT_EQ(t.root->path(), "");
    EXPECT_EQ(t.root->uniqueChildName("Ch", 1), "Ch3");
    EXPECT_EQ(t.root->uniqueChildName("Mapper ", 0), "Mapper 0");

    EXPECT_EQ(t.root->findElement("A/B"), t.b.get());
    EXPECT_EQ(t.b->findElement(".."), nullptr); // no "/": a child name
    EXPECT_EQ(t.b->findElement("../"), t.a.get());
    EXPECT_EQ(t.b->findElement("../../Ch1"), t.root->findElement("Ch1"));
    EXPECT_EQ(t.b->findElement("/"), t.root.get());
    EXPECT_EQ(t.b->findElement("/A/./B"), t.b.get());
    EXPECT_EQ(t.b->findElement("/A/Missing"), nullptr);
    EXPECT_EQ(t.b->findElement("../../../x"), nullptr);
    // A type segment finds the nearest ancestor of that type.
    EXPECT_EQ(t.b->findElement("$Leaf"), t.b.get());
    EXPECT_EQ(t.b->findElement("$Group"), t.a.get());
    EXPECT_EQ(t.b->findElement("$Root/Ch2"), t.root->findElement("Ch2"));
    EXPECT_EQ(t.b->findElement("$Nothing"), nullptr);
}

TEST(ElementPaths, AliasesChainCyclesEndWithNullAndWildcards)
{
    Tree t;
    t.a->setAlias("first", "second");
    t.a->setAlias("second", "B");
    EXPECT_TRUE(t.a->hasAlias("first"));
    EXPECT_EQ(t.a->findElement("first"), t.b.get());
    t.root->setAlias("deep", "A/second");
    EXPECT_EQ(t.root->findElement("deep"), t.b.get());
    t.a->setAlias("x", "y");
    t.a->setAlias("y", "x");
    EXPECT_EQ(t.a->findElement("x"), nullptr);

    EXPECT_EQ(found(*t.root, "Ch*"), (std::vector<String>{"Ch1", "Ch2"}));
    EXPECT_EQ(found(*t.b, "/{Ch1,Other}"), (std::vector<String>{"Ch1", "Other"}));
    EXPECT_EQ(found(*t.b, "../../?h2"), std::vector<String>{"Ch2"});
    EXPECT_EQ(found(*t.root, "*/B"), std::vector<String>{"B"});
    EXPECT_EQ(found(*t.root, "A/"), std::vector<String>{"A"});
}

TEST(ElementModified, SetClimbsClearStaysLocalParameterSetsMark)
{
    Tree t;
    int fired = 0;
    int owner = 0;
    t.a->signals().modifiedChanged.connect(&owner, [&](Element*) { ++fired; });
    t.b->setModified();
    EXPECT_TRUE(t.b->isModified());
    EXPECT_TRUE(t.a->isModified());
    EXPECT_TRUE(t.root->isModified());
    t.b->setModified();
    EXPECT_EQ(fired, 1);
    t.root->clearModified();
    EXPECT_FALSE(t.root->isModified());
    EXPECT_TRUE(t.a->isModified());

    auto probe = std::make_shared<test::ProbeElement>("probe");
    t.b->addChild(probe);
    t.b->clearModified();
    probe->clearModified();
    probe->setIntParameter(test::ProbeElement::ids().mode, 1, true); // deferred sets mark too
    EXPECT_TRUE(probe->isModified());
    EXPECT_TRUE(t.b->isModified());
}

TEST(ElementProperties, EveryWriteFiresAndLocksReadTheProperty)
{
    auto probe = std::make_shared<test::ProbeElement>("probe");
    std::vector<std::pair<String, bool>> seen;
    int owner = 0;
    probe->signals().propertyChanged.connect(&owner, [&](const String& key, const ElementProperty& p) {
        seen.push_back({key, p.hasValue});
    });
    probe->setProperty("Colour", "red");
    probe->setProperty("Colour", "red");
    EXPECT_EQ(seen.size(), 2u);
    EXPECT_EQ(probe->property("Colour").valueOr("x"), "red");
    EXPECT_EQ(probe->property("Missing").valueOr("x"), "x");
    EXPECT_TRUE(probe->removeProperty("Colour"));
    EXPECT_FALSE(probe->removeProperty("Colour"));
    ASSERT_EQ(seen.size(), 3u);
    EXPECT_FALSE(seen.back().second);

    const uint32_t gain = test::ProbeElement::ids().gain;
    EXPECT_FALSE(probe->isParameterLocked(gain));
    probe->setParameterLocked(gain, true);
    EXPECT_EQ(probe->property("GainLocked").value, "1");
    EXPECT_TRUE(probe->isParameterLocked(gain));
    probe->setProperty("GainLocked", "0");
    EXPECT_FALSE(probe->isParameterLocked(gain));
    probe->setProperty("GainLocked", "7");
    EXPECT_TRUE(probe->isParameterLocked(gain));
}

TEST(ElementWalks, ErrorsClimbWithPathsPrepareReachesChildrenStatesClonePending)
{
    auto root = plain("", "Root");
    auto mid = plain("Mid");
    auto leaf = plain("Leaf");
    leaf->reportError("bad value", "Loading");
    EXPECT_EQ(leaf->queuedErrorCount(), 1u);
    mid->addChild(leaf); // flushes into mid, which has no parent yet
    EXPECT_EQ(leaf->queuedErrorCount(), 0u);
    EXPECT_EQ(mid->queuedErrorCount(), 1u);
    root->addChild(mid);
    ASSERT_EQ(root->queuedErrorCount(), 1u);
    const Error& error = *root->extras().errors.front();
    EXPECT_EQ(error.sourcePath, "Mid/Leaf");
    EXPECT_EQ(error.message, "bad value");
    EXPECT_EQ(error.context, "Loading");

    auto parent = plain("P");
    auto probe = std::make_shared<test::ProbeElement>("probe");
    parent->addChild(probe);
    parent->prepare(48000.0, 512);
    EXPECT_TRUE(probe->isPrepared());
    EXPECT_FLOAT_EQ(probe->sampleRate(), 48000.0f);
    EXPECT_EQ(probe->maxBlockSize(), 512);
    probe->setFloatParameter(test::ProbeElement::ids().gain, 0.9f, true);
    auto state = probe->createState(nullptr);
    ASSERT_NE(dynamic_cast<test::ProbeState*>(state.get()), nullptr);
    EXPECT_FLOAT_EQ(static_cast<test::ProbeState&>(*state).gain, 0.9f);
    EXPECT_FLOAT_EQ(probe->main().gain, 0.9f);
}

TEST(ElementFactoryTable, CreatesRegisteredTypesOnly)
{
    auto& factory = ElementFactory::instance();
    factory.registerType("Probe Effect", "ProbeForFactory",
                         [] { return std::make_shared<test::ProbeElement>("made", "ProbeForFactory"); }, "Test", 3);
    auto made = factory.create("ProbeForFactory");
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(made->typeName(), "ProbeForFactory");
    EXPECT_EQ(factory.entry("ProbeForFactory")->category, "Test");
    EXPECT_EQ(factory.create("NoSuchType"), nullptr);
    factory.unregisterType("ProbeForFactory");
    EXPECT_FALSE(factory.isRegistered("ProbeForFactory"));
}
