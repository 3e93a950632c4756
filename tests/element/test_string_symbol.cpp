// Text handle formatting, wildcard matching and name interning.
#include "element/NameSymbol.h"
#include "element/String.h"

#include <gtest/gtest.h>

#include <tuple>

using namespace oxa;

TEST(StringArg, ReplacesLowestMarkerFirstKeepsLiteralPercentAndFormsNumbers)
{
    const std::pair<String, const char*> cases[] = {
        {String("%2 of %1").arg("a").arg("b"), "b of a"},
        {String("%1%").arg(12.345f, 2), "12.35%"},
        {String("%1 and %1").arg(7), "7 and 7"},
        {String("%1-%12").arg("x").arg("y"), "x-y"}, // "%1" must not eat the start of "%12"
        {String("no marker").arg(3), "no marker"},
        {String("%1").arg(255, 16), "ff"},
        {String("%1").arg(-5), "-5"},
        {String("%1").arg(0.1f), "0.1"},
        {String("%1").arg(2.5, 0), "2"},
        {String("%1").arg(-0.004, 2), "-0.00"},
        {String("Param%1").arg(127u), "Param127"},
    };
    for (const auto& [made, expected] : cases)
        EXPECT_EQ(made, expected);
}

TEST(StringBasics, NullIsEmptyCopiesShareSearchAndParsing)
{
    String null;
    EXPECT_TRUE(null.isEmpty());
    EXPECT_STREQ(null.c_str(), "");
    EXPECT_EQ(null, String(""));
    String a("text");
    String b = a;
    EXPECT_TRUE(a.sharesBodyWith(b));
    EXPECT_TRUE(String("abc") < String("abd"));

    String s("a/b/c");
    EXPECT_EQ(*s.find('/'), 1u);
    EXPECT_EQ(*s.findLast('/'), 3u);
    EXPECT_FALSE(s.find('x').isValid());
    EXPECT_EQ(s.substring(2), "b/c");
    EXPECT_EQ(String(" 42 ").toInt().valueOr(0), 42);
    EXPECT_FALSE(String("true").toInt().isValid());
    EXPECT_FALSE(String("").toFloat().isValid());
    EXPECT_FLOAT_EQ(String("-4.8216374e-17").toFloat().valueOr(1), -4.8216374e-17f);
}

TEST(Wildcard, StarQuestionSetsAndAlternatives)
{
    const std::tuple<const char*, const char*, bool> cases[] = {
        {"Ch*", "Channel", true}, {"*", "", true}, {"a*b", "acd", false}, {"?x", "ax", true}, {"?x", "x", false},
        {"[a-c]1", "b1", true}, {"[!a-c]1", "b1", false}, {"{Left,Right} Deck", "Right Deck", true},
        {"{Left,Right} Deck", "Centre Deck", false}};
    for (const auto& [pattern, text, matches] : cases)
        EXPECT_EQ(wildcardMatch(pattern, text), matches) << pattern << " / " << text;
}

TEST(NameSymbolInterning, EqualTextsShareOneNodeThatLeavesWithTheLastReference)
{
    const std::size_t before = NameSymbol::internedCount();
    {
        NameSymbol a("UniqueSymbolForTest");
        NameSymbol b(String("UniqueSymbolForTest"));
        EXPECT_EQ(NameSymbol::internedCount(), before + 1);
        EXPECT_EQ(&a.text(), &b.text());
        NameSymbol c = a;
        NameSymbol d(std::move(b));
        EXPECT_TRUE(c == d);
        EXPECT_FALSE(a == NameSymbol("Other"));
    }
    EXPECT_EQ(NameSymbol::internedCount(), before);

    // Assignment moves the reference: the old text leaves the table.
    NameSymbol a("SymA_ForTest");
    a = NameSymbol("SymB_ForTest");
    EXPECT_EQ(a.text(), "SymB_ForTest");
    EXPECT_EQ(NameSymbol::internedCount(), before + 1);
}
