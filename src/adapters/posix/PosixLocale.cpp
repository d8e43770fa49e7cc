#include "adapters/posix/PosixLocale.h"

#include <cstdlib>

#include "adapters/posix/CodePages.h"
#include "adapters/posix/LanguageTable.h"
#include "adapters/posix/PrefixSettings.h"
#include "langtools/BasicText.h"

namespace nomira::posix {
namespace {

constexpr std::uint16_t kEnglishUs = 0x0409;

bool IsOwnLocale(std::uint16_t nId) {
    return nId == 0 || nId == 0x0400 || nId == 0x0800;
}

}  // namespace

PosixLocale::PosixLocale(int nCodePage, const std::string& sLanguage)
    : m_nLangId(kEnglishUs), m_page(MakeCodePage(nCodePage)) {
    if (!m_page) {
        throw PrefixError("code page " + std::to_string(nCodePage) +
                          " is not known to this system; set another with \"codepage = 1252\" in "
                          "nomira.conf");
    }
    if (const Language* language = FindLanguage(sLanguage)) m_nLangId = language->nId;
}

std::string PosixLocale::LanguageOfEnvironment() {
    for (const char* sName : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const char* sValue = std::getenv(sName);
        if (sValue && *sValue) return sValue;
    }
    return {};
}

std::optional<Text> PosixLocale::DefaultAnsiCodePage(std::int32_t nLocale) {
    const auto nId = static_cast<std::uint16_t>(nLocale & 0xFFFF);
    const Language* language = FindLanguage(IsOwnLocale(nId) ? m_nLangId : nId);
    if (!language) return std::nullopt;
    return DecimalText(language->nCodePage) + u'\0';
}

Text PosixLocale::Decode(std::int32_t nCodePage, std::string_view bytes) {
    if (nCodePage == 0) return m_page->Decode(bytes);
    if (nCodePage < 0) return {};
    auto [entry, bNew] = m_decoders.try_emplace(nCodePage);
    if (bNew) entry->second = MakeCodePage(nCodePage);
    return entry->second ? entry->second->Decode(bytes) : Text();
}

}  // namespace nomira::posix
