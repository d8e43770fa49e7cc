#include "adapters/posix/Prefix.h"

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>
#include <optional>
#include <utility>

#include "adapters/posix/NativeName.h"
#include "langtools/BasicText.h"

namespace nomira::posix {
namespace {

constexpr char16_t kCurrentDrive = u'C';

// A path of the Windows side: its drive, and its parts without "." and "..".
struct DrivePath {
    char16_t cLetter;
    std::vector<Text> parts;
};

bool IsSeparator(char16_t c) {
    return c == u'\\' || c == u'/';
}

bool IsLetter(char16_t c) {
    return (c >= u'A' && c <= u'Z') || (c >= u'a' && c <= u'z');
}

std::vector<Text> PartsOf(TextView sRest) {
    std::vector<Text> parts;
    while (!sRest.empty()) {
        const auto separator = std::find_if(sRest.begin(), sRest.end(), IsSeparator);
        const auto nEnd = static_cast<std::size_t>(separator - sRest.begin());
        const TextView sPart = sRest.substr(0, nEnd);
        sRest.remove_prefix(std::min(nEnd + 1, sRest.size()));
        if (sPart.empty() || sPart == u".") continue;
        if (sPart != u"..") {
            parts.emplace_back(sPart);
        } else if (!parts.empty()) {
            parts.pop_back();
        }
    }
    return parts;
}

// nullopt for a path of this system.
std::optional<DrivePath> SplitDrivePath(TextView sPath) {
    if (sPath.size() >= 2 && IsLetter(sPath[0]) && sPath[1] == u':') {
        return DrivePath{UCase(sPath[0]), PartsOf(sPath.substr(2))};
    }
    if (sPath.starts_with(u'\\')) return DrivePath{kCurrentDrive, PartsOf(sPath)};
    return std::nullopt;
}

bool Exists(const std::string& sNative) {
    struct stat status;
    return ::lstat(sNative.c_str(), &status) == 0;
}

// The name in the folder that equals `sPart` but for case, the first of several; nullopt if there
// is none.
std::optional<std::string> FindNoCase(const std::string& sFolder, TextView sPart) {
    const std::unique_ptr<DIR, int (*)(DIR*)> folder(::opendir(sFolder.c_str()), ::closedir);
    std::optional<std::string> found;
    if (!folder) return found;
    while (const dirent* entry = ::readdir(folder.get())) {
        const std::string sName = entry->d_name;
        if (found && *found <= sName) continue;
        if (EqualNoCase(FromNative(sName), sPart)) found = sName;
    }
    return found;
}

// The path of the part in the folder; nullopt if it isn't there in any case.
std::optional<std::string> MatchPart(const std::string& sFolder, TextView sPart) {
    for (const Text& sName : {Text(sPart), LCase(sPart)}) {
        std::string sPath = sFolder + '/' + ToNative(sName);
        if (Exists(sPath)) return sPath;
    }
    if (const auto sFound = FindNoCase(sFolder, sPart)) return sFolder + '/' + *sFound;
    return std::nullopt;
}

std::string Join(std::string sPath, std::vector<Text>::const_iterator from,
                 std::vector<Text>::const_iterator to) {
    for (; from != to; ++from)
        sPath += '/' + ToNative(*from);
    return sPath;
}

// Most paths are written as they stand; the others are walked part by part.
std::string MatchParts(std::string sPath, std::vector<Text>::const_iterator from,
                       std::vector<Text>::const_iterator to) {
    std::string sExact = Join(sPath, from, to);
    if (Exists(sExact)) return sExact;
    for (; from != to; ++from) {
        std::optional<std::string> sNext = MatchPart(sPath, *from);
        if (!sNext) break;
        sPath = std::move(*sNext);
    }
    return Join(std::move(sPath), from, to);
}

bool BeginsWith(const DrivePath& path, const DrivePath& head) {
    return path.cLetter == head.cLetter && path.parts.size() >= head.parts.size() &&
           std::equal(head.parts.begin(), head.parts.end(), path.parts.begin(), EqualNoCase);
}

std::string EnvironmentValue(const char* sName) {
    const char* sValue = std::getenv(sName);
    return sValue ? sValue : "";
}

PrefixSettings ReadSettings(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    if (!in) return {};
    const std::string bytes(std::istreambuf_iterator<char>(in), {});
    return ParsePrefixSettings(bytes, file.string());
}

}  // namespace

Prefix::Prefix(std::filesystem::path root)
    : m_root(std::move(root)), m_settings(ReadSettings(m_root / "nomira.conf")) {}

std::filesystem::path Prefix::RootFromEnvironment() {
    if (const std::string sRoot = EnvironmentValue("NOMIRA_PREFIX"); !sRoot.empty()) return sRoot;
    const std::string sData = EnvironmentValue("XDG_DATA_HOME");
    if (!sData.empty()) return std::filesystem::path(sData) / "nomira";
    return std::filesystem::path(EnvironmentValue("HOME")) / ".local/share/nomira";
}

std::string Prefix::DriveFolder(char16_t cLetter) const {
    const std::string sDrives = (m_root / "drives").string();
    const Text sLetter(1, LCase(cLetter));
    return MatchPart(sDrives, sLetter).value_or(sDrives + '/' + ToNative(sLetter));
}

std::string Prefix::NativePath(TextView sPath) const {
    const auto path = SplitDrivePath(sPath);
    if (!path) {
        std::string sNative = ToNative(sPath);
        std::replace(sNative.begin(), sNative.end(), '\\', '/');
        return sNative;
    }
    const PlacedPath* place = nullptr;
    std::ptrdiff_t nPlacedParts = 0;
    for (const PlacedPath& placed : m_settings.placedPaths) {
        const auto head = SplitDrivePath(placed.sPath);
        if (!head || !BeginsWith(*path, *head)) continue;
        const auto nParts = static_cast<std::ptrdiff_t>(head->parts.size());
        if (nParts < nPlacedParts) continue;
        place = &placed;
        nPlacedParts = nParts;
    }
    return MatchParts(place ? place->sNative : DriveFolder(path->cLetter),
                      path->parts.begin() + nPlacedParts, path->parts.end());
}

bool Prefix::DriveIsMissing(TextView sPath) const {
    const auto path = SplitDrivePath(sPath);
    if (!path) return false;
    std::error_code ignored;
    return !std::filesystem::is_directory(DriveFolder(path->cLetter), ignored);
}

bool Prefix::IsDriveRoot(TextView sPath) {
    const auto path = SplitDrivePath(sPath);
    return path && path->parts.empty();
}

std::vector<Text> Prefix::PlacedNamesIn(TextView sDirectory) const {
    std::vector<Text> names;
    const auto directory = SplitDrivePath(sDirectory);
    if (!directory) return names;
    for (const PlacedPath& placed : m_settings.placedPaths) {
        const auto path = SplitDrivePath(placed.sPath);
        if (!path || path->parts.size() != directory->parts.size() + 1) continue;
        if (BeginsWith(*path, *directory)) names.push_back(path->parts.back());
    }
    return names;
}

std::vector<Text> Prefix::Drives() const {
    std::vector<Text> drives;
    std::error_code ignored;
    for (const auto& entry : std::filesystem::directory_iterator(m_root / "drives", ignored)) {
        const std::string sName = entry.path().filename().string();
        if (sName.size() != 1 || !IsLetter(static_cast<unsigned char>(sName[0]))) continue;
        if (entry.is_directory(ignored) || entry.is_symlink(ignored))
            drives.push_back(Text(1, UCase(FromNative(sName)[0])) + u':');
    }
    std::sort(drives.begin(), drives.end());
    drives.erase(std::unique(drives.begin(), drives.end()), drives.end());
    return drives;
}

}  // namespace nomira::posix
