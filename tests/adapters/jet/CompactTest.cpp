#include "adapters/jet/Compact.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <set>

#include "adapters/jet/Catalogue.h"
#include "adapters/jet/Checker.h"
#include "adapters/jet/DefinitionPages.h"
#include "adapters/jet/FilePages.h"
#include "adapters/jet/Header.h"
#include "adapters/jet/MemoryPages.h"
#include "adapters/jet/Owners.h"
#include "adapters/jet/Properties.h"

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

// --- What else stands in the catalogue.

constexpr std::int32_t kFormsParent = 0x0F000005;
constexpr std::int32_t kDatabase = 0x10000000;

jet::CatalogueEntry Object(std::int32_t nNumber, std::int16_t nType, const char16_t* sName,
                           std::int32_t nParent = jet::kTablesParent) {
    return {std::numeric_limits<std::int32_t>::min() + nNumber, nParent, sName, nType, 0};
}

// The object's row in the catalogue.
std::optional<jet::RowPlace> PlaceOf(AccessFile& file, std::u16string_view sName) {
    jet::SystemTable objects(file, jet::kObjectsTable);
    for (auto scan = objects.Rows().Rows(); !scan.AtEnd(); scan.Next())
        if (objects.Read(scan.Place(), u"Name") == Value(std::u16string(sName)))
            return scan.Place();
    return std::nullopt;
}
Value Entry(AccessFile& file, std::u16string_view sName, std::u16string_view sColumn) {
    const auto place = PlaceOf(file, sName);
    return place ? jet::SystemTable(file, jet::kObjectsTable).Read(*place, sColumn) : Value();
}
void SetEntry(AccessFile& file, std::u16string_view sName, std::u16string_view sColumn,
              const Value& value) {
    jet::SystemTable objects(file, jet::kObjectsTable);
    const jet::RowPlace place = PlaceOf(file, sName).value();
    Row row = objects.Rows().Read(place);
    row[objects.Column(sColumn)] = value;
    objects.Rows().Update(place, row);
}

std::vector<std::string> LeftOut(AccessFile& file, Generation generation) {
    return jet::Compact(file, generation).leftOut;
}
using Lines = std::vector<std::string>;

TEST_P(CompactTest, WhatBelongsToTheMakersProgramIsLeftOutAndTold) {
    jet::AddObject(*file, Object(1, 3, u"Forms", 0x0F000000));
    jet::AddObject(*file, Object(2, -32768, u"Main form", kFormsParent));
    jet::AddObject(*file, Object(3, -32764, u"Monthly", kFormsParent));
    jet::AddObject(*file, Object(4, -32766, u"AutoExec", kFormsParent));
    jet::AddObject(*file, Object(5, -32761, u"Tools", kFormsParent));
    jet::AddObject(*file, Object(6, -32756, u"Page", kFormsParent));
    jet::AddObject(*file, Object(7, 9, u"Positive", kFormsParent));
    jet::AddObject(*file, Object(8, -31000, u"Öther", kFormsParent));
    jet::AddObject(*file, Object(9, -32757, u"Of a form", kFormsParent));
    EXPECT_EQ(
        LeftOut(*file, To()),
        (Lines{"the form Main form", "the report Monthly", "the macro AutoExec", "the module Tools",
               "the data access page Page", "the check constraint Positive", "the object ?ther"}));
    EXPECT_EQ(jet::TellObjects(*file), LeftOut(*file, To()));
}

TEST_P(CompactTest, TheMakersProgramsTablesAreToldOfUnlessItMakesThemAnew) {
    for (const char16_t* sName : {u"MSysModules", u"MSysIMEXSpecs", u"MSysIMEXColumns"}) {
        Table& table =
            file->CreateTable({.sName = sName, .columns = {{.sName = u"Name"}}, .indexes = {}});
        if (sName != std::u16string_view(u"MSysIMEXColumns")) {
            Row row{std::int64_t{1}};
            table.Insert(row);
        }
        SetEntry(*file, sName, u"Flags", std::int64_t{2});
    }
    EXPECT_EQ(LeftOut(*file, To()),
              (Lines{"the table MSysIMEXSpecs, which is the maker's program's own"}));
}

