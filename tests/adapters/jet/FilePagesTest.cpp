#include "adapters/jet/FilePages.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <thread>

#include "adapters/jet/FileLock.h"
#include "adapters/jet/PageFiles.h"
#include "adapters/jet/Rc4.h"
#include "testing/TemporaryFolder.h"

namespace nomira::jet {
namespace {

using testing::MakeFile;
using testing::OpenToWrite;
using testing::PagesOf;
using testing::ReadFile;
using testing::WriteFile;
namespace fs = std::filesystem;

FailureKind FailureOf(const std::function<void()>& call) {
    try {
        call();
    } catch (const Failure& failure) {
        return failure.Kind();
    }
    ADD_FAILURE() << "no failure";
    return FailureKind::Damaged;
}

class FilePagesTest : public ::testing::TestWithParam<Generation> {
  protected:
    FilePagesTest() { MakeFile(m_path, GetParam()); }

    std::size_t PageSize() const { return LayoutOf(GetParam()).nPageSize; }
    fs::path Journal() const { return JournalPath(m_path); }
    // Lets the times of the file lie so far back that they tell later changes.
    void Quieten() const {
        fs::last_write_time(m_path, fs::file_time_type::clock::now() - std::chrono::hours(1));
        std::this_thread::sleep_for(std::chrono::milliseconds(25));
    }

