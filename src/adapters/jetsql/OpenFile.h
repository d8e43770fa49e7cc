// An open Access file, as all connections of this process to it share it: between two writes nobody
// holds it, and one of them at a time writes.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

#include "adapters/jet/AccessFile.h"
#include "adapters/jet/FilePages.h"

namespace nomira::jetsql {

class OpenFile {
  public:
    // The file at the path, opened if nobody in this process has it open. Raises jet::Failure.
    static std::shared_ptr<OpenFile> At(const std::filesystem::path& path);
    // Brings what was committed into the file itself.
    ~OpenFile();
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;

    jet::AccessFile& File() { return *m_file; }
    // A number that is another one once the file had to be read anew, because others had changed
    // it: tables that were found before are gone.
    std::uint64_t Reading() const { return m_nReading; }

    // Reads the file anew if others have changed it, unless somebody walks over it or writes it.
    // Raises jet::Failure.
    void Look();
    // For whoever walks over the file.
    void AddWalk() { ++m_nWalks; }
    void EndWalk() { --m_nWalks; }

    // A sentence about what keeps the file from being written; empty if nothing does.
    std::string WhyNotWritable() const { return m_pages->WhyNotWritable(); }
    bool CanWrite() const { return m_pages->CanWrite(); }

    // Keeps the file to this process until Rest, as it stands now: who reads it from here on can
    // rely on what he reads when he writes. Raises Held, NotWritable.
    void Take();
    // A writer's transaction, known by any address of his. Begin raises Held while another one has
    // one, and NotWritable. Commit makes its changes the file's, End ends it, and takes back what
    // wasn't committed. Both do nothing for whoever has none.
    void Begin(const void* writer);
    void Commit(const void* writer);
    void End(const void* writer);

    // Brings everything committed to the disk and lets go of the file, unless somebody's
    // transaction is open. Raises InputOutput.
    void Rest();

  private:
    explicit OpenFile(std::filesystem::path path);

    void Read();
    bool IsWriting(const void* writer) const { return writer != nullptr && m_writer == writer; }

    std::filesystem::path m_path;
    std::unique_ptr<jet::AccessFile> m_file;
    jet::FilePages* m_pages = nullptr;  // the file's own
    std::uint64_t m_nReading = 0;
    int m_nWalks = 0;
    const void* m_writer = nullptr;
    std::chrono::steady_clock::time_point m_looked{};
};

}  // namespace nomira::jetsql
