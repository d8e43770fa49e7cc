#include "apps/nomira/CommandLine.h"

#include <cstdint>
#include <string_view>

namespace nomira {
namespace {

struct Utf8Form {
    unsigned char nMask, nLead;  // which bits of the first byte tell the form, and their value
    std::size_t nBytes;
    char32_t nLeast;  // what a shorter form could hold is no character of this one
};

constexpr Utf8Form kForms[] = {
    {0x80, 0x00, 1, 0}, {0xE0, 0xC0, 2, 0x80}, {0xF0, 0xE0, 3, 0x800}, {0xF8, 0xF0, 4, 0x10000}};

const Utf8Form* FormOf(unsigned char nByte) {
    for (const Utf8Form& form : kForms)
        if ((nByte & form.nMask) == form.nLead) return &form;
    return nullptr;
}

bool IsCharacter(char32_t c) {
    return c <= 0x10FFFF && (c < 0xD800 || c > 0xDFFF);
}

// Takes the character at the start of the bytes off them; false, and nothing taken, if there is
// none.
bool TakeCharacter(std::string_view& bytes, char32_t& c) {
    const auto nFirst = static_cast<unsigned char>(bytes.front());
    const Utf8Form* form = FormOf(nFirst);
    if (!form || bytes.size() < form->nBytes) return false;
    c = nFirst & static_cast<unsigned char>(~form->nMask);
    for (const char cNext : bytes.substr(1, form->nBytes - 1)) {
        const auto nNext = static_cast<unsigned char>(cNext);
        if ((nNext & 0xC0) != 0x80) return false;
        c = c << 6 | (nNext & 0x3FU);
    }
    if (c < form->nLeast || !IsCharacter(c)) return false;
    bytes.remove_prefix(form->nBytes);
    return true;
}

void Append(Text& sText, char32_t c) {
    if (c >= 0x10000) {
        sText += static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10));
        c = 0xDC00 + ((c - 0x10000) & 0x3FF);
    }
    sText += static_cast<char16_t>(c);
}

void AppendArgument(Text& sText, std::string_view bytes, const CodePage& page) {
    while (!bytes.empty()) {
        if (char32_t c = 0; TakeCharacter(bytes, c)) {
            Append(sText, c);
        } else {
            sText += page.Decode(bytes.substr(0, 1));
            bytes.remove_prefix(1);
        }
    }
}

}  // namespace

Text JoinArguments(std::span<const char* const> arguments, const CodePage& page) {
    Text sJoined;
    bool bFirst = true;
    for (const char* pArgument : arguments) {
        if (!bFirst) sJoined += u' ';
        bFirst = false;
        AppendArgument(sJoined, pArgument, page);
    }
    return sJoined;
}

}  // namespace nomira
