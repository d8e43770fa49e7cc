#include "adapters/jet/Compact.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <set>

#include "adapters/jet/Checker.h"
#include "adapters/jet/DefinitionPages.h"
#include "adapters/jet/FilePages.h"
#include "adapters/jet/MemoryPages.h"

namespace nomira::testing {
namespace {

namespace fs = std::filesystem;
using jet::AccessFile;
using jet::ColumnType;
using jet::FailureKind;
using jet::Generation;
using jet::Row;
using jet::Table;
using jet::Value;

std::unique_ptr<AccessFile> Opened(const jet::CompactedFile& compacted, Generation generation) {
    return std::make_unique<AccessFile>(
        std::make_unique<jet::MemoryPages>(generation, compacted.bytes));
}

void ExpectSound(AccessFile& file) {
    for (const jet::Finding& finding : jet::CheckFile(file))
        if (!finding.bWarning) ADD_FAILURE() << finding.nPage << ": " << finding.sText;
}

// All rows of a table by the numbers of their columns.
std::multiset<Row> RowsOf(Table& table) {
    std::multiset<Row> rows;
    for (auto scan = table.Rows(); !scan.AtEnd(); scan.Next())
        rows.insert(table.Read(scan.Place()));
    return rows;
}

std::optional<FailureKind> Failed(AccessFile& source, Generation generation, std::string& sWords) {
    try {
        jet::Compact(source, generation);
        return std::nullopt;
    } catch (const jet::Failure& failure) {
        sWords = failure.what();
        return failure.Kind();
    }
}

class CompactTest : public ::testing::TestWithParam<std::pair<Generation, Generation>> {
  protected:
    CompactTest() {
        auto pages = std::make_unique<jet::MemoryPages>(From());
        AccessFile::CreateEmpty(*pages);
        file = std::make_unique<AccessFile>(std::move(pages));
        Table& items = file->CreateTable(
            {.sName = u"Items",
             .columns = {{.sName = u"Key_id", .bAutonumber = true},
                         {.sName = u"KeyString", .type = ColumnType::Text, .nCharacters = 100},
                         {.sName = u"Yes", .type = ColumnType::Boolean},
                         {.sName = u"Bytes", .type = ColumnType::Binary, .nCharacters = 40}},
             .indexes = {{.sName = u"PrimaryKey", .columns = {u"Key_id"}, .bPrimary = true},
                         {.sName = u"ByKey", .columns = {u"KeyString"}}}});
        Table& messages =
            file->CreateTable({.sName = u"Messages",
                               .columns = {{.sName = u"Key_id"},
                                           {.sName = u"String", .type = ColumnType::Memo},
                                           {.sName = u"When", .type = ColumnType::DateTime}},
                               .indexes = {{.sName = u"ByKey", .columns = {u"Key_id"}}}});
        for (int n = 0; n < 300; ++n) {
            Row item{Value(), u"Key " + std::u16string(n % 40, u'ü'), n % 2 == 0,
                     jet::Bytes(static_cast<std::size_t>(n % 30), 7)};
            items.Insert(item);
            Row message{item[0], std::u16string(static_cast<std::size_t>(n * 17), u'é'), n + 0.25};
            messages.Insert(message);
        }
        file->CreateRelationship({.sName = u"ItemsMessages",
                                  .sPrimaryTable = u"Items",
                                  .sPrimaryColumn = u"Key_id",
                                  .sForeignTable = u"Messages",
                                  .sForeignColumn = u"Key_id",
                                  .bCascadeDelete = true});
        // Holes, and numbers that nobody has any more.
        for (auto scan = items.Rows(); !scan.AtEnd(); scan.Next()) {
            const Value id = items.Read(scan.Place(), 0);
            if (std::get<std::int64_t>(id) % 3 == 0) items.Delete(scan.Place());
        }
    }
    static Generation From() { return GetParam().first; }
    static Generation To() { return GetParam().second; }

