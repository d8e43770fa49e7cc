// A locale whose answers a test sets; at first that of an English system with page 1252.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string_view>

#include "langtools/CodePage.h"
#include "langtools/Text.h"
#include "platform/Locale.h"

namespace nomira::memory {

class MemoryLocale : public Locale {
  public:
    std::uint16_t nLangId = 0x0409;  // English of the United States
    bool bLangIdFails = false;       // UserDefaultLangId raises DeviceUnavailable
    // Locale id to its page as text, given without the terminator.
    std::map<std::int32_t, Text> localePages{{0x0407, u"1252"}, {0x0409, u"1252"}};
    // The pages that Decode knows, by number; not owned.
    std::map<std::int32_t, const CodePage*> codePages{{1252, &Windows1252()}};
    // The system's 8-bit page. A change takes effect with the next SetPlatform, or at once
    // through MemoryMachine::UseCodePage.
    const CodePage* page = &Windows1252();

    std::uint16_t UserDefaultLangId() override;
    std::optional<Text> DefaultAnsiCodePage(std::int32_t nLocale) override;
    Text Decode(std::int32_t nCodePage, std::string_view bytes) override;
    const CodePage& EightBitPage() override { return *page; }
};

}  // namespace nomira::memory
