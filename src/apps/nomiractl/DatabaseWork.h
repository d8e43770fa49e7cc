// The message database for the length of one command, with clear words for what goes wrong.
#pragma once

#include <filesystem>
#include <vector>

#include "apps/nomiractl/DatabaseRows.h"
#include "apps/nomiractl/FileChecks.h"
#include "apps/nomiractl/LongTexts.h"
#include "apps/nomiractl/OneConnectionEngine.h"

namespace nomira::companion {

class DatabaseWork {
  public:
    // Checks and opens the file; for writing, begins a transaction too, which ends with Commit and
    // is rolled back otherwise. `engine` must find the file at `path` under the core's path. Throws
    // Refusal.
    DatabaseWork(std::filesystem::path path, DatabaseEngine& engine, DatabaseUse use);

    // What is in it now. Throws Refusal for a file without the tables.
    std::vector<Item> ReadItems();

    // The same with the rows of all languages, as they stand.
    Rows ReadRows();
    // Makes a plan's changes. Throws Refusal if the rows are not as they were planned with.
    void ChangeRows(const std::vector<ItemChange>& changes);

    // Messages without an item, as the engine's own check tells them.
    bool HasLostMessages();
    // What the engine's own check finds wrong with the file; empty for a sound one.
    std::vector<Text> FindDamage();

    // Throws Refusal if the engine has failed since, whether or not the core cared.
    void RequireNoFailure() const;
    // Keeps what was written and closes the file.
    void Commit();

  private:
    template <typename Work>
    decltype(auto) InWords(Work work);
    [[noreturn]] void Refuse(TextView sEngineWords) const;

    std::filesystem::path m_path;
    OneConnectionEngine m_engine;
};

}  // namespace nomira::companion
