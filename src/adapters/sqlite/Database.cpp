#include "adapters/sqlite/Database.h"

#include <utility>

#include "adapters/sqlite/Failure.h"

namespace nomira::sqlite {
namespace {

// How long a statement waits for somebody else's lock. Once a wait was in vain the next statements
// don't wait until one has succeeded: a pass over thousands of lines must not take hours against a
// file that stays locked.
constexpr int kPatienceMilliseconds = 1000;

// More than all the statements of one program; a bound on what odd callers may pile up.
constexpr std::size_t kKeptStatements = 64;

// A look-up's statements follow its open by less than that; nobody else can have written a row and
// told of it in so short a time.
constexpr std::chrono::microseconds kJustNow{20};

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
    : m_path(std::move(path)), m_identity(identity) {}

Database::~Database() {
    CloseHandle();
}

void Database::OpenHandle(const char* sName, int nFlags) {
    CloseHandle();
    const int nResult = sqlite3_open_v2(
        sName, &m_handle, nFlags | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE, nullptr);
    if (nResult != SQLITE_OK) {
        const std::string sWords = sqlite3_errmsg(m_handle);
        CloseHandle();
        RaiseFailure(sWords);
    }
    SetWaiting(kPatienceMilliseconds);
    Run(kSettings);
}

void Database::CloseHandle() {
    m_kept.clear();
    sqlite3_close_v2(m_handle);  // goes with the last statement, if one is left
    m_handle = nullptr;
}

bool Database::IsAsRemembered(const FileState& state) {
    const bool bSame = m_rememberedState == state && !IsBeingWritten();
    if (bSame) m_looked = std::chrono::steady_clock::now();
    return bSame;
}

void Database::CheckReadable(const FileState& state, std::chrono::nanoseconds now) {
    if (IsAsRemembered(state)) return;
    Forget();
    CheckContents();
    if (state.IsQuiet(now) && ShowsItsChanges()) m_rememberedState = state;
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
    if (sqlite3_stmt_readonly(statement) == 0) {
        Forget();
        PrepareToWrite();
    }
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
    RunOrRaise(IsReadOnly() ? "BEGIN" : "BEGIN IMMEDIATE");
}

void Database::CommitTransaction() {
    RunOrRaise("COMMIT");
}

void Database::RollbackTransaction() {
    RunOrRaise("ROLLBACK");
}

bool Database::Rest() {
    if (InTransaction()) Run("ROLLBACK");
    // What is remembered tells that it was at rest, and nothing has been written since.
    return m_rememberedState ? true : PutToRest();
}

int Database::Run(const char* sSql) {
    return sqlite3_exec(m_handle, sSql, nullptr, nullptr, nullptr);
}

void Database::RunOrRaise(const char* sSql) {
    const int nResult = Run(sSql);
    SetPatience(nResult);
    if (nResult != SQLITE_OK) RaiseFailure(m_handle);
}

void Database::RunWithoutWaiting(const char* sSql) {
    SetWaiting(0);
    Run(sSql);
    SetWaiting(Patience());
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

}  // namespace nomira::sqlite
