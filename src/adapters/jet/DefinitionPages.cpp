#include "adapters/jet/DefinitionPages.h"

#include <algorithm>

#include "adapters/jet/PageAllocator.h"
#include "adapters/jet/TextCodes.h"

namespace nomira::jet {
namespace {

constexpr std::size_t kRoomPlace = 2;    // of each page
constexpr std::size_t kNextPlace = 4;    // of each page
constexpr std::size_t kPageHead = 8;     // of the pages behind the first
constexpr std::size_t kLengthPlace = 8;  // of the whole run
constexpr std::uint16_t kJet3Room = 0x4356;
constexpr std::uint32_t kMagic = 1625;
constexpr std::uint32_t kIndexMagic = 1923;
constexpr std::size_t kIndexColumns = 10;
constexpr std::uint16_t kNoColumn = 0xFFFF;
// Far more than 255 columns and their indexes take.
constexpr std::size_t kMostDefinitionBytes = 1U << 20;

// Places in the head of a definition. Rows and last autonumber stand side by side.
struct HeadPlaces {
    std::size_t nRows;
    std::size_t nLastAutonumber;
    std::size_t nKind;
    std::size_t nMostColumns;
    std::size_t nVariableColumns;
    std::size_t nColumns;
    std::size_t nLogicalIndexes;
    std::size_t nRealIndexes;
    std::size_t nOwnedMap;
    std::size_t nFreeMap;
};
constexpr HeadPlaces kJet3Head{12, 16, 20, 21, 23, 25, 27, 31, 35, 39};
constexpr HeadPlaces kJet4Head{16, 20, 40, 41, 43, 45, 47, 51, 55, 59};
constexpr std::size_t kJet4MagicPlace = 12;
constexpr std::size_t kJet4StepPlace = 24;
// Left over in files of the makers' own programs; kept when a definition is rewritten.
constexpr std::size_t kJet4UnusedPlace = 28;
constexpr std::size_t kJet4UnusedBytes = 12;

const HeadPlaces& HeadOf(Generation generation) {
    return generation == Generation::Jet3 ? kJet3Head : kJet4Head;
}

// Places in a column's record.
struct ColumnPlaces {
    std::size_t nNumber;
    std::size_t nVariableIndex;
    std::size_t nDisplayOrder;
    std::size_t nSortOrder;
    std::size_t nFlags;
    std::size_t nFixedOffset;
    std::size_t nLength;
};
constexpr ColumnPlaces kJet3Column{1, 3, 5, 9, 13, 14, 16};
constexpr ColumnPlaces kJet4Column{5, 7, 9, 11, 15, 21, 23};
constexpr std::size_t kJet3CollationPlace = 7;
constexpr std::size_t kJet3CodePagePlace = 11;
constexpr std::size_t kJet4ColumnMagicPlace = 1;
constexpr std::size_t kJet4SortVersionPlace = 13;
constexpr std::size_t kJet4ExtensionPlace = 16;

const ColumnPlaces& ColumnPlacesOf(Generation generation) {
    return generation == Generation::Jet3 ? kJet3Column : kJet4Column;
}

// What Jet 4 records of indexes have more than those of Jet 3 stands ahead of all the rest.
std::size_t IndexRecordHead(Generation generation) {
    return generation == Generation::Jet3 ? 0 : 4;
}
constexpr std::size_t kIndexMapPlace = 30;
constexpr std::size_t kIndexRootPlace = 34;
constexpr std::size_t kJet3IndexFlagsPlace = 38;
constexpr std::size_t kJet4IndexFlagsPlace = 46;

std::size_t IndexFlagsPlace(Generation generation) {
    return generation == Generation::Jet3 ? kJet3IndexFlagsPlace : kJet4IndexFlagsPlace;
}

RowPlace LoadPlace(ByteView bytes, std::size_t nOffset) {
    return {LoadU24(bytes, nOffset + 1), LoadU8(bytes, nOffset)};
}

void StorePlace(ByteSpan bytes, std::size_t nOffset, RowPlace place) {
    StoreU8(bytes, nOffset, place.nRow);
    StoreU24(bytes, nOffset + 1, place.nPage);
}

// Takes the records of a definition one after the other.
class DefinitionReader {
  public:
    DefinitionReader(ByteView bytes, Generation generation)
        : m_bytes(bytes), m_generation(generation), m_layout(LayoutOf(generation)) {}

