// A look into an Access file past the engine: what it is made of, who has it open, and whether it
// is whole. Nothing is changed, not even a journal that a killed process has left beside it.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace nomira::companion {

struct AccessTable {
    std::string sName;  // UTF-8
    std::uint32_t nRows = 0;
};
struct AccessUser {
    std::string sComputer;
    std::string sName;
    bool bPresent = false;  // has it open now; others have left their names only
};
struct AccessLook {
    std::vector<AccessTable> tables;  // those of the user, in the order of the catalogue
    std::uint32_t nPages = 0;
    std::uint32_t nFreePages = 0;
    std::vector<AccessUser> users;  // by the lock file beside it
    std::string sWhyNotWritable;    // a sentence; empty if nothing keeps it from being written
    bool bJournal = false;          // what somebody has committed stands beside the file
    bool bInterrupted = false;      // a program was interrupted while it wrote the file
};

// Throw Refusal for a file that can't be read.
AccessLook LookIntoAccessFile(const std::filesystem::path& path);

struct AccessDamage {
    std::vector<std::string> problems;
    // What occurs in files of other programs, and hurts no row.
    std::vector<std::string> oddities;
};
AccessDamage CheckAccessFile(const std::filesystem::path& path);

}  // namespace nomira::companion
