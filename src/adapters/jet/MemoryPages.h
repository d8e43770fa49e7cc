// A database file that lives in memory: for making one, for tests, and for looking at bytes that
// came from elsewhere.
#pragma once

#include "adapters/jet/CachedPages.h"

namespace nomira::jet {

class MemoryPages : public CachedPages {
  public:
    // Without a page yet.
    explicit MemoryPages(Generation generation) : CachedPages(LayoutOf(generation), 0) {}
    // With the pages of a whole file that isn't encrypted; bytes behind the last whole page are
    // left out.
    MemoryPages(Generation generation, Bytes file);

    bool CanWrite() const override { return true; }

    // The committed pages, one behind the other.
    Bytes File();

  protected:
    void Load(std::uint32_t nFirst, std::span<Bytes> pages) override;
    void Keep(const Images& before) override;

  private:
    Bytes m_file;
};

}  // namespace nomira::jet