    TableDefinition Read(std::uint32_t nPage) {
        TableDefinition table;
        table.nPage = nPage;
        ReadHead(table);
        const HeadPlaces& head = HeadOf(m_generation);
        const std::uint32_t nRealIndexes = LoadU32(m_bytes, head.nRealIndexes);
        const std::uint32_t nLogicalIndexes = LoadU32(m_bytes, head.nLogicalIndexes);
        const std::size_t nColumns = LoadU16(m_bytes, head.nColumns);
        m_nPlace = m_layout.nDefinitionHead;
        for (std::uint32_t i = 0; i < nRealIndexes; ++i)
            ReadStatistics(table.realIndexes.emplace_back());
        for (std::size_t i = 0; i < nColumns; ++i)
            ReadColumn(table.columns.emplace_back());
        for (Column& column : table.columns)
            column.sName = ReadName();
        for (RealIndex& index : table.realIndexes)
            ReadRealIndex(index);
        for (std::uint32_t i = 0; i < nLogicalIndexes; ++i)
            ReadLogicalIndex(table.logicalIndexes.emplace_back());
        for (LogicalIndex& index : table.logicalIndexes)
            index.sName = ReadName();
        ReadLongColumns(table);
        RequireSense(table);
        return table;
    }

  private:
    ByteView Take(std::size_t nBytes) {
        const ByteView part = Part(m_bytes, m_nPlace, nBytes);
        m_nPlace += nBytes;
        return part;
    }

    void ReadHead(TableDefinition& table) {
        const HeadPlaces& head = HeadOf(m_generation);
        table.kind = static_cast<TableKind>(LoadU8(m_bytes, head.nKind));
        table.nRows = LoadU32(m_bytes, head.nRows);
        table.nLastAutonumber = LoadU32(m_bytes, head.nLastAutonumber);
        if (m_generation == Generation::Jet4)
            table.nAutonumberStep = LoadU32(m_bytes, kJet4StepPlace);
        table.nMostColumns = LoadU16(m_bytes, head.nMostColumns);
        table.nVariableColumns = LoadU16(m_bytes, head.nVariableColumns);
        table.ownedMap = LoadPlace(m_bytes, head.nOwnedMap);
        table.freeMap = LoadPlace(m_bytes, head.nFreeMap);
    }

    void ReadStatistics(RealIndex& index) {
        const ByteView block = Take(m_layout.nStatisticsBlock);
        index.nEntriesAtBuild = LoadU32(block, 0);
        index.nDistinctKeys = LoadU32(block, 4);
    }

    void ReadColumn(Column& column) {
        const ByteView record = Take(m_layout.nColumnRecord);
        const ColumnPlaces& places = ColumnPlacesOf(m_generation);
        column.type = static_cast<ColumnType>(LoadU8(record, 0));
        column.nNumber = LoadU16(record, places.nNumber);
        column.nVariableIndex = LoadU16(record, places.nVariableIndex);
        column.nDisplayOrder = LoadU16(record, places.nDisplayOrder);
        column.nSortOrder = LoadU16(record, places.nSortOrder);
        column.nFlags = LoadU8(record, places.nFlags);
        column.nFixedOffset = LoadU16(record, places.nFixedOffset);
        column.nLength = LoadU16(record, places.nLength);
        if (m_generation == Generation::Jet3) {
            column.nCollation = LoadU16(record, kJet3CollationPlace);
            column.nCodePage = LoadU16(record, kJet3CodePagePlace);
        } else {
            column.nSortVersion = LoadU16(record, kJet4SortVersionPlace);
            column.nExtension = LoadU8(record, kJet4ExtensionPlace);
        }
    }

    std::u16string ReadName() {
        const std::size_t nLength = m_generation == Generation::Jet3
                                        ? LoadU8(Take(1), 0)
                                        : std::size_t{LoadU16(Take(2), 0)};
        return DecodeText(Take(nLength), m_generation);
    }

    void ReadRealIndex(RealIndex& index) {
        const ByteView whole = Take(m_layout.nRealIndexRecord);
        const ByteView record = whole.subspan(IndexRecordHead(m_generation));
        for (std::size_t i = 0; i < kIndexColumns; ++i) {
            const std::uint16_t nColumn = LoadU16(record, 3 * i);
            if (nColumn != kNoColumn)
                index.columns.push_back({nColumn, LoadU8(record, 3 * i + 2) == 1});
        }
        index.ownedMap = LoadPlace(record, kIndexMapPlace);
        index.nRootPage = LoadU32(record, kIndexRootPlace);
        index.nFlags = LoadU8(whole, IndexFlagsPlace(m_generation));
    }

