#include "ui/Captions.h"

#include <filesystem>
#include <map>

#include "langtools/CodePage.h"
#include "testing/ForwardingEngine.h"
#include "ui/PendantFixture.h"

namespace nomira::testing {
namespace {

constexpr std::int32_t kGerman = 7;

// What stands in each target of the table.
using Words = std::map<std::string, std::string>;

const Words kEnglish{
    {"g_sDatabaseViewCaption", "DatabaseView"},
    {"Text2", "LongTextConversion"},
    {"Option1", "LongText -> Database"},
    {"Option2", "Database -> LongText"},
    {"Option3", "LongText (IO's) -> UserProgram"},
    {"chkBoxAdd", "AddToDatabase"},
    {"chkBoxSelAll", "SelectAllFiles"},
    {"chkBoxSymbol", "WithSymbol"},
    {"g_sMsgEnterName", "please enter a name"},
    {"g_sMsgSelectFile", "select one file at least"},
    {"g_sMsgDeviceUnavailable", "Device not ready"},
};

const Words kTranslated{
    {"g_sDatabaseViewCaption", "Ansicht"},
    {"Text2", "Umsetzung"},
    {"Option1", "Langtext -> Datenbank"},
    {"Option2", "Datenbank -> Langtext"},
    {"Option3", "Langtext (IO's) -> Programm"},
    {"chkBoxAdd", "anfuegen"},
    {"chkBoxSelAll", "alle"},
    {"chkBoxSymbol", "mit Symbol"},
    {"g_sMsgEnterName", "Name?"},
    {"g_sMsgSelectFile", "Datei?"},
    {"g_sMsgDeviceUnavailable", "nicht bereit"},
};

// Each key with its text and the targets that it is for.
struct Entry {
    std::string sKey, sText;
    std::vector<std::string> targets;
};
const std::vector<Entry> kEntries{
    {"DatabaseView", "Ansicht", {"g_sDatabaseViewCaption"}},
    {"LongTextConversion", "Umsetzung", {"Text2"}},
    {"LongText", "Langtext", {"Option1", "Option2", "Option3"}},
    {"Database", "Datenbank", {"Option1", "Option2"}},
    {"UserProgram", "Programm", {"Option3"}},
    {"AddToDatabase", "anfuegen", {"chkBoxAdd"}},
    {"SelectAllFiles", "alle", {"chkBoxSelAll"}},
    {"WithSymbol", "mit Symbol", {"chkBoxSymbol"}},
    {"EnterName", "Name?", {"g_sMsgEnterName"}},
    {"SelectFile", "Datei?", {"g_sMsgSelectFile"}},
    {"DeviceUnavailable", "nicht bereit", {"g_sMsgDeviceUnavailable"}},
};

class CaptionsTest : public PendantFixture {
  protected:
    CaptionsTest() {
        g_nLanguageId = kGerman;
        LoadForm(std::make_unique<StdBofForm>());
    }

