#include "adapters/jetsql/DateText.h"

#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>

namespace nomira::jetsql {
namespace {

using std::chrono::days;
using std::chrono::sys_days;
using std::chrono::year_month_day;

constexpr sys_days kDayZero{std::chrono::year{1899} / 12 / 30};
constexpr std::int64_t kMillisecondsPerDay = 86'400'000;
// Days from the day zero: the first and the last one that have four digits for their year.
constexpr double kFirstDay = -693'593;
constexpr double kBehindLastDay = 2'958'466;

// A number of just so many digits at the front, which is taken off.
std::optional<int> TakeDigits(std::string_view& sText, std::size_t nDigits) {
    if (sText.size() < nDigits) return std::nullopt;
    int nValue = 0;
    const char* end = sText.data() + nDigits;
    const auto [stop, error] = std::from_chars(sText.data(), end, nValue);
    if (error != std::errc() || stop != end || nValue < 0) return std::nullopt;
    sText.remove_prefix(nDigits);
    return nValue;
}

bool TakeCharacter(std::string_view& sText, std::string_view sOneOf) {
    if (sText.empty() || sOneOf.find(sText.front()) == std::string_view::npos) return false;
    sText.remove_prefix(1);
    return true;
}

std::optional<std::int64_t> TakeDay(std::string_view& sText) {
    const auto nYear = TakeDigits(sText, 4);
    if (!nYear || !TakeCharacter(sText, "-")) return std::nullopt;
    const auto nMonth = TakeDigits(sText, 2);
    if (!nMonth || !TakeCharacter(sText, "-")) return std::nullopt;
    const auto nDay = TakeDigits(sText, 2);
    if (!nDay) return std::nullopt;
    const year_month_day date{std::chrono::year{*nYear}, std::chrono::month(unsigned(*nMonth)),
                              std::chrono::day(unsigned(*nDay))};
    if (!date.ok()) return std::nullopt;
    return (sys_days{date} - kDayZero).count();
}

// Behind the point: up to three digits count.
std::optional<std::int64_t> TakeMilliseconds(std::string_view& sText) {
    std::int64_t nValue = 0;
    std::int64_t nUnit = 100;
    if (sText.empty()) return std::nullopt;
    for (; !sText.empty(); sText.remove_prefix(1), nUnit /= 10) {
        if (sText.front() < '0' || sText.front() > '9') return std::nullopt;
        nValue += (sText.front() - '0') * nUnit;
    }
    return nValue;
}

std::optional<std::int64_t> TakeTime(std::string_view& sText) {
    const auto nHour = TakeDigits(sText, 2);
    if (!nHour || !TakeCharacter(sText, ":")) return std::nullopt;
    const auto nMinute = TakeDigits(sText, 2);
    if (!nMinute) return std::nullopt;
    std::int64_t nSecond = 0;
    std::int64_t nMilliseconds = 0;
    if (TakeCharacter(sText, ":")) {
        const auto nRead = TakeDigits(sText, 2);
        if (!nRead) return std::nullopt;
        nSecond = *nRead;
        if (TakeCharacter(sText, ".")) {
            const auto nBehind = TakeMilliseconds(sText);
            if (!nBehind) return std::nullopt;
            nMilliseconds = *nBehind;
        }
    }
    if (*nHour > 23 || *nMinute > 59 || nSecond > 59) return std::nullopt;
    return ((std::int64_t{*nHour} * 60 + *nMinute) * 60 + nSecond) * 1000 + nMilliseconds;
}

}  // namespace

std::optional<std::string> TextOfDate(double nDays) {
    if (!(nDays >= kFirstDay && nDays < kBehindLastDay)) return std::nullopt;
    // Of a moment before the day zero the fraction counts forward all the same.
    double nWhole = std::trunc(nDays);
    auto nTime = static_cast<std::int64_t>(
        std::llround(std::abs(nDays - nWhole) * static_cast<double>(kMillisecondsPerDay)));
    if (nTime == kMillisecondsPerDay) {
        nTime = 0;
        nWhole += 1;
    }
    if (nWhole >= kBehindLastDay) return std::nullopt;
    const year_month_day date{kDayZero + days(static_cast<std::int64_t>(nWhole))};
    const std::int64_t nSeconds = nTime / 1000;
    std::array<char, 40> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02u-%02u %02d:%02d:%02d", int(date.year()),
                  unsigned(date.month()), unsigned(date.day()), int(nSeconds / 3600),
                  int(nSeconds / 60 % 60), int(nSeconds % 60));
    std::string sText = text.data();
    if (nTime % 1000 != 0) {
        std::snprintf(text.data(), text.size(), ".%03d", int(nTime % 1000));
        sText += text.data();
    }
    return sText;
}

std::optional<double> DateOfText(std::string_view sText) {
    const auto nDay = TakeDay(sText);
    if (!nDay) return std::nullopt;
    std::int64_t nTime = 0;
    if (TakeCharacter(sText, " T")) {
        const auto nRead = TakeTime(sText);
        if (!nRead) return std::nullopt;
        nTime = *nRead;
    }
    if (!sText.empty()) return std::nullopt;
    const double nFraction = static_cast<double>(nTime) / static_cast<double>(kMillisecondsPerDay);
    const auto nWhole = static_cast<double>(*nDay);
    return *nDay < 0 ? nWhole - nFraction : nWhole + nFraction;
}

}  // namespace nomira::jetsql
