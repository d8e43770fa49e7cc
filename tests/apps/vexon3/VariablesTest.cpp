#include "apps/vexon3/Variables.h"

#include "apps/vexon3/TroubleOf.h"
#include "testing/TextPrinting.h"

namespace nomira::simulator {
namespace {

using testing::TroubleOf;

TEST(VariablesTest, NamesHaveNoCase) {
    Variables variables;
    variables.Set(u"$Num_Out", u"1");
    variables.Set(u"$NUM_OUT", u"2");
    EXPECT_EQ(variables.Read(u"$num_out"), u"2");
    ASSERT_EQ(variables.All().size(), 1U);
    EXPECT_EQ(variables.All()[0].sName, u"$Num_Out");
}

TEST(VariablesTest, OnlyWhatIsThereCanBeReadOrWritten) {
    Variables variables;
    EXPECT_EQ(TroubleOf([&] { variables.Read(u"$A"); }), u"NoSuchVariable");
    EXPECT_EQ(TroubleOf([&] { variables.Write(u"$A", u"1"); }), u"NoSuchVariable");
    EXPECT_TRUE(variables.All().empty());
    variables.Set(u"$A", u"1");
    variables.Write(u"$a", u"2");
    EXPECT_EQ(variables.Read(u"$A"), u"2");
}

}  // namespace
}  // namespace nomira::simulator
