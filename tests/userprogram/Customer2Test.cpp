#include "userprogram/Customer2.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "frame/ProgramVariables.h"
#include "frame/Progress.h"
#include "langtools/ProgramState.h"
#include "langtools/RuntimeError.h"
#include "testing/ForwardingEngine.h"
#include "testing/Raised.h"
#include "testing/TextPrinting.h"
#include "userprogram/ProgramFixture.h"

namespace nomira::testing {
namespace {

constexpr TextView kAssignments = u"C:\\vw\\signals.txt";

class Customer2Test : public ProgramFixture {
  protected:
    bool Harvest(std::string_view bytes) {
        m_machine.files.Put(kAssignments, bytes);
        return HarvestFile(kAssignments);
    }

    // The texts of the harvested keys, in the order of the classes: u"IN_12=Motor".
    static std::vector<Text> Harvested() {
        std::vector<Text> pairs;
        for (std::size_t nClass = 0; nClass < kHarvestClassCount; ++nClass) {
            for (std::size_t n = 0; n < m_colKey[nClass].Count(); ++n)
                pairs.push_back(m_colKey[nClass].Item(n) + u"=" + m_colLongText[nClass].Item(n));
        }
        return pairs;
    }

    Text Stored(TextView sModule, TextView sKey) {
        Text sText = u"<absent>";
        ReadLongText(sText, sModule, sKey);
        return sText;
    }

