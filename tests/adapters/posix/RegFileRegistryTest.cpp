#include "adapters/posix/RegFileRegistry.h"

#include <filesystem>
#include <string>

#include "testing/TemporaryFolder.h"
#include "testing/TextPrinting.h"

namespace nomira::posix {
namespace {

using nomira::testing::TemporaryFolder;

std::int32_t Open(RegFileRegistry& registry, TextView sKey) {
    Registry::KeyHandle key = 0;
    return registry.OpenKey(RegistryRoot::LocalMachine, sKey, key);
}

TEST(RegFileRegistryTest, AMissingFileIsAnEmptyRegistry) {
    TemporaryFolder folder;
    RegFileRegistry registry(folder / "nowhere/registry.reg");
    EXPECT_EQ(Open(registry, u"Software"), Registry::kFileNotFound);
    EXPECT_TRUE(registry.Findings().empty());
}

TEST(RegFileRegistryTest, TheFileIsReadAtTheFirstKeyAndNotAgain) {
    TemporaryFolder folder;
    RegFileRegistry registry(folder / "registry.reg");
    folder.Put("registry.reg", "REGEDIT4\n[HKLM\\A]\n");
    EXPECT_EQ(Open(registry, u"A"), Registry::kSuccess);
    folder.Put("registry.reg", "REGEDIT4\n[HKLM\\B]\n");
    EXPECT_EQ(Open(registry, u"A"), Registry::kSuccess);
    EXPECT_EQ(Open(registry, u"B"), Registry::kFileNotFound);
}

TEST(RegFileRegistryTest, WhatWasPassedOverCanBeShown) {
    TemporaryFolder folder;
    folder.Put("registry.reg", "REGEDIT4\nrubbish\n");
    RegFileRegistry registry(folder / "registry.reg");
    ASSERT_EQ(registry.Findings().size(), 1U);
    EXPECT_EQ(registry.Findings()[0].nLine, 2);
    EXPECT_EQ(registry.File(), folder / "registry.reg");
}

TEST(RegFileRegistryTest, AFolderInItsPlaceIsTold) {
    TemporaryFolder folder;
    std::filesystem::create_directory(folder / "registry.reg");
    RegFileRegistry registry(folder / "registry.reg");
    EXPECT_EQ(Open(registry, u"A"), Registry::kFileNotFound);
    EXPECT_EQ(registry.Findings().size(), 1U);
}

}  // namespace
}  // namespace nomira::posix
