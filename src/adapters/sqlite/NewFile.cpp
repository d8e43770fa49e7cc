#include "adapters/sqlite/NewFile.h"

#include <fcntl.h>

#include <system_error>
#include <utility>

#include "adapters/sqlite/Failure.h"
#include "nativefiles/NativeFiles.h"

namespace nomira::sqlite {

NewFile::NewFile(std::filesystem::path path, mode_t nPermissions) : m_path(std::move(path)) {
    OnDisk([&] { nativefiles::Open(m_path, O_CREAT | O_EXCL | O_WRONLY, nPermissions); });
}

NewFile::~NewFile() {
    std::error_code ignored;
    if (!m_bKept) std::filesystem::remove(m_path, ignored);
}

void NewFile::Keep() {
    OnDisk([&] {
        nativefiles::Sync(nativefiles::Open(m_path, O_RDONLY));
        nativefiles::SyncFolder(m_path.parent_path());
    });
    m_bKept = true;
}

void WriteFile(const std::filesystem::path& path, std::span<const std::uint8_t> bytes) {
    OnDisk([&] {
        nativefiles::WriteAll(nativefiles::Open(path, O_WRONLY | O_TRUNC),
                              {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
    });
}

}  // namespace nomira::sqlite
