#include "adapters/sqlite/SqliteRecordset.h"

#include <algorithm>
#include <utility>

#include "adapters/sqlite/Failure.h"
#include "langtools/BasicText.h"
#include "langtools/RuntimeError.h"
#include "langtools/Utf8.h"

namespace nomira::sqlite {
namespace {

bool IsIdentifierCharacter(char16_t c) {
    return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || (c >= u'0' && c <= u'9') ||
           c == u'_';
}

bool IsOneWord(TextView sSource) {
    return !sSource.empty() && std::all_of(sSource.begin(), sSource.end(), IsIdentifierCharacter);
}

}  // namespace

void SqliteRecordset::Open(TextView sSource, Connection& connection, CursorKind cursor,
                           LockKind lock, std::int32_t nOptions) {
    if (State() == kStateOpen) RaiseFailure("the recordset is open already");
    auto* sqliteConnection = dynamic_cast<SqliteConnection*>(&connection);
    if (sqliteConnection == nullptr) RaiseFailure("a connection of another engine");
    const std::shared_ptr<Session> session = sqliteConnection->OpenSession();

    *this = SqliteRecordset();
    const bool bWritable = cursor == CursorKind::Keyset && lock != LockKind::ReadOnly;
    const TextView sTrimmed = Trim(sSource);
    if (nOptions == kOptionTable || IsOneWord(sTrimmed))
        OpenTable(session->Get(), sTrimmed, bWritable);
    else
        OpenQuery(session->Get(), sTrimmed, bWritable);
    m_session = session;
}

void SqliteRecordset::OpenTable(Database& database, TextView sTable, bool bWritable) {
    m_sUnreadTable = ToUtf8(sTable);
    m_result = DescribeTable(database, m_sUnreadTable, bWritable);
    m_bWritable = !m_result->sTable.empty();
    m_bOpen = true;
}

void SqliteRecordset::OpenQuery(Database& database, TextView sSql, bool bWritable) {
    m_result = ReadQuery(database, ToUtf8(sSql), bWritable);
    if (!m_result) return;
    m_bWritable = !m_result->sTable.empty();
    m_bOpen = true;
}

std::int32_t SqliteRecordset::State() const {
    return m_bOpen && m_session->IsOpen() ? kStateOpen : kStateClosed;
}

void SqliteRecordset::Close() {
    TheDatabase();
    *this = SqliteRecordset();
}

bool SqliteRecordset::Bof() const {
    ReadPendingRows();
    return RowCount() == 0 && !m_addedRow;
}

bool SqliteRecordset::Eof() const {
    ReadPendingRows();
    return m_nRow >= RowCount() && !m_addedRow;
}

void SqliteRecordset::MoveFirst() {
    ReadPendingRows();
    DropEdit();
    if (RowCount() == 0) Raise(ErrorNumber::NoCurrentRecord);
    m_addedRow.reset();
    m_nRow = 0;
}

void SqliteRecordset::MoveNext() {
    if (Eof()) Raise(ErrorNumber::NoCurrentRecord);
    DropEdit();
    if (m_addedRow) {
        m_addedRow.reset();
        m_nRow = RowCount();
    } else {
        ++m_nRow;
    }
}

FieldValue SqliteRecordset::Field(TextView sName) {
    Database& database = TheDatabase();
    const std::size_t nColumn = ColumnIndex(sName);
    if (const FieldValue* pending = PendingValue(nColumn)) return *pending;
    if (m_edit == Edit::Adding) return {};
    RequireCurrentRow();
    if (WrittenRow* row = CurrentWrittenRow()) {
        if (row->values.empty()) row->values = ReadRow(database, *m_result, row->nRowId);
        return row->values[nColumn];
    }
    return m_result->packed.Get(m_nRow * m_result->columns.size() + nColumn);
}

void SqliteRecordset::AddNew() {
    TheDatabase();
    if (!m_bWritable) Raise(ErrorNumber::UpdateNotAllowed);
    DropEdit();
    m_edit = Edit::Adding;
}

void SqliteRecordset::SetField(TextView sName, const FieldValue& value) {
    TheDatabase();
    const std::size_t nColumn = ColumnIndex(sName);
    const bool bOfTable = m_bWritable && m_result->columns[nColumn].sTable == m_result->sTable;
    if (!bOfTable) Raise(ErrorNumber::UpdateNotAllowed);
    if (m_edit == Edit::None) {
        RequireCurrentRow();
        m_edit = Edit::Changing;
    }
    std::erase_if(m_pending, [nColumn](const PendingField& p) { return p.nColumn == nColumn; });
    m_pending.push_back({nColumn, value});
}

void SqliteRecordset::Update() {
    TheDatabase();
    const Edit edit = m_edit;
    const std::vector<PendingField> pending = m_pending;
    DropEdit();
    if (edit == Edit::Adding) WriteNewRow(pending);
    if (edit == Edit::Changing) WriteCurrentRow(pending);
}

void SqliteRecordset::WriteNewRow(const std::vector<PendingField>& pending) {
    const std::int64_t nRowId = InsertRow(TheDatabase(), m_result->sTable, Assignments(pending));
    // Its values are read when asked for, as the database has them.
    m_addedRow = WrittenRow{nRowId, {}};
    if (!m_sUnreadTable.empty()) return;  // it will be read with the others
    m_written.emplace(RowCount(), *m_addedRow);
    ++m_nAdded;
}

void SqliteRecordset::WriteCurrentRow(const std::vector<PendingField>& pending) {
    RequireCurrentRow();
    WrittenRow* row = CurrentWrittenRow();
    const std::int64_t nRowId = row ? row->nRowId : m_result->readIds[m_nRow];
    UpdateRow(TheDatabase(), m_result->sTable, nRowId, Assignments(pending));
    if (row && row->values.empty()) return;
    if (!row) {
        const std::size_t nColumns = m_result->columns.size();
        WrittenRow changed{nRowId, m_result->packed.GetRange(m_nRow * nColumns, nColumns)};
        row = &m_written.emplace(m_nRow, std::move(changed)).first->second;
    }
    for (const PendingField& field : pending)
        row->values[field.nColumn] = field.value;
}

Database& SqliteRecordset::TheDatabase() const {
    if (State() != kStateOpen) Raise(ErrorNumber::ObjectClosed);
    return m_session->Get();
}

void SqliteRecordset::ReadPendingRows() const {
    Database& database = TheDatabase();
    if (m_sUnreadTable.empty()) return;
    m_result = ReadTable(database, m_sUnreadTable, m_bWritable);
    m_sUnreadTable.clear();
}

void SqliteRecordset::RequireCurrentRow() const {
    if (m_addedRow) return;
    ReadPendingRows();
    if (m_nRow >= RowCount()) Raise(ErrorNumber::NoCurrentRecord);
}

SqliteRecordset::WrittenRow* SqliteRecordset::CurrentWrittenRow() {
    if (m_addedRow) return &*m_addedRow;
    const auto found = m_written.find(m_nRow);
    return found == m_written.end() ? nullptr : &found->second;
}

std::size_t SqliteRecordset::ColumnIndex(TextView sName) const {
    const auto& columns = m_result->columns;
    const auto found = std::find_if(columns.begin(), columns.end(), [&](const ResultColumn& c) {
        return Equal(c.sName, sName) || EqualNoCase(c.sName, sName);  // mostly written as they are
    });
    if (found == columns.end()) Raise(ErrorNumber::NoSuchField);
    return static_cast<std::size_t>(found - columns.begin());
}

const FieldValue* SqliteRecordset::PendingValue(std::size_t nColumn) const {
    const auto found =
        std::find_if(m_pending.begin(), m_pending.end(),
                     [nColumn](const PendingField& p) { return p.nColumn == nColumn; });
    return found == m_pending.end() ? nullptr : &found->value;
}

void SqliteRecordset::DropEdit() {
    m_edit = Edit::None;
    m_pending.clear();
}

std::vector<Assignment> SqliteRecordset::Assignments(
    const std::vector<PendingField>& pending) const {
    std::vector<Assignment> assignments;
    assignments.reserve(pending.size());
    for (const PendingField& field : pending)
        assignments.push_back({m_result->columns[field.nColumn].sOrigin, field.value});
    return assignments;
}

}  // namespace nomira::sqlite
