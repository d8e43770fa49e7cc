#include "frame/KillProcess.h"

#include "adapters/memory/MemoryMachine.h"
#include "langtools/CodePage.h"
#include "testing/ForwardingPorts.h"
#include "testing/Raised.h"
#include "testing/TextPrinting.h"

namespace nomira {
namespace {

class KillProcessTest : public ::testing::Test {
  protected:
    memory::MemoryMachine machine;

    void Run(std::optional<Text> sPath) {
        const auto nId = static_cast<std::uint32_t>(machine.processes.processes.size() + 1);
        machine.processes.processes.push_back({nId, std::move(sPath)});
    }
};

TEST_F(KillProcessTest, FindsAProcessByAnyPartOfItsFileNameInAnyCase) {
    struct Row {
        TextView sPath, sName;
        bool bFound;
    };
    const Row rows[] = {
        {u"C:\\TQX\\SYS\\VEXON3.EXE", u"vexon3.exe", true},
        {u"C:\\tqx\\sys\\vexon3.exe", u"VEXON3.EXE", true},
        {u"C:\\tqx\\xvexon3.exe", u"vexon3.exe", true},
        {u"C:\\tqx\\vexon3.exe.bak", u"vexon3.exe", true},
        {u"C:\\tqx\\vexon3.exe", u"vexon3", true},  // a stem does
        {u"vexon3.exe", u"vexon3.exe", true},       // a path without a directory
        {u"  C:\\vexon3.exe  ", u"vexon3.exe", true},
        {u"C:\\vexon3.exe\\other.exe", u"vexon3.exe", false},  // only the last part counts
        {u"C:\\tqx\\vexon.exe", u"vexon3.exe", false},
        {u"C:\\tqx\\", u"vexon3.exe", false},
        {u"C:\\tqx\\any.exe", u"", true},  // the empty name is in every file name
        {u"", u"", false},                 // but not in an empty one
        {u"   ", u"", false},              // a path is trimmed
        {u"C:\\tqx\\  ", u"", false},
        {u"C:\\tqx\\", u"", false},
    };
    for (const Row& row : rows) {
        machine.processes.processes.clear();
        Run(Text(row.sPath));
        EXPECT_EQ(IsProcessRunning(row.sName), row.bFound)
            << testing::Printable(row.sPath) << " " << testing::Printable(row.sName);
    }
}

TEST_F(KillProcessTest, DropsTheTerminatorsOfAPath) {
    Run(Text(u"C:\\tqx\\vex\0on3.exe\0\0", 21));
    EXPECT_TRUE(IsProcessRunning(u"vexon3.exe"));
}

TEST_F(KillProcessTest, PassesOverProcessesThatDenyAccess) {
    Run(std::nullopt);
    Run(u"C:\\tqx\\vexon3.exe");
    EXPECT_TRUE(IsProcessRunning(u"vexon3.exe"));
    EXPECT_TRUE(IsProcessRunning(u""));
    machine.processes.processes.pop_back();
    EXPECT_FALSE(IsProcessRunning(u"vexon3.exe"));
    EXPECT_FALSE(IsProcessRunning(u""));
}

TEST_F(KillProcessTest, FindsNothingWhereNothingRuns) {
    EXPECT_FALSE(IsProcessRunning(u"vexon3.exe"));
    EXPECT_FALSE(IsProcessRunning(u""));
}

TEST_F(KillProcessTest, TheFirstMatchEndsTheSearch) {
    testing::ForwardingProcesses processes(machine.processes);
    Platform platform = testing::PortsOf(machine);
    platform.processes = &processes;
    SetPlatform(platform);
    Run(u"C:\\a.exe");
    Run(u"C:\\b.exe");
    Run(u"C:\\b.exe");
    EXPECT_TRUE(IsProcessRunning(u"b.exe"));
    EXPECT_EQ(processes.askedForName, (std::vector<std::uint32_t>{1, 2}));
}

TEST_F(KillProcessTest, ProcessesBeyondTheFirst125AreNotLookedAt) {
    for (int i = 0; i < 124; ++i)
        Run(u"C:\\other.exe");
    Run(u"C:\\the125th.exe");
    Run(u"C:\\the126th.exe");
    EXPECT_TRUE(IsProcessRunning(u"the125th.exe"));
    EXPECT_FALSE(IsProcessRunning(u"the126th.exe"));
}

TEST_F(KillProcessTest, TheOldFamilyIsSearchedByItsSnapshot) {
    machine.processes.nPlatformId = Processes::kPlatform9x;
    Run(u"C:\\ntonly.exe");
    machine.processes.snapshot = std::vector<Text>{u"KERNEL32.DLL", u"C:\\TQX\\VEXON3.EXE"};
    EXPECT_EQ(GetPlatformId(), 1);
    EXPECT_TRUE(IsProcessRunning(u"vexon3.exe"));
    EXPECT_TRUE(IsProcessRunning(u"tqx"));  // the whole field is searched
    EXPECT_TRUE(IsProcessRunning(u""));
    EXPECT_FALSE(IsProcessRunning(u"ntonly.exe"));
    EXPECT_FALSE(IsProcessRunningNt(u"vexon3.exe"));
    EXPECT_TRUE(IsProcessRunningNt(u"ntonly.exe"));
}

TEST_F(KillProcessTest, NoSnapshotFindsNothing) {
    machine.processes.nPlatformId = Processes::kPlatform9x;
    machine.processes.snapshot = std::nullopt;
    EXPECT_FALSE(IsProcessRunning(u""));
    EXPECT_FALSE(IsProcessRunning9x(u"vexon3.exe"));
}

TEST_F(KillProcessTest, EveryPlatformButOneIsTheNtFamily) {
    Run(u"C:\\a.exe");
    machine.processes.snapshot = std::nullopt;
    for (const std::int32_t nPlatformId : {0, 2, 3, -1}) {
        machine.processes.nPlatformId = nPlatformId;
        EXPECT_EQ(GetPlatformId(), nPlatformId);
        EXPECT_TRUE(IsProcessRunning(u"a.exe")) << nPlatformId;
    }
}

TEST_F(KillProcessTest, DefaultLanguageIsTheLowByteOfTheUsersLanguage) {
    struct Row {
        std::uint16_t nLangId;
        std::int16_t nLanguage;
    };
    for (const Row row : {Row{1031, 7}, Row{1033, 9}, Row{0x0FFF, 255}, Row{0x0300, 0}}) {
        machine.locale.nLangId = row.nLangId;
        EXPECT_EQ(GetDefaultLanguageId(), row.nLanguage);
    }
}

TEST_F(KillProcessTest, DefaultLanguageIsEnglishIfTheSystemFails) {
    machine.locale.nLangId = 1031;
    machine.locale.bLangIdFails = true;
    EXPECT_EQ(GetDefaultLanguageId(), 9);
}

TEST_F(KillProcessTest, CodePageOfALocale) {
    machine.locale.localePages[1049] = u"1251";
    machine.locale.localePages[1051] = Text(u"125\0garbage", 11);
    machine.locale.localePages[1052] = u"";
    EXPECT_EQ(GetLocaleCodePage(1049), u"1251");
    EXPECT_EQ(GetLocaleCodePage(1051), u"125");
    EXPECT_EQ(GetLocaleCodePage(1052), u"");      // nothing but the terminator
    EXPECT_EQ(GetLocaleCodePage(4711), u"1252");  // unknown
}

TEST_F(KillProcessTest, RedecodesTextByAnotherPage) {
    SingleBytePage::Table cyrillic{};
    for (std::size_t i = 0; i < cyrillic.size(); ++i)
        cyrillic[i] = static_cast<char16_t>(i < 0xC0 ? i : i - 0xC0 + 0x410);
    const SingleBytePage page(1251, cyrillic);
    machine.locale.codePages[1251] = &page;
    // The bytes CF F0 E8 were read as if they were of the system's page.
    EXPECT_EQ(RedecodeText(1251, u"\u00CF\u00F0\u00E8"), u"\u041F\u0440\u0438");
    EXPECT_EQ(RedecodeText(1252, u"abc"), u"abc");
    EXPECT_EQ(RedecodeText(1252, u""), u"");
    EXPECT_EQ(RedecodeText(99'999, u"abc"), u"");  // no such page
}

TEST_F(KillProcessTest, RedecodedTextEndsAtTheFirstTerminator) {
    EXPECT_EQ(RedecodeText(1252, TextView(u"ab\0cd", 5)), u"ab");
}

TEST_F(KillProcessTest, BytesBehindTheTerminatorAreNotHandedOn) {
    // A page that tells how many bytes it was given.
    class CountingPage : public SingleBytePage {
      public:
        CountingPage() : SingleBytePage(1200, {}) {}
        Text Decode(std::string_view bytes) const override { return Text(bytes.size(), u'x'); }
    };
    const CountingPage page;
    machine.locale.codePages[1200] = &page;
    EXPECT_EQ(RedecodeText(1200, TextView(u"ab\0cd", 5)), u"xx");
}

TEST_F(KillProcessTest, RedecodedTextIsCutAt256Characters) {
    EXPECT_EQ(RedecodeText(1252, Text(256, u'x')), Text(256, u'x'));
    EXPECT_EQ(RedecodeText(1252, Text(257, u'x')), Text(256, u'x'));
}

TEST_F(KillProcessTest, CharactersOutsideTheSystemsPageAreLostOnTheWay) {
    EXPECT_EQ(RedecodeText(1252, u"a\u3042b"), u"a?b");
}

TEST(KillProcessFieldsTest, CountsFields) {
    struct Row {
        TextView sText, sDelimiter;
        std::int16_t nCount;
    };
    const Row rows[] = {
        {u"", u"\\", 0},
        {u"a", u"\\", 1},
        {u"a\\b\\c", u"\\", 3},
        {u"\\", u"\\", 2},
        {u"a\\", u"\\", 2},
        {u"\\\\", u"\\", 3},
        {u"a::b", u"::", 2},
        // The scan goes on one character behind a hit, so overlaps count again.
        {u"a:::b", u"::", 3},
        {u"abc", u"", 3},  // an empty delimiter is found at every character
    };
    for (const Row& row : rows)
        EXPECT_EQ(CountFields(row.sText, row.sDelimiter), row.nCount)
            << testing::Printable(row.sText);
}

TEST(KillProcessFieldsTest, FieldsAreCountedWithSixteenBits) {
    EXPECT_EQ(CountFields(Text(32'766, u'|'), u"|"), 32'767);
    EXPECT_EQ(testing::Raised([] { CountFields(Text(32'767, u'|'), u"|"); }),
              ErrorNumber::Overflow);
}

TEST(KillProcessFieldsTest, GetsAField) {
    struct Row {
        TextView sText, sDelimiter;
        std::int32_t nRow, nWidth, nColumn;
        TextView sField;
    };
    const Row rows[] = {
        {u"a\\b\\c", u"\\", 0, 0, 0, u"a"},
        {u"a\\b\\c", u"\\", 0, 0, 2, u"c"},
        {u"a\\b\\c", u"\\", 0, 0, 3, u""},
        {u"a\\b\\c", u"\\", 0, 0, 1'000'000, u""},
        {u"a\\b\\c", u"\\", 0, 0, -1, u"a"},
        {u"", u"\\", 0, 0, -1, u""},
        {u"", u"\\", 0, 0, 0, u""},
        {u"a\\\\c", u"\\", 0, 0, 1, u""},
        {u"a\\\\c", u"\\", 0, 0, 2, u"c"},
        {u"a\\", u"\\", 0, 0, 1, u""},
        {u"a::b::c", u"::", 0, 0, 1, u"b"},  // cut by the whole delimiter here
        // As a table of two columns.
        {u"a,b,c,d,e", u",", 0, 2, 1, u"b"},
        {u"a,b,c,d,e", u",", 1, 2, 0, u"c"},
        {u"a,b,c,d,e", u",", 2, 2, 0, u"e"},
        {u"a,b,c,d,e", u",", 2, 2, 1, u""},
        {u"a,b,c,d,e", u",", 7, 0, 1, u"b"},  // no width: the row is not looked at
        {u"a,b", u",", 2'000'000'000, 2'000'000'000, 0, u""},
    };
    for (const Row& row : rows)
        EXPECT_EQ(GetField(row.sText, row.sDelimiter, row.nRow, row.nWidth, row.nColumn),
                  row.sField)
            << testing::Printable(row.sText) << " " << row.nRow << " " << row.nColumn;
}

class MainWindowTest : public ::testing::Test {
  protected:
    memory::MemoryMachine machine;
};

TEST_F(MainWindowTest, TheDesktopFormsTitleComesFirst) {
    machine.desktop.windows = {u"Nomira", u"Longname - Conversion"};
    BringMainWindowToTop();
    EXPECT_EQ(machine.desktop.raised, (std::vector<Text>{u"Longname - Conversion"}));
}

TEST_F(MainWindowTest, TheApplicationsTitleServesWithoutIt) {
    machine.desktop.windows = {u"Something", u"Nomira"};
    BringMainWindowToTop();
    EXPECT_EQ(machine.desktop.raised, (std::vector<Text>{u"Nomira"}));
}

TEST_F(MainWindowTest, NothingHappensWithoutAWindow) {
    machine.desktop.windows = {u"nomira"};  // titles are exact
    BringMainWindowToTop();
    EXPECT_TRUE(machine.desktop.raised.empty());
    EXPECT_TRUE(machine.desktop.boxes.empty());
}

}  // namespace
}  // namespace nomira
