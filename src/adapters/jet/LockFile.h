// The lock file that Access keeps beside a database while somebody has it open: who that is, and
// locks on bytes behind its end for as long as he has.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace nomira::jet {

struct LockFileUser {
    std::string sComputer;
    std::string sName;
    // Whether he has the database open now; the names of others who had stay in the file.
    bool bPresent = false;

    bool operator==(const LockFileUser&) const = default;
};

// The lock file beside the database; nullopt if there is none.
std::optional<std::filesystem::path> FindLockFile(const std::filesystem::path& database);

// In the order of the file. What the makers' character set holds beyond ASCII comes as question
// marks. Raises InputOutput.
std::vector<LockFileUser> ReadLockFile(const std::filesystem::path& lockFile);

// Whether somebody has the database open by all that can be seen: an unreadable lock file counts as
// somebody.
bool IsLockFileHeld(const std::filesystem::path& lockFile);

}  // namespace nomira::jet
