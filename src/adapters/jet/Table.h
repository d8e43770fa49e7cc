// A table's rows: walked over, read, and changed in place with all indexes and relationships.
#pragma once

#include <optional>
#include <vector>

#include "adapters/jet/Definition.h"
#include "adapters/jet/IndexTree.h"

namespace nomira::jet {

class AccessFile;

// Values in the order of TableDefinition::columns.
using Row = std::vector<Value>;

class Table {
  public:
    Table(AccessFile& file, TableDefinition definition);

    const TableDefinition& Definition() const { return m_definition; }
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
    // Whether a row stands there.
    bool Has(RowPlace place);

    // The tree of a real index (index into the definition's realIndexes).
    IndexTree& Index(std::size_t nIndex);

    // Adds a row. An autonumber column that is Null gets the next number, which stands in `row`
    // then; one that is given raises the counter. Missing columns at the end are Null. Raises
    // Constraint, before anything is changed, for a key twice in a unique index, a Null that an
    // index or a column refuses, or a reference to no row where the file's relationship demands
    // one; Unsupported for a text that the file or an index can't hold; Constraint for a text or
    // row that is too long.
    RowPlace Insert(Row& row);
    // Replaces all values of the row that stands at the place, which stays its place. A long value
    // that equals the old one stays where it is. Raises like Insert.
    void Update(RowPlace place, const Row& row);
    // Deletes the row, and before it what the file's relationships cascade to (or sets those
    // columns Null, or raises Constraint, as they say).
    void Delete(RowPlace place);

  private:
    AccessFile& m_file;
    TableDefinition m_definition;
};

}  // namespace nomira::jet
