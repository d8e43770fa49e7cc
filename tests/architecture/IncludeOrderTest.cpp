// Reads the #includes of src/ and compares them with the house order of docs/architecture.md.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <vector>

#include "testing/TextPrinting.h"

namespace {

namespace fs = std::filesystem;

const fs::path kSource = fs::path(NOMIRA_SOURCE_DIR) / "src";

// From the ground up: a folder may include itself and those before it.
const std::vector<std::string> kSubsystems{"langtools", "platform",   "ui/formlayer", "frame",
                                           "database",  "link",       "conversion",   "userprogram",
                                           "ui",        "frame/entry"};

// Where the ports are. An adapter may include these folders and its own, and nothing else of src/.
const std::set<std::string> kPortFolders{"langtools", "platform", "ui/formlayer", "database",
                                         "link"};

// Files of this system, which adapters and programs share. It includes nothing else of src/.
const std::string kNativeFiles = "nativefiles";

// An adapter that stands on another one, with the reason.
const std::set<std::pair<std::string, std::string>> kAdapterExceptions{
    {"adapters/jetsql", "adapters/jet"},     // its tables, as SQL sees them
    {"adapters/sqlite", "adapters/jetsql"},  // the engine opens both kinds of files
    {"adapters/sqlite", "adapters/jet"},
};

struct Include {
    fs::path file;      // relative to src/
    std::string sName;  // as written
    bool bAngle;
};

std::vector<Include> ReadIncludes(const fs::path& file) {
    std::vector<Include> includes;
    std::ifstream in(file);
    for (std::string sLine; std::getline(in, sLine);) {
        if (sLine.rfind("#include", 0) != 0) continue;
        const std::size_t nFrom = sLine.find_first_of("<\"");
        const std::size_t nTo = sLine.find_first_of(">\"", nFrom + 1);
        if (nFrom == std::string::npos || nTo == std::string::npos) continue;
        includes.push_back({fs::relative(file, kSource), sLine.substr(nFrom + 1, nTo - nFrom - 1),
                            sLine[nFrom] == '<'});
    }
    return includes;
}

std::vector<Include> AllIncludes() {
    std::vector<Include> all;
    for (const auto& entry : fs::recursive_directory_iterator(kSource)) {
        const std::string sExtension = entry.path().extension().string();
        if (sExtension != ".cpp" && sExtension != ".h") continue;
        for (const Include& include : ReadIncludes(entry.path()))
            all.push_back(include);
    }
    return all;
}

std::string FolderOf(const std::string& sPath) {
    const std::size_t nSlash = sPath.rfind('/');
    return nSlash == std::string::npos ? std::string() : sPath.substr(0, nSlash);
}

bool StartsWith(const std::string& s, const std::string& sPrefix) {
    return s.rfind(sPrefix, 0) == 0;
}

// "" if the include is fine, else what is wrong with it.
std::string Verdict(const std::string& sFrom, const Include& include) {
    const auto from = std::find(kSubsystems.begin(), kSubsystems.end(), sFrom);
    const bool bSubsystem = from != kSubsystems.end();
    if (include.bAngle) {
        const bool bStandard = include.sName.find_first_of("./") == std::string::npos;
        return bSubsystem && !bStandard ? "a subsystem uses the standard library alone" : "";
    }
    const std::string sTo = FolderOf(include.sName);
    if (bSubsystem) {
        const auto to = std::find(kSubsystems.begin(), kSubsystems.end(), sTo);
        if (to == kSubsystems.end()) return "no folder that a subsystem may use";
        return to > from ? "the arrow points upwards" : "";
    }
    if (StartsWith(sFrom, "adapters/")) {
        if (sTo == sFrom || sTo == kNativeFiles || kPortFolders.contains(sTo)) return "";
        return kAdapterExceptions.contains({sFrom, sTo}) ? "" : "an adapter uses ports alone";
    }
    if (sFrom == kNativeFiles) return sTo == kNativeFiles ? "" : "it stands on the system alone";
    if (StartsWith(sFrom, "apps/")) return "";
    return "a folder that the house order does not know";
}

TEST(IncludeOrderTest, EveryArrowPointsDown) {
    const std::vector<Include> all = AllIncludes();
    ASSERT_GT(all.size(), 100U);
    for (const Include& include : all) {
        const std::string sVerdict = Verdict(include.file.parent_path().generic_string(), include);
        EXPECT_EQ(sVerdict, "") << include.file << " includes " << include.sName;
    }
}

TEST(IncludeOrderTest, EveryIncludedFileOfOursExists) {
    for (const Include& include : AllIncludes()) {
        if (include.bAngle) continue;
        EXPECT_TRUE(fs::exists(kSource / include.sName))
            << include.file << " includes " << include.sName
            << "; includes are written from src/ on";
    }
}

TEST(IncludeOrderTest, WrongArrowsAreSeen) {
    const auto verdict = [](const char* sFrom, const char* sName, bool bAngle) {
        return Verdict(sFrom, Include{"x.cpp", sName, bAngle});
    };
    EXPECT_NE(verdict("langtools", "platform/Platform.h", false), "");
    EXPECT_NE(verdict("frame", "frame/entry/Main.h", false), "");
    EXPECT_NE(verdict("conversion", "adapters/sqlite/SqliteEngine.h", false), "");
    EXPECT_NE(verdict("frame", "unistd.h", true), "");
    EXPECT_NE(verdict("database", "sqlite3.h", true), "");
    EXPECT_NE(verdict("adapters/posix", "conversion/KeyScheme.h", false), "");
    EXPECT_NE(verdict("adapters/posix", "adapters/sqlite/SqliteEngine.h", false), "");
    EXPECT_NE(verdict("elsewhere", "langtools/Text.h", false), "");
    EXPECT_NE(verdict("database", "nativefiles/Descriptor.h", false), "");
    EXPECT_NE(verdict("nativefiles", "langtools/Text.h", false), "");
    EXPECT_EQ(verdict("frame/entry", "ui/StdForm.h", false), "");
    EXPECT_EQ(verdict("adapters/rpc", "nativefiles/Descriptor.h", false), "");
    EXPECT_EQ(verdict("nativefiles", "unistd.h", true), "");
    EXPECT_EQ(verdict("adapters/sqlite", "database/DatabaseEngine.h", false), "");
    EXPECT_EQ(verdict("adapters/sqlite", "sqlite3.h", true), "");
}

}  // namespace
