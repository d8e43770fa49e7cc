// The pages of a file on the disk, with the journal that makes its transactions whole.
#pragma once

#include <filesystem>
#include <memory>

#include "adapters/jet/PageStore.h"

namespace nomira::jet {

// The generation that the first bytes of a file tell, nullopt if it is no Access file that this
// library knows. Raises InputOutput.
std::optional<Generation> SniffGeneration(const std::filesystem::path& path);

enum class OpenMode {
    ReadOnly,
    // Reads and writes where that can be, else reads only (PageStore::CanWrite tells; WhyNot says).
    ReadWrite,
};

class FilePages : public PageStore {
  public:
    // Opens the file and plays a journal back that a killed process has left beside it.
    static std::unique_ptr<FilePages> Open(const std::filesystem::path& path, OpenMode mode);
    // Makes a file that wasn't there, without a page yet.
    static std::unique_ptr<FilePages> Create(const std::filesystem::path& path,
                                             Generation generation);

    // Brings everything that was committed into the file itself and to the disk; no journal is
    // left.
    virtual void Rest() = 0;
    // A sentence about what keeps the file from being written; empty if nothing does.
    virtual std::string WhyNotWritable() const = 0;
};

}  // namespace nomira::jet
