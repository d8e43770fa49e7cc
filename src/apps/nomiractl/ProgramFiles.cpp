#include "apps/nomiractl/ProgramFiles.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <map>
#include <system_error>
#include <utility>

#include "apps/nomiractl/Interrupt.h"
#include "apps/nomiractl/Refusal.h"
#include "nativefiles/NativeFiles.h"

namespace nomira::companion {
namespace {

namespace fs = std::filesystem;
using nativefiles::Descriptor;

constexpr mode_t kPermissionBits = 07777;
constexpr mode_t kOnlyMine = 0600;

template <typename Work>
decltype(auto) InWords(const fs::path& file, Work work) {
    try {
        return work();
    } catch (const std::system_error& error) {
        throw Refusal(
            fmt::format("{}: {}; nothing was changed", file.string(), error.code().message()),
            ExitCode::Files);
    }
}

[[noreturn]] void Refuse(const fs::path& file, std::string_view sWhat) {
    throw Refusal(fmt::format("{}: {}; nothing was changed", file.string(), sWhat),
                  ExitCode::Files);
}

FileState StateOf(const struct stat& status) {
    return {status.st_dev, status.st_ino, status.st_mode, status.st_mtim.tv_sec,
            status.st_mtim.tv_nsec};
}

// The program's bytes, if it can be changed and is as it was planned with.
std::string ReadToChange(ProgramChange& program) {
    const Descriptor file = nativefiles::Open(program.file, O_RDONLY | O_NONBLOCK);
    const struct stat status = nativefiles::StatusOf(file);
    if (!S_ISREG(status.st_mode)) Refuse(program.file, "not a plain file");
    if (nativefiles::IsWriteProtected(status) || ::access(program.file.c_str(), W_OK) != 0)
        Refuse(program.file, "the file is read-only");
    program.state = StateOf(status);
    std::string sBytes = nativefiles::ReadAll(file);
    if (FingerprintOf(sBytes) != program.before) Refuse(program.file, "has changed meanwhile");
    return sBytes;
}

// Writes what is not the same, and nothing in front of it.
void WriteInPlace(const fs::path& path, std::string_view old, std::string_view bytes) {
    const auto [differing, ignored] =
        std::mismatch(bytes.begin(), bytes.end(), old.begin(), old.end());
    const auto nSame = static_cast<std::size_t>(differing - bytes.begin());
    const Descriptor file = nativefiles::Open(path, O_WRONLY);
    nativefiles::WriteAt(file, bytes.substr(nSame), nSame);
    if (bytes.size() < old.size() && ::ftruncate(file.Get(), static_cast<off_t>(bytes.size())) != 0)
        nativefiles::RaiseErrno();
}

void Restore(const ProgramChange& program, std::string_view bytes) {
    const Descriptor file = nativefiles::Open(program.file, O_WRONLY);
    nativefiles::WriteAt(file, bytes, 0);
    if (::ftruncate(file.Get(), static_cast<off_t>(bytes.size())) != 0) nativefiles::RaiseErrno();
    const struct timespec written { program.state->nSeconds, program.state->nNanoseconds };
    const struct timespec times[] { {0, UTIME_OMIT}, written };
    if (::futimens(file.Get(), times) != 0) nativefiles::RaiseErrno();
}

// Brings what was written to the disk, one call for each file system.
class FileSystems {
  public:
    void Add(const ProgramChange& program) {
        if (m_open.contains(program.state->nDevice)) return;
        m_open.emplace(program.state->nDevice, nativefiles::Open(program.file, O_RDONLY));
    }
    void ToDisk() const {
        for (const auto& [nDevice, file] : m_open)
            if (::syncfs(file.Get()) != 0) nativefiles::RaiseErrno();
    }

