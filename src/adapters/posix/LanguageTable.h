// Languages by the three names that they go by: the one in this system's environment, the Windows
// language id, and the 8-bit code page that Windows gives a system of that language.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace nomira::posix {

struct Language {
    std::string_view sName;   // language_COUNTRY
    std::uint16_t nId;        // primary language in the low 10 bits, sublanguage above
    std::uint16_t nCodePage;  // 0 where the language has no 8-bit page
};

// Of the countries that share a language, the one that stands for the language alone comes first.
std::span<const Language> Languages();

// The entry for a name such as "de_AT.UTF-8" or "de": the country's, else the first of the
// language; nullptr for a language that isn't in the table, such as "C".
const Language* FindLanguage(std::string_view sName);
// The entry for a language id; an id without a sublanguage means the first of the language.
const Language* FindLanguage(std::uint16_t nId);

}  // namespace nomira::posix
