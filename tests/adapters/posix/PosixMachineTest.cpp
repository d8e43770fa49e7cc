#include "adapters/posix/PosixMachine.h"

#include "langtools/CodePage.h"
#include "platform/Platform.h"
#include "testing/TemporaryFolder.h"
#include "testing/TextPrinting.h"

namespace nomira::posix {
namespace {

using nomira::testing::TemporaryFolder;

TEST(PosixMachineTest, BecomesThePlatformOfItsPrefix) {
    TemporaryFolder folder;
    folder.Put("nomira.conf",
               "codepage = 1250\nrefresh-hook = echo x > '" + (folder / "told").string() + "'\n");
    folder.Put("registry.reg", "REGEDIT4\n[HKLM\\Software\\Orvo]\n");
    folder.Put("drives/c/a.txt", "\x9C");
    PosixMachine machine(folder.Path());
    machine.BecomePlatform(u"UPDATE_USERFILES");
    EXPECT_EQ(CommandLine(), Text(u"UPDATE_USERFILES"));
    Text sLine;
    TheFiles().OpenForInput(u"C:\\a.txt")->ReadLine(sLine);
    EXPECT_EQ(sLine, Text(u"ś"));
    Registry::KeyHandle key = 0;
    EXPECT_EQ(TheRegistry().OpenKey(RegistryRoot::LocalMachine, u"Software\\Orvo", key),
              Registry::kSuccess);
    TheClosedLibrary().RefreshConfDb();
    EXPECT_EQ(folder.Bytes("told"), "x\n");
    EXPECT_FALSE(TheProcesses().EnumProcesses().empty());
    EXPECT_FALSE(TheDesktop().PreviousInstance());
    SetPlatform({});
}

TEST(PosixMachineTest, RunsWithoutAPrefix) {
    TemporaryFolder folder;
    PosixMachine machine(folder / "nowhere");
    machine.BecomePlatform(u"");
    Registry::KeyHandle key = 0;
    EXPECT_EQ(TheRegistry().OpenKey(RegistryRoot::LocalMachine, u"Software", key),
              Registry::kFileNotFound);
    EXPECT_TRUE(TheFiles().Dir(u"C:\\*").empty());
    TheClosedLibrary().RefreshConfDb();
    SetPlatform({});
}

TEST(HookClosedLibraryTest, AHookThatFailsIsNotAFailure) {
    HookClosedLibrary("exit 3").RefreshConfDb();
    HookClosedLibrary("/no/such/command 2>/dev/null").RefreshConfDb();
}

}  // namespace
}  // namespace nomira::posix
