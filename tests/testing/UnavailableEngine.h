// A database engine without a database: whatever is asked of it fails. While it lives it is the
// engine.
#pragma once

#include <memory>

#include "database/DatabaseEngine.h"
#include "langtools/RuntimeError.h"

namespace nomira::testing {

class UnavailableEngine : public DatabaseEngine {
  public:
    UnavailableEngine() { SetDatabaseEngine(this); }
    ~UnavailableEngine() override { SetDatabaseEngine(nullptr); }
    UnavailableEngine(const UnavailableEngine&) = delete;
    UnavailableEngine& operator=(const UnavailableEngine&) = delete;

    int nAsked = 0;

    std::unique_ptr<Connection> CreateConnection() override { return Fail(); }
    std::unique_ptr<Recordset> CreateRecordset() override { return Fail(); }
    void CompactDatabase(TextView, TextView) override { Fail(); }

  private:
    std::nullptr_t Fail() {
        ++nAsked;
        Raise(ErrorNumber::EngineFailure);
    }
};

}  // namespace nomira::testing