    nomira::testing::TemporaryFolder m_folder;
    fs::path m_path = m_folder / "a.mdb";
};

TEST_P(FilePagesTest, AFileIsMadeInOneStepAndReadBack) {
    const fs::path path = m_folder / "new.mdb";
    {
        const auto pages = FilePages::Create(path, GetParam());
        EXPECT_TRUE(pages->CanWrite());
        pages->Append();
        pages->Commit();
        EXPECT_FALSE(fs::exists(path));
    }
    EXPECT_FALSE(fs::exists(path)) << "nothing is left of a file that wasn't finished";
    MakeFile(path, GetParam(), 20);
    EXPECT_EQ(fs::file_size(path), 20 * PageSize());
    EXPECT_EQ(SniffGeneration(path), GetParam());
    const auto pages = FilePages::Open(path, OpenMode::ReadOnly);
    EXPECT_EQ(pages->Count(), 20U);
    EXPECT_EQ(pages->Read(19)[7], 19);
    EXPECT_FALSE(pages->CanWrite());
    EXPECT_THROW(FilePages::Create(path, GetParam()), Failure);
    EXPECT_EQ(std::distance(fs::directory_iterator(m_folder.Path()), {}), 2) << "leftovers";
}

TEST_P(FilePagesTest, ANewFileIsWrittenOnWithAJournal) {
    const fs::path path = m_folder / "new.mdb";
    const auto pages = FilePages::Create(path, GetParam());
    const Bytes header = NewHeader(GetParam());
    for (int n = 0; n < 3; ++n)
        pages->Append();
    std::copy(header.begin(), header.end(), pages->Change(0).begin());
    pages->Commit();
    pages->Change(2)[0] = 1;  // not committed
    pages->Rest();
    const Bytes made = ReadFile(path);
    EXPECT_EQ(Bytes(made.begin(), made.begin() + static_cast<std::ptrdiff_t>(PageSize())), header);
    EXPECT_EQ(made[2 * PageSize()], 0);
    pages->Change(2)[0] = 2;
    pages->Commit();
    EXPECT_EQ(ReadFile(path), made);
    EXPECT_EQ(PagesOf(path)[1][0], 2);
    EXPECT_TRUE(fs::exists(JournalPath(path)));
}

TEST_P(FilePagesTest, TheFileStaysAsItWasUntilRest) {
    const Bytes before = ReadFile(m_path);
    const auto pages = OpenToWrite(m_path);
    EXPECT_FALSE(pages->IsWriting());
    pages->Change(5)[9] = 77;
    EXPECT_TRUE(pages->IsWriting());
    EXPECT_FALSE(fs::exists(Journal()));
    pages->Commit();
    EXPECT_TRUE(fs::exists(Journal()));
    EXPECT_EQ(ReadFile(m_path), before);
    const std::uint32_t nNew = pages->Append();
    pages->Change(nNew)[0] = 78;
    pages->Commit();
    pages->Change(6)[0] = 99;  // given up
    pages->Rest();
    EXPECT_FALSE(pages->IsWriting());
    EXPECT_FALSE(fs::exists(Journal()));
    Bytes after = before;
    after[5 * PageSize() + 9] = 77;
    after.resize(13 * PageSize());
    after[12 * PageSize()] = 78;
    SetCommitCounter(after, GetParam(), 0x0102);
    EXPECT_EQ(ReadFile(m_path), after);
    EXPECT_EQ(pages->Read(6)[0], 6);
}

TEST_P(FilePagesTest, ARollBackLeavesNothing) {
    const Bytes before = ReadFile(m_path);
    const auto pages = OpenToWrite(m_path);
    pages->Change(5)[9] = 77;
    pages->Append();
    pages->Rollback();
    pages->Commit();
    EXPECT_EQ(pages->Read(5)[9], 5);
    EXPECT_EQ(pages->Count(), 12U);
    pages->Change(5)[9] = 5;  // no change at all
    pages->Commit();
    EXPECT_FALSE(fs::exists(Journal()));
    pages->Rest();
    EXPECT_EQ(ReadFile(m_path), before);
}

TEST_P(FilePagesTest, OthersReadWhatIsCommittedAndNoMore) {
    const auto writer = OpenToWrite(m_path);
    writer->Change(5)[9] = 77;
    const std::uint32_t nNew = writer->Append();
    writer->Change(nNew)[3] = 79;
    writer->Commit();
    writer->Change(5)[9] = 78;
    const auto reader = OpenToWrite(m_path);
    EXPECT_EQ(reader->Read(5)[9], 77);
    EXPECT_EQ(reader->Read(nNew)[3], 79);
    EXPECT_EQ(reader->Read(4)[9], 4);
    writer->Commit();
    EXPECT_FALSE(reader->IsAsRead());
    writer->Rest();
    EXPECT_EQ(FailureOf([&] { reader->Read(3); }), FailureKind::Held) << "of another state";
    reader->Reload();
    EXPECT_EQ(reader->Read(5)[9], 78);
    EXPECT_EQ(reader->Read(3)[9], 3);
}

TEST_P(FilePagesTest, OneWritesAtATime) {
    const auto first = OpenToWrite(m_path);
    const auto second = OpenToWrite(m_path);
    EXPECT_EQ(second->Read(5)[9], 5);
    first->Change(5)[9] = 77;
    EXPECT_EQ(FailureOf([&] { second->Change(5); }), FailureKind::Held);
    EXPECT_EQ(FailureOf([&] { second->StartWriting(); }), FailureKind::Held);
    first->Commit();
    first->Rest();
    EXPECT_EQ(FailureOf([&] { second->Change(5); }), FailureKind::Held) << "what it read is stale";
    EXPECT_EQ(FailureOf([&] { second->Change(5); }), FailureKind::Held) << "and stays so";
    EXPECT_FALSE(second->StartWriting());
    EXPECT_EQ(second->Read(5)[9], 77);
    second->Change(5)[9] = 78;
    second->Commit();
    second->Rest();
    EXPECT_FALSE(first->StartWriting());
    EXPECT_TRUE(first->StartWriting());
    EXPECT_EQ(first->Read(5)[9], 78);
    first->Rest();
    EXPECT_TRUE(first->StartWriting());
}

TEST_P(FilePagesTest, AFileAtRestIsHeldByNobody) {
    const auto pages = OpenToWrite(m_path);
    pages->Change(5)[9] = 77;
    pages->Commit();
    const auto file = nativefiles::Open(m_path, O_RDWR);
    EXPECT_TRUE(IsLockedByOthers(file));
    pages->Rest();
    EXPECT_FALSE(IsLockedByOthers(file));
    pages->Read(7);
    EXPECT_FALSE(IsLockedByOthers(file));
}

TEST_P(FilePagesTest, AWarmFileKnowsWhetherItIsAsRead) {
    Quieten();
    const auto pages = OpenToWrite(m_path);
    EXPECT_TRUE(pages->IsAsRead());
    EXPECT_EQ(pages->Read(5)[0], 5);
    Bytes bytes = ReadFile(m_path);
    bytes[5 * PageSize()] = 50;
    WriteFile(m_path, bytes);
    EXPECT_FALSE(pages->IsAsRead());
    EXPECT_EQ(FailureOf([&] { pages->Change(5); }), FailureKind::Held);
    pages->Reload();
    EXPECT_EQ(pages->Read(5)[0], 50);
    EXPECT_FALSE(pages->IsAsRead()) << "the change was just now: another one could look the same";
    Quieten();
    pages->Reload();
    EXPECT_TRUE(pages->IsAsRead());
    pages->Change(5)[0] = 51;
    pages->Commit();
    EXPECT_TRUE(pages->IsAsRead());
    pages->Rest();
    EXPECT_TRUE(pages->IsAsRead());
    Quieten();
    EXPECT_FALSE(pages->IsAsRead()) << "its times are others now";
    pages->Reload();
    EXPECT_TRUE(pages->IsAsRead());
    fs::remove(m_path);
    EXPECT_FALSE(pages->IsAsRead());
}

TEST_P(FilePagesTest, WhatIsReadAnewCountsAsChanged) {
    const auto pages = OpenToWrite(m_path);
    EXPECT_EQ(pages->Read(5)[9], 5);
    const std::uint64_t nBefore = pages->Changes();
    const auto others = OpenToWrite(m_path);
    others->Change(5)[9] = 77;
    others->Commit();
    others->Rest();
    EXPECT_EQ(pages->Changes(), nBefore);
    pages->Reload();
    EXPECT_NE(pages->Changes(), nBefore);
    EXPECT_EQ(pages->Read(5)[9], 77);
}

TEST_P(FilePagesTest, AFileThatTookThePlaceOfAnotherIsReadAnew) {
    const auto pages = OpenToWrite(m_path);
    const fs::path other = m_folder / "other.mdb";
    MakeFile(other, GetParam(), 30);
    fs::rename(other, m_path);
    EXPECT_FALSE(pages->IsAsRead());
    EXPECT_EQ(FailureOf([&] { pages->Change(5); }), FailureKind::Held);
    EXPECT_FALSE(pages->StartWriting());
    EXPECT_EQ(pages->Count(), 30U);
    pages->Change(29)[0] = 1;
    pages->Commit();
    pages->Rest();
    EXPECT_EQ(PagesOf(m_path).back()[0], 1);
    const auto kind = GetParam() == Generation::Jet3 ? Generation::Jet4 : Generation::Jet3;
    MakeFile(other, kind, 30);
    fs::rename(other, m_path);
    EXPECT_EQ(FailureOf([&] { pages->Reload(); }), FailureKind::Unsupported);
}

TEST_P(FilePagesTest, AFileThatNobodyMayWriteIsOnlyRead) {
    fs::permissions(m_path, fs::perms::owner_read);
    const auto pages = OpenToWrite(m_path);
    EXPECT_FALSE(pages->CanWrite());
    EXPECT_EQ(pages->WhyNotWritable(), "the file is write-protected");
    EXPECT_EQ(pages->Read(5)[0], 5);
    EXPECT_EQ(FailureOf([&] { pages->Change(5); }), FailureKind::NotWritable);
    EXPECT_EQ(FailureOf([&] { pages->Append(); }), FailureKind::NotWritable);
    EXPECT_EQ(FailureOf([&] { pages->StartWriting(); }), FailureKind::NotWritable);
}

TEST_P(FilePagesTest, APasswordKeepsTheFileFromBeingWritten) {
    Bytes bytes = ReadFile(m_path);
    MaskHeader(bytes, GetParam());
    bytes[0x42] ^= 0x31;
    MaskHeader(bytes, GetParam());
    WriteFile(m_path, bytes);
    const auto pages = OpenToWrite(m_path);
    EXPECT_EQ(pages->Read(5)[0], 5);
    EXPECT_EQ(pages->WhyNotWritable(), "the file has a password");
    EXPECT_EQ(FailureOf([&] { pages->Change(5); }), FailureKind::NotWritable);
}

TEST_P(FilePagesTest, WhoHasTheFileOpenInAccessKeepsOthersFromWriting) {
    const fs::path lockFile = m_folder / "a.ldb";
    WriteFile(lockFile, Bytes(64));
    auto held = nativefiles::Open(lockFile, O_RDWR);
    ASSERT_TRUE(TryLock(held));
    const auto pages = OpenToWrite(m_path);
    EXPECT_FALSE(pages->CanWrite());
    EXPECT_EQ(pages->WhyNotWritable(), "somebody has the file open in Access");
    EXPECT_EQ(FailureOf([&] { pages->Change(5); }), FailureKind::NotWritable);
    EXPECT_EQ(pages->Read(5)[0], 5);
    held.Reset();
    EXPECT_TRUE(pages->CanWrite());
    EXPECT_TRUE(fs::exists(lockFile));
    pages->Change(5);
    EXPECT_FALSE(fs::exists(lockFile)) << "nobody stood behind it";
}

TEST_P(FilePagesTest, TheHeaderStaysAsItIs) {
    const auto pages = OpenToWrite(m_path);
    EXPECT_EQ(FailureOf([&] { pages->Change(0); }), FailureKind::Unsupported);
}

TEST_P(FilePagesTest, EncryptedFilesAreReadAndWrittenAsSuch) {
    constexpr std::uint32_t kKey = 0x89ABCDEF;
    Bytes bytes = ReadFile(m_path);
    MaskHeader(bytes, GetParam());
    StoreU32(bytes, 0x3E, kKey);
    MaskHeader(bytes, GetParam());
    for (std::uint32_t n = 1; n < 12; ++n)
        ApplyRc4(kKey ^ n, ByteSpan(bytes).subspan(n * PageSize(), PageSize()));
    WriteFile(m_path, bytes);
    const auto pages = OpenToWrite(m_path);
    EXPECT_EQ(pages->Read(5)[0], 5);
    pages->Change(5)[0] = 50;
    pages->Change(pages->Append())[1] = 120;
    pages->Commit();
    EXPECT_EQ(PagesOf(m_path), PagesOf(*pages)) << "with the journal";
    pages->Rest();
    EXPECT_EQ(PagesOf(m_path), PagesOf(*pages));
    bytes[5 * PageSize()] ^= 5 ^ 50;
    SetCommitCounter(bytes, GetParam(), 0x0102);
    Bytes added(PageSize());
    added[1] = 120;
    ApplyRc4(kKey ^ 12, added);
    Append(bytes, added);
    EXPECT_EQ(ReadFile(m_path), bytes);
}

TEST_P(FilePagesTest, APageThatTheEndCutsOffIsFilledUpBeforeWriting) {
    Bytes bytes = ReadFile(m_path);
    bytes.resize(bytes.size() + PageSize() / 2, 0xAB);
    WriteFile(m_path, bytes);
    const auto pages = OpenToWrite(m_path);
    EXPECT_EQ(pages->Count(), 13U);
    EXPECT_EQ(pages->Read(12)[PageSize() / 2], 0);
    EXPECT_EQ(pages->Append(), 13U);
    pages->Commit();
    EXPECT_EQ(PagesOf(m_path).size(), 13U);
    pages->Rest();
    EXPECT_EQ(fs::file_size(m_path), 14 * PageSize());
    EXPECT_EQ(PagesOf(m_path)[11][0], 0xAB);
}

TEST_P(FilePagesTest, ThatPageIsFilledUpOnTheDiskAlsoIfNoneFollows) {
    Bytes bytes = ReadFile(m_path);
    bytes.resize(bytes.size() + 100, 0xAB);
    WriteFile(m_path, bytes);
    const auto pages = OpenToWrite(m_path);
    pages->Change(5)[0] = 50;
    pages->Commit();
    pages->Rest();
    EXPECT_EQ(fs::file_size(m_path), 13 * PageSize());
    EXPECT_EQ(PagesOf(m_path), PagesOf(*pages));
}

TEST_P(FilePagesTest, FilesThatAreNoDatabasesAreRefused) {
    const Bytes whole = ReadFile(m_path);
    const auto kindOf = [&](const Bytes& bytes) {
        WriteFile(m_path, bytes);
        return FailureOf([&] { FilePages::Open(m_path, OpenMode::ReadOnly); });
    };
    EXPECT_EQ(kindOf({}), FailureKind::Damaged);
    EXPECT_EQ(SniffGeneration(m_path), std::nullopt);
    EXPECT_EQ(kindOf(Bytes(3 * PageSize(), 'x')), FailureKind::Damaged);
    Bytes bytes = whole;
    bytes.resize(2 * PageSize() + 1);
    EXPECT_EQ(kindOf(bytes), FailureKind::Damaged);
    bytes.resize(100);
    EXPECT_EQ(kindOf(bytes), FailureKind::Damaged);
    bytes = whole;
    bytes[0x14] = 3;
    EXPECT_EQ(kindOf(bytes), FailureKind::Unsupported);
    EXPECT_EQ(FailureOf([&] { FilePages::Open(m_folder / "none.mdb", OpenMode::ReadOnly); }),
              FailureKind::InputOutput);
    EXPECT_EQ(FailureOf([&] { FilePages::Open(m_folder.Path(), OpenMode::ReadWrite); }),
              FailureKind::InputOutput);
    EXPECT_THROW(SniffGeneration(m_folder / "none.mdb"), Failure);
}

TEST_P(FilePagesTest, AnInterruptedWriterIsSeen) {
    EXPECT_FALSE(OpenToWrite(m_path)->WasInterrupted());
    Bytes bytes = ReadFile(m_path);
    SetCommitCounter(bytes, GetParam(), 0);
    WriteFile(m_path, bytes);
    const auto pages = OpenToWrite(m_path);
    EXPECT_TRUE(pages->WasInterrupted());
    pages->Change(5)[0] = 50;
    pages->Commit();
    EXPECT_EQ(PagesOf(m_path), PagesOf(*pages));
    pages->Rest();
    EXPECT_FALSE(OpenToWrite(m_path)->WasInterrupted());
}

TEST_P(FilePagesTest, TheJournalIsBesideTheFileALinkLeadsTo) {
    fs::create_directory(m_folder / "links");
    const fs::path link = m_folder / "links/b.mdb";
    fs::create_symlink(m_path, link);
    const auto pages = OpenToWrite(link);
    pages->Change(5)[0] = 50;
    pages->Commit();
    EXPECT_TRUE(fs::exists(Journal()));
    pages->Rest();
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_EQ(PagesOf(m_path)[4][0], 50);
}

TEST_P(FilePagesTest, AHalfWrittenSuccessorGoesUnlessSomebodyIsAtWorkOnIt) {
    const Bytes bytes = ReadFile(m_path);
    {
        const auto other = OpenToWrite(m_path);
        WriteFile(SuccessorPath(m_path), Bytes(100));
        other->StartWriting();
        const auto pages = FilePages::Open(m_path, OpenMode::ReadWrite);
        EXPECT_TRUE(fs::exists(SuccessorPath(m_path)));
    }
    FilePages::Open(m_path, OpenMode::ReadOnly);
    EXPECT_TRUE(fs::exists(SuccessorPath(m_path)));
    const auto pages = FilePages::Open(m_path, OpenMode::ReadWrite);
    EXPECT_FALSE(fs::exists(SuccessorPath(m_path)));
    EXPECT_EQ(ReadFile(m_path), bytes);
    pages->StartWriting();
}

TEST_P(FilePagesTest, ASuccessorThatCantBeRemovedIsNoHindrance) {
    fs::create_directories(SuccessorPath(m_path) / "folder");
    const auto pages = FilePages::Open(m_path, OpenMode::ReadWrite);
    EXPECT_TRUE(pages->CanWrite());
    EXPECT_TRUE(fs::exists(SuccessorPath(m_path)));
}

TEST_P(FilePagesTest, TheJournalHasTheRightsOfTheFile) {
    fs::permissions(m_path, fs::perms::owner_read | fs::perms::owner_write);
    const auto pages = OpenToWrite(m_path);
    pages->Change(5)[0] = 50;
    pages->Commit();
    EXPECT_EQ(fs::status(Journal()).permissions(), fs::perms(0600));
}

TEST_P(FilePagesTest, WhatDoesNotFitOnTheDiskIsRolledBack) {
    const auto pages = OpenToWrite(m_path);
    pages->Change(5)[0] = 50;
    pages->Commit();
    struct rlimit old {};
    ::getrlimit(RLIMIT_FSIZE, &old);
    const auto oldHandler = ::signal(SIGXFSZ, SIG_IGN);
    struct rlimit tight = old;
    tight.rlim_cur = fs::file_size(Journal()) + 10;  // less than a record
    ::setrlimit(RLIMIT_FSIZE, &tight);
    pages->Change(6)[0] = 60;
    const FailureKind kind = FailureOf([&] { pages->Commit(); });
    ::setrlimit(RLIMIT_FSIZE, &old);
    ::signal(SIGXFSZ, oldHandler);
    EXPECT_EQ(kind, FailureKind::InputOutput);
    EXPECT_EQ(pages->Read(6)[0], 6);
    EXPECT_EQ(PagesOf(m_path), PagesOf(*pages));
    pages->Change(7)[0] = 70;
    pages->Commit();
    EXPECT_EQ(PagesOf(m_path), PagesOf(*pages)) << "over what the failure left";
    pages->Rest();
    EXPECT_EQ(PagesOf(m_path), PagesOf(*pages));
}

TEST_P(FilePagesTest, ALongJournalGoesIntoTheFileBetweenTransactions) {
    const std::size_t nPages = (std::size_t{65} << 20) / PageSize();
    const auto pages = OpenToWrite(m_path);
    for (std::size_t n = 0; n < nPages; ++n) {
        const ByteSpan page = pages->Change(pages->Append());
        std::fill(page.begin(), page.end(), std::uint8_t{0xEE});
    }
    pages->Commit();
    EXPECT_TRUE(pages->IsWriting());
    EXPECT_FALSE(fs::exists(Journal()));
    EXPECT_EQ(fs::file_size(m_path), (12 + nPages) * PageSize());
    pages->Change(5)[0] = 50;
    pages->Commit();
    EXPECT_TRUE(fs::exists(Journal()));
    EXPECT_EQ(FilePages::Open(m_path, OpenMode::ReadOnly)->Read(5)[0], 50);
    pages->Rest();
    EXPECT_EQ(FilePages::Open(m_path, OpenMode::ReadOnly)->Read(5)[0], 50);
}

INSTANTIATE_TEST_SUITE_P(Both, FilePagesTest,
                         ::testing::Values(Generation::Jet3, Generation::Jet4));

}  // namespace
}  // namespace nomira::jet
