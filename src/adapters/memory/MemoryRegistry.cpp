#include "adapters/memory/MemoryRegistry.h"

#include <algorithm>
#include <string>
#include <utility>

#include "langtools/BasicText.h"
#include "langtools/CodePage.h"

namespace nomira::memory {
namespace {

// A key's path as the map knows it: upper case, no "\" at its ends.
Text Folded(TextView sKey) {
    while (sKey.starts_with(u'\\'))
        sKey.remove_prefix(1);
    while (sKey.ends_with(u'\\'))
        sKey.remove_suffix(1);
    return UCase(sKey);
}

}  // namespace

void MemoryRegistry::Set(RegistryRoot root, TextView sKey, TextView sValueName, Bytes bytes) {
    AddKey(root, sKey);
    m_keys[{root, Folded(sKey)}][UCase(sValueName)] = std::move(bytes);
}

void MemoryRegistry::SetString(RegistryRoot root, TextView sKey, TextView sValueName,
                               TextView sText) {
    const std::string bytes = SystemCodePage().Encode(sText);
    Bytes stored(bytes.begin(), bytes.end());
    stored.push_back(0);
    Set(root, sKey, sValueName, std::move(stored));
}

void MemoryRegistry::AddKey(RegistryRoot root, TextView sKey) {
    const Text sFolded = Folded(sKey);
    for (std::size_t n = sFolded.find(u'\\'); n != Text::npos; n = sFolded.find(u'\\', n + 1)) {
        m_keys[{root, sFolded.substr(0, n)}];
    }
    m_keys[{root, sFolded}];
}

void MemoryRegistry::RemoveValue(RegistryRoot root, TextView sKey, TextView sValueName) {
    const auto found = m_keys.find({root, Folded(sKey)});
    if (found != m_keys.end()) found->second.erase(UCase(sValueName));
}

void MemoryRegistry::RemoveKey(RegistryRoot root, TextView sKey) {
    const Text sFolded = Folded(sKey);
    std::erase_if(m_keys, [&](const auto& entry) {
        const auto& [sRoot, sPath] = entry.first;
        return sRoot == root && (sPath == sFolded || sPath.starts_with(sFolded + u'\\'));
    });
}

std::int32_t MemoryRegistry::OpenKey(RegistryRoot root, TextView sKey, KeyHandle& key) {
    ++m_nOpened;
    const Path path{root, Folded(sKey)};
    // The root itself is always there.
    if (!path.second.empty() && !m_keys.contains(path)) return kFileNotFound;
    key = m_nNextHandle++;
    m_open[key] = path;
    return kSuccess;
}

std::uint32_t MemoryRegistry::QueryValue(KeyHandle key, TextView sValueName,
                                         std::span<std::uint8_t> buffer) {
    const auto open = m_open.find(key);
    if (open == m_open.end()) return 0;
    const auto values = m_keys.find(open->second);
    if (values == m_keys.end()) return 0;
    const auto value = values->second.find(UCase(sValueName));
    if (value == values->second.end()) return 0;
    const Bytes& bytes = value->second;
    std::copy_n(bytes.begin(), std::min(bytes.size(), buffer.size()), buffer.begin());
    return static_cast<std::uint32_t>(bytes.size());
}

void MemoryRegistry::CloseKey(KeyHandle key) {
    m_open.erase(key);
}

}  // namespace nomira::memory