TEST_P(CompactTest, QueriesLinksAndDocumentsComeAlong) {
    jet::AddObject(*file, Object(1, 5, u"All items"));
    jet::SystemTable queries(*file, jet::kQueriesTable);
    for (const std::int64_t nAttribute : {0, 5, 255})
        queries.Insert({{u"ObjectId", std::int64_t{Object(1, 5, u"").nId}},
                        {u"Attribute", nAttribute},
                        {u"Name1", std::u16string(u"Items")}});
    jet::AddObject(*file, Object(2, 6, u"Far"));
    SetEntry(*file, u"Far", u"Database", std::u16string(u"C:\\far.mdb"));
    SetEntry(*file, u"Far", u"ForeignName", std::u16string(u"There"));
    jet::AddObject(*file, Object(3, 4, u"Served"));
    SetEntry(*file, u"Served", u"Connect", std::u16string(u"ODBC;DSN=cell"));
    jet::AddObject(*file, Object(4, -32757, u"SummaryInfo", jet::kDatabasesParent));
    SetEntry(*file, u"SummaryInfo", u"LvExtra", jet::Bytes{1, 2, 3});
    const jet::CompactedFile compacted = jet::Compact(*file, To());
    EXPECT_EQ(compacted.leftOut, Lines{});
    const auto copy = Opened(compacted, To());
    ExpectSound(*copy);
    EXPECT_EQ(copy->FindTable(u"MSysQueries")->RowCount(), 3U);
    EXPECT_EQ(Entry(*copy, u"All items", u"Type"), Value(std::int64_t{5}));
    EXPECT_EQ(Entry(*copy, u"Far", u"Database"), Value(std::u16string(u"C:\\far.mdb")));
    EXPECT_EQ(Entry(*copy, u"Far", u"ForeignName"), Value(std::u16string(u"There")));
    EXPECT_EQ(Entry(*copy, u"Served", u"Connect"), Value(std::u16string(u"ODBC;DSN=cell")));
    EXPECT_EQ(Entry(*copy, u"SummaryInfo", u"LvExtra"), Value(jet::Bytes{1, 2, 3}));
    EXPECT_EQ(jet::TellObjects(*file),
              (Lines{"the query All items", "the link to the table Far",
                     "the link to the table Served", "the document SummaryInfo"}));
}

TEST_P(CompactTest, ARelationshipComesAlongIfBothItsSidesDo) {
    jet::AddObject(*file, Object(1, 6, u"Far"));
    jet::CatalogueEntry system = Object(2, -32768, u"Form", kFormsParent);
    jet::AddObject(*file, system);
    file->CreateTable({.sName = u"MSysOwn", .columns = {{.sName = u"Id"}}, .indexes = {}});
    SetEntry(*file, u"MSysOwn", u"Flags", std::int64_t{2});
    jet::SystemTable rows(*file, jet::kRelationshipsTable);
    int nNumber = 10;
    for (const auto& [sName, sOther] :
         {std::pair(u"WithLink", u"Far"), std::pair(u"WithForm", u"Form"),
          std::pair(u"WithOwn", u"MSysOwn"), std::pair(u"WithNothing", u"Gone")}) {
        jet::AddObject(*file, Object(nNumber++, 8, sName, jet::kRelationshipsParent));
        rows.Insert({{u"szRelationship", std::u16string(sName)},
                     {u"grbit", std::int64_t{2}},
                     {u"ccolumn", std::int64_t{1}},
                     {u"icolumn", std::int64_t{0}},
                     {u"szObject", std::u16string(u"Items")},
                     {u"szColumn", std::u16string(u"Key_id")},
                     {u"szReferencedObject", std::u16string(sOther)},
                     {u"szReferencedColumn", std::u16string(u"Id")}});
    }
    const jet::CompactedFile compacted = jet::Compact(*file, To());
    EXPECT_EQ(compacted.leftOut, (Lines{"the form Form", "the relationship WithForm",
                                        "the relationship WithNothing"}));
    const auto copy = Opened(compacted, To());
    EXPECT_EQ(copy->FindTable(u"MSysRelationships")->RowCount(), 2U);  // that of the messages too
    EXPECT_TRUE(PlaceOf(*copy, u"WithLink"));
    EXPECT_FALSE(PlaceOf(*copy, u"WithOwn"));
}

