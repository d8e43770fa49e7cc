// Files that other programs wrote, from a folder that isn't part of the project: the environment
// variable NOMIRA_ACCESS_SAMPLES names it.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>

#include "SecondReader.h"
#include "adapters/jet/Checker.h"
#include "adapters/jet/FilePages.h"
#include "adapters/jet/IndexEntries.h"
#include "adapters/jet/KeyCodes.h"

namespace nomira::jet {
namespace {

namespace fs = std::filesystem;

class SampleFilesTest : public ::testing::Test {
  protected:
    void SetUp() override {
        const char* sFolder = std::getenv("NOMIRA_ACCESS_SAMPLES");
        if (sFolder == nullptr || !fs::is_directory(sFolder))
            GTEST_SKIP() << "NOMIRA_ACCESS_SAMPLES names no folder of Access files";
        for (const auto& entry : fs::directory_iterator(sFolder))
            if (entry.path().extension() == ".mdb") m_files.push_back(entry.path());
        std::ranges::sort(m_files);
        ASSERT_FALSE(m_files.empty());
    }

    static AccessFile Open(const fs::path& path) {
        return AccessFile(FilePages::Open(path, OpenMode::ReadOnly));
    }

    template <typename Visit>
    void ForEachTable(Visit visit) {
        for (const fs::path& path : m_files) {
            SCOPED_TRACE(path.filename());
            AccessFile file = Open(path);
            for (const CatalogueEntry& entry : file.Catalogue()) {
                if (!entry.IsTable()) continue;
                SCOPED_TRACE(testing::Utf8(entry.sName));
                visit(path, file, file.TableAt(static_cast<std::uint32_t>(entry.nId)),
                      testing::Utf8(entry.sName));
            }
        }
    }

    std::vector<fs::path> m_files;
};

// What an index should hold by its rows, and what it holds. Keys with characters that this library
// doesn't know are left out of both.
struct Entries {
    std::vector<IndexEntry> expected;
    std::vector<IndexEntry> found;
    int nUnknown = 0;
};

Entries EntriesOf(Table& table, std::size_t nIndex, Generation generation) {
    Entries entries;
    std::vector<std::uint32_t> pages;
    table.Index(nIndex).Check(entries.found, pages);
    const RealIndex& index = table.Definition().realIndexes[nIndex];
    for (auto scan = table.Rows(); !scan.AtEnd(); scan.Next()) {
        const RowPlace place = scan.Place();
        try {
            Bytes key = KeyOfRow(table.Definition(), index, table.Read(place), generation);
            if (!key.empty()) entries.expected.push_back({std::move(key), place});
        } catch (const Failure& failure) {
            if (failure.Kind() != FailureKind::Unsupported) throw;
            ++entries.nUnknown;
            EXPECT_EQ(std::erase_if(entries.found,
                                    [&](const IndexEntry& entry) { return entry.place == place; }),
                      1U);
        }
    }
    std::ranges::sort(entries.expected);
    return entries;
}

TEST_F(SampleFilesTest, EveryIndexHoldsTheKeysThatItsRowsMake) {
    int nIndexes = 0;
    int nEntries = 0;
    int nUnknown = 0;
    ForEachTable([&](const fs::path&, AccessFile& file, Table& table, const std::string&) {
        for (std::size_t n = 0; n < table.Definition().realIndexes.size(); ++n) {
            SCOPED_TRACE(n);
            const Entries entries = EntriesOf(table, n, file.Kind());
            EXPECT_EQ(entries.expected, entries.found);
            ++nIndexes;
            nEntries += static_cast<int>(entries.found.size());
            nUnknown += entries.nUnknown;
        }
    });
    std::cout << nIndexes << " indexes, " << nEntries << " entries, " << nUnknown
              << " with characters that aren't known\n";
    EXPECT_GT(nEntries, nUnknown);
}

TEST_F(SampleFilesTest, EveryFileIsSound) {
    for (const fs::path& path : m_files) {
        SCOPED_TRACE(path.filename());
        AccessFile file = Open(path);
        for (const Finding& finding : CheckFile(file))
            EXPECT_TRUE(finding.bWarning) << finding.sText << ", page " << finding.nPage;
    }
}

TEST_F(SampleFilesTest, EveryTableHasTheRowsThatAnotherReaderSees) {
    ASSERT_TRUE(testing::HasSecondReader())
        << "mdb-export is missing; script/bootstrap installs it";
    int nRows = 0;
    ForEachTable([&](const fs::path& path, AccessFile&, Table& table, const std::string& sName) {
        const testing::PrintedRows printed = testing::PrintTable(path, sName);
        EXPECT_EQ(testing::DifferenceOf(table, printed), "");
        nRows += static_cast<int>(printed.size());
    });
    EXPECT_GT(nRows, 0);
}

}  // namespace
}  // namespace nomira::jet
