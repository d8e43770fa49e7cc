#include "apps/vexon3/FileSpace.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <memory>
#include <optional>
#include <span>
#include <system_error>
#include <utility>

#include "adapters/posix/NativeName.h"
#include "adapters/rpc/ControllerName.h"
#include "adapters/rpc/Wire.h"
#include "apps/vexon3/OperationFailed.h"
#include "langtools/BasicText.h"
#include "platform/FileNamePattern.h"

namespace nomira::simulator {
namespace {

using nativefiles::Descriptor;
using Parts = std::vector<Text>;
using PartsView = std::span<const Text>;

constexpr TextView kRoot = u"TQX:";
constexpr TextView kSeparators = u"\\/";
constexpr TextView kDirectoryMask = u"*.";
constexpr int kOpenFolder = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
constexpr const char* kBeside = ".vexon3.new";
// Deeper than any controller's directories; a walk holds as many folders open.
constexpr std::size_t kMaxDepth = 32;

struct Entry {
    Text sName;
    bool bFolder;
};

// ---- Paths ----

// The names between the separators. nullopt for a path that isn't one of the space.
std::optional<Parts> PartsOf(TextView sPath) {
    if (rpc::IsControllerPath(sPath)) sPath.remove_prefix(kRoot.size());
    if (sPath.empty() || kSeparators.find(sPath[0]) == TextView::npos) return std::nullopt;
    Parts parts;
    while (!sPath.empty()) {
        const std::size_t nEnd = std::min(sPath.find_first_of(kSeparators), sPath.size());
        const TextView sPart = sPath.substr(0, nEnd);
        sPath.remove_prefix(std::min(nEnd + 1, sPath.size()));
        if (sPart == u".." || sPart.find(u':') != TextView::npos) return std::nullopt;
        if (!sPart.empty() && sPart != u".") parts.emplace_back(sPart);
    }
    return parts.size() > kMaxDepth ? std::nullopt : std::optional(std::move(parts));
}

Parts RequireParts(TextView sPath) {
    auto parts = PartsOf(sPath);
    if (!parts) throw OperationFailed(Trouble::BadPath, sPath);
    return std::move(*parts);
}

// The parts of a path that names something in a directory.
Parts RequireName(TextView sPath) {
    Parts parts = RequireParts(sPath);
    if (parts.empty() || !rpc::IsPlainName(parts.back()))
        throw OperationFailed(Trouble::BadPath, sPath);
    return parts;
}

PartsView WithoutLast(const Parts& parts) {
    return PartsView(parts).first(parts.size() - 1);
}

Text FullPath(PartsView parts) {
    Text sPath(kRoot);
    for (const Text& sPart : parts)
        sPath += u'\\' + sPart;
    return sPath;
}

// ---- Folders of this system ----

bool CanBeNamed(TextView sName) {
    constexpr char16_t kFirstSurrogate = 0xD800, kLastSurrogate = 0xDFFF;
    bool bHigh = false;
    for (const char16_t c : sName) {
        const bool bSurrogate = c >= kFirstSurrogate && c <= kLastSurrogate;
        const bool bLow = bSurrogate && c >= 0xDC00;
        if (bLow != bHigh) return false;
        bHigh = bSurrogate && !bLow;
    }
    return !bHigh && rpc::IsPlainName(sName);
}

std::optional<Entry> EntryOf(int nFolder, const char* pName) {
    struct stat status {};
    if (::fstatat(nFolder, pName, &status, AT_SYMLINK_NOFOLLOW) != 0) return std::nullopt;
    if (!S_ISDIR(status.st_mode) && !S_ISREG(status.st_mode)) return std::nullopt;
    Text sName = posix::FromNative(pName);
    if (!CanBeNamed(sName)) return std::nullopt;
    return Entry{std::move(sName), S_ISDIR(status.st_mode)};
}

std::vector<Entry> EntriesOf(const Descriptor& folder) {
    std::vector<Entry> entries;
    Descriptor again(::openat(folder.Get(), ".", kOpenFolder));
    if (!again.IsOpen()) return entries;
    const std::unique_ptr<DIR, int (*)(DIR*)> listing(::fdopendir(again.Get()), ::closedir);
    if (!listing) return entries;
    again.Release();
    while (const dirent* entry = ::readdir(listing.get()))
        if (auto known = EntryOf(folder.Get(), entry->d_name)) entries.push_back(std::move(*known));
    std::ranges::sort(entries, [](const Entry& left, const Entry& right) {
        return ComesBeforeInListing(left.sName, right.sName);
    });
    return entries;
}

// The entry of that name: the exact one if it is there, else the first that differs in case.
std::optional<Entry> FindEntry(const Descriptor& folder, TextView sName) {
    if (!rpc::IsPlainName(sName)) return std::nullopt;
    if (auto exact = EntryOf(folder.Get(), posix::ToNative(sName).c_str())) return exact;
    for (Entry& entry : EntriesOf(folder))
        if (EqualNoCase(entry.sName, sName)) return std::move(entry);
    return std::nullopt;
}

// Closed if the entry isn't there, or is no directory.
Descriptor OpenEntry(const Descriptor& folder, TextView sName) {
    const auto entry = FindEntry(folder, sName);
    if (!entry || !entry->bFolder) return {};
    return Descriptor(::openat(folder.Get(), posix::ToNative(entry->sName).c_str(), kOpenFolder));
}

// Opens the folder, and writes the parts as they stand on the disk. Closed if it isn't there.
Descriptor WalkTo(const Descriptor& root, Parts& parts) {
    Descriptor folder(::openat(root.Get(), ".", kOpenFolder));
    for (Text& sPart : parts) {
        const auto entry = FindEntry(folder, sPart);
        if (!entry) return {};
        sPart = entry->sName;
        folder = OpenEntry(folder, sPart);
        if (!folder.IsOpen()) return {};
    }
    return folder;
}

Descriptor OpenFolder(const Descriptor& root, PartsView parts) {
    Parts walked(parts.begin(), parts.end());
    return WalkTo(root, walked);
}

Descriptor RequireFolder(const Descriptor& root, PartsView parts) {
    Descriptor folder = OpenFolder(root, parts);
    if (!folder.IsOpen()) throw OperationFailed(Trouble::NoSuchDirectory, FullPath(parts));
    return folder;
}

// The name under which the file stands in its folder.
std::string RequireFile(const Descriptor& folder, const Parts& parts) {
    const auto entry = FindEntry(folder, parts.back());
    if (!entry || entry->bFolder) throw OperationFailed(Trouble::NoSuchFile, FullPath(parts));
    return posix::ToNative(entry->sName);
}

void Collect(const Descriptor& folder, Parts& parts, std::vector<Text>& paths) {
    if (parts.size() >= kMaxDepth) return;
    for (const Entry& entry : EntriesOf(folder)) {
        parts.push_back(entry.sName);
        if (!entry.bFolder)
            paths.push_back(FullPath(parts));
        else if (const Descriptor inner = OpenEntry(folder, entry.sName); inner.IsOpen())
            Collect(inner, parts, paths);
        parts.pop_back();
    }
}

// The full paths of all files in the folder and below, sorted.
std::vector<Text> CollectSorted(const Descriptor& folder, Parts parts) {
    std::vector<Text> paths;
    Collect(folder, parts, paths);
    std::ranges::sort(paths, ComesBeforeInListing);
    return paths;
}

// ---- Bytes ----

// The bytes, or more than a line can hold and not the rest.
bool ReadUpToALine(const Descriptor& file, std::string& sBytes) {
    std::array<char, 65536> piece;
    while (sBytes.size() <= rpc::kMaxLine) {
        const ssize_t nRead = ::read(file.Get(), piece.data(), piece.size());
        if (nRead == 0) return true;
        if (nRead < 0 && errno != EINTR) return false;
        if (nRead > 0) sBytes.append(piece.data(), static_cast<std::size_t>(nRead));
    }
    return true;
}

bool WriteAll(const Descriptor& file, std::string_view sBytes) {
    while (!sBytes.empty()) {
        const ssize_t nWritten = ::write(file.Get(), sBytes.data(), sBytes.size());
        if (nWritten < 0 && errno != EINTR) return false;
        if (nWritten > 0) sBytes.remove_prefix(static_cast<std::size_t>(nWritten));
    }
    return true;
}

bool WriteBeside(const Descriptor& folder, std::string_view sBytes) {
    ::unlinkat(folder.Get(), kBeside, 0);  // left behind by one that died
    constexpr int kFlags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    const Descriptor file(::openat(folder.Get(), kBeside, kFlags, 0666));
    return file.IsOpen() && WriteAll(file, sBytes);
}

}  // namespace

FileSpace::FileSpace(const std::filesystem::path& folder) {
    std::filesystem::create_directories(folder);
    m_folder = Descriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!m_folder.IsOpen()) throw std::system_error(errno, std::generic_category());
    MakeDirectories(u"TQX:\\R1");
}

