#include "adapters/jet/Owners.h"

#include <algorithm>
#include <vector>

#include "adapters/jet/Header.h"
#include "adapters/jet/Rc4.h"

namespace nomira::jet {
namespace {

// Bits of a key: from the creation date and the build, but for what stands for the password from
// bit 10 on, and an even number below that.
constexpr std::uint32_t kBuildConstant = 0x24;
constexpr int kBuildShift = 20;
constexpr int kPasswordShift = 10;
constexpr std::uint32_t kMostPasswords = 16;
constexpr std::uint32_t kLowNumbers = 1U << kPasswordShift;

// In each identity that a workgroup's file has given.
constexpr std::size_t kLongIdentity = 102;
constexpr std::size_t kMarkPlace = 9;
constexpr std::array<std::uint8_t, 8> kMark{0xDF, 0x56, 0x1A, 0x17, 0x23, 0x6A, 0x4B, 0x11};

bool Fits(std::uint32_t nKey, std::array<std::uint8_t, 2> mask) {
    ApplyRc4(nKey, mask);
    return mask == std::array<std::uint8_t, 2>{};
}

bool MakesPlain(std::uint32_t nKey, Bytes identity) {
    ApplyRc4(nKey, identity);
    return std::equal(kMark.begin(), kMark.end(), identity.begin() + kMarkPlace);
}

std::vector<std::uint32_t> Candidates(const Header& header, std::array<std::uint8_t, 2> mask) {
    const std::uint32_t nKnown = static_cast<std::uint32_t>(header.nCreationDate) ^
                                 ((header.nBuild & 0xFF) ^ kBuildConstant) << kBuildShift;
    std::vector<std::uint32_t> keys;
    for (std::uint32_t nPassword = 1; nPassword < kMostPasswords; ++nPassword)
        for (std::uint32_t nLow = 0; nLow < kLowNumbers; nLow += 2) {
            const std::uint32_t nKey =
                ((nKnown ^ nPassword << kPasswordShift) & ~(kLowNumbers - 1)) | nLow;
            if (Fits(nKey, mask)) keys.push_back(nKey);
        }
    return keys;
}

std::vector<Bytes> LongIdentities(AccessFile& file) {
    std::vector<Bytes> identities;
    SystemTable rights(file, kRightsTable);
    for (auto scan = rights.Rows().Rows(); !scan.AtEnd(); scan.Next()) {
        const Value who = rights.Read(scan.Place(), u"SID");
        const auto* bytes = std::get_if<Bytes>(&who);
        if (bytes != nullptr && bytes->size() == kLongIdentity &&
            std::find(identities.begin(), identities.end(), *bytes) == identities.end())
            identities.push_back(*bytes);
    }
    return identities;
}

std::optional<std::uint32_t> FindKey(AccessFile& file, std::array<std::uint8_t, 2> mask) {
    const Header header = ReadHeader(file.Pages().Read(0));
    if (const auto nKey = OwnerKeyOfNew(header)) return nKey;
    const std::vector<Bytes> identities = LongIdentities(file);
    if (identities.empty()) return std::nullopt;
    std::vector<std::uint32_t> keys = Candidates(header, mask);
    std::erase_if(keys, [&](std::uint32_t nKey) {
        return !std::all_of(identities.begin(), identities.end(),
                            [&](const Bytes& identity) { return MakesPlain(nKey, identity); });
    });
    return keys.size() == 1 ? std::optional(keys.front()) : std::nullopt;
}

}  // namespace

OwnerCipher::OwnerCipher(AccessFile& file) : m_bHides(file.Kind() == Generation::Jet4) {
    if (!m_bHides) return;
    m_mask = OwnerMask(file);
    m_nKey = FindKey(file, m_mask);
}

std::optional<Bytes> OwnerCipher::Apply(ByteView identity) const {
    Bytes bytes(identity.begin(), identity.end());
    if (!m_bHides) return bytes;
    if (bytes.size() > m_mask.size()) {
        if (!m_nKey) return std::nullopt;
        ApplyRc4(*m_nKey, bytes);
    } else {
        for (std::size_t n = 0; n < bytes.size(); ++n)
            bytes[n] ^= m_mask[n];
    }
    return bytes;
}

}  // namespace nomira::jet
