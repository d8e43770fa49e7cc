#include "adapters/jet/Table.h"

#include <algorithm>
#include <tuple>
#include <utility>

#include "adapters/jet/AccessFile.h"
#include "adapters/jet/DefinitionPages.h"
#include "adapters/jet/KeyCodes.h"
#include "adapters/jet/LongValues.h"
#include "adapters/jet/References.h"
#include "adapters/jet/RowCodec.h"
#include "adapters/jet/RowPages.h"
#include "adapters/jet/TextCodes.h"
#include "adapters/jet/ValueCodes.h"

namespace nomira::jet {
namespace {

struct Tree {
    Tree(PageStore& store, const TableDefinition& table, const RealIndex& index)
        : pages(store, index.ownedMap), tree(store, index.nRootPage, table.nPage, &pages) {}

    MappedPages pages;
    IndexTree tree;
};

LongColumnMaps MapsOf(const TableDefinition& table, const Column& column) {
    for (const LongColumnMaps& maps : table.longColumns)
        if (maps.nColumn == column.nNumber) return maps;
    return {};
}

bool IsAllNull(const TableDefinition& table, const RealIndex& index, std::span<const Value> row) {
    return std::all_of(index.columns.begin(), index.columns.end(), [&](const IndexColumn& column) {
        return IsNull(row[table.ColumnOfNumber(column.nColumn)]);
    });
}

// Whether no other row may have the row's key in the index.
bool IsKeptUnique(const TableDefinition& table, const RealIndex& index,
                  std::span<const Value> row) {
    return index.IsUnique() && !IsAllNull(table, index, row);
}

}  // namespace

// What is made of the definition.
struct Table::Parts {
    Parts(PageStore& store, const TableDefinition& definition)
        : bytes(DefinitionBytes(store, definition.nPage)),
          table(definition),
          codec(table, store.Format()),
          rows(store, table.nPage, table.ownedMap, table.freeMap),
          counters(store, table.nPage) {
        for (const RealIndex& index : table.realIndexes)
            trees.push_back(std::make_unique<Tree>(store, table, index));
        for (const std::size_t nColumn : codec.LongColumns())
            longs.emplace_back(store, MapsOf(table, table.columns[nColumn]));
        for (std::size_t i = 0; i < table.columns.size(); ++i)
            if (table.columns[i].IsAutonumber()) autonumber = i;
        for (const LogicalIndex& index : table.logicalIndexes)
            if (index.kind == LogicalKind::ForeignKey) bRelated = true;
    }

    Bytes bytes;
    TableDefinition table;
    RowCodec codec;
    RowPages rows;
    DefinitionCounters counters;
    std::vector<std::unique_ptr<Tree>> trees;
    std::vector<LongValues> longs;  // in the order of RowCodec::LongColumns
    std::optional<std::size_t> autonumber;
    bool bRelated = false;
    Bytes row;  // the one that is written

