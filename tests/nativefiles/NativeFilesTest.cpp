#include "nativefiles/NativeFiles.h"

#include <fcntl.h>

#include <system_error>

#include "testing/TemporaryFolder.h"
#include "testing/TextPrinting.h"

namespace nomira::nativefiles {
namespace {

using testing::TemporaryFolder;

TEST(NativeFilesTest, BytesAreReadFromAPlaceUpToTheEnd) {
    const TemporaryFolder folder;
    folder.Put("x", "0123456789");
    const Descriptor file = Open(folder / "x", O_RDONLY);
    EXPECT_EQ(ReadAt(file, 3, 4), "456");
    EXPECT_EQ(ReadAt(file, 100, 8), "89");
    EXPECT_EQ(ReadAll(file), "0123456789");
}

TEST(NativeFilesTest, AFileOfMoreThanTheLimitIsTooLarge) {
    const TemporaryFolder folder;
    folder.Put("x", "0123456789");
    EXPECT_EQ(ReadAll(Open(folder / "x", O_RDONLY), 10).size(), 10U);
    EXPECT_THROW(ReadAll(Open(folder / "x", O_RDONLY), 9), std::system_error);
}

TEST(NativeFilesTest, BytesAreWrittenAtAPlaceAndNowhereElse) {
    const TemporaryFolder folder;
    folder.Put("x", "0123456789");
    WriteAt(Open(folder / "x", O_WRONLY), "ab", 3);
    EXPECT_EQ(folder.Bytes("x"), "012ab56789");
}

TEST(NativeFilesTest, WhatIsMissingHasNoStatusAndCannotBeOpened) {
    const TemporaryFolder folder;
    EXPECT_FALSE(StatusOf(folder / "none"));
    EXPECT_THROW(Open(folder / "none", O_RDONLY), std::system_error);
}

TEST(NativeFilesTest, TheFolderOfABareNameIsTheWorkingOne) {
    EXPECT_NO_THROW(SyncFolder(std::filesystem::path("names.mdb").parent_path()));
    EXPECT_THROW(SyncFolder("/no such folder"), std::system_error);
}

TEST(NativeFilesTest, AFileIsProtectedOnceNobodyMayWriteIt) {
    const TemporaryFolder folder;
    folder.Put("x", "");
    std::filesystem::permissions(folder / "x", std::filesystem::perms{0444});
    EXPECT_TRUE(IsWriteProtected(*StatusOf(folder / "x")));
    std::filesystem::permissions(folder / "x", std::filesystem::perms{0464});
    EXPECT_FALSE(IsWriteProtected(*StatusOf(folder / "x")));
}

}  // namespace
}  // namespace nomira::nativefiles