std::vector<Text> FileSpace::List(TextView sPath) const {
    Parts parts = RequireParts(sPath);
    Text sMask;
    if (!parts.empty() && HasWildcards(parts.back())) {
        sMask = parts.back();
        parts.pop_back();
    }
    const bool bFolders = sMask == kDirectoryMask;
    std::vector<Text> names;
    for (Entry& entry : EntriesOf(RequireFolder(m_folder, parts))) {
        if (entry.bFolder != bFolders) continue;
        if (!bFolders && !sMask.empty() && !MatchesFileName(entry.sName, sMask)) continue;
        names.push_back(std::move(entry.sName));
    }
    return names;
}

Text FileSpace::Resolve(TextView sLookup) const {
    auto parts = PartsOf(sLookup);
    if (!parts || parts->empty()) return {};
    const Text sName = std::move(parts->back());
    parts->pop_back();
    const Descriptor folder = WalkTo(m_folder, *parts);
    if (!folder.IsOpen()) return {};
    for (Text& sPath : CollectSorted(folder, *parts))
        if (EqualNoCase(TextView(sPath).substr(sPath.rfind(u'\\') + 1), sName))
            return std::move(sPath);
    return {};
}

std::string FileSpace::Read(TextView sPath) const {
    const Parts parts = RequireName(sPath);
    const Descriptor folder = RequireFolder(m_folder, WithoutLast(parts));
    const std::string sName = RequireFile(folder, parts);
    const Descriptor file(
        ::openat(folder.Get(), sName.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    std::string sBytes;
    if (!file.IsOpen() || !ReadUpToALine(file, sBytes))
        throw OperationFailed(Trouble::FileTrouble, sPath);
    if (sBytes.size() > rpc::kMaxLine) throw OperationFailed(Trouble::TooLong, sPath);
    return sBytes;
}

void FileSpace::Write(TextView sPath, std::string_view sBytes) const {
    const Parts parts = RequireName(sPath);
    const Descriptor folder = RequireFolder(m_folder, WithoutLast(parts));
    const auto old = FindEntry(folder, parts.back());
    if (old && old->bFolder) throw OperationFailed(Trouble::BadPath, sPath);
    const std::string sName = posix::ToNative(old ? old->sName : parts.back());
    if (!WriteBeside(folder, sBytes) ||
        ::renameat(folder.Get(), kBeside, folder.Get(), sName.c_str()) != 0) {
        ::unlinkat(folder.Get(), kBeside, 0);
        throw OperationFailed(Trouble::FileTrouble, sPath);
    }
}

void FileSpace::Delete(TextView sPath) const {
    const Parts parts = RequireName(sPath);
    const Descriptor folder = RequireFolder(m_folder, WithoutLast(parts));
    if (::unlinkat(folder.Get(), RequireFile(folder, parts).c_str(), 0) != 0)
        throw OperationFailed(Trouble::FileTrouble, sPath);
}

void FileSpace::MakeDirectories(TextView sPath) const {
    Descriptor folder = OpenFolder(m_folder, {});
    for (const Text& sPart : RequireParts(sPath)) {
        if (!FindEntry(folder, sPart) && rpc::IsPlainName(sPart))
            ::mkdirat(folder.Get(), posix::ToNative(sPart).c_str(), 0777);
        folder = OpenEntry(folder, sPart);
        if (!folder.IsOpen()) throw OperationFailed(Trouble::FileTrouble, sPath);
    }
}

std::vector<Text> FileSpace::AllFiles() const {
    return CollectSorted(m_folder, {});
}

}  // namespace nomira::simulator
