// Tells whether bytes are still those that were seen before: by mistake, not by malice, two
// different files have the same fingerprint once in 2^64 times.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace nomira::companion {

struct Fingerprint {
    std::uint64_t nSize = 0;
    std::uint64_t nHash = 0;

    bool operator==(const Fingerprint&) const = default;
};

// The numbers stand in files that outlive the program; they never change.
Fingerprint FingerprintOf(std::string_view bytes);

// "size-hash", the hash in hexadecimal; nullopt for a text that is none.
std::string AsText(const Fingerprint& fingerprint);
std::optional<Fingerprint> FingerprintFromText(const std::string& sText);

}  // namespace nomira::companion
