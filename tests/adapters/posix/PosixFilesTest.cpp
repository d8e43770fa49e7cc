#include "adapters/posix/PosixFiles.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "adapters/posix/CodePages.h"
#include "adapters/posix/FileStreams.h"
#include "adapters/posix/SystemErrors.h"
#include "langtools/CodePage.h"
#include "testing/Raised.h"
#include "testing/TemporaryFolder.h"
#include "testing/TextPrinting.h"

namespace nomira::posix {
namespace {

namespace fs = std::filesystem;
using nomira::testing::Raised;
using nomira::testing::TemporaryFolder;
using Names = std::vector<Text>;

class PosixFilesTest : public ::testing::Test {
  protected:
    PosixFilesTest() { fs::create_directories(m_folder / "drives/c"); }

    Text Native(std::string_view sName) const { return FromAscii((m_folder / sName).string()); }
    static Text FromAscii(std::string_view s) { return Text(s.begin(), s.end()); }

    TemporaryFolder m_folder;
    Prefix m_prefix{m_folder.Path()};
    PosixFiles m_files{m_prefix};
};

TEST_F(PosixFilesTest, PathsOfThisSystemPassAsTheyAre) {
    m_folder.Put("x/File.txt", "a\r\n");
    EXPECT_EQ(m_files.Dir(Native("x/*.TXT")), Names{u"File.txt"});
    EXPECT_EQ(Raised([&] { m_files.OpenForInput(Native("x/file.txt")); }),
              ErrorNumber::FileNotFound);
    EXPECT_EQ(Raised([&] { m_files.OpenForInput(Native("x\\File.txt")); }), std::nullopt);
    EXPECT_EQ(Raised([&] { m_files.OpenForInput(Native("x")); }), ErrorNumber::PathFileAccess);
    EXPECT_EQ(Raised([&] { m_files.OpenForInput(Native("y/z")); }), ErrorNumber::PathNotFound);
}

TEST_F(PosixFilesTest, ReadOnlyIsTheOwnersWriteBitForTheSuperuserToo) {
    m_folder.Put("drives/c/a.txt", "old");
    fs::permissions(m_folder / "drives/c/a.txt", fs::perms(0464));
    EXPECT_EQ(m_files.GetAttr(u"C:\\a.txt"), AttributeReadOnly | AttributeArchive);
    EXPECT_EQ(Raised([&] { m_files.OpenForOutput(u"C:\\a.txt"); }), ErrorNumber::PathFileAccess);
    EXPECT_EQ(m_folder.Bytes("drives/c/a.txt"), "old");
}

TEST_F(PosixFilesTest, SettingReadOnlyChangesTheWriteBitsAlone) {
    m_folder.Put("drives/c/a.txt", "");
    const fs::path file = m_folder / "drives/c/a.txt";
    fs::permissions(file, fs::perms(0775));
    m_files.SetAttr(u"C:\\a.txt", AttributeReadOnly);
    EXPECT_EQ(fs::status(file).permissions(), fs::perms(0555));
    m_files.SetAttr(u"C:\\a.txt", AttributeArchive | AttributeHidden);
    EXPECT_EQ(fs::status(file).permissions(), fs::perms(0755));
}

TEST_F(PosixFilesTest, ANameWithADotInFrontIsHiddenWhateverIsSet) {
    m_folder.Put("drives/c/.x", "");
    m_files.SetAttr(u"C:\\.x", AttributeArchive);
    EXPECT_EQ(m_files.GetAttr(u"C:\\.x"), AttributeHidden | AttributeArchive);
    EXPECT_EQ(m_files.Dir(u"C:\\*"), Names{});
    EXPECT_EQ(m_files.Dir(u"C:\\*", AttributeHidden), Names{u".x"});
    EXPECT_EQ(Raised([&] { m_files.Kill(u"C:\\*"); }), ErrorNumber::FileNotFound);
}

TEST_F(PosixFilesTest, OutputKeepsTheFileItself) {
    m_folder.Put("drives/c/a.txt", "old and long");
    fs::permissions(m_folder / "drives/c/a.txt", fs::perms(0640));
    fs::create_hard_link(m_folder / "drives/c/a.txt", m_folder / "link");
    m_files.OpenForOutput(u"C:\\A.TXT")->PrintLine(u"new");
    EXPECT_EQ(m_folder.Bytes("link"), "new\r\n");
    EXPECT_EQ(fs::status(m_folder / "link").permissions(), fs::perms(0640));
}

TEST_F(PosixFilesTest, APipeIsNoFileAndNobodyWaitsForIt) {
    ASSERT_EQ(::mkfifo((m_folder / "drives/c/pipe").c_str(), 0600), 0);
    EXPECT_EQ(Raised([&] { m_files.OpenForInput(u"C:\\pipe"); }), ErrorNumber::DeviceIo);
    EXPECT_EQ(Raised([&] { m_files.OpenForOutput(u"C:\\pipe"); }), ErrorNumber::DeviceIo);
}

TEST_F(PosixFilesTest, ADeviceTakesLines) {
    const auto file = m_files.OpenForOutput(u"/dev/null");
    file->PrintLine(u"x");
    file->Close();
    EXPECT_TRUE(m_files.OpenForInput(u"/dev/null")->AtEnd());
}

TEST_F(PosixFilesTest, AFullDiskIsToldWhenTheFileIsClosed) {
    const auto file = m_files.OpenForOutput(u"/dev/full");
    file->PrintLine(u"x");
    EXPECT_EQ(Raised([&] { file->Close(); }), ErrorNumber::DiskFull);
    EXPECT_EQ(Raised([&] { file->Close(); }), std::nullopt);
}

TEST_F(PosixFilesTest, AFullDiskIsToldAtALineWhenTheBufferIsFull) {
    const auto file = m_files.OpenForOutput(u"/dev/full");
    EXPECT_EQ(Raised([&] { file->PrintLine(Text(kStreamBuffer, u'x')); }), ErrorNumber::DiskFull);
}

TEST_F(PosixFilesTest, AFullDiskIsKeptQuietByAFileThatGoesOutOfUse) {
    EXPECT_EQ(Raised([&] { m_files.OpenForOutput(u"/dev/full")->PrintLine(u"x"); }), std::nullopt);
}

TEST_F(PosixFilesTest, ALinkToNothingIsNotListed) {
    fs::create_symlink("nowhere", m_folder / "drives/c/link.txt");
    EXPECT_EQ(m_files.Dir(u"C:\\*"), Names{});
    EXPECT_EQ(Raised([&] { m_files.OpenForInput(u"C:\\link.txt"); }), ErrorNumber::FileNotFound);
}

TEST_F(PosixFilesTest, ALinkedDriveIsADriveLikeAnyOther) {
    m_folder.Put("elsewhere/File.txt", "a");
    fs::create_directory_symlink(m_folder / "elsewhere", m_folder / "drives/d");
    EXPECT_EQ(m_files.Drives(), (Names{u"C:", u"D:"}));
    EXPECT_EQ(m_files.Dir(u"D:\\*"), Names{u"File.txt"});
    m_files.OpenForOutput(u"D:\\FILE.TXT")->PrintLine(u"b");
    EXPECT_EQ(m_folder.Bytes("elsewhere/File.txt"), "b\r\n");
}

TEST_F(PosixFilesTest, ANameThatIsNoUtf8CanBeListedAndOpened) {
    m_folder.Put("drives/c/F\xFCllstand.txt", "x");
    const Names names = m_files.Dir(u"C:\\*");
    ASSERT_EQ(names.size(), 1U);
    EXPECT_EQ(Raised([&] { m_files.OpenForInput(u"C:\\" + names[0]); }), std::nullopt);
}

TEST_F(PosixFilesTest, ANameThatIsTooLongIsABadName) {
    const Text sPath = u"C:\\" + Text(300, u'x');
    EXPECT_EQ(Raised([&] { m_files.OpenForInput(sPath); }), ErrorNumber::BadFileName);
    EXPECT_EQ(Raised([&] { m_files.OpenForOutput(sPath); }), ErrorNumber::BadFileName);
}

TEST_F(PosixFilesTest, WithoutAPrefixThereIsNoDrive) {
    const Prefix prefix(m_folder / "nowhere");
    PosixFiles files(prefix);
    EXPECT_EQ(Raised([&] { files.OpenForInput(u"C:\\x"); }), ErrorNumber::DeviceUnavailable);
    EXPECT_EQ(Raised([&] { files.OpenForOutput(u"C:\\x"); }), ErrorNumber::DeviceUnavailable);
    EXPECT_EQ(Raised([&] { files.MkDir(u"C:\\x"); }), ErrorNumber::DeviceUnavailable);
    EXPECT_EQ(files.Dir(u"C:\\*"), Names{});
    EXPECT_EQ(files.Drives(), Names{});
    EXPECT_FALSE(fs::exists(m_folder / "nowhere"));
}

TEST_F(PosixFilesTest, APlacedFileIsSeenInItsDirectory) {
    m_folder.Put("store/where.db", "data");
    m_folder.Put("drives/c/tqx/data/ORVO_CON.MDB", "shadowed");
    m_folder.Put("nomira.conf",
                 "path C:\\tqx\\data\\orvo_con.mdb = " + (m_folder / "store/where.db").string() +
                     "\npath C:\\tqx\\data\\missing.mdb = /nowhere/x\n");
    const Prefix prefix(m_folder.Path());
    PosixFiles files(prefix);
    EXPECT_EQ(files.Dir(u"C:\\TQX\\data\\orvo_CON.mdb"), Names{u"orvo_con.mdb"});
    EXPECT_EQ(files.Dir(u"C:\\tqx\\data\\*.mdb"), Names{u"orvo_con.mdb"});
    files.Kill(u"C:\\tqx\\data\\orvo_con.mdb");
    EXPECT_FALSE(fs::exists(m_folder / "store/where.db"));
    m_folder.Put("drives/c/tqx/data/xxx_con.mdb", "compacted");
    files.Name(u"C:\\TQX\\Data\\xxx_con.mdb", u"C:\\tqx\\data\\orvo_con.mdb");
    EXPECT_EQ(m_folder.Bytes("store/where.db"), "compacted");
    EXPECT_EQ(m_folder.Bytes("drives/c/tqx/data/ORVO_CON.MDB"), "shadowed");
}

TEST_F(PosixFilesTest, AFileMovesBetweenFileSystems) {
    const TemporaryFolder other("/dev/shm");
    struct stat here, there;
    ASSERT_EQ(::stat(m_folder.Path().c_str(), &here), 0);
    ASSERT_EQ(::stat(other.Path().c_str(), &there), 0);
    ASSERT_NE(here.st_dev, there.st_dev);
    fs::create_directory_symlink(other.Path(), m_folder / "drives/e");
    m_folder.Put("drives/c/a.txt", "x");
    m_files.Name(u"C:\\a.txt", u"E:\\b.txt");
    EXPECT_EQ(other.Bytes("b.txt"), "x");
    EXPECT_EQ(m_files.Dir(u"C:\\*"), Names{});
    fs::create_directory(m_folder / "drives/c/dir");
    EXPECT_EQ(Raised([&] { m_files.Name(u"C:\\dir", u"E:\\dir"); }), ErrorNumber::PathFileAccess);
}

TEST_F(PosixFilesTest, OfALargeFileNoMoreIsReadAheadThanTheBufferHolds) {
    const Text sExpected(1022, u'x');
    {
        std::ofstream out(m_folder / "large.txt", std::ios::binary);
        for (int n = 0; n < 100 * 1024; ++n)
            out << std::string(sExpected.size(), 'x') << "\r\n";
    }
    Descriptor file(::open((m_folder / "large.txt").c_str(), O_RDONLY));
    const int nFd = file.Get();
    PosixInputFile input(std::move(file));
    Text sLine;
    off_t nConsumed = 0;
    for (; !input.AtEnd(); nConsumed += 1024) {
        input.ReadLine(sLine);
        ASSERT_EQ(sLine, sExpected);
        ASSERT_LE(::lseek(nFd, 0, SEEK_CUR) - nConsumed - 1024, off_t{kStreamBuffer});
    }
    EXPECT_EQ(nConsumed, off_t{100} * 1024 * 1024);
    EXPECT_LT(sizeof input, 2 * kStreamBuffer);
}

TEST_F(PosixFilesTest, LinesAreInTheSystemsPage) {
    SingleBytePage::Table table{};
    table['A'] = u'Ж';
    const SingleBytePage page(9999, table);
    SetSystemCodePage(&page);
    m_folder.Put("drives/c/a.txt", "A");
    Text sLine;
    m_files.OpenForInput(u"C:\\a.txt")->ReadLine(sLine);
    m_files.OpenForOutput(u"C:\\b.txt")->PrintLine(u"Жü");
    SetSystemCodePage(nullptr);
    EXPECT_EQ(sLine, Text(u"Ж"));
    EXPECT_EQ(m_folder.Bytes("drives/c/b.txt"), "A?\r\n");
}

// A long text goes out in pieces, which must not show.
TEST_F(PosixFilesTest, ALongTextIsWrittenWhole) {
    const std::unique_ptr<CodePage> utf8 = MakeCodePage(65001);
    SetSystemCodePage(utf8.get());
    for (const std::size_t nAhead : {kStreamBuffer - 2, kStreamBuffer - 1, kStreamBuffer}) {
        const Text sText = Text(nAhead, u'x') + u"\U0001F6A7" + Text(2 * kStreamBuffer, u'y');
        m_files.OpenForOutput(u"C:\\long.txt")->PrintLine(sText);
        EXPECT_TRUE(m_folder.Bytes("drives/c/long.txt") == utf8->Encode(sText) + "\r\n") << nAhead;
    }
    SetSystemCodePage(nullptr);
}

TEST(SystemErrorsTest, TheSystemsCodesHaveTheOldNumbers) {
    using Op = FileOperation;
    const struct {
        int nErrno;
        FileOperation operation;
        int nNumber;
    } rows[] = {
        {ENOENT, Op::Open, 53},
        {ENOTDIR, Op::Open, 76},
        {EISDIR, Op::Open, 75},
        {EACCES, Op::Open, 75},
        {EPERM, Op::Change, 75},
        {EROFS, Op::Open, 75},
        {ELOOP, Op::Open, 75},
        {ENOTEMPTY, Op::RemoveDirectory, 75},
        {EBUSY, Op::RemoveDirectory, 75},
        {EBUSY, Op::Open, 70},
        {EEXIST, Op::Change, 58},
        {EEXIST, Op::MakeDirectory, 75},
        {ENOSPC, Op::ReadOrWrite, 61},
        {EDQUOT, Op::ReadOrWrite, 61},
        {EFBIG, Op::ReadOrWrite, 61},
        {ENODEV, Op::Open, 68},
        {ENXIO, Op::Open, 68},
        {ENAMETOOLONG, Op::Open, 52},
        {EINVAL, Op::Open, 52},
        {EINVAL, Op::ReadOrWrite, 57},
        {EIO, Op::ReadOrWrite, 57},
        {EAGAIN, Op::ReadOrWrite, 57},
        {EAGAIN, Op::Open, 70},
        {EMFILE, Op::Open, 75},
        {ETXTBSY, Op::Open, 75},
        {123456, Op::Open, 57},
    };
    for (const auto& row : rows)
        EXPECT_EQ(static_cast<int>(ErrorNumberOf(row.nErrno, row.operation)), row.nNumber)
            << row.nErrno;
}

}  // namespace
}  // namespace nomira::posix
