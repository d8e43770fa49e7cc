// Whole batch runs from the command line to the database's rows, the text file and the programs.
#include "adapters/memory/MemoryMachine.h"
#include "frame/entry/RunProgram.h"
#include "testing/TestDatabase.h"
#include "testing/TextPrinting.h"
#include "ui/formlayer/FormLayer.h"

namespace nomira {
namespace {

using Rows = std::vector<std::vector<std::string>>;

class ConversionTest : public ::testing::Test {
  protected:
    memory::MemoryMachine machine;
    testing::TestDatabase database;

    int Run(TextView sCommandLine) {
        machine.UseCommandLine(Text(sCommandLine));
        return RunProgram();
    }
    Rows Stored() const {
        return database.Query(
            "SELECT Items.Module, Items.KeyString, Messages.String FROM Items "
            "JOIN Messages ON Items.Key_id = Messages.Key_id ORDER BY Items.KeyString");
    }
};

TEST_F(ConversionTest, AMergeKeepsWhatTheFileDoesNotMention) {
    machine.files.Put(u"C:\\first.txt", "IN_1 Pump\r\nOUT_7 Valve\r\n");
    machine.files.Put(u"C:\\second.txt", "IN_1 Pump two\r\nFlagText3 Ready\r\n");
    EXPECT_EQ(Run(u"TEXT_INTO_DB|x|C:\\first.txt"), 0);
    EXPECT_EQ(Run(u"TEXT_INTO_DB|x|C:\\second.txt"), 0);
    EXPECT_EQ(Stored(), (Rows{{"Flag", "FlagText3", "Ready"},
                              {"IO", "IN_1", "Pump two"},
                              {"IO", "OUT_7", "Valve"}}));
    EXPECT_EQ(FindForm(u"StdForm"), nullptr);
    EXPECT_TRUE(machine.desktop.boxes.empty());
}

TEST_F(ConversionTest, AnOverwriteWipesFirst) {
    machine.files.Put(u"C:\\first.txt", "IN_1 Pump\r\nOUT_7 Valve\r\n");
    machine.files.Put(u"C:\\second.txt", "IN_2 Lamp\r\n");
    EXPECT_EQ(Run(u"TEXT_INTO_DB|x|C:\\first.txt"), 0);
    EXPECT_EQ(Run(u"text_into_db | overwrite |C:\\second.txt"), 0);
    EXPECT_EQ(Stored(), (Rows{{"IO", "IN_2", "Lamp"}}));
}

TEST_F(ConversionTest, AnOverwriteWithoutAFileWipesNothing) {
    machine.files.Put(u"C:\\first.txt", "IN_1 Pump\r\n");
    EXPECT_EQ(Run(u"TEXT_INTO_DB|x|C:\\first.txt"), 0);
    for (const TextView sCommandLine :
         {u"TEXT_INTO_DB|OVERWRITE", u"TEXT_INTO_DB|OVERWRITE| ",
          u"TEXT_INTO_DB|OVERWRITE|C:\\missing.txt", u"UNKNOWN|OVERWRITE|C:\\first.txt"})
        EXPECT_EQ(Run(sCommandLine), 0);
    EXPECT_EQ(Stored(), (Rows{{"IO", "IN_1", "Pump"}}));
    EXPECT_EQ(machine.desktop.boxes.size(), 1U);  // the first of them
}

TEST_F(ConversionTest, ASecondInstanceLeavesTheDatabaseAlone) {
    machine.files.Put(u"C:\\x.txt", "IN_1 Pump\r\n");
    machine.desktop.bPreviousInstance = true;
    EXPECT_EQ(Run(u"TEXT_INTO_DB|OVERWRITE|C:\\x.txt"), 0);
    EXPECT_EQ(Stored(), Rows{});
    EXPECT_EQ(machine.closedLibrary.nRefreshes, 0);
}

TEST_F(ConversionTest, AnExportWritesWhatAnImportHasStored) {
    machine.files.Put(u"C:\\in.txt", "OUT_7 Valve\r\nIN_12 Pump\r\nIN_2 Lamp\r\n");
    EXPECT_EQ(Run(u"TEXT_INTO_DB|x|\"C:\\in.txt\""), 0);
    EXPECT_EQ(Run(u"DB_INTO_TEXT|x|\"C:\\out.txt\""), 0);
    // An exported file ends in an empty line.
    EXPECT_EQ(machine.files.Bytes(u"C:\\out.txt"),
              "IN_2 Lamp\r\nIN_12 Pump\r\nOUT_7 Valve\r\n\r\n");
}

TEST_F(ConversionTest, ADirectoryOfProgramsTakesTheNames) {
    machine.files.Put(u"C:\\in.txt", "OUT_7 Valve\r\n");
    const std::string sOther = "DEF other( )\r\nEND\r\n";
    machine.files.Put(u"C:\\R1\\prog.src",
                      ";FOLD OUT 7 'old' State=TRUE;%{PE}\r\n$OUT[7]=TRUE\r\n;ENDFOLD\r\n");
    machine.files.Put(u"C:\\R1\\other.src", sOther);
    EXPECT_EQ(Run(u"TEXT_INTO_DB|x|C:\\in.txt"), 0);
    EXPECT_EQ(Run(u"UPDATE_USERFILES|SELECT_ALL|C:\\R1"), 0);
    EXPECT_EQ(machine.files.Bytes(u"C:\\R1\\prog.src"),
              ";FOLD OUT 7 'Valve' State=TRUE;%{PE}\r\n$OUT[7]=TRUE\r\n;ENDFOLD\r\n");
    EXPECT_EQ(machine.files.Bytes(u"C:\\R1\\other.src"), sOther);
}

TEST_F(ConversionTest, ASingleProgramStaysAsItIsAndTheRunFails) {
    machine.files.Put(u"C:\\R1\\prog.src", ";FOLD OUT 7 'old' State=TRUE\r\n");
    EXPECT_EQ(Run(u"UPDATE_USERFILES|one|C:\\R1\\prog.src"), 1);
    EXPECT_EQ(machine.files.Bytes(u"C:\\R1\\prog.src"), ";FOLD OUT 7 'old' State=TRUE\r\n");
    ASSERT_EQ(machine.desktop.boxes.size(), 1U);
    EXPECT_EQ(machine.desktop.boxes[0].sText,
              u"Run-time error '75':\r\n\r\nPath/File access error");
}

}  // namespace
}  // namespace nomira