    std::unique_ptr<AccessFile> file;
};
INSTANTIATE_TEST_SUITE_P(Generations, CompactTest,
                         ::testing::Values(std::pair(Generation::Jet3, Generation::Jet3),
                                           std::pair(Generation::Jet3, Generation::Jet4),
                                           std::pair(Generation::Jet4, Generation::Jet3),
                                           std::pair(Generation::Jet4, Generation::Jet4)));

TEST_P(CompactTest, TheNewFileIsSoundAndHoldsAllRows) {
    const jet::CompactedFile compacted = jet::Compact(*file, To());
    EXPECT_EQ(compacted.leftOut, std::vector<std::string>{});
    const auto copy = Opened(compacted, To());
    ExpectSound(*copy);
    for (const char16_t* sTable : {u"Items", u"Messages"}) {
        ASSERT_NE(copy->FindTable(sTable), nullptr);
        EXPECT_EQ(copy->FindTable(sTable)->RowCount(), 200U);
        EXPECT_EQ(RowsOf(*copy->FindTable(sTable)), RowsOf(*file->FindTable(sTable)));
    }
}

TEST_P(CompactTest, ItIsSmaller) {
    // Of its own generation: the other one's pages have another size.
    EXPECT_LT(jet::Compact(*file, From()).bytes.size(),
              file->Pages().Count() * file->Pages().Format().nPageSize);
}

TEST_P(CompactTest, TheCounterGoesOn) {
    const auto copy = Opened(jet::Compact(*file, To()), To());
    Row item(4);
    copy->FindTable(u"Items")->Insert(item);
    EXPECT_EQ(item[0], Value(std::int64_t{301}));
}

TEST_P(CompactTest, TheRelationshipHolds) {
    const auto copy = Opened(jet::Compact(*file, To()), To());
    Row lost{std::int64_t{9999}, std::u16string(u"x"), 0.0};
    EXPECT_THROW(copy->FindTable(u"Messages")->Insert(lost), jet::Failure);
    Table& items = *copy->FindTable(u"Items");
    items.Delete(items.Rows().Place());
    EXPECT_EQ(copy->FindTable(u"Messages")->RowCount(), 199U);
    ExpectSound(*copy);
}

TEST_P(CompactTest, TheRelationshipStandsInTheCatalogue) {
    const auto copy = Opened(jet::Compact(*file, To()), To());
    int nFound = 0;
    for (const jet::CatalogueEntry& entry : copy->Catalogue())
        nFound += entry.sName == u"ItemsMessages" && entry.nType == 8 ? 1 : 0;
    EXPECT_EQ(nFound, 1);
    EXPECT_EQ(copy->FindTable(u"MSysRelationships")->RowCount(), 1U);
}

TEST_P(CompactTest, ATextThatTheGenerationLacksStopsItWithTheTablesName) {
    Row message{std::int64_t{1}, std::u16string(u"Привет"), 0.0};
    if (From() == Generation::Jet3) {  // it can't have such a text
        EXPECT_THROW(file->FindTable(u"Messages")->Insert(message), jet::Failure);
        return;
    }
    file->FindTable(u"Messages")->Insert(message);
    std::string sWords;
    if (To() == Generation::Jet4) {
        EXPECT_EQ(Failed(*file, To(), sWords), std::nullopt) << sWords;
        return;
    }
    EXPECT_EQ(Failed(*file, To(), sWords), FailureKind::Unsupported);
    EXPECT_EQ(sWords.rfind("Messages: ", 0), 0U) << sWords;
}

// --- Files that the makers' own programs wrote.

std::vector<fs::path> Samples() {
    std::vector<fs::path> samples;
    const char* sFolder = std::getenv("NOMIRA_ACCESS_SAMPLES");
    if (sFolder == nullptr) return samples;
    for (const auto& entry : fs::directory_iterator(sFolder))
        if (entry.path().extension() == ".mdb") samples.push_back(entry.path());
    return samples;
}

TEST(CompactSamplesTest, EachSampleBecomesASoundFileOfEitherGeneration) {
    if (Samples().empty()) GTEST_SKIP() << "NOMIRA_ACCESS_SAMPLES names no folder with samples";
    int nDone = 0;
    for (const fs::path& path : Samples()) {
        AccessFile source(jet::FilePages::Open(path, jet::OpenMode::ReadOnly));
        for (const Generation generation : {Generation::Jet3, Generation::Jet4}) {
            SCOPED_TRACE(path.filename().string() +
                         (generation == Generation::Jet3 ? " as Jet 3" : " as Jet 4"));
            std::string sWords;
            const auto failed = Failed(source, generation, sWords);
            if (failed) {
                // A character that isn't known, or a table wider than the generation has it.
                EXPECT_TRUE(*failed == FailureKind::Unsupported ||
                            *failed == FailureKind::Constraint)
                    << sWords;
                continue;
            }
            ++nDone;
            const auto copy = Opened(jet::Compact(source, generation), generation);
            ExpectSound(*copy);
            for (const jet::CatalogueEntry& entry : source.Catalogue()) {
                if (!entry.IsTable() || entry.IsSystem()) continue;
                Table* made = copy->FindTable(entry.sName);
                ASSERT_NE(made, nullptr);
                EXPECT_EQ(made->RowCount(), source.FindTable(entry.sName)->RowCount());
            }
        }
    }
    EXPECT_GT(nDone, 20);
}

}  // namespace
}  // namespace nomira::testing
