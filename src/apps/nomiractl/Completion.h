// Completion scripts for shells, made from the command line itself.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace nomira::companion {

// `sShell`: bash, zsh or fish.
std::string CompletionScript(const CLI::App& app, const std::string& sShell);

}  // namespace nomira::companion
