#include "apps/nomiractl/OneConnectionEngine.h"

#include "apps/nomiractl/Interrupt.h"
#include "langtools/RuntimeError.h"

namespace nomira::companion {

template <typename Call>
decltype(auto) OneConnectionEngine::Watch(Call call) {
    if (!m_bEnding) RequireNoInterrupt();
    try {
        return call();
    } catch (const RuntimeError& error) {
        if (error.Number() == ErrorNumber::EngineFailure && !m_sFailure)
            m_sFailure = error.Description();
        throw;
    }
}

// What the core takes for its connection: open and closed as the core has it, on the one
// connection of the engine.
class PassConnection : public Connection {
  public:
    explicit PassConnection(OneConnectionEngine& engine) : m_engine(engine) {}

    void SetProvider(TextView) override {}
    void SetConnectionText(TextView sText) override { m_sText = sText; }

    void Open(TextView sText, TextView sUser, TextView sPassword, std::int32_t nOptions) override {
        if (!sText.empty()) m_sText = sText;
        m_engine.OpenInner(m_sText, sUser, sPassword, nOptions);
        m_bOpen = true;
    }
    std::int32_t State() const override { return m_bOpen ? kStateOpen : kStateClosed; }
    void Close() override {
        RequireOpen();
        m_bOpen = false;
    }

    // The core never begins one, and must not end ours.
    void BeginTrans() override { Raise(ErrorNumber::EngineFailure); }
    void CommitTrans() override { Raise(ErrorNumber::EngineFailure); }
    void RollbackTrans() override { Raise(ErrorNumber::EngineFailure); }

    void RequireOpen() const {
        if (!m_bOpen) Raise(ErrorNumber::ObjectClosed);
    }

  private:
    OneConnectionEngine& m_engine;
    Text m_sText;
    bool m_bOpen = false;
};

class PassRecordset : public Recordset {
  public:
    explicit PassRecordset(OneConnectionEngine& engine)
        : m_engine(engine), m_inner(engine.m_inner.CreateRecordset()) {}

    void Open(TextView sSource, Connection& connection, CursorKind cursor, LockKind lock,
              std::int32_t nOptions) override {
        dynamic_cast<PassConnection&>(connection).RequireOpen();
        m_engine.Watch([&] { m_inner->Open(sSource, m_engine.Inner(), cursor, lock, nOptions); });
    }
    std::int32_t State() const override { return m_inner->State(); }
    void Close() override { m_inner->Close(); }
    bool Bof() const override {
        return m_engine.Watch([&] { return m_inner->Bof(); });
    }
    bool Eof() const override {
        return m_engine.Watch([&] { return m_inner->Eof(); });
    }
    void MoveFirst() override {
        m_engine.Watch([&] { m_inner->MoveFirst(); });
    }
    void MoveNext() override {
        m_engine.Watch([&] { m_inner->MoveNext(); });
    }
    FieldValue Field(TextView sName) override {
        return m_engine.Watch([&] { return m_inner->Field(sName); });
    }
    void AddNew() override { m_inner->AddNew(); }
    void SetField(TextView sName, const FieldValue& value) override {
        m_inner->SetField(sName, value);
    }
    void Update() override {
        m_engine.Watch([&] { m_inner->Update(); });
    }

  private:
    OneConnectionEngine& m_engine;
    std::unique_ptr<Recordset> m_inner;
};

OneConnectionEngine::OneConnectionEngine(DatabaseEngine& inner) : m_inner(inner) {
    SetDatabaseEngine(this);
}

OneConnectionEngine::~OneConnectionEngine() {
    try {
        if (m_bTransaction) Rollback();
    } catch (const RuntimeError&) {
        // The connection's own end rolls back too.
    }
    SetDatabaseEngine(&m_inner);
}

std::unique_ptr<Connection> OneConnectionEngine::CreateConnection() {
    return std::make_unique<PassConnection>(*this);
}

std::unique_ptr<Recordset> OneConnectionEngine::CreateRecordset() {
    return std::make_unique<PassRecordset>(*this);
}

void OneConnectionEngine::CompactDatabase(TextView /*sSource*/, TextView /*sDestination*/) {
    Raise(ErrorNumber::EngineFailure);
}

void OneConnectionEngine::Begin() {
    Watch([this] { Inner().BeginTrans(); });
    m_bTransaction = true;
}

void OneConnectionEngine::Commit() {
    RequireNoInterrupt();
    m_bEnding = true;
    Watch([this] { Inner().CommitTrans(); });
    m_bTransaction = false;
    m_connection.reset();
}

void OneConnectionEngine::Rollback() {
    m_bEnding = true;
    m_bTransaction = false;
    Watch([this] { Inner().RollbackTrans(); });
}

void OneConnectionEngine::OpenInner(TextView sConnectionText, TextView sUser, TextView sPassword,
                                    std::int32_t nOptions) {
    if (m_connection) {
        if (m_sConnectionText != sConnectionText) Raise(ErrorNumber::EngineFailure);
        return;
    }
    Watch([&] {
        std::unique_ptr<Connection> connection = m_inner.CreateConnection();
        connection->SetConnectionText(sConnectionText);
        connection->Open(u"", sUser, sPassword, nOptions);
        m_connection = std::move(connection);
    });
    m_sConnectionText = sConnectionText;
}

Connection& OneConnectionEngine::Inner() const {
    if (!m_connection) Raise(ErrorNumber::ObjectClosed);
    return *m_connection;
}

}  // namespace nomira::companion
