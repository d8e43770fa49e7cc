// Wrappers that pass every call on to another adapter and note what was asked, for tests of what
// the program asks the machine, how often, and in which order.
#pragma once

#include <vector>

#include "adapters/memory/MemoryMachine.h"
#include "platform/Platform.h"
#include "platform/Processes.h"
#include "platform/Registry.h"

namespace nomira::testing {

// The ports of a machine in memory, for a test that puts a wrapper in the place of one of them and
// hands the whole to SetPlatform.
inline Platform PortsOf(memory::MemoryMachine& machine) {
    return {.registry = &machine.registry,
            .processes = &machine.processes,
            .locale = &machine.locale,
            .desktop = &machine.desktop,
            .files = &machine.files,
            .closedLibrary = &machine.closedLibrary,
            .sCommandLine = CommandLine()};
}

class ForwardingRegistry : public Registry {
  public:
    explicit ForwardingRegistry(Registry& inner) : m_inner(inner) {}

    // The names of the values in the order in which they were asked for, each once per reading.
    std::vector<Text> asked;
    int nOpenKeys = 0;  // opened and not closed yet

    std::int32_t OpenKey(RegistryRoot root, TextView sKey, KeyHandle& key) override {
        const std::int32_t nResult = m_inner.OpenKey(root, sKey, key);
        if (nResult == kSuccess) ++nOpenKeys;
        return nResult;
    }
    std::uint32_t QueryValue(KeyHandle key, TextView sValueName,
                             std::span<std::uint8_t> buffer) override {
        if (buffer.empty()) asked.emplace_back(sValueName);
        return m_inner.QueryValue(key, sValueName, buffer);
    }
    void CloseKey(KeyHandle key) override {
        --nOpenKeys;
        m_inner.CloseKey(key);
    }

  private:
    Registry& m_inner;
};

class ForwardingProcesses : public Processes {
  public:
    explicit ForwardingProcesses(Processes& inner) : m_inner(inner) {}

    int nEnumerations = 0;
    std::vector<std::uint32_t> askedForName;

    std::int32_t PlatformId() override { return m_inner.PlatformId(); }
    std::vector<std::uint32_t> EnumProcesses() override {
        ++nEnumerations;
        return m_inner.EnumProcesses();
    }
    std::optional<Text> ModuleFileName(std::uint32_t nProcessId) override {
        askedForName.push_back(nProcessId);
        return m_inner.ModuleFileName(nProcessId);
    }
    std::optional<std::vector<Text>> SnapshotNames() override { return m_inner.SnapshotNames(); }
    void Sleep(std::chrono::milliseconds duration) override { m_inner.Sleep(duration); }

  private:
    Processes& m_inner;
};

}  // namespace nomira::testing
