// A database engine that writes down every call on its way to the real one, and lets a test make
// calls fail.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "database/DatabaseEngine.h"

namespace nomira::testing {

class RecordingEngine : public DatabaseEngine {
  public:
    // Becomes the engine in use, over `inner`, and gives that its place back at the end.
    explicit RecordingEngine(DatabaseEngine& inner);
    ~RecordingEngine() override;

    // One line a call, as "recordset open SELECT ... | keyset optimistic -1".
    std::vector<std::string> calls;
    // The recordset sources among them, without "recordset open ".
    std::vector<std::string> Opened() const;

    // From now on, calls whose line begins so raise EngineFailure.
    void FailCalls(const std::string& sBeginning) { m_sFailing = sBeginning; }

    // Objects that were made and are still there.
    int nConnections = 0;
    int nRecordsets = 0;

    std::unique_ptr<Connection> CreateConnection() override;
    std::unique_ptr<Recordset> CreateRecordset() override;
    void CompactDatabase(TextView sSource, TextView sDestination) override;

    void Note(const std::string& sCall);

  private:
    DatabaseEngine& m_inner;
    std::string m_sFailing;
};

}  // namespace nomira::testing
