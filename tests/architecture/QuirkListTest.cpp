// Every line of docs/quirks.md names a test; this one sees that it is there.
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <string>

#include "testing/TextPrinting.h"

namespace {

namespace fs = std::filesystem;

const fs::path kRoot = NOMIRA_SOURCE_DIR;

std::string ReadFile(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

// "Suite.Name" of every test in tests/, golden runs as "golden.folder".
std::set<std::string> AllTests() {
    const std::regex test(R"(TEST(?:_F|_P)?\(\s*(\w+),\s*(\w+)\))");
    const std::regex typedTest(R"(TYPED_TEST(?:_P)?\(\s*(\w+),\s*(\w+)\))");
    std::set<std::string> tests;
    for (const auto& entry : fs::recursive_directory_iterator(kRoot / "tests")) {
        const fs::path& path = entry.path();
        if (entry.is_directory() && path.parent_path().filename() == "golden")
            tests.insert("golden." + path.filename().string());
        if (path.extension() != ".cpp" && path.extension() != ".h") continue;
        const std::string sSource = ReadFile(path);
        for (const std::regex& form : {test, typedTest}) {
            for (std::sregex_iterator hit(sSource.begin(), sSource.end(), form), end; hit != end;
                 ++hit)
                tests.insert((*hit)[1].str() + "." + (*hit)[2].str());
        }
    }
    return tests;
}

TEST(QuirkListTest, EveryLineNamesATestThatExists) {
    const std::set<std::string> tests = AllTests();
    const std::regex numbered(R"(^(\d+)\. )");
    const std::regex named(R"(`(\w+\.\w+)`)");
    std::ifstream list(kRoot / "docs" / "quirks.md");
    int nQuirks = 0;
    for (std::string sLine; std::getline(list, sLine);) {
        std::smatch number;
        if (!std::regex_search(sLine, number, numbered)) continue;
        EXPECT_EQ(std::stoi(number[1]), ++nQuirks) << "the lines are numbered without a gap";
        const std::size_t nTests = sLine.find("*Test:*");
        ASSERT_NE(nTests, std::string::npos) << sLine;
        const std::string sNames = sLine.substr(nTests);
        int nNamed = 0;
        for (std::sregex_iterator hit(sNames.begin(), sNames.end(), named), end; hit != end;
             ++hit, ++nNamed)
            EXPECT_TRUE(tests.contains((*hit)[1])) << (*hit)[1] << " in line " << nQuirks;
        EXPECT_GT(nNamed, 0) << sLine;
    }
    EXPECT_GT(nQuirks, 50);
}

}  // namespace
