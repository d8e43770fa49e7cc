#include "adapters/jet/FilePages.h"

#include <fcntl.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <system_error>
#include <thread>
#include <utility>

#include "adapters/jet/FileLock.h"
#include "adapters/jet/LockFile.h"
#include "adapters/jet/PageAllocator.h"
#include "adapters/jet/Rc4.h"
#include "adapters/jet/SystemFailure.h"
#include "nativefiles/FileBeside.h"

namespace nomira::jet {
namespace {

using namespace std::chrono_literals;

constexpr auto kPatience = 1s;
constexpr auto kPause = 5ms;

// Times of files come in steps: of up to two seconds on file systems that keep whole seconds, of a
// tick of the system's clock on others.
constexpr std::chrono::nanoseconds kCoarseStep = 3s;
constexpr std::chrono::nanoseconds kFineStep = 20ms;

constexpr std::uint64_t kLongJournal = std::uint64_t{64} << 20;
constexpr std::size_t kWriteBytes = std::size_t{1} << 20;
constexpr std::uint16_t kBeingWritten = 0;  // what the commit counter says meanwhile
constexpr std::uint64_t kFewestPages = 3;

constexpr const char* kSuccessorExtension = ".nomira-new";

constexpr const char* kChanged = "another program has changed the file meanwhile";
constexpr const char* kHeld = "another program keeps the file to itself";
constexpr const char* kForeignJournal =
    "the journal beside the file doesn't continue it; move it elsewhere to use the file as it is";

std::string_view AsText(ByteView bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

Bytes AsBytes(const std::string& sBytes) {
    return {sBytes.begin(), sBytes.end()};
}

// Where a link leads: the journal has to be beside the file itself.
std::filesystem::path RealPath(const std::filesystem::path& path) {
    return Translated([&] { return std::filesystem::weakly_canonical(path); });
}

nativefiles::Descriptor OpenForReading(const std::filesystem::path& path) {
    return nativefiles::Open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY);
}

std::chrono::nanoseconds TimeOf(const timespec& time) {
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

// The system lets a superuser write what nobody may.
bool MayWriteIn(const std::filesystem::path& folder) {
    return ::access(folder.empty() ? "." : folder.c_str(), W_OK) == 0;
}

}  // namespace

std::optional<Generation> SniffGeneration(const std::filesystem::path& path) {
    return Translated([&] {
        return GenerationOf(AsBytes(nativefiles::ReadAt(OpenForReading(path), kSignatureBytes, 0)));
    });
}

std::filesystem::path SuccessorPath(const std::filesystem::path& database) {
    std::filesystem::path path = database;
    path += kSuccessorExtension;
    return path;
}

FilePages::FilePages(std::filesystem::path path, OpenMode mode, const Layout& layout)
    : CachedPages(layout, 0), m_path(std::move(path)), m_mode(mode) {}

std::unique_ptr<FilePages> FilePages::Open(const std::filesystem::path& path, OpenMode mode) {
    const std::filesystem::path real = RealPath(path);
    const Bytes firstBytes = Translated(
        [&] { return AsBytes(nativefiles::ReadAt(OpenForReading(real), kSignatureBytes, 0)); });
    const auto generation = GenerationOf(firstBytes);
    if (!generation) ReadHeader(firstBytes);  // says why
    std::unique_ptr<FilePages> pages(
        new FilePages(real, mode, LayoutOf(generation.value_or(Generation::Jet4))));
    pages->OpenFile();
    pages->Attach(false);
    return pages;
}

std::unique_ptr<FilePages> FilePages::Create(const std::filesystem::path& path,
                                             Generation generation) {
    const std::filesystem::path real = RealPath(path);
    if (StampOf(real)) Fail(FailureKind::InputOutput, "the file exists already");
    std::unique_ptr<FilePages> pages(
        new FilePages(real, OpenMode::ReadWrite, LayoutOf(generation)));
    pages->m_bNew = true;
    return pages;
}

FilePages::~FilePages() {
    try {
        if (!m_bNew) Rest();
    } catch (const std::exception&) {
        m_file.Reset();
    }
}

std::string FilePages::WhyNotWritable() const {
    if (!m_sWhyNot.empty() || m_bNew) return m_sWhyNot;
    const auto lockFile = FindLockFile(m_path);
    if (lockFile && IsLockFileHeld(*lockFile)) return "somebody has the file open in Access";
    return {};
}

std::optional<FilePages::Stamp> FilePages::StampOf(const std::filesystem::path& path) {
    const auto status = Translated([&] { return nativefiles::StatusOf(path); });
    if (!status) return std::nullopt;
    return Stamp{status->st_dev,  status->st_ino,          status->st_mode,        status->st_uid,
                 status->st_size, TimeOf(status->st_mtim), TimeOf(status->st_ctim)};
}

bool FilePages::IsQuiet(const Stamp& stamp) {
    const auto last = std::max(stamp.modified, stamp.changed);
    const bool bCoarse = last % 1s == 0ns;
    return std::chrono::system_clock::now().time_since_epoch() - last >
           (bCoarse ? kCoarseStep : kFineStep);
}

// ---- Reading

void FilePages::OpenFile() {
    m_file.Reset();
    m_sWhyNot.clear();
    const auto status = Translated([&] { return nativefiles::StatusOf(m_path); });
    if (m_mode == OpenMode::ReadOnly)
        m_sWhyNot = "the file was opened for reading only";
    else if (status && nativefiles::IsWriteProtected(*status))
        m_sWhyNot = "the file is write-protected";
    else if (!MayWriteIn(m_path.parent_path()))
        m_sWhyNot = "the file's folder can't be written to";
    if (m_sWhyNot.empty()) {
        m_file = nativefiles::Descriptor(
            ::open(m_path.c_str(), O_RDWR | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
        if (!m_file.IsOpen()) m_sWhyNot = std::generic_category().message(errno);
    }
    Translated([&] {
        if (!m_file.IsOpen()) m_file = OpenForReading(m_path);
        if (!S_ISREG(nativefiles::StatusOf(m_file).st_mode))
            Fail(FailureKind::Damaged, "the file is no Access database");
    });
}

void FilePages::Attach(bool bLocked) {
    const auto deadline = std::chrono::steady_clock::now() + kPatience;
    for (;;) {
        // A journal that nobody is at work on is brought into the file, and a new file that nobody
        // writes any more goes.
        if (m_sWhyNot.empty() && HasLeftovers() && (bLocked || TryLock(m_file))) {
            PlayBack();
            RemoveSuccessor();
            if (!bLocked) Unlock(m_file);
        }
        if (TryAttach()) return;
        if (std::chrono::steady_clock::now() > deadline) Fail(FailureKind::Held, kHeld);
        std::this_thread::sleep_for(kPause);
    }
}

// False if somebody else has brought his journal into the file meanwhile. To have caught him at it
// does no harm: the journal then holds all that he changes.
bool FilePages::TryAttach() {
    Forget();
    m_stamp = StampOf(m_path);
    m_journalStamp = StampOf(JournalPath(m_path));
    ReadBase();
    try {
        ReplayInMemory();
    } catch (const Failure&) {
        if (CounterInFile() == m_nCounter) throw;
    }
    if (CounterInFile() != m_nCounter) return false;
    m_bTrusted = m_stamp && IsQuiet(*m_stamp);
    if (m_header->bHasPassword && m_sWhyNot.empty()) m_sWhyNot = "the file has a password";
    return true;
}

void FilePages::ReplayInMemory() {
    m_replayed.clear();
    SetCount(PagesOf(m_nFileBytes));
    auto journal = JournalReader::Open(JournalPath(m_path));
    if (!journal || journal->IsStillborn()) return;
    Replay replay = ReplayOf(*journal);
    m_replayed = std::move(replay.pages);
    SetCount(replay.nCount);
    m_bWasInterrupted = false;
}

// A page that the file's end cuts off is one, filled up with zeros.
std::uint32_t FilePages::PagesOf(std::uint64_t nFileBytes) const {
    return static_cast<std::uint32_t>((nFileBytes + Format().nPageSize - 1) / Format().nPageSize);
}

void FilePages::ReadBase() {
    const Bytes page = LoadRaw(0);
    m_nFileBytes = static_cast<std::uint64_t>(
        Translated([&] { return nativefiles::StatusOf(m_file); }).st_size);
    if (m_nFileBytes < kFewestPages * Format().nPageSize)
        Fail(FailureKind::Damaged, "the file has been cut off");
    if (m_nFileBytes > std::uint64_t{kMostPages} * Format().nPageSize)
        Fail(FailureKind::Unsupported, "the file is larger than any Access database");
    const Generation generation = Format().generation;
    if (GenerationOf(page).value_or(generation) != generation)
        Fail(FailureKind::Unsupported, "the file has been replaced by one of another kind");
    m_header = ReadHeader(page);
    m_nCounter = CommitCounter(page, generation);
    m_bWasInterrupted = jet::WasInterrupted(page, generation);
    Bytes without = page;
    SetCommitCounter(without, generation, 0);
    m_nHeaderHash = HashOf(without);
}

Bytes FilePages::LoadRaw(std::uint32_t nPage) const {
    const std::size_t nSize = Format().nPageSize;
    Bytes page =
        Translated([&] { return AsBytes(nativefiles::ReadAt(m_file, nSize, nPage * nSize)); });
    page.resize(nSize);
    return page;
}

// With one call, as far as the system gives that much at once.
void FilePages::LoadRaw(std::uint32_t nFirst, std::span<Bytes> pages) const {
    const std::size_t nSize = Format().nPageSize;
    std::vector<iovec> parts;
    parts.reserve(pages.size());
    for (Bytes& page : pages)
        parts.push_back({page.data(), nSize});
    const ssize_t nRead = ::preadv(m_file.Get(), parts.data(), static_cast<int>(parts.size()),
                                   static_cast<off_t>(nFirst * nSize));
    const std::size_t nWhole = nRead < 0 ? 0 : static_cast<std::size_t>(nRead) / nSize;
    for (std::size_t n = nWhole; n < pages.size(); ++n)
        pages[n] = LoadRaw(nFirst + static_cast<std::uint32_t>(n));
}

void FilePages::Decrypt(std::uint32_t nPage, ByteSpan page) const {
    if (nPage != 0 && m_header->nKey != 0) ApplyRc4(m_header->nKey ^ nPage, page);
}

Bytes FilePages::LoadPlain(std::uint32_t nPage) const {
    Bytes page = LoadRaw(nPage);
    Decrypt(nPage, page);
    return page;
}

void FilePages::Load(std::uint32_t nFirst, std::span<Bytes> pages) {
    LoadRaw(nFirst, pages);
    bool bFromFile = false;
    for (std::uint32_t nPage = nFirst; Bytes & page : pages) {
        const auto found = m_replayed.find(nPage);
        if (found != m_replayed.end()) {
            page = found->second;
        } else {
            Decrypt(nPage, page);
            bFromFile = true;
        }
        ++nPage;
    }
    if (bFromFile && !m_bWriting && CounterInFile() != m_nCounter)
        Fail(FailureKind::Held, kChanged);
}

std::uint16_t FilePages::CounterInFile() const {
    const std::size_t nPlace = CommitCounterPlace(Format().generation);
    const Bytes bytes = Translated([&] { return AsBytes(nativefiles::ReadAt(m_file, 2, nPlace)); });
    return LoadU16(bytes, 0);
}

// Whether the path still names the file that is open.
bool FilePages::IsSameFile() const {
    const auto there = StampOf(m_path);
    return there && m_stamp && there->nInode == m_stamp->nInode &&
           there->nDevice == m_stamp->nDevice;
}

bool FilePages::IsInSameState() const {
    return StampOf(m_path) == m_stamp && StampOf(JournalPath(m_path)) == m_journalStamp &&
           CounterInFile() == m_nCounter;
}

bool FilePages::IsAsRead() const {
    return m_bNew || m_bWriting || (m_bTrusted && IsInSameState());
}

void FilePages::Reload() {
    if (m_bNew || m_bWriting) return;
    OpenFile();
    Attach(false);
}

// ---- Journals that are there

// Whether the file may be what the journal began with, or, if it is sealed, something between that
// and what it makes of it.
bool FilePages::Continues(const JournalBase& base, bool bSealed) const {
    if (!bSealed) return Base() == base;
    JournalBase mine = Base();
    const bool bKnownCounter = m_nCounter == base.nCommitCounter || m_nCounter == kBeingWritten ||
                               m_nCounter == NextCommitCounter(base.nCommitCounter);
    mine.nCommitCounter = base.nCommitCounter;
    mine.nFileBytes = std::min(mine.nFileBytes, base.nFileBytes);
    return bKnownCounter && mine == base;
}

FilePages::Replay FilePages::ReplayOf(JournalReader& journal) const {
    const JournalBase& base = journal.Base();
    if (!Continues(base, true)) Fail(FailureKind::Damaged, kForeignJournal);
    Replay replay{{}, PagesOf(base.nFileBytes)};
    bool bSealed = false;
    std::vector<PageChange> changes;
    while (journal.Next(changes)) {
        bSealed = bSealed || changes.empty();
        for (const PageChange& change : changes)
            ApplyChange(replay, change);
    }
    if (!bSealed && !(replay.bAllAsBefore && Continues(base, false)))
        Fail(FailureKind::Damaged, kForeignJournal);
    return replay;
}

void FilePages::ApplyChange(Replay& replay, const PageChange& change) const {
    if (change.bNew) {
        if (change.nPage != replay.nCount || change.nPage >= kMostPages)
            Fail(FailureKind::Damaged, kForeignJournal);
        ++replay.nCount;
    }
    if (change.nPage == 0 || change.nPage >= replay.nCount)
        Fail(FailureKind::Damaged, kForeignJournal);
    auto found = replay.pages.find(change.nPage);
    if (found == replay.pages.end()) {
        Bytes page = change.bNew ? Bytes(Format().nPageSize) : LoadPlain(change.nPage);
        if (change.hashBefore && *change.hashBefore != HashOf(page)) replay.bAllAsBefore = false;
        found = replay.pages.emplace(change.nPage, std::move(page)).first;
    }
    for (const auto& range : change.ranges)
        std::copy(range.bytes.begin(), range.bytes.end(),
                  found->second.begin() + static_cast<std::ptrdiff_t>(range.nPlace));
}

bool FilePages::HasLeftovers() const {
    return StampOf(JournalPath(m_path)) || StampOf(SuccessorPath(m_path));
}

// Brings a dead process's journal into the file. The file must be locked.
void FilePages::PlayBack() {
    auto journal = JournalReader::Open(JournalPath(m_path));
    if (!journal) return;
    ReadBase();
    if (!journal->IsStillborn()) {
        const Replay replay = ReplayOf(*journal);
        std::vector<std::uint32_t> pages;
        for (const auto& [nPage, image] : replay.pages)
            pages.push_back(nPage);
        JournalWriter(JournalPath(m_path), *journal).Seal();
        Translated([&] { nativefiles::SyncFolder(m_path.parent_path()); });
        m_nCounter = journal->Base().nCommitCounter;
        if (!pages.empty())
            WriteInto(pages, replay.nCount,
                      [&](std::uint32_t nPage) { return ByteView(replay.pages.at(nPage)); });
    }
    RemoveJournal();
}

// Of a dead process; the file must be locked. The one of a living process is beside the file that
// it has locked, which isn't this one if another file has come to the path.
void FilePages::RemoveSuccessor() const {
    const auto there = StampOf(m_path);
    const auto open = Translated([&] { return nativefiles::StatusOf(m_file); });
    if (!there || there->nInode != open.st_ino || there->nDevice != open.st_dev) return;
    std::error_code ignored;
    std::filesystem::remove(SuccessorPath(m_path), ignored);
}

// ---- Writing

bool FilePages::StartWriting() {
    return TakeFile(true);
}

// False if the file had to be read anew.
bool FilePages::TakeFile(bool bMayReload) {
    if (m_bNew || m_bWriting) return true;
    RequireWritable();
    const auto reloadBy = [&](const auto& read) {
        if (!bMayReload || InTransaction()) Fail(FailureKind::Held, kChanged);
        read();
        RequireWritable();
        return false;
    };
    bool bAsRead = IsSameFile() || reloadBy([&] { Reload(); });
    Lock();
    try {
        if (!IsSameFile()) Fail(FailureKind::Held, kChanged);
        RemoveStaleLockFile();
        if (!IsInSameState()) bAsRead = reloadBy([&] { Attach(true); });
    } catch (const Failure&) {
        Unlock(m_file);
        throw;
    }
    m_bWriting = true;
    return bAsRead;
}

void FilePages::RequireWritable() const {
    const std::string sWhyNot = WhyNotWritable();
    if (!sWhyNot.empty()) Fail(FailureKind::NotWritable, sWhyNot);
}

void FilePages::Lock() {
    const auto deadline = std::chrono::steady_clock::now() + kPatience;
    while (!TryLock(m_file)) {
        if (!m_bPatient || std::chrono::steady_clock::now() > deadline) {
            m_bPatient = false;
            Fail(FailureKind::Held, kHeld);
        }
        std::this_thread::sleep_for(kPause);
    }
    m_bPatient = true;
}

// Who crashed leaves his lock file; that it goes away shows that nobody has it open.
void FilePages::RemoveStaleLockFile() const {
    const auto lockFile = FindLockFile(m_path);
    if (!lockFile) return;
    std::error_code error;
    if (IsLockFileHeld(*lockFile) || (!std::filesystem::remove(*lockFile, error) && error))
        Fail(FailureKind::NotWritable, "somebody has the file open in Access");
}

ByteSpan FilePages::Change(std::uint32_t nPage) {
    TakeFile(false);
    if (nPage == 0 && !m_bNew) Fail(FailureKind::Unsupported, "the header of a file isn't changed");
    return CachedPages::Change(nPage);
}

std::uint32_t FilePages::Append() {
    TakeFile(false);
    return CachedPages::Append();
}

JournalBase FilePages::Base() const {
    return {static_cast<std::uint32_t>(Format().nPageSize), m_nFileBytes, m_nHeaderHash,
            m_nCounter};
}

void FilePages::Keep(const Images& before) {
    if (m_bNew) return;
    JournalRecord record;
    for (const auto& [nPage, image] : before)
        record.AddPage(nPage, image, Read(nPage), !m_journaled.contains(nPage));
    if (record.IsEmpty()) return;
    if (!m_journal) {
        const mode_t nMode =
            Translated([&] { return nativefiles::StatusOf(m_file); }).st_mode & ACCESSPERMS;
        m_journal.emplace(JournalPath(m_path), Base(), nMode);
    }
    m_journal->Append(record);
    for (const auto& [nPage, image] : before)
        m_journaled.insert(nPage);
    if (m_journal->Size() < kLongJournal) return;
    try {
        WriteBack();
    } catch (const Failure&) {
        return;  // what was committed is in the journal; Rest tries again
    }
}

void FilePages::Rest() {
    if (InTransaction()) Rollback();
    if (m_bNew) return Publish();
    if (!m_bWriting) return;
    WriteBack();
    LetGo();
}

void FilePages::WriteBack() {
    if (!m_journal) return;
    m_journal->Seal();
    Translated([&] { nativefiles::SyncFolder(m_path.parent_path()); });
    const std::vector<std::uint32_t> pages(m_journaled.begin(), m_journaled.end());
    WriteInto(pages, Count(), [&](std::uint32_t nPage) { return Read(nPage); });
    RemoveJournal();
    m_journal.reset();
    m_journaled.clear();
}

// The journal must be sealed. m_nCounter is the counter at its start.
void FilePages::WriteInto(const std::vector<std::uint32_t>& pages, std::uint32_t nCount,
                          const PageGetter& get) {
    const std::uint64_t nBytes = std::uint64_t{nCount} * Format().nPageSize;
    Translated([&] {
        SetCounterInFile(kBeingWritten);
        WritePages(pages, get);
        // Also fills up a last page that was cut off.
        if (nativefiles::StatusOf(m_file).st_size != static_cast<off_t>(nBytes) &&
            ::ftruncate(m_file.Get(), static_cast<off_t>(nBytes)) != 0)
            nativefiles::RaiseErrno();
        SetCounterInFile(NextCommitCounter(m_nCounter));
        nativefiles::Sync(m_file);
    });
    m_nCounter = NextCommitCounter(m_nCounter);
    m_nFileBytes = nBytes;
}

// Neighbours are written with one call.
void FilePages::WritePages(const std::vector<std::uint32_t>& pages, const PageGetter& get) {
    Bytes run;
    std::size_t nRunPlace = 0;
    const auto flush = [&] {
        if (!run.empty()) nativefiles::WriteAt(m_file, AsText(run), nRunPlace);
        run.clear();
    };
    for (const std::uint32_t nPage : pages) {
        const std::size_t nPlace = nPage * Format().nPageSize;
        if (nPlace != nRunPlace + run.size() || run.size() >= kWriteBytes) flush();
        if (run.empty()) nRunPlace = nPlace;
        jet::Append(run, get(nPage));
        if (nPage != 0 && m_header && m_header->nKey != 0)
            ApplyRc4(m_header->nKey ^ nPage,
                     ByteSpan(run).subspan(run.size() - Format().nPageSize));
    }
    flush();
}

void FilePages::SetCounterInFile(std::uint16_t nCounter) {
    Bytes bytes(2);
    StoreU16(bytes, 0, nCounter);
    nativefiles::WriteAt(m_file, AsText(bytes), CommitCounterPlace(Format().generation));
}

void FilePages::RemoveJournal() const {
    Translated([&] { std::filesystem::remove(JournalPath(m_path)); });
}

void FilePages::LetGo() {
    m_stamp = StampOf(m_path);
    m_journalStamp = std::nullopt;
    // Nobody else has changed the file while it was locked, and what was written is in memory; but
    // a coarse time might hide a change that follows.
    m_bTrusted = m_stamp && (m_stamp->modified % 1s != 0ns || IsQuiet(*m_stamp));
    m_bWriting = false;
    Unlock(m_file);
}

void FilePages::Publish() {
    if (Count() == 0) return;
    std::vector<std::uint32_t> pages(Count());
    for (std::uint32_t n = 0; n < Count(); ++n)
        pages[n] = n;
    Translated([&] {
        nativefiles::FileBeside file(m_path);
        file.TakeRights(std::nullopt);
        for (const std::uint32_t nPage : pages)
            file.Write(AsText(Read(nPage)));
        file.ToDisk();
        if (StampOf(m_path)) Fail(FailureKind::InputOutput, "the file exists already");
        file.TakePlace();
        nativefiles::SyncFolder(m_path.parent_path());
    });
    m_bNew = false;
    OpenFile();
    Attach(false);
}

}  // namespace nomira::jet
