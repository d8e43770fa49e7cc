#include "nativefiles/FileBeside.h"

#include "testing/TemporaryFolder.h"
#include "testing/TextPrinting.h"

namespace nomira::nativefiles {
namespace {

namespace fs = std::filesystem;
using testing::TemporaryFolder;

std::ptrdiff_t CountFiles(const TemporaryFolder& folder) {
    return std::distance(fs::directory_iterator(folder.Path()), fs::directory_iterator());
}

TEST(FileBesideTest, TakesThePlaceWithTheOldRights) {
    const TemporaryFolder folder;
    folder.Put("x", "old");
    fs::permissions(folder / "x", fs::perms{0640});
    FileBeside beside(folder / "x");
    beside.Write("new");
    beside.TakeRights(StatusOf(folder / "x"));
    EXPECT_EQ(folder.Bytes("x"), "old");
    beside.TakePlace();
    EXPECT_EQ(folder.Bytes("x"), "new");
    EXPECT_EQ(fs::status(folder / "x").permissions(), fs::perms{0640});
    EXPECT_EQ(CountFiles(folder), 1);
}

TEST(FileBesideTest, GoesAgainIfItDidNotTakeThePlace) {
    const TemporaryFolder folder;
    {
        FileBeside beside(folder / "x");
        beside.Write("new");
        EXPECT_EQ(CountFiles(folder), 1);
    }
    EXPECT_EQ(CountFiles(folder), 0);
}

TEST(FileBesideTest, WithoutAnOldFileItHasTheRightsOfANewOne) {
    const TemporaryFolder folder;
    FileBeside beside(folder / "x");
    beside.TakeRights(std::nullopt);
    beside.TakePlace();
    EXPECT_EQ(static_cast<mode_t>(fs::status(folder / "x").permissions()), NewFileMode());
}

}  // namespace
}  // namespace nomira::nativefiles
