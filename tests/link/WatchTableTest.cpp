#include "link/WatchTable.h"

#include "testing/TextPrinting.h"

namespace nomira {
namespace {

TEST(WatchTableTest, NumbersStartAtOneAndAreNeverGivenTwice) {
    WatchTable table;
    EXPECT_EQ(table.Add(u"$A"), 1);
    EXPECT_EQ(table.Add(u"$B"), 2);
    EXPECT_EQ(table.Remove(u"$A"), 1);
    EXPECT_EQ(table.Add(u"$A"), 3);
}

TEST(WatchTableTest, NamesAreComparedExactly) {
    WatchTable table;
    table.Add(u"$a");
    EXPECT_TRUE(table.Contains(u"$a"));
    EXPECT_FALSE(table.Contains(u"$A"));
    EXPECT_EQ(table.Remove(u"$A"), std::nullopt);
    EXPECT_TRUE(table.Contains(u"$a"));
}

TEST(WatchTableTest, NumberTellsItsName) {
    WatchTable table;
    table.Add(u"$A");
    table.Add(u"$B");
    EXPECT_EQ(table.NameOf(2), u"$B");
    table.Remove(u"$B");
    EXPECT_EQ(table.NameOf(2), u"");
    EXPECT_EQ(table.NameOf(1), u"$A");
    EXPECT_FALSE(table.Contains(u"$B"));
}

}  // namespace
}  // namespace nomira