// A caption of the table, a default and a rule of its column.
jet::Properties SomeProperties(std::u16string_view sCaption) {
    return {
        .names = {u"Description", u"DefaultValue", u"Required"},
        .blocks = {
            {.nKind = 0, .sName = u"", .properties = {{0, 10, 0, std::u16string(sCaption)}}},
            {.nKind = 1,
             .sName = u"KeyString",
             .properties = {{1, 12, 1, std::u16string(u"\"IN_1\"")}, {1, 1, 2, jet::Bytes{1}}}}}};
}

TEST_P(CompactTest, PropertiesComeAlongInTheNewGenerationsForm) {
    SetEntry(*file, u"Items", u"LvProp",
             *jet::WriteProperties(SomeProperties(u"Schlüssel"), From()));
    const jet::CompactedFile compacted = jet::Compact(*file, To());
    EXPECT_EQ(compacted.leftOut, Lines{});
    const auto copy = Opened(compacted, To());
    EXPECT_EQ(Entry(*copy, u"Items", u"LvProp"),
              Value(*jet::WriteProperties(SomeProperties(u"Schlüssel"), To())));
    EXPECT_EQ(jet::TellObjects(*file), (Lines{"the captions, formats and rules of Items"}));
}

TEST_P(CompactTest, PropertiesThatTheNewGenerationCantHoldAreTold) {
    const bool bSame = From() == To();
    SetEntry(*file, u"Items", u"LvProp", jet::Bytes{1, 2, 3});
    EXPECT_EQ(LeftOut(*file, To()),
              bSame ? Lines{} : Lines{"the captions, formats and rules of Items"});
    if (From() == Generation::Jet3) return;  // it has no such text either
    SetEntry(*file, u"Items", u"LvProp", *jet::WriteProperties(SomeProperties(u"Ключ"), From()));
    EXPECT_EQ(LeftOut(*file, To()),
              bSame ? Lines{} : Lines{"the captions, formats and rules of Items"});
}

TEST_P(CompactTest, TheDatabasesOwnPropertiesComeAlongWithoutTheProgramsMarks) {
    jet::Properties database{.names = {u"AppTitle", u"AccessVersion", u"Build", u"ProjVer"},
                             .blocks = {{.nKind = 0,
                                         .sName = u"",
                                         .properties = {{0, 10, 1, std::u16string(u"08.50")},
                                                        {1, 10, 0, std::u16string(u"Zelle")},
                                                        {0, 4, 2, jet::Bytes{1, 0, 0, 0}},
                                                        {0, 3, 3, jet::Bytes{1, 0, 0, 0}}}}}};
    SetEntry(*file, u"MSysDb", u"LvProp", *jet::WriteProperties(database, From()));
    const jet::CompactedFile compacted = jet::Compact(*file, To());
    EXPECT_EQ(compacted.leftOut, Lines{});
    const auto copy = Opened(compacted, To());
    const Value blob = Entry(*copy, u"MSysDb", u"LvProp");
    const auto kept = jet::ReadProperties(std::get<jet::Bytes>(blob), To());
    ASSERT_TRUE(kept);
    ASSERT_EQ(kept->blocks.front().properties.size(), 1U);
    EXPECT_EQ(kept->blocks.front().properties.front().value, Value(std::u16string(u"Zelle")));
    SetEntry(*file, u"MSysDb", u"LvProp", jet::Bytes{1, 2, 3});
    EXPECT_EQ(LeftOut(*file, To()), Lines{"the properties of the database"});
}

// --- Who owns and may use them.

