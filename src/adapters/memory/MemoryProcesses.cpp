#include "adapters/memory/MemoryProcesses.h"

#include <algorithm>
#include <utility>

namespace nomira::memory {

void MemoryProcesses::Add(Text sPath) {
    std::uint32_t nId = 4;
    for (const MemoryProcess& process : processes)
        nId = std::max(nId, process.nId + 4);
    processes.push_back({nId, std::move(sPath)});
}

std::vector<std::uint32_t> MemoryProcesses::EnumProcesses() {
    std::vector<std::uint32_t> ids;
    for (const MemoryProcess& process : processes) {
        if (ids.size() == m_nLimit) break;
        ids.push_back(process.nId);
    }
    return ids;
}

std::optional<Text> MemoryProcesses::ModuleFileName(std::uint32_t nProcessId) {
    for (const MemoryProcess& process : processes) {
        if (process.nId == nProcessId) return process.sPath;
    }
    return std::nullopt;
}

void MemoryProcesses::Sleep(std::chrono::milliseconds duration) {
    slept.push_back(duration);
    if (onSleep) onSleep();
}

}  // namespace nomira::memory
