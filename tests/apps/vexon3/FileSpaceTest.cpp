#include "apps/vexon3/FileSpace.h"

#include <sys/stat.h>

#include "adapters/posix/NativeName.h"
#include "adapters/rpc/Wire.h"
#include "apps/vexon3/TroubleOf.h"
#include "testing/TemporaryFolder.h"
#include "testing/TextPrinting.h"

namespace nomira::simulator {
namespace {

namespace fs = std::filesystem;
using testing::TemporaryFolder;
using testing::TroubleOf;
using Names = std::vector<Text>;

// A space in a folder, with something beside it that nobody may reach.
class FileSpaceTest : public ::testing::Test {
  protected:
    FileSpaceTest() {
        m_folder.Put("secret.src", "secret");
        m_folder.Put("outside/deep.src", "secret");
        m_folder.Put("space/R1/a.src", "a");
        m_folder.Put("space/R1/B.dat", "b");
        m_folder.Put("space/R1/Program/c.src", "c");
        m_folder.Put("space/R1/Program/Sub/a.src", "deep a");
    }

    std::string OnDisk(std::string_view sName) const { return m_folder.Bytes(sName); }

    TemporaryFolder m_folder;
    FileSpace m_files{m_folder / "space"};
};

TEST_F(FileSpaceTest, ANewSpaceHasItsRoot) {
    const FileSpace fresh(m_folder / "not/there/yet");
    EXPECT_TRUE(fs::is_directory(m_folder / "not/there/yet/R1"));
    EXPECT_EQ(fresh.List(u"TQX:\\*."), (Names{u"R1"}));
    EXPECT_EQ(fresh.AllFiles(), Names{});
}

TEST_F(FileSpaceTest, ADirectoryListsItsFiles) {
    for (const TextView sPath :
         {TextView(u"TQX:\\\\R1\\"), TextView(u"TQX:\\R1"), TextView(u"tqx:\\r1\\"),
          TextView(u"/R1/"), TextView(u"TQX:\\R1\\.\\\\")})
        EXPECT_EQ(m_files.List(sPath), (Names{u"a.src", u"B.dat"}));
    EXPECT_EQ(m_files.List(u"TQX:\\\\R1\\PROGRAM"), (Names{u"c.src"}));
    EXPECT_EQ(m_files.List(u"TQX:\\"), Names{});
}

TEST_F(FileSpaceTest, AMaskChoosesFiles) {
    EXPECT_EQ(m_files.List(u"TQX:\\R1\\*.SRC"), (Names{u"a.src"}));
    EXPECT_EQ(m_files.List(u"TQX:\\R1\\?.dat"), (Names{u"B.dat"}));
    EXPECT_EQ(m_files.List(u"TQX:\\R1\\*"), (Names{u"a.src", u"B.dat"}));
}

TEST_F(FileSpaceTest, AStarAndAPointListDirectories) {
    EXPECT_EQ(m_files.List(u"TQX:\\\\R1\\*."), (Names{u"Program"}));
    EXPECT_EQ(m_files.List(u"TQX:\\R1\\Program\\*."), (Names{u"Sub"}));
}

TEST_F(FileSpaceTest, NoSuchDirectoryIsAFailure) {
    for (const TextView sPath : {TextView(u"TQX:\\R2\\"), TextView(u"TQX:\\R1\\a.src"),
                                 TextView(u"TQX:\\R1\\none\\*.src")})
        EXPECT_EQ(TroubleOf([&] { m_files.List(sPath); }), u"NoSuchDirectory");
}

TEST_F(FileSpaceTest, ALookUpFindsTheFirstByPath) {
    EXPECT_EQ(m_files.Resolve(u"/R1/c.src"), u"TQX:\\R1\\Program\\c.src");
    EXPECT_EQ(m_files.Resolve(u"/r1/C.SRC"), u"TQX:\\R1\\Program\\c.src");
    EXPECT_EQ(m_files.Resolve(u"/R1/a.src"), u"TQX:\\R1\\a.src");
    EXPECT_EQ(m_files.Resolve(u"/R1/PROGRAM/a.src"), u"TQX:\\R1\\Program\\Sub\\a.src");
    for (const TextView sLookup :
         {TextView(u"/R1/none.src"), TextView(u"/R1/Program"), TextView(u"/R1/"), TextView(u""),
          TextView(u"/R2/a.src"), TextView(u"c.src"), TextView(u"/R1/../R1/c.src"),
          TextView(u"/R1/secret.src")})
        EXPECT_EQ(m_files.Resolve(sLookup), u"");
}

TEST_F(FileSpaceTest, FilesAreReadAndWritten) {
    EXPECT_EQ(m_files.Read(u"TQX:\\R1\\Program\\C.SRC"), "c");
    m_files.Write(u"TQX:\\R1\\Program\\C.SRC", std::string("new\0\xFF", 5));
    EXPECT_EQ(OnDisk("space/R1/Program/c.src"), std::string("new\0\xFF", 5));
    m_files.Write(u"tqx:\\r1\\New.src", "x");
    EXPECT_EQ(OnDisk("space/R1/New.src"), "x");
    EXPECT_EQ(m_files.List(u"TQX:\\R1\\"), (Names{u"a.src", u"B.dat", u"New.src"}));
}

TEST_F(FileSpaceTest, AFileLongerThanALineIsNotRead) {
    fs::resize_file(m_folder / "space/R1/a.src", rpc::kMaxLine + 1);
    EXPECT_EQ(TroubleOf([&] { m_files.Read(u"TQX:\\R1\\a.src"); }), u"TooLong");
}

TEST_F(FileSpaceTest, ADeletedFileIsGone) {
    m_files.Delete(u"TQX:\\R1\\A.SRC");
    EXPECT_FALSE(fs::exists(m_folder / "space/R1/a.src"));
    EXPECT_EQ(TroubleOf([&] { m_files.Delete(u"TQX:\\R1\\a.src"); }), u"NoSuchFile");
    EXPECT_EQ(TroubleOf([&] { m_files.Delete(u"TQX:\\R1\\Program"); }), u"NoSuchFile");
    EXPECT_TRUE(fs::exists(m_folder / "space/R1/Program"));
}

TEST_F(FileSpaceTest, WhatIsNotThereCantBeReadOrWritten) {
    EXPECT_EQ(TroubleOf([&] { m_files.Read(u"TQX:\\R1\\none.src"); }), u"NoSuchFile");
    EXPECT_EQ(TroubleOf([&] { m_files.Read(u"TQX:\\R1\\Program"); }), u"NoSuchFile");
    EXPECT_EQ(TroubleOf([&] { m_files.Read(u"TQX:\\R1\\none\\x.src"); }), u"NoSuchDirectory");
    EXPECT_EQ(TroubleOf([&] { m_files.Write(u"TQX:\\R1\\none\\x.src", ""); }), u"NoSuchDirectory");
    EXPECT_EQ(TroubleOf([&] { m_files.Write(u"TQX:\\R1\\Program", ""); }), u"BadPath");
}

TEST_F(FileSpaceTest, NoPathLeadsOut) {
    const Names paths{u"TQX:\\..\\secret.src",
                      u"TQX:\\R1\\..\\..\\secret.src",
                      u"TQX:/R1/../../secret.src",
                      u"/../secret.src",
                      u"/R1/..\\../secret.src",
                      u"C:\\secret.src",
                      u"TQX:C:\\secret.src",
                      u"TQX:\\C:\\secret.src",
                      u"secret.src",
                      u"..\\secret.src",
                      u"",
                      u"TQX:",
                      u"TQX:\\",
                      u"TQX:\\R1\\*.src",
                      u"TQX:\\R1\\a\nb",
                      Text(u"TQX:\\R1\\") + Text(1, 0)};
    for (const Text& sPath : paths) {
        EXPECT_EQ(TroubleOf([&] { m_files.Read(sPath); }), u"BadPath");
        EXPECT_EQ(TroubleOf([&] { m_files.Write(sPath, "taken over"); }), u"BadPath");
        EXPECT_EQ(TroubleOf([&] { m_files.Delete(sPath); }), u"BadPath");
    }
    EXPECT_EQ(TroubleOf([&] { m_files.List(u"TQX:\\..\\"); }), u"BadPath");
    EXPECT_EQ(TroubleOf([&] { m_files.MakeDirectories(u"TQX:\\..\\x"); }), u"BadPath");
    EXPECT_EQ(OnDisk("secret.src"), "secret");
    EXPECT_FALSE(fs::exists(m_folder / "x"));
}

TEST_F(FileSpaceTest, AnAbsolutePathIsOneOfTheSpace) {
    const Text sSecret = posix::FromNative((m_folder / "secret.src").string());
    EXPECT_EQ(TroubleOf([&] { m_files.Read(sSecret); }), u"NoSuchDirectory");
    EXPECT_EQ(TroubleOf([&] { m_files.Write(sSecret, "taken over"); }), u"NoSuchDirectory");
    EXPECT_EQ(OnDisk("secret.src"), "secret");
}

TEST_F(FileSpaceTest, LinksAreNoPartOfTheSpace) {
    fs::create_symlink(m_folder / "secret.src", m_folder / "space/R1/link.src");
    fs::create_directory_symlink(m_folder / "outside", m_folder / "space/R1/Link");
    EXPECT_EQ(m_files.List(u"TQX:\\R1\\"), (Names{u"a.src", u"B.dat"}));
    EXPECT_EQ(m_files.List(u"TQX:\\R1\\*."), (Names{u"Program"}));
    EXPECT_EQ(m_files.Resolve(u"/R1/deep.src"), u"");
    EXPECT_EQ(m_files.Resolve(u"/R1/link.src"), u"");
    EXPECT_EQ(TroubleOf([&] { m_files.Read(u"TQX:\\R1\\link.src"); }), u"NoSuchFile");
    EXPECT_EQ(TroubleOf([&] { m_files.Delete(u"TQX:\\R1\\link.src"); }), u"NoSuchFile");
    EXPECT_EQ(TroubleOf([&] { m_files.Read(u"TQX:\\R1\\Link\\deep.src"); }), u"NoSuchDirectory");
    EXPECT_EQ(TroubleOf([&] { m_files.Write(u"TQX:\\R1\\Link\\deep.src", "x"); }),
              u"NoSuchDirectory");
    m_files.Write(u"TQX:\\R1\\link.src", "mine");  // takes the link's place
    EXPECT_EQ(OnDisk("space/R1/link.src"), "mine");
    EXPECT_EQ(OnDisk("secret.src"), "secret");
    EXPECT_EQ(OnDisk("outside/deep.src"), "secret");
}

TEST_F(FileSpaceTest, WhatTheControllerCantNameIsNoPartOfTheSpace) {
    m_folder.Put("space/R1/back\\slash.src", "x");
    m_folder.Put("space/R1/col:on.src", "x");
    m_folder.Put("space/R1/line\nfeed.src", "x");
    m_folder.Put("space/R1/not\xFFutf8.src", "x");
    ASSERT_EQ(::mkfifo((m_folder / "space/R1/pipe.src").c_str(), 0600), 0);
    EXPECT_EQ(m_files.List(u"TQX:\\R1\\"), (Names{u"a.src", u"B.dat"}));
    EXPECT_EQ(TroubleOf([&] { m_files.Read(u"TQX:\\R1\\pipe.src"); }), u"NoSuchFile");
    EXPECT_EQ(TroubleOf([&] { m_files.Read(u"TQX:\\R1\\col:on.src"); }), u"BadPath");
}

TEST_F(FileSpaceTest, NamesMayHoldAnyLetter) {
    m_folder.Put("space/R1/T\xC3\xBCr.src", "x");
    EXPECT_EQ(m_files.Resolve(u"/R1/T\u00DCR.SRC"), u"TQX:\\R1\\T\u00FCr.src");
}

TEST_F(FileSpaceTest, DirectoriesAreMadeAsFarAsTheyAreMissing) {
    m_files.MakeDirectories(u"TQX:\\r1\\program\\New\\Newer");
    EXPECT_TRUE(fs::is_directory(m_folder / "space/R1/Program/New/Newer"));
    EXPECT_EQ(TroubleOf([&] { m_files.MakeDirectories(u"TQX:\\R1\\a.src\\x"); }), u"FileTrouble");
}

TEST_F(FileSpaceTest, AllFilesComeSorted) {
    EXPECT_EQ(m_files.AllFiles(),
              (Names{u"TQX:\\R1\\a.src", u"TQX:\\R1\\B.dat", u"TQX:\\R1\\Program\\c.src",
                     u"TQX:\\R1\\Program\\Sub\\a.src"}));
}

}  // namespace
}  // namespace nomira::simulator
