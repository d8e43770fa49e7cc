#include "apps/nomiractl/Words.h"

#include <fmt/format.h>

#include "adapters/posix/NativeName.h"
#include "apps/nomiractl/Refusal.h"
#include "langtools/Utf8.h"

namespace nomira::companion {
namespace {

constexpr std::size_t kMostShown = 100;

bool IsHigh(char16_t c) {
    return (c & 0xFC00) == 0xD800;
}

bool IsLow(char16_t c) {
    return (c & 0xFC00) == 0xDC00;
}

Text WithoutHalfPairs(TextView sText) {
    Text sWhole(sText);
    for (std::size_t n = 0; n < sWhole.size(); ++n) {
        if (IsHigh(sWhole[n]) && n + 1 < sWhole.size() && IsLow(sWhole[n + 1]))
            ++n;
        else if (IsHigh(sWhole[n]) || IsLow(sWhole[n]))
            sWhole[n] = kNoCharacter;
    }
    return sWhole;
}

bool IsControl(char16_t c) {
    return c < 0x20 || (c >= 0x7F && c < 0xA0);
}

}  // namespace

std::string Utf8(TextView sText) {
    return ToUtf8(WithoutHalfPairs(sText));
}

std::string Shown(TextView sText) {
    return ShownWhole(sText.substr(0, kMostShown)) + (sText.size() > kMostShown ? "..." : "");
}

std::string ShownWhole(TextView sText) {
    Text sLine(sText);
    for (char16_t& c : sLine)
        if (IsControl(c)) c = u'?';
    return Utf8(sLine);
}

Text CorePath(const std::filesystem::path& path) {
    Text sPath = posix::FromNative(std::filesystem::absolute(path).string());
    if (sPath.find(u'\\') != Text::npos)
        throw Refusal(fmt::format("{}: a backslash in a file's name separates folders; rename it",
                                  path.string()),
                      ExitCode::Files);
    return sPath;
}

}  // namespace nomira::companion