    // The row that was read last, as long as no page changes: columns are read one by one.
    std::optional<RowView> view;
    RowPlace viewed;
    std::uint64_t nViewedAt = 0;
};

// The long values of a row that is to be written.
struct Table::NewLongs {
    // Whole fields; those of values outside of the row are only as long as they will be.
    std::vector<Bytes> fields;
    // Values that have to be stored outside of the row.
    std::vector<std::pair<std::size_t, Bytes>> outside;
    std::vector<bool> kept;  // those of the old row stay as they are
};

Table::Table(AccessFile& file, TableDefinition definition)
    : m_file(file), m_definition(std::move(definition)) {
    Make();
}

Table::~Table() = default;

void Table::Make() {
    auto parts = std::make_unique<Parts>(m_file.Pages(), m_definition);
    if (m_parts) m_retired.push_back(std::move(m_parts));
    m_parts = std::move(parts);
    m_nSeenChanges = m_file.Pages().Changes();
}

void Table::Refresh() {
    PageStore& store = m_file.Pages();
    if (store.Changes() == m_nSeenChanges) return;
    if (!IsSameDefinition(store, m_definition.nPage, m_parts->bytes)) {
        m_definition = ReadDefinition(store, m_definition.nPage);
        Make();
    }
    m_nSeenChanges = store.Changes();
}

std::uint32_t Table::RowCount() const {
    return m_parts->counters.Rows();
}

void Table::Scan::Next() {
    if (!m_bAtEnd) m_bAtEnd = !m_table->m_parts->rows.Next(m_place);
}

Table::Scan Table::Rows() {
    Refresh();
    Scan scan;
    scan.m_table = this;
    scan.m_bAtEnd = false;
    scan.Next();
    return scan;
}

Row Table::Read(RowPlace place) {
    Row row;
    row.reserve(m_definition.columns.size());
    for (std::size_t i = 0; i < m_definition.columns.size(); ++i)
        row.push_back(Read(place, i));
    return row;
}

const RowView& Table::ViewOf(RowPlace place) {
    const std::uint64_t nNow = m_file.Pages().Changes();
    if (!m_parts->view || m_parts->viewed != place || m_parts->nViewedAt != nNow) {
        m_parts->view.reset();
        m_parts->view.emplace(m_file.Pages().Format(), m_parts->rows.Row(place));
        m_parts->viewed = place;
        m_parts->nViewedAt = nNow;
    }
    return *m_parts->view;
}

Value Table::Read(RowPlace place, std::size_t nColumn) {
    const RowView& row = ViewOf(place);
    const Column& column = m_parts->table.columns.at(nColumn);
    if (!column.IsLongValue() || column.IsFixed()) return m_parts->codec.Decode(row, nColumn);
    const auto field = row.Field(column);
    if (!field) return {};
    return DecodeLongValue(column, ReadLongValue(m_file.Pages(), *field), m_file.Kind());
}

Table::Glance Table::GlanceAt(RowPlace place, std::size_t nColumn, Bytes& room) {
    const Column& column = m_parts->table.columns.at(nColumn);
    const bool bText = column.IsText() && !column.IsFixed();
    if (!bText && !HoldsWhole(column.type)) return {};
    auto field = ViewOf(place).Field(column);
    if (field && column.IsLongValue()) field = ValueInField(*field);
    if (!field) return {};
    if (!bText) return DecodeWhole(column, *field);
    const auto ascii = AsciiOf(*field, m_file.Kind(), room);
    return ascii ? Glance(*ascii) : Glance();
}

bool Table::Has(RowPlace place) {
    return m_parts->rows.Has(place);
}

IndexTree& Table::Index(std::size_t nIndex) {
    return m_parts->trees.at(nIndex)->tree;
}

std::vector<RowPlace> Table::PlacesOf(std::size_t nIndex, ByteView key) {
    std::vector<RowPlace> places;
    auto cursor = Index(nIndex).LowerBound(key);
    for (; !cursor.AtEnd(); cursor.Next()) {
        const ByteView found = cursor.Key();
        if (!std::equal(found.begin(), found.end(), key.begin(), key.end())) break;
        places.push_back(cursor.Place());
    }
    return places;
}

std::vector<RowPlace> Table::RowsInTheWay(Row row) {
    Refresh();
    row.resize(m_definition.columns.size());
    TakeAutonumber(row);
    const Keys keys = KeysOf(row);
    std::vector<RowPlace> places;
    for (std::size_t i = 0; i < keys.size(); ++i) {
        if (keys[i].empty() || !IsKeptUnique(m_definition, m_definition.realIndexes[i], row))
            continue;
        const std::vector<RowPlace> found = PlacesOf(i, keys[i]);
        places.insert(places.end(), found.begin(), found.end());
    }
    return places;
}

RowPlace Table::Insert(Row& row) {
    Refresh();
    if (row.size() > m_definition.columns.size())
        Fail(FailureKind::Constraint, "a row has more values than the table has columns");
    row.resize(m_definition.columns.size());
    TakeAutonumber(row);
    RequireValues(row);
    const Keys keys = KeysOf(row);
    const std::vector<bool> known = FindKnownKeys(row, keys, nullptr);
    if (m_parts->bRelated) References(m_file, *this).RequirePrimaries(row, keys, nullptr);
    NewLongs longs = PrepareLongs(row, std::nullopt);
    EncodeRow(row, longs);
    const RowPlace place = m_parts->rows.Add(m_parts->row);
    ReplaceKeys(place, nullptr, &keys, known);
    m_parts->counters.SetRows(m_parts->counters.Rows() + 1);
    RaiseAutonumber(row);
    m_nSeenChanges = m_file.Pages().Changes();
    return place;
}

void Table::Update(RowPlace place, const Row& row) {
    Refresh();
    if (row.size() != m_definition.columns.size())
        Fail(FailureKind::Constraint, "a row has other columns than its table");
    const Row old = Read(place);
    RequireValues(row);
    const Keys oldKeys = KeysOf(old);
    const Keys keys = KeysOf(row);
    const std::vector<bool> known = FindKnownKeys(row, keys, &oldKeys);
    const References references(m_file, *this);
    std::vector<References::Follower> followers;
    if (m_parts->bRelated) {
        references.RequirePrimaries(row, keys, &old);
        followers = references.FollowersOf(old, row);
    }
    const ByteView view = m_parts->rows.Row(place);
    const Bytes oldRow(view.begin(), view.end());
    NewLongs longs = PrepareLongs(row, oldRow);
    EncodeRow(row, longs);
    m_parts->rows.Replace(place, m_parts->row);
    ReplaceKeys(place, &oldKeys, &keys, known);
    FreeLongs(oldRow, &longs);
    RaiseAutonumber(row);
    References::Follow(followers);
}

void Table::Delete(RowPlace place) {
    Refresh();
    if (m_parts->bRelated)
        Deletion(m_file).Run(*this, place);
    else
        DeleteRow(place);
}

void Table::DeleteRow(RowPlace place) {
    const Keys keys = KeysOf(Read(place));
    const ByteView view = m_parts->rows.Row(place);
    const Bytes row(view.begin(), view.end());
    ReplaceKeys(place, &keys, nullptr, {});
    FreeLongs(row, nullptr);
    m_parts->rows.Delete(place);
    const std::uint32_t nRows = m_parts->counters.Rows();
    if (nRows > 0) m_parts->counters.SetRows(nRows - 1);
}

void Table::BuildIndex(std::size_t nIndex) {
    Refresh();
    const RealIndex& index = m_definition.realIndexes.at(nIndex);
    std::vector<IndexEntry> entries;
    for (Scan scan = Rows(); !scan.AtEnd(); scan.Next()) {
        const Row row = Read(scan.Place());
        Bytes key = KeyOfRow(m_definition, index, row, m_file.Kind());
        if (!key.empty()) entries.push_back({std::move(key), scan.Place()});
    }
    std::sort(entries.begin(), entries.end(), [](const IndexEntry& a, const IndexEntry& b) {
        return std::tie(a.key, a.place.nPage, a.place.nRow) <
               std::tie(b.key, b.place.nPage, b.place.nRow);
    });
    std::uint32_t nDistinct = entries.empty() ? 0 : 1;
    for (std::size_t i = 1; i < entries.size(); ++i)
        nDistinct += entries[i - 1].key != entries[i].key ? 1 : 0;
    Index(nIndex).Rebuild(entries);
    m_parts->counters.SetStatistics(nIndex, static_cast<std::uint32_t>(entries.size()), nDistinct);
}

void Table::TakeAutonumber(Row& row) const {
    if (!m_parts->autonumber || !IsNull(row[*m_parts->autonumber])) return;
    const auto nLast = static_cast<std::int32_t>(m_parts->counters.LastAutonumber());
    const auto nStep = static_cast<std::int32_t>(m_definition.nAutonumberStep);
    row[*m_parts->autonumber] = std::int64_t{nLast} + (nStep == 0 ? 1 : nStep);
}

void Table::RaiseAutonumber(std::span<const Value> row) {
    if (!m_parts->autonumber) return;
    const auto nValue =
        static_cast<std::int32_t>(std::get<std::int64_t>(row[*m_parts->autonumber]));
    if (nValue > static_cast<std::int32_t>(m_parts->counters.LastAutonumber()))
        m_parts->counters.SetLastAutonumber(static_cast<std::uint32_t>(nValue));
}

void Table::RequireValues(std::span<const Value> row) const {
    for (std::size_t i = 0; i < row.size(); ++i) {
        if (!IsNull(row[i])) continue;
        const Column& column = m_definition.columns[i];
        const bool bRefuses = (column.nFlags & ColumnNullable) == 0 || i == m_parts->autonumber;
        if (bRefuses && column.type != ColumnType::Boolean)
            Fail(FailureKind::Constraint, "a column must have a value");
    }
}

Table::Keys Table::KeysOf(std::span<const Value> row) const {
    Keys keys;
    keys.reserve(m_definition.realIndexes.size());
    for (const RealIndex& index : m_definition.realIndexes)
        keys.push_back(KeyOfRow(m_definition, index, row, m_file.Kind()));
    return keys;
}

std::vector<bool> Table::FindKnownKeys(std::span<const Value> row, const Keys& keys,
                                       const Keys* oldKeys) {
    std::vector<bool> known(keys.size());
    for (std::size_t i = 0; i < keys.size(); ++i) {
        if (keys[i].empty() || (oldKeys != nullptr && (*oldKeys)[i] == keys[i])) continue;
        known[i] = Index(i).Contains(keys[i]);
        const RealIndex& index = m_definition.realIndexes[i];
        if (known[i] && IsKeptUnique(m_definition, index, row))
            Fail(FailureKind::Constraint, "a key would stand twice in a unique index");
    }
    return known;
}

void Table::ReplaceKeys(RowPlace place, const Keys* oldKeys, const Keys* keys,
                        const std::vector<bool>& known) {
    for (std::size_t i = 0; i < m_parts->trees.size(); ++i) {
        static const Bytes none;
        const Bytes& oldKey = oldKeys == nullptr ? none : (*oldKeys)[i];
        const Bytes& key = keys == nullptr ? none : (*keys)[i];
        if (oldKey == key) continue;
        if (!oldKey.empty()) Index(i).Remove(oldKey, place);
        if (key.empty()) continue;
        Index(i).Insert(key, place);
        if (!known[i]) m_parts->counters.CountNewKey(i);
    }
}

Table::NewLongs Table::PrepareLongs(std::span<const Value> row, std::optional<ByteView> oldRow) {
    const std::vector<std::size_t>& columns = m_parts->codec.LongColumns();
    const Layout& layout = m_file.Pages().Format();
    NewLongs longs;
    longs.fields.resize(columns.size());
    longs.kept.resize(columns.size());
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const Column& column = m_definition.columns[columns[i]];
        const Value& value = row[columns[i]];
        if (IsNull(value)) continue;
        const auto oldField = oldRow ? RowView(layout, *oldRow).Field(column) : std::nullopt;
        if (oldField && DecodeLongValue(column, ReadLongValue(m_file.Pages(), *oldField),
                                        m_file.Kind()) == value) {
            longs.fields[i].assign(oldField->begin(), oldField->end());
            longs.kept[i] = true;
            continue;
        }
        Bytes bytes = EncodeLongValue(column, value, m_file.Kind());
        if (bytes.size() <= layout.nInlineLimit) {
            longs.fields[i] = InlineLongField(bytes);
        } else {
            longs.fields[i].resize(kLongFieldHead);
            longs.outside.emplace_back(i, std::move(bytes));
        }
    }
    return longs;
}

// The row is made once with room for what has to be stored elsewhere, so that nothing is stored of
// one that is refused.
void Table::EncodeRow(std::span<const Value> row, NewLongs& longs) {
    m_parts->codec.Encode(row, longs.fields, m_parts->row);
    if (longs.outside.empty()) return;
    for (const auto& [nLong, bytes] : longs.outside)
        longs.fields[nLong] = m_parts->longs[nLong].Write(bytes);
    m_parts->codec.Encode(row, longs.fields, m_parts->row);
}

void Table::FreeLongs(ByteView row, const NewLongs* kept) {
    const std::vector<std::size_t>& columns = m_parts->codec.LongColumns();
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (kept != nullptr && kept->kept[i]) continue;
        const RowView view(m_file.Pages().Format(), row);
        if (const auto field = view.Field(m_definition.columns[columns[i]]))
            m_parts->longs[i].Free(*field);
    }
}

}  // namespace nomira::jet
