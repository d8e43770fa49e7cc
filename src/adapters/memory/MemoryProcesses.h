// Processes as a test lists them.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "langtools/Text.h"
#include "platform/Processes.h"

namespace nomira::memory {

struct MemoryProcess {
    std::uint32_t nId = 0;
    // As ModuleFileName gives it: nullopt if the process denies access, empty if it can be opened
    // but not asked.
    std::optional<Text> sPath;
};

class MemoryProcesses : public Processes {
  public:
    // The old program's buffer of 500 bytes has room for 125 ids of 4 bytes.
    static constexpr std::size_t kOldLimit = 125;

    explicit MemoryProcesses(std::size_t nLimit = kOldLimit) : m_nLimit(nLimit) {}

    std::int32_t nPlatformId = kPlatformNt;
    std::vector<MemoryProcess> processes;
    std::optional<std::vector<Text>> snapshot = std::vector<Text>();

    std::vector<std::chrono::milliseconds> slept;  // each Sleep, in its order
    std::function<void()> onSleep;                 // runs in its place; may be empty

    // One more process, with an id that no other has.
    void Add(Text sPath);

    std::int32_t PlatformId() override { return nPlatformId; }
    std::vector<std::uint32_t> EnumProcesses() override;
    std::optional<Text> ModuleFileName(std::uint32_t nProcessId) override;
    std::optional<std::vector<Text>> SnapshotNames() override { return snapshot; }
    // Comes back at once.
    void Sleep(std::chrono::milliseconds duration) override;

  private:
    std::size_t m_nLimit;
};

}  // namespace nomira::memory
