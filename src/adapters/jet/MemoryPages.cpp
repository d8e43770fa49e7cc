#include "adapters/jet/MemoryPages.h"

#include <algorithm>
#include <utility>

namespace nomira::jet {

MemoryPages::MemoryPages(Generation generation, Bytes file)
    : CachedPages(LayoutOf(generation),
                  static_cast<std::uint32_t>(file.size() / LayoutOf(generation).nPageSize)),
      m_file(std::move(file)) {
    m_file.resize(Count() * Format().nPageSize);
}

Bytes MemoryPages::File() {
    return m_file;
}

void MemoryPages::Load(std::uint32_t nFirst, std::span<Bytes> pages) {
    std::size_t nPlace = nFirst * Format().nPageSize;
    for (Bytes& page : pages) {
        std::ranges::copy(Part(ByteView(m_file), nPlace, page.size()), page.begin());
        nPlace += page.size();
    }
}

void MemoryPages::Keep(const Images& before) {
    m_file.resize(Count() * Format().nPageSize);
    for (const auto& [nPage, image] : before) {
        const ByteView page = Read(nPage);
        std::copy(page.begin(), page.end(),
                  m_file.begin() + static_cast<std::ptrdiff_t>(nPage * Format().nPageSize));
    }
}

}  // namespace nomira::jet
