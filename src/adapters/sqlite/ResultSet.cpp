#include "adapters/sqlite/ResultSet.h"

#include <algorithm>
#include <utility>

#include "adapters/sqlite/Database.h"
#include "adapters/sqlite/Failure.h"
#include "langtools/RuntimeError.h"
#include "langtools/Utf8.h"

namespace nomira::sqlite {
namespace {

constexpr std::string_view kSelect = "SELECT ";

std::string OrEmpty(const char* sText) {
    return sText == nullptr ? std::string() : std::string(sText);
}

std::string Quoted(std::string_view sName) {
    std::string sQuoted = "\"";
    for (const char c : sName) {
        if (c == '"') sQuoted += c;
        sQuoted += c;
    }
    return sQuoted + '"';
}

// The elements with "," between them, each written by `write`.
template <typename List, typename Write>
std::string Joined(const List& list, Write write) {
    std::string sJoined;
    for (const auto& element : list) {
        if (!sJoined.empty()) sJoined += ',';
        sJoined += write(element);
    }
    return sJoined;
}

void BindValue(sqlite3_stmt* statement, int nParameter, const FieldValue& value) {
    int nResult = SQLITE_OK;
    if (const auto* nValue = std::get_if<std::int64_t>(&value)) {
        nResult = sqlite3_bind_int64(statement, nParameter, *nValue);
    } else if (const auto* nReal = std::get_if<double>(&value)) {
        nResult = sqlite3_bind_double(statement, nParameter, *nReal);
    } else if (const auto* sValue = std::get_if<Text>(&value)) {
        const std::string sBytes = ToUtf8(*sValue);
        nResult = sqlite3_bind_text(statement, nParameter, sBytes.data(),
                                    static_cast<int>(sBytes.size()), SQLITE_TRANSIENT);
    } else {
        nResult = sqlite3_bind_null(statement, nParameter);
    }
    if (nResult != SQLITE_OK) RaiseFailure(sqlite3_db_handle(statement));
}

int BindValues(sqlite3_stmt* statement, const std::vector<Assignment>& assignments) {
    int nParameter = 0;
    for (const Assignment& assignment : assignments)
        BindValue(statement, ++nParameter, assignment.value);
    return nParameter;
}

// `nFirst` is 1 where the hidden row id stands in front of the columns, else 0.
std::vector<ResultColumn> ReadColumns(sqlite3_stmt* statement, int nFirst) {
    std::vector<ResultColumn> columns;
    for (int nColumn = nFirst; nColumn < sqlite3_column_count(statement); ++nColumn)
        columns.push_back({FromUtf8(OrEmpty(sqlite3_column_name(statement, nColumn))),
                           OrEmpty(sqlite3_column_table_name(statement, nColumn)),
                           OrEmpty(sqlite3_column_origin_name(statement, nColumn))});
    return columns;
}

// The current row's columns from `nFirst` on.
void PackRow(sqlite3_stmt* statement, int nFirst, PackedValues& packed) {
    const int nCount = sqlite3_column_count(statement);
    for (int nColumn = nFirst; nColumn < nCount; ++nColumn)
        packed.Append(statement, nColumn);
}

void ReadRows(Database& database, sqlite3_stmt* statement, int nFirst, ResultSet& result) {
    for (; database.Step(statement); ++result.nRead) {
        if (nFirst == 1) result.readIds.push_back(sqlite3_column_int64(statement, 0));
        PackRow(statement, nFirst, result.packed);
    }
}

bool StartsWithSelect(std::string_view sSql) {
    return sSql.size() > kSelect.size() &&
           sqlite3_strnicmp(sSql.data(), kSelect.data(), static_cast<int>(kSelect.size())) == 0;
}

std::string LowerCase(std::string_view sText) {
    std::string sLower(sText);
    for (char& c : sLower)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return sLower;
}

// Whether a column more in front would change the query: groups are no rows of a table, and
// "ORDER BY 1" counts the columns.
bool MindsItsColumns(std::string_view sSql) {
    const std::string sLower = LowerCase(sSql);
    if (sLower.find("group by") != std::string::npos) return true;
    const std::size_t nOrder = sLower.rfind("order by");
    if (nOrder == std::string::npos) return false;
    return sLower.find_first_of("0123456789", nOrder) != std::string::npos;
}

// The query with the row id as a hidden column in front; empty where it can't have one.
StatementPtr PrepareWithRowId(Database& database, std::string_view sSql) {
    if (!StartsWithSelect(sSql) || MindsItsColumns(sSql)) return nullptr;
    std::string sHidden = "SELECT rowid AS nomira_rowid, ";
    sHidden += sSql.substr(kSelect.size());
    try {
        return database.Prepare(sHidden);
    } catch (const RuntimeError&) {
        return nullptr;
    }
}

std::string SelectTable(std::string_view sTable, bool bWritable) {
    return (bWritable ? "SELECT rowid AS nomira_rowid, * FROM " : "SELECT * FROM ") +
           Quoted(sTable);
}

std::shared_ptr<ResultSet> Describe(sqlite3_stmt* statement, bool bWritable) {
    auto result = std::make_shared<ResultSet>();
    result->columns = ReadColumns(statement, bWritable ? 1 : 0);
    if (bWritable) result->sTable = OrEmpty(sqlite3_column_table_name(statement, 0));
    return result;
}

std::string InsertText(const std::string& sTable, const std::vector<Assignment>& assignments) {
    const std::string sInsert = "INSERT INTO " + Quoted(sTable);
    if (assignments.empty()) return sInsert + " DEFAULT VALUES";
    const auto column = [](const Assignment& a) { return Quoted(a.sColumn); };
    const auto parameter = [](const Assignment&) { return std::string("?"); };
    return sInsert + '(' + Joined(assignments, column) + ") VALUES(" +
           Joined(assignments, parameter) + ')';
}

std::string UpdateText(const std::string& sTable, const std::vector<Assignment>& assignments) {
    const auto assign = [](const Assignment& a) { return Quoted(a.sColumn) + "=?"; };
    return "UPDATE " + Quoted(sTable) + " SET " + Joined(assignments, assign) + " WHERE rowid=?";
}

std::string ReadRowText(const ResultSet& result) {
    const auto column = [&](const ResultColumn& c) {
        return c.sTable == result.sTable ? Quoted(c.sOrigin) : std::string("NULL");
    };
    return "SELECT " + Joined(result.columns, column) + " FROM " + Quoted(result.sTable) +
           " WHERE rowid=?";
}

}  // namespace

std::shared_ptr<const ResultSet> ReadQuery(Database& database, const std::string& sSql,
                                           bool bWritable) {
    if (auto remembered = database.Recall(sSql, bWritable)) return remembered;
    StatementPtr statement = bWritable ? PrepareWithRowId(database, sSql) : nullptr;
    const int nFirst = statement ? 1 : 0;
    if (!statement) statement = database.Prepare(sSql);

    auto result = std::make_shared<ResultSet>();
    result->columns = ReadColumns(statement.get(), nFirst);
    if (nFirst == 1) result->sTable = OrEmpty(sqlite3_column_table_name(statement.get(), 0));
    ReadRows(database, statement.get(), nFirst, *result);
    if (result->columns.empty()) return nullptr;
    database.Remember(sSql, bWritable, result);
    return result;
}

std::shared_ptr<const ResultSet> DescribeTable(Database& database, std::string_view sTable,
                                               bool bWritable) {
    return Describe(database.PrepareOnce(SelectTable(sTable, bWritable)), bWritable);
}

std::shared_ptr<const ResultSet> ReadTable(Database& database, std::string_view sTable,
                                           bool bWritable) {
    sqlite3_stmt* statement = database.PrepareOnce(SelectTable(sTable, bWritable));
    const StatementUse use(statement);
    auto result = Describe(statement, bWritable);
    ReadRows(database, statement, bWritable ? 1 : 0, *result);
    return result;
}

std::int64_t InsertRow(Database& database, const std::string& sTable,
                       const std::vector<Assignment>& assignments) {
    sqlite3_stmt* statement = database.PrepareOnce(InsertText(sTable, assignments));
    const StatementUse use(statement);
    BindValues(statement, assignments);
    database.Step(statement);
    return sqlite3_last_insert_rowid(database.Handle());
}

void UpdateRow(Database& database, const std::string& sTable, std::int64_t nRowId,
               const std::vector<Assignment>& assignments) {
    sqlite3_stmt* statement = database.PrepareOnce(UpdateText(sTable, assignments));
    const StatementUse use(statement);
    const int nParameters = BindValues(statement, assignments);
    sqlite3_bind_int64(statement, nParameters + 1, nRowId);
    database.Step(statement);
    if (sqlite3_changes(database.Handle()) == 0) RaiseFailure("the row is gone");
}

std::vector<FieldValue> ReadRow(Database& database, const ResultSet& result, std::int64_t nRowId) {
    sqlite3_stmt* statement = database.PrepareOnce(ReadRowText(result));
    const StatementUse use(statement);
    sqlite3_bind_int64(statement, 1, nRowId);
    if (!database.Step(statement)) RaiseFailure("the row is gone");
    PackedValues packed;
    PackRow(statement, 0, packed);
    return packed.GetRange(0, packed.Count());
}

}  // namespace nomira::sqlite
