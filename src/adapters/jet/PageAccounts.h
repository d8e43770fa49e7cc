// Who uses each page of a file, as the file's own records tell; and what doesn't add up.
#pragma once

#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "adapters/jet/Checker.h"
#include "adapters/jet/PageStore.h"

namespace nomira::jet {

// A name for people to read; what isn't ASCII becomes a question mark.
std::string Printable(std::u16string_view sName);

class PageAccounts {
  public:
    explicit PageAccounts(PageStore& store) : m_store(store) {}

    void Report(const std::string& sText, std::uint32_t nPage);
    void Warn(const std::string& sText, std::uint32_t nPage);
    // Runs a part of the checks; damage ends the part and becomes a finding.
    template <typename Part>
    void Guard(const std::string& sWhat, std::uint32_t nPage, Part part) {
        try {
            part();
        } catch (const Failure& failure) {
            if (failure.Kind() == FailureKind::InputOutput) throw;
            Report(sWhat + ": " + failure.what(), nPage);
        }
    }

    // The page is used by whom the words name. False if it is another one's already, or not there.
    bool Claim(std::uint32_t nPage, const std::string& sUser);
    // The map is used by one alone; the page that it stands on is shared with other maps.
    void ClaimMap(RowPlace map, const std::string& sUser);

    // Pages that are used and free, or neither.
    void CompareWithFreePages();

    std::vector<Finding> TakeFindings() { return std::move(m_findings); }

  private:
    PageStore& m_store;
    std::vector<Finding> m_findings;
    std::unordered_map<std::uint32_t, std::string> m_users;  // by page
    std::set<RowPlace> m_maps;
    std::set<std::uint32_t> m_mapPages;
};

}  // namespace nomira::jet
