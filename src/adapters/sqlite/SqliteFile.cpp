#include "adapters/sqlite/SqliteFile.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>
#include <utility>

#include "adapters/sqlite/NewFile.h"

namespace nomira::sqlite {
namespace {

constexpr mode_t kPermissionBits = 0777;
constexpr mode_t kAnyoneWrites = S_IWUSR | S_IWGRP | S_IWOTH;

// A file that nobody may write is only read, even by a superuser, whom the system would let write.
int Access(const FileIdentity& identity) {
    return (identity.nMode & kAnyoneWrites) != 0 ? SQLITE_OPEN_READWRITE : SQLITE_OPEN_READONLY;
}

constexpr std::size_t kMarkPlace = 4;
constexpr std::string_view kAccessMarks[]{"Standard Jet DB", "Standard ACE DB"};

sqlite3_file* FileOf(sqlite3* handle) {
    sqlite3_file* file = nullptr;
    sqlite3_file_control(handle, "main", SQLITE_FCNTL_FILE_POINTER, &file);
    return file;
}

}  // namespace

SqliteFile::SqliteFile(std::filesystem::path path, const FileIdentity& identity)
    : Database(std::move(path), identity) {
    OpenHandle(Path().c_str(), Access(identity));
}

bool SqliteFile::IsAccessFile() const {
    std::array<char, kMarkPlace + kAccessMarks[0].size()> head{};
    sqlite3_file* file = FileOf(Handle());
    if (file->pMethods->xRead(file, head.data(), static_cast<int>(head.size()), 0) != SQLITE_OK)
        return false;
    const std::string_view sMark = std::string_view(head.data(), head.size()).substr(kMarkPlace);
    return std::find(std::begin(kAccessMarks), std::end(kAccessMarks), sMark) !=
           std::end(kAccessMarks);
}

void SqliteFile::MakeCompacted(const std::filesystem::path& path, int /*nEngineType*/) {
    NewFile copy(path, Identity().nMode & kPermissionBits);
    CopyCompacted(path);
    copy.Keep();
}

void SqliteFile::CopyCompacted(const std::filesystem::path& path) {
    const StatementPtr statement = Prepare("VACUUM INTO ?1");
    sqlite3_bind_text(statement.get(), 1, path.c_str(), -1, SQLITE_STATIC);
    StepRaw(statement.get());
}

// Whoever writes a file that is at rest locks it for that first, and others can't read it from
// then on until it is done or given up.
bool SqliteFile::IsBeingWritten() const {
    sqlite3_file* file = FileOf(Handle());
    int nReserved = 0;
    const int nResult = file->pMethods->xCheckReservedLock(file, &nReserved);
    return nResult != SQLITE_OK || nReserved != 0;
}

void SqliteFile::CheckContents() {
    sqlite3_stmt* statement = PrepareOnce("SELECT 1 FROM sqlite_schema LIMIT 1");
    const StatementUse use(statement);
    Step(statement);
}

void SqliteFile::PrepareToWrite() {
    if (m_bJournalChosen || InTransaction()) return;
    m_bJournalChosen = true;
    RunWithoutWaiting("PRAGMA journal_mode=WAL");
    if (IsWriteAhead()) Run("PRAGMA synchronous=NORMAL");
}

bool SqliteFile::IsReadOnly() const {
    return sqlite3_db_readonly(Handle(), "main") != 0;
}

bool SqliteFile::PutToRest() {
    m_bJournalChosen = false;
    if (!IsWriteAhead()) return true;
    RunWithoutWaiting("PRAGMA synchronous=FULL; PRAGMA journal_mode=DELETE");
    return !IsWriteAhead();
}

bool SqliteFile::IsWriteAhead() {
    if (!m_journalMode) {
        sqlite3_stmt* raw = nullptr;
        sqlite3_prepare_v2(Handle(), "PRAGMA journal_mode", -1, &raw, nullptr);
        m_journalMode.reset(raw);
    }
    const StatementUse use(m_journalMode.get());
    if (sqlite3_step(m_journalMode.get()) != SQLITE_ROW) return false;
    const auto* sMode = reinterpret_cast<const char*>(sqlite3_column_text(m_journalMode.get(), 0));
    return sMode != nullptr && std::strcmp(sMode, "wal") == 0;
}

}  // namespace nomira::sqlite
