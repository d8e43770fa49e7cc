#include "adapters/posix/Prefix.h"

#include <cstdlib>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "testing/TemporaryFolder.h"
#include "testing/TextPrinting.h"

namespace nomira::posix {
namespace {

namespace fs = std::filesystem;
using nomira::testing::Printable;
using nomira::testing::TemporaryFolder;

class PrefixTest : public ::testing::Test {
  protected:
    std::string InDrive(const std::string& sRest) const {
        return (m_folder.Path() / "drives/c").string() + sRest;
    }
    std::string NativePath(TextView sPath) const {
        return Prefix(m_folder.Path()).NativePath(sPath);
    }

    TemporaryFolder m_folder;
};

TEST_F(PrefixTest, APathThatIsThereIsFoundInAnyCase) {
    m_folder.Put("drives/c/Tqx/DATA/orvo_con.mdb", "");
    for (const TextView sPath :
         {u"C:\\tqx\\data\\ORVO_CON.MDB", u"c:/Tqx/DATA/orvo_con.mdb", u"\\tqx\\Data\\Orvo_con.mdb",
          u"C:\\..\\tqx\\x\\..\\data\\.\\orvo_con.mdb"}) {
        EXPECT_EQ(NativePath(sPath), InDrive("/Tqx/DATA/orvo_con.mdb")) << Printable(sPath);
    }
}

TEST_F(PrefixTest, UmlautsInNamesHaveNoCaseEither) {
    m_folder.Put("drives/c/F\xC3\xBCllstand.txt", "");
    EXPECT_EQ(NativePath(u"C:\\FÜLLSTAND.TXT"), InDrive("/F\xC3\xBCllstand.txt"));
}

TEST_F(PrefixTest, WhatIsNotThereKeepsItsCase) {
    m_folder.Put("drives/c/Tqx/x", "");
    EXPECT_EQ(NativePath(u"C:\\TQX\\New\\SymName.txt"), InDrive("/Tqx/New/SymName.txt"));
}

TEST_F(PrefixTest, OfSeveralNamesTheExactOneIsMeantThenTheSmallOneThenTheFirst) {
    for (const char* sName : {"DATA/x", "Data/x", "data/x", "B.TXT", "B.txt"})
        m_folder.Put(std::string("drives/c/") + sName, "");
    EXPECT_EQ(NativePath(u"C:\\Data\\X"), InDrive("/Data/x"));
    EXPECT_EQ(NativePath(u"C:\\dATA\\X"), InDrive("/data/x"));
    EXPECT_EQ(NativePath(u"C:\\b.Txt"), InDrive("/B.TXT"));
}

TEST_F(PrefixTest, NothingLeadsOutOfADrive) {
    m_folder.Put("drives/c/a/b", "");
    for (const TextView sPath : {u"C:\\..\\..\\..\\etc", u"C:/../../../etc", u"\\..\\..\\etc",
                                 u"C:..\\..\\etc", u"C:\\a\\..\\..\\etc", u"C:\\a/../..\\etc"})
        EXPECT_EQ(NativePath(sPath), InDrive("/etc")) << Printable(sPath);
}

TEST_F(PrefixTest, ADriveMayBeASymbolicLinkOrHaveACapital) {
    m_folder.Put("elsewhere/File.txt", "");
    fs::create_directories(m_folder / "drives");
    fs::create_directory_symlink(m_folder / "elsewhere", m_folder / "drives/c");
    fs::create_directory(m_folder / "drives/D");
    EXPECT_EQ(NativePath(u"C:\\FILE.TXT"), InDrive("/File.txt"));
    EXPECT_EQ(NativePath(u"d:\\x"), (m_folder / "drives/D/x").string());
    EXPECT_EQ(Prefix(m_folder.Path()).Drives(), (std::vector<Text>{u"C:", u"D:"}));
}

TEST_F(PrefixTest, OnlyFoldersWithOneLetterAreDrives) {
    m_folder.Put("drives/e", "a file");
    for (const char* sName : {"drives/c", "drives/cc", "drives/1", "drives/Z"})
        fs::create_directories(m_folder / sName);
    EXPECT_EQ(Prefix(m_folder.Path()).Drives(), (std::vector<Text>{u"C:", u"Z:"}));
}

TEST_F(PrefixTest, APathOfThisSystemOnlyGetsItsSeparators) {
    EXPECT_EQ(NativePath(u"/srv/Data\\x.txt"), "/srv/Data/x.txt");
    EXPECT_EQ(NativePath(u"samples\\..\\x.txt"), "samples/../x.txt");
    EXPECT_EQ(NativePath(u"1:\\x"), "1:/x");
}

TEST_F(PrefixTest, ALinkThatLeadsNowhereIsADriveWithoutAMedium) {
    std::filesystem::create_directories(m_folder / "drives/c");
    std::filesystem::create_directory_symlink(m_folder / "medium", m_folder / "drives/e");
    const Prefix prefix(m_folder.Path());
    EXPECT_EQ(prefix.Drives(), (std::vector<Text>{u"C:", u"E:"}));
    EXPECT_TRUE(prefix.DriveIsMissing(u"E:\\"));
    std::filesystem::create_directories(m_folder / "medium");
    EXPECT_FALSE(prefix.DriveIsMissing(u"E:\\"));
}

TEST_F(PrefixTest, AMissingPrefixIsAWorldWithoutDrives) {
    const Prefix prefix(m_folder / "nowhere");
    EXPECT_EQ(prefix.Drives(), std::vector<Text>{});
    EXPECT_TRUE(prefix.DriveIsMissing(u"C:\\x"));
    EXPECT_TRUE(prefix.DriveIsMissing(u"\\x"));
    EXPECT_FALSE(prefix.DriveIsMissing(u"/x"));
    EXPECT_EQ(prefix.Settings().nCodePage, 1252);
    EXPECT_FALSE(fs::exists(m_folder / "nowhere"));
}

TEST_F(PrefixTest, APlacedPathLivesWhereTheSettingsSay) {
    m_folder.Put("nomira.conf",
                 "path C:\\tqx\\data\\orvo_con.mdb = /native/where.db\n"
                 "path C:\\tqx = /native/tqx\n");
    EXPECT_EQ(NativePath(u"c:\\TQX\\Data\\ORVO_con.mdb"), "/native/where.db");
    EXPECT_EQ(NativePath(u"C:\\tqx\\Data\\Other.mdb"), "/native/tqx/Data/Other.mdb");
    EXPECT_EQ(NativePath(u"C:\\x\\..\\tqx"), "/native/tqx");
    EXPECT_EQ(NativePath(u"C:\\tqx2"), InDrive("/tqx2"));
    EXPECT_EQ(NativePath(u"D:\\tqx"), (m_folder / "drives/d/tqx").string());
}

TEST_F(PrefixTest, OfTwoPlacesForOnePathTheLaterLineCounts) {
    m_folder.Put("nomira.conf", "path C:\\tqx = /first\npath c:\\TQX = /second\n");
    EXPECT_EQ(NativePath(u"C:\\tqx\\x"), "/second/x");
}

TEST_F(PrefixTest, PlacedNamesAreKnownToTheirDirectory) {
    m_folder.Put("nomira.conf", "path C:\\tqx\\data\\Orvo_con.mdb = /a\npath C:\\tqx = /b\n");
    const Prefix prefix(m_folder.Path());
    EXPECT_EQ(prefix.PlacedNamesIn(u"c:\\Tqx\\data\\"), std::vector<Text>{u"Orvo_con.mdb"});
    EXPECT_EQ(prefix.PlacedNamesIn(u"C:\\"), std::vector<Text>{u"tqx"});
    EXPECT_EQ(prefix.PlacedNamesIn(u"D:\\"), std::vector<Text>{});
    EXPECT_EQ(prefix.PlacedNamesIn(u"/tqx/data"), std::vector<Text>{});
}

TEST_F(PrefixTest, ABadLineInTheSettingsStopsThePrefix) {
    m_folder.Put("nomira.conf", "codepage = 1252\nwrong\n");
    try {
        const Prefix prefix(m_folder.Path());
        ADD_FAILURE() << "the line was taken";
    } catch (const PrefixError& error) {
        const std::string sPlace = (m_folder / "nomira.conf").string() + ":2: ";
        EXPECT_EQ(std::string(error.what()).substr(0, sPlace.size()), sPlace);
    }
}

// Gives the environment's variables back when it goes.
class EnvironmentGuard {
  public:
    ~EnvironmentGuard() {
        for (const auto& [sName, sValue] : m_old) {
            if (sValue) {
                ::setenv(sName.c_str(), sValue->c_str(), 1);
            } else {
                ::unsetenv(sName.c_str());
            }
        }
    }
    // nullptr unsets.
    void Set(const char* sName, const char* sValue) {
        const char* sOld = std::getenv(sName);
        m_old.try_emplace(sName, sOld ? std::optional<std::string>(sOld) : std::nullopt);
        if (sValue) {
            ::setenv(sName, sValue, 1);
        } else {
            ::unsetenv(sName);
        }
    }

  private:
    std::map<std::string, std::optional<std::string>> m_old;
};

TEST(PrefixRootTest, ComesFromTheFirstVariableThatIsSet) {
    const struct {
        const char *sPrefix, *sData, *sHome;
        const char* sRoot;
    } rows[] = {
        {"/p", "/data", "/home/u", "/p"},
        {nullptr, "/data", "/home/u", "/data/nomira"},
        {"", "/data", "/home/u", "/data/nomira"},
        {nullptr, nullptr, "/home/u", "/home/u/.local/share/nomira"},
        {nullptr, "", "/home/u", "/home/u/.local/share/nomira"},
    };
    EnvironmentGuard environment;
    for (const auto& row : rows) {
        environment.Set("NOMIRA_PREFIX", row.sPrefix);
        environment.Set("XDG_DATA_HOME", row.sData);
        environment.Set("HOME", row.sHome);
        EXPECT_EQ(Prefix::RootFromEnvironment(), fs::path(row.sRoot));
    }
}

}  // namespace
}  // namespace nomira::posix