  private:
    std::map<std::uint64_t, Descriptor> m_open;
};

// The new file beside a program; its name is known to whoever has to clear up.
fs::path Beside(const ProgramChange& program, int nRun, std::size_t nProgram) {
    return fs::canonical(program.file).parent_path() /
           fmt::format(".nomiractl-{}-{}", nRun, nProgram);
}

void WriteBeside(const fs::path& beside, const ProgramChange& program, std::string_view bytes) {
    const std::optional<struct stat> old = nativefiles::StatusOf(program.file);
    if (!old) Refuse(program.file, "is gone");
    const Descriptor file = nativefiles::Open(beside, O_WRONLY | O_CREAT | O_EXCL, kOnlyMine);
    nativefiles::WriteAll(file, bytes);
    if (::fchown(file.Get(), old->st_uid, old->st_gid) != 0) errno = 0;
    if (::fchmod(file.Get(), old->st_mode & kPermissionBits) != 0) nativefiles::RaiseErrno();
}

void RenameAll(const std::vector<ProgramChange>& programs, int nRun) {
    for (std::size_t n = 0; n < programs.size(); ++n) {
        RequireNoInterrupt();
        InWords(programs[n].file,
                [&] { fs::rename(Beside(programs[n], nRun, n), fs::canonical(programs[n].file)); });
    }
}

enum class Content { Old, New, Other, Gone };

Content ContentOf(const ProgramChange& program) {
    const std::optional<struct stat> status = nativefiles::StatusOf(program.file);
    if (!status) return Content::Gone;
    const Fingerprint now =
        FingerprintOf(nativefiles::ReadAll(nativefiles::Open(program.file, O_RDONLY | O_NONBLOCK)));
    if (now == program.before) return Content::Old;
    if (now == program.after) return Content::New;
    return Content::Other;
}

// Bytes that are neither the old nor the new ones are half-written ones in the very file that was
// being written, and somebody's own in any other.
bool IsReplaced(const ProgramChange& program) {
    const std::optional<struct stat> status = nativefiles::StatusOf(program.file);
    return status && program.state &&
           (status->st_ino != program.state->nInode || status->st_dev != program.state->nDevice);
}

void RemoveBeside(const ProgramChange& program, int nRun, std::size_t nProgram) {
    std::error_code ignored;
    // Also of a program that is gone.
    const fs::path folder = fs::weakly_canonical(program.file, ignored).parent_path();
    if (!folder.empty())
        fs::remove(folder / fmt::format(".nomiractl-{}-{}", nRun, nProgram), ignored);
}

}  // namespace

void RequireAsPlanned(std::vector<ProgramChange>& programs) {
    for (ProgramChange& program : programs) {
        RequireNoInterrupt();
        InWords(program.file, [&] { ReadToChange(program); });
    }
}

void OldBytes::Keep(std::vector<ProgramChange>& programs) const {
    InWords(m_file, [&] {
        const Descriptor kept = nativefiles::Open(m_file, O_WRONLY | O_CREAT | O_TRUNC, kOnlyMine);
        for (ProgramChange& program : programs) {
            RequireNoInterrupt();
            const std::string sBytes = InWords(program.file, [&] { return ReadToChange(program); });
            nativefiles::WriteAll(kept, sBytes);
        }
        nativefiles::Sync(kept);
    });
}

template <typename Take>
void OldBytes::ForEach(const std::vector<ProgramChange>& programs, Take take) const {
    const Descriptor kept = InWords(m_file, [&] { return nativefiles::Open(m_file, O_RDONLY); });
    std::size_t nPlace = 0;
    for (std::size_t n = 0; n < programs.size(); ++n) {
        const std::string sBytes = InWords(
            m_file, [&] { return nativefiles::ReadAt(kept, programs[n].before.nSize, nPlace); });
        if (FingerprintOf(sBytes) != programs[n].before)
            Refuse(m_file,
                   fmt::format("the old bytes of {} are damaged", programs[n].file.string()));
        nPlace += programs[n].before.nSize;
        take(n, programs[n], sBytes);
    }
}

void WritePrograms(const std::vector<ProgramChange>& programs, const OldBytes& old, AtomicWay way,
                   int nRun) {
    FileSystems systems;
    old.ForEach(programs,
                [&](std::size_t n, const ProgramChange& program, const std::string& sOld) {
                    RequireNoInterrupt();
                    InWords(program.file, [&] {
                        systems.Add(program);
                        const std::string sNew = Changed(program, sOld);
                        if (way == AtomicWay::InPlace)
                            WriteInPlace(program.file, sOld, sNew);
                        else
                            WriteBeside(Beside(program, nRun, n), program, sNew);
                    });
                });
    const auto toDisk = [&] { InWords("the disk", [&] { systems.ToDisk(); }); };
    toDisk();
    if (way == AtomicWay::Rename) {
        RenameAll(programs, nRun);
        toDisk();
    }
    RequireNoInterrupt();
}

std::vector<std::string> PutBack(const std::vector<ProgramChange>& programs, const OldBytes& old,
                                 int nRun) {
    std::vector<std::string> left;
    FileSystems systems;
    old.ForEach(
        programs, [&](std::size_t n, const ProgramChange& program, const std::string& sOld) {
            RemoveBeside(program, nRun, n);
            InWords(program.file, [&] {
                const Content content = ContentOf(program);
                if (content == Content::Old) return;
                if (content == Content::Gone)
                    left.push_back(program.file.string() + ": is gone");
                else if (content == Content::Other && IsReplaced(program))
                    left.push_back(program.file.string() + ": is another file now, and stays");
                else
                    Restore(program, sOld);
                if (content != Content::Gone) systems.Add(program);
            });
        });
    InWords("the disk", [&] { systems.ToDisk(); });
    return left;
}

bool AllAreChanged(const std::vector<ProgramChange>& programs) {
    return std::all_of(programs.begin(), programs.end(), [](const ProgramChange& program) {
        return InWords(program.file, [&] { return ContentOf(program) == Content::New; });
    });
}

}  // namespace nomira::companion
