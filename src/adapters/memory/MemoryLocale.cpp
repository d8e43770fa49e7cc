#include "adapters/memory/MemoryLocale.h"

#include "langtools/RuntimeError.h"

namespace nomira::memory {

std::uint16_t MemoryLocale::UserDefaultLangId() {
    if (bLangIdFails) Raise(ErrorNumber::DeviceUnavailable);
    return nLangId;
}

std::optional<Text> MemoryLocale::DefaultAnsiCodePage(std::int32_t nLocale) {
    const auto found = localePages.find(nLocale);
    if (found == localePages.end()) return std::nullopt;
    return found->second + u'\0';
}

Text MemoryLocale::Decode(std::int32_t nCodePage, std::string_view bytes) {
    const auto found = codePages.find(nCodePage);
    return found == codePages.end() ? Text() : found->second->Decode(bytes);
}

}  // namespace nomira::memory
