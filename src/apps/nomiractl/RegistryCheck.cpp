#include "apps/nomiractl/RegistryCheck.h"

#include <array>

#include "adapters/posix/RegistryText.h"
#include "apps/nomiractl/RewriteRun.h"
#include "apps/nomiractl/Words.h"
#include "frame/Settings.h"
#include "langtools/BasicText.h"
#include "langtools/CodePage.h"
#include "langtools/RuntimeError.h"

namespace nomira::companion {
namespace {

constexpr std::array<std::uint32_t, 3> kTextTypes{1, 2, 7};

class RegistryCheck {
  public:
    RegistryCheck(const posix::RegistryText& registry, Findings& findings)
        : m_registry(registry), m_findings(findings) {}

    void Run() {
        for (const posix::RegistryFinding& finding : m_registry.findings)
            m_findings.Add(Rule::RegistryLine, {finding.nLine, 0}, {}, {finding.sWhat});
        for (const Setting& setting : kSettings)
            CheckSetting(setting);
    }

  private:
    using Path = posix::RegistryText::Path;

    void CheckSetting(const Setting& setting) {
        const Path path{setting.root, posix::FoldedKey(setting.sKey)};
        const Text sName = UCase(setting.sValue);
        const auto key = m_registry.keys.find(path);
        const auto origin = m_registry.origins.find({path, sName});
        if (key == m_registry.keys.end() || origin == m_registry.origins.end()) return;
        const auto value = key->second.find(sName);
        if (value == key->second.end()) return;  // taken away again
        m_place = {origin->second.nLine, 0};
        m_sName = Text(setting.sValue);
        Text sText;
        try {
            ReadRegistryString(setting, sText);
        } catch (const RuntimeError&) {
            Add(Rule::RegistryLongValue, {Utf8(m_sName), std::to_string(value->second.size())});
            return;
        }
        CheckType(origin->second.nType, value->second, sText);
        CheckText(setting, sText);
    }

    void Add(Rule rule, const std::vector<std::string>& words) {
        m_findings.Add(rule, m_place, m_sName, words);
    }

    void CheckType(std::uint32_t nType, const posix::RegistryText::Bytes& bytes,
                   const Text& sText) {
        const bool bText =
            std::find(kTextTypes.begin(), kTextTypes.end(), nType) != kTextTypes.end();
        if (!bText)
            Add(Rule::RegistryType, {Utf8(m_sName), std::to_string(nType), Shown(sText)});
        else if (!bytes.empty() && bytes.back() != 0)
            Add(Rule::RegistryUnterminated, {Utf8(m_sName), Shown(sText)});
    }

    void CheckText(const Setting& setting, const Text& sText) {
        if (sText.empty()) return;
        if (Trim(sText).empty()) return Add(Rule::RegistryBlank, {Utf8(m_sName)});
        if (Trim(sText) != sText) Add(Rule::RegistryBlanksKept, {Utf8(m_sName), Shown(sText)});
        const bool bCustomer = setting.sValue == kCustomerSetting.sValue;
        if (bCustomer && !IsCustomerVw() && EqualNoCase(Trim(sText), kCustomerVw))
            Add(Rule::RegistryCustomer, {Shown(sText), Utf8(kCustomerVw)});
        if (setting.sValue == kLanguageSetting.sValue) CheckLanguage(sText);
    }

    void CheckLanguage(const Text& sText) {
        try {
            HexValue(sText);
        } catch (const RuntimeError& error) {
            Add(Rule::RegistryLanguage,
                {Shown(sText), std::to_string(static_cast<std::int32_t>(error.Number()))});
        }
    }

    const posix::RegistryText& m_registry;
    Findings& m_findings;
    Place m_place{};
    Text m_sName;
};

}  // namespace

void CheckRegistry(const std::filesystem::path& file, Machine& machine, Findings& findings) {
    const posix::RegistryText registry =
        posix::ParseRegistryText(ReadProgram(file), SystemCodePage());
    machine.TakeRegistry(file);
    RegistryCheck(registry, findings).Run();
}

}  // namespace nomira::companion
