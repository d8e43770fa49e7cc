#include "adapters/posix/ProcProcesses.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <climits>
#include <filesystem>
#include <string_view>
#include <thread>
#include <utility>

#include "adapters/posix/NativeName.h"
#include "langtools/BasicText.h"
#include "nativefiles/Descriptor.h"

namespace nomira::posix {
namespace {

using nativefiles::Descriptor;

// Behind the link's path where the file was replaced while it ran.
constexpr std::string_view kDeleted = " (deleted)";

std::optional<std::uint32_t> ProcessIdOf(const std::string& sName) {
    std::uint32_t nId = 0;
    const char* end = sName.data() + sName.size();
    const auto [stop, error] = std::from_chars(sName.data(), end, nId);
    if (error != std::errc() || stop != end) return std::nullopt;
    return nId;
}

// The first argument of the command line; empty if there is none, or it can't be read.
std::string StartedAs(const std::string& sFolder) {
    const Descriptor file(::open((sFolder + "/cmdline").c_str(), O_RDONLY | O_CLOEXEC));
    std::string sName;
    std::array<char, PATH_MAX> piece;
    while (sName.find('\0') == std::string::npos) {
        const ssize_t nRead = ::read(file.Get(), piece.data(), piece.size());
        if (nRead <= 0) break;
        sName.append(piece.data(), static_cast<std::size_t>(nRead));
    }
    return sName.substr(0, sName.find('\0'));
}

std::string RunningFile(const std::string& sFolder) {
    std::array<char, PATH_MAX> path;
    const ssize_t nLength = ::readlink((sFolder + "/exe").c_str(), path.data(), path.size());
    std::string_view sPath(path.data(), static_cast<std::size_t>(std::max<ssize_t>(nLength, 0)));
    if (sPath.ends_with(kDeleted)) sPath.remove_suffix(kDeleted.size());
    return std::string(sPath);
}

}  // namespace

ProcProcesses::ProcProcesses(std::string sProcFolder, std::size_t nLimit)
    : m_sProcFolder(std::move(sProcFolder)), m_nLimit(nLimit) {}

std::optional<std::vector<std::uint32_t>> ProcProcesses::AllIds() const {
    std::error_code error;
    std::filesystem::directory_iterator folder(m_sProcFolder, error);
    if (error) return std::nullopt;
    std::vector<std::uint32_t> ids;
    for (; !error && folder != std::filesystem::directory_iterator(); folder.increment(error)) {
        if (const auto nId = ProcessIdOf(folder->path().filename().string())) ids.push_back(*nId);
    }
    std::sort(ids.begin(), ids.end());
    return ids;
}

std::vector<std::uint32_t> ProcProcesses::EnumProcesses() {
    std::vector<std::uint32_t> ids = AllIds().value_or(std::vector<std::uint32_t>());
    ids.resize(std::min(ids.size(), m_nLimit));
    return ids;
}

std::optional<Text> ProcProcesses::ModuleFileName(std::uint32_t nProcessId) {
    const std::string sFolder = m_sProcFolder + '/' + std::to_string(nProcessId);
    std::string sPath = StartedAs(sFolder);
    if (sPath.empty()) sPath = RunningFile(sFolder);
    if (sPath.empty()) return std::nullopt;
    return Replace(FromNative(sPath), u"/", u"\\");
}

std::optional<std::vector<Text>> ProcProcesses::SnapshotNames() {
    const auto ids = AllIds();
    if (!ids) return std::nullopt;
    std::vector<Text> names;
    for (const std::uint32_t nId : *ids) {
        if (const auto sPath = ModuleFileName(nId)) {
            names.push_back(sPath->substr(sPath->rfind(u'\\') + 1));
        }
    }
    return names;
}

void ProcProcesses::Sleep(std::chrono::milliseconds duration) {
    std::this_thread::sleep_for(duration);
}

}  // namespace nomira::posix
