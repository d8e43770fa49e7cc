// A database engine of which the first connections fail, and the later ones are those of the
// engine in use. While it lives it is the engine itself.
#pragma once

#include <memory>

#include "database/DatabaseEngine.h"
#include "langtools/RuntimeError.h"

namespace nomira::testing {

class FlakyEngine : public DatabaseEngine {
  public:
    explicit FlakyEngine(int nFailures) : m_inner(TheDatabaseEngine()), m_nFailures(nFailures) {
        SetDatabaseEngine(this);
    }
    ~FlakyEngine() override { SetDatabaseEngine(&m_inner); }
    FlakyEngine(const FlakyEngine&) = delete;
    FlakyEngine& operator=(const FlakyEngine&) = delete;

    std::unique_ptr<Connection> CreateConnection() override {
        if (m_nFailures-- > 0) Raise(ErrorNumber::EngineFailure);
        return m_inner.CreateConnection();
    }
    std::unique_ptr<Recordset> CreateRecordset() override { return m_inner.CreateRecordset(); }
    void CompactDatabase(TextView sSource, TextView sDestination) override {
        m_inner.CompactDatabase(sSource, sDestination);
    }

  private:
    DatabaseEngine& m_inner;
    int m_nFailures;
};

}  // namespace nomira::testing