    void ReadLogicalIndex(LogicalIndex& index) {
        const ByteView record =
            Take(m_layout.nLogicalIndexRecord).subspan(IndexRecordHead(m_generation));
        index.nNumber = LoadU32(record, 0);
        index.nRealIndex = LoadU32(record, 4);
        index.side = static_cast<RelatedSide>(LoadU8(record, 8));
        index.nRelatedIndex = static_cast<std::int32_t>(LoadU32(record, 9));
        index.nRelatedTable = LoadU32(record, 13);
        index.nUpdateAction = LoadU8(record, 17);
        index.nDeleteAction = LoadU8(record, 18);
        index.kind = static_cast<LogicalKind>(LoadU8(record, 19));
    }

    void ReadLongColumns(TableDefinition& table) {
        for (;;) {
            const std::uint16_t nColumn = LoadU16(Take(2), 0);
            if (nColumn == kNoColumn) return;
            const ByteView maps = Take(8);
            table.longColumns.push_back({nColumn, LoadPlace(maps, 0), LoadPlace(maps, 4)});
        }
    }

    static void RequireSense(const TableDefinition& table) {
        for (const Column& column : table.columns) {
            const bool bOutside = !column.IsFixed() && column.type != ColumnType::Boolean &&
                                  column.nVariableIndex >= table.nVariableColumns;
            if (column.nNumber >= table.nMostColumns || bOutside)
                Fail(FailureKind::Damaged, "a table's column has no place in its rows");
        }
        for (const RealIndex& index : table.realIndexes)
            if (index.columns.empty()) Fail(FailureKind::Damaged, "a table's index has no columns");
        for (const LogicalIndex& index : table.logicalIndexes)
            if (index.nRealIndex >= table.realIndexes.size())
                Fail(FailureKind::Damaged, "a table's index has no tree");
    }

    ByteView m_bytes;
    Generation m_generation;
    const Layout& m_layout;
    std::size_t m_nPlace = 0;
};

class DefinitionWriter {
  public:
    explicit DefinitionWriter(Generation generation)
        : m_generation(generation), m_layout(LayoutOf(generation)) {}

    Bytes Write(const TableDefinition& table) {
        WriteHead(table);
        for (const RealIndex& index : table.realIndexes) {
            const ByteSpan block = Add(m_layout.nStatisticsBlock);
            StoreU32(block, 0, index.nEntriesAtBuild);
            StoreU32(block, 4, index.nDistinctKeys);
        }
        for (const Column& column : table.columns)
            WriteColumn(column);
        for (const Column& column : table.columns)
            WriteName(column.sName);
        for (const RealIndex& index : table.realIndexes)
            WriteRealIndex(index);
        for (const LogicalIndex& index : table.logicalIndexes)
            WriteLogicalIndex(index);
        for (const LogicalIndex& index : table.logicalIndexes)
            WriteName(index.sName);
        for (const LongColumnMaps& maps : table.longColumns) {
            const ByteSpan record = Add(10);
            StoreU16(record, 0, maps.nColumn);
            StorePlace(record, 2, maps.owned);
            StorePlace(record, 6, maps.free);
        }
        AppendLittle<2>(m_bytes, kNoColumn);
        StoreU32(m_bytes, kLengthPlace, static_cast<std::uint32_t>(m_bytes.size()));
        return std::move(m_bytes);
    }

  private:
    // A record of zeros at the end, good until the next one.
    ByteSpan Add(std::size_t nBytes) {
        m_bytes.resize(m_bytes.size() + nBytes);
        return ByteSpan(m_bytes).last(nBytes);
    }

