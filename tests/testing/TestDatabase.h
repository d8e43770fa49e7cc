// A long-text store of its own for a test: a fresh file in a temporary folder, and the engine that
// finds it under the program's own path.
//
// A test program that doesn't say which format it wants is run once for each: NOMIRA_TEST_STORE
// names it, "sqlite" (also without it), "jet3" or "jet4".
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "adapters/jet/AccessFile.h"
#include "adapters/sqlite/SqliteEngine.h"
#include "adapters/sqlite/StoreSchema.h"
#include "testing/TemporaryFolder.h"

namespace nomira::testing {

using sqlite::StoreFormat;

// The one that this run of the test program is for.
StoreFormat FormatUnderTest();
// As NOMIRA_TEST_STORE and the companion's --format have it.
std::string_view WordOf(StoreFormat format);

// A new Access file with these tables alone, whatever lies at the path.
void WriteAccessFile(const std::filesystem::path& path, StoreFormat format,
                     const std::vector<jet::NewTable>& tables);

// A store that refuses keys and texts of more than ten characters, in the place of what is there.
void CreateRefusingStore(const std::filesystem::path& path, StoreFormat format);

class TestDatabase {
  public:
    // Makes the folder with an empty store in it and installs the engine. A database path of the
    // program means the file of the same name, in lower case, in the folder, so that
    // C:\tqx\data\orvo_con.mdb is the store; the catalogue and the compaction's file don't exist
    // yet. The folder is made below `parent`, or in memory if that is empty. `clock` is the
    // engine's.
    explicit TestDatabase(const std::filesystem::path& parent = {},
                          sqlite::Clock clock = sqlite::SystemTime,
                          StoreFormat format = FormatUnderTest());
    // Closes the shared connection and removes engine and folder.
    ~TestDatabase();
    TestDatabase(const TestDatabase&) = delete;
    TestDatabase& operator=(const TestDatabase&) = delete;

    // Runs statements on the store through a handle of its own; throws std::runtime_error with
    // SQLite's words. An SQLite file's relations are not enforced, so that odd rows can be made.
    void Execute(const std::string& sSql) const;
    // The rows of a query, UTF-8, Null as "<null>".
    std::vector<std::vector<std::string>> Query(const std::string& sSql) const;

    // What is wrong with the store's file, by its format's own check; none for a sound one.
    std::vector<std::string> Damage() const;

    // The store's file.
    std::filesystem::path Path() const { return m_folder / "orvo_con.mdb"; }
    std::filesystem::path Folder() const { return m_folder.Path(); }
    // The names of all files there in their order, each with a blank behind it.
    std::string FilesInFolder() const;
    // Where a path of the program leads to.
    std::filesystem::path FileOf(TextView sPath) const;
    // Removes the store's file.
    void RemoveFile() const;
    // Makes an empty catalogue, orvo_tab.mdb, and gives its path.
    std::filesystem::path CreateCatalogue() const;

    sqlite::SqliteEngine& Engine() { return m_engine; }
    StoreFormat Format() const { return m_format; }

  private:
    StoreFormat m_format;
    TemporaryFolder m_folder;
    sqlite::SqliteEngine m_engine;
};

// The same as Execute, Query and Damage, on any file.
void ExecuteOn(const std::filesystem::path& path, const std::string& sSql);
std::vector<std::vector<std::string>> QueryOn(const std::filesystem::path& path,
                                              const std::string& sSql);
std::vector<std::string> DamageOn(const std::filesystem::path& path);

}  // namespace nomira::testing
