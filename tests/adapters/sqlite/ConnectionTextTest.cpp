#include "adapters/sqlite/ConnectionText.h"

#include "testing/TextPrinting.h"

namespace nomira::sqlite {
namespace {

TEST(ConnectionTextTest, NamesTheFileOfEveryForm) {
    struct Row {
        TextView sText;
        TextView sPath;
    };
    const Row rows[] = {
        {u"DRIVER={Microsoft Access Driver (*.mdb)};DBQ=C:\\a\\b.mdb;DefaultDir=C:\\Temp",
         u"C:\\a\\b.mdb"},
        {u"Data Source=C:\\a\\b.mdb", u"C:\\a\\b.mdb"},
        {u"Provider=P;Data Source=C:\\a b\\c.mdb;Jet OLEDB:Engine Type=4", u"C:\\a b\\c.mdb"},
        {u"dbq=x", u"x"},
        {u"DATA SOURCE=x", u"x"},
        {u" DBQ = x ;", u"x"},
        {u"DBQ=a=b", u"a=b"},
        {u"DBQ=first;Data Source=second", u"first"},
        {u"XDBQ=x;Y=DBQ", u""},
        {u"DBQ=", u""},
        {u"DBQ", u""},
        {u";;=;", u""},
        {u"", u""},
    };
    for (const Row& row : rows)
        EXPECT_EQ(DatabasePath(row.sText), row.sPath) << ::testing::PrintToString(row.sText);
}

}  // namespace
}  // namespace nomira::sqlite
