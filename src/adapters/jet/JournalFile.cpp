#include "adapters/jet/JournalFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <random>
#include <string_view>
#include <system_error>

#include "adapters/jet/SystemFailure.h"
#include "nativefiles/NativeFiles.h"

namespace nomira::jet {
namespace {

constexpr const char* kExtension = ".nomira-journal";

// The head.
constexpr std::string_view kSignature = "nomira journal 1";
constexpr std::size_t kPageSizePlace = 16;
constexpr std::size_t kFileBytesPlace = 24;
constexpr std::size_t kHeaderHashPlace = 32;
constexpr std::size_t kCounterPlace = 40;
constexpr std::size_t kSaltPlace = 48;  // random: old bytes never continue a new journal
constexpr std::size_t kHeadHashPlace = 56;
constexpr std::size_t kHeadBytes = 64;

// A record: its length behind the checksum, the checksum, the number of pages, and those.
constexpr std::size_t kChecksumPlace = 4;
constexpr std::size_t kRecordHead = 12;
constexpr std::size_t kPagesPlace = kRecordHead;
constexpr std::size_t kLongestRecord = std::size_t{1} << 30;

enum PageFlag : std::uint8_t { PageIsNew = 1, PageHasHash = 2 };

using Word = std::uint64_t;

std::string_view AsText(ByteView bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

Word WordAt(ByteView bytes, std::size_t nPlace) {
    Word nWord = 0;
    std::memcpy(&nWord, bytes.data() + nPlace, sizeof nWord);
    return nWord;
}

std::uint64_t Mixed(std::uint64_t nHash, std::uint64_t nWord) {
    constexpr std::uint64_t kFactor = 0x9E3779B97F4A7C15;
    nHash = (nHash ^ nWord) * kFactor;
    return nHash ^ nHash >> 29;
}

// Appends the ranges that differ, and gives their number. Pages are a multiple of words long, and
// a page without `before` was zeros.
std::uint16_t AppendRanges(Bytes& out, ByteView before, ByteView now) {
    const auto differs = [&](std::size_t nPlace) {
        return WordAt(now, nPlace) != (before.empty() ? 0 : WordAt(before, nPlace));
    };
    std::uint16_t nRanges = 0;
    for (std::size_t nFrom = 0; nFrom < now.size(); nFrom += sizeof(Word)) {
        if (!differs(nFrom)) continue;
        std::size_t nEnd = nFrom + sizeof(Word);
        while (nEnd < now.size() && differs(nEnd))
            nEnd += sizeof(Word);
        AppendLittle<2>(out, nFrom);
        AppendLittle<2>(out, nEnd - nFrom);
        Append(out, now.subspan(nFrom, nEnd - nFrom));
        ++nRanges;
        nFrom = nEnd;
    }
    return nRanges;
}

[[noreturn]] void FailAsNoJournal() {
    Fail(FailureKind::Damaged, "the journal beside the file is damaged or none at all");
}

// Walks over a record's bytes.
class Walker {
  public:
    Walker(ByteView bytes, std::size_t nPlace) : m_bytes(bytes), m_nPlace(nPlace) {}

    template <std::size_t kBytes>
    std::uint64_t Number() {
        const std::uint64_t nValue = LoadLittle<kBytes>(m_bytes, m_nPlace);
        m_nPlace += kBytes;
        return nValue;
    }
    ByteView Take(std::size_t nBytes) {
        const ByteView part = Part(m_bytes, m_nPlace, nBytes);
        m_nPlace += nBytes;
        return part;
    }
    bool AtEnd() const { return m_nPlace == m_bytes.size(); }

  private:
    ByteView m_bytes;
    std::size_t m_nPlace;
};

PageChange ReadPageChange(Walker& walker, std::size_t nPageSize) {
    PageChange change;
    change.nPage = static_cast<std::uint32_t>(walker.Number<4>());
    const std::uint64_t nFlags = walker.Number<1>();
    change.bNew = (nFlags & PageIsNew) != 0;
    if ((nFlags & PageHasHash) != 0) change.hashBefore = walker.Number<8>();
    const std::uint64_t nRanges = walker.Number<2>();
    for (std::uint64_t n = 0; n < nRanges; ++n) {
        const std::size_t nPlace = walker.Number<2>();
        const std::size_t nBytes = walker.Number<2>();
        if (nPlace + nBytes > nPageSize) FailAsNoJournal();
        change.ranges.push_back({nPlace, walker.Take(nBytes)});
    }
    return change;
}

}  // namespace

std::filesystem::path JournalPath(const std::filesystem::path& database) {
    std::filesystem::path path = database;
    path += kExtension;
    return path;
}

std::uint64_t HashOf(ByteView bytes, std::uint64_t nSeed) {
    std::uint64_t nHash = Mixed(nSeed, bytes.size());
    std::size_t nPlace = 0;
    for (; nPlace + sizeof(Word) <= bytes.size(); nPlace += sizeof(Word))
        nHash = Mixed(nHash, WordAt(bytes, nPlace));
    for (; nPlace < bytes.size(); ++nPlace)
        nHash = Mixed(nHash, bytes[nPlace]);
    return Mixed(nHash, 0);
}

void ReadChanges(ByteView record, std::size_t nPageSize, std::vector<PageChange>& changes) {
    changes.clear();
    Walker walker(record, 0);
    const std::uint64_t nPages = walker.Number<4>();
    for (std::uint64_t n = 0; n < nPages; ++n)
        changes.push_back(ReadPageChange(walker, nPageSize));
    if (!walker.AtEnd()) FailAsNoJournal();
}

JournalRecord::JournalRecord() : m_bytes(kPagesPlace + 4) {}

void JournalRecord::AddPage(std::uint32_t nPage, ByteView before, ByteView now, bool bFirst) {
    const std::size_t nStart = m_bytes.size();
    const bool bNew = before.empty();
    const bool bHash = bFirst && !bNew;
    AppendLittle<4>(m_bytes, nPage);
    AppendLittle<1>(m_bytes, static_cast<unsigned>(bNew) * PageIsNew |
                                 static_cast<unsigned>(bHash) * PageHasHash);
    if (bHash) AppendLittle<8>(m_bytes, HashOf(before));
    const std::size_t nRangesPlace = m_bytes.size();
    AppendLittle<2>(m_bytes, 0);
    const std::uint16_t nRanges = AppendRanges(m_bytes, before, now);
    if (nRanges == 0 && !bNew) {
        m_bytes.resize(nStart);
        return;
    }
    StoreU16(m_bytes, nRangesPlace, nRanges);
    ++m_nPages;
}

ByteView JournalRecord::Changes() {
    StoreU32(m_bytes, kPagesPlace, m_nPages);
    return ByteView(m_bytes).subspan(kRecordHead);
}

JournalWriter::JournalWriter(const std::filesystem::path& path, const JournalBase& base,
                             unsigned nMode) {
    std::random_device random;
    Bytes head(kHeadBytes);
    std::copy(kSignature.begin(), kSignature.end(), head.begin());
    StoreU32(head, kPageSizePlace, base.nPageSize);
    StoreLittle<8>(head, kFileBytesPlace, base.nFileBytes);
    StoreLittle<8>(head, kHeaderHashPlace, base.nHeaderHash);
    StoreU16(head, kCounterPlace, base.nCommitCounter);
    StoreLittle<8>(head, kSaltPlace, std::uint64_t{random()} << 32 | random());
    m_nChain = HashOf(ByteView(head).first(kHeadHashPlace));
    StoreLittle<8>(head, kHeadHashPlace, m_nChain);
    Translated([&] {
        m_file = nativefiles::Open(path, O_WRONLY | O_CREAT | O_EXCL, S_IRUSR | S_IWUSR);
        try {
            if (::fchmod(m_file.Get(), nMode | S_IRUSR | S_IWUSR) != 0) nativefiles::RaiseErrno();
            nativefiles::WriteAt(m_file, AsText(head), 0);
        } catch (const std::system_error&) {
            ::unlink(path.c_str());
            throw;
        }
    });
    m_nEnd = head.size();
}

void JournalWriter::Append(JournalRecord& record) {
    Bytes& bytes = record.m_bytes;
    if (bytes.size() > kLongestRecord)
        Fail(FailureKind::Constraint, "a transaction has changed too much");
    const ByteView changes = record.Changes();
    StoreU32(bytes, 0, static_cast<std::uint32_t>(changes.size()));
    const std::uint64_t nChain = HashOf(changes, m_nChain);
    StoreLittle<8>(bytes, kChecksumPlace, nChain);
    Translated([&] { nativefiles::WriteAt(m_file, AsText(bytes), m_nEnd); });
    m_nEnd += bytes.size();
    m_nChain = nChain;
}

JournalWriter::JournalWriter(const std::filesystem::path& path, const JournalReader& journal)
    : m_file(Translated([&] { return nativefiles::Open(path, O_WRONLY | O_NOFOLLOW); })),
      m_nEnd(journal.m_nPlace),
      m_nChain(journal.m_nChain) {}

void JournalWriter::Seal() {
    JournalRecord mark;
    Append(mark);
    Translated([&] { nativefiles::Sync(m_file); });
}

std::optional<JournalReader> JournalReader::Open(const std::filesystem::path& path) {
    return Translated([&]() -> std::optional<JournalReader> {
        JournalReader reader;
        reader.m_file = nativefiles::Descriptor(
            ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY));
        if (!reader.m_file.IsOpen()) {
            if (errno == ENOENT) return std::nullopt;
            nativefiles::RaiseErrno();
        }
        const struct stat status = nativefiles::StatusOf(reader.m_file);
        if (!S_ISREG(status.st_mode)) FailAsNoJournal();
        reader.m_nSize = static_cast<std::uint64_t>(status.st_size);
        reader.m_bStillborn = !reader.ReadHead();
        return reader;
    });
}

// False for a head that was never wholly written: a prefix of one, or the zeros that a file system
// may show after a power failure.
bool JournalReader::ReadHead() {
    const std::string sHead = nativefiles::ReadAt(m_file, kHeadBytes, 0);
    const std::string_view sSignature = std::string_view(sHead).substr(0, kSignature.size());
    if (sHead.find_first_not_of('\0') == std::string::npos) return false;
    if (sSignature != kSignature.substr(0, sSignature.size())) FailAsNoJournal();
    if (sHead.size() < kHeadBytes) return false;
    const Bytes head(sHead.begin(), sHead.end());
    m_nChain = HashOf(ByteView(head).first(kHeadHashPlace));
    if (LoadLittle<8>(head, kHeadHashPlace) != m_nChain) FailAsNoJournal();
    m_base = {LoadU32(head, kPageSizePlace), LoadLittle<8>(head, kFileBytesPlace),
              LoadLittle<8>(head, kHeaderHashPlace), LoadU16(head, kCounterPlace)};
    m_nPlace = kHeadBytes;
    return true;
}

// False where no whole record follows.
bool JournalReader::ReadRecord() {
    if (m_bStillborn || m_nSize - m_nPlace < kRecordHead) return false;
    const std::string sHead = nativefiles::ReadAt(m_file, kRecordHead, m_nPlace);
    const Bytes head(sHead.begin(), sHead.end());
    if (head.size() < kRecordHead) return false;
    const std::size_t nBytes = LoadU32(head, 0);
    if (nBytes > kLongestRecord || nBytes > m_nSize - m_nPlace - kRecordHead) return false;
    const std::string sRecord = nativefiles::ReadAt(m_file, nBytes, m_nPlace + kRecordHead);
    m_record.assign(sRecord.begin(), sRecord.end());
    const std::uint64_t nChain = HashOf(m_record, m_nChain);
    if (m_record.size() < nBytes || nChain != LoadLittle<8>(head, kChecksumPlace)) return false;
    m_nChain = nChain;
    m_nPlace += kRecordHead + nBytes;
    return true;
}

bool JournalReader::Next(std::vector<PageChange>& changes) {
    changes.clear();
    if (!Translated([&] { return ReadRecord(); })) return false;
    ReadChanges(m_record, m_base.nPageSize, changes);
    return true;
}

}  // namespace nomira::jet
