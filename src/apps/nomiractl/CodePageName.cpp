#include "apps/nomiractl/CodePageName.h"

#include <algorithm>
#include <charconv>
#include <string>

#include "adapters/posix/CodePages.h"

namespace nomira::companion {
namespace {

constexpr int kIsoBase = 28590;  // plus the part of the standard
constexpr int kUtf7 = 65000;
constexpr int kUtf8 = 65001;

struct NamedPage {
    std::string_view sName;
    int nNumber;
};
constexpr NamedPage kNames[]{
    {"latin1", kIsoBase + 1},
    {"latin2", kIsoBase + 2},
    {"latin9", kIsoBase + 15},
    {"ascii", 20127},
};

struct Family {
    std::string_view sPrefix;
    int nBase;
};
// The longer one of two that begin alike stands first.
constexpr Family kFamilies[]{
    {"iso-8859-", kIsoBase},
    {"iso8859-", kIsoBase},
    {"8859-", kIsoBase},
    {"windows-", 0},
    {"cp", 0},
    {"", 0},
};

std::string InSmallLetters(std::string_view sName) {
    std::string sSmall(sName);
    std::transform(sSmall.begin(), sSmall.end(), sSmall.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    return sSmall;
}

std::optional<int> NumberOf(std::string_view sDigits) {
    int nNumber = 0;
    const char* const pEnd = sDigits.data() + sDigits.size();
    const auto [p, error] = std::from_chars(sDigits.data(), pEnd, nNumber);
    if (error != std::errc() || p != pEnd || nNumber <= 0) return std::nullopt;
    return nNumber;
}

std::optional<int> PageNumber(std::string_view sSmall) {
    for (const NamedPage& page : kNames)
        if (page.sName == sSmall) return page.nNumber;
    for (const Family& family : kFamilies) {
        if (!sSmall.starts_with(family.sPrefix)) continue;
        const std::optional<int> nNumber = NumberOf(sSmall.substr(family.sPrefix.size()));
        return nNumber ? std::optional(*nNumber + family.nBase) : std::nullopt;
    }
    return std::nullopt;
}

}  // namespace

std::optional<int> CodePageOfName(std::string_view sName) {
    const std::optional<int> nNumber = PageNumber(InSmallLetters(sName));
    if (!nNumber || *nNumber == kUtf7 || *nNumber == kUtf8) return std::nullopt;
    return posix::MakeCodePage(*nNumber) ? nNumber : std::nullopt;
}

}  // namespace nomira::companion
