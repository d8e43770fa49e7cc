// What the user asked for on the command line. Paths are native ones.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace nomira::companion {

struct Options {
    std::filesystem::path prefix;         // empty: the system's own
    std::filesystem::path database;       // empty: where the prefix has it
    std::optional<std::string> customer;  // in the place of the registry's, UTF-8
    std::filesystem::path file;           // the command's own argument; "-" for a stream
    bool bOverwrite = false;
    bool bDryRun = false;
    bool bJson = false;
    bool bQuiet = false;
};

}  // namespace nomira::companion
