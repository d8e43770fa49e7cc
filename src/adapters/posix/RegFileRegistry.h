// The registry as a file: what the registry editor of a controller exported.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <span>
#include <vector>

#include "adapters/posix/RegistryText.h"
#include "langtools/Text.h"
#include "platform/Registry.h"

namespace nomira::posix {

class RegFileRegistry : public Registry {
  public:
    // The file is read once, when the first key is opened. A missing file is an empty registry.
    explicit RegFileRegistry(std::filesystem::path file);

    const std::filesystem::path& File() const { return m_file; }
    // What was passed over in the file; reads it if that hasn't happened yet.
    const std::vector<RegistryFinding>& Findings() { return Data().findings; }

    std::int32_t OpenKey(RegistryRoot root, TextView sKey, KeyHandle& key) override;
    std::uint32_t QueryValue(KeyHandle key, TextView sValueName,
                             std::span<std::uint8_t> buffer) override;
    void CloseKey(KeyHandle key) override;

  private:
    const RegistryText& Data();

    std::filesystem::path m_file;
    std::optional<RegistryText> m_data;
    std::map<KeyHandle, RegistryText::Path> m_open;
    KeyHandle m_nNextHandle = 1;
};

}  // namespace nomira::posix
