#include "apps/nomiractl/Journal.h"

#include <fcntl.h>
#include <fmt/chrono.h>
#include <fmt/format.h>
#include <sys/file.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <fstream>
#include <system_error>
#include <utility>

#include "apps/nomiractl/Refusal.h"
#include "nativefiles/NativeFiles.h"

namespace nomira::companion {
namespace {

namespace fs = std::filesystem;

constexpr const char* kOld = ".old";
constexpr const char* kNew = ".new";  // an .open that is being written
constexpr const char* kOpen = ".open";
constexpr const char* kRun = kFinishedRun;
constexpr mode_t kLockMode = 0666;

[[noreturn]] void Refuse(const fs::path& path, const std::error_code& error) {
    throw Refusal(fmt::format("{}: {}; the journal of what is changed is kept there, and without"
                              " it nothing is changed",
                              path.string(), error.message()),
                  ExitCode::Files);
}

template <typename Work>
decltype(auto) InWords(const fs::path& path, Work work) {
    try {
        return work();
    } catch (const std::system_error& error) {
        Refuse(path, error.code());
    }
}

nativefiles::Descriptor TakeLock(const fs::path& folder) {
    return InWords(folder, [&] {
        fs::create_directories(folder);
        nativefiles::Descriptor lock =
            nativefiles::Open(folder / "lock", O_RDWR | O_CREAT, kLockMode);
        if (::flock(lock.Get(), LOCK_EX | LOCK_NB) == 0) return lock;
        if (errno != EWOULDBLOCK) nativefiles::RaiseErrno();
        throw Refusal(
            fmt::format("another nomiractl is changing something (it holds {}); try again when"
                        " it is done",
                        (folder / "lock").string()),
            ExitCode::Database);
    });
}

int NumberOf(const fs::path& file) {
    const std::string sStem = file.stem().string();
    int nRun = 0;
    const char* pEnd = sStem.data() + sStem.size();
    const auto [pRead, error] = std::from_chars(sStem.data(), pEnd, nRun);
    return error == std::errc() && pRead == pEnd ? nRun : 0;
}

}  // namespace

fs::path JournalFolder(const fs::path& prefix) {
    return prefix / "journal";
}

Journal::Journal(fs::path folder) : m_folder(std::move(folder)), m_lock(TakeLock(m_folder)) {}

fs::path Journal::FileOf(int nRun, const char* sKind) const {
    return m_folder / fmt::format("{:06}{}", nRun, sKind);
}

fs::path Journal::RunFile(int nRun) const {
    return FileOf(nRun, kRun);
}

fs::path Journal::OpenFile(int nRun) const {
    return FileOf(nRun, kOpen);
}

OldBytes Journal::OldBytesOf(int nRun) const {
    return OldBytes(FileOf(nRun, kOld));
}

std::vector<int> Journal::Numbers(const char* sKind) const {
    return InWords(m_folder, [&] {
        std::vector<int> numbers;
        for (const auto& entry : fs::directory_iterator(m_folder))
            if (entry.path().extension() == sKind && NumberOf(entry.path()) > 0)
                numbers.push_back(NumberOf(entry.path()));
        std::sort(numbers.begin(), numbers.end());
        return numbers;
    });
}

std::vector<int> Journal::Finished() const {
    return Numbers(kRun);
}

std::vector<int> Journal::Unfinished() const {
    return Numbers(kOpen);
}

int Journal::Next() const {
    int nLast = 0;
    for (const char* sKind : {kRun, kOpen})
        for (const int nRun : Numbers(sKind))
            nLast = std::max(nLast, nRun);
    return nLast + 1;
}

void Journal::Begin(int nRun, const Plan& plan) const {
    const fs::path file = FileOf(nRun, kNew);
    try {
        InWords(file, [&] {
            std::ofstream out(file, std::ios::binary | std::ios::trunc);
            errno = EIO;  // unless the stream's own failure says what it was
            WritePlan(out, {{"nomiractl", "run"}, {"run", nRun}, {"time", TimeNow()}}, plan);
            out.close();
            if (!out) nativefiles::RaiseErrno();
            nativefiles::Sync(nativefiles::Open(file, O_RDONLY));
            fs::rename(file, OpenFile(nRun));
            nativefiles::SyncFolder(m_folder);
        });
    } catch (const Refusal&) {
        Discard(nRun);
        throw;
    }
}

void Journal::Finish(int nRun) const {
    InWords(m_folder, [&] {
        fs::rename(OpenFile(nRun), RunFile(nRun));
        fs::remove(FileOf(nRun, kOld));
        nativefiles::SyncFolder(m_folder);
    });
    ForgetOldRuns();
}

void Journal::Discard(int nRun) const {
    std::error_code ignored;
    for (const char* sKind : {kOpen, kNew, kOld})
        fs::remove(FileOf(nRun, sKind), ignored);
}

void Journal::RemoveLitter() const {
    const std::vector<int> open = Unfinished();
    std::error_code ignored;
    for (const char* sKind : {kOld, kNew})
        for (const int nRun : Numbers(sKind))
            if (!std::binary_search(open.begin(), open.end(), nRun))
                fs::remove(FileOf(nRun, sKind), ignored);
}

void Journal::ForgetOldRuns() const {
    const std::vector<int> runs = Finished();
    std::error_code ignored;
    for (std::size_t n = 0; n + kMostRuns < runs.size(); ++n)
        fs::remove(RunFile(runs[n]), ignored);
}

std::string TimeNow() {
    return fmt::format(
        "{:%Y-%m-%dT%H:%M:%SZ}",
        fmt::gmtime(std::chrono::system_clock::to_time_t(std::chrono::system_clock::now())));
}

}  // namespace nomira::companion
