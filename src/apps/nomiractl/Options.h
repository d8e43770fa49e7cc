// What the user asked for on the command line. Paths are native ones.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace nomira::companion {

struct Options {
    std::filesystem::path prefix;                 // empty: the system's own
    std::filesystem::path database;               // empty: where the prefix has it
    std::optional<std::string> customer;          // in the place of the registry's, UTF-8
    std::filesystem::path file;                   // the command's own argument; "-" for a stream
    std::vector<std::filesystem::path> programs;  // files and directories, to be rewritten
    std::vector<std::string> names;               // the controller's programs or variables
    std::string directory;                        // of the controller
    std::filesystem::path folder = ".";           // where fetched programs go
    std::string target;                           // where a sent one goes; empty: where it belongs
    bool bAll = false;                            // every program of the controller
    bool bDirectories = false;
    bool bForce = false;  // write over what is there
    bool bOverwrite = false;
    bool bWithSymbols = false;  // keep the symbol of a harvested comment "symbol ; text"
    bool bDiff = false;
    bool bCheck = false;
    bool bDryRun = false;
    bool bJson = false;
    bool bQuiet = false;
};

}  // namespace nomira::companion