    void Put(const std::string& sKey, const std::string& sTextSql,
             const std::string& sModule = "Nomira", int nLanguage = kGerman) {
        if (!std::filesystem::exists(db.FileOf(kCatalogueDatabase))) db.CreateCatalogue();
        ExecuteOn(db.FileOf(kCatalogueDatabase),
                  "INSERT INTO Items(Module,KeyString) VALUES('" + sModule + "'," + sKey +
                      ");INSERT INTO Messages VALUES((SELECT max(Key_id) FROM Items)," +
                      std::to_string(nLanguage) + "," + sTextSql + ")");
    }
    void PutAllBut(const std::string& sMissing = {}) {
        db.CreateCatalogue();
        for (const Entry& entry : kEntries)
            if (entry.sKey != sMissing) Put("'" + entry.sKey + "'", "'" + entry.sText + "'");
    }
    static Words Shown() {
        Words words{{"g_sDatabaseViewCaption", Printable(g_sDatabaseViewCaption)},
                    {"Text2", Printable(Get<TextBox>(u"Text2").Text())},
                    {"g_sMsgEnterName", Printable(g_sMsgEnterName)},
                    {"g_sMsgSelectFile", Printable(g_sMsgSelectFile)},
                    {"g_sMsgDeviceUnavailable", Printable(g_sMsgDeviceUnavailable)}};
        for (const TextView sName : {u"Option1", u"Option2", u"Option3"})
            words[Printable(sName)] = Printable(Get<RadioButton>(sName).Caption());
        for (const TextView sName : {u"chkBoxAdd", u"chkBoxSelAll", u"chkBoxSymbol"})
            words[Printable(sName)] = Printable(Get<CheckBox>(sName).Caption());
        return words;
    }
    static Words Loaded() {
        LoadCaptions();
        return Shown();
    }
};

// ---- The words ----

TEST_F(CaptionsTest, EveryWordComesFromTheCatalogue) {
    PutAllBut();
    EXPECT_EQ(Loaded(), kTranslated);
}

TEST_F(CaptionsTest, AMissingKeyMakesAllThatIsMadeOfItEnglish) {
    for (const Entry& missing : kEntries) {
        SCOPED_TRACE(missing.sKey);
        std::filesystem::remove(db.FileOf(kCatalogueDatabase));
        PutAllBut(missing.sKey);
        Words expected = kTranslated;
        for (const std::string& sTarget : missing.targets)
            expected[sTarget] = kEnglish.at(sTarget);
        EXPECT_EQ(Loaded(), expected);
    }
}

TEST_F(CaptionsTest, ANullTextCountsAsAbsent) {
    PutAllBut("WithSymbol");
    Put("'WithSymbol'", "NULL");
    Put("NULL", "'a text without a key'");
    Words expected = kTranslated;
    expected["chkBoxSymbol"] = "WithSymbol";
    EXPECT_EQ(Loaded(), expected);
}

// One of the two rows is skipped, so that no key occurs twice.
TEST_F(CaptionsTest, ANullTextBesideAnotherRowOfItsKeyIsNoFailure) {
    PutAllBut();
    Put("'WithSymbol'", "NULL");
    EXPECT_EQ(Loaded(), kTranslated);
}

TEST_F(CaptionsTest, AnEmptyTextIsAWord) {
    PutAllBut("AddToDatabase");
    Put("'AddToDatabase'", "''");
    EXPECT_EQ(Loaded().at("chkBoxAdd"), "");
}

TEST_F(CaptionsTest, AKeyThatOccursTwiceMakesEverythingEnglish) {
    PutAllBut();
    Put("'SelectFile'", "'once more'");
    EXPECT_EQ(Loaded(), kEnglish);
}

TEST_F(CaptionsTest, KeysAreComparedExactly) {
    PutAllBut("Database");
    Put("'DATABASE'", "'in capitals'");
    Put("'database'", "'in small letters'");
    EXPECT_EQ(Loaded().at("Option1"), "LongText -> Database");
    EXPECT_EQ(Shown().at("chkBoxAdd"), "anfuegen");
}

TEST_F(CaptionsTest, WithoutACatalogueEverythingIsEnglish) {
    EXPECT_EQ(Loaded(), kEnglish);
}

TEST_F(CaptionsTest, WithoutATableEverythingIsEnglish) {
    PutAllBut();
    if (db.Format() == StoreFormat::Sqlite)
        ExecuteOn(db.FileOf(kCatalogueDatabase), "DROP TABLE Messages");
    else
        WriteAccessFile(db.FileOf(kCatalogueDatabase), db.Format(), {});
    EXPECT_EQ(Loaded(), kEnglish);
}

TEST_F(CaptionsTest, WithoutTextsOfTheLanguageEverythingIsEnglish) {
    PutAllBut();
    g_nLanguageId = 9;
    EXPECT_EQ(Loaded(), kEnglish);
}

TEST_F(CaptionsTest, EnglishTakesThePlaceOfWhatWasThere) {
    PutAllBut();
    LoadCaptions();
    std::filesystem::remove(db.FileOf(kCatalogueDatabase));
    EXPECT_EQ(Loaded(), kEnglish);
}

TEST_F(CaptionsTest, ATextEndsBehind256Characters) {
    PutAllBut("AddToDatabase");
    Put("'AddToDatabase'", "'" + std::string(300, 'x') + "'");
    EXPECT_EQ(Loaded().at("chkBoxAdd"), std::string(256, 'x'));
}

TEST_F(CaptionsTest, OnlyEachTextOfAWordIsCutNotTheWord) {
    PutAllBut("LongText");
    Put("'LongText'", "'" + std::string(300, 'x') + "'");
    EXPECT_EQ(Loaded().at("Option1"), std::string(256, 'x') + " -> Datenbank");
}

// A page on which the bytes C0 to DF are Cyrillic capitals.
const CodePage& CyrillicPage() {
    static const SingleBytePage page(1251, [] {
        SingleBytePage::Table table{};
        for (std::size_t n = 0; n < table.size(); ++n)
            table[n] = static_cast<char16_t>(n < 0xC0 ? n : n - 0xC0 + 0x0410);
        return table;
    }());
    return page;
}

TEST_F(CaptionsTest, TextsAreReadByTheCodePageOfTheLanguage) {
    PutAllBut("LongTextConversion");
    Put("'LongTextConversion'", "'\u00C1\u00C0'");  // as the system's page shows the bytes C1 C0
    machine.locale.localePages[kGerman] = u"1251";
    machine.locale.codePages[1251] = &CyrillicPage();
    LoadCaptions();
    EXPECT_EQ(Get<TextBox>(u"Text2").Text(), u"\u0411\u0410");
    EXPECT_EQ(Get<RadioButton>(u"Option1").Caption(), u"Langtext -> Datenbank");
}

TEST_F(CaptionsTest, ALanguageWithoutAPageOfItsOwnHasTheUsualOne) {
    PutAllBut("EnterName");
    Put("'EnterName'", "'T\u00FCr'");
    LoadCaptions();
    EXPECT_EQ(g_sMsgEnterName, u"T\u00FCr");
}

TEST_F(CaptionsTest, ThePagesNumberIsTheFirstOneInItsText) {
    PutAllBut("EnterName");
    Put("'EnterName'", "'\u00C1'");
    machine.locale.localePages[kGerman] = u"cp 1251";
    machine.locale.codePages[1251] = &CyrillicPage();
    LoadCaptions();
    EXPECT_EQ(g_sMsgEnterName, u"\u0411");
}

TEST_F(CaptionsTest, WithoutTheFormThereIsNothingToSpeak) {
    UnloadForm(kStdBofFormClass);
    EXPECT_EQ(Raised([] { LoadCaptions(); }), ErrorNumber::ObjectNotSet);
}

// ---- The read ----

TEST_F(CaptionsTest, AModuleIsReadInOneLanguage) {
    Put("'A'", "'eins'");
    Put("'A'", "'one'", "Nomira", 9);
    Put("'B'", "'else'", "Other");
    EXPECT_EQ(ReadCatalogueModule(u"Nomira", kGerman), (Catalogue{{u"A", u"eins"}}));
    EXPECT_EQ(ReadCatalogueModule(u"Nomira", 9), (Catalogue{{u"A", u"one"}}));
    EXPECT_EQ(ReadCatalogueModule(u"Other", kGerman), (Catalogue{{u"B", u"else"}}));
    EXPECT_EQ(ReadCatalogueModule(u"Nomira", 10), std::nullopt);
}

TEST_F(CaptionsTest, RowsWithoutTextsAreNoCatalogue) {
    Put("'A'", "NULL");
    EXPECT_EQ(ReadCatalogueModule(u"Nomira", kGerman), std::nullopt);
}

TEST_F(CaptionsTest, TheReadIsOneQueryThatClosesWhatItOpens) {
    Put("'A'", "'eins'");
    Put("'B'", "'zwei'");
    OpenDatabase(kLongTextDatabase);
    CloseDatabase();
    const ForwardingEngine engine;
    ReadCatalogueModule(u"Nomira", kGerman);
    EXPECT_EQ(engine.operations,
              (Texts{u"open connection",
                     u"open SELECT Items.KeyString, Messages.String, Messages.Language_id, "
                     u"Items.Module FROM Items INNER JOIN Messages ON Items.Key_id = "
                     u"Messages.Key_id WHERE (((Items.Module)='Nomira') AND "
                     u"((Messages.Language_id)=7))",
                     u"first", u"field String", u"field KeyString", u"next", u"field String",
                     u"field KeyString", u"next", u"close recordset", u"close connection"}));
    EXPECT_EQ(engine.cursor, CursorKind::Static);
    EXPECT_EQ(engine.lock, LockKind::ReadOnly);
    EXPECT_EQ(g_Connection, nullptr);
}

TEST_F(CaptionsTest, AnOpenDatabaseIsClosedFirst) {
    Put("'A'", "'eins'");
    ForwardingEngine engine;
    OpenDatabase(kLongTextDatabase);
    engine.operations.clear();
    EXPECT_NE(ReadCatalogueModule(u"Nomira", kGerman), std::nullopt);
    EXPECT_EQ(engine.operations.front(), u"close connection");
}

TEST_F(CaptionsTest, AFailureAtAnyStepIsNoCatalogue) {
    Put("'A'", "'eins'");
    for (const TextView sStep : {u"open connection", u"open SELECT", u"first", u"field String",
                                 u"field KeyString", u"next", u"close recordset"}) {
        ForwardingEngine engine;
        engine.FailAt(Text(sStep), 1);
        EXPECT_EQ(ReadCatalogueModule(u"Nomira", kGerman), std::nullopt) << Printable(sStep);
        CloseDatabase();
    }
}

// What was opened before the failure stays, and the next opening closes it.
TEST_F(CaptionsTest, AFailedReadLeavesItsConnectionToTheNextOpening) {
    Put("'A'", "'eins'");
    Put("'A'", "'once more'");
    EXPECT_EQ(ReadCatalogueModule(u"Nomira", kGerman), std::nullopt);
    EXPECT_NE(g_Connection, nullptr);
    EXPECT_TRUE(OpenDatabase(kLongTextDatabase));
}

}  // namespace
}  // namespace nomira::testing
