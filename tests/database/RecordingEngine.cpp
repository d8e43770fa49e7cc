#include "database/RecordingEngine.h"

#include "langtools/RuntimeError.h"
#include "testing/TextPrinting.h"

namespace nomira::testing {
namespace {

const std::string kRecordsetOpen = "recordset open ";

std::string CursorName(CursorKind cursor) {
    return cursor == CursorKind::Keyset ? "keyset" : "static";
}

std::string LockName(LockKind lock) {
    switch (lock) {
        case LockKind::ReadOnly:
            return "read-only";
        case LockKind::Pessimistic:
            return "pessimistic";
        default:
            return "optimistic";
    }
}

class RecordingConnection : public Connection {
  public:
    RecordingConnection(RecordingEngine& engine, std::unique_ptr<Connection> inner)
        : m_engine(engine), m_inner(std::move(inner)) {
        ++m_engine.nConnections;
    }
    ~RecordingConnection() override { --m_engine.nConnections; }

    Connection& Inner() { return *m_inner; }

    void SetProvider(TextView sProvider) override {
        m_engine.Note("provider " + Printable(sProvider));
        m_inner->SetProvider(sProvider);
    }
    void SetConnectionText(TextView sText) override {
        m_engine.Note("text " + Printable(sText));
        m_inner->SetConnectionText(sText);
    }
    void Open(TextView sText, TextView sUser, TextView sPassword, std::int32_t nOptions) override {
        m_engine.Note("open '" + Printable(sText) + "' '" + Printable(sUser) + "' '" +
                      Printable(sPassword) + "' " + std::to_string(nOptions));
        m_inner->Open(sText, sUser, sPassword, nOptions);
    }
    std::int32_t State() const override {
        m_engine.Note("state");
        return m_inner->State();
    }
    void Close() override {
        m_engine.Note("close");
        m_inner->Close();
    }
    void BeginTrans() override {
        m_engine.Note("begin");
        m_inner->BeginTrans();
    }
    void CommitTrans() override {
        m_engine.Note("commit");
        m_inner->CommitTrans();
    }
    void RollbackTrans() override {
        m_engine.Note("rollback");
        m_inner->RollbackTrans();
    }

  private:
    RecordingEngine& m_engine;
    std::unique_ptr<Connection> m_inner;
};

class RecordingRecordset : public Recordset {
  public:
    RecordingRecordset(RecordingEngine& engine, std::unique_ptr<Recordset> inner)
        : m_engine(engine), m_inner(std::move(inner)) {
        ++m_engine.nRecordsets;
    }
    ~RecordingRecordset() override { --m_engine.nRecordsets; }

    void Open(TextView sSource, Connection& connection, CursorKind cursor, LockKind lock,
              std::int32_t nOptions) override {
        m_engine.Note(kRecordsetOpen + Printable(sSource) + " | " + CursorName(cursor) + ' ' +
                      LockName(lock) + ' ' + std::to_string(nOptions));
        auto& recording = dynamic_cast<RecordingConnection&>(connection);
        m_inner->Open(sSource, recording.Inner(), cursor, lock, nOptions);
    }
    std::int32_t State() const override { return m_inner->State(); }
    void Close() override {
        m_engine.Note("recordset close");
        m_inner->Close();
    }
    bool Bof() const override { return m_inner->Bof(); }
    bool Eof() const override { return m_inner->Eof(); }
    void MoveFirst() override {
        m_engine.Note("first");
        m_inner->MoveFirst();
    }
    void MoveNext() override {
        m_engine.Note("next");
        m_inner->MoveNext();
    }
    FieldValue Field(TextView sName) override {
        m_engine.Note("field " + Printable(sName));
        return m_inner->Field(sName);
    }
    void AddNew() override {
        m_engine.Note("add");
        m_inner->AddNew();
    }
    void SetField(TextView sName, const FieldValue& value) override {
        m_engine.Note("set " + Printable(sName));
        m_inner->SetField(sName, value);
    }
    void Update() override {
        m_engine.Note("update");
        m_inner->Update();
    }

  private:
    RecordingEngine& m_engine;
    std::unique_ptr<Recordset> m_inner;
};

}  // namespace

RecordingEngine::RecordingEngine(DatabaseEngine& inner) : m_inner(inner) {
    SetDatabaseEngine(this);
}

RecordingEngine::~RecordingEngine() {
    SetDatabaseEngine(&m_inner);
}

std::vector<std::string> RecordingEngine::Opened() const {
    std::vector<std::string> opened;
    for (const std::string& sCall : calls)
        if (sCall.rfind(kRecordsetOpen, 0) == 0) opened.push_back(sCall.substr(15));
    return opened;
}

std::unique_ptr<Connection> RecordingEngine::CreateConnection() {
    return std::make_unique<RecordingConnection>(*this, m_inner.CreateConnection());
}

std::unique_ptr<Recordset> RecordingEngine::CreateRecordset() {
    return std::make_unique<RecordingRecordset>(*this, m_inner.CreateRecordset());
}

void RecordingEngine::CompactDatabase(TextView sSource, TextView sDestination) {
    Note("compact " + Printable(sSource) + " | " + Printable(sDestination));
    m_inner.CompactDatabase(sSource, sDestination);
}

void RecordingEngine::Note(const std::string& sCall) {
    calls.push_back(sCall);
    if (!m_sFailing.empty() && sCall.rfind(m_sFailing, 0) == 0) Raise(ErrorNumber::EngineFailure);
}

}  // namespace nomira::testing
