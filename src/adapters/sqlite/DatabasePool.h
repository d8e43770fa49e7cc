// Keeps the handles of closed connections warm, for a program that opens the same file once per
// name it looks up. A file at rest is held by nobody, so a warm handle is in nobody's way.
#pragma once

#include <filesystem>
#include <memory>
#include <vector>

#include "adapters/sqlite/Database.h"

namespace nomira::sqlite {

class DatabasePool {
  public:
    // A handle on the file that stands at the path now, looked at anew in any case: a file that
    // was deleted, replaced, damaged or locked meanwhile is seen. Raises EngineFailure.
    std::unique_ptr<Database> Take(const std::filesystem::path& path);

    // Puts the database to rest and keeps its handle; closes it where that can't be.
    void GiveBack(std::unique_ptr<Database> database);

    // Closes what is kept for the path.
    void Forget(const std::filesystem::path& path);

  private:
    std::unique_ptr<Database> TakeKept(const std::filesystem::path& path);
    void Keep(std::unique_ptr<Database> database);

    std::vector<std::unique_ptr<Database>> m_kept;  // one per path, the oldest first
};

}  // namespace nomira::sqlite
