// The registry in memory: what a test puts in is there, nothing else.
#pragma once

#include <cstdint>
#include <map>
#include <span>
#include <string_view>
#include <vector>

#include "langtools/Text.h"
#include "platform/Registry.h"

namespace nomira::memory {

class MemoryRegistry : public Registry {
  public:
    using Bytes = std::vector<std::uint8_t>;

    // Gives the value these bytes, as they are; makes the key if need be.
    void Set(RegistryRoot root, TextView sKey, TextView sValueName, Bytes bytes);
    // Gives the value this text in the system's 8-bit page, with a terminator behind it.
    void SetString(RegistryRoot root, TextView sKey, TextView sValueName, TextView sText);
    // A key without values.
    void AddKey(RegistryRoot root, TextView sKey);
    void RemoveValue(RegistryRoot root, TextView sKey, TextView sValueName);
    // The key, its values and everything below it.
    void RemoveKey(RegistryRoot root, TextView sKey);

    // Keys that were opened and not yet closed.
    std::size_t OpenKeys() const { return m_open.size(); }
    // How often OpenKey was called, successful or not.
    int Opened() const { return m_nOpened; }

    std::int32_t OpenKey(RegistryRoot root, TextView sKey, KeyHandle& key) override;
    std::uint32_t QueryValue(KeyHandle key, TextView sValueName,
                             std::span<std::uint8_t> buffer) override;
    void CloseKey(KeyHandle key) override;

  private:
    using Values = std::map<Text, Bytes>;        // by upper-cased name
    using Path = std::pair<RegistryRoot, Text>;  // by upper-cased path
    std::map<Path, Values> m_keys;
    std::map<KeyHandle, Path> m_open;
    KeyHandle m_nNextHandle = 1;
    int m_nOpened = 0;
};

}  // namespace nomira::memory
