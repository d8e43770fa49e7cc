#include "adapters/rpc/LocalFile.h"

#include <sys/stat.h>

#include <system_error>

#include "testing/TemporaryFolder.h"
#include "testing/TextPrinting.h"

namespace nomira::rpc {
namespace {

namespace fs = std::filesystem;
using testing::TemporaryFolder;

constexpr std::size_t kPlenty = 1'000'000;

std::vector<std::string> NamesIn(const TemporaryFolder& folder) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder.Path()))
        names.push_back(entry.path().filename());
    return names;
}

std::error_code FailureOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const std::system_error& error) {
        return error.code();
    }
    return {};
}

TEST(LocalFileTest, AFileIsReadWhole) {
    const TemporaryFolder folder;
    std::string sBytes;
    for (int n = 0; n < 200'000; ++n)
        sBytes += static_cast<char>(n * 7 % 256);
    folder.Put("x", sBytes);
    folder.Put("empty", "");
    EXPECT_EQ(ReadLocalFile(folder / "x", kPlenty), sBytes);
    EXPECT_EQ(ReadLocalFile(folder / "empty", kPlenty), "");
}

TEST(LocalFileTest, AFileAboveTheLimitIsRefused) {
    const TemporaryFolder folder;
    folder.Put("x", "12345");
    EXPECT_EQ(ReadLocalFile(folder / "x", 5), "12345");
    EXPECT_EQ(FailureOf([&] { ReadLocalFile(folder / "x", 4); }), std::errc::file_too_large);
}

TEST(LocalFileTest, WhatIsNoFileIsRefused) {
    const TemporaryFolder folder;
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    EXPECT_EQ(FailureOf([&] { ReadLocalFile(folder / "none", kPlenty); }),
              std::errc::no_such_file_or_directory);
    for (const char* sName : {"pipe", "."}) {
        EXPECT_TRUE(FailureOf([&] { ReadLocalFile(folder / sName, kPlenty); })) << sName;
        EXPECT_EQ(FailureOf([&] { ReplaceLocalFile(folder / sName, "x"); }),
                  std::errc::invalid_argument)
            << sName;
    }
    EXPECT_EQ(NamesIn(folder), (std::vector<std::string>{"pipe"}));
}

TEST(LocalFileTest, AFileIsMadeOrReplaced) {
    const TemporaryFolder folder;
    ReplaceLocalFile(folder / "x", "old, and longer");
    ReplaceLocalFile(folder / "x", "new");
    EXPECT_EQ(folder.Bytes("x"), "new");
    EXPECT_EQ(NamesIn(folder), (std::vector<std::string>{"x"}));
}

TEST(LocalFileTest, ANewFileHasTheUsersRightsAndAnOldOneItsOwn) {
    const TemporaryFolder folder;
    folder.Put("old", "x");
    fs::permissions(folder / "old", fs::perms(0640));
    const mode_t nMask = ::umask(027);
    ReplaceLocalFile(folder / "old", "y");
    ReplaceLocalFile(folder / "new", "y");
    ::umask(nMask);
    EXPECT_EQ(fs::status(folder / "old").permissions(), fs::perms(0640));
    EXPECT_EQ(fs::status(folder / "new").permissions(), fs::perms(0640));
}

TEST(LocalFileTest, ALinkIsFollowed) {
    const TemporaryFolder folder;
    folder.Put("inner/target", "old");
    fs::create_symlink("inner/target", folder / "link");
    ReplaceLocalFile(folder / "link", "new");
    EXPECT_TRUE(fs::is_symlink(folder / "link"));
    EXPECT_EQ(folder.Bytes("inner/target"), "new");
}

TEST(LocalFileTest, AReadOnlyFileStays) {
    const TemporaryFolder folder;
    folder.Put("x", "old");
    fs::permissions(folder / "x", fs::perms(0444));
    EXPECT_EQ(FailureOf([&] { ReplaceLocalFile(folder / "x", "new"); }),
              std::errc::permission_denied);
    EXPECT_EQ(folder.Bytes("x"), "old");
}

TEST(LocalFileTest, AMissingFolderIsAFailure) {
    const TemporaryFolder folder;
    EXPECT_EQ(FailureOf([&] { ReplaceLocalFile(folder / "none/x", "x"); }),
              std::errc::no_such_file_or_directory);
}

}  // namespace
}  // namespace nomira::rpc
