// Port: the database engine behind the message files, in the shape of the data-access layer that
// the controller software uses: connections, recordsets, and the compaction of a file.
//
// The module adoModul is its one user. Every failure is a RuntimeError; adoModul traps them all.
#pragma once

#include <cstdint>
#include <memory>
#include <variant>

#include "langtools/Text.h"

namespace nomira {

// A column's value; monostate is Null.
using FieldValue = std::variant<std::monostate, std::int64_t, double, Text>;

inline bool IsNull(const FieldValue& value) {
    return std::holds_alternative<std::monostate>(value);
}

// The data-access layer's own constants.
enum class CursorKind : std::int32_t { Keyset = 1, Static = 3 };
enum class LockKind : std::int32_t { ReadOnly = 1, Pessimistic = 2, Optimistic = 3 };
inline constexpr std::int32_t kStateClosed = 0;
inline constexpr std::int32_t kStateOpen = 1;
inline constexpr std::int32_t kOptionUnspecified = -1;
inline constexpr std::int32_t kOptionTable = 2;  // the source is the name of a table

class Connection {
  public:
    virtual ~Connection() = default;  // closes what is still open

    // Kept until Open; "Microsoft.Jet.OLEDB.4.0", or empty for the default (ODBC).
    virtual void SetProvider(TextView sProvider) = 0;
    // Names the file: "...;DBQ=path;..." or "Data Source=path".
    virtual void SetConnectionText(TextView sText) = 0;

    // Opens an existing database file; never makes one. `sText` replaces the connection text if
    // it isn't empty. Raises EngineFailure if the file is missing, is no database, is held by
    // somebody else, or is open already through this object.
    virtual void Open(TextView sText, TextView sUser, TextView sPassword,
                      std::int32_t nOptions) = 0;
    // kStateOpen or kStateClosed.
    virtual std::int32_t State() const = 0;
    // Raises ObjectClosed if it isn't open.
    virtual void Close() = 0;

    // Used by the console companion alone: the passes of the program commit row by row.
    virtual void BeginTrans() = 0;
    virtual void CommitTrans() = 0;
    virtual void RollbackTrans() = 0;
};

class Recordset {
  public:
    virtual ~Recordset() = default;  // closes; a row being added or changed is dropped

    // Runs a query, opens a table by its name (with any option: a source of one word is a table),
    // or runs a statement that gives no rows, after which the recordset stays closed. Queries know
    // `%` and `_` in Like; comparisons are exact in case. Raises EngineFailure; a connection that
    // isn't open raises ObjectClosed.
    // A static cursor shows the rows as they were at this moment; a keyset cursor the same rows,
    // of which the current one can be changed. With LockKind::ReadOnly nothing can.
    virtual void Open(TextView sSource, Connection& connection, CursorKind cursor, LockKind lock,
                      std::int32_t nOptions) = 0;
    virtual std::int32_t State() const = 0;
    // Raises ObjectClosed if it isn't open.
    virtual void Close() = 0;

    // Before the first, behind the last row. Both are true exactly when there are no rows. An
    // open query stands on its first row.
    virtual bool Bof() const = 0;
    virtual bool Eof() const = 0;
    // Raise NoCurrentRecord without rows, or behind the last one. A row that is being added or
    // changed is dropped.
    virtual void MoveFirst() = 0;
    virtual void MoveNext() = 0;

    // A column of the current row (or of the row being added), its name without regard to case.
    // Raises NoSuchField, or NoCurrentRecord.
    virtual FieldValue Field(TextView sName) = 0;

    // Begins a new row. Raises UpdateNotAllowed where the result can't be written.
    virtual void AddNew() = 0;
    // Sets a column of the new row, or of the current one. Raises like Field and AddNew.
    virtual void SetField(TextView sName, const FieldValue& value) = 0;
    // Commits the row and makes it the current one, with the values that the database gave it;
    // of a changed row, that very row is written. Raises EngineFailure; the row is then dropped.
    // Does nothing where no row is being added or changed.
    virtual void Update() = 0;
};

class DatabaseEngine {
  public:
    virtual ~DatabaseEngine() = default;

    virtual std::unique_ptr<Connection> CreateConnection() = 0;
    virtual std::unique_ptr<Recordset> CreateRecordset() = 0;

    // Writes a compacted copy of a closed database file. Both texts are connection texts with a
    // "Data Source="; the destination must not exist. Raises EngineFailure, and then leaves the
    // source as it was.
    virtual void CompactDatabase(TextView sSource, TextView sDestination) = 0;
};

// The engine in use; set by the program's composition, and not owned.
void SetDatabaseEngine(DatabaseEngine* engine);
DatabaseEngine& TheDatabaseEngine();

}  // namespace nomira
