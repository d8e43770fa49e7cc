// The user's language from the environment, and the code pages from iconv.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "langtools/CodePage.h"
#include "langtools/Text.h"
#include "platform/Locale.h"

namespace nomira::posix {

class PosixLocale : public Locale {
  public:
    // `nCodePage` is the system's 8-bit page (raises PrefixError if this system can't convert
    // it); `sLanguage` a name such as "de_DE.UTF-8".
    explicit PosixLocale(int nCodePage, const std::string& sLanguage = LanguageOfEnvironment());

    // The first of LC_ALL, LC_MESSAGES and LANG that is set and not empty, else "".
    static std::string LanguageOfEnvironment();

    // English of the United States where the environment names no language that has an id.
    std::uint16_t UserDefaultLangId() override { return m_nLangId; }
    // Ids 0, 0x0400 and 0x0800 are the user's and the system's own; bits above 16 (the sort
    // order) don't count.
    std::optional<Text> DefaultAnsiCodePage(std::int32_t nLocale) override;
    // Page 0 is the system's own, as in the system's conversion call.
    Text Decode(std::int32_t nCodePage, std::string_view bytes) override;
    const CodePage& EightBitPage() override { return *m_page; }

  private:
    std::uint16_t m_nLangId;
    std::unique_ptr<CodePage> m_page;
    std::map<std::int32_t, std::unique_ptr<CodePage>> m_decoders;
};

}  // namespace nomira::posix
