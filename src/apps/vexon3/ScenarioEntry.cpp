#include "apps/vexon3/ScenarioEntry.h"

#include <algorithm>
#include <limits>

#include "adapters/rpc/Wire.h"

namespace nomira::simulator {

void ScenarioEntry::Fail(const std::string& sWhat) const {
    const std::string sPlace = m_sKey.empty() ? m_sFile : m_sFile + ": " + m_sKey;
    throw ScenarioError(sPlace + ": " + sWhat);
}

void ScenarioEntry::RequireObject(std::initializer_list<const char*> keys) const {
    std::string sKnown;
    for (const char* sKey : keys)
        sKnown += (sKnown.empty() ? "\"" : ", \"") + std::string(sKey) + "\"";
    if (!m_json.is_object()) Fail("must be an object with any of " + sKnown);
    for (const auto& [sKey, entry] : Members()) {
        const auto isKey = [&sKey = sKey](const char* sOther) { return sKey == sOther; };
        if (std::ranges::none_of(keys, isKey)) entry.Fail("is not known; known are " + sKnown);
    }
}

std::optional<ScenarioEntry> ScenarioEntry::Find(const char* sKey) const {
    const auto found = m_json.find(sKey);
    if (found == m_json.end()) return std::nullopt;
    return ScenarioEntry(m_sFile, m_sKey.empty() ? sKey : m_sKey + "." + sKey, *found);
}

ScenarioEntry ScenarioEntry::At(const char* sKey) const {
    auto entry = Find(sKey);
    if (!entry) Fail("\"" + std::string(sKey) + "\" is missing; add it");
    return *entry;
}

std::vector<std::pair<std::string, ScenarioEntry>> ScenarioEntry::Members() const {
    if (!m_json.is_object()) Fail("must be an object, in braces");
    std::vector<std::pair<std::string, ScenarioEntry>> members;
    for (const auto& [sKey, value] : m_json.items())
        members.emplace_back(
            sKey, ScenarioEntry(m_sFile, m_sKey.empty() ? sKey : m_sKey + "." + sKey, value));
    return members;
}

std::vector<ScenarioEntry> ScenarioEntry::Elements() const {
    if (!m_json.is_array()) Fail("must be a list, in brackets");
    std::vector<ScenarioEntry> elements;
    for (std::size_t n = 0; n < m_json.size(); ++n)
        elements.emplace_back(m_sFile, m_sKey + "[" + std::to_string(n) + "]", m_json[n]);
    return elements;
}

std::string ScenarioEntry::String() const {
    if (!m_json.is_string()) Fail("must be a text, in quotes");
    return m_json.get<std::string>();
}

nomira::Text ScenarioEntry::Text() const {
    return rpc::FromWire(String());
}

int ScenarioEntry::NumberFrom(int nLeast) const {
    const bool bWhole = m_json.is_number_integer();
    if (!bWhole || m_json < nLeast || m_json > std::numeric_limits<int>::max())
        Fail("must be a whole number from " + std::to_string(nLeast) + " on");
    return m_json.get<int>();
}

}  // namespace nomira::simulator
