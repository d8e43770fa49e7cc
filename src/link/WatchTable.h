// Which variables are watched, and under which numbers.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "langtools/Text.h"

namespace nomira {

// Names are compared exactly. Numbers start at 1 and are never given twice.
class WatchTable {
  public:
    bool Contains(TextView sVariableName) const;
    // A new number for the name.
    std::int32_t Add(TextView sVariableName);
    // Takes the name out and gives its number; nullopt for an unknown name.
    std::optional<std::int32_t> Remove(TextView sVariableName);
    // The name under the number; empty if there is none.
    Text NameOf(std::int32_t nID) const;

  private:
    struct Record {
        Text sVariableName;
        std::int32_t nID;
    };
    std::vector<Record> m_records;
    std::int32_t m_nInfoCount = 0;
};

}  // namespace nomira
