// A table's rows: walked over, read, and changed in place with all indexes and relationships.
#pragma once

#include <memory>
#include <optional>
#include <variant>
#include <vector>

#include "adapters/jet/Definition.h"
#include "adapters/jet/IndexTree.h"

namespace nomira::jet {

class AccessFile;
class RowView;

// Values in the order of TableDefinition::columns.
using Row = std::vector<Value>;

class Table {
  public:
    Table(AccessFile& file, TableDefinition definition);
    ~Table();
    Table(const Table&) = delete;
    Table& operator=(const Table&) = delete;

    // As the file told it when the table was last asked for (AccessFile) or changed.
    const TableDefinition& Definition() const { return m_definition; }
    // Reads the definition anew if another one stands in the file by now. Raises Damaged if none
    // does.
    void Refresh();
    // Rows now, as the file counts them.
    std::uint32_t RowCount() const;

    // Walks over the rows in the order of their places. A row that is deleted ahead of the walk is
    // not seen, one that is changed is seen as it is then.
    class Scan {
      public:
        bool AtEnd() const { return m_bAtEnd; }
        RowPlace Place() const { return m_place; }
        void Next();

      private:
        friend class Table;
        Table* m_table = nullptr;
        RowPlace m_place;
        bool m_bAtEnd = true;
    };
    Scan Rows();

    // All of a row's values. Raises Damaged if there is no row at the place.
    Row Read(RowPlace place);
    // One of them (index into the definition's columns): for whoever needs few of many.
    Value Read(RowPlace place, std::size_t nColumn);
    // One of them as it lies in the row, if it is an integer or a text of ASCII alone (which is
    // good until the file or `room` is changed). monostate for all else, which Read tells.
    using Glance = std::variant<std::monostate, std::int64_t, ByteView>;
    Glance GlanceAt(RowPlace place, std::size_t nColumn, Bytes& room);
    // Whether a row stands there.
    bool Has(RowPlace place);

    // The tree of a real index (index into the definition's realIndexes).
    IndexTree& Index(std::size_t nIndex);
    // The rows that have the key there.
    std::vector<RowPlace> PlacesOf(std::size_t nIndex, ByteView key);
    // The rows whose keys a unique index would have to hold twice for this one, in no order and
    // more than once if several indexes say so. Raises as Insert does for a row without a key.
    std::vector<RowPlace> RowsInTheWay(Row row);

    // Adds a row. An autonumber column that is Null gets the next number, which stands in `row`
    // then; one that is given raises the counter. Missing columns at the end are Null. Raises
    // Constraint, before anything is changed, for a key twice in a unique index, a Null that an
    // index or a column refuses, or a reference to no row where the file's relationship demands
    // one; Unsupported for a text that the file or an index can't hold; Constraint for a text or
    // row that is too long.
    RowPlace Insert(Row& row);
    // Replaces all values of the row that stands at the place, which stays its place. A long value
    // that equals the old one stays where it is. Rows that refer to it follow where their
    // relationship cascades updates, else they keep its key from being changed. Raises like Insert.
    void Update(RowPlace place, const Row& row);
    // Deletes the row, and before it what the file's relationships cascade to (or sets those
    // columns Null, or raises Constraint, as they say).
    void Delete(RowPlace place);

    // Fills the tree of a real index from the rows, whatever it held. Raises Constraint for a row
    // that has Null where the index refuses it; that keys are unique isn't looked at.
    void BuildIndex(std::size_t nIndex);

  private:
    friend class References;
    friend class Deletion;

    struct Parts;
    struct NewLongs;
    // A row's key in each real index; no bytes where the index leaves the row out.
    using Keys = std::vector<Bytes>;

    void Make();
    const RowView& ViewOf(RowPlace place);
    void TakeAutonumber(Row& row) const;
    void RequireValues(std::span<const Value> row) const;
    Keys KeysOf(std::span<const Value> row) const;
    // Which of the indexes has the key of a row already; the keys that equal those in `oldKeys` are
    // the row's own. Raises Constraint where the index is unique.
    std::vector<bool> FindKnownKeys(std::span<const Value> row, const Keys& keys,
                                    const Keys* oldKeys);
    void ReplaceKeys(RowPlace place, const Keys* oldKeys, const Keys* keys,
                     const std::vector<bool>& known);
    NewLongs PrepareLongs(std::span<const Value> row, std::optional<ByteView> oldRow);
    void EncodeRow(std::span<const Value> row, NewLongs& longs);
    void FreeLongs(ByteView row, const NewLongs* kept);
    void RaiseAutonumber(std::span<const Value> row);
    void DeleteRow(RowPlace place);

    AccessFile& m_file;
    TableDefinition m_definition;
    std::unique_ptr<Parts> m_parts;
    // Of definitions that were replaced: cursors may still stand in their trees.
    std::vector<std::unique_ptr<Parts>> m_retired;
    std::uint64_t m_nSeenChanges = 0;
};

}  // namespace nomira::jet
