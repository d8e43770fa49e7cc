#include "apps/nomiractl/StoreFormats.h"

#include <fmt/format.h>

#include "adapters/sqlite/ConvertFile.h"
#include "apps/nomiractl/Refusal.h"
#include "apps/nomiractl/Words.h"
#include "langtools/RuntimeError.h"

namespace nomira::companion {
namespace {

struct FormatRow {
    const char* sWord;
    const char* sName;
    StoreFormat format;
};
constexpr FormatRow kFormats[]{
    {"sqlite", "SQLite", StoreFormat::Sqlite},
    {"jet3", "Access 97 (Jet 3)", StoreFormat::Jet3},
    {"jet4", "Access 2000-2003 (Jet 4)", StoreFormat::Jet4},
};

}  // namespace

std::vector<std::string> FormatWords() {
    std::vector<std::string> words;
    for (const FormatRow& row : kFormats)
        words.emplace_back(row.sWord);
    return words;
}

StoreFormat FormatOfWord(const std::string& sWord) {
    for (const FormatRow& row : kFormats)
        if (sWord == row.sWord) return row.format;
    throw Refusal(fmt::format("{}: no format of a database", sWord), ExitCode::WrongUsage);
}

const char* NameOf(StoreFormat format) {
    for (const FormatRow& row : kFormats)
        if (format == row.format) return row.sName;
    return "";
}

StoreFormat RequireFormat(const std::filesystem::path& path) {
    try {
        if (const auto format = sqlite::FormatOf(path)) return *format;
    } catch (const RuntimeError& error) {
        throw Refusal(fmt::format("{}: {}", path.string(), Shown(error.Description())),
                      ExitCode::Database);
    }
    throw Refusal(fmt::format("{}: file is not a database", path.string()), ExitCode::Database);
}

}  // namespace nomira::companion
