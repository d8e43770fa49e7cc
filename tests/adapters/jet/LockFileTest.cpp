#include "adapters/jet/LockFile.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include "adapters/jet/Failure.h"
#include "adapters/jet/FileLock.h"
#include "nativefiles/NativeFiles.h"
#include "testing/TemporaryFolder.h"

namespace nomira::jet {
namespace {

// Locks bytes as somebody does who has the database open.
class Somebody {
  public:
    Somebody(const std::filesystem::path& lockFile, std::int64_t nFrom, std::int64_t nCount)
        : m_file(nativefiles::Open(lockFile, O_RDWR)) {
        struct flock lock {};
        lock.l_type = F_WRLCK;
        lock.l_start = nFrom;
        lock.l_len = nCount;
        EXPECT_EQ(::fcntl(m_file.Get(), F_OFD_SETLK, &lock), 0);
    }

  private:
    nativefiles::Descriptor m_file;
};

class LockFileTest : public ::testing::Test {
  protected:
    static std::string Entry(std::string sComputer, std::string sName) {
        sComputer.resize(32);
        sName.resize(32);
        return sComputer + sName;
    }
    std::filesystem::path Put(const std::string& sBytes) {
        m_folder.Put("a.ldb", sBytes);
        return m_folder / "a.ldb";
    }

    nomira::testing::TemporaryFolder m_folder;
};

TEST_F(LockFileTest, ItStandsBesideTheDatabase) {
    EXPECT_EQ(FindLockFile(m_folder / "a.mdb"), std::nullopt);
    m_folder.Put("a.LDB", "");
    EXPECT_EQ(FindLockFile(m_folder / "a.mdb"), m_folder / "a.LDB");
    m_folder.Put("a.ldb", "");
    EXPECT_EQ(FindLockFile(m_folder / "a.mdb"), m_folder / "a.ldb");
    EXPECT_EQ(FindLockFile(m_folder / "b.mdb"), std::nullopt);
}

TEST_F(LockFileTest, ItTellsWhoHadTheDatabaseOpenAndWhoHas) {
    const auto path = Put(Entry("CELL-7", "Admin") + Entry("", "") + Entry("OFFICE  ", "J\xF6rg") +
                          std::string(30, 'x'));
    using Users = std::vector<LockFileUser>;
    EXPECT_EQ(ReadLockFile(path), (Users{{"CELL-7", "Admin", false}, {"OFFICE", "J?rg", false}}));
    EXPECT_FALSE(IsLockFileHeld(path));
    const Somebody third(path, 0x10000003, 1);
    EXPECT_EQ(ReadLockFile(path), (Users{{"CELL-7", "Admin", false}, {"OFFICE", "J?rg", true}}));
    EXPECT_TRUE(IsLockFileHeld(path));
}

TEST_F(LockFileTest, ALongFileHas255Entries) {
    std::string sBytes;
    for (int n = 0; n < 300; ++n)
        sBytes += Entry("PC" + std::to_string(n), std::string(40, 'a'));
    const auto users = ReadLockFile(Put(sBytes));
    ASSERT_EQ(users.size(), 255U);
    EXPECT_EQ(users.back(), (LockFileUser{"PC254", std::string(32, 'a'), false}));
}

TEST_F(LockFileTest, WhatCantBeReadCountsAsHeld) {
    EXPECT_TRUE(IsLockFileHeld(m_folder / "none.ldb"));
    EXPECT_THROW(ReadLockFile(m_folder / "none.ldb"), Failure);
    std::filesystem::create_directory(m_folder / "a.ldb");
    EXPECT_THROW(ReadLockFile(m_folder / "a.ldb"), Failure);
}

TEST(FileLockTest, ALockShutsOthersOutAndGoesWithItsFile) {
    const nomira::testing::TemporaryFolder folder;
    folder.Put("a", "12345");
    auto first = nativefiles::Open(folder / "a", O_RDWR);
    const auto second = nativefiles::Open(folder / "a", O_RDWR);
    EXPECT_TRUE(TryLock(first));
    EXPECT_TRUE(TryLock(first));
    EXPECT_FALSE(TryLock(second));
    EXPECT_TRUE(IsLockedByOthers(second));
    EXPECT_FALSE(IsLockedByOthers(first));
    Unlock(first);
    EXPECT_TRUE(TryLock(second));
    Unlock(second);
    EXPECT_TRUE(TryLock(first));
    first.Reset();
    EXPECT_TRUE(TryLock(second));
    const auto reader = nativefiles::Open(folder / "a", O_RDONLY);
    EXPECT_TRUE(IsLockedByOthers(reader));
    Unlock(second);
    EXPECT_THROW(TryLock(reader), Failure);
}

}  // namespace
}  // namespace nomira::jet
