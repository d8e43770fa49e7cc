// Changes the programs of a plan on the disk, all or none of them, with their old bytes kept aside.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "apps/nomiractl/Plan.h"

namespace nomira::companion {

// How a program gets its new bytes.
enum class AtomicWay {
    InPlace,  // the file is written over: inode, rights, owner and all links stay
    Rename,   // a new file beside it takes its place: whoever reads sees old or new bytes, but hard
              // links and what a symbolic link led to come apart
};

// Throws Refusal if one of the programs can't be changed, or has changed since it was planned with.
// Fills in their states.
void RequireAsPlanned(std::vector<ProgramChange>& programs);

// The bytes of a plan's programs before the change, one behind the other in one file.
class OldBytes {
  public:
    explicit OldBytes(std::filesystem::path file) : m_file(std::move(file)) {}

    // Reads the programs and writes the file, down to the disk. Fills in their states. Throws
    // Refusal if a program can't be changed, or has changed since it was planned with.
    void Keep(std::vector<ProgramChange>& programs) const;
    // Those of each program, in their order.
    template <typename Take>
    void ForEach(const std::vector<ProgramChange>& programs, Take take) const;

  private:
    std::filesystem::path m_file;
};

// Writes the new bytes of all programs, down to the disk. Throws Refusal or Interruption, and
// programs may have changed then, for PutBack. `nRun` makes names of files that nobody else has.
void WritePrograms(const std::vector<ProgramChange>& programs, const OldBytes& old, AtomicWay way,
                   int nRun);

// Gives programs their old bytes and times back, whatever became of them, and removes what
// WritePrograms has left beside them. A program that is gone, or that another file has replaced
// with bytes of its own, is left and told, a line for each. Throws Refusal if a file can't be
// written.
std::vector<std::string> PutBack(const std::vector<ProgramChange>& programs, const OldBytes& old,
                                 int nRun);

// Whether each program has its new bytes.
bool AllAreChanged(const std::vector<ProgramChange>& programs);

}  // namespace nomira::companion
