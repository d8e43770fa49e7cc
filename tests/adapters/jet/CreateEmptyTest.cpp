#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

#include "adapters/jet/AccessFile.h"
#include "adapters/jet/DataPage.h"
#include "adapters/jet/DefinitionPages.h"
#include "adapters/jet/Header.h"
#include "adapters/jet/MemoryPages.h"
#include "adapters/jet/PageFiles.h"
#include "testing/TemporaryFolder.h"

namespace nomira::jet {
namespace {

using Numbers = std::vector<std::uint32_t>;

Bytes Copy(ByteView view) {
    return {view.begin(), view.end()};
}

class CreateEmptyTest : public ::testing::TestWithParam<Generation> {
  protected:
    CreateEmptyTest() { AccessFile::CreateEmpty(m_pages); }

    bool IsJet3() const { return GetParam() == Generation::Jet3; }
    std::vector<RowPlace> MapPlaces() {
        std::vector<RowPlace> places;
        for (const std::uint32_t nPage : IsJet3() ? Numbers{6, 7, 8, 10, 12} : Numbers{6})
            for (std::size_t n = 0; n < DataPage(m_pages, nPage).Slots(); ++n)
                places.push_back({nPage, static_cast<std::uint8_t>(n)});
        return places;
    }
    std::unique_ptr<AccessFile> Reopened() {
        m_pages.Commit();
        return std::make_unique<AccessFile>(
            std::make_unique<MemoryPages>(GetParam(), m_pages.File()));
    }
    void ExpectSoundIndexes(Table& table) {
        for (std::size_t n = 0; n < table.Definition().realIndexes.size(); ++n) {
            std::vector<IndexEntry> entries;
            Numbers pages;
            table.Index(n).Check(entries, pages);
            EXPECT_EQ(entries.size(), table.RowCount());
            EXPECT_EQ(pages.size(), 1U);
        }
    }

