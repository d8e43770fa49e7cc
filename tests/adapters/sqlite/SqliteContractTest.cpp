// The engine's contract over SQLite files and both kinds of Access files, with the file on a disk
// and with the file in memory.
#include "adapters/contracts/DatabaseEngineContract.h"

#include <algorithm>
#include <filesystem>

#include "testing/TestDatabase.h"

namespace nomira::testing {
namespace {

class StoreWorld : public EngineWorld {
  public:
    StoreWorld(StoreFormat format, const std::filesystem::path& parent)
        : m_database(parent, sqlite::SystemTime, format) {}

    DatabaseEngine& Engine() override { return m_database.Engine(); }
    Text StorePath() const override { return u"C:\\tqx\\data\\orvo_con.mdb"; }
    Text FreePath() const override { return u"C:\\tqx\\data\\free.mdb"; }
    Text MissingPath() const override { return u"C:\\tqx\\data\\missing.mdb"; }
    void Execute(const std::string& sSql) override { m_database.Execute(sSql); }
    // The order of texts in Access files isn't known for characters beyond the base plane.
    bool CanHold(const Text& sKey) const override {
        const auto isSurrogate = [](char16_t c) { return c >= 0xD800 && c <= 0xDFFF; };
        return m_database.Format() == StoreFormat::Sqlite ||
               std::none_of(sKey.begin(), sKey.end(), isSurrogate);
    }

  private:
    TestDatabase m_database;
};

WorldMaker Maker(const char* sName, StoreFormat format, const std::filesystem::path& parent) {
    return {sName, [=] { return std::make_unique<StoreWorld>(format, parent); }};
}

INSTANTIATE_TEST_SUITE_P(
    Sqlite, DatabaseEngineContract,
    ::testing::Values(Maker("OnDisk", StoreFormat::Sqlite, std::filesystem::temp_directory_path()),
                      Maker("InMemory", StoreFormat::Sqlite, {}),
                      Maker("Jet3", StoreFormat::Jet3, {}), Maker("Jet4", StoreFormat::Jet4, {}),
                      Maker("Jet4OnDisk", StoreFormat::Jet4,
                            std::filesystem::temp_directory_path())),
    WorldName);

}  // namespace
}  // namespace nomira::testing
