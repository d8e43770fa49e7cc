#include "adapters/sqlite/NewFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string_view>

#include "langtools/RuntimeError.h"
#include "testing/TemporaryFolder.h"

namespace nomira::sqlite {
namespace {

namespace fs = std::filesystem;

void Make(const fs::path& path, std::string_view bytes) {
    MakeFile(path, {reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()}, 0640);
}

TEST(MakeFileTest, GivesTheFileItsBytesAndRightsAndLeavesNothingElse) {
    const testing::TemporaryFolder folder;
    const mode_t nMask = ::umask(0);
    Make(folder / "new.mdb", "whole");
    ::umask(nMask);
    EXPECT_EQ(folder.Bytes("new.mdb"), "whole");
    EXPECT_EQ(fs::status(folder / "new.mdb").permissions(), fs::perms(0640));
    EXPECT_EQ(std::distance(fs::directory_iterator(folder.Path()), {}), 1);
}

TEST(MakeFileTest, LeavesWhatStandsThereAlready) {
    const testing::TemporaryFolder folder;
    folder.Put("old.mdb", "mine");
    EXPECT_THROW(Make(folder / "old.mdb", "whole"), RuntimeError);
    EXPECT_EQ(folder.Bytes("old.mdb"), "mine");
    fs::create_symlink(folder / "nowhere", folder / "link");
    EXPECT_THROW(Make(folder / "link", "whole"), RuntimeError);
    EXPECT_FALSE(fs::exists(folder / "nowhere"));
}

TEST(MakeFileTest, SaysWhereThereIsNoFolderForIt) {
    const testing::TemporaryFolder folder;
    EXPECT_THROW(Make(folder / "missing/new.mdb", "whole"), RuntimeError);
}

}  // namespace
}  // namespace nomira::sqlite