    void WriteHead(const TableDefinition& table) {
        const HeadPlaces& head = HeadOf(m_generation);
        const ByteSpan bytes = Add(m_layout.nDefinitionHead);
        bytes[0] = static_cast<std::uint8_t>(PageKind::Definition);
        bytes[1] = 1;
        if (m_generation == Generation::Jet4) {
            StoreU32(bytes, kJet4MagicPlace, kMagic);
            StoreU32(bytes, kJet4StepPlace, table.nAutonumberStep);
        }
        StoreU8(bytes, head.nKind, static_cast<std::uint8_t>(table.kind));
        StoreU32(bytes, head.nRows, table.nRows);
        StoreU32(bytes, head.nLastAutonumber, table.nLastAutonumber);
        StoreU16(bytes, head.nMostColumns, table.nMostColumns);
        StoreU16(bytes, head.nVariableColumns, table.nVariableColumns);
        StoreU16(bytes, head.nColumns, table.columns.size());
        StoreU32(bytes, head.nLogicalIndexes,
                 static_cast<std::uint32_t>(table.logicalIndexes.size()));
        StoreU32(bytes, head.nRealIndexes, static_cast<std::uint32_t>(table.realIndexes.size()));
        StorePlace(bytes, head.nOwnedMap, table.ownedMap);
        StorePlace(bytes, head.nFreeMap, table.freeMap);
    }

    void WriteColumn(const Column& column) {
        const ColumnPlaces& places = ColumnPlacesOf(m_generation);
        const ByteSpan record = Add(m_layout.nColumnRecord);
        StoreU8(record, 0, static_cast<std::uint8_t>(column.type));
        StoreU16(record, places.nNumber, column.nNumber);
        StoreU16(record, places.nVariableIndex, column.nVariableIndex);
        StoreU16(record, places.nDisplayOrder, column.nDisplayOrder);
        StoreU16(record, places.nSortOrder, column.nSortOrder);
        StoreU8(record, places.nFlags, column.nFlags);
        StoreU16(record, places.nFixedOffset, column.nFixedOffset);
        StoreU16(record, places.nLength, column.nLength);
        if (m_generation == Generation::Jet3) {
            StoreU16(record, kJet3CollationPlace, column.nCollation);
            StoreU16(record, kJet3CodePagePlace, column.nCodePage);
        } else {
            StoreU32(record, kJet4ColumnMagicPlace, kMagic);
            StoreU16(record, kJet4SortVersionPlace, column.nSortVersion);
            StoreU8(record, kJet4ExtensionPlace, column.nExtension);
        }
    }

    void WriteName(std::u16string_view sName) {
        const auto bytes = EncodeText(sName, m_generation, false);
        const std::size_t nMost = m_generation == Generation::Jet3 ? 0xFF : 0xFFFF;
        if (!bytes || bytes->size() > nMost)
            Fail(FailureKind::Unsupported, "the file can't hold a name");
        if (m_generation == Generation::Jet3)
            AppendLittle<1>(m_bytes, bytes->size());
        else
            AppendLittle<2>(m_bytes, bytes->size());
        Append(m_bytes, *bytes);
    }

    void WriteRealIndex(const RealIndex& index) {
        const ByteSpan whole = Add(m_layout.nRealIndexRecord);
        const ByteSpan record = whole.subspan(IndexRecordHead(m_generation));
        if (m_generation == Generation::Jet4) StoreU32(whole, 0, kIndexMagic);
        for (std::size_t i = 0; i < kIndexColumns; ++i) {
            const bool bUsed = i < index.columns.size();
            StoreU16(record, 3 * i, bUsed ? index.columns[i].nColumn : kNoColumn);
            StoreU8(record, 3 * i + 2, bUsed && index.columns[i].bAscending ? 1 : 0);
        }
        StorePlace(record, kIndexMapPlace, index.ownedMap);
        StoreU32(record, kIndexRootPlace, index.nRootPage);
        StoreU8(whole, IndexFlagsPlace(m_generation), index.nFlags);
    }

    void WriteLogicalIndex(const LogicalIndex& index) {
        const ByteSpan whole = Add(m_layout.nLogicalIndexRecord);
        const ByteSpan record = whole.subspan(IndexRecordHead(m_generation));
        if (m_generation == Generation::Jet4) StoreU32(whole, 0, kMagic);
        StoreU32(record, 0, index.nNumber);
        StoreU32(record, 4, index.nRealIndex);
        StoreU8(record, 8, static_cast<std::uint8_t>(index.side));
        StoreU32(record, 9, static_cast<std::uint32_t>(index.nRelatedIndex));
        StoreU32(record, 13, index.nRelatedTable);
        StoreU8(record, 17, index.nUpdateAction);
        StoreU8(record, 18, index.nDeleteAction);
        StoreU8(record, 19, static_cast<std::uint8_t>(index.kind));
    }

