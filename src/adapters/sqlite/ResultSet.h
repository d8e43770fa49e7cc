// What a query gave, taken out of the database whole, so that nothing is held while it is read.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "adapters/sqlite/PackedValues.h"
#include "database/DatabaseEngine.h"

namespace nomira::sqlite {

class Database;

struct ResultColumn {
    Text sName;
    // Where its values stand in the database; both empty for a computed one.
    std::string sTable;
    std::string sOrigin;
};

// The rows that were read, from 0 up; several recordsets may share them.
struct ResultSet {
    std::vector<ResultColumn> columns;
    std::size_t nRead = 0;
    PackedValues packed;                // their values, row by row
    std::vector<std::int64_t> readIds;  // only in a result that can be written
    // The one table whose rows these are, and can be written; empty if there is no such table.
    std::string sTable;
};

// Reads a query's rows whole; nullptr for a statement that gives none, which has then been run.
// With `bWritable` the rows of one table come with what it takes to change them, as far as the
// query lets them be told apart (not in a join or a union). Raises EngineFailure.
std::shared_ptr<const ResultSet> ReadQuery(Database& database, const std::string& sSql,
                                           bool bWritable);

// A table's columns, its rows not read yet. Raises EngineFailure if there is no such table.
std::shared_ptr<const ResultSet> DescribeTable(Database& database, std::string_view sTable,
                                               bool bWritable);
// The same with its rows, in the database's order.
std::shared_ptr<const ResultSet> ReadTable(Database& database, std::string_view sTable,
                                           bool bWritable);

// A column and the value it shall have.
struct Assignment {
    std::string sColumn;
    FieldValue value;
};

// Adds a row and gives its id. Raises EngineFailure.
std::int64_t InsertRow(Database& database, const std::string& sTable,
                       const std::vector<Assignment>& assignments);
// Changes one row. Raises EngineFailure, also if the row is gone.
void UpdateRow(Database& database, const std::string& sTable, std::int64_t nRowId,
               const std::vector<Assignment>& assignments);
// One row's values of these columns; computed ones are Null. Raises EngineFailure without the row.
std::vector<FieldValue> ReadRow(Database& database, const ResultSet& result, std::int64_t nRowId);

}  // namespace nomira::sqlite
