// Small database files without a table, and what stands on their pages, for tests of how pages come
// to the disk.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <vector>

#include "adapters/jet/FilePages.h"
#include "adapters/jet/PageAllocator.h"

namespace nomira::jet::testing {

inline Bytes ReadFile(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(in), {});
}

inline void WriteFile(const std::filesystem::path& path, ByteView bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(bytes.data()),
              static_cast<std::streamsize>(bytes.size()));
}

// The header, the global map, and pages up to `nPages` that are full of their numbers.
inline void MakeFile(const std::filesystem::path& path, Generation generation,
                     std::uint32_t nPages = 12) {
    const auto pages = FilePages::Create(path, generation);
    const Bytes header = NewHeader(generation);
    pages->Append();
    std::copy(header.begin(), header.end(), pages->Change(0).begin());
    pages->Append();
    WriteGlobalMap(*pages, nPages);
    for (std::uint32_t n = 2; n < nPages; ++n) {
        pages->Append();
        const ByteSpan page = pages->Change(n);
        std::fill(page.begin(), page.end(), static_cast<std::uint8_t>(n));
    }
    pages->Commit();
    pages->Rest();
}

// All pages but the header, whose counter changes.
inline std::vector<Bytes> PagesOf(PageStore& store) {
    std::vector<Bytes> pages;
    for (std::uint32_t n = 1; n < store.Count(); ++n) {
        const ByteView page = store.Read(n);
        pages.emplace_back(page.begin(), page.end());
    }
    return pages;
}

inline std::vector<Bytes> PagesOf(const std::filesystem::path& path,
                                  OpenMode mode = OpenMode::ReadOnly) {
    return PagesOf(*FilePages::Open(path, mode));
}

inline std::unique_ptr<FilePages> OpenToWrite(const std::filesystem::path& path) {
    return FilePages::Open(path, OpenMode::ReadWrite);
}

}  // namespace nomira::jet::testing