    MemoryPages m_pages{GetParam()};
};

TEST_P(CreateEmptyTest, TheFileBeginsWithTheHeaderAndTheMapOfFreePages) {
    const std::uint32_t nPages = IsJet3() ? 20 : 16;
    EXPECT_EQ(m_pages.Count(), nPages);
    EXPECT_EQ(Copy(m_pages.Read(0)), NewHeader(GetParam()));
    const DataPage page(m_pages, 1);
    EXPECT_EQ(page.Owner(), 1U);
    EXPECT_EQ(page.Slots(), 2U);
    EXPECT_EQ(page.FreeBytes(), IsJet3() ? 1768U : 3940U);
    Bytes map(IsJet3() ? 133 : 69, 0xFF);
    std::fill_n(map.begin(), 5 + nPages / 8, std::uint8_t{0});
    if (IsJet3()) map[5 + 2] = 0xF0;
    EXPECT_EQ(Copy(page.Row(0)), map);
    EXPECT_EQ(Copy(page.Row(1)), Bytes(map.size()));
}

TEST_P(CreateEmptyTest, MapsStandInTheMakersOrder) {
    const std::uint32_t nObjects = IsJet3() ? 18 : 14;
    const std::uint32_t nRights = nObjects + 1;
    std::vector<Numbers> maps{{nObjects}, {nObjects}};
    maps.resize(16);  // seven long columns, without a page
    const Numbers roots =
        IsJet3() ? Numbers{9, 11, 13, 14, 15, 16, 17} : Numbers{7, 8, 9, 10, 11, 12, 13};
    maps.insert(maps.end(), {{roots[0]}, {roots[1]}, {nRights}, {nRights}, {roots[2]}});
    maps.insert(maps.end(), {{}, {}, {}, {}, {roots[3]}});
    maps.insert(maps.end(), {{}, {}, {roots[4]}, {roots[5]}, {roots[6]}});
    const std::vector<RowPlace> places = MapPlaces();
    ASSERT_EQ(places.size(), maps.size());
    for (std::size_t n = 0; n < maps.size(); ++n)
        EXPECT_EQ(UsageMap(m_pages, places[n]).Pages(), maps[n]) << n;
    const auto freeBytes = [&](std::uint32_t nPage) {
        return DataPage(m_pages, nPage).FreeBytes();
    };
    EXPECT_EQ(freeBytes(6), IsJet3() ? 13U : 1881U);
    if (!IsJet3()) return;
    EXPECT_EQ(freeBytes(7), 1903U);
    EXPECT_EQ(freeBytes(12), 283U);
    EXPECT_EQ(DataPage(m_pages, 8).Slots(), 1U);
    EXPECT_EQ(DataPage(m_pages, 10).Slots(), 1U);
}

TEST_P(CreateEmptyTest, DefinitionsAreAsLongAsTheMakers) {
    const Numbers lengths = IsJet3() ? Numbers{708, 223, 319, 526} : Numbers{1050, 335, 525, 813};
    for (std::uint32_t n = 0; n < 4; ++n)
        EXPECT_EQ(LoadU32(m_pages.Read(2 + n), 8), lengths[n]) << n;
    const TableDefinition objects = ReadDefinition(m_pages, 2);
    EXPECT_EQ(objects.kind, TableKind::System);
    EXPECT_EQ(objects.nMostColumns, 17);
    EXPECT_EQ(objects.nVariableColumns, 11);
    EXPECT_EQ(objects.columns.front().sName, IsJet3() ? u"Id" : u"Connect");
    EXPECT_EQ(objects.logicalIndexes.front().sName, u"Id");
    EXPECT_EQ(objects.logicalIndexes.front().nRealIndex, 1U);
    EXPECT_EQ(objects.realIndexes[0].nFlags, IsJet3() ? 0x01 : 0x81);
    Numbers longColumns;
    for (const LongColumnMaps& maps : objects.longColumns)
        longColumns.push_back(maps.nColumn);
    EXPECT_EQ(longColumns, (Numbers{9, 8, 13, 16, 15, 14, 12}));
    EXPECT_EQ(ReadDefinition(m_pages, 4).columns.size(), IsJet3() ? 7U : 8U);
}

TEST_P(CreateEmptyTest, CountersAndStatisticsTellTheRows) {
    const Numbers rows{8, 16, 0, 0};
    const std::vector<Numbers> distinct{{8, 8}, {8}, {0}, {0, 0, 0}};
    for (std::uint32_t n = 0; n < 4; ++n) {
        const TableDefinition table = ReadDefinition(m_pages, 2 + n);
        EXPECT_EQ(table.nRows, rows[n]) << n;
        Numbers keys;
        for (const RealIndex& index : table.realIndexes) {
            EXPECT_EQ(index.nEntriesAtBuild, 0U);
            keys.push_back(index.nDistinctKeys);
        }
        EXPECT_EQ(keys, distinct[n]) << n;
    }
}

TEST_P(CreateEmptyTest, TheCatalogueHasTheSystemsObjects) {
    const auto file = Reopened();
    std::vector<std::u16string> names;
    for (const CatalogueEntry& entry : file->Catalogue()) {
        names.push_back(entry.sName);
        EXPECT_TRUE(entry.IsSystem());
    }
    EXPECT_EQ(names, (std::vector<std::u16string>{u"Tables", u"Databases", u"Relationships",
                                                  u"MSysDb", u"MSysObjects", u"MSysACEs",
                                                  u"MSysQueries", u"MSysRelationships"}));
    for (std::uint32_t n = 2; n < 6; ++n)
        ExpectSoundIndexes(file->TableAt(n));
    Table& objects = file->TableAt(2);
    const auto owner = static_cast<std::size_t>(objects.Definition().FindColumn(u"Owner"));
    const auto created = static_cast<std::size_t>(objects.Definition().FindColumn(u"DateCreate"));
    const RowPlace tables = objects.Rows().Place();
    EXPECT_EQ(objects.Read(tables, owner), Value(OwnerBytes(OwnerId::Engine, GetParam())));
    EXPECT_EQ(objects.Read(tables, created), Value(NewCreationDate()));
    EXPECT_NEAR(NewCreationDate(), 38143.5465, 0.0001);
}

TEST_P(CreateEmptyTest, EverybodyMayUseTablesThatAreAdded) {
    const auto file = Reopened();
    Table& rights = file->TableAt(3);
    const auto column = [&](const char16_t* sName) {
        return static_cast<std::size_t>(rights.Definition().FindColumn(sName));
    };
    std::vector<Value> inherited;
    for (auto scan = rights.Rows(); !scan.AtEnd(); scan.Next()) {
        if (rights.Read(scan.Place(), column(u"ObjectId")) != Value(std::int64_t{0x0F000001}) ||
            rights.Read(scan.Place(), column(u"FInheritable")) != Value(true))
            continue;
        inherited.push_back(rights.Read(scan.Place(), column(u"SID")));
        inherited.push_back(rights.Read(scan.Place(), column(u"ACM")));
    }
    EXPECT_EQ(inherited,
              (std::vector<Value>{OwnerBytes(OwnerId::Creator, GetParam()), std::int64_t{0xF00FE},
                                  OwnerBytes(OwnerId::Users, GetParam()), std::int64_t{0xFFEFF}}));
}

TEST_P(CreateEmptyTest, AFileThatHasPagesIsNotOverwritten) {
    const Bytes before = Copy(m_pages.Read(2));
    EXPECT_THROW(AccessFile::CreateEmpty(m_pages), Failure);
    EXPECT_EQ(Copy(m_pages.Read(2)), before);
}

TEST_P(CreateEmptyTest, ItTakesTablesOnTheDiskToo) {
    const nomira::testing::TemporaryFolder folder;
    const std::filesystem::path path = folder / "new.mdb";
    {
        auto pages = FilePages::Create(path, GetParam());
        AccessFile::CreateEmpty(*pages);
        pages->Commit();
        pages->Rest();
        EXPECT_EQ(testing::PagesOf(path), testing::PagesOf(m_pages));
        AccessFile file(std::move(pages));
        NewTable asked;
        asked.sName = u"Items";
        asked.columns.push_back({u"Key_id", ColumnType::Long, 0, true});
        asked.columns.push_back({u"KeyString", ColumnType::Text, 255});
        asked.indexes.push_back({u"PrimaryKey", {u"Key_id"}, true});
        Table& items = file.CreateTable(asked);
        Row row{Value(), Value(std::u16string(u"DIN[1]"))};
        items.Insert(row);
        file.Pages().Commit();
    }
    AccessFile file(testing::OpenToWrite(path));
    Table* items = file.FindTable(u"items");
    ASSERT_NE(items, nullptr);
    EXPECT_EQ(items->Read(items->Rows().Place(), 1), Value(std::u16string(u"DIN[1]")));
    ExpectSoundIndexes(file.TableAt(2));
}

// Against files of the makers' own programs.
class MakersFilesTest : public ::testing::TestWithParam<Generation> {
  protected:
    void SetUp() override {
        const char* sFolder = std::getenv("NOMIRA_ACCESS_SAMPLES");
        if (sFolder == nullptr) GTEST_SKIP() << "NOMIRA_ACCESS_SAMPLES names no folder of samples";
        // They began as the files that are made here: of the same build, on the same day.
        const char* sName =
            GetParam() == Generation::Jet3 ? "testIndexCodesV1997.mdb" : "emptyV2000.mdb";
        m_sample = FilePages::Open(std::filesystem::path(sFolder) / sName, OpenMode::ReadOnly);
        AccessFile::CreateEmpty(m_pages);
    }

