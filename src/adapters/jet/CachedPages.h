// Transactions over pages that are kept in memory once they have been read. Where pages come from,
// and where committed ones go, is the derived class's matter.
#pragma once

#include <map>
#include <span>
#include <vector>

#include "adapters/jet/PageStore.h"

namespace nomira::jet {

class CachedPages : public PageStore {
  public:
    const Layout& Format() const override { return m_layout; }
    std::uint32_t Count() const override { return m_nCount; }

    ByteView Read(std::uint32_t nPage) override;
    ByteSpan Change(std::uint32_t nPage) override;
    std::uint32_t Append() override;

    void Commit() override;
    void Rollback() override;
    void Mark(int nMark) override;
    void RollbackTo(int nMark) override;
    void Release(int nMark) override;

    std::uint64_t Changes() const override { return m_nChanges; }

  protected:
    CachedPages(const Layout& layout, std::uint32_t nCount) : m_layout(layout), m_nCount(nCount) {}

    // A page as it was before the transaction, or before a mark; no bytes for one that wasn't
    // there.
    using Images = std::map<std::uint32_t, Bytes>;

    // Reads pages that are not in memory, from nFirst on: each has a page's size of zeros, and
    // takes the bytes of one. Raises InputOutput.
    virtual void Load(std::uint32_t nFirst, std::span<Bytes> pages) = 0;
    // Makes the changes of a transaction the file's: `before` holds what the changed pages were,
    // Read gives what they are, Count() how many there are now. Raises InputOutput.
    virtual void Keep(const Images& before) = 0;

    bool InTransaction() const { return !m_levels.empty(); }
    // Drops pages from memory. Not inside a transaction.
    void Forget();
    // The pages are that many now; for the derived class, outside of transactions.
    void SetCount(std::uint32_t nCount);

  private:
    // What a roll-back to the start of the level restores.
    struct Level {
        std::uint32_t nCount;
        Images before;
    };

    void RequireWritable() const;
    ByteView ReadAnew(std::uint32_t nPage);
    bool IsInMemory(std::uint32_t nPage) const {
        return nPage < m_pages.size() && !m_pages[nPage].empty();
    }
    std::uint32_t PagesAhead(std::uint32_t nPage);
    bool IsNearOthers(std::uint32_t nPage) const;
    Bytes& Slot(std::uint32_t nPage);
    void Remember(std::uint32_t nPage);
    void UndoTopLevel();

    const Layout& m_layout;
    std::uint32_t m_nCount;
    // By number, no bytes for a page that isn't in memory. The bytes of a page are never moved
    // about, so that what Read gave stays good.
    std::vector<Bytes> m_pages;
    std::vector<Level> m_levels;  // the transaction, then the marks
    std::uint64_t m_nChanges = 0;
    std::uint32_t m_nAhead = 1;  // pages that were read at a time
};

}  // namespace nomira::jet
