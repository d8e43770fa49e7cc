// A new, whole Access file out of what one holds: smaller, without holes, and of either generation.
#pragma once

#include <string>
#include <vector>

#include "adapters/jet/AccessFile.h"

namespace nomira::jet {

struct CompactedFile {
    Bytes bytes;
    // What the new file doesn't have: a sentence each. Never a row, a column or an index.
    std::vector<std::string> leftOut;
};

// Copies tables with their columns, rows, indexes and counters, relationships, queries and links
// to tables elsewhere. Left out is what belongs to the surface of the maker's program: forms,
// reports, macros, modules, and its own tables; the tables that it makes anew in every file aren't
// told of. Texts are ordered by the General order, whatever
// order the source has.
//
// Raises Unsupported or Constraint, with the table's name, for a row that the new generation can't
// hold (Jet 3: a character that its code page lacks, a row beyond its page), and Damaged.
CompactedFile Compact(AccessFile& source, Generation generation);

}  // namespace nomira::jet
