#include "adapters/posix/RegFileRegistry.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <iterator>
#include <string>
#include <utility>

#include "langtools/BasicText.h"
#include "langtools/CodePage.h"

namespace nomira::posix {
namespace {

RegistryText ReadRegistryFile(const std::filesystem::path& file) {
    std::error_code error;
    const auto status = std::filesystem::status(file, error);
    if (status.type() == std::filesystem::file_type::not_found) return {};
    std::ifstream in(file, std::ios::binary);
    if (!in || !std::filesystem::is_regular_file(status)) {
        RegistryText nothing;
        nothing.findings.push_back({0, "the file can't be read"});
        return nothing;
    }
    const std::string bytes(std::istreambuf_iterator<char>(in), {});
    return ParseRegistryText(bytes, SystemCodePage());
}

}  // namespace

RegFileRegistry::RegFileRegistry(std::filesystem::path file) : m_file(std::move(file)) {}

const RegistryText& RegFileRegistry::Data() {
    if (!m_data) m_data = ReadRegistryFile(m_file);
    return *m_data;
}

std::int32_t RegFileRegistry::OpenKey(RegistryRoot root, TextView sKey, KeyHandle& key) {
    const RegistryText::Path path{root, FoldedKey(sKey)};
    // The root itself is always there.
    if (!path.second.empty() && !Data().keys.contains(path)) return kFileNotFound;
    key = m_nNextHandle++;
    m_open[key] = path;
    return kSuccess;
}

std::uint32_t RegFileRegistry::QueryValue(KeyHandle key, TextView sValueName,
                                          std::span<std::uint8_t> buffer) {
    const auto open = m_open.find(key);
    if (open == m_open.end()) return 0;
    const auto values = Data().keys.find(open->second);
    if (values == Data().keys.end()) return 0;
    const auto value = values->second.find(UCase(sValueName));
    if (value == values->second.end()) return 0;
    const RegistryText::Bytes& bytes = value->second;
    std::copy_n(bytes.begin(), std::min(bytes.size(), buffer.size()), buffer.begin());
    return static_cast<std::uint32_t>(bytes.size());
}

void RegFileRegistry::CloseKey(KeyHandle key) {
    m_open.erase(key);
}

}  // namespace nomira::posix
