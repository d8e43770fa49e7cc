#include "apps/nomiractl/Fingerprint.h"

#include <fmt/format.h>

#include <bit>
#include <charconv>

namespace nomira::companion {
namespace {

constexpr std::uint64_t kSpread = 0x9E3779B97F4A7C15ULL;
constexpr std::uint64_t kMix = 0xD6E8FEB86659FD93ULL;
constexpr std::size_t kWord = 8;

std::uint64_t Mixed(std::uint64_t nHash, std::uint64_t nWord) {
    nHash = (nHash ^ nWord) * kSpread;
    return (nHash ^ (nHash >> 32U)) * kMix;
}

// The first eight bytes at most, the first one lowest, whatever the machine.
std::uint64_t WordOf(std::string_view bytes) {
    std::uint64_t nWord = 0;
    for (std::size_t n = 0; n < kWord && n < bytes.size(); ++n)
        nWord |= std::uint64_t{static_cast<unsigned char>(bytes[n])} << (kWord * n);
    return nWord;
}

bool ReadNumber(std::string_view sDigits, int nBase, std::uint64_t& nNumber) {
    const char* pEnd = sDigits.data() + sDigits.size();
    const auto [pRead, error] = std::from_chars(sDigits.data(), pEnd, nNumber, nBase);
    return error == std::errc() && pRead == pEnd;
}

}  // namespace

Fingerprint FingerprintOf(std::string_view bytes) {
    Fingerprint fingerprint{bytes.size(), bytes.size()};
    for (; !bytes.empty(); bytes.remove_prefix(std::min(kWord, bytes.size())))
        fingerprint.nHash = Mixed(std::rotl(fingerprint.nHash, 23), WordOf(bytes));
    return fingerprint;
}

std::string AsText(const Fingerprint& fingerprint) {
    return fmt::format("{}-{:016x}", fingerprint.nSize, fingerprint.nHash);
}

std::optional<Fingerprint> FingerprintFromText(const std::string& sText) {
    const std::string_view sWhole = sText;
    const std::size_t nDash = sWhole.find('-');
    Fingerprint fingerprint;
    if (nDash == std::string_view::npos ||
        !ReadNumber(sWhole.substr(0, nDash), 10, fingerprint.nSize) ||
        !ReadNumber(sWhole.substr(nDash + 1), 16, fingerprint.nHash))
        return std::nullopt;
    return fingerprint;
}

}  // namespace nomira::companion
