// One SQLite connection to one database file, whatever kind of file it is: its statements, what is
// remembered of them, and its transactions. How a file of each kind lies at rest and at work is the
// derived class's matter.
#pragma once

#include <sqlite3.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "adapters/sqlite/FileState.h"
#include "adapters/sqlite/RememberedResults.h"

namespace nomira::sqlite {

struct FinalizeStatement {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using StatementPtr = std::unique_ptr<sqlite3_stmt, FinalizeStatement>;

// Leaves a prepared statement ready for its next use, whatever happened in between.
class StatementUse {
  public:
    explicit StatementUse(sqlite3_stmt* statement) : m_statement(statement) {}
    ~StatementUse() {
        sqlite3_reset(m_statement);
        sqlite3_clear_bindings(m_statement);
    }
    StatementUse(const StatementUse&) = delete;
    StatementUse& operator=(const StatementUse&) = delete;

  private:
    sqlite3_stmt* m_statement;
};

class Database {
  public:
    virtual ~Database();
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    const std::filesystem::path& Path() const { return m_path; }
    const FileIdentity& Identity() const { return m_identity; }
    sqlite3* Handle() const { return m_handle; }

    // Whether the file, which stands so now, is the one that was last read, unchanged and free.
    bool IsAsRemembered(const FileState& state);
    // To be called ahead of each use, with the file as it stands now. Raises EngineFailure if it is
    // no database, or somebody else keeps it to himself. What was remembered is good no longer if
    // the file has changed.
    void CheckReadable(const FileState& state, std::chrono::nanoseconds now);
    // Whether somebody else holds the file, as far as the statements up to now could see.
    bool WasBusy() const { return !m_bPatient; }

    // The text as a statement; raises EngineFailure if it is none, or more than one.
    StatementPtr Prepare(std::string_view sSql);
    // The same, kept for the next time; for texts without values in them. Good until the next call.
    sqlite3_stmt* PrepareOnce(const std::string& sSql);

    // What a query gave when it was last run, if nobody has changed the file since: nullptr if it
    // hasn't been run, or that can't be told.
    std::shared_ptr<const ResultSet> Recall(const std::string& sSql, bool bWritable);
    void Remember(const std::string& sSql, bool bWritable, std::shared_ptr<const ResultSet> result);

    // Runs a statement on to its next row, and false behind the last one. Raises EngineFailure.
    bool Step(sqlite3_stmt* statement);

    // A transaction over what follows. Raise EngineFailure if there is one already, or none.
    void BeginTransaction();
    void CommitTransaction();
    void RollbackTransaction();

    // Puts the file back to rest, dropping a transaction that is still open. False if others are
    // at work on it, so that it must stay as it is, for the last of them to put back.
    bool Rest();

    // Makes a compacted copy with the rights of this file, on the disk. `nEngineType` as EngineType
    // gives it: an Access file becomes one of that kind, or of its own for 0; other files stay what
    // they are. Raises EngineFailure, also if anything stands at `path` already; nothing is left
    // then.
    virtual void MakeCompacted(const std::filesystem::path& path, int nEngineType) = 0;

  protected:
    // For the existing file that was looked at at the path. Opens nothing yet.
    Database(std::filesystem::path path, const FileIdentity& identity);

    // Opens the handle, in the place of one that is open. Raises EngineFailure.
    void OpenHandle(const char* sName, int nFlags);
    // Closes it, with all statements that are kept.
    void CloseHandle();

    // Whether somebody else has begun to write the file.
    virtual bool IsBeingWritten() const = 0;
    // Raises EngineFailure if what stands at the path can't be read, or is no such database.
    virtual void CheckContents() = 0;
    // Whether a change by anybody shows in the file itself, and so in its times.
    virtual bool ShowsItsChanges() = 0;
    // Ahead of each statement that may write, and of a transaction. What was remembered is
    // forgotten by then.
    virtual void PrepareToWrite() = 0;
    virtual bool IsReadOnly() const = 0;
    // Puts the file to rest after somebody wrote it or may have; without a transaction. False as
    // Rest.
    virtual bool PutToRest() = 0;

    int Run(const char* sSql);
    void RunOrRaise(const char* sSql);
    bool StepRaw(sqlite3_stmt* statement);
    // Runs statements that give up at once where somebody else holds the file.
    void RunWithoutWaiting(const char* sSql);
    bool InTransaction() const { return sqlite3_get_autocommit(m_handle) == 0; }

  private:
    int Patience() const;
    void SetWaiting(int nMilliseconds);
    void SetPatience(int nResult);
    void Forget();

    std::filesystem::path m_path;
    FileIdentity m_identity;
    sqlite3* m_handle = nullptr;
    std::unordered_map<std::string, StatementPtr> m_kept;
    bool m_bPatient = true;
    // As the file stood when what is remembered was read; nullopt while nothing may be.
    std::optional<FileState> m_rememberedState;
    RememberedResults m_remembered;
    std::chrono::steady_clock::time_point m_looked{};  // when the file was last found unchanged
};

}  // namespace nomira::sqlite
