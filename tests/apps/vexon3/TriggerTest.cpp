#include "apps/vexon3/Trigger.h"

#include "testing/TextPrinting.h"

namespace nomira::simulator {
namespace {

TEST(TriggerTest, EveryCallOfTheOperation) {
    Trigger trigger("CopyFile", u"*", std::nullopt);
    EXPECT_TRUE(trigger.Sees("CopyFile", u""));
    EXPECT_TRUE(trigger.Sees("CopyFile", u"C:\\x.src, TQX:\\R1\\x.src, 64"));
    EXPECT_FALSE(trigger.Sees("DeleteFile", u""));
    EXPECT_FALSE(trigger.Sees("copyfile", u""));
}

TEST(TriggerTest, ArgumentsMatchWithoutCase) {
    Trigger trigger("CopyFile", u"*\\x.SRC, tqx:*", std::nullopt);
    EXPECT_TRUE(trigger.Sees("CopyFile", u"C:\\x.src, TQX:\\R1\\x.src, 64"));
    EXPECT_FALSE(trigger.Sees("CopyFile", u"C:\\y.src, TQX:\\R1\\y.src, 64"));
}

TEST(TriggerTest, OneCallOfThoseThatMatch) {
    Trigger trigger("ReadVar", u"$A", 2);
    EXPECT_FALSE(trigger.Sees("ReadVar", u"$A"));
    EXPECT_FALSE(trigger.Sees("ReadVar", u"$B"));
    EXPECT_FALSE(trigger.Sees("WriteVar", u"$A"));
    EXPECT_TRUE(trigger.Sees("ReadVar", u"$A"));
    for (int n = 0; n < 10; ++n)
        EXPECT_FALSE(trigger.Sees("ReadVar", u"$A"));
}

}  // namespace
}  // namespace nomira::simulator
