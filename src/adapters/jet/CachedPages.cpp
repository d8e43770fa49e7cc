#include "adapters/jet/CachedPages.h"

#include <algorithm>
#include <utility>

namespace nomira::jet {
namespace {

// Rows and maps name pages by 24 bits.
constexpr std::uint32_t kMostPages = 1U << 24;

}  // namespace

ByteView CachedPages::Read(std::uint32_t nPage) {
    if (nPage < m_pages.size() && nPage < m_nCount && !m_pages[nPage].empty())
        return m_pages[nPage];
    return ReadAnew(nPage);
}

ByteView CachedPages::ReadAnew(std::uint32_t nPage) {
    if (nPage >= m_nCount) Fail(FailureKind::Damaged, "a page behind the end of the file is named");
    Bytes page = Load(nPage);
    return Slot(nPage) = std::move(page);
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
    if (m_levels.empty()) m_pages.clear();
}

void CachedPages::SetCount(std::uint32_t nCount) {
    m_nCount = nCount;
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