    // Writes what was harvested, with chkBoxAdd at this value on the front end's form.
    void Write(std::int16_t nAdd, bool bPendant = false) {
        g_bPendantMode = bPendant;
        const LoadedForm form(bPendant ? u"StdBofForm" : u"NomiraMain");
        form->With<CheckBox>(u"chkBoxAdd").SetValue(nAdd);
        WriteHarvest(*form);
    }
};

using Texts = std::vector<Text>;

TEST_F(Customer2Test, EachClassGetsItsKey) {
    EXPECT_TRUE(
        Harvest("X = P12 \\ ;Wert\r\n"
                "X = BINA4 \\ ;Programm\r\n"
                "X = BINE5 \\ ;Antwort\r\n"
                "X = ANAA6 \\ ;Drehzahl\r\n"
                "X = ANAE3 \\ ;Druck\r\n"
                "X=A1\\;Ventil\r\n"
                "X = E12 \\ ;Motor links\r\n"));
    EXPECT_EQ(Harvested(),
              (Texts{u"IN_12=Motor links", u"OUT_1=Ventil", u"ANIN_3=Druck", u"ANOUT_6=Drehzahl",
                     u"BININ_5=Antwort", u"BINOUT_4=Programm", u"ZTQXProcParam_12=Wert"}));
}

TEST_F(Customer2Test, ListsOfAClassAreParallel) {
    Harvest("X = E2 \\ ;zwei\r\nX = E012   \\ ;zwoelf\r\n");
    ASSERT_EQ(m_colKey[0].Count(), 2U);
    ASSERT_EQ(m_colShortName[0].Count(), 2U);
    EXPECT_EQ(m_colShortName[0].Item(0), u"E2");
    EXPECT_EQ(m_colShortName[0].Item(1), u"E012 \\");  // cut behind the place it meant
    EXPECT_EQ(m_colKey[0].Item(1), u"IN_12");
    EXPECT_EQ(m_colLongText[0].Item(1), u"zwoelf");
}

TEST_F(Customer2Test, ZeroesAheadOfANumberGo) {
    EXPECT_TRUE(Harvest("X = E012 \\ ;Taster\r\n"));
    EXPECT_EQ(Harvested(), Texts{u"IN_12=Taster"});
    EXPECT_FALSE(Harvest("X = A012 \\ ;Taster\r\n"));
}

TEST_F(Customer2Test, LinesOfOtherFormsAreDropped) {
    EXPECT_FALSE(
        Harvest("; a comment\r\n"
                "X = e12 \\ ;Text\r\n"
                "X  =  E12 \\ ;Text\r\n"
                "X = E12\r\n"
                "X = F12 \\ ;Text\r\n"
                "X = F12 \\ ;Text =E3\r\n"  // a signal line by its comment alone
                "X = E12 \\ \r\n"
                "X = E12 \\ ;\r\n"
                "X = Y = E12 \\ ;Text\r\n"));
    EXPECT_EQ(Harvested(), Texts{});
}

// A symbol is only ever the reason to keep a line whose comment is empty.
TEST_F(Customer2Test, SecondEqualsSignKeepsALineWithoutAComment) {
    EXPECT_TRUE(Harvest("X = E12 = Y \\ ;\r\n"));
    EXPECT_EQ(Harvested(), Texts{u"IN_12="});
}

TEST_F(Customer2Test, FirstLineOfASignalWins) {
    Harvest("X = E12 \\ ;first\r\nX = E13 \\ ;other\r\nX = E012 \\ ;second\r\n");
    EXPECT_EQ(Harvested(), (Texts{u"IN_12=first", u"IN_13=other"}));
}

TEST_F(Customer2Test, MarkerAndFourCharactersFallAway) {
    Harvest("X = E12 \\ ;|1234Motor\r\n;|1234X = E13 \\ ;vorn\r\n");
    EXPECT_EQ(Harvested(), (Texts{u"IN_12=Motor", u"IN_13=vorn"}));
}

TEST_F(Customer2Test, UmlautsAndTabsAreNormalised) {
    Harvest("X = E1 \\ ;T\xFCr\tgro\xDF\r\n");
    EXPECT_EQ(Harvested(), Texts{u"IN_1=Tuer gross"});
}

TEST_F(Customer2Test, LinesEndAtCrOrCrLf) {
    Harvest("X = E1 \\ ;a\rX = E2 \\ ;b\nc\r\nX = E3 \\ ;d");
    EXPECT_EQ(Harvested(), (Texts{u"IN_1=a", u"IN_2=b\nc", u"IN_3=d"}));
}

// --- the pendant form's box for symbols

TEST_F(Customer2Test, SymbolIsCutFromTheCommentUnlessTheBoxIsChecked) {
    constexpr std::string_view kLines = "X = E12 \\ ;Sym; Text \r\nX = E13 \\ ;a;b;c\r\n";
    const Texts without = {u"IN_12=Text", u"IN_13=b;c"};
    Harvest(kLines);
    EXPECT_EQ(Harvested(), without);  // no pendant form is loaded

    const LoadedForm pendant(u"StdBofForm");
    auto& box = pendant->With<CheckBox>(u"chkBoxSymbol");
    Harvest(kLines);
    EXPECT_EQ(Harvested(), without);
    box.SetValue(CheckBox::kChecked);
    Harvest(kLines);
    EXPECT_EQ(Harvested(), (Texts{u"IN_12=Sym; Text", u"IN_13=a;b;c"}));
}

TEST_F(Customer2Test, BoxOfTheDesktopFormIsNotAsked) {
    const LoadedForm desktop(u"NomiraMain");
    desktop->With<CheckBox>(u"chkBoxSymbol").SetValue(CheckBox::kChecked);
    Harvest("X = E12 \\ ;Sym;Text\r\n");
    EXPECT_EQ(Harvested(), Texts{u"IN_12=Text"});
}

TEST_F(Customer2Test, CommentThatIsOnlyASymbolLeavesNothing) {
    EXPECT_FALSE(Harvest("X = E12 \\ ;Sym;\r\n"));
}

// --- the lists' life

TEST_F(Customer2Test, EmptyPathLeavesTheLists) {
    Harvest("X = E12 \\ ;Motor\r\n");
    EXPECT_FALSE(HarvestFile(u""));
    EXPECT_EQ(Harvested(), Texts{u"IN_12=Motor"});
}

TEST_F(Customer2Test, EachHarvestBeginsWithEmptyLists) {
    Harvest("X = E12 \\ ;Motor\r\nX = P1 \\ ;Wert\r\n");
    EXPECT_TRUE(Harvest("X = A1 \\ ;Ventil\r\n"));
    EXPECT_EQ(Harvested(), Texts{u"OUT_1=Ventil"});
    EXPECT_EQ(m_colShortName[0].Count(), 0U);
}

TEST_F(Customer2Test, FileThatCannotBeOpenedRaisesWithTheListsCleared) {
    Harvest("X = E12 \\ ;Motor\r\n");
    EXPECT_THROW(HarvestFile(u"C:\\vw\\none.txt"), RuntimeError);
    EXPECT_EQ(Harvested(), Texts{});
}

TEST_F(Customer2Test, NumberBeyondThirtyTwoBitsEndsTheRun) {
    EXPECT_THROW(Harvest("X = E1 \\ ;a\r\nX = E2147483648 \\ ;b\r\n"), RuntimeError);
    EXPECT_EQ(Harvested(), Texts{u"IN_1=a"});
    EXPECT_EQ(m_machine.files.OpenFiles(), 0);
}

TEST_F(Customer2Test, HarvestAloneTouchesNoDatabase) {
    m_machine.processes.Add(u"C:\\TQX\\OrvoDB3.exe");
    EXPECT_FALSE(Harvest("no signal\r\n"));
    EXPECT_TRUE(Harvest("X = E1 \\ ;Tor\r\n"));
    EXPECT_EQ(Stored(u"IO", u"IN_1"), u"Gate");
    EXPECT_EQ(m_machine.closedLibrary.nRefreshes, 0);
}

// --- into the database

TEST_F(Customer2Test, TextsGoUnderTheirKeysAndModules) {
    Harvest("X = E1 \\ ;Tor\r\nX = P12 \\ ;Wert\r\nX = BINA4 \\ ;Programm\r\n");
    Write(CheckBox::kCleared);
    EXPECT_EQ(Stored(u"IO", u"IN_1"), u"Tor");
    EXPECT_EQ(Stored(u"ZTQXProcParam", u"ZTQXProcParam_12"), u"Wert");
    EXPECT_EQ(Stored(u"IO", u"BINOUT_4"), u"Programm");
    EXPECT_EQ(Stored(u"IO", u"IN_5"), u"Door");  // nothing was wiped
    EXPECT_EQ(Harvested().size(), 3U);
}

TEST_F(Customer2Test, EachTextIsAStepOfTheBarInTheOrderOfTheClasses) {
    g_bBatchMode = true;
    const LoadedForm form(u"StdForm");
    form->With<ProgressBar>(u"ProgressBar");
    Harvest("X = P1 \\ ;last\r\nX = E7 \\ ;first\r\nX = E8 \\ ;second\r\n");
    EXPECT_EQ(g_nProgressCount, 0);
    Write(CheckBox::kCleared);
    EXPECT_EQ(g_nProgressCount, 3);
    const auto rows = m_database.Query(
        "SELECT KeyString FROM Items WHERE KeyString IN ('IN_7','IN_8','ZTQXProcParam_1') "
        "ORDER BY Key_id");
    ASSERT_EQ(rows.size(), 3U);
    EXPECT_EQ(rows[0][0], "IN_7");
    EXPECT_EQ(rows[1][0], "IN_8");
    EXPECT_EQ(rows[2][0], "ZTQXProcParam_1");
}

// The one box has the opposite sense in the two front ends.
TEST_F(Customer2Test, CheckedBoxWipesOnTheDesktopAndAddsOnThePendant) {
    struct Row {
        std::int16_t nAdd;
        bool bPendant;
        bool bWiped;
    };
    for (const Row& row :
         {Row{CheckBox::kChecked, false, true}, Row{CheckBox::kCleared, false, false},
          Row{CheckBox::kChecked, true, false}, Row{CheckBox::kCleared, true, true},
          Row{CheckBox::kGrey, false, false}, Row{CheckBox::kGrey, true, false}}) {
        Store(u"IO", u"IN_5", u"Door");
        Harvest("X = E1 \\ ;Tor\r\n");
        Write(row.nAdd, row.bPendant);
        SCOPED_TRACE(::testing::Message() << row.nAdd << (row.bPendant ? " pendant" : " desktop"));
        EXPECT_EQ(Stored(u"IO", u"IN_1"), u"Tor");
        EXPECT_EQ(Stored(u"IO", u"IN_5"), row.bWiped ? u"<absent>" : u"Door");
    }
}

TEST_F(Customer2Test, WipeTakesTheClassesThatTheHarvestNeverFillsAndLeavesWelding) {
    Store(u"Counter", u"CounterText1", u"Parts");
    Store(u"IO", u"BINOUT_1", u"Group");
    Store(u"ZTQXProcParam", u"ZTQXProcParam_1", u"Current");
    Store(u"A10TP", u"Start11", u"Ignite");
    Harvest("X = E99 \\ ;Tor\r\n");
    Write(CheckBox::kChecked);
    const auto rows = m_database.Query("SELECT KeyString FROM Items ORDER BY KeyString");
    ASSERT_EQ(rows.size(), 2U);
    EXPECT_EQ(rows[0][0], "IN_99");
    EXPECT_EQ(rows[1][0], "Start11");
}

TEST_F(Customer2Test, WipesStandInTheirOrderWithTheAnalogueSizesSwapped) {
    const HarvestWipe expected[] = {
        {u"IN_", u"IO", &g_nNumIo},
        {u"OUT_", u"IO", &g_nNumIo},
        {u"ANIN_", u"IO", &g_nNumAnOut},
        {u"ANOUT_", u"IO", &g_nNumAnIn},
        {u"BININ_", u"IO", &g_nNumBinIn},
        {u"BINOUT_", u"IO", &g_nNumBinOut},
        {u"NoticeText", u"Notice", &g_nNumNotice},
        {u"CounterText", u"Counter", &g_nNumCounter},
        {u"FlagText", u"Flag", &g_nNumFlag},
        {u"TimerText", u"Timer", &g_nNumTimer},
        {u"ZTQXProcParam_", u"ZTQXProcParam", &g_nNumProcParam},
    };
    ASSERT_EQ(HarvestWipes().size(), std::size(expected));
    for (std::size_t n = 0; n < std::size(expected); ++n) {
        EXPECT_EQ(HarvestWipes()[n].sKeyPrefix, expected[n].sKeyPrefix);
        EXPECT_EQ(HarvestWipes()[n].sModule, expected[n].sModule);
        EXPECT_EQ(HarvestWipes()[n].pSize, expected[n].pSize) << n;
    }
}

TEST_F(Customer2Test, DatabaseProcessIsToldOnceAtTheEnd) {
    m_machine.processes.Add(u"C:\\TQX\\OrvoDB3.exe");
    Harvest("X = E1 \\ ;Tor\r\nX = E2 \\ ;Tor\r\n");
    Write(CheckBox::kChecked);
    EXPECT_EQ(m_machine.closedLibrary.nRefreshes, 1);
    EXPECT_EQ(g_Connection, nullptr);
}

TEST_F(Customer2Test, WipesComeAheadOfTheTextsAndTheProcessIsToldBehindTheClosing) {
    m_machine.processes.Add(u"C:\\TQX\\OrvoDB3.exe");
    Harvest("X = E1 \\ ;Tor\r\n");
    ForwardingEngine engine;
    Texts steps;
    engine.before = [&](const Text& sOperation) {
        if (sOperation.starts_with(u"open DELETE"))
            steps.push_back(sOperation.substr(sOperation.find(u'\'')));
        if (sOperation.starts_with(u"open SELECT Items.Key_id")) steps.emplace_back(u"text");
        if (sOperation.ends_with(u"connection")) steps.push_back(sOperation);
        EXPECT_EQ(m_machine.closedLibrary.nRefreshes, 0);
    };
    g_bBatchMode = true;
    const LoadedForm form(u"StdForm");
    form->With<ProgressBar>(u"ProgressBar");
    Write(CheckBox::kChecked);
    EXPECT_EQ(steps, (Texts{u"open connection", u"'IN_%'))", u"'OUT_%'))", u"'ANIN_%'))",
                            u"'ANOUT_%'))", u"'BININ_%'))", u"'BINOUT_%'))", u"'NoticeText%'))",
                            u"'CounterText%'))", u"'FlagText%'))", u"'TimerText%'))",
                            u"'ZTQXProcParam_%'))", u"text", u"close connection"}));
    EXPECT_EQ(m_machine.closedLibrary.nRefreshes, 1);
    EXPECT_EQ(g_nProgressCount, 1);  // the wipes are no steps
}

TEST_F(Customer2Test, WithoutADatabaseNothingIsStoredAndNothingIsSaid) {
    m_database.RemoveFile();
    Harvest("X = E1 \\ ;Tor\r\n");
    EXPECT_NO_THROW(Write(CheckBox::kChecked));
    EXPECT_TRUE(Boxes().empty());
}

TEST_F(Customer2Test, FormWithoutTheBoxRaises) {
    const LoadedForm form(u"NomiraMain");
    EXPECT_EQ(Raised([&] { WriteHarvest(*form); }), ErrorNumber::NoSuchMember);
    CloseDatabase();
}

TEST_F(Customer2Test, ResetOfTheProgramEmptiesTheLists) {
    Harvest("X = E1 \\ ;Tor\r\n");
    ResetProgramState();
    EXPECT_EQ(Harvested(), Texts{});
}

TEST(KeyedTextsTest, KeyThatIsThereLeavesTheListAsItWas) {
    KeyedTexts list;
    EXPECT_TRUE(list.Add(u"a", u"1"));
    EXPECT_FALSE(list.Add(u"b", u"1"));
    EXPECT_TRUE(list.Add(u"b", u"2"));
    EXPECT_EQ(list.Count(), 2U);
    EXPECT_EQ(list.Item(0), u"a");
    EXPECT_EQ(list.Item(1), u"b");
    list.Clear();
    EXPECT_EQ(list.Count(), 0U);
    EXPECT_TRUE(list.Add(u"c", u"1"));
}

}  // namespace
}  // namespace nomira::testing
