// Port: the processes that run on this machine, in the two ways that the old systems offer, and
// the pace of this one.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <vector>

#include "langtools/Text.h"

namespace nomira {

class Processes {
  public:
    // The family of the system as its version record tells it.
    static constexpr std::int32_t kPlatform9x = 1;
    static constexpr std::int32_t kPlatformNt = 2;

    virtual ~Processes() = default;

    virtual std::int32_t PlatformId() = 0;

    // NT family: the ids of running processes, in the system's order. An adapter may see only so
    // many; what lies beyond is not looked at.
    virtual std::vector<std::uint32_t> EnumProcesses() = 0;

    // NT family: full path of the process's executable, its parts separated by "\"; empty if the
    // process can be opened but not asked. nullopt if access is denied or the process is gone.
    virtual std::optional<Text> ModuleFileName(std::uint32_t nProcessId) = 0;

    // 9x family: the file names of a snapshot of all processes; nullopt if none could be taken.
    virtual std::optional<std::vector<Text>> SnapshotNames() = 0;

    // Holds this process up, without letting events through.
    virtual void Sleep(std::chrono::milliseconds duration) = 0;
};

}  // namespace nomira
