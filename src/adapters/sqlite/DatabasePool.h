// Keeps the handles of closed connections warm, for a program that opens the same file once per
// name it looks up. A file at rest is held by nobody, so a warm handle is in nobody's way.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <unordered_map>
#include <utility>
#include <vector>

#include "adapters/sqlite/Database.h"
#include "langtools/Text.h"

namespace nomira::sqlite {

// The file that a path of the program means on this machine.
using ResolvePath = std::function<std::filesystem::path(TextView)>;

// The database at the path, of the kind that the file says it is of. Raises EngineFailure.
std::unique_ptr<Database> MakeDatabase(const std::filesystem::path& path,
                                       const FileIdentity& identity);

class DatabasePool {
  public:
    DatabasePool(ResolvePath resolvePath, Clock clock)
        : m_resolvePath(std::move(resolvePath)), m_clock(std::move(clock)) {}

    // A handle on the file that a path of the program means now, looked at anew in any case: a file
    // that was deleted, replaced, damaged or locked meanwhile is seen. Raises EngineFailure.
    std::unique_ptr<Database> Take(TextView sPath);

    // Puts the database to rest and keeps its handle; closes it where that can't be.
    void GiveBack(std::unique_ptr<Database> database);

  private:
    // Out of what is kept, for the file; nullptr if there is none.
    std::unique_ptr<Database> TakeKept(const std::filesystem::path& path);
    // For the path of the program, if the file stands as it did when it was last read. The path
    // isn't resolved anew then.
    std::unique_ptr<Database> TakeUnchanged(TextView sPath);
    void Keep(std::unique_ptr<Database> database);

    ResolvePath m_resolvePath;
    Clock m_clock;
    std::vector<std::unique_ptr<Database>> m_kept;               // one per file, the oldest first
    std::unordered_map<Text, std::filesystem::path> m_resolved;  // as each was last resolved
};

}  // namespace nomira::sqlite
