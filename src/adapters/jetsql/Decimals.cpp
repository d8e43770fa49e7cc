#include "adapters/jetsql/Decimals.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>

namespace nomira::jetsql {
namespace {

constexpr std::size_t kNumericBytes = 17;
constexpr std::uint8_t kNegative = 0x80;
constexpr std::size_t kWords = 4;

using Words = std::array<std::uint32_t, kWords>;  // the most significant one first

struct Decimal {
    bool bNegative = false;
    std::string sDigits;  // without zeros ahead; the last `scale` of them stand behind the point
};

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

std::string WithPoint(std::string sDigits, bool bNegative, int nScale) {
    const auto nBehind = static_cast<std::size_t>(std::max(nScale, 0));
    if (sDigits.size() <= nBehind) sDigits.insert(0, nBehind + 1 - sDigits.size(), '0');
    const std::size_t nPoint = sDigits.size() - nBehind;
    std::string sFraction = sDigits.substr(nPoint);
    sFraction.erase(sFraction.find_last_not_of('0') + 1);
    std::string sText = sDigits.substr(0, nPoint);
    if (!sFraction.empty()) sText += '.' + sFraction;
    return bNegative && sText.find_first_not_of("0.") != std::string::npos ? '-' + sText : sText;
}

std::string_view Trimmed(std::string_view sText) {
    while (!sText.empty() && sText.front() == ' ')
        sText.remove_prefix(1);
    while (!sText.empty() && sText.back() == ' ')
        sText.remove_suffix(1);
    return sText;
}

// Digits of a fraction to just `nScale` of them; nullopt if one that counts would be lost.
std::optional<std::string> ToScale(std::string sFraction, int nScale) {
    const auto nWanted = static_cast<std::size_t>(nScale);
    if (sFraction.size() > nWanted) {
        if (sFraction.find_first_not_of('0', nWanted) != std::string::npos) return std::nullopt;
        sFraction.resize(nWanted);
    }
    sFraction.resize(nWanted, '0');
    return sFraction;
}

std::optional<Decimal> Parse(std::string_view sText, int nScale) {
    sText = Trimmed(sText);
    Decimal decimal;
    if (!sText.empty() && (sText.front() == '-' || sText.front() == '+')) {
        decimal.bNegative = sText.front() == '-';
        sText.remove_prefix(1);
    }
    const std::size_t nPoint = std::min(sText.find('.'), sText.size());
    const std::string sWhole(sText.substr(0, nPoint));
    const std::string sBehind(sText.substr(std::min(nPoint + 1, sText.size())));
    if (sWhole.empty() && sBehind.empty()) return std::nullopt;
    if (!std::all_of(sWhole.begin(), sWhole.end(), IsDigit) ||
        !std::all_of(sBehind.begin(), sBehind.end(), IsDigit))
        return std::nullopt;
    const auto sFraction = ToScale(sBehind, nScale);
    if (!sFraction) return std::nullopt;
    decimal.sDigits = sWhole + *sFraction;
    decimal.sDigits.erase(0, decimal.sDigits.find_first_not_of('0'));
    return decimal;
}

// Divides by ten and gives the rest.
std::uint32_t DivideByTen(Words& words) {
    std::uint64_t nRest = 0;
    for (std::uint32_t& nWord : words) {
        const std::uint64_t nPart = nRest << 32 | nWord;
        nWord = static_cast<std::uint32_t>(nPart / 10);
        nRest = nPart % 10;
    }
    return static_cast<std::uint32_t>(nRest);
}

// Times ten plus the digit; false if it no longer fits.
bool AppendDigit(Words& words, std::uint32_t nDigit) {
    std::uint64_t nCarry = nDigit;
    for (std::size_t n = kWords; n-- > 0;) {
        const std::uint64_t nPart = std::uint64_t{words[n]} * 10 + nCarry;
        words[n] = static_cast<std::uint32_t>(nPart);
        nCarry = nPart >> 32;
    }
    return nCarry == 0;
}

}  // namespace

std::string TextOfCurrency(std::int64_t nTenThousandths) {
    const bool bNegative = nTenThousandths < 0;
    std::string sDigits = std::to_string(nTenThousandths);
    return WithPoint(bNegative ? sDigits.substr(1) : sDigits, bNegative, kCurrencyScale);
}

std::optional<std::int64_t> CurrencyOfText(std::string_view sText) {
    const auto decimal = Parse(sText, kCurrencyScale);
    if (!decimal) return std::nullopt;
    const std::string sNumber =
        (decimal->bNegative ? "-" : "") + (decimal->sDigits.empty() ? "0" : decimal->sDigits);
    std::int64_t nValue = 0;
    const char* end = sNumber.data() + sNumber.size();
    const auto [stop, error] = std::from_chars(sNumber.data(), end, nValue);
    if (error != std::errc() || stop != end) return std::nullopt;
    return nValue;
}

std::optional<std::string> TextOfNumeric(jet::ByteView bytes, int nScale) {
    if (bytes.size() != kNumericBytes) return std::nullopt;
    Words words{};
    for (std::size_t n = 0; n < kWords; ++n)
        words[n] = jet::LoadU32(bytes, 1 + 4 * n);
    std::string sDigits;
    while (words != Words{})
        sDigits += static_cast<char>('0' + DivideByTen(words));
    std::reverse(sDigits.begin(), sDigits.end());
    return WithPoint(sDigits, bytes[0] == kNegative, nScale);
}

std::optional<jet::Bytes> NumericOfText(std::string_view sText, int nPrecision, int nScale) {
    const auto decimal = Parse(sText, nScale);
    if (!decimal || decimal->sDigits.size() > static_cast<std::size_t>(nPrecision))
        return std::nullopt;
    Words words{};
    for (const char c : decimal->sDigits)
        if (!AppendDigit(words, static_cast<std::uint32_t>(c - '0'))) return std::nullopt;
    jet::Bytes bytes(kNumericBytes);
    bytes[0] = decimal->bNegative ? kNegative : 0;
    for (std::size_t n = 0; n < kWords; ++n)
        jet::StoreU32(bytes, 1 + 4 * n, words[n]);
    return bytes;
}

}  // namespace nomira::jetsql
