// A value of a scenario file that knows where it stands, so that a complaint about it can say so.
#pragma once

#include <filesystem>
#include <initializer_list>
#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "langtools/Text.h"

namespace nomira::simulator {

// A scenario can't be used. what() names the file, the key and what to write instead.
class ScenarioError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

class ScenarioEntry {
  public:
    // `json` must outlive the entry.
    ScenarioEntry(std::string sFile, std::string sKey, const nlohmann::json& json)
        : m_sFile(std::move(sFile)), m_sKey(std::move(sKey)), m_json(json) {}

    const nlohmann::json& Value() const { return m_json; }
    const std::string& Key() const { return m_sKey; }

    // Throws ScenarioError unless this is an object with no other keys than these.
    void RequireObject(std::initializer_list<const char*> keys) const;
    // nullopt if this object has no such key.
    std::optional<ScenarioEntry> Find(const char* sKey) const;
    ScenarioEntry At(const char* sKey) const;
    // The values of this object, or of this array.
    std::vector<std::pair<std::string, ScenarioEntry>> Members() const;
    std::vector<ScenarioEntry> Elements() const;

    // Each throws ScenarioError for a value of another kind.
    std::string String() const;
    nomira::Text Text() const;
    int NumberFrom(int nLeast) const;

    // Throws ScenarioError: this entry is wrong in this way.
    [[noreturn]] void Fail(const std::string& sWhat) const;

  private:
    std::string m_sFile;
    std::string m_sKey;
    const nlohmann::json& m_json;
};

}  // namespace nomira::simulator
