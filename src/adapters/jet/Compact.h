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
// to tables elsewhere, the properties of all these and of the database, and who owns and may use
// them. Left out is what belongs to the surface of the maker's program: forms, reports, macros,
// modules, and its own tables; what it makes anew in every file isn't told of. Texts are ordered by
// the General order, whatever order the source has, and the new file has neither a password nor a
// cipher.
//
// Raises Unsupported or Constraint, with the table's name, for a row that the new generation can't
// hold (Jet 3: a character that its code page lacks, a row beyond its page), and Damaged.
CompactedFile Compact(AccessFile& source, Generation generation);

// A sentence for each thing in the file that is neither a table nor a relationship, for whoever
// takes the rows out of it: queries, links, forms and so on, properties of tables.
std::vector<std::string> TellObjects(AccessFile& file);

}  // namespace nomira::jet
