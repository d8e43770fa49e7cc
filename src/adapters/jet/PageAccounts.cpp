#include "adapters/jet/PageAccounts.h"

#include "adapters/jet/DataPage.h"
#include "adapters/jet/PageAllocator.h"
#include "adapters/jet/UsageMap.h"

namespace nomira::jet {

std::string Printable(std::u16string_view sName) {
    std::string sPrintable;
    for (const char16_t c : sName)
        sPrintable += c >= u' ' && c < 0x7F ? static_cast<char>(c) : '?';
    return sPrintable;
}

void PageAccounts::Report(const std::string& sText, std::uint32_t nPage) {
    m_findings.push_back({false, sText, nPage});
}

void PageAccounts::Warn(const std::string& sText, std::uint32_t nPage) {
    m_findings.push_back({true, sText, nPage});
}

bool PageAccounts::Claim(std::uint32_t nPage, const std::string& sUser) {
    if (nPage >= m_store.Count()) {
        Report(sUser + " has a page behind the end of the file", nPage);
        return false;
    }
    const auto [entry, bNew] = m_users.emplace(nPage, sUser);
    if (!bNew) Report("one page is used by " + entry->second + " and by " + sUser, nPage);
    return bNew;
}

void PageAccounts::ClaimMap(RowPlace map, const std::string& sUser) {
    if (!m_maps.insert(map).second) Report(sUser + " shares its map of pages", map.nPage);
    if (m_mapPages.insert(map.nPage).second) {
        if (!Claim(map.nPage, "maps of pages")) return;
        const DataPage page(m_store, map.nPage);
        if (!page.IsOne() || page.Owner() != kOwnerOfMaps)
            Report("a page of maps doesn't say that it is one", map.nPage);
    }
    for (const std::uint32_t nPage : UsageMap(m_store, map).BitmapPages())
        Claim(nPage, "the map of " + sUser);
}

void PageAccounts::CompareWithFreePages() {
    for (std::uint32_t nPage = 0; nPage < m_store.Count(); ++nPage) {
        const auto user = m_users.find(nPage);
        const bool bFree = IsFree(m_store, nPage);
        if (user != m_users.end() && bFree)
            Report("a page of " + user->second + " counts as free", nPage);
        if (user == m_users.end() && !bFree) Warn("a page is neither used nor free", nPage);
    }
}

}  // namespace nomira::jet
