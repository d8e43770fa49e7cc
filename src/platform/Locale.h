// Port: the user's language and the code pages of the machine.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "langtools/Text.h"

namespace nomira {

class CodePage;  // langtools/CodePage.h

class Locale {
  public:
    virtual ~Locale() = default;

    // The user's default language id, 16 bits: primary language in the low 10 bits, sublanguage
    // above (1031 is German of Germany). Raises a RuntimeError if the system can't tell.
    virtual std::uint16_t UserDefaultLangId() = 0;

    // The default 8-bit (ANSI) code page of a locale as the system writes it, such as u"1252",
    // with its terminator (U+0000) behind it; nullopt for a locale that the system doesn't know.
    virtual std::optional<Text> DefaultAnsiCodePage(std::int32_t nLocale) = 0;

    // Bytes of any code page as text. An unknown page gives the empty text; a byte sequence that
    // is nothing in the page gives U+FFFD.
    virtual Text Decode(std::int32_t nCodePage, std::string_view bytes) = 0;

    // The system's 8-bit code page; lives as long as the adapter.
    virtual const CodePage& EightBitPage() = 0;
};

}  // namespace nomira
