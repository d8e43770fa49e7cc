#include "adapters/rpc/ControllerName.h"

#include <functional>

#include "testing/TextPrinting.h"

namespace nomira::rpc {
namespace {

using Names = std::vector<Text>;

// The names for which the question is answered with yes.
Names Those(const std::function<bool(TextView)>& question, const Names& names) {
    Names yes;
    std::copy_if(names.begin(), names.end(), std::back_inserter(yes), question);
    return yes;
}

TEST(ControllerNameTest, TheControllersPathsBeginWithItsName) {
    const Names yes{u"TQX:\\R1\\x.src", u"tqx:\\r1\\x.src", u"TQX:"};
    EXPECT_EQ(Those(IsControllerPath, yes), yes);
    const Names no{u"", u"TQX", u"C:\\TQX:\\x", u"/R1/x.src", u"\\TQX:\\x", u" TQX:"};
    EXPECT_EQ(Those(IsControllerPath, no), Names{});
}

TEST(ControllerNameTest, TheMaskOfAStarAndAPointAsksForDirectories) {
    const Names yes{u"TQX:\\\\R1\\*.", u"*.", u"/R1/*."};
    EXPECT_EQ(Those(AsksForDirectories, yes), yes);
    const Names no{u"TQX:\\\\R1\\", u"TQX:\\R1\\*.src", u"TQX:\\R1\\x*.", u""};
    EXPECT_EQ(Those(AsksForDirectories, no), Names{});
}

TEST(ControllerNameTest, NamesLeadNowhere) {
    const Names yes{u"x.src", u"X", u"a b.src", u"..x", u".x", u"T\u00FCr.src"};
    EXPECT_EQ(Those(IsPlainName, yes), yes);
    EXPECT_EQ(Those(IsPlainDirectory, yes), yes);
    const Names no{u"",     u".",       u"..",   u"..\\..\\x", u"../x",  u"/x",  u"C:x",
                   u"x:st", Text(1, 0), u"a\nb", u"a\tb",      u"*.src", u"a?b", u"a|b"};
    EXPECT_EQ(Those(IsPlainName, no), Names{});
    EXPECT_EQ(Those(IsPlainDirectory, no), Names{});
}

TEST(ControllerNameTest, OnlyDirectoriesAreNested) {
    EXPECT_FALSE(IsPlainName(u"Program\\Sub"));
    EXPECT_TRUE(IsPlainDirectory(u"Program\\Sub"));
    const Names no{
        u"Program\\..", u"Program\\..\\..\\x", u"\\Program", u"Program\\", u"a\\\\b", u"a/b",
        u"a\\C:"};
    EXPECT_EQ(Those(IsPlainDirectory, no), Names{});
}

}  // namespace
}  // namespace nomira::rpc
