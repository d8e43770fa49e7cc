// The database engine over SQLite files and Access files, whichever lies at a path.
//
// Closed connections' handles stay warm in a pool; the file itself is held by nobody then. The
// process must not open and close a database file by other means while the engine lives: closing
// any descriptor of a file ends all locks that the process has on it.
#pragma once

#include <memory>

#include "adapters/sqlite/SqliteConnection.h"
#include "database/DatabaseEngine.h"

namespace nomira::sqlite {

class SqliteEngine : public DatabaseEngine {
  public:
    // `resolvePath` finds the file that a path of the program, such as
    // C:\tqx\data\orvo_con.mdb, means on this machine. `clock` tells how long ago a file was
    // changed.
    explicit SqliteEngine(ResolvePath resolvePath, Clock clock = SystemTime);

    std::unique_ptr<Connection> CreateConnection() override;
    std::unique_ptr<Recordset> CreateRecordset() override;

    // The copy has the source's rights. "Engine Type" in the destination means nothing for an
    // SQLite file; an Access file becomes one of that kind.
    void CompactDatabase(TextView sSource, TextView sDestination) override;

  private:
    ResolvePath m_resolvePath;
    std::shared_ptr<DatabasePool> m_pool;
};

}  // namespace nomira::sqlite
