// Files that Access itself has written, read whole and changed in memory. NOMIRA_ACCESS_SAMPLES
// names the folder that holds them.
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>

#include "TestFiles.h"
#include "adapters/jet/DefinitionPages.h"

namespace nomira::jet {
namespace {

constexpr std::size_t kVersionPlace = 0x14;

class SampleTablesTest : public ::testing::Test {
  protected:
    void SetUp() override {
        const char* const sFolder = std::getenv("NOMIRA_ACCESS_SAMPLES");
        if (sFolder == nullptr) GTEST_SKIP() << "NOMIRA_ACCESS_SAMPLES names no folder of files";
        for (const auto& entry : std::filesystem::directory_iterator(sFolder))
            if (entry.path().extension() == ".mdb") m_paths.push_back(entry.path());
        ASSERT_FALSE(m_paths.empty());
    }

    static std::unique_ptr<AccessFile> Load(const std::filesystem::path& path) {
        std::ifstream stream(path, std::ios::binary);
        const Bytes bytes{std::istreambuf_iterator<char>(stream), {}};
        const auto generation =
            LoadU8(bytes, kVersionPlace) == 0 ? Generation::Jet3 : Generation::Jet4;
        return std::make_unique<AccessFile>(std::make_unique<MemoryPages>(generation, bytes));
    }
    static std::vector<Table*> TablesOf(AccessFile& file) {
        std::vector<Table*> tables;
        for (const CatalogueEntry& entry : file.Catalogue())
            if (entry.IsTable())
                tables.push_back(&file.TableAt(static_cast<std::uint32_t>(entry.nId)));
        return tables;
    }
    void ForEachFile(const std::function<void(AccessFile&)>& act) const {
        for (const std::filesystem::path& path : m_paths) {
            SCOPED_TRACE(path.filename().string());
            act(*Load(path));
        }
    }
    // The table's rows, in the order of places, and those of its index i.
    static std::pair<std::vector<RowPlace>, std::vector<RowPlace>> Places(Table& table,
                                                                          std::size_t i) {
        std::vector<RowPlace> rows;
        for (auto scan = table.Rows(); !scan.AtEnd(); scan.Next())
            rows.push_back(scan.Place());
        std::vector<IndexEntry> entries;
        std::vector<std::uint32_t> pages;
        table.Index(i).Check(entries, pages);
        std::vector<RowPlace> indexed;
        for (const IndexEntry& entry : entries)
            indexed.push_back(entry.place);
        std::sort(indexed.begin(), indexed.end());
        return {rows, indexed};
    }

    std::vector<std::filesystem::path> m_paths;
};

TEST_F(SampleTablesTest, EveryTableOfEveryFileIsReadWhole) {
    std::size_t nRows = 0;
    ForEachFile([&](AccessFile& file) {
        for (Table* table : TablesOf(file)) {
            const auto rows = RowsOf(*table);
            EXPECT_EQ(rows.size(), table->RowCount());
            nRows += rows.size();
            for (std::size_t i = 0; i < table->Definition().realIndexes.size(); ++i) {
                if (table->Definition().realIndexes[i].IgnoresNulls()) continue;
                const auto [places, indexed] = Places(*table, i);
                EXPECT_EQ(places, indexed);
            }
        }
    });
    EXPECT_GT(nRows, 5000U);
}

TEST_F(SampleTablesTest, OneColumnIsReadAsAllAre) {
    ForEachFile([](AccessFile& file) {
        for (Table* table : TablesOf(file))
            for (const auto& [place, row] : RowsOf(*table))
                for (std::size_t i = 0; i < row.size(); ++i)
                    ASSERT_EQ(table->Read(place, i), row[i]);
    });
}

// A definition that is built from what was read of it is the same but for fields that hold
// whatever was in memory: other programs differ in them from file to file.
TEST_F(SampleTablesTest, DefinitionsAreBuiltAsTheyWere) {
    std::size_t nSame = 0;
    std::size_t nAll = 0;
    ForEachFile([&](AccessFile& file) {
        for (Table* table : TablesOf(file)) {
            const std::uint32_t nPage = table->Definition().nPage;
            Bytes stored = DefinitionBytes(file.Pages(), nPage);
            const Bytes built = BuildDefinition(table->Definition(), file.Kind());
            ASSERT_EQ(stored.size(), built.size());
            std::copy_n(built.begin(), 8, stored.begin());  // the page's head
            nSame += stored == built ? 1 : 0;
            ++nAll;
            const TableDefinition again = ParseDefinition(built, nPage, file.Kind());
            EXPECT_EQ(BuildDefinition(again, file.Kind()), built);
        }
    });
    EXPECT_GT(nSame, nAll / 4);
}

// Each row goes and comes back, and all indexes follow.
TEST_F(SampleTablesTest, RowsAreReplacedInFilesOfOthers) {
    std::size_t nReplaced = 0;
    ForEachFile([&](AccessFile& file) {
        for (Table* table : TablesOf(file)) {
            if (table->Definition().kind == TableKind::System) continue;
            for (auto& [place, old] : RowsOf(*table)) {
                Row row = old;
                file.Pages().Commit();
                try {
                    table->Update(place, row);
                    table->Delete(place);
                    table->Insert(row);
                    ++nReplaced;
                } catch (const Failure& failure) {
                    EXPECT_NE(failure.Kind(), FailureKind::Damaged) << failure.what();
                    file.Pages().Rollback();
                }
            }
            const auto rows = RowsOf(*table);
            EXPECT_EQ(table->RowCount(), rows.size());
            for (std::size_t i = 0; i < table->Definition().realIndexes.size(); ++i) {
                if (table->Definition().realIndexes[i].IgnoresNulls()) continue;
                const auto [places, indexed] = Places(*table, i);
                EXPECT_EQ(places, indexed);
            }
        }
    });
    EXPECT_GT(nReplaced, 3000U);
}

TEST_F(SampleTablesTest, TablesAreAddedToFilesOfOthers) {
    ForEachFile([](AccessFile& file) {
        NewTable asked{u"Nomira things",
                       {{u"Id", ColumnType::Long, 0, true}, {u"Text", ColumnType::Memo}},
                       {{u"PrimaryKey", {u"Id"}, true, true}}};
        try {
            Table& made = file.CreateTable(asked);
            Row row = {Value(), std::u16string(9000, u'x')};
            const RowPlace place = made.Insert(row);
            file.Pages().Commit();
            EXPECT_EQ(file.FindTable(u"nomira things"), &made);
            EXPECT_EQ(made.Read(place), row);
        } catch (const Failure& failure) {
            // Names are indexed in an order that isn't known.
            EXPECT_EQ(failure.Kind(), FailureKind::Unsupported) << failure.what();
        }
    });
}

}  // namespace
}  // namespace nomira::jet
