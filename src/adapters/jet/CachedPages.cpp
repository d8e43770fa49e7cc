#include "adapters/jet/CachedPages.h"

#include <algorithm>
#include <utility>

namespace nomira::jet {
namespace {

// Rows and maps name pages by 24 bits.
constexpr std::uint32_t kMostPages = 1U << 24;

// Pages that are read at a time by whoever goes through the file.
constexpr std::uint32_t kMostAhead = 32;
constexpr std::uint32_t kNear = 8;

}  // namespace

ByteView CachedPages::Read(std::uint32_t nPage) {
    if (nPage < m_nCount && IsInMemory(nPage)) return m_pages[nPage];
    return ReadAnew(nPage);
}

ByteView CachedPages::ReadAnew(std::uint32_t nPage) {
    if (nPage >= m_nCount) Fail(FailureKind::Damaged, "a page behind the end of the file is named");
    const std::uint32_t nPages = PagesAhead(nPage);
    Slot(nPage + nPages - 1);
    const std::span<Bytes> pages = std::span(m_pages).subspan(nPage, nPages);
    try {
        for (Bytes& page : pages)
            page.resize(m_layout.nPageSize);
        Load(nPage, pages);
    } catch (...) {
        for (Bytes& page : pages)
            page.clear();
        throw;
    }
    return m_pages[nPage];
}

// How many pages to read from this one on, none of them in memory: the more, the longer somebody
// has been going through the file. A page that stands alone is read alone.
std::uint32_t CachedPages::PagesAhead(std::uint32_t nPage) {
    m_nAhead = IsNearOthers(nPage) ? std::min(2 * m_nAhead, kMostAhead)
                                   : std::max<std::uint32_t>(1, m_nAhead / 4);
    std::uint32_t nPages = 1;
    while (nPages < m_nAhead && nPage + nPages < m_nCount && !IsInMemory(nPage + nPages))
        ++nPages;
    return nPages;
}

// The pages of a table have those of its indexes between them.
bool CachedPages::IsNearOthers(std::uint32_t nPage) const {
    for (std::uint32_t n = 1; n <= std::min(nPage, kNear); ++n)
        if (IsInMemory(nPage - n)) return true;
    return false;
}

ByteSpan CachedPages::Change(std::uint32_t nPage) {
    RequireWritable();
    Read(nPage);
    if (m_levels.empty()) m_levels.push_back({m_nCount, {}});
    Remember(nPage);
    ++m_nChanges;
    return m_pages[nPage];
}

std::uint32_t CachedPages::Append() {
    RequireWritable();
    if (m_nCount >= kMostPages) Fail(FailureKind::Constraint, "the file can't grow any further");
    if (m_levels.empty()) m_levels.push_back({m_nCount, {}});
    const std::uint32_t nPage = m_nCount++;
    Slot(nPage) = Bytes(m_layout.nPageSize);
    m_levels.back().before.emplace(nPage, Bytes());
    ++m_nChanges;
    return nPage;
}

void CachedPages::Commit() {
    if (m_levels.empty()) return;
    while (m_levels.size() > 1)
        Release(static_cast<int>(m_levels.size()) - 2);
    try {
        Keep(m_levels.front().before);
    } catch (const Failure&) {
        Rollback();
        throw;
    }
    m_levels.clear();
}

void CachedPages::Rollback() {
    while (!m_levels.empty())
        UndoTopLevel();
}

void CachedPages::Mark(int nMark) {
    if (m_levels.empty()) m_levels.push_back({m_nCount, {}});
    while (static_cast<int>(m_levels.size()) <= nMark + 1)
        m_levels.push_back({m_nCount, {}});
}

void CachedPages::RollbackTo(int nMark) {
    while (static_cast<int>(m_levels.size()) > nMark + 1)
        UndoTopLevel();
    Mark(nMark);
}

void CachedPages::Release(int nMark) {
    while (static_cast<int>(m_levels.size()) > nMark + 1 && m_levels.size() > 1) {
        Images above = std::move(m_levels.back().before);
        m_levels.pop_back();
        m_levels.back().before.merge(above);  // what is there already is older
    }
}

void CachedPages::Forget() {
    if (!m_levels.empty()) return;
    m_pages.clear();
    ++m_nChanges;
}

void CachedPages::SetCount(std::uint32_t nCount) {
    m_nCount = nCount;
    ++m_nChanges;
}

void CachedPages::RequireWritable() const {
    if (!CanWrite()) Fail(FailureKind::NotWritable, "the file is open for reading only");
}

Bytes& CachedPages::Slot(std::uint32_t nPage) {
    if (nPage >= m_pages.size()) m_pages.resize(nPage + std::size_t{1});
    return m_pages[nPage];
}

void CachedPages::Remember(std::uint32_t nPage) {
    Images& before = m_levels.back().before;
    if (!before.contains(nPage)) before.emplace(nPage, m_pages[nPage]);
}

void CachedPages::UndoTopLevel() {
    Level level = std::move(m_levels.back());
    m_levels.pop_back();
    for (auto& [nPage, image] : level.before) {
        Slot(nPage) = std::move(image);
    }
    m_nCount = level.nCount;
    ++m_nChanges;
}

}  // namespace nomira::jet
