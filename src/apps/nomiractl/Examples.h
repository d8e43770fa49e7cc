// Examples of the commands, which their help shows first.
#pragma once

#include <span>
#include <string_view>

namespace nomira::companion {

struct Example {
    const char* sLine;  // behind the program's name
    const char* sWhat;
};

// Of a command by its words, as "db info"; empty for one without examples.
std::span<const Example> ExamplesOf(std::string_view sCommand);

}  // namespace nomira::companion
