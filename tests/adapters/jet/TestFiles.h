// Files in memory for the tests of what stands on pages, and a look whether they are sound.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>

#include "adapters/jet/AccessFile.h"
#include "adapters/jet/KeyCodes.h"
#include "adapters/jet/MemoryPages.h"
#include "adapters/jet/PageAllocator.h"

namespace nomira::jet {

inline std::unique_ptr<AccessFile> NewFile(Generation generation) {
    auto pages = std::make_unique<MemoryPages>(generation);
    AccessFile::CreateEmpty(*pages);
    pages->Commit();
    return std::make_unique<AccessFile>(std::move(pages));
}

// Rows as the walk gives them.
inline std::map<RowPlace, Row> RowsOf(Table& table) {
    std::map<RowPlace, Row> rows;
    for (auto scan = table.Rows(); !scan.AtEnd(); scan.Next())
        EXPECT_TRUE(rows.emplace(scan.Place(), table.Read(scan.Place())).second);
    return rows;
}

// Each page's owner, as definitions and maps tell; a page must have one alone.
class PageOwners {
  public:
    explicit PageOwners(AccessFile& file) : m_file(file) {
        Add(0, "header");
        Add(1, "global map");
        for (const std::uint32_t nPage : UsageMap(file.Pages(), {1, 0}).BitmapPages())
            Add(nPage, "bits of the global map");
        for (const CatalogueEntry& entry : file.Catalogue())
            if (entry.IsTable()) AddTable(static_cast<std::uint32_t>(entry.nId));
    }

    const std::map<std::uint32_t, std::string>& Get() const { return m_owners; }

  private:
    void Add(std::uint32_t nPage, const std::string& sOwner) {
        const auto [found, bNew] = m_owners.emplace(nPage, sOwner);
        EXPECT_TRUE(bNew) << "page " << nPage << ": " << sOwner << " and " << found->second;
    }

    void AddMap(RowPlace map) {
        if (map.nPage == 0) return;
        m_owners.emplace(map.nPage, "maps");  // of several
        EXPECT_EQ(m_owners[map.nPage], "maps");
        for (const std::uint32_t nPage : UsageMap(m_file.Pages(), map).BitmapPages())
            Add(nPage, "bits of a map");
    }

    void AddOwned(RowPlace map, RowPlace freeMap, const std::string& sOwner) {
        AddMap(map);
        AddMap(freeMap);
        const UsageMap owned(m_file.Pages(), map);
        for (const std::uint32_t nPage : owned.Pages())
            Add(nPage, sOwner);
        for (const std::uint32_t nPage : UsageMap(m_file.Pages(), freeMap).Pages())
            EXPECT_TRUE(owned.Contains(nPage)) << "page " << nPage << " is free only";
    }

    void AddTable(std::uint32_t nDefinition) {
        PageStore& store = m_file.Pages();
        const std::string sName = "table " + std::to_string(nDefinition);
        for (std::uint32_t nPage = nDefinition; nPage != 0; nPage = LoadU32(store.Read(nPage), 4))
            Add(nPage, sName);
        const TableDefinition& table = m_file.TableAt(nDefinition).Definition();
        AddOwned(table.ownedMap, table.freeMap, "rows of " + sName);
        for (const RealIndex& index : table.realIndexes)
            AddOwned(index.ownedMap, {}, "index of " + sName);
        for (const LongColumnMaps& maps : table.longColumns)
            AddOwned(maps.owned, maps.free, "long values of " + sName);
    }

    AccessFile& m_file;
    std::map<std::uint32_t, std::string> m_owners;
};

// Counters, indexes and maps agree with the rows, and no page is lost.
inline void ExpectSound(AccessFile& file) {
    for (const CatalogueEntry& entry : file.Catalogue()) {
        if (!entry.IsTable()) continue;
        Table& table = file.TableAt(static_cast<std::uint32_t>(entry.nId));
        const auto rows = RowsOf(table);
        EXPECT_EQ(table.RowCount(), rows.size());
        for (std::size_t i = 0; i < table.Definition().realIndexes.size(); ++i) {
            const RealIndex& index = table.Definition().realIndexes[i];
            std::vector<IndexEntry> entries;
            std::vector<std::uint32_t> pages;
            table.Index(i).Check(entries, pages);
            std::map<RowPlace, Bytes> stored;
            for (const IndexEntry& found : entries)
                EXPECT_TRUE(stored.emplace(found.place, found.key).second);
            std::map<RowPlace, Bytes> expected;
            for (const auto& [place, row] : rows) {
                Bytes key = KeyOfRow(table.Definition(), index, row, file.Kind());
                if (!key.empty()) expected.emplace(place, std::move(key));
            }
            EXPECT_EQ(stored, expected) << "index " << i << " of a table";
            std::sort(pages.begin(), pages.end());
            EXPECT_EQ(pages, UsageMap(file.Pages(), index.ownedMap).Pages());
        }
    }
    const PageOwners owners(file);
    for (std::uint32_t nPage = 0; nPage < file.Pages().Count(); ++nPage)
        EXPECT_NE(owners.Get().contains(nPage), IsFree(file.Pages(), nPage)) << "page " << nPage;
}

// The kind of the failure that `act` ends in, and that it changed no page.
template <typename Act>
FailureKind RefusalOf(AccessFile& file, Act&& act) {
    const std::uint64_t nBefore = file.Pages().Changes();
    try {
        act();
    } catch (const Failure& failure) {
        EXPECT_EQ(file.Pages().Changes(), nBefore) << "something was changed";
        return failure.Kind();
    }
    ADD_FAILURE() << "nothing was refused";
    return FailureKind::InputOutput;
}

}  // namespace nomira::jet
