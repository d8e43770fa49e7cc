#include <string>

#include "langtools/CParser.h"
#include "langtools/CodePage.h"
#include "link/LinkFixture.h"
#include "platform/ForwardingFiles.h"
#include "testing/ForwardingPorts.h"

namespace nomira::testing {
namespace {

using namespace std::string_literals;

class ProgramTransferTest : public LinkFixture {
  protected:
    void PutOnDisk(std::initializer_list<TextView> names) {
        for (const TextView sName : names)
            m_machine.files.Put(Text(u"C:\\Temp\\").append(sName), "disk");
    }
};

// ---- Lists ----

TEST_F(ProgramTransferTest, ListIsAddedToWhatWasThere) {
    m_library.listings[u"TQX:\\R1\\"] = {u"a.src", u"b.src"};
    Text sDir = u"before\n";
    EXPECT_TRUE(Linked().GetRobotDirectory(sDir, u"R1\\"));
    EXPECT_EQ(sDir, u"before\na.src\nb.src\n");
    EXPECT_EQ(Calls(), Texts{u"ListDirectory(TQX:\\R1\\, 0, 5)"});
}

TEST_F(ProgramTransferTest, ListWithoutAMaskIsThatOfTheWholeSpace) {
    m_library.listings[u"TQX:\\"] = {u"R1"};
    Text sDir;
    EXPECT_TRUE(Linked().GetRobotDirectory(sDir));
    EXPECT_EQ(sDir, u"R1\n");
}

TEST_F(ProgramTransferTest, FailedListLeavesTheText) {
    Fail(u"ListDirectory");
    Text sDir = u"before";
    EXPECT_FALSE(Linked().GetRobotDirectory(sDir, u"R1\\"));
    EXPECT_EQ(sDir, u"before");
    EXPECT_EQ(g_Comm().GetRobotFileList(), u"");
}

TEST_F(ProgramTransferTest, ListsOfTheRootHaveTheirMasks) {
    m_library.listings[u"TQX:\\\\R1\\"] = {u"a.src"};
    m_library.listings[u"TQX:\\\\R1\\*."] = {u"Program"};
    Linked();
    EXPECT_EQ(g_Comm().GetRobotFileList(), u"a.src\n");
    EXPECT_EQ(g_Comm().GetRobotDirList(), u"Program\n");
}

TEST_F(ProgramTransferTest, ParticularListTellsFirstLevelFromTheRest) {
    Linked();
    for (const auto& [sPath, sAsked] :
         {std::pair<TextView, TextView>{u"Program", u"TQX:\\\\R1\\Program\\"},
          {u"R1\\Program", u"TQX:\\\\R1\\Program"},
          {u"R1\\Program\\Sub", u"TQX:\\\\R1\\Program\\Sub"},
          {u"", u"TQX:\\\\R1\\\\"},
          {u"Program\\", u"TQX:\\\\R1\\Program\\\\"}}) {
        m_library.calls.clear();
        m_library.listings[Text(sAsked)] = {u"x.src"};
        EXPECT_EQ(g_Comm().GetParticularFileList(sPath), u"x.src\n") << Printable(sPath);
        EXPECT_EQ(Calls(), Texts{u"ListDirectory(" + Text(sAsked) + u", 0, 5)"});
    }
}

TEST_F(ProgramTransferTest, ParticularListLeavesTheSharedParserAlone) {
    Linked();
    g_Parser().Parse(u"one two three");
    g_Comm().GetParticularFileList(u"R1\\Program");
    EXPECT_EQ(g_Parser().count(), 3);
}

// ---- Disk to controller ----

TEST_F(ProgramTransferTest, KnownFileGoesBackToWhereItWas) {
    PutOnDisk({u"x.src"});
    m_library.PutFile(u"TQX:\\R1\\Program\\x.src", "old");
    EXPECT_TRUE(Linked().DownLoadDiskToRobot(u"C:\\Temp\\x.src"));
    EXPECT_EQ(Calls(), (Texts{u"ResolvePath(/R1/x.src)",
                              u"CopyFile(C:\\Temp\\x.src, TQX:\\R1\\Program\\x.src, 64)"}));
    EXPECT_EQ(m_library.FileBytes(u"TQX:\\R1\\Program\\x.src"), "disk");
}

TEST_F(ProgramTransferTest, NewFileGoesIntoTheRoot) {
    PutOnDisk({u"x.src"});
    Linked();
    EXPECT_TRUE(g_Comm().PutFileFromDiskToRobot(u"C:\\Temp\\x.src"));
    EXPECT_EQ(Calls(), (Texts{u"ResolvePath(/R1/x.src)",
                              u"CopyFile(C:\\Temp\\x.src, TQX:\\R1\\x.src, 64)"}));
}

TEST_F(ProgramTransferTest, NameWithoutAnExtensionIsNotCopied) {
    PutOnDisk({u"x"});
    EXPECT_FALSE(Linked().DownLoadDiskToRobot(u"C:\\Temp\\x"));
    EXPECT_EQ(Calls(), Texts{});
}

TEST_F(ProgramTransferTest, BarNamesTheTargetWithoutAnyCheck) {
    PutOnDisk({u"x.src", u"noext"});
    EXPECT_TRUE(Linked().DownLoadDiskToRobot(u"C:\\Temp\\x.src | TQX:\\R1\\Program\\y.src"));
    EXPECT_TRUE(Linked().DownLoadDiskToRobot(u"C:\\Temp\\x.src|TQX:\\R1\\y"));
    EXPECT_EQ(Calls(), Texts{u"CopyFile(C:\\Temp\\x.src, TQX:\\R1\\y, 64)"});
    EXPECT_EQ(m_library.FileBytes(u"TQX:\\R1\\Program\\y.src"), "disk");
    EXPECT_EQ(m_library.FileBytes(u"TQX:\\R1\\y"), "disk");
}

TEST_F(ProgramTransferTest, FirstBarSeparatesSourceFromTarget) {
    Fail(u"CopyFile");
    EXPECT_FALSE(Linked().DownLoadDiskToRobot(u" a | b | c "));
    EXPECT_TRUE(WasCalled(u"CopyFile(a, b | c, 64)"));
    EXPECT_FALSE(Linked().DownLoadDiskToRobot(u"|TQX:\\R1\\y.src"));
    EXPECT_TRUE(WasCalled(u"CopyFile(, TQX:\\R1\\y.src, 64)"));
}

TEST_F(ProgramTransferTest, WildcardsAndABarDoNotGoTogether) {
    PutOnDisk({u"x.src"});
    for (const TextView sName :
         {u"C:\\Temp\\*.src|TQX:\\R1\\", u"C:\\Temp\\?.src|TQX:\\R1\\", u"C:\\x.src|TQX:\\*"})
        EXPECT_FALSE(Linked().DownLoadDiskToRobot(sName)) << Printable(sName);
    EXPECT_EQ(Calls(), Texts{});
}

TEST_F(ProgramTransferTest, EveryMatchingFileGoesItsOwnWay) {
    PutOnDisk({u"a.src", u"B.SRC", u"c.dat", u"sub.src\\d.src"});
    m_library.PutFile(u"TQX:\\R1\\Program\\a.src", "old");
    EXPECT_TRUE(Linked().DownLoadDiskToRobot(u"C:\\Temp\\*.src"));
    EXPECT_EQ(Calls(), (Texts{u"ResolvePath(/R1/a.src)",
                              u"CopyFile(C:\\Temp\\a.src, TQX:\\R1\\Program\\a.src, 64)",
                              u"ResolvePath(/R1/B.SRC)",
                              u"CopyFile(C:\\Temp\\B.SRC, TQX:\\R1\\B.SRC, 64)"}));
}

TEST_F(ProgramTransferTest, WildcardsWithoutADirectoryHaveEntriesAsSources) {
    m_machine.files.Put(u"C:\\a.src", "disk");
    EXPECT_TRUE(Linked().DownLoadDiskToRobot(u"?.src"));
    EXPECT_TRUE(WasCalled(u"CopyFile(a.src, TQX:\\R1\\a.src, 64)"));
}

TEST_F(ProgramTransferTest, NothingThatMatchesIsTrue) {
    PutOnDisk({u"a.dat"});
    EXPECT_TRUE(Linked().DownLoadDiskToRobot(u"C:\\Temp\\*.src"));
    EXPECT_TRUE(Linked().DownLoadDiskToRobot(u"C:\\None\\*.src"));
    EXPECT_EQ(Calls(), Texts{});
}

class UnlistableFiles : public ForwardingFiles {
  public:
    using ForwardingFiles::ForwardingFiles;
    Texts Dir(TextView, std::uint16_t) override { Raise(ErrorNumber::DiskNotReady); }
};

TEST_F(ProgramTransferTest, ListingThatFailsIsAnEmptyOne) {
    UnlistableFiles files(m_machine.files);
    Platform platform = PortsOf(m_machine);
    platform.files = &files;
    SetPlatform(platform);
    EXPECT_TRUE(Linked().DownLoadDiskToRobot(u"A:\\*.src"));
    EXPECT_EQ(Calls(), Texts{});
}

TEST_F(ProgramTransferTest, MatchingFileWithoutAnExtensionEndsTheRun) {
    PutOnDisk({u"a.src", u"b", u"c.src"});
    EXPECT_FALSE(Linked().DownLoadDiskToRobot(u"C:\\Temp\\*"));
    EXPECT_EQ(m_library.FileBytes(u"TQX:\\R1\\a.src"), "disk");
    EXPECT_EQ(m_library.FileBytes(u"TQX:\\R1\\c.src"), std::nullopt);
}

TEST_F(ProgramTransferTest, FailureUnderWildcardsGoesToTheCaller) {
    PutOnDisk({u"a.src"});
    cVexonComm& inner = Linked();
    Fail(u"CopyFile");
    EXPECT_EQ(Raised([&] { inner.DownLoadDiskToRobot(u"C:\\Temp\\*.src"); }),
              ErrorNumber::LinkFailure);
    EXPECT_EQ(Raised([&] { g_Comm().PutFileFromDiskToRobot(u"C:\\Temp\\*.src"); }),
              ErrorNumber::LinkFailure);
    EXPECT_EQ(inner.VexonError(), u"");
}

TEST_F(ProgramTransferTest, UnlinkedTransfersMakeNoCall) {
    PutOnDisk({u"x.src"});
    cVexonComm& inner = Linked();
    m_library.bMiddlewareRuns = false;
    inner.ConnectToVexon(u"Form");
    m_library.calls.clear();
    Text sPath = u"C:\\Temp";
    EXPECT_FALSE(inner.DownLoadDiskToRobot(u"C:\\Temp\\x.src"));
    EXPECT_FALSE(inner.DownLoadDiskToRobot(u"C:\\Temp\\*.src"));
    EXPECT_FALSE(inner.DownLoadDiskToRobot(u"C:\\Temp\\x.src|TQX:\\R1\\x.src"));
    EXPECT_FALSE(inner.DownLoadMemToRobot(u"x.src", u"x"));
    EXPECT_FALSE(inner.UpLoadFromRobotToDisk(u"x.src", sPath));
    EXPECT_EQ(Calls(), Texts{});
    EXPECT_EQ(sPath, u"C:\\Temp\\") << "the path gets its end first";
}

// ---- Memory to controller ----

TEST_F(ProgramTransferTest, TextGoesToTheControllerInTheCodePage) {
    EXPECT_TRUE(Linked().DownLoadMemToRobot(u"C:\\any\\x.src", u"T\u00FCr \u20AC\u0416"));
    EXPECT_EQ(Calls(), (Texts{u"ListDirectory(TQX:\\, 0, 5)",
                              u"WriteFileFromMemory(6 bytes, TQX:\\R1\\x.src, 4160)"}));
    EXPECT_EQ(m_library.FileBytes(u"TQX:\\R1\\x.src"), "T\xFCr \x80?");
}

TEST_F(ProgramTransferTest, TextOfAKnownFileGoesToWhereItWas) {
    m_library.listings[u"TQX:\\"] = {u"X.SRC"};
    m_library.PutFile(u"TQX:\\R1\\Program\\X.SRC", "old");
    EXPECT_TRUE(Linked().DownLoadMemToRobot(u"x.src", u"new"));
    EXPECT_EQ(m_library.FileBytes(u"TQX:\\R1\\Program\\x.src"), "new");
    EXPECT_FALSE(m_library.FileBytes(u"TQX:\\R1\\x.src"));
}

// The name counts as known inside of another one, too, and the look-up may then give no path.
TEST_F(ProgramTransferTest, NameInsideOfAnotherCountsAsKnown) {
    m_library.listings[u"TQX:\\"] = {u"max.src"};
    EXPECT_FALSE(Linked().DownLoadMemToRobot(u"x.src", u"new"));
    EXPECT_TRUE(WasCalled(u"WriteFileFromMemory(3 bytes, , 4160)"));
}

TEST_F(ProgramTransferTest, TextNeedsANameWithAnExtension) {
    EXPECT_FALSE(Linked().DownLoadMemToRobot(u"x", u"new"));
    EXPECT_EQ(Calls(), Texts{});
}

TEST_F(ProgramTransferTest, TextGoesToTheRootIfTheListFails) {
    m_library.PutFile(u"TQX:\\R1\\Program\\x.src", "old");
    Fail(u"ListDirectory");
    EXPECT_TRUE(Linked().DownLoadMemToRobot(u"x.src", u"new"));
    EXPECT_EQ(m_library.FileBytes(u"TQX:\\R1\\x.src"), "new");
}

TEST_F(ProgramTransferTest, BytesOfATextHaveNoTerminator) {
    const cVexonComm comm;
    std::string bytes = "old";
    EXPECT_TRUE(comm.Str2ByteArray(u"\u00E4b\0c\u2260"s, bytes));
    EXPECT_EQ(bytes, std::string("\xE4"
                                 "b\0c?",
                                 5));
}

// ---- Controller to disk ----

TEST_F(ProgramTransferTest, FileIsFetchedIntoTheDirectory) {
    m_machine.files.PutDirectory(u"C:\\Temp");
    m_library.PutFile(u"TQX:\\R1\\Program\\x.src", "robot");
    Text sPath = u"C:\\Temp";
    EXPECT_TRUE(Linked().UpLoadFromRobotToDisk(u"x.src", sPath));
    EXPECT_EQ(sPath, u"C:\\Temp\\");
    EXPECT_EQ(Calls(), (Texts{u"ResolvePath(/R1/x.src)",
                              u"CopyFile(TQX:\\R1\\Program\\x.src, C:\\Temp\\x.src, 4160)"}));
    EXPECT_EQ(m_machine.files.Bytes(u"C:\\Temp\\x.src"), "robot");
    EXPECT_TRUE(Linked().UpLoadFromRobotToDisk(u"TQX:\\R1\\Program\\x.src", sPath));
    EXPECT_EQ(sPath, u"C:\\Temp\\");
    EXPECT_TRUE(g_Comm().PutFileFromRobotToDisk(u"x.src", u"C:\\Temp"));
}

TEST_F(ProgramTransferTest, FileThatTheLookUpDoesNotKnowIsLeftToTheLibrarysRefusal) {
    Text sPath = u"C:\\Temp";
    EXPECT_FALSE(Linked().UpLoadFromRobotToDisk(u"x.src", sPath));
    EXPECT_TRUE(WasCalled(u"CopyFile(, , 4160)"));
    EXPECT_NE(Linked().VexonError(), u"");
}

TEST_F(ProgramTransferTest, NameWithoutAnExtensionIsFoundButNotFetched) {
    m_library.lookUps[u"/R1/"] = u"TQX:\\R1\\Program\\x.src";
    Text sPath = u"C:\\Temp";
    EXPECT_TRUE(Linked().UpLoadFromRobotToDisk(u"x", sPath));
    EXPECT_EQ(Calls(), Texts{u"ResolvePath(/R1/)"});
    m_library.lookUps.clear();
    EXPECT_FALSE(Linked().UpLoadFromRobotToDisk(u"x", sPath));
    EXPECT_TRUE(WasCalled(u"CopyFile(, , 4160)"));
}

// ---- Controller to memory ----

TEST_F(ProgramTransferTest, FileBecomesTextUpToTheFirstZero) {
    m_library.PutFile(u"TQX:\\R1\\Program\\x.src", std::string("T\xFCr\r\n\x80\0rest", 11));
    Text sFile = u"old";
    EXPECT_TRUE(Linked().UpLoadFromRobotToMem(u"C:\\x.src", sFile));
    EXPECT_EQ(sFile, u"T\u00FCr\r\n\u20AC");
    EXPECT_EQ(Calls(), (Texts{u"ResolvePath(/R1/x.src)",
                              u"ReadFileToMemory(TQX:\\R1\\Program\\x.src, 4160)"}));
}

TEST_F(ProgramTransferTest, UnreadableFileLeavesTheText) {
    Text sFile = u"old";
    EXPECT_FALSE(Linked().UpLoadFromRobotToMem(u"x.src", sFile));
    EXPECT_EQ(sFile, u"old");
}

TEST_F(ProgramTransferTest, FetchIntoMemoryDoesNotCheckTheName) {
    Text sFile;
    EXPECT_FALSE(Linked().UpLoadFromRobotToMem(u"x", sFile));
    EXPECT_TRUE(WasCalled(u"ResolvePath(/R1/)"));
    EXPECT_TRUE(WasCalled(u"ReadFileToMemory(, 4160)"));
}

// ---- Programs and I/O ----

TEST_F(ProgramTransferTest, ProgramIsDeletedWhereItLies) {
    m_library.PutFile(u"TQX:\\R1\\Program\\x.src", "x");
    EXPECT_TRUE(Linked().DeleteRobotProgram(u"/R1/x.src"));
    EXPECT_EQ(Calls(),
              (Texts{u"ResolvePath(/R1/x.src)", u"DeleteFile(TQX:\\R1\\Program\\x.src, -1)"}));
    EXPECT_FALSE(Linked().DeleteRobotProgram(u"x.src"));
    m_library.calls.clear();
    EXPECT_FALSE(Linked().DeleteRobotProgram(u"x"));
    EXPECT_EQ(Calls(), Texts{});
}

TEST_F(ProgramTransferTest, StopsHaveTheirLevels) {
    EXPECT_TRUE(Linked().RobotLevelStop());
    EXPECT_EQ(Calls(), Texts{u"StopProgram(1)"});
    EXPECT_TRUE(Linked().ControlLevelStop());
    EXPECT_EQ(Calls(), Texts{u"StopProgram(0)"});
}

TEST_F(ProgramTransferTest, ControlLevelRunsTheProgramOfTheVariable) {
    m_library.SetVariable(u"$PRO_I_O[]", u"\"/R1/PROG\"(x)");
    EXPECT_TRUE(Linked().RunControlLevel());
    EXPECT_EQ(Calls(), (Texts{u"ReadVar($PRO_I_O[])", u"SelectProgram(/R1/PROG, , 0)"}));
}

TEST_F(ProgramTransferTest, ControlLevelRunsTheProgramNamed) {
    for (const auto& [sName, sPath] : {std::pair<TextView, TextView>{u"/R1/PROG", u"/R1/PROG"},
                                       {u"a=\"/R1/b\"c\"=d(e)(f", u"/R1/bc=d"},
                                       {u"x(y=z", u"z"},
                                       {u"=", u""}}) {
        EXPECT_TRUE(Linked().RunControlLevel(sName));
        EXPECT_EQ(Calls(), Texts{u"SelectProgram(" + Text(sPath) + u", , 0)"}) << Printable(sName);
    }
}

TEST_F(ProgramTransferTest, ControlLevelRunsNothingIfTheVariableCannotBeRead) {
    EXPECT_TRUE(Linked().RunControlLevel());
    EXPECT_TRUE(WasCalled(u"SelectProgram(, , 0)"));
}

TEST_F(ProgramTransferTest, ModuleIsSelectedByItsFullPath) {
    m_library.PutFile(u"TQX:\\R1\\Program\\x.src", "x");
    Text sFile = u"C:\\x.src";
    EXPECT_TRUE(Linked().SelectModul(sFile, u"a, b"));
    EXPECT_EQ(sFile, u"TQX:\\R1\\Program\\x.src");
    EXPECT_TRUE(WasCalled(u"SelectProgram(TQX:\\R1\\Program\\x.src, a, b, 0)"));
    sFile = u"x.src";
    EXPECT_TRUE(Linked().SelectModul(sFile, u"", true));
    EXPECT_TRUE(WasCalled(u"SelectProgram(TQX:\\R1\\Program\\x.src, , -1)"));
}

TEST_F(ProgramTransferTest, ModuleThatIsNoFileNameIsEmptiedAndNotSelected) {
    Text sFile = u"C:\\x";
    EXPECT_FALSE(Linked().SelectModul(sFile, u""));
    EXPECT_EQ(sFile, u"");
    EXPECT_EQ(Calls(), Texts{});
}

TEST_F(ProgramTransferTest, UnknownModuleIsSelectedByAnEmptyPath) {
    Text sFile = u"x.src";
    EXPECT_TRUE(Linked().SelectModul(sFile, u""));
    EXPECT_EQ(sFile, u"");
    EXPECT_TRUE(WasCalled(u"SelectProgram(, , 0)"));
}

TEST_F(ProgramTransferTest, ModuleKeepsItsNameWhereTheLookUpFails) {
    Fail(u"ResolvePath");
    Text sFile = u"C:\\x.src";
    EXPECT_FALSE(Linked().SelectModul(sFile, u""));
    EXPECT_EQ(sFile, u"x.src");
    EXPECT_FALSE(WasCalled(u"SelectProgram(x.src, , 0)"));
}

TEST_F(ProgramTransferTest, CancelIsTheRobotsUnlessTheTimeOutIsMinusOne) {
    EXPECT_TRUE(Linked().CancelModul());
    EXPECT_EQ(Calls(), Texts{u"CancelProgram(1)"});
    EXPECT_TRUE(Linked().CancelModul(0));
    EXPECT_EQ(Calls(), Texts{u"CancelProgram(1)"});
    EXPECT_TRUE(Linked().CancelModul(-1));
    EXPECT_EQ(Calls(), (Texts{u"StopProgram(0)", u"CancelProgram(0)"}));
}

TEST_F(ProgramTransferTest, CancelGoesOnBehindAFailedStop) {
    Fail(u"StopProgram");
    EXPECT_TRUE(Linked().CancelModul(-1));
    EXPECT_TRUE(WasCalled(u"CancelProgram(0)"));
}

TEST_F(ProgramTransferTest, BusIsRestartedByItsCommand) {
    EXPECT_TRUE(Linked().IO_Restart(3));
    EXPECT_EQ(Calls(), Texts{u"RestartIo(12, 3, 0)"});
}

}  // namespace
}  // namespace nomira::testing
