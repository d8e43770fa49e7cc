// A recordset of the data-access layer over rows of a SQLite file.
//
// A query's rows are read whole at Open. A table's rows are read when somebody first asks for one:
// a table is opened to add a row, and may hold tens of thousands.
#pragma once

#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

#include "adapters/sqlite/ResultSet.h"
#include "adapters/sqlite/SqliteConnection.h"
#include "database/DatabaseEngine.h"

namespace nomira::sqlite {

class SqliteRecordset : public Recordset {
  public:
    // Writable with a keyset cursor and a lock other than read-only.
    void Open(TextView sSource, Connection& connection, CursorKind cursor, LockKind lock,
              std::int32_t nOptions) override;
    // Closed also when its connection has been.
    std::int32_t State() const override;
    void Close() override;

    bool Bof() const override;
    bool Eof() const override;
    // A move drops a row that is being added or changed.
    void MoveFirst() override;
    void MoveNext() override;

    FieldValue Field(TextView sName) override;
    void AddNew() override;
    void SetField(TextView sName, const FieldValue& value) override;
    void Update() override;

  private:
    enum class Edit { None, Adding, Changing };
    // A field that has been set and waits for Update.
    struct PendingField {
        std::size_t nColumn;
        FieldValue value;
    };

    // A row that was added or changed through this recordset.
    struct WrittenRow {
        std::int64_t nRowId;
        std::vector<FieldValue> values;  // empty until somebody asks for them
    };

    void OpenTable(Database& database, TextView sTable, bool bWritable);
    void OpenQuery(Database& database, TextView sSql, bool bWritable);
    // Raises ObjectClosed.
    Database& TheDatabase() const;
    void ReadPendingRows() const;
    std::size_t RowCount() const { return m_result->nRead + m_nAdded; }
    // Raises NoCurrentRecord.
    void RequireCurrentRow() const;
    // The current row, if it was added or changed; nullptr for one that is as it was read.
    WrittenRow* CurrentWrittenRow();
    // The index of a column. Raises NoSuchField.
    std::size_t ColumnIndex(TextView sName) const;
    const FieldValue* PendingValue(std::size_t nColumn) const;
    void DropEdit();
    std::vector<Assignment> Assignments(const std::vector<PendingField>& pending) const;
    void WriteNewRow(const std::vector<PendingField>& pending);
    void WriteCurrentRow(const std::vector<PendingField>& pending);

    bool m_bOpen = false;
    std::shared_ptr<Session> m_session;  // there while m_bOpen
    // The rows of an opened table are read late, also by a question that changes nothing else.
    mutable std::shared_ptr<const ResultSet> m_result;  // there while m_bOpen
    mutable std::string m_sUnreadTable;                 // empty: the rows are there
    bool m_bWritable = false;
    std::size_t m_nRow = 0;  // first the rows that were read, then those that were added
    std::size_t m_nAdded = 0;
    // All rows that were added, and those read ones that were changed, by their place.
    std::unordered_map<std::size_t, WrittenRow> m_written;
    std::optional<WrittenRow> m_addedRow;  // the current row, until the next move
    Edit m_edit = Edit::None;
    std::vector<PendingField> m_pending;
};

}  // namespace nomira::sqlite
