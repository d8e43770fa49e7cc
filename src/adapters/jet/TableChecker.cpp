#include "adapters/jet/TableChecker.h"

#include <algorithm>

#include "adapters/jet/DefinitionPages.h"
#include "adapters/jet/KeyCodes.h"
#include "adapters/jet/LongValues.h"
#include "adapters/jet/UsageMap.h"

namespace nomira::jet {
namespace {

constexpr std::size_t kNextDefinitionPlace = 4;
constexpr std::size_t kPointerBytes = 4;
constexpr std::uint16_t kOffsetBits = 0x1FFF;

RowPlace PlaceAt(ByteView bytes, std::size_t nOffset) {
    return {LoadU24(bytes, nOffset + 1), LoadU8(bytes, nOffset)};
}

bool IsAllNull(const IndexEntry& entry, const RealIndex& index) {
    return entry.key.size() == index.columns.size() &&
           std::ranges::all_of(entry.key, [](std::uint8_t n) { return n == 0x00 || n == 0xFF; });
}

}  // namespace

TableChecker::TableChecker(AccessFile& file, PageAccounts& accounts, Table& table,
                           std::string sName)
    : m_file(file),
      m_accounts(accounts),
      m_table(table),
      m_definition(table.Definition()),
      m_sName(std::move(sName)),
      m_store(file.Pages()),
      m_expected(m_definition.realIndexes.size()),
      m_unknownKeys(m_definition.realIndexes.size()) {}

void TableChecker::Report(const std::string& sText, std::uint32_t nPage) {
    m_accounts.Report(m_sName + ": " + sText, nPage);
}

std::string TableChecker::Named(const std::string& sWhat, const std::u16string& sName) const {
    return m_sName + ", " + sWhat + ' ' + Printable(sName);
}

void TableChecker::Run() {
    const std::uint32_t nPage = m_definition.nPage;
    m_accounts.Guard(m_sName, nPage, [&] { CheckDefinitionPages(); });
    m_accounts.Guard(m_sName, nPage, [&] {
        m_dataPages =
            CheckDataPages(m_definition.ownedMap, m_definition.freeMap, nPage, m_sName + ", rows");
    });
    m_accounts.Guard(m_sName, nPage, [&] { CheckLongPages(); });
    m_accounts.Guard(m_sName, nPage, [&] { CheckRows(); });
    m_accounts.Guard(m_sName, nPage, [&] { CheckCounters(); });
    m_accounts.Guard(m_sName, nPage, [&] { CheckUnused(); });
    for (std::size_t n = 0; n < m_definition.realIndexes.size(); ++n)
        m_accounts.Guard(m_sName, m_definition.realIndexes[n].nRootPage, [&] { CheckIndex(n); });
    for (const LogicalIndex& index : m_definition.logicalIndexes)
        if (index.kind == LogicalKind::ForeignKey)
            m_accounts.Guard(Named("relationship", index.sName), nPage,
                             [&] { CheckRelationship(index); });
}

void TableChecker::CheckDefinitionPages() {
    for (std::uint32_t nPage = m_definition.nPage; nPage != 0;
         nPage = LoadU32(m_store.Read(nPage), kNextDefinitionPlace))
        if (!m_accounts.Claim(nPage, m_sName + ", definition")) return;
}

// ---- Pages of rows

std::vector<std::uint32_t> TableChecker::CheckDataPages(RowPlace owned, RowPlace free,
                                                        std::uint32_t nOwner,
                                                        const std::string& sUser) {
    m_accounts.ClaimMap(owned, sUser);
    const std::vector<std::uint32_t> pages = UsageMap(m_store, owned).Pages();
    std::vector<std::uint32_t> sound;
    for (const std::uint32_t nPage : pages) {
        if (!m_accounts.Claim(nPage, sUser)) continue;
        const DataPage page(m_store, nPage);
        if (!page.IsOne() || page.Owner() != nOwner) {
            m_accounts.Report(sUser + ": a page doesn't say that it belongs here", nPage);
            continue;
        }
        sound.push_back(nPage);
        m_accounts.Guard(sUser, nPage, [&] { CheckSlots(nPage, sUser); });
    }
    if (free.nPage == 0) return sound;
    m_accounts.ClaimMap(free, sUser + " with room");
    for (const std::uint32_t nPage : UsageMap(m_store, free).Pages())
        if (!std::ranges::binary_search(pages, nPage))
            m_accounts.Report(sUser + ": a page has room for rows that isn't its own", nPage);
    return sound;
}

// The rows stand from the page's end downwards without gaps.
void TableChecker::CheckSlots(std::uint32_t nPage, const std::string& sUser) {
    const DataPage page(m_store, nPage);
    const std::size_t nSlots = page.Slots();
    const std::size_t nSlotsPlace = m_store.Format().nSlotsPlace;
    if (nSlots > kMostSlots) m_accounts.Report(sUser + ": a page has too many rows", nPage);
    std::size_t nOffset = m_store.Format().nPageSize;
    for (std::size_t n = 0; n < nSlots; ++n) {
        const std::size_t nNext = LoadU16(m_store.Read(nPage), nSlotsPlace + 2 * n) & kOffsetBits;
        if (nNext > nOffset) Fail(FailureKind::Damaged, "rows overlap on a page");
        nOffset = nNext;
    }
    const std::size_t nSlotsEnd = nSlotsPlace + 2 * nSlots;
    if (nOffset < nSlotsEnd || page.FreeBytes() != nOffset - nSlotsEnd)
        m_accounts.Report(sUser + ": a page miscounts its free bytes", nPage);
}

void TableChecker::CheckLongPages() {
    for (const LongColumnMaps& maps : m_definition.longColumns) {
        const std::size_t nColumn = m_definition.ColumnOfNumber(maps.nColumn);
        const std::string sUser = Named("values of", m_definition.columns[nColumn].sName);
        const std::vector<std::uint32_t> pages =
            CheckDataPages(maps.owned, maps.free, kOwnerOfLongValues, sUser);
        m_longColumns.push_back({nColumn, {pages.begin(), pages.end()}, {}});
    }
}

// ---- Rows

void TableChecker::CheckRows() {
    std::vector<RowPlace> rows;
    for (const std::uint32_t nPage : m_dataPages) {
        const DataPage page(m_store, nPage);
        for (std::size_t n = 0; n < std::min(page.Slots(), kMostSlots); ++n) {
            const RowPlace place{nPage, static_cast<std::uint8_t>(n)};
            const std::uint16_t nFlags = page.Flags(n);
            if (nFlags == SlotHidden) m_hidden.insert(place);
            if ((nFlags & SlotHidden) == 0) rows.push_back(place);
        }
    }
    m_nRows = rows.size();
    for (const RowPlace place : rows)
        m_accounts.Guard(m_sName + ", row " + std::to_string(place.nRow), place.nPage,
                         [&] { CheckRow(place); });
}

// Where the bytes are of a row that may have moved.
RowPlace TableChecker::Target(RowPlace place) {
    const DataPage page(m_store, place.nPage);
    if ((page.Flags(place.nRow) & SlotMoved) == 0) return place;
    const RowPlace target = PlaceAt(Part(page.Row(place.nRow), 0, kPointerBytes), 0);
    if (m_hidden.erase(target) == 0)
        Fail(FailureKind::Damaged, "it has moved to where no row's bytes wait for it");
    return target;
}

void TableChecker::CheckRow(RowPlace place) {
    const RowPlace target = Target(place);
    const RowView row(m_store.Format(), DataPage(m_store, target.nPage).Row(target.nRow));
    for (LongColumn& column : m_longColumns)
        if (const auto field = row.Field(m_definition.columns[column.nColumn]))
            CheckLongField(column, *field);
    for (std::size_t n = 0; n < m_definition.columns.size(); ++n) {
        const Value value = m_table.Read(place, n);
        if (m_definition.columns[n].IsAutonumber() && !IsNull(value))
            m_nHighestAutonumber = std::max(m_nHighestAutonumber, std::get<std::int64_t>(value));
    }
    NoteKeys(place);
}

void TableChecker::NoteKeys(RowPlace place) {
    for (std::size_t n = 0; n < m_expected.size(); ++n) {
        const RealIndex& index = m_definition.realIndexes[n];
        Row values(m_definition.columns.size());
        for (const IndexColumn& column : index.columns) {
            const std::size_t nColumn = m_definition.ColumnOfNumber(column.nColumn);
            values[nColumn] = m_table.Read(place, nColumn);
        }
        try {
            Bytes key = KeyOfRow(m_definition, index, values, m_file.Kind());
            if (!key.empty()) m_expected[n].push_back({std::move(key), place});
        } catch (const Failure& failure) {
            if (failure.Kind() != FailureKind::Unsupported) throw;
            m_expected[n].push_back({{}, place});
            m_unknownKeys[n].insert(place);
        }
    }
}

void TableChecker::CheckCounters() {
    const DefinitionCounters counters(m_store, m_definition.nPage);
    if (m_nRows != counters.Rows()) {
        const std::string sText = "has " + std::to_string(m_nRows) + " rows and counts " +
                                  std::to_string(counters.Rows());
        // Other programs miscount the system's own.
        if (m_definition.kind == TableKind::System)
            m_accounts.Warn(m_sName + ": " + sText, m_definition.nPage);
        else
            Report(sText, m_definition.nPage);
    }
    if (m_nHighestAutonumber > counters.LastAutonumber())
        m_accounts.Warn(m_sName + ": the counter is behind the rows", m_definition.nPage);
}

// What takes up room, and no row leads there.
void TableChecker::CheckUnused() {
    for (const RowPlace place : m_hidden)
        m_accounts.Warn(m_sName + ": bytes of a row that moved are left over", place.nPage);
    for (const LongColumn& column : m_longColumns)
        for (const std::uint32_t nPage : column.pages) {
            const DataPage page(m_store, nPage);
            for (std::size_t n = 0; n < std::min(page.Slots(), kMostSlots); ++n)
                if (!page.IsDeleted(n) &&
                    !column.used.contains({nPage, static_cast<std::uint8_t>(n)}))
                    m_accounts.Warn(m_sName + ": a long value belongs to no row", nPage);
        }
}

// ---- Long values

void TableChecker::CheckLongField(LongColumn& column, ByteView field) {
    const std::uint32_t nWord = LoadU32(Part(field, 0, kLongFieldHead), 0);
    std::size_t nLeft = nWord & kLengthBits;
    if ((nWord & kInlineBit) != 0) {
        Part(field, kLongFieldHead, nLeft);
        return;
    }
    RowPlace place = PlaceAt(field, 4);
    if ((nWord & kSingleBit) != 0) {
        CheckLongRow(column, place);
        Part(DataPage(m_store, place.nPage).Row(place.nRow), 0, nLeft);
        return;
    }
    while (place.nPage != 0) {
        CheckLongRow(column, place);
        const ByteView row = DataPage(m_store, place.nPage).Row(place.nRow);
        place = PlaceAt(Part(row, 0, kPointerBytes), 0);
        nLeft -= std::min(nLeft, row.size() - kPointerBytes);
    }
    if (nLeft != 0) Fail(FailureKind::Damaged, "a long value breaks off");
}

void TableChecker::CheckLongRow(LongColumn& column, RowPlace place) {
    if (!column.pages.contains(place.nPage))
        Fail(FailureKind::Damaged, "a long value lies outside of its column's pages");
    if (DataPage(m_store, place.nPage).Flags(place.nRow) != 0)
        Fail(FailureKind::Damaged, "a long value is a deleted one");
    if (!column.used.insert(place).second)
        Fail(FailureKind::Damaged, "a long value is a part of another one");
}

// ---- Indexes

void TableChecker::CheckIndex(std::size_t nIndex) {
    const RealIndex& index = m_definition.realIndexes[nIndex];
    const std::string sUser = m_sName + ", index " + std::to_string(nIndex);
    m_accounts.ClaimMap(index.ownedMap, sUser);
    std::vector<IndexEntry> entries;
    std::vector<std::uint32_t> pages;
    m_table.Index(nIndex).Check(entries, pages);
    std::ranges::sort(pages);
    for (const std::uint32_t nPage : pages)
        m_accounts.Claim(nPage, sUser);
    if (pages != UsageMap(m_store, index.ownedMap).Pages())
        m_accounts.Report(sUser + " has other pages than its map", index.nRootPage);
    if (index.IsUnique())
        for (std::size_t n = 1; n < entries.size(); ++n)
            if (entries[n - 1].key == entries[n].key && !IsAllNull(entries[n], index))
                m_accounts.Report(sUser + " is unique and has a key twice", index.nRootPage);
    CompareEntries(nIndex, std::move(entries));
}

void TableChecker::CompareEntries(std::size_t nIndex, std::vector<IndexEntry> found) {
    const std::uint32_t nRoot = m_definition.realIndexes[nIndex].nRootPage;
    const std::string sUser = m_sName + ", index " + std::to_string(nIndex);
    if (!m_unknownKeys[nIndex].empty())
        m_accounts.Warn(sUser + " has keys that this program can't make", nRoot);
    for (IndexEntry& entry : found)
        if (m_unknownKeys[nIndex].contains(entry.place)) entry.key.clear();
    std::vector<IndexEntry>& expected = m_expected[nIndex];
    std::ranges::sort(found);
    std::ranges::sort(expected);
    if (found == expected) return;
    const auto [own, other] = std::ranges::mismatch(expected, found);
    const bool bMissing = other == found.end() || (own != expected.end() && *own < *other);
    const RowPlace place = bMissing ? own->place : other->place;
    m_accounts.Report(sUser + (bMissing ? " lacks row " : " has an entry too many, for row ") +
                          std::to_string(place.nRow) + " of page " + std::to_string(place.nPage),
                      nRoot);
}

// ---- Relationships

void TableChecker::CheckRelationship(const LogicalIndex& own) {
    Table& other = m_file.TableAt(own.nRelatedTable);
    const TableDefinition& table = other.Definition();
    const auto record = std::ranges::find_if(table.logicalIndexes, [&](const LogicalIndex& index) {
        return static_cast<std::int64_t>(index.nNumber) == own.nRelatedIndex;
    });
    if (record == table.logicalIndexes.end())
        Fail(FailureKind::Damaged, "the other table knows nothing of it");
    const bool bMutual = record->kind == LogicalKind::ForeignKey &&
                         record->nRelatedTable == m_definition.nPage &&
                         record->nRelatedIndex == static_cast<std::int64_t>(own.nNumber) &&
                         own.side != RelatedSide::None && record->side != RelatedSide::None &&
                         own.side != record->side;
    if (!bMutual) Fail(FailureKind::Damaged, "the other table tells otherwise");
    if (own.nUpdateAction != record->nUpdateAction || own.nDeleteAction != record->nDeleteAction)
        Fail(FailureKind::Damaged, "the two tables disagree about what follows from a change");
    if (own.side == RelatedSide::Foreign) CheckReferences(own, other, *record);
}

// Every row of this table refers to one of the other, as far as their keys are the same.
void TableChecker::CheckReferences(const LogicalIndex& own, Table& other,
                                   const LogicalIndex& record) {
    const TableDefinition& table = other.Definition();
    const RealIndex& foreign = m_definition.realIndexes.at(own.nRealIndex);
    const RealIndex& primary = table.realIndexes.at(record.nRealIndex);
    if (foreign.columns.size() != primary.columns.size())
        Fail(FailureKind::Damaged, "the two tables are related by more columns and by fewer");
    if (foreign.columns.size() > 1) return;
    const IndexColumn& from = foreign.columns.front();
    const IndexColumn& to = primary.columns.front();
    const bool bSameKeys = from.bAscending == to.bAscending &&
                           m_definition.columns[m_definition.ColumnOfNumber(from.nColumn)].type ==
                               table.columns[table.ColumnOfNumber(to.nColumn)].type;
    if (!bSameKeys) return;
    for (const IndexEntry& entry : m_expected[own.nRealIndex])
        if (!entry.key.empty() && !IsAllNull(entry, foreign) &&
            !other.Index(record.nRealIndex).Contains(entry.key))
            Report("row " + std::to_string(entry.place.nRow) + " refers to no row",
                   entry.place.nPage);
}

}  // namespace nomira::jet
