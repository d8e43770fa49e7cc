#include "apps/nomiractl/ProgramPaths.h"

#include <fmt/format.h>

#include <algorithm>
#include <exception>
#include <string>
#include <system_error>
#include <utility>

#include "apps/nomiractl/Refusal.h"
#include "langtools/BasicText.h"

namespace nomira::companion {
namespace {

namespace fs = std::filesystem;

// A pipe in a folder is nobody's program, and would be waited for. A link that leads nowhere is
// told when its turn comes.
bool IsProgram(const fs::directory_entry& entry) {
    const Text sExtension = FromAscii(entry.path().extension().string());
    return EqualNoCase(sExtension, u".src") && !entry.is_directory() && !entry.is_fifo();
}

// The programs of a directory, sorted by name.
std::vector<fs::path> ProgramsOf(const fs::path& directory) {
    std::vector<fs::path> programs;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(directory, error)) {
        if (IsProgram(entry)) programs.push_back(entry.path());
    }
    if (error)
        throw Refusal(fmt::format("{}: {}", directory.string(), error.message()), ExitCode::Files);
    std::sort(programs.begin(), programs.end());
    return programs;
}

}  // namespace

std::uint64_t SizeOfFile(const fs::path& file) {
    std::error_code error;
    const std::uintmax_t nBytes = fs::file_size(file, error);
    return error ? 0 : nBytes;
}

std::uint64_t SizeOfFiles(const std::vector<fs::path>& paths) {
    std::uint64_t nSum = 0;
    try {
        for (const fs::path& file : NamedPrograms(paths))
            nSum += SizeOfFile(file);
    } catch (const std::exception&) {
        // Told when the folder's turn comes.
    }
    return nSum;
}

std::vector<fs::path> NamedPrograms(const std::vector<fs::path>& paths) {
    std::vector<fs::path> programs;
    for (const fs::path& path : paths) {
        if (!fs::is_directory(path)) {
            programs.push_back(path);
            continue;
        }
        for (fs::path& program : ProgramsOf(path))
            programs.push_back(std::move(program));
    }
    return programs;
}

}  // namespace nomira::companion
