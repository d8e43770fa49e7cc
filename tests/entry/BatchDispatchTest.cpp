#include "frame/entry/BatchDispatch.h"

#include "adapters/memory/MemoryMachine.h"
#include "entry/BatchTimeline.h"
#include "frame/ProgramVariables.h"
#include "testing/Raised.h"
#include "testing/TextPrinting.h"
#include "testing/UnavailableEngine.h"

namespace nomira {
namespace {

using testing::Raised;
using Happened = std::vector<Text>;

constexpr TextView kTooFew = u"box Number of parameters too less !!!";
constexpr TextView kWrong = u"box command lines arguments wrong !!!";
constexpr TextView kWipe = u"label deleting database";
constexpr TextView kImport = u"label converting textfile into database";
constexpr TextView kExport = u"label converting database into textfile";
constexpr TextView kUpdate = u"label updating longtextname in userfiles";

// The dispatch alone, with no database behind it: what it asks of whom, and in which order.
class BatchDispatchTest : public ::testing::Test {
  protected:
    memory::MemoryMachine machine;
    testing::UnavailableEngine engine;
    testing::BatchTimeline timeline{machine};

    // What happened between the form's coming up and its going.
    Happened Run(TextView sCommandLine) {
        timeline.happened.clear();
        RunBatch(sCommandLine);
        Happened happened = timeline.happened;
        EXPECT_GE(happened.size(), 3U);
        if (happened.size() < 3) return happened;
        EXPECT_EQ(happened[0], u"show StdForm");
        EXPECT_EQ(happened[1], u"caption TQX Longname - Conversion");
        EXPECT_EQ(happened.back(), u"unload StdForm");
        EXPECT_EQ(FindForm(u"StdForm"), nullptr);
        return {happened.begin() + 2, happened.end() - 1};
    }
    static Happened List(std::initializer_list<TextView> entries) {
        return {entries.begin(), entries.end()};
    }
};

TEST_F(BatchDispatchTest, ACommandIsALineWithASeparator) {
    EXPECT_TRUE(IsBatchCommand(u"|"));
    EXPECT_TRUE(IsBatchCommand(u"\"a|b\""));  // quotes protect nothing
    EXPECT_FALSE(IsBatchCommand(u""));
    EXPECT_FALSE(IsBatchCommand(u"\"C:\\a path\\x.txt\""));
}

TEST_F(BatchDispatchTest, EveryLineMakesTheSameStepsWithItsPasses) {
    struct Row {
        TextView sCommandLine;
        Happened expected;
    };
    const Happened wipeAndImport = List({kWipe, u"input C:\\x.txt", kImport, u"input C:\\x.txt"});
    const Happened importAlone = List({kImport, u"input C:\\x.txt"});
    const Row rows[] = {
        // Wipe and import.
        {u"TEXT_INTO_DB|OVERWRITE|C:\\x.txt", wipeAndImport},
        {u"text_into_db | overwrite |C:\\x.txt", wipeAndImport},
        {u"  Text_Into_Db|  OverWrite  |  C:\\x.txt  ", wipeAndImport},
        {u"|TEXT_INTO_DB|OVERWRITE|C:\\x.txt", wipeAndImport},
        {u"|||TEXT_INTO_DB|OVERWRITE|C:\\x.txt", wipeAndImport},
        {u"TEXT_INTO_DB||OVERWRITE|||C:\\x.txt", wipeAndImport},
        {u"TEXT_INTO_DB|OVERWRITE|C:\\x.txt|a fourth|a fifth", wipeAndImport},
        // Quotes go wherever they stand.
        {u"\"TEXT_INTO_DB\"|\"OVERWRITE\"|\"C:\\x.txt\"", wipeAndImport},
        {u"TEXT_\"INTO\"_DB|OVER\"WRITE|C:\\x\".txt", wipeAndImport},
        {u"\"TEXT_INTO_DB|OVERWRITE|C:\\x.txt\"", wipeAndImport},
        // Any other option keeps the database's texts.
        {u"TEXT_INTO_DB|x|C:\\x.txt", importAlone},
        {u"|TEXT_INTO_DB|x|C:\\x.txt", importAlone},
        {u"TEXT_INTO_DB|OVERWRITEN|C:\\x.txt", importAlone},
        {u"TEXT_INTO_DB|OVER WRITE|C:\\x.txt", importAlone},
        {u"TEXT_INTO_DB|\tOVERWRITE|C:\\x.txt", importAlone},  // a tab is not trimmed
        {u"TEXT_INTO_DB| |C:\\x.txt", importAlone},
        {u"TEXT_INTO_DB|x| C:\\a b.txt ", List({kImport, u"input C:\\a b.txt"})},
        // Without a file.
        {u"TEXT_INTO_DB|OVERWRITE", List({kWrong})},
        {u"TEXT_INTO_DB|OVERWRITE|", List({kWrong})},
        {u"TEXT_INTO_DB|OVERWRITE||", List({kWrong})},
        {u"TEXT_INTO_DB|OVERWRITE|\"\"", List({kWrong})},
        {u"TEXT_INTO_DB|C:\\x.txt", List({kWrong})},
        {u"TEXT_INTO_DB||C:\\x.txt", List({kWrong})},  // adjacent separators are one
        // A blank is a file as it stands, and no file once trimmed; the export minds.
        {u"TEXT_INTO_DB|OVERWRITE| ", List({kWipe, u"input ", kImport, u"input "})},
        {u"TEXT_INTO_DB|x|   ", List({kImport, u"input "})},
        // A line that begins with a separator is trimmed as a whole, and loses that blank.
        {u"|TEXT_INTO_DB|OVERWRITE| ", List({kWrong})},
        {u"DB_INTO_TEXT|x| ", List({kExport, kWrong})},
        {u"DB_INTO_TEXT|x", List({kExport, kWrong})},
        {u"DB_INTO_TEXT|C:\\x.txt", List({kExport, kWrong})},
        // The export of a database that isn't there is empty, and writes nothing.
        {u"DB_INTO_TEXT|any|C:\\x.txt", List({kExport})},
        {u" db_into_text |SELECT_ALL|C:\\x.txt", List({kExport})},
        // A directory of programs.
        {u"UPDATE_USERFILES|SELECT_ALL|C:\\R1", List({kUpdate, u"dir C:\\R1\\*.SRC"})},
        {u"UPDATE_USERFILES|SELECT_ALL|C:\\R1\\", List({kUpdate, u"dir C:\\R1\\*.SRC"})},
        {u"update_userfiles|select_all | \"C:\\R1\" ", List({kUpdate, u"dir C:\\R1\\*.SRC"})},
        {u"UPDATE_USERFILES|SELECT_ALL|C:\\R1\\\\", List({kUpdate, u"dir C:\\R1\\\\*.SRC"})},
        {u"UPDATE_USERFILES|SELECT_ALL", List({kUpdate, u"dir \\*.SRC"})},
        // No command.
        {u"SOMETHING|OVERWRITE|C:\\x.txt", {}},
        {u"TEXT INTO DB|OVERWRITE|C:\\x.txt", {}},
        {u"TEXT_INTO_DB_|OVERWRITE|C:\\x.txt", {}},
        {u"\t|OVERWRITE|C:\\x.txt", {}},
        // Too few parameters.
        {u"TEXT_INTO_DB|", List({kTooFew})},
        {u"|TEXT_INTO_DB", List({kTooFew})},
        {u"UPDATE_USERFILES||", List({kTooFew})},
        {u"word|", List({kTooFew})},
        {u" | |C:\\x.txt", List({kTooFew})},  // leading separators, blanks between them
        {u"|", List({kTooFew})},
        {u"||||", List({kTooFew})},
        {u"\"|\"", List({kTooFew})},
    };
    for (const Row& row : rows)
        EXPECT_EQ(Run(row.sCommandLine), row.expected) << testing::Printable(row.sCommandLine);
}

TEST_F(BatchDispatchTest, ASingleProgramCannotBeUpdatedForTheSlashBehindIt) {
    machine.files.Put(u"C:\\R1\\prog.src", "DEF prog( )\r\n");
    EXPECT_EQ(Raised([] { RunBatch(u"UPDATE_USERFILES|one|C:\\R1\\prog.src"); }),
              ErrorNumber::PathFileAccess);
    EXPECT_EQ(timeline.happened.back(), u"input C:\\R1\\prog.src\\");
    EXPECT_EQ(timeline.happened[2], kUpdate);
    // The failure is the program's top's business; the form stays until then.
    EXPECT_NE(FindForm(u"StdForm"), nullptr);
    EXPECT_TRUE(timeline.boxes.empty());
}

TEST_F(BatchDispatchTest, UpdateWithoutAFileFailsOnTheSlashAlone) {
    EXPECT_EQ(Raised([] { RunBatch(u"UPDATE_USERFILES|one"); }), ErrorNumber::PathFileAccess);
    EXPECT_EQ(timeline.happened.back(), u"input \\");
}

TEST_F(BatchDispatchTest, MessageBoxesArePlainAndBearTheApplicationsTitle) {
    Run(u"word|");
    Run(u"TEXT_INTO_DB|OVERWRITE");
    Run(u"DB_INTO_TEXT|x");
    const memory::MessageBoxShown wrong{u"command lines arguments wrong !!!", u"Nomira",
                                        BoxIcon::None};
    EXPECT_EQ(timeline.boxes,
              (std::vector<memory::MessageBoxShown>{
                  {u"Number of parameters too less !!!", u"Nomira", BoxIcon::None}, wrong, wrong}));
}

TEST_F(BatchDispatchTest, AMissingTextFileGivesNoMessageAndTouchesNoDatabase) {
    Run(u"TEXT_INTO_DB|OVERWRITE|C:\\missing.txt");
    Run(u"TEXT_INTO_DB|OVERWRITE| ");
    EXPECT_TRUE(timeline.boxes.empty());
    EXPECT_EQ(engine.nAsked, 0);
    EXPECT_EQ(machine.closedLibrary.nRefreshes, 0);
}

TEST_F(BatchDispatchTest, AMissingDatabaseGivesNoMessageEither) {
    machine.files.Put(u"C:\\x.txt", "IN_1 Pump\r\n");
    Run(u"TEXT_INTO_DB|OVERWRITE|C:\\x.txt");
    Run(u"DB_INTO_TEXT|x|C:\\y.txt");
    EXPECT_TRUE(timeline.boxes.empty());
    EXPECT_GT(engine.nAsked, 0);
    EXPECT_FALSE(machine.files.Exists(u"C:\\y.txt"));
}

TEST_F(BatchDispatchTest, TheModesAreSetAndStay) {
    g_bPendantMode = true;
    Run(u"word|");
    EXPECT_TRUE(g_bBatchMode);
    EXPECT_FALSE(g_bPendantMode);
}

TEST_F(BatchDispatchTest, TheFormsBarMovesWithTheLinesOfTheFile) {
    class LastValue : public memory::RecordingView {
      public:
        void PropertyChanged(Form& form, Control* control, TextView sProperty) override {
            if (sProperty == u"Value")
                values.push_back(dynamic_cast<ProgressBar&>(*control).Value());
            RecordingView::PropertyChanged(form, control, sProperty);
        }
        std::vector<float> values;
    };
    LastValue view;
    SetView(&view);
    machine.files.Put(u"C:\\x.txt", "IN_1 Pump\r\n\r\nIN_2 Valve\r\nno key\r\nIN_3 Lamp\r\n");
    RunBatch(u"TEXT_INTO_DB|x|C:\\x.txt");
    EXPECT_EQ(view.values, (std::vector<float>{1, 3, 5}));
}

TEST_F(BatchDispatchTest, ParametersOutliveTheParser) {
    // The passes use the same parser; the second pass still gets the file of the command line.
    machine.files.Put(u"C:\\x.txt", "one two three four\r\n");
    EXPECT_EQ(Run(u"TEXT_INTO_DB|OVERWRITE|C:\\x.txt"),
              List({kWipe, u"input C:\\x.txt", kImport, u"input C:\\x.txt"}));
}

TEST_F(BatchDispatchTest, MoreParametersThanTheCountHoldsEndInAnOverflow) {
    Text sCommandLine;
    for (int i = 0; i < 32'768; ++i)
        sCommandLine += u"x|";
    EXPECT_EQ(Raised([&] { RunBatch(sCommandLine); }), ErrorNumber::Overflow);
}

}  // namespace
}  // namespace nomira
