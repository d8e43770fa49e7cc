#include "link/CheckFileName.h"

#include "langtools/RuntimeError.h"
#include "testing/Raised.h"
#include "testing/TextPrinting.h"

namespace nomira {
namespace {

struct Row {
    TextView sPath, sMask;
    bool bCounts;
    TextView sName;
};

void ExpectAll(std::initializer_list<Row> rows) {
    for (const Row& row : rows) {
        Text sPath(row.sPath);
        EXPECT_EQ(CheckFileName(sPath, row.sMask), row.bCounts) << testing::Printable(row.sPath);
        EXPECT_EQ(sPath, row.sName) << testing::Printable(row.sPath);
    }
}

TEST(CheckFileNameTest, NameStandsBehindTheLastSeparator) {
    ExpectAll({{u"C:\\Temp\\x.src", u"", true, u"x.src"},
               {u"/R1/Program/x.src", u"", true, u"x.src"},
               {u"TQX:\\R1/x.src", u"", true, u"x.src"},
               {u"R1/a\\x.src", u"", true, u"x.src"},
               {u"x.src", u"", true, u"x.src"},
               {u"C:x.src", u"", true, u"C:x.src"}});
}

TEST(CheckFileNameTest, WithoutAMaskANameNeedsAPoint) {
    ExpectAll({{u"C:\\Temp\\x", u"", false, u""},
               {u"C:\\Temp.d\\x", u"", false, u""},
               {u"C:\\Temp\\", u"", false, u""},
               {u"", u"", false, u""},
               {u".", u"", true, u"."},
               {u"x.", u"", true, u"x."},
               {u".src", u"", true, u".src"}});
}

TEST(CheckFileNameTest, WithAMaskTheNameMustMatchIt) {
    ExpectAll({{u"C:\\Temp\\x.src", u"*.src", true, u"x.src"},
               {u"C:\\Temp\\x.dat", u"*.src", false, u""},
               {u"C:\\Temp\\x.SRC", u"*.src", false, u""},
               {u"C:\\Temp\\x1", u"x[0-9]", true, u"x1"},
               {u"C:\\Temp\\xa", u"x?", true, u"xa"}});
    Text sPath = u"x.src";
    EXPECT_EQ(testing::Raised([&] { CheckFileName(sPath, u"[x"); }), ErrorNumber::InvalidPattern);
}

TEST(CheckFileNameTest, MaskOfDirectoriesTakesTheWholePathAndRefusesAPoint) {
    ExpectAll({{u"R1\\Program", u"*.", true, u"R1\\Program"},
               {u"R1/Program", u"*.", true, u"R1/Program"},
               {u"R1\\x.src", u"*.", false, u""},
               {u"R1.d\\Program", u"*.", false, u""},
               {u"", u"*.", true, u""}});
}

}  // namespace
}  // namespace nomira
