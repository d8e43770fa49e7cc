#include "adapters/sqlite/SqliteEngine.h"

#include <utility>

#include "adapters/sqlite/ConnectionText.h"
#include "adapters/sqlite/Failure.h"
#include "adapters/sqlite/SqliteRecordset.h"

namespace nomira::sqlite {
namespace {

// SQLite's statistics of its memory cost a lock for every allocation, an eighth of a look-up's
// time, and nobody reads them. Refused, without harm, once SQLite is at work in this process.
void SwitchStatisticsOff() {
    sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0);
}

// The path that a connection text names.
TextView NamedPath(TextView sConnectionText) {
    const TextView sPath = DatabasePath(sConnectionText);
    if (sPath.empty()) RaiseFailure("the connection text names no file");
    return sPath;
}

}  // namespace

SqliteEngine::SqliteEngine(ResolvePath resolvePath, Clock clock)
    : m_resolvePath(std::move(resolvePath)),
      m_pool(std::make_shared<DatabasePool>(m_resolvePath, std::move(clock))) {
    SwitchStatisticsOff();
}

std::unique_ptr<Connection> SqliteEngine::CreateConnection() {
    return std::make_unique<SqliteConnection>(m_pool);
}

std::unique_ptr<Recordset> SqliteEngine::CreateRecordset() {
    return std::make_unique<SqliteRecordset>();
}

void SqliteEngine::CompactDatabase(TextView sSource, TextView sDestination) {
    const TextView sSourcePath = NamedPath(sSource);
    const std::filesystem::path destination = m_resolvePath(NamedPath(sDestination));
    // Not given back to the pool: the caller is about to put the copy in the source's place.
    const std::unique_ptr<Database> database = m_pool->Take(sSourcePath);
    if (!database->Rest()) RaiseFailure("the database is in use");
    database->MakeCompacted(destination, EngineType(sDestination));
}

}  // namespace nomira::sqlite
