#include "adapters/jet/MemoryPages.h"

#include <algorithm>

namespace nomira::jet {

MemoryPages::MemoryPages(Generation generation, ByteView file)
    : CachedPages(LayoutOf(generation),
                  static_cast<std::uint32_t>(file.size() / LayoutOf(generation).nPageSize)),
      m_file(file.begin(), file.end()) {
    m_file.resize(Count() * Format().nPageSize);
}

Bytes MemoryPages::File() {
    return m_file;
}

Bytes MemoryPages::Load(std::uint32_t nPage) {
    const ByteView page = Part(ByteView(m_file), nPage * Format().nPageSize, Format().nPageSize);
    return {page.begin(), page.end()};
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
