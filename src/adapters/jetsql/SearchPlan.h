// How the rows of a query are found: by one of the file's own indexes, by a row's number, or by
// looking at all of them. An index of texts may find more rows than it was asked for (it knows no
// case, and no blanks at the end): SQLite looks at each of those rows once more.
#pragma once

#include <optional>
#include <span>
#include <string>

#include "adapters/jet/Table.h"
#include "adapters/jetsql/Sqlite.h"

namespace nomira::jetsql {

// The plan with the least cost for what SQLite asks, written into its structure: idxNum names the
// way, idxStr how the arguments are used. SQLITE_NOMEM if there is no memory for that.
int ChoosePlan(const jet::Table& table, jet::Generation generation, sqlite3_index_info& question);

// The entries of an index from `lower` on whose keys, cut to the length of `upper`, are not greater
// than `upper`.
struct KeyRange {
    std::size_t nIndex = 0;
    jet::Bytes lower;
    jet::Bytes upper;
};

// What to walk over.
struct Search {
    enum class Way { AllRows, OneRow, Index, NoRow };
    Way way = Way::AllRows;
    jet::RowPlace place{};  // OneRow
    KeyRange range{};       // Index
};

// What a plan of ChoosePlan comes to with these arguments, put in the place of another search.
void MakeSearch(Search& search, const jet::Table& table, jet::Generation generation, int nPlan,
                const char* sUse, std::span<sqlite3_value*> arguments);

}  // namespace nomira::jetsql
