// The processes of this machine, from /proc.
#pragma once

#include <chrono>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "langtools/Text.h"
#include "platform/Processes.h"

namespace nomira::posix {

class ProcProcesses : public Processes {
  public:
    static constexpr std::size_t kNoLimit = std::numeric_limits<std::size_t>::max();

    // `nLimit`: how many ids EnumProcesses gives at most.
    explicit ProcProcesses(std::string sProcFolder = "/proc", std::size_t nLimit = kNoLimit);

    std::int32_t PlatformId() override { return kPlatformNt; }
    // In ascending order.
    std::vector<std::uint32_t> EnumProcesses() override;
    // What the process was started as (so that a program that a loader runs keeps its own name),
    // else the file that it runs; "/" turned to "\".
    std::optional<Text> ModuleFileName(std::uint32_t nProcessId) override;
    std::optional<std::vector<Text>> SnapshotNames() override;
    void Sleep(std::chrono::milliseconds duration) override;

  private:
    std::optional<std::vector<std::uint32_t>> AllIds() const;

    std::string m_sProcFolder;
    std::size_t m_nLimit;
};

}  // namespace nomira::posix
