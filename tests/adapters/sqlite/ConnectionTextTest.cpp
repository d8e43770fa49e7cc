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

TEST(ConnectionTextTest, TheEngineTypeIsANumberOfItsOwn) {
    EXPECT_EQ(sqlite::EngineType(u"Data Source=C:\\a.mdb;Jet OLEDB:Engine Type=4"), 4);
    EXPECT_EQ(sqlite::EngineType(u"jet oledb:engine type = 5 ;Data Source=x"), 5);
    EXPECT_EQ(sqlite::EngineType(u"Engine Type=5"), 5);
    EXPECT_EQ(sqlite::EngineType(u"Data Source=C:\\a.mdb"), 0);
    EXPECT_EQ(sqlite::EngineType(u"Engine Type=old"), 0);
    EXPECT_EQ(sqlite::EngineType(u""), 0);
}

}  // namespace
}  // namespace nomira::sqlite
