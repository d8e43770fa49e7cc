// The manual pages, from the same words as the help: one of the program and one of each command.
#pragma once

#include <CLI/CLI.hpp>
#include <filesystem>
#include <string>
#include <vector>

namespace nomira::companion {

struct ManPage {
    std::string sFile;  // "nomiractl-db-info.1"
    std::string sText;  // in the man macros, ASCII
};

// `sVersion` as in "0.1.0"; `sFiles` tells where files are looked for, a paragraph.
std::vector<ManPage> ManPages(const CLI::App& app, const std::string& sVersion,
                              const std::string& sFiles);

// Makes the folder where it isn't there. Throws Refusal.
void WriteManPages(const std::vector<ManPage>& pages, const std::filesystem::path& folder);

}  // namespace nomira::companion
