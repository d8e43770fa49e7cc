// A database engine that passes every operation on to the engine in use, writes it down, and fails
// where a test wants it to. While it lives it is the engine itself.
#pragma once

#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "database/DatabaseEngine.h"
#include "langtools/RuntimeError.h"

namespace nomira::testing {

class ForwardingEngine : public DatabaseEngine {
  public:
    ForwardingEngine() : m_inner(TheDatabaseEngine()) { SetDatabaseEngine(this); }
    ~ForwardingEngine() override { SetDatabaseEngine(&m_inner); }
    ForwardingEngine(const ForwardingEngine&) = delete;
    ForwardingEngine& operator=(const ForwardingEngine&) = delete;

    // What was asked, in order: u"open connection", u"close connection", u"open " and the
    // recordset's source, u"first", u"next", u"field " and its name, u"close recordset". Writing
    // a row is not noted.
    std::vector<Text> operations;
    // Runs behind the noting of an operation and ahead of the operation itself.
    std::function<void(const Text& sOperation)> before;
    // The kinds with which the last recordset was opened.
    CursorKind cursor{};
    LockKind lock{};

    // Makes the `nTh` operation from now on that begins with `sOperation`, counted from 1, raise
    // EngineFailure.
    void FailAt(Text sOperation, int nTh) {
        m_sFailing = std::move(sOperation);
        m_nUntilFailure = nTh;
    }
    int Count(TextView sOperation) const {
        int nCount = 0;
        for (const Text& s : operations)
            nCount += s.starts_with(sOperation) ? 1 : 0;
        return nCount;
    }

    std::unique_ptr<nomira::Connection> CreateConnection() override;
    std::unique_ptr<nomira::Recordset> CreateRecordset() override;
    void CompactDatabase(TextView sSource, TextView sDestination) override {
        m_inner.CompactDatabase(sSource, sDestination);
    }

  private:
    class Connection;
    class Recordset;

    void Note(Text sOperation) {
        operations.push_back(sOperation);
        if (before) before(sOperation);
        if (m_nUntilFailure > 0 && sOperation.starts_with(m_sFailing) && --m_nUntilFailure == 0)
            Raise(ErrorNumber::EngineFailure);
    }

    DatabaseEngine& m_inner;
    Text m_sFailing;
    int m_nUntilFailure = 0;
};

class ForwardingEngine::Connection : public nomira::Connection {
  public:
    Connection(ForwardingEngine& engine, std::unique_ptr<nomira::Connection> inner)
        : m_engine(engine), m_inner(std::move(inner)) {}

    nomira::Connection& Inner() { return *m_inner; }

    void SetProvider(TextView sProvider) override { m_inner->SetProvider(sProvider); }
    void SetConnectionText(TextView sText) override { m_inner->SetConnectionText(sText); }
    void Open(TextView sText, TextView sUser, TextView sPassword, std::int32_t nOptions) override {
        m_engine.Note(u"open connection");
        m_inner->Open(sText, sUser, sPassword, nOptions);
    }
    std::int32_t State() const override { return m_inner->State(); }
    void Close() override {
        m_engine.Note(u"close connection");
        m_inner->Close();
    }
    void BeginTrans() override { m_inner->BeginTrans(); }
    void CommitTrans() override { m_inner->CommitTrans(); }
    void RollbackTrans() override { m_inner->RollbackTrans(); }

  private:
    ForwardingEngine& m_engine;
    std::unique_ptr<nomira::Connection> m_inner;
};

class ForwardingEngine::Recordset : public nomira::Recordset {
  public:
    Recordset(ForwardingEngine& engine, std::unique_ptr<nomira::Recordset> inner)
        : m_engine(engine), m_inner(std::move(inner)) {}

    void Open(TextView sSource, nomira::Connection& connection, CursorKind cursor, LockKind lock,
              std::int32_t nOptions) override {
        m_engine.cursor = cursor;
        m_engine.lock = lock;
        m_engine.Note(Text(u"open ").append(sSource));
        m_inner->Open(sSource, dynamic_cast<ForwardingEngine::Connection&>(connection).Inner(),
                      cursor, lock, nOptions);
    }
    std::int32_t State() const override { return m_inner->State(); }
    void Close() override {
        m_engine.Note(u"close recordset");
        m_inner->Close();
    }
    bool Bof() const override { return m_inner->Bof(); }
    bool Eof() const override { return m_inner->Eof(); }
    void MoveFirst() override {
        m_engine.Note(u"first");
        m_inner->MoveFirst();
    }
    void MoveNext() override {
        m_engine.Note(u"next");
        m_inner->MoveNext();
    }
    FieldValue Field(TextView sName) override {
        m_engine.Note(Text(u"field ").append(sName));
        return m_inner->Field(sName);
    }
    void AddNew() override { m_inner->AddNew(); }
    void SetField(TextView sName, const FieldValue& value) override {
        m_inner->SetField(sName, value);
    }
    void Update() override { m_inner->Update(); }

  private:
    ForwardingEngine& m_engine;
    std::unique_ptr<nomira::Recordset> m_inner;
};

inline std::unique_ptr<nomira::Connection> ForwardingEngine::CreateConnection() {
    return std::make_unique<Connection>(*this, m_inner.CreateConnection());
}

inline std::unique_ptr<nomira::Recordset> ForwardingEngine::CreateRecordset() {
    return std::make_unique<Recordset>(*this, m_inner.CreateRecordset());
}

}  // namespace nomira::testing
