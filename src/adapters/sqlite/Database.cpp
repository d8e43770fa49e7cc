#include "adapters/sqlite/Database.h"

#include <sys/stat.h>

#include <cstring>
#include <utility>

#include "adapters/sqlite/Failure.h"

namespace nomira::sqlite {
namespace {

// How long a statement waits for somebody else's lock. Once a wait was in vain the next statements
// don't wait until one has succeeded: a pass over thousands of lines must not take hours against a
// file that stays locked.
constexpr int kPatienceMilliseconds = 1000;

constexpr mode_t kAnyoneWrites = S_IWUSR | S_IWGRP | S_IWOTH;

// More than all the statements of one program; a bound on what odd callers may pile up.
constexpr std::size_t kKeptStatements = 64;

// A look-up's statements follow its open by less than that; nobody else can have written a row and
// told of it in so short a time.
constexpr std::chrono::microseconds kJustNow{20};

// A file that nobody may write is only read, even by a superuser, whom the system would let write.
int OpenFlags(const FileIdentity& identity) {
    const int nAccess =
        (identity.nMode & kAnyoneWrites) != 0 ? SQLITE_OPEN_READWRITE : SQLITE_OPEN_READONLY;
    return nAccess | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE;
}

// Deleted items take their messages along; Like compares exactly, as "=" does, and may then use an
// index; a file from elsewhere can't run functions through its schema; damage is seen early.
constexpr const char* kSettings =
    "PRAGMA foreign_keys=ON;"
    "PRAGMA case_sensitive_like=ON;"
    "PRAGMA trusted_schema=OFF;"
    "PRAGMA cell_size_check=ON;";

bool IsSuccess(int nResult) {
    return nResult == SQLITE_OK || nResult == SQLITE_ROW || nResult == SQLITE_DONE;
}

bool IsBlank(std::string_view sText) {
    return sText.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

}  // namespace

Database::Database(std::filesystem::path path, const FileIdentity& identity)
    : m_path(std::move(path)), m_identity(identity) {
    if (sqlite3_open_v2(m_path.c_str(), &m_handle, OpenFlags(identity), nullptr) != SQLITE_OK) {
        const std::string sWords = sqlite3_errmsg(m_handle);
        sqlite3_close(m_handle);
        RaiseFailure(sWords);
    }
    SetWaiting(kPatienceMilliseconds);
    Run(kSettings);
}

Database::~Database() {
    m_journalMode.reset();
    m_kept.clear();
    sqlite3_close(m_handle);
}

bool Database::IsAsRemembered(const FileState& state) {
    const bool bSame = m_rememberedState == state && !IsBeingWritten();
    if (bSame) m_looked = std::chrono::steady_clock::now();
    return bSame;
}

void Database::CheckReadable(const FileState& state, std::chrono::nanoseconds now) {
    if (IsAsRemembered(state)) return;
    Forget();
    ReadSchema();
    // A write-ahead log takes changes that the file doesn't show.
    if (state.IsQuiet(now) && !IsWriteAhead()) m_rememberedState = state;
}

void Database::ReadSchema() {
    sqlite3_stmt* statement = PrepareOnce("SELECT 1 FROM sqlite_schema LIMIT 1");
    const StatementUse use(statement);
    Step(statement);
}

// Whoever writes a file that is at rest locks it for that first, and others can't read it from
// then on until it is done or given up.
bool Database::IsBeingWritten() const {
    sqlite3_file* file = nullptr;
    sqlite3_file_control(m_handle, "main", SQLITE_FCNTL_FILE_POINTER, &file);
    int nReserved = 0;
    const int nResult = file->pMethods->xCheckReservedLock(file, &nReserved);
    return nResult != SQLITE_OK || nReserved != 0;
}

void Database::Forget() {
    m_rememberedState.reset();
    m_remembered.Clear();
}

std::shared_ptr<const ResultSet> Database::Recall(const std::string& sSql, bool bWritable) {
    if (!m_rememberedState) return nullptr;
    auto result = m_remembered.Find(sSql, bWritable);
    if (!result) return nullptr;
    // The database may have been open for long.
    if (std::chrono::steady_clock::now() - m_looked < kJustNow) return result;
    const auto state = TryLookAtFile(m_path);
    if (state && IsAsRemembered(*state)) return result;
    Forget();
    return nullptr;
}

void Database::Remember(const std::string& sSql, bool bWritable,
                        std::shared_ptr<const ResultSet> result) {
    if (m_rememberedState) m_remembered.Keep(sSql, bWritable, std::move(result));
}

StatementPtr Database::Prepare(std::string_view sSql) {
    sqlite3_stmt* raw = nullptr;
    const char* sTail = nullptr;
    const int nResult =
        sqlite3_prepare_v2(m_handle, sSql.data(), static_cast<int>(sSql.size()), &raw, &sTail);
    StatementPtr statement(raw);
    if (nResult != SQLITE_OK) {
        SetPatience(nResult);
        RaiseFailure(m_handle);
    }
    const auto nUsed = static_cast<std::size_t>(sTail - sSql.data());
    if (!statement || !IsBlank(sSql.substr(nUsed))) RaiseFailure("not one statement");
    return statement;
}

sqlite3_stmt* Database::PrepareOnce(const std::string& sSql) {
    const auto found = m_kept.find(sSql);
    if (found != m_kept.end()) return found->second.get();
    StatementPtr statement = Prepare(sSql);
    if (m_kept.size() >= kKeptStatements) m_kept.clear();
    return m_kept.emplace(sSql, std::move(statement)).first->second.get();
}

bool Database::Step(sqlite3_stmt* statement) {
    if (sqlite3_stmt_readonly(statement) == 0) PrepareToWrite();
    return StepRaw(statement);
}

bool Database::StepRaw(sqlite3_stmt* statement) {
    const int nResult = sqlite3_step(statement);
    SetPatience(nResult);
    if (!IsSuccess(nResult)) RaiseFailure(m_handle);
    return nResult == SQLITE_ROW;
}

void Database::BeginTransaction() {
    Forget();
    PrepareToWrite();
    const bool bReadOnly = sqlite3_db_readonly(m_handle, "main") != 0;
    RunOrRaise(bReadOnly ? "BEGIN" : "BEGIN IMMEDIATE");
}

void Database::CommitTransaction() {
    RunOrRaise("COMMIT");
}

void Database::RollbackTransaction() {
    RunOrRaise("ROLLBACK");
}

bool Database::Rest() {
    if (sqlite3_get_autocommit(m_handle) == 0) Run("ROLLBACK");
    m_bJournalChosen = false;
    if (m_rememberedState) return true;  // it was at rest, and nothing has been written since
    if (!IsWriteAhead()) return true;
    SetWaiting(0);
    Run("PRAGMA synchronous=FULL; PRAGMA journal_mode=DELETE");
    SetWaiting(Patience());
    return !IsWriteAhead();
}

void Database::CopyCompacted(const std::filesystem::path& path) {
    const StatementPtr statement = Prepare("VACUUM INTO ?1");
    sqlite3_bind_text(statement.get(), 1, path.c_str(), -1, SQLITE_STATIC);
    StepRaw(statement.get());
}

int Database::Run(const char* sSql) {
    return sqlite3_exec(m_handle, sSql, nullptr, nullptr, nullptr);
}

void Database::RunOrRaise(const char* sSql) {
    const int nResult = Run(sSql);
    SetPatience(nResult);
    if (nResult != SQLITE_OK) RaiseFailure(m_handle);
}

int Database::Patience() const {
    return m_bPatient ? kPatienceMilliseconds : 0;
}

void Database::SetWaiting(int nMilliseconds) {
    sqlite3_busy_timeout(m_handle, nMilliseconds);
}

void Database::SetPatience(int nResult) {
    const bool bPatient = IsSuccess(nResult) || (m_bPatient && !IsBusy(nResult));
    if (bPatient == m_bPatient) return;
    m_bPatient = bPatient;
    SetWaiting(Patience());
}

void Database::PrepareToWrite() {
    Forget();
    if (m_bJournalChosen || sqlite3_get_autocommit(m_handle) == 0) return;
    m_bJournalChosen = true;
    SetWaiting(0);
    Run("PRAGMA journal_mode=WAL");
    SetWaiting(Patience());
    if (IsWriteAhead()) Run("PRAGMA synchronous=NORMAL");
}

bool Database::IsWriteAhead() {
    if (!m_journalMode) {
        sqlite3_stmt* raw = nullptr;
        sqlite3_prepare_v2(m_handle, "PRAGMA journal_mode", -1, &raw, nullptr);
        m_journalMode.reset(raw);
    }
    const StatementUse use(m_journalMode.get());
    if (sqlite3_step(m_journalMode.get()) != SQLITE_ROW) return false;
    const auto* sMode = reinterpret_cast<const char*>(sqlite3_column_text(m_journalMode.get(), 0));
    return sMode != nullptr && std::strcmp(sMode, "wal") == 0;
}

}  // namespace nomira::sqlite
