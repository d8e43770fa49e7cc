// Relationships between tables, as the file wants them kept.
#pragma once

#include <set>
#include <tuple>
#include <utility>
#include <vector>

#include "adapters/jet/Table.h"

namespace nomira::jet {

// The rows at the other ends of one table's relationships.
class References {
  public:
    References(AccessFile& file, Table& table) : m_file(file), m_table(table) {}

    // Raises Constraint if a row that `row` refers to is missing. References that are the same in
    // `old` aren't looked at, and a row may refer to itself. `keys`: the row's own.
    void RequirePrimaries(std::span<const Value> row, const std::vector<Bytes>& keys,
                          const Row* old) const;

    // A foreign row, and what it has to change in.
    struct Follower {
        Table* table;
        RowPlace place;
        std::vector<std::pair<std::size_t, Value>> values;  // by column
    };
    // The rows that refer to the old row and have to follow as its key changes. Raises Constraint
    // if they refuse.
    std::vector<Follower> FollowersOf(const Row& old, std::span<const Value> row) const;
    static void Follow(const std::vector<Follower>& followers);

    // The rows that refer to the row by the relationship, whose primary side it is.
    struct Foreign {
        Table* table = nullptr;
        std::uint8_t nUpdateAction = 0;
        std::uint8_t nDeleteAction = 0;
        std::vector<std::size_t> columns;  // of the foreign table, in the order of `ownColumns`
        std::vector<std::size_t> ownColumns;
        std::vector<RowPlace> places;
    };
    Foreign ForeignRows(const LogicalIndex& relationship, std::span<const Value> row) const;

    std::vector<const LogicalIndex*> Sides(RelatedSide side) const;

  private:
    struct Other {
        Table* table;
        const LogicalIndex* record;
    };
    Other Across(const LogicalIndex& relationship) const;
    // The key by which the row is found on the other side; empty if a column is Null.
    Bytes KeyAcross(const LogicalIndex& relationship, const Other& other,
                    std::span<const Value> row) const;

    AccessFile& m_file;
    Table& m_table;
};

// The deletion of a row with all that depends on it. Nothing is changed before all rows are found
// that have to go, and none is left that forbids it.
class Deletion {
  public:
    explicit Deletion(AccessFile& file) : m_file(file) {}

    // Raises Constraint.
    void Run(Table& table, RowPlace place);

  private:
    using Target = std::pair<Table*, RowPlace>;
    struct ByPlace {
        bool operator()(const Target& a, const Target& b) const {
            return std::tie(a.first, a.second.nPage, a.second.nRow) <
                   std::tie(b.first, b.second.nPage, b.second.nRow);
        }
    };

    void Doom(Table& table, RowPlace place);
    void Look(const Target& target);

    AccessFile& m_file;
    std::vector<Target> m_doomed;  // each row ahead of those that refer to it
    std::set<Target, ByPlace> m_seen;
    std::vector<Target> m_refusing;
    std::vector<References::Follower> m_nulled;
};

}  // namespace nomira::jet
