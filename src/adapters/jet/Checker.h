// Whether a file is what other programs expect: every page used by one owner or free, every index
// exactly what its rows make of it, long values and relationships whole. Reads only.
#pragma once

#include <string>
#include <vector>

#include "adapters/jet/AccessFile.h"

namespace nomira::jet {

struct Finding {
    bool bWarning = false;  // occurs in files of other programs, and nothing is wrong with its rows
    std::string sText;      // a sentence, in UTF-8
    std::uint32_t nPage = 0;  // where; of a table, the page of its definition
};

// In the order in which they were found; none for a sound file. Raises nothing for damage, but
// InputOutput.
std::vector<Finding> CheckFile(AccessFile& file);

}  // namespace nomira::jet
