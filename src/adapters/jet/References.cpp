#include "adapters/jet/References.h"

#include <algorithm>

#include "adapters/jet/AccessFile.h"
#include "adapters/jet/KeyCodes.h"

namespace nomira::jet {
namespace {

constexpr std::uint8_t kCascades = 1;
constexpr std::uint8_t kSetsNull = 2;

const RealIndex& TreeOf(const Table& table, const LogicalIndex& index) {
    return table.Definition().realIndexes.at(index.nRealIndex);
}

}  // namespace

std::vector<const LogicalIndex*> References::Sides(RelatedSide side) const {
    std::vector<const LogicalIndex*> sides;
    for (const LogicalIndex& index : m_table.Definition().logicalIndexes)
        if (index.kind == LogicalKind::ForeignKey && index.side == side) sides.push_back(&index);
    return sides;
}

References::Other References::Across(const LogicalIndex& relationship) const {
    Table& other = m_file.TableAt(relationship.nRelatedTable);
    for (const LogicalIndex& index : other.Definition().logicalIndexes)
        if (static_cast<std::int32_t>(index.nNumber) == relationship.nRelatedIndex &&
            index.nRelatedTable == m_table.Definition().nPage &&
            TreeOf(other, index).columns.size() == TreeOf(m_table, relationship).columns.size())
            return {&other, &index};
    Fail(FailureKind::Damaged, "a relationship has one side only");
}

Bytes References::KeyAcross(const LogicalIndex& relationship, const Other& other,
                            std::span<const Value> row) const {
    const TableDefinition& own = m_table.Definition();
    const TableDefinition& theirs = other.table->Definition();
    const RealIndex& tree = TreeOf(*other.table, *other.record);
    Bytes key;
    for (std::size_t i = 0; i < tree.columns.size(); ++i) {
        const std::uint16_t nOwn = TreeOf(m_table, relationship).columns[i].nColumn;
        const Value& value = row[own.ColumnOfNumber(nOwn)];
        if (IsNull(value)) return {};
        AppendKey(key, value, theirs.columns[theirs.ColumnOfNumber(tree.columns[i].nColumn)],
                  tree.columns[i].bAscending, m_file.Kind());
    }
    return key;
}

void References::RequirePrimaries(std::span<const Value> row, const std::vector<Bytes>& keys,
                                  const Row* old) const {
    for (const LogicalIndex* relationship : Sides(RelatedSide::Foreign)) {
        const Other other = Across(*relationship);
        const Bytes key = KeyAcross(*relationship, other, row);
        if (key.empty() || (old != nullptr && KeyAcross(*relationship, other, *old) == key))
            continue;
        const bool bItself = other.table == &m_table && keys[other.record->nRealIndex] == key;
        if (!bItself && !other.table->Index(other.record->nRealIndex).Contains(key))
            throw ReferenceFailure("a row refers to none that is there");
    }
}

References::Foreign References::ForeignRows(const LogicalIndex& relationship,
                                            std::span<const Value> row) const {
    const Other other = Across(relationship);
    Foreign foreign;
    foreign.table = other.table;
    foreign.nUpdateAction = other.record->nUpdateAction;
    foreign.nDeleteAction = other.record->nDeleteAction;
    for (const IndexColumn& column : TreeOf(*other.table, *other.record).columns)
        foreign.columns.push_back(other.table->Definition().ColumnOfNumber(column.nColumn));
    for (const IndexColumn& column : TreeOf(m_table, relationship).columns)
        foreign.ownColumns.push_back(m_table.Definition().ColumnOfNumber(column.nColumn));
    const Bytes key = KeyAcross(relationship, other, row);
    if (!key.empty()) foreign.places = other.table->PlacesOf(other.record->nRealIndex, key);
    return foreign;
}

std::vector<References::Follower> References::FollowersOf(const Row& old,
                                                          std::span<const Value> row) const {
    std::vector<Follower> followers;
    for (const LogicalIndex* relationship : Sides(RelatedSide::Primary)) {
        const Other other = Across(*relationship);
        if (KeyAcross(*relationship, other, old) == KeyAcross(*relationship, other, row)) continue;
        const Foreign foreign = ForeignRows(*relationship, old);
        if (!foreign.places.empty() && (foreign.nUpdateAction & kCascades) == 0)
            throw ReferenceFailure("other rows refer to the row by what is to change");
        for (const RowPlace place : foreign.places) {
            Follower& follower = followers.emplace_back();
            follower.table = foreign.table;
            follower.place = place;
            for (std::size_t i = 0; i < foreign.columns.size(); ++i)
                follower.values.emplace_back(foreign.columns[i], row[foreign.ownColumns[i]]);
        }
    }
    return followers;
}

void References::Follow(const std::vector<Follower>& followers) {
    for (const Follower& follower : followers) {
        Row row = follower.table->Read(follower.place);
        for (const auto& [nColumn, value] : follower.values)
            row.at(nColumn) = value;
        follower.table->Update(follower.place, row);
    }
}

void Deletion::Run(Table& table, RowPlace place) {
    Doom(table, place);
    for (std::size_t i = 0; i < m_doomed.size(); ++i)
        Look(Target(m_doomed[i]));
    const auto stays = [&](const Target& target) { return !m_seen.contains(target); };
    if (std::any_of(m_refusing.begin(), m_refusing.end(), stays))
        throw ReferenceFailure("other rows refer to the row that is to be deleted");
    std::erase_if(m_nulled, [&](const auto& row) { return !stays({row.table, row.place}); });
    References::Follow(m_nulled);
    for (auto target = m_doomed.rbegin(); target != m_doomed.rend(); ++target)
        target->first->DeleteRow(target->second);
}

void Deletion::Doom(Table& table, RowPlace place) {
    if (m_seen.emplace(&table, place).second) m_doomed.emplace_back(&table, place);
}

void Deletion::Look(const Target& target) {
    const References references(m_file, *target.first);
    const auto relationships = references.Sides(RelatedSide::Primary);
    if (relationships.empty()) return;
    const Row row = target.first->Read(target.second);
    for (const LogicalIndex* relationship : relationships) {
        const References::Foreign foreign = references.ForeignRows(*relationship, row);
        for (const RowPlace place : foreign.places) {
            if ((foreign.nDeleteAction & kCascades) != 0) {
                Doom(*foreign.table, place);
            } else if ((foreign.nDeleteAction & kSetsNull) != 0) {
                References::Follower& nulled = m_nulled.emplace_back();
                nulled.table = foreign.table;
                nulled.place = place;
                for (const std::size_t nColumn : foreign.columns)
                    nulled.values.emplace_back(nColumn, Value());
            } else {
                m_refusing.emplace_back(foreign.table, place);
            }
        }
    }
}

}  // namespace nomira::jet
