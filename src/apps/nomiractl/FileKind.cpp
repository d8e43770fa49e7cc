#include "apps/nomiractl/FileKind.h"

#include <algorithm>
#include <fstream>
#include <system_error>

#include "langtools/BasicText.h"

namespace nomira::companion {
namespace {

namespace fs = std::filesystem;

struct KindWord {
    const char* sWord;
    FileKind kind;
};
constexpr KindWord kWords[]{
    {"text", FileKind::TextFile},
    {"program", FileKind::Programs},
    {"database", FileKind::Database},
    {"registry", FileKind::Registry},
};

struct Mark {
    std::size_t nPlace;
    std::string_view bytes;
    FileKind kind;
};
constexpr Mark kMarks[]{
    {0, "SQLite format 3", FileKind::Database},
    {4, "Standard Jet DB", FileKind::Database},
    {4, "Standard ACE DB", FileKind::Database},  // too new to be read: the database's words say so
    {0, "REGEDIT4", FileKind::Registry},
    {0, "Windows Registry Editor", FileKind::Registry},
    {0, std::string_view("\xFF\xFEW\0i\0n\0d\0o\0w\0s\0", 16), FileKind::Registry},
};

bool HasExtension(const fs::path& path, TextView sExtension) {
    return EqualNoCase(FromAscii(path.extension().string()), sExtension);
}

std::string HeadOf(const fs::path& path) {
    constexpr std::streamsize kMost = 32;
    std::string bytes(static_cast<std::size_t>(kMost), '\0');
    std::ifstream file(path, std::ios::binary);
    file.read(bytes.data(), kMost);
    bytes.resize(static_cast<std::size_t>(file.gcount()));
    return bytes;
}

}  // namespace

FileKind KindOf(const fs::path& path, const std::string& sWord) {
    for (const KindWord& word : kWords)
        if (sWord == word.sWord) return word.kind;
    std::error_code error;
    if (fs::is_directory(path, error) || HasExtension(path, u".src")) return FileKind::Programs;
    if (HasExtension(path, u".reg")) return FileKind::Registry;
    if (!fs::is_regular_file(path, error)) return FileKind::TextFile;
    const std::string bytes = HeadOf(path);
    for (const Mark& mark : kMarks)
        if (bytes.size() >= mark.nPlace + mark.bytes.size() &&
            std::string_view(bytes).substr(mark.nPlace, mark.bytes.size()) == mark.bytes)
            return mark.kind;
    return FileKind::TextFile;
}

}  // namespace nomira::companion
