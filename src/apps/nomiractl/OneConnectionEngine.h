// A database engine that makes one piece of work out of a pass: whatever the core opens and closes
// in between, one connection stays open underneath, and a transaction over all of it can be begun.
// It also keeps the failures that the core traps, and lets an interrupt out between two calls, as
// an Interruption, which the core doesn't trap.
#pragma once

#include <memory>
#include <optional>

#include "database/DatabaseEngine.h"

namespace nomira::companion {

class OneConnectionEngine : public DatabaseEngine {
  public:
    // Works on `inner`, and is the engine in use while it lives; `inner` is so again afterwards.
    explicit OneConnectionEngine(DatabaseEngine& inner);
    // Rolls back what was not committed.
    ~OneConnectionEngine() override;
    OneConnectionEngine(const OneConnectionEngine&) = delete;
    OneConnectionEngine& operator=(const OneConnectionEngine&) = delete;

    // One database for all: opening another one fails.
    std::unique_ptr<Connection> CreateConnection() override;
    std::unique_ptr<Recordset> CreateRecordset() override;
    // Fails: the file is open.
    void CompactDatabase(TextView sSource, TextView sDestination) override;

    // A transaction over what follows, once the core has opened the database. Raise like the
    // connection's own, ObjectClosed without one.
    void Begin();
    // Closes the connection as well: the file is whole and alone then.
    void Commit();
    void Rollback();

    // What the engine said when it failed first, whether or not the core cared.
    const std::optional<Text>& Failure() const { return m_sFailure; }

  private:
    friend class PassConnection;
    friend class PassRecordset;

    // Runs a call of the inner engine and keeps its failure.
    template <typename Call>
    decltype(auto) Watch(Call call);
    void OpenInner(TextView sConnectionText, TextView sUser, TextView sPassword,
                   std::int32_t nOptions);
    Connection& Inner() const;

    DatabaseEngine& m_inner;
    std::unique_ptr<Connection> m_connection;
    Text m_sConnectionText;
    bool m_bTransaction = false;
    bool m_bEnding = false;  // too late for an interrupt
    std::optional<Text> m_sFailure;
};

}  // namespace nomira::companion
