// The columns of an Access file as SQL sees them: which type each is declared with, and its values
// in SQLite's kinds and back.
//
// Yes/No: 1 and 0. Whole numbers: integers. Single, Double: reals. Currency and Numeric: an integer
// where it is whole, else a real where that is as exact, else a text of digits. Date/Time: a text
// (DateText.h), or the bare number of days where no text can tell it. Text, Memo: text, exact in
// case. GUID, Binary, OLE: blobs, the bytes as the file has them.
#pragma once

#include <string>

#include "adapters/jet/Definition.h"
#include "adapters/jetsql/Sqlite.h"

namespace nomira::jetsql {

// For a CREATE TABLE.
const char* DeclaredType(const jet::Column& column);

// Give the value, the text (without U+0000) or the integer as the result of a function or a column.
// `room` is the text's on its way.
void GiveAscii(sqlite3_context* context, jet::ByteView text, std::string& room);
void GiveWhole(sqlite3_context* context, std::int64_t nValue, const jet::Column& column);
void GiveResult(sqlite3_context* context, const jet::Value& value, const jet::Column& column);

// The value to be written into the column. Raises Constraint for one that is of another kind, or
// too large.
jet::Value ValueToWrite(sqlite3_value* value, const jet::Column& column);

// What an index is asked for.
struct KeyValue {
    enum class Kind {
        Known,    // `value` is the one that rows must have
        NoRow,    // no row of the column compares equal to it
        Unknown,  // can't be told: all rows have to be looked at
    };
    Kind kind = Kind::Unknown;
    jet::Value value{};
};
// The column's value that compares equal to this one, by SQLite's rules for a comparison with a
// column of the declared type.
KeyValue ValueToFind(sqlite3_value* value, const jet::Column& column);

// Whether rows of the column can be found by ValueToFind at all, and by a range.
bool CanBeFound(const jet::Column& column);
bool CanBeCompared(const jet::Column& column);
// Whether the rows with the key of a value have just that value: then it is always known or none.
bool IsFoundExactly(const jet::Column& column);

// The same for the end of a range of whole numbers. `bLower`: rows must be that or more.
KeyValue BoundToFind(sqlite3_value* value, const jet::Column& column, bool bLower);

}  // namespace nomira::jetsql
