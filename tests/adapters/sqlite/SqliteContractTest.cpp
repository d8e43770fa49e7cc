// The engine's contract over SQLite, with the file on a disk and with the file in memory.
#include "adapters/contracts/DatabaseEngineContract.h"

#include <filesystem>

#include "testing/TestDatabase.h"

namespace nomira::testing {
namespace {

class SqliteWorld : public EngineWorld {
  public:
    explicit SqliteWorld(const std::filesystem::path& parent) : m_database(parent) {}

    DatabaseEngine& Engine() override { return m_database.Engine(); }
    Text StorePath() const override { return u"C:\\tqx\\data\\orvo_con.mdb"; }
    Text FreePath() const override { return u"C:\\tqx\\data\\free.mdb"; }
    Text MissingPath() const override { return u"C:\\tqx\\data\\missing.mdb"; }
    void Execute(const std::string& sSql) override { m_database.Execute(sSql); }

  private:
    TestDatabase m_database;
};

INSTANTIATE_TEST_SUITE_P(
    Sqlite, DatabaseEngineContract,
    ::testing::Values(
        WorldMaker{
            "OnDisk",
            [] { return std::make_unique<SqliteWorld>(std::filesystem::temp_directory_path()); }},
        WorldMaker{"InMemory",
                   [] { return std::make_unique<SqliteWorld>(std::filesystem::path()); }}),
    WorldName);

}  // namespace
}  // namespace nomira::testing