    Generation m_generation;
    const Layout& m_layout;
    Bytes m_bytes;
};

bool IsDefinitionPage(PageStore& store, std::uint32_t nPage) {
    return nPage != 0 && nPage < store.Count() &&
           store.Read(nPage)[0] == static_cast<std::uint8_t>(PageKind::Definition);
}

// The pages of the chain that starts on the page; none where no definition does.
std::vector<std::uint32_t> ChainOf(PageStore& store, std::uint32_t nPage) {
    std::vector<std::uint32_t> chain;
    while (IsDefinitionPage(store, nPage)) {
        if (chain.size() * store.Format().nPageSize > kMostDefinitionBytes)
            Fail(FailureKind::Damaged, "a table's definition runs in circles");
        chain.push_back(nPage);
        nPage = LoadU32(store.Read(nPage), kNextPlace);
    }
    return chain;
}

std::size_t PagesFor(std::size_t nBytes, std::size_t nPageSize) {
    if (nBytes <= nPageSize) return 1;
    return 1 + (nBytes - nPageSize + nPageSize - kPageHead - 1) / (nPageSize - kPageHead);
}

// The part of the run that stands on the chain's page of that number.
ByteView PartOnPage(ByteView bytes, std::size_t nIndex, std::size_t nPageSize) {
    if (nIndex == 0) return bytes.first(std::min(bytes.size(), nPageSize));
    const std::size_t nFrom = nPageSize + (nIndex - 1) * (nPageSize - kPageHead);
    if (nFrom >= bytes.size()) return {};
    return bytes.subspan(nFrom, std::min(bytes.size() - nFrom, nPageSize - kPageHead));
}

std::size_t RoomOnPage(const Layout& layout, std::size_t nUsed) {
    if (layout.generation == Generation::Jet3) return kJet3Room;
    return layout.nPageSize > nUsed + kPageHead ? layout.nPageSize - nUsed - kPageHead : 0;
}

void WritePage(PageStore& store, std::uint32_t nPage, ByteView bytes, bool bFirst,
               std::uint32_t nNext) {
    const std::size_t nFrom = bFirst ? 0 : kPageHead;
    const ByteSpan page = store.Change(nPage);
    std::fill(page.begin(), page.end(), std::uint8_t{0});
    std::copy(bytes.begin(), bytes.end(), page.begin() + static_cast<std::ptrdiff_t>(nFrom));
    page[0] = static_cast<std::uint8_t>(PageKind::Definition);
    page[1] = 1;
    StoreU16(page, kRoomPlace, RoomOnPage(store.Format(), nFrom + bytes.size()));
    StoreU32(page, kNextPlace, nNext);
}

void KeepUnusedFields(Bytes& bytes, PageStore& store, std::uint32_t nPage) {
    if (store.Format().generation != Generation::Jet4) return;
    const ByteView old = Part(store.Read(nPage), kJet4UnusedPlace, kJet4UnusedBytes);
    std::copy(old.begin(), old.end(), bytes.begin() + kJet4UnusedPlace);
}

bool IsEqual(ByteView left, ByteView right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end());
}

// Whether the first pages agree from the length on, but for rows, autonumber and statistics.
bool AgreeButForCounters(ByteView page, ByteView bytes, const Layout& layout) {
    const HeadPlaces& head = HeadOf(layout.generation);
    const std::size_t nBehindCounters = head.nLastAutonumber + 4;
    const std::size_t nBehindStatistics =
        layout.nDefinitionHead + LoadU32(bytes, head.nRealIndexes) * layout.nStatisticsBlock;
    if (nBehindStatistics > bytes.size()) return IsEqual(page, bytes);
    const auto same = [&](std::size_t nFrom, std::size_t nEnd) {
        return IsEqual(page.subspan(nFrom, nEnd - nFrom), bytes.subspan(nFrom, nEnd - nFrom));
    };
    return same(kLengthPlace, head.nRows) && same(nBehindCounters, layout.nDefinitionHead) &&
           same(nBehindStatistics, bytes.size());
}

}  // namespace

TableDefinition ParseDefinition(ByteView bytes, std::uint32_t nPage, Generation generation) {
    return DefinitionReader(bytes, generation).Read(nPage);
}

Bytes BuildDefinition(const TableDefinition& table, Generation generation) {
    return DefinitionWriter(generation).Write(table);
}

