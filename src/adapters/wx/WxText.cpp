#include "adapters/wx/WxText.h"

#include <wx/control.h>

#include <string>

namespace nomira::wx {
namespace {

constexpr char16_t kFirstLead = 0xD800, kFirstTrail = 0xDC00, kBehindTrail = 0xE000;
constexpr char32_t kFirstOfPairs = 0x10000;
constexpr wchar_t kNoCharacter = 0xFFFD;

bool IsLead(char16_t c) {
    return c >= kFirstLead && c < kFirstTrail;
}
bool IsTrail(char16_t c) {
    return c >= kFirstTrail && c < kBehindTrail;
}

// Half a pair stands for nothing that could be shown.
std::wstring Wide(TextView sText) {
    std::wstring sWide;
    sWide.reserve(sText.size());
    for (std::size_t n = 0; n < sText.size(); ++n) {
        const char16_t c = sText[n];
        if (IsLead(c) && n + 1 < sText.size() && IsTrail(sText[n + 1]))
            sWide += static_cast<wchar_t>(kFirstOfPairs + ((c - kFirstLead) << 10) +
                                          (sText[++n] - kFirstTrail));
        else
            sWide += IsLead(c) || IsTrail(c) ? kNoCharacter : static_cast<wchar_t>(c);
    }
    return sWide;
}

void Append(Text& sText, wchar_t cWide) {
    const auto c = static_cast<char32_t>(cWide);
    if (c < kFirstOfPairs) {
        sText += static_cast<char16_t>(c);
        return;
    }
    sText += static_cast<char16_t>(kFirstLead + ((c - kFirstOfPairs) >> 10));
    sText += static_cast<char16_t>(kFirstTrail + ((c - kFirstOfPairs) & 0x3FF));
}

}  // namespace

wxString ToWx(TextView sText) {
    return wxString(Wide(sText));
}

Text FromWx(const wxString& sText) {
    Text sResult;
    sResult.reserve(sText.length());
    for (const wchar_t c : sText.ToStdWstring())
        Append(sResult, c);
    return sResult;
}

wxString ToWxLines(TextView sText) {
    Text sLines;
    sLines.reserve(sText.size());
    for (std::size_t n = 0; n < sText.size(); ++n) {
        if (sText[n] != u'\r')
            sLines += sText[n];
        else if (n + 1 == sText.size() || sText[n + 1] != u'\n')
            sLines += u'\n';
    }
    return ToWx(sLines);
}

Text FromWxLines(const wxString& sText) {
    Text sResult;
    sResult.reserve(sText.length());
    for (const wchar_t c : sText.ToStdWstring()) {
        if (c == L'\n') sResult += u'\r';
        Append(sResult, c);
    }
    return sResult;
}

wxString ToWxCaption(TextView sCaption) {
    return wxControl::EscapeMnemonics(ToWx(sCaption));
}

}  // namespace nomira::wx
