#include "adapters/posix/PosixFiles.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <utility>

#include "adapters/posix/FileStreams.h"
#include "adapters/posix/NativeName.h"
#include "langtools/BasicText.h"
#include "langtools/RuntimeError.h"
#include "nativefiles/Descriptor.h"
#include "platform/FileNamePattern.h"

namespace nomira::posix {
namespace {

namespace fs = std::filesystem;

constexpr std::uint16_t kSettable =
    AttributeReadOnly | AttributeHidden | AttributeSystem | AttributeArchive;
constexpr mode_t kAllWriteBits = S_IWUSR | S_IWGRP | S_IWOTH;
constexpr TextView kSeparators = u"\\/";

// Where the last part of the path begins.
std::size_t NamePosition(TextView sPath) {
    const std::size_t nSeparator = sPath.find_last_of(kSeparators);
    if (nSeparator != TextView::npos) return nSeparator + 1;
    return sPath.size() >= 2 && sPath[1] == u':' ? 2 : 0;
}

TextView WithoutEndSeparators(TextView sPath) {
    return sPath.substr(0, sPath.find_last_not_of(kSeparators) + 1);
}

bool EndsWithSeparator(TextView sPath) {
    return sPath.find_last_of(kSeparators) == sPath.size() - 1 && !sPath.empty();
}

fs::path FolderOf(const std::string& sNative) {
    const fs::path folder = fs::path(sNative).parent_path();
    return folder.empty() ? fs::path(".") : folder;
}

// nullopt if nothing is there, or it can't be asked; errno tells why.
std::optional<struct stat> StatusOf(const std::string& sNative) {
    struct stat status;
    if (::stat(sNative.c_str(), &status) != 0) return std::nullopt;
    return status;
}

bool IsReadOnly(const struct stat& status) {
    return S_ISREG(status.st_mode) && !(status.st_mode & S_IWUSR);
}

std::uint16_t AttributesOf(const struct stat& status, TextView sName) {
    int nAttributes = AttributeNormal;
    if (S_ISDIR(status.st_mode)) nAttributes |= AttributeDirectory;
    if (S_ISREG(status.st_mode)) nAttributes |= AttributeArchive;
    if (IsReadOnly(status)) nAttributes |= AttributeReadOnly;
    if (sName.starts_with(u'.')) nAttributes |= AttributeHidden;
    return static_cast<std::uint16_t>(nAttributes);
}

// What can be read or written by lines. Others would wait for their other end, or are disks.
void RequireFileOrDevice(const struct stat& status) {
    if (S_ISDIR(status.st_mode)) Raise(ErrorNumber::PathFileAccess);
    if (!S_ISREG(status.st_mode) && !S_ISCHR(status.st_mode)) Raise(ErrorNumber::DeviceIo);
}

// Renames if the new name is free; errno tells why not.
bool RenameToFree(const std::string& sOld, const std::string& sNew) {
    if (::renameat2(AT_FDCWD, sOld.c_str(), AT_FDCWD, sNew.c_str(), RENAME_NOREPLACE) == 0) {
        return true;
    }
    // Not every file system can keep the name free; the caller has looked just now.
    if (errno != EINVAL && errno != ENOSYS) return false;
    return ::rename(sOld.c_str(), sNew.c_str()) == 0;
}

// A file goes to another file system as a copy; the original goes when the copy is whole.
bool MoveAcross(const std::string& sOld, const std::string& sNew) {
    std::error_code error;
    if (!fs::is_regular_file(sOld, error)) {
        errno = EACCES;
        return false;
    }
    if (fs::copy_file(sOld, sNew, error) && fs::remove(sOld, error)) return true;
    errno = error.value();
    std::error_code ignored;
    fs::remove(sNew, ignored);
    return false;
}

}  // namespace

std::string PosixFiles::NativeOf(TextView sPath) const {
    const TextView sBare = WithoutEndSeparators(sPath);
    const TextView sName = sBare.substr(NamePosition(sBare));
    const bool bRoot = sName.empty() && !sPath.empty();
    if ((!bRoot && CannotBeFileName(sName)) || sPath.find(u'\0') != TextView::npos) {
        Raise(ErrorNumber::BadFileName);
    }
    return m_prefix.NativePath(sPath);
}

std::string PosixFiles::NativeToOpen(TextView sPath) const {
    std::string sNative = NativeOf(sPath);
    if (EndsWithSeparator(sPath)) {
        RequireDirectoryOf(sPath, m_prefix.NativePath(WithoutEndSeparators(sPath)));
        Raise(ErrorNumber::PathFileAccess);
    }
    return sNative;
}

void PosixFiles::RequireDirectoryOf(TextView sPath, const std::string& sNative) const {
    if (m_prefix.DriveIsMissing(sPath)) Raise(ErrorNumber::DeviceUnavailable);
    std::error_code ignored;
    if (!fs::is_directory(FolderOf(sNative), ignored)) Raise(ErrorNumber::PathNotFound);
}

void PosixFiles::RaiseErrno(FileOperation operation, TextView sPath,
                            const std::string& sNative) const {
    const ErrorNumber number = ErrorNumberOf(errno, operation);
    if (number == ErrorNumber::FileNotFound) {
        RequireDirectoryOf(sPath, sNative);
        if (operation == FileOperation::RemoveDirectory) Raise(ErrorNumber::PathNotFound);
    }
    Raise(number);
}

std::unique_ptr<InputFile> PosixFiles::OpenForInput(TextView sPath) {
    const std::string sNative = NativeToOpen(sPath);
    const auto status = StatusOf(sNative);
    if (!status) RaiseErrno(FileOperation::Open, sPath, sNative);
    RequireFileOrDevice(*status);
    Descriptor file(::open(sNative.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (!file.IsOpen()) RaiseErrno(FileOperation::Open, sPath, sNative);
    return std::make_unique<PosixInputFile>(std::move(file));
}

std::unique_ptr<OutputFile> PosixFiles::OpenForOutput(TextView sPath) {
    const std::string sNative = NativeToOpen(sPath);
    RequireDirectoryOf(sPath, sNative);
    if (const auto status = StatusOf(sNative)) {
        RequireFileOrDevice(*status);
        // Asked here because the system lets the superuser write a read-only file.
        if (IsReadOnly(*status)) Raise(ErrorNumber::PathFileAccess);
    }
    Descriptor file(
        ::open(sNative.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_NOCTTY | O_CLOEXEC, 0666));
    if (!file.IsOpen()) RaiseErrno(FileOperation::Open, sPath, sNative);
    return std::make_unique<PosixOutputFile>(std::move(file));
}

// The names in a directory: those of its folder, and those of paths that are placed in it.
std::vector<Text> PosixFiles::ListDirectory(TextView sDirectory) const {
    std::vector<Text> names = m_prefix.PlacedNamesIn(sDirectory);
    const std::size_t nPlaced = names.size();
    const std::string sNative = sDirectory.empty() ? "." : m_prefix.NativePath(sDirectory);
    std::error_code error;
    fs::directory_iterator entry(sNative, error);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
        const Text sName = FromNative(entry->path().filename().string());
        const bool bPlaced =
            std::any_of(names.begin(), names.begin() + static_cast<std::ptrdiff_t>(nPlaced),
                        [&](const Text& sPlaced) { return EqualNoCase(sPlaced, sName); });
        if (!bPlaced) names.push_back(sName);
    }
    return names;
}

std::vector<Text> PosixFiles::Dir(TextView sPath, std::uint16_t nAttributes) {
    if (sPath.find(u'\0') != TextView::npos) return {};
    const std::size_t nName = NamePosition(sPath);
    const Text sDirectory(sPath.substr(0, nName));
    const TextView sPattern = nName == sPath.size() ? TextView(u"*") : sPath.substr(nName);
    std::vector<Text> names;
    for (const Text& sName : ListDirectory(sDirectory)) {
        if (!MatchesFileName(sName, sPattern)) continue;
        const auto status = StatusOf(m_prefix.NativePath(sDirectory + sName));
        if (!status || !CountsInDir(AttributesOf(*status, sName), nAttributes)) continue;
        names.push_back(sName);
    }
    std::sort(names.begin(), names.end(), ComesBeforeInListing);
    return names;
}

std::uint16_t PosixFiles::GetAttr(TextView sPath) {
    const std::string sNative = NativeOf(sPath);
    const auto status = StatusOf(sNative);
    if (!status) RaiseErrno(FileOperation::Change, sPath, sNative);
    const TextView sBare = WithoutEndSeparators(sPath);
    return AttributesOf(*status, sBare.substr(NamePosition(sBare)));
}

void PosixFiles::SetAttr(TextView sPath, std::uint16_t nAttributes) {
    if (nAttributes & ~kSettable) Raise(ErrorNumber::InvalidProcedureCall);
    const std::string sNative = NativeOf(sPath);
    const auto status = StatusOf(sNative);
    if (!status) RaiseErrno(FileOperation::Change, sPath, sNative);
    if (!S_ISREG(status->st_mode)) return;
    const mode_t mode = status->st_mode & 07777;
    const mode_t wanted = nAttributes & AttributeReadOnly ? mode & ~kAllWriteBits : mode | S_IWUSR;
    if (wanted == mode || ::chmod(sNative.c_str(), wanted) == 0) return;
    RaiseErrno(FileOperation::Change, sPath, sNative);
}

void PosixFiles::MkDir(TextView sPath) {
    const std::string sNative = NativeOf(sPath);
    if (m_prefix.DriveIsMissing(sPath)) Raise(ErrorNumber::DeviceUnavailable);
    if (::mkdir(sNative.c_str(), 0777) == 0) return;
    if (errno == ENOENT) Raise(ErrorNumber::PathNotFound);
    RaiseErrno(FileOperation::MakeDirectory, sPath, sNative);
}

void PosixFiles::RmDir(TextView sPath) {
    const std::string sNative = NativeOf(sPath);
    if (m_prefix.DriveIsMissing(sPath)) Raise(ErrorNumber::DeviceUnavailable);
    if (Prefix::IsDriveRoot(sPath)) Raise(ErrorNumber::PathFileAccess);
    if (::rmdir(sNative.c_str()) == 0) return;
    RaiseErrno(FileOperation::RemoveDirectory, sPath, sNative);
}

void PosixFiles::Kill(TextView sPath) {
    if (sPath.empty() || sPath.find(u'\0') != TextView::npos) Raise(ErrorNumber::BadFileName);
    const Text sDirectory(sPath.substr(0, NamePosition(sPath)));
    RequireDirectoryOf(sPath, m_prefix.NativePath(sDirectory + u"x"));
    if (EndsWithSeparator(sPath)) Raise(ErrorNumber::PathFileAccess);
    const std::vector<Text> names = Dir(sPath);
    if (names.empty()) Raise(ErrorNumber::FileNotFound);
    for (const Text& sName : names)
        KillOne(sDirectory + sName);
}

void PosixFiles::KillOne(TextView sPath) const {
    const std::string sNative = m_prefix.NativePath(sPath);
    const auto status = StatusOf(sNative);
    if (status && IsReadOnly(*status)) Raise(ErrorNumber::PathFileAccess);
    if (::unlink(sNative.c_str()) != 0) RaiseErrno(FileOperation::Change, sPath, sNative);
}

void PosixFiles::Name(TextView sOldPath, TextView sNewPath) {
    const std::string sOld = NativeOf(sOldPath);
    std::string sNew = NativeOf(sNewPath);
    if (Prefix::IsDriveRoot(sOldPath) || Prefix::IsDriveRoot(sNewPath)) {
        Raise(ErrorNumber::PathFileAccess);
    }
    if (!StatusOf(sOld)) RaiseErrno(FileOperation::Change, sOldPath, sOld);
    RequireDirectoryOf(sNewPath, sNew);
    if (sNew == sOld) {
        // The same file: at most its letters' case changes.
        const TextView sBare = WithoutEndSeparators(sNewPath);
        sNew = FolderOf(sOld) / ToNative(sBare.substr(NamePosition(sBare)));
        if (sNew == sOld) return;
    } else if (fs::exists(fs::symlink_status(sNew))) {
        Raise(ErrorNumber::FileAlreadyExists);
    }
    if (RenameToFree(sOld, sNew)) return;
    if (errno == EXDEV && MoveAcross(sOld, sNew)) return;
    RaiseErrno(FileOperation::Change, sNewPath, sNew);
}

}  // namespace nomira::posix
