#include "userprogram/Staging.h"

#include <gtest/gtest.h>

#include "adapters/memory/MemoryMachine.h"
#include "langtools/RuntimeError.h"
#include "testing/TextPrinting.h"

namespace nomira::testing {
namespace {

class MakeDirectoryPathTest : public ::testing::Test {
  protected:
    memory::MemoryFiles& Files() { return m_machine.files; }
    memory::MemoryMachine m_machine;
};

TEST_F(MakeDirectoryPathTest, EveryLevelIsMade) {
    MakeDirectoryPath(u"C:\\Temp\\NomiraTemp\\Third");
    EXPECT_TRUE(Files().GetAttr(u"C:\\Temp") & AttributeDirectory);
    EXPECT_TRUE(Files().GetAttr(u"C:\\Temp\\NomiraTemp") & AttributeDirectory);
    EXPECT_TRUE(Files().GetAttr(u"C:\\Temp\\NomiraTemp\\Third") & AttributeDirectory);
}

TEST_F(MakeDirectoryPathTest, ClosingBackslashMakesNoDifference) {
    MakeDirectoryPath(u"C:\\Temp\\NomiraTemp\\");
    EXPECT_EQ(Files().Dir(u"C:\\Temp\\*", AttributeDirectory), std::vector<Text>{u"NomiraTemp"});
}

TEST_F(MakeDirectoryPathTest, ExistingPathStaysAsItIs) {
    Files().Put(u"C:\\Temp\\NomiraTemp\\a.src", "x");
    MakeDirectoryPath(u"C:\\Temp\\NomiraTemp");
    EXPECT_EQ(Files().Bytes(u"C:\\Temp\\NomiraTemp\\a.src"), "x");
}

TEST_F(MakeDirectoryPathTest, MissingLevelsBehindAnExistingOneAreMade) {
    Files().PutDirectory(u"C:\\Temp");
    MakeDirectoryPath(u"C:\\Temp\\a\\b");
    EXPECT_TRUE(Files().Exists(u"C:\\Temp\\a\\b"));
}

TEST_F(MakeDirectoryPathTest, FailuresAreIgnored) {
    Files().Put(u"C:\\Temp", "a file in the way");
    EXPECT_NO_THROW(MakeDirectoryPath(u"C:\\Temp\\NomiraTemp"));
    EXPECT_NO_THROW(MakeDirectoryPath(u"Q:\\Temp\\NomiraTemp"));
    EXPECT_FALSE(Files().Exists(u"C:\\Temp\\NomiraTemp"));
    Files().FailChange(u"C:\\a", ErrorNumber::PermissionDenied);
    EXPECT_NO_THROW(MakeDirectoryPath(u"C:\\a\\b"));
    EXPECT_FALSE(Files().Exists(u"C:\\a"));
    EXPECT_EQ(Files().Bytes(u"C:\\Temp"), "a file in the way");
}

TEST_F(MakeDirectoryPathTest, RootAloneMakesNothing) {
    MakeDirectoryPath(u"C:\\");
    EXPECT_TRUE(Files().Dir(u"C:\\*", AttributeDirectory).empty());
}

TEST_F(MakeDirectoryPathTest, TwoBackslashesEndThePath) {
    MakeDirectoryPath(u"C:\\a\\\\b");
    EXPECT_TRUE(Files().Exists(u"C:\\a"));
    EXPECT_FALSE(Files().Exists(u"C:\\a\\b"));
}

TEST_F(MakeDirectoryPathTest, PathShorterThanARootIsNoFailure) {
    EXPECT_NO_THROW(MakeDirectoryPath(u""));
    EXPECT_NO_THROW(MakeDirectoryPath(u"C:"));
}

}  // namespace
}  // namespace nomira::testing