    std::unique_ptr<FilePages> m_sample;
    MemoryPages m_pages{GetParam()};
};

TEST_P(MakersFilesTest, TheHeaderIsTheSame) {
    EXPECT_EQ(Copy(m_pages.Read(0)), Copy(m_sample->Read(0)));
}

TEST_P(MakersFilesTest, DefinitionsOfTheSystemsTablesAreTheSame) {
    for (std::uint32_t nPage = 2; nPage < 6; ++nPage) {
        const TableDefinition theirs = ReadDefinition(*m_sample, nPage);
        TableDefinition mine = ReadDefinition(m_pages, nPage);
        // What changed when tables were added.
        mine.nRows = theirs.nRows;
        ASSERT_EQ(mine.realIndexes.size(), theirs.realIndexes.size());
        for (std::size_t n = 0; n < mine.realIndexes.size(); ++n) {
            mine.realIndexes[n].nEntriesAtBuild = theirs.realIndexes[n].nEntriesAtBuild;
            mine.realIndexes[n].nDistinctKeys = theirs.realIndexes[n].nDistinctKeys;
            mine.realIndexes[n].nRootPage = theirs.realIndexes[n].nRootPage;
            mine.realIndexes[n].ownedMap = theirs.realIndexes[n].ownedMap;
        }
        ASSERT_EQ(mine.longColumns.size(), theirs.longColumns.size());
        for (std::size_t n = 0; n < mine.longColumns.size(); ++n) {
            EXPECT_EQ(mine.longColumns[n].nColumn, theirs.longColumns[n].nColumn);
            mine.longColumns[n] = theirs.longColumns[n];
        }
        mine.ownedMap = theirs.ownedMap;
        mine.freeMap = theirs.freeMap;
        TableDefinition plain = theirs;
        for (std::size_t n = 0; n < plain.columns.size(); ++n)
            if (!plain.columns[n].IsFixed()) plain.columns[n].nFixedOffset = 0;  // garbage there
        EXPECT_EQ(BuildDefinition(mine, GetParam()), BuildDefinition(plain, GetParam())) << nPage;
    }
}

TEST_P(MakersFilesTest, TheFirstObjectsAreTheSame) {
    AccessFile mine(std::make_unique<MemoryPages>(GetParam(), [&] {
        m_pages.Commit();
        return m_pages.File();
    }()));
    AccessFile theirs(std::move(m_sample));
    const auto entryOf = [](AccessFile& file, const std::u16string& sName) {
        for (const CatalogueEntry& entry : file.Catalogue())
            if (entry.sName == sName) return entry;
        return CatalogueEntry{};
    };
    for (const CatalogueEntry& entry : mine.Catalogue()) {
        const CatalogueEntry other = entryOf(theirs, entry.sName);
        EXPECT_EQ(other.nId, entry.nId);
        EXPECT_EQ(other.nParent, entry.nParent);
        EXPECT_EQ(other.nType, entry.nType);
        EXPECT_EQ(other.nFlags, entry.nFlags);
    }
    // Owners too: their mask hangs together with the header.
    const auto owners = [](AccessFile& file) {
        Table& objects = file.TableAt(2);
        const auto id = static_cast<std::size_t>(objects.Definition().FindColumn(u"Id"));
        const auto owner = static_cast<std::size_t>(objects.Definition().FindColumn(u"Owner"));
        std::map<std::int64_t, Value> all;
        for (auto scan = objects.Rows(); !scan.AtEnd(); scan.Next())
            all[std::get<std::int64_t>(objects.Read(scan.Place(), id))] =
                objects.Read(scan.Place(), owner);
        return all;
    };
    const auto theirOwners = owners(theirs);
    for (const auto& [nId, owner] : owners(mine))
        EXPECT_EQ(theirOwners.at(nId), owner) << nId;
}

INSTANTIATE_TEST_SUITE_P(Both, CreateEmptyTest,
                         ::testing::Values(Generation::Jet3, Generation::Jet4));
INSTANTIATE_TEST_SUITE_P(Both, MakersFilesTest,
                         ::testing::Values(Generation::Jet3, Generation::Jet4));

}  // namespace
}  // namespace nomira::jet
