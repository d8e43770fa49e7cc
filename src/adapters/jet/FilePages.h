// The pages of a file on the disk, with the journal that makes its transactions whole.
//
// While a process writes, the file itself stays as it is and the journal beside it takes what the
// transactions change; others read the file with the journal up to its last whole transaction. Rest
// brings all of it into the file. From the first change on until Rest the process has the file to
// itself among those that keep to its locks; at rest nothing holds it.
#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>

#include "adapters/jet/CachedPages.h"
#include "adapters/jet/Header.h"
#include "adapters/jet/JournalFile.h"
#include "nativefiles/NativeFiles.h"

namespace nomira::jet {

// The generation that the first bytes of a file tell, nullopt if it is no Access file that this
// library knows. Raises InputOutput.
std::optional<Generation> SniffGeneration(const std::filesystem::path& path);

// Beside the file, which is no link: where the one is written that is to take its place. Whoever
// does so has locked the file; what nobody is at work on goes away when the file is opened to be
// written.
std::filesystem::path SuccessorPath(const std::filesystem::path& database);

enum class OpenMode {
    ReadOnly,
    // Reads and writes where that can be, else reads only (CanWrite tells; WhyNotWritable says).
    ReadWrite,
};

class FilePages : public CachedPages {
  public:
    // Opens the file, plays a journal back that a killed process has left beside it, and removes
    // what such a process has left of a successor; a file that is only read is read as if that had
    // been done. Raises Damaged for a file that is no Access database, and for a journal that isn't
    // this file's, Unsupported, Held, InputOutput.
    static std::unique_ptr<FilePages> Open(const std::filesystem::path& path, OpenMode mode);
    // A file that isn't there yet, without a page. Rest makes it, in one step; without Rest nothing
    // is left of it, whatever was committed. Raises InputOutput if something stands there.
    static std::unique_ptr<FilePages> Create(const std::filesystem::path& path,
                                             Generation generation);
    // Rests; where that fails the journal stays for the next one who opens the file.
    ~FilePages() override;

    bool CanWrite() const override { return m_bWriting || WhyNotWritable().empty(); }
    // A sentence about what keeps the file from being written; empty if nothing does.
    std::string WhyNotWritable() const;

    // Takes the file for this process, as the first change also does; waits up to a second for
    // somebody else, but not again after it waited in vain. False if others had changed the file:
    // then it has been read anew, and all that was made of its pages is stale. Not inside a
    // transaction. Raises Held, NotWritable, or as Open.
    bool StartWriting();
    bool IsWriting() const { return m_bWriting; }

    // Raises Held, too, if others have changed the file since it was read: then it must be opened
    // anew, or reloaded. Page 0 of a file that is there can't be changed: Unsupported.
    ByteSpan Change(std::uint32_t nPage) override;
    std::uint32_t Append() override;

    // Brings everything that was committed into the file itself and to the disk, no journal is
    // left, and lets go of the file. Rolls a transaction back. Raises InputOutput; it can then be
    // tried again.
    void Rest();

    // Whether the file is still what was read of it. Cheap; to be asked before a warm one is used
    // again. A file that was changed a moment before it was read counts as changed.
    bool IsAsRead() const;
    // Reads everything anew. Not while writing. Raises as Open, and Unsupported if the file is of
    // another generation now.
    void Reload();

    const std::filesystem::path& Path() const { return m_path; }
    // As it was when the file was opened; none in a file that isn't there yet.
    const std::optional<Header>& FileHeader() const { return m_header; }
    // Whether a program was interrupted while it wrote the file, and nothing finished its work: the
    // rows should be checked.
    bool WasInterrupted() const { return m_bWasInterrupted; }

  protected:
    void Load(std::uint32_t nFirst, std::span<Bytes> pages) override;
    void Keep(const Images& before) override;

  private:
    // What the system tells of a file; equal as long as nobody changes it.
    struct Stamp {
        dev_t nDevice;
        ino_t nInode;
        mode_t nMode;
        uid_t nOwner;
        off_t nSize;
        std::chrono::nanoseconds modified;
        std::chrono::nanoseconds changed;

        bool operator==(const Stamp&) const = default;
    };
    using PageImages = std::map<std::uint32_t, Bytes>;
    // What a journal makes of the file.
    struct Replay {
        PageImages pages;
        std::uint32_t nCount;
        bool bAllAsBefore = true;  // the pages in the file were as the journal found them
    };
    using PageGetter = std::function<ByteView(std::uint32_t)>;

    FilePages(std::filesystem::path path, OpenMode mode, const Layout& layout);

    static std::optional<Stamp> StampOf(const std::filesystem::path& path);
    static bool IsQuiet(const Stamp& stamp);

    // Reading
    void OpenFile();
    void Attach(bool bLocked);
    bool TryAttach();
    void ReplayInMemory();
    std::uint32_t PagesOf(std::uint64_t nFileBytes) const;
    void ReadBase();
    Bytes LoadRaw(std::uint32_t nPage) const;
    void LoadRaw(std::uint32_t nFirst, std::span<Bytes> pages) const;
    void Decrypt(std::uint32_t nPage, ByteSpan page) const;
    Bytes LoadPlain(std::uint32_t nPage) const;
    std::uint16_t CounterInFile() const;
    bool IsSameFile() const;
    bool IsInSameState() const;

    // Journals that are there
    bool Continues(const JournalBase& base, bool bSealed) const;
    Replay ReplayOf(JournalReader& journal) const;
    void ApplyChange(Replay& replay, const PageChange& change) const;
    bool HasLeftovers() const;
    void PlayBack();
    void RemoveSuccessor() const;

    // Writing
    bool TakeFile(bool bMayReload);
    void Lock();
    void RemoveStaleLockFile() const;
    void RequireWritable() const;
    JournalBase Base() const;
    void WriteBack();
    void WriteInto(const std::vector<std::uint32_t>& pages, std::uint32_t nCount,
                   const PageGetter& get);
    void WritePages(const std::vector<std::uint32_t>& pages, const PageGetter& get);
    void SetCounterInFile(std::uint16_t nCounter);
    void RemoveJournal() const;
    void LetGo();
    void Publish();

    std::filesystem::path m_path;
    OpenMode m_mode;
    nativefiles::Descriptor m_file;  // none as long as the file isn't there yet
    bool m_bNew = false;
    std::string m_sWhyNot;  // what keeps it from being written for as long as it is open

    std::optional<Header> m_header;
    bool m_bWasInterrupted = false;
    std::uint16_t m_nCounter = 0;
    std::uint64_t m_nFileBytes = 0;
    std::uint64_t m_nHeaderHash = 0;
    PageImages m_replayed;  // pages of a journal that isn't in the file
    std::optional<Stamp> m_stamp;
    std::optional<Stamp> m_journalStamp;
    bool m_bTrusted = false;  // later changes would give the file another stamp

    bool m_bWriting = false;
    bool m_bPatient = true;
    std::optional<JournalWriter> m_journal;
    std::set<std::uint32_t> m_journaled;  // pages that differ from the file
};

}  // namespace nomira::jet
