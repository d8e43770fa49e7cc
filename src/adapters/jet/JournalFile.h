// The journal beside a database file: what transactions changed in the pages, until it is brought
// into the file itself. Numbers are little-endian.
//
// A head tells which state of which file it continues. Then follow records, one for each
// transaction, each with a checksum that builds on the one before: a record that a killed process
// has left half written ends the journal, and so do old bytes behind it. A record without changes
// is put ahead of the first byte that is written into the file itself: with it the file may be in
// any state between the one before the journal and the one behind it, without it only in the
// former.
#pragma once

#include <filesystem>
#include <optional>
#include <vector>

#include "adapters/jet/Bytes.h"
#include "nativefiles/Descriptor.h"

namespace nomira::jet {

// Of the database file.
std::filesystem::path JournalPath(const std::filesystem::path& database);

// A checksum of bytes; not made to withstand anyone who wants to forge it.
std::uint64_t HashOf(ByteView bytes, std::uint64_t nSeed = 0);

// The state of the file that the journal continues.
struct JournalBase {
    std::uint32_t nPageSize = 0;
    std::uint64_t nFileBytes = 0;
    std::uint64_t nHeaderHash = 0;  // of page 0 with a commit counter of 0
    std::uint16_t nCommitCounter = 0;

    bool operator==(const JournalBase&) const = default;
};

struct PageChange {
    struct Range {
        std::size_t nPlace;
        ByteView bytes;
    };
    std::uint32_t nPage = 0;
    bool bNew = false;  // appended; it was zeros
    // Of the page's bytes before, where the journal changes it for the first time.
    std::optional<std::uint64_t> hashBefore;
    std::vector<Range> ranges;
};

// The changes that a record's bytes behind its checksum tell. They point into the bytes and lie in
// pages of that size. Raises Damaged for bytes that make no sense.
void ReadChanges(ByteView record, std::size_t nPageSize, std::vector<PageChange>& changes);

// One transaction's changes as bytes.
class JournalRecord {
  public:
    JournalRecord();

    // What changed on a page; nothing is recorded if nothing did and it isn't a new one. `before`
    // is empty for a new one. bFirst: the journal has no change of the page yet.
    void AddPage(std::uint32_t nPage, ByteView before, ByteView now, bool bFirst);
    bool IsEmpty() const { return m_nPages == 0; }
    // What ReadChanges reads.
    ByteView Changes();

  private:
    friend class JournalWriter;

    Bytes m_bytes;
    std::uint32_t m_nPages = 0;
};

class JournalReader {
  public:
    // nullopt if there is none. Raises Damaged for a file that is no journal, InputOutput.
    static std::optional<JournalReader> Open(const std::filesystem::path& path);

    // The process died before the first record: there is no base.
    bool IsStillborn() const { return m_bStillborn; }
    const JournalBase& Base() const { return m_base; }
    // The changes of the next transaction, good until the next call, none for the mark that Seal
    // leaves; false behind the last whole one. Raises Damaged for a record that is whole and makes
    // no sense.
    bool Next(std::vector<PageChange>& changes);

  private:
    friend class JournalWriter;

    bool ReadHead();
    bool ReadRecord();

    nativefiles::Descriptor m_file;
    std::uint64_t m_nSize = 0;
    JournalBase m_base;
    bool m_bStillborn = false;
    std::uint64_t m_nPlace = 0;
    std::uint64_t m_nChain = 0;
    Bytes m_record;
};

class JournalWriter {
  public:
    // Makes the file, which must not be there, with these rights. All raise InputOutput.
    JournalWriter(const std::filesystem::path& path, const JournalBase& base, unsigned nMode);
    // Goes on with a journal behind its last whole record, which `journal` has come to.
    JournalWriter(const std::filesystem::path& path, const JournalReader& journal);

    // With a single write. What a failure leaves behind is no record.
    void Append(JournalRecord& record);
    // Tells that the file itself is written from now on, and brings the journal to the disk.
    void Seal();
    std::uint64_t Size() const { return m_nEnd; }

  private:
    nativefiles::Descriptor m_file;
    std::uint64_t m_nEnd = 0;
    std::uint64_t m_nChain = 0;
};

}  // namespace nomira::jet
