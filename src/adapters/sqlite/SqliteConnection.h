// A connection of the data-access layer on a SQLite file.
#pragma once

#include <memory>

#include "adapters/sqlite/DatabasePool.h"
#include "database/DatabaseEngine.h"

namespace nomira::sqlite {

// The database of an open connection. Recordsets know it longer than it lives: it ends with the
// connection's Close, and so do they. They ask for it at every turn, so that asking is one look at
// a pointer.
class Session {
  public:
    // The pool takes the database back at the end, unless it is gone by then.
    Session(std::unique_ptr<Database> database, std::weak_ptr<DatabasePool> pool);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    bool IsOpen() const { return m_database != nullptr; }
    Database& Get() const { return *m_database; }
    void End();

  private:
    std::unique_ptr<Database> m_database;
    std::weak_ptr<DatabasePool> m_pool;
};

class SqliteConnection : public Connection {
  public:
    explicit SqliteConnection(std::weak_ptr<DatabasePool> pool);
    ~SqliteConnection() override;

    // One provider serves all; the text is not looked at.
    void SetProvider(TextView sProvider) override;
    void SetConnectionText(TextView sText) override;

    // A SQLite file has no accounts: user and password are not looked at.
    void Open(TextView sText, TextView sUser, TextView sPassword, std::int32_t nOptions) override;
    std::int32_t State() const override;
    void Close() override;

    void BeginTrans() override;
    void CommitTrans() override;
    // A transaction that is open at Close is rolled back too.
    void RollbackTrans() override;

    // The open database. Raises ObjectClosed.
    const std::shared_ptr<Session>& OpenSession() const;

  private:
    std::weak_ptr<DatabasePool> m_pool;
    Text m_sConnectionText;
    std::shared_ptr<Session> m_session;
};

}  // namespace nomira::sqlite
