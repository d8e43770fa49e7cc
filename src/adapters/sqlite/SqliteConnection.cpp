#include "adapters/sqlite/SqliteConnection.h"

#include <utility>

#include "adapters/sqlite/ConnectionText.h"
#include "adapters/sqlite/Failure.h"
#include "langtools/RuntimeError.h"

namespace nomira::sqlite {

Session::Session(std::unique_ptr<Database> database, std::weak_ptr<DatabasePool> pool)
    : m_database(std::move(database)), m_pool(std::move(pool)) {}

Session::~Session() {
    End();
}

void Session::End() {
    std::unique_ptr<Database> database = std::move(m_database);
    if (!database) return;
    if (const auto pool = m_pool.lock())
        pool->GiveBack(std::move(database));
    else
        database->Rest();
}

SqliteConnection::SqliteConnection(std::weak_ptr<DatabasePool> pool) : m_pool(std::move(pool)) {}

SqliteConnection::~SqliteConnection() {
    if (m_session) m_session->End();
}

void SqliteConnection::SetProvider(TextView /*sProvider*/) {}

void SqliteConnection::SetConnectionText(TextView sText) {
    m_sConnectionText = sText;
}

void SqliteConnection::Open(TextView sText, TextView /*sUser*/, TextView /*sPassword*/,
                            std::int32_t /*nOptions*/) {
    if (m_session) RaiseFailure("the connection is open already");
    if (!sText.empty()) m_sConnectionText = sText;
    const TextView sPath = DatabasePath(m_sConnectionText);
    if (sPath.empty()) RaiseFailure("the connection text names no file");
    const auto pool = m_pool.lock();
    if (!pool) RaiseFailure("the database engine is gone");
    m_session = std::make_shared<Session>(pool->Take(sPath), m_pool);
}

std::int32_t SqliteConnection::State() const {
    return m_session ? kStateOpen : kStateClosed;
}

void SqliteConnection::Close() {
    OpenSession()->End();
    m_session.reset();
}

void SqliteConnection::BeginTrans() {
    OpenSession()->Get().BeginTransaction();
}

void SqliteConnection::CommitTrans() {
    OpenSession()->Get().CommitTransaction();
}

void SqliteConnection::RollbackTrans() {
    OpenSession()->Get().RollbackTransaction();
}

const std::shared_ptr<Session>& SqliteConnection::OpenSession() const {
    if (!m_session) Raise(ErrorNumber::ObjectClosed);
    return m_session;
}

}  // namespace nomira::sqlite