jet::Bytes Hidden(AccessFile& file, const jet::Bytes& plain) {
    return jet::OwnerCipher(file).Apply(plain).value();
}
const jet::Bytes kSomebody = [] {
    jet::Bytes somebody(102, 0x5A);
    const jet::Bytes mark{0xDF, 0x56, 0x1A, 0x17, 0x23, 0x6A, 0x4B, 0x11};
    std::copy(mark.begin(), mark.end(), somebody.begin() + 9);
    return somebody;
}();

TEST_P(CompactTest, OwnersAndRightsComeAlong) {
    const std::int32_t nItems =
        static_cast<std::int32_t>(file->FindTable(u"Items")->Definition().nPage);
    SetEntry(*file, u"Items", u"Owner", Hidden(*file, kSomebody));
    SetEntry(*file, u"MSysDb", u"Owner", Hidden(*file, kSomebody));
    jet::SetGrants(
        *file, nItems,
        {{Hidden(*file, kSomebody), 0xFFFFF, false}, {Hidden(*file, {2, 1}), 0x14, false}});
    jet::SetGrants(*file, jet::kTablesParent, {{Hidden(*file, kSomebody), 0xF00FE, true}});
    const jet::CompactedFile compacted = jet::Compact(*file, To());
    EXPECT_EQ(compacted.leftOut, Lines{});
    const auto copy = Opened(compacted, To());
    ExpectSound(*copy);
    EXPECT_EQ(Entry(*copy, u"Items", u"Owner"), Value(Hidden(*copy, kSomebody)));
    EXPECT_EQ(Entry(*copy, u"MSysDb", u"Owner"), Value(Hidden(*copy, kSomebody)));
    EXPECT_EQ(Entry(*copy, u"Messages", u"Owner"), Value(Hidden(*copy, {3, 1})));
    const auto nCopied = static_cast<std::int32_t>(copy->FindTable(u"Items")->Definition().nPage);
    EXPECT_EQ(jet::GrantsOf(*copy, nCopied),
              (std::vector<jet::Grant>{{Hidden(*copy, kSomebody), 0xFFFFF, false},
                                       {Hidden(*copy, {2, 1}), 0x14, false}}));
    EXPECT_EQ(jet::GrantsOf(*copy, jet::kTablesParent),
              (std::vector<jet::Grant>{{Hidden(*copy, kSomebody), 0xF00FE, true}}));
    // What is in every file stays as it is in a new one.
    EXPECT_EQ(jet::GrantsOf(*copy, jet::kRelationshipsParent).size(), 3U);
}

TEST_P(CompactTest, AnOwnerThatCantBeTakenOverIsTold) {
    if (From() == Generation::Jet3) return;  // it hides nobody
    SetEntry(*file, u"Items", u"Owner", Hidden(*file, kSomebody));
    const std::int32_t nItems =
        static_cast<std::int32_t>(file->FindTable(u"Items")->Definition().nPage);
    jet::SetGrants(*file, nItems, {{jet::Bytes(50, 1), 0xFFFFF, false}});
    // Another header: its key isn't the one of the new files.
    const jet::ByteSpan page = file->Pages().Change(0);
    jet::MaskHeader(page, From());
    jet::StoreU32(page, 0x6A, 4518);
    jet::MaskHeader(page, From());
    EXPECT_EQ(LeftOut(*file, To()), (Lines{"some users' rights to Items", "the owner of Items"}));
}

TEST_P(CompactTest, APasswordACipherAndAnotherSortOrderAreTold) {
    const jet::ByteSpan page = file->Pages().Change(0);
    jet::MaskHeader(page, From());
    page[0x42] ^= 'p';  // the password
    page[0x3E] ^= 1;    // the key of the pages
    jet::MaskHeader(page, From());
    Table& items = *file->FindTable(u"Items");
    jet::TableDefinition definition = items.Definition();
    definition.columns[1].nSortOrder = 0x041D;
    jet::WriteDefinition(file->Pages(), definition);
    EXPECT_EQ(LeftOut(*file, To()), (Lines{"the password", "the cipher on the file's pages",
                                           "the sort order of texts in the table Items"}));
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
