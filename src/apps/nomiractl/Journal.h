// The runs of the writing commands on one prefix, in its folder "journal". It makes each of them
// one step: before anything is changed, what it takes to go back is on the disk.
//
//   000012.old    the old bytes of the programs that run 12 changes
//   000012.open   what it does, as a plan; from now on it must be finished or taken back
//   000012.run    the same once it is done, for `log` and `undo`; the old bytes are gone then
//   lock          held by the command at work
#pragma once

#include <filesystem>
#include <ostream>
#include <vector>

#include "apps/nomiractl/Plan.h"
#include "apps/nomiractl/PlanFile.h"
#include "apps/nomiractl/ProgramFiles.h"
#include "nativefiles/Descriptor.h"

namespace nomira::companion {

// The last runs are kept, older ones are forgotten.
inline constexpr std::size_t kMostRuns = 100;

inline constexpr const char* kFinishedRun = ".run";

// The folder of a prefix's journal.
std::filesystem::path JournalFolder(const std::filesystem::path& prefix);

class Journal {
  public:
    // Makes the folder where there is none, and keeps other commands out while it lives. Throws
    // Refusal if another one is at work, or the folder can't be made.
    explicit Journal(std::filesystem::path folder);

    // Their numbers, ascending.
    std::vector<int> Finished() const;
    std::vector<int> Unfinished() const;
    std::filesystem::path RunFile(int nRun) const;
    std::filesystem::path OpenFile(int nRun) const;
    OldBytes OldBytesOf(int nRun) const;

    // The number of the run that comes next.
    int Next() const;
    // Brings a run to the disk that is about to change things. Its old bytes must be there. Throws
    // Refusal; nothing of the run is left then.
    void Begin(int nRun, const Plan& plan) const;
    // Everything is done, and on the disk.
    void Finish(int nRun) const;
    // Nothing is done, or all is as it was before.
    void Discard(int nRun) const;

    // What commands that were killed have left without having begun a run.
    void RemoveLitter() const;

  private:
    std::filesystem::path FileOf(int nRun, const char* sKind) const;
    std::vector<int> Numbers(const char* sKind) const;
    void ForgetOldRuns() const;

    std::filesystem::path m_folder;
    nativefiles::Descriptor m_lock;
};

// The time now, in UTC, as "2026-11-21T17:20:00Z".
std::string TimeNow();

}  // namespace nomira::companion
