// The bytes of index keys: made so that comparing them as bytes orders the rows.
#pragma once

#include "adapters/jet/Definition.h"

namespace nomira::jet {

// Appends one column's part of a key. Text is folded as the file's sort order wants it: case and
// trailing blanks make no difference. Raises Unsupported for a sort order that isn't known, and for
// a text with a character whose code isn't: a wrong key would hide the row from other programs.
void AppendKey(Bytes& key, const Value& value, const Column& column, bool bAscending,
               Generation generation);

// Whether keys of the column can be made at all (of a text column: whether its order is known).
bool KnowsKeysOf(const Column& column, Generation generation);

// The key of a row, `values` in the order of the definition's columns. Empty if the index ignores
// a row like this. Raises as AppendKey, and Constraint for a Null where the index has none.
Bytes KeyOfRow(const TableDefinition& table, const RealIndex& index, std::span<const Value> values,
               Generation generation);

}  // namespace nomira::jet
