#include "testing/TextPrinting.h"

#include <array>
#include <cstdio>

namespace nomira::testing {

std::string Printable(TextView sText) {
    std::string sPrinted;
    for (const char16_t c : sText) {
        if (c >= 0x20 && c < 0x7F) {
            sPrinted += static_cast<char>(c);
        } else {
            std::array<char, 8> escape{};
            std::snprintf(escape.data(), escape.size(), "\\u%04X", static_cast<unsigned>(c));
            sPrinted += escape.data();
        }
    }
    return sPrinted;
}

}  // namespace nomira::testing