Bytes DefinitionBytes(PageStore& store, std::uint32_t nPage) {
    if (!IsDefinitionPage(store, nPage))
        Fail(FailureKind::Damaged, "a table has no definition where it should be");
    const ByteView first = store.Read(nPage);
    const std::size_t nLength = LoadU32(first, kLengthPlace);
    if (nLength < store.Format().nDefinitionHead || nLength > kMostDefinitionBytes)
        Fail(FailureKind::Damaged, "a table's definition has an impossible length");
    Bytes bytes(first.begin(), first.end());
    for (nPage = LoadU32(first, kNextPlace); bytes.size() < nLength;) {
        if (!IsDefinitionPage(store, nPage))
            Fail(FailureKind::Damaged, "a table's definition breaks off");
        const ByteView page = store.Read(nPage);
        Append(bytes, page.subspan(kPageHead));
        nPage = LoadU32(page, kNextPlace);
    }
    bytes.resize(nLength);
    return bytes;
}

TableDefinition ReadDefinition(PageStore& store, std::uint32_t nPage) {
    return ParseDefinition(DefinitionBytes(store, nPage), nPage, store.Format().generation);
}

void WriteDefinition(PageStore& store, const TableDefinition& table) {
    const std::size_t nPageSize = store.Format().nPageSize;
    Bytes bytes = BuildDefinition(table, store.Format().generation);
    std::vector<std::uint32_t> chain = ChainOf(store, table.nPage);
    if (chain.empty())
        chain.push_back(table.nPage);
    else
        KeepUnusedFields(bytes, store, table.nPage);
    const std::size_t nPages = PagesFor(bytes.size(), nPageSize);
    for (; chain.size() > nPages; chain.pop_back())
        FreePage(store, chain.back());
    while (chain.size() < nPages)
        chain.push_back(TakePage(store));
    for (std::size_t i = 0; i < nPages; ++i)
        WritePage(store, chain[i], PartOnPage(bytes, i, nPageSize), i == 0,
                  i + 1 < nPages ? chain[i + 1] : 0);
}

bool IsSameDefinition(PageStore& store, std::uint32_t nPage, ByteView bytes) {
    const std::size_t nPageSize = store.Format().nPageSize;
    for (std::size_t i = 0;; ++i) {
        const ByteView expected = PartOnPage(bytes, i, nPageSize);
        if (expected.empty()) return true;
        if (!IsDefinitionPage(store, nPage)) return false;
        const ByteView page = store.Read(nPage);
        const ByteView actual = page.subspan(i == 0 ? 0 : kPageHead, expected.size());
        if (i == 0 ? !AgreeButForCounters(actual, expected, store.Format())
                   : !IsEqual(actual, expected))
            return false;
        nPage = LoadU32(page, kNextPlace);
    }
}

std::uint32_t DefinitionCounters::Rows() const {
    return LoadU32(m_store.Read(m_nPage), HeadOf(m_store.Format().generation).nRows);
}

void DefinitionCounters::SetRows(std::uint32_t nRows) {
    StoreU32(m_store.Change(m_nPage), HeadOf(m_store.Format().generation).nRows, nRows);
}

std::uint32_t DefinitionCounters::LastAutonumber() const {
    return LoadU32(m_store.Read(m_nPage), HeadOf(m_store.Format().generation).nLastAutonumber);
}

void DefinitionCounters::SetLastAutonumber(std::uint32_t nLast) {
    StoreU32(m_store.Change(m_nPage), HeadOf(m_store.Format().generation).nLastAutonumber, nLast);
}

void DefinitionCounters::CountNewKey(std::size_t nRealIndex) {
    const std::size_t nPlace = StatisticsPlace(nRealIndex) + 4;
    const ByteSpan page = m_store.Change(m_nPage);
    StoreU32(page, nPlace, LoadU32(page, nPlace) + 1);
}

void DefinitionCounters::SetStatistics(std::size_t nRealIndex, std::uint32_t nEntries,
                                       std::uint32_t nDistinct) {
    const std::size_t nPlace = StatisticsPlace(nRealIndex);
    const ByteSpan page = m_store.Change(m_nPage);
    StoreU32(page, nPlace, nEntries);
    StoreU32(page, nPlace + 4, nDistinct);
}

std::size_t DefinitionCounters::StatisticsPlace(std::size_t nRealIndex) const {
    const Layout& layout = m_store.Format();
    return layout.nDefinitionHead + nRealIndex * layout.nStatisticsBlock;
}

}  // namespace nomira::jet
