#include "platform/FileNamePattern.h"

#include <string>

#include "langtools/BasicText.h"
#include "platform/Files.h"
#include "testing/Random.h"
#include "testing/TextPrinting.h"

namespace nomira {
namespace {

using testing::Printable;

TEST(FileNamePatternTest, WildcardsStandForCharacters) {
    const struct {
        Text sName, sPattern;
        bool bMatches;
    } rows[] = {
        {u"a.txt", u"a.txt", true},  {u"A.TXT", u"a.txt", true},   {u"ü.txt", u"Ü.TXT", true},
        {u"a.txt", u"*.txt", true},  {u"a.txt", u"*", true},       {u"a.txt", u"?.txt", true},
        {u"a.txt", u"a.t?t", true},  {u"a.txt", u"?a.txt", false}, {u"a.txt", u"a.txt?", false},
        {u"a.txt", u"*.src", false}, {u"a.txt", u"", false},       {u"a.txt", u"**", true},
        {u"aab.txt", u"*ab*", true}, {u"abcabd", u"*abd", true},   {u"abcabd", u"*abc", false},
        {u"a", u"*a*a*", false},     {u"a.b.c", u"*.c", true},     {u"a[1]", u"a[1]", true},
        {u"a1", u"a[1]", false},     {u"a#", u"a#", true},         {u"a1", u"a#", false},
    };
    for (const auto& row : rows)
        EXPECT_EQ(MatchesFileName(row.sName, row.sPattern), row.bMatches)
            << Printable(row.sName) << " as " << Printable(row.sPattern);
}

TEST(FileNamePatternTest, StarDotStarMatchesANameWithoutADot) {
    EXPECT_TRUE(MatchesFileName(u"SymName", u"*.*"));
    EXPECT_TRUE(MatchesFileName(u"a.b", u"*.*"));
    EXPECT_FALSE(MatchesFileName(u"SymName", u"S*.*"));
}

// The plain definition, which takes long for many stars.
bool MatchesPlainly(TextView sName, TextView sPattern) {
    if (sPattern.empty()) return sName.empty();
    if (sPattern[0] == u'*') {
        return MatchesPlainly(sName, sPattern.substr(1)) ||
               (!sName.empty() && MatchesPlainly(sName.substr(1), sPattern));
    }
    return !sName.empty() && (sPattern[0] == u'?' || sPattern[0] == sName[0]) &&
           MatchesPlainly(sName.substr(1), sPattern.substr(1));
}

TEST(FileNamePatternTest, MatchesAsThePlainDefinitionDoes) {
    testing::Random random;
    SCOPED_TRACE(random.Seed());
    for (int n = 0; n < 20000; ++n) {
        const Text sName = random.TextOf(u"ab", 8), sPattern = random.TextOf(u"ab*?", 6);
        ASSERT_EQ(MatchesFileName(sName, sPattern), MatchesPlainly(sName, sPattern))
            << Printable(sName) << " as " << Printable(sPattern);
    }
}

TEST(FileNamePatternTest, ManyStarsTakeNoTime) {
    EXPECT_FALSE(MatchesFileName(Text(200, u'a'), Replace(Text(40, u'x'), u"x", u"*a") + u"b"));
}

TEST(FileNamePatternTest, SomeEntriesCountOnlyIfAskedFor) {
    const struct {
        int nEntry, nAsked;
        bool bCounts;
    } rows[] = {
        {AttributeNormal, AttributeNormal, true},
        {AttributeArchive | AttributeReadOnly, AttributeNormal, true},
        {AttributeArchive, AttributeDirectory, true},
        {AttributeDirectory, AttributeNormal, false},
        {AttributeDirectory, AttributeDirectory, true},
        {AttributeHidden, AttributeSystem, false},
        {AttributeHidden | AttributeSystem, AttributeHidden, false},
        {AttributeHidden | AttributeSystem, AttributeHidden | AttributeSystem, true},
    };
    for (const auto& row : rows)
        EXPECT_EQ(CountsInDir(static_cast<std::uint16_t>(row.nEntry),
                              static_cast<std::uint16_t>(row.nAsked)),
                  row.bCounts)
            << row.nEntry << " " << row.nAsked;
}

TEST(FileNamePatternTest, CaseDecidesTheOrderOnlyBetweenEqualNames) {
    EXPECT_TRUE(ComesBeforeInListing(u"a", u"B"));
    EXPECT_FALSE(ComesBeforeInListing(u"B", u"a"));
    EXPECT_TRUE(ComesBeforeInListing(u"A", u"a"));
    EXPECT_FALSE(ComesBeforeInListing(u"a", u"A"));
    EXPECT_FALSE(ComesBeforeInListing(u"a", u"a"));
}

TEST(FileNamePatternTest, SomeTextsAreNoNames) {
    for (const TextView sName : {u"", u"a*", u"a?", u"a<", u"a>", u"a|b", u"\"a\"", u"a\tb"})
        EXPECT_TRUE(CannotBeFileName(sName)) << Printable(sName);
    for (const TextView sName : {u"a", u".a", u"a b.c", u"ü$", u"[a]"})
        EXPECT_FALSE(CannotBeFileName(sName)) << Printable(sName);
    EXPECT_TRUE(HasWildcards(u"a*"));
    EXPECT_TRUE(HasWildcards(u"a?"));
    EXPECT_FALSE(HasWildcards(u"a.b"));
}

}  // namespace
}  // namespace nomira
