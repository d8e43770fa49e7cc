// What queries gave, for a program that looks the same names up again and again. They are good as
// long as the database stands as it was; the database that owns them knows.
#pragma once

#include <memory>
#include <string>
#include <unordered_map>

#include "adapters/sqlite/ResultSet.h"

namespace nomira::sqlite {

class RememberedResults {
  public:
    // nullptr if this query hasn't been remembered in this form.
    std::shared_ptr<const ResultSet> Find(const std::string& sSql, bool bWritable) const;
    // Large results are not kept, nor those with a column that is computed: it may come out
    // otherwise next time.
    void Keep(const std::string& sSql, bool bWritable, std::shared_ptr<const ResultSet> result);
    void Clear() { m_results.clear(); }

  private:
    std::unordered_map<std::string, std::shared_ptr<const ResultSet>> m_results;
};

}  // namespace nomira::sqlite
