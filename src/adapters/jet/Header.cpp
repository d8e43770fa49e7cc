#include "adapters/jet/Header.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <string_view>

#include "adapters/jet/Rc4.h"

namespace nomira::jet {
namespace {

constexpr std::array<std::uint8_t, 4> kFirstBytes{0, 1, 0, 0};
constexpr std::size_t kNamePlace = 4;
constexpr std::string_view kName("Standard Jet DB\0", 16);
// Of files that this library has no business with.
constexpr std::array<std::string_view, 2> kOtherNames{std::string_view("Standard ACE DB\0", 16),
                                                      std::string_view("MSISAM Database\0", 16)};
constexpr std::size_t kVersionPlace = 0x14;  // 32 bits

constexpr std::uint32_t kMaskKey = 0x6B39DAC7;
constexpr std::size_t kMaskPlace = 0x18;

// Places of what is masked.
constexpr std::size_t kGlobalMapPlace = 0x18;  // row 0 and row 1 of page 1
constexpr std::size_t kSystemTablesPlace = 0x20;
constexpr std::size_t kCollationPlace = 0x38;
constexpr std::size_t kCodePagePlace = 0x3C;
constexpr std::size_t kKeyPlace = 0x3E;
constexpr std::size_t kPasswordPlace = 0x42;
constexpr std::size_t kCreationDatePlace = 0x72;  // Jet 4

// Behind the mask, in Jet 4 only.
constexpr std::size_t kFormatPlace = 0x98;
constexpr std::uint32_t kFormatNumber = 1620;
constexpr std::string_view kFormatName("4.0\0", 4);

constexpr std::size_t kCounters = 256;
constexpr std::uint16_t kNeverUsedCounter = 0x0100;  // and the least that a file at rest has
constexpr std::uint16_t kCreationCounter = 0x0101;

constexpr std::uint16_t kLatinCodePage = 1252;
constexpr std::uint16_t kEnglishOrder = 0x0409;

// What differs between the generations.
struct Places {
    std::size_t nMaskBytes;
    std::size_t nPasswordBytes;
    std::size_t nBuild;
    std::size_t nSortOrder;
    std::size_t nCounters;
    std::uint32_t nNewBuild;
};
constexpr Places kJet3Places{126, 20, 0x56, 0x3A, 0x600, 3428};
constexpr Places kJet4Places{128, 40, 0x6A, 0x6E, 0xE00, 8618};
constexpr std::size_t kSortVersionPlace = 0x70;  // Jet 4

const Places& PlacesOf(Generation generation) {
    return generation == Generation::Jet3 ? kJet3Places : kJet4Places;
}

// 2004-06-05 13:06:59, in days.
constexpr std::uint64_t kNewCreationDate = 0x40E29FF17D1F72BC;
constexpr std::uint32_t kNewOwnerKey = 0x75FF76EA;

bool StandsAt(ByteView bytes, std::size_t nPlace, std::string_view sText) {
    return bytes.size() >= nPlace + sText.size() &&
           std::equal(sText.begin(), sText.end(),
                      bytes.begin() + static_cast<std::ptrdiff_t>(nPlace),
                      [](char c, std::uint8_t n) { return static_cast<std::uint8_t>(c) == n; });
}

void PutAt(ByteSpan bytes, std::size_t nPlace, std::string_view sText) {
    std::copy(sText.begin(), sText.end(), bytes.begin() + static_cast<std::ptrdiff_t>(nPlace));
}

// The password of Jet 4 is hidden behind the day of creation.
std::uint32_t PasswordMask(ByteView page, Generation generation) {
    if (generation == Generation::Jet3) return 0;
    const double days = std::bit_cast<double>(LoadLittle<8>(page, kCreationDatePlace));
    constexpr double kMostDays = 4294967295.0;
    if (!(std::abs(days) < kMostDays)) return 0;
    return static_cast<std::uint32_t>(static_cast<std::int64_t>(days));
}

bool HasPassword(ByteView page, Generation generation) {
    const std::uint32_t nMask = PasswordMask(page, generation);
    for (std::size_t n = 0; n < PlacesOf(generation).nPasswordBytes; n += sizeof nMask)
        if (LoadU32(page, kPasswordPlace + n) != nMask) return true;
    return false;
}

}  // namespace

std::optional<Generation> GenerationOf(ByteView firstBytes) {
    if (firstBytes.size() < kSignatureBytes ||
        !std::equal(kFirstBytes.begin(), kFirstBytes.end(), firstBytes.begin()) ||
        !StandsAt(firstBytes, kNamePlace, kName))
        return std::nullopt;
    switch (LoadU32(firstBytes, kVersionPlace)) {
        case kJet3Layout.nVersion:
            return Generation::Jet3;
        case kJet4Layout.nVersion:
            return Generation::Jet4;
        default:
            return std::nullopt;
    }
}

Header ReadHeader(ByteView page) {
    const auto generation = GenerationOf(page);
    if (!generation) {
        const bool bKnown = StandsAt(page, kNamePlace, kName) ||
                            std::any_of(kOtherNames.begin(), kOtherNames.end(), [&](auto sName) {
                                return StandsAt(page, kNamePlace, sName);
                            });
        if (bKnown)
            Fail(FailureKind::Unsupported, "the file is of a kind of Access that can't be read");
        Fail(FailureKind::Damaged, "the file is no Access database");
    }
    const Layout& layout = LayoutOf(*generation);
    const ByteView whole = Part(page, 0, layout.nPageSize);
    Bytes plain(whole.begin(), whole.end());
    MaskHeader(plain, *generation);
    const Places& places = PlacesOf(*generation);
    Header header;
    header.generation = *generation;
    header.nKey = LoadU32(plain, kKeyPlace);
    header.bHasPassword = HasPassword(plain, *generation);
    header.nSortOrder = LoadU16(plain, places.nSortOrder);
    header.nCodePage = LoadU16(plain, kCodePagePlace);
    header.nBuild = LoadU32(plain, places.nBuild);
    if (*generation == Generation::Jet3) header.nCollation = LoadU16(plain, kCollationPlace);
    if (*generation == Generation::Jet4) {
        header.nSortVersion = LoadU16(plain, kSortVersionPlace);
        header.nCreationDate = LoadLittle<8>(plain, kCreationDatePlace);
    }
    return header;
}

void MaskHeader(ByteSpan page, Generation generation) {
    ApplyRc4(kMaskKey, Part(page, kMaskPlace, PlacesOf(generation).nMaskBytes));
}

Bytes NewHeader(Generation generation) {
    const Layout& layout = LayoutOf(generation);
    const Places& places = PlacesOf(generation);
    Bytes page(layout.nPageSize);
    std::copy(kFirstBytes.begin(), kFirstBytes.end(), page.begin());
    PutAt(page, kNamePlace, kName);
    StoreU32(page, kVersionPlace, layout.nVersion);
    StoreU32(page, kGlobalMapPlace, 0x100);
    StoreU32(page, kGlobalMapPlace + 4, 0x101);
    for (std::size_t n = 0; n < 4; ++n)
        StoreU32(page, kSystemTablesPlace + 4 * n, static_cast<std::uint32_t>(2 + n));
    StoreU16(page, places.nSortOrder, kEnglishOrder);
    StoreU16(page, kCodePagePlace, kLatinCodePage);
    StoreU32(page, places.nBuild, places.nNewBuild);
    if (generation == Generation::Jet4) {
        StoreLittle<8>(page, kCreationDatePlace, kNewCreationDate);
        const std::uint32_t nPassword = PasswordMask(page, generation);
        for (std::size_t n = 0; n < places.nPasswordBytes; n += sizeof nPassword)
            StoreU32(page, kPasswordPlace + n, nPassword);
        StoreU32(page, kFormatPlace, kFormatNumber);
        PutAt(page, kFormatPlace + 4, kFormatName);
    }
    MaskHeader(page, generation);
    for (std::size_t n = 0; n < kCounters; ++n)
        StoreU16(page, places.nCounters + 2 * n, n == 0 ? kCreationCounter : kNeverUsedCounter);
    return page;
}

double NewCreationDate() {
    return std::bit_cast<double>(kNewCreationDate);
}

std::optional<std::uint32_t> OwnerKeyOfNew(const Header& header) {
    const bool bOurs = header.generation == Generation::Jet4 && !header.bHasPassword &&
                       header.nCreationDate == kNewCreationDate &&
                       header.nBuild == kJet4Places.nNewBuild;
    return bOurs ? std::optional(kNewOwnerKey) : std::nullopt;
}

Bytes OwnerBytes(OwnerId id, Generation generation) {
    Bytes bytes;
    switch (id) {
        case OwnerId::Admin:
            bytes = {3, 1};
            break;
        case OwnerId::Users:
            bytes = {2, 1};
            break;
        case OwnerId::Engine:
            bytes = {2, 3};
            break;
        case OwnerId::Creator:
            bytes = {2, 4};
            break;
    }
    if (generation == Generation::Jet4) ApplyRc4(kNewOwnerKey, bytes);
    return bytes;
}

std::size_t CommitCounterPlace(Generation generation) {
    return PlacesOf(generation).nCounters;
}

std::uint16_t CommitCounter(ByteView page, Generation generation) {
    return LoadU16(page, CommitCounterPlace(generation));
}

void SetCommitCounter(ByteSpan page, Generation generation, std::uint16_t nCounter) {
    StoreU16(page, CommitCounterPlace(generation), nCounter);
}

std::uint16_t NextCommitCounter(std::uint16_t nCounter) {
    return std::max(kNeverUsedCounter, static_cast<std::uint16_t>(nCounter + 1));
}

bool WasInterrupted(ByteView page, Generation generation) {
    for (std::size_t n = 0; n < kCounters; ++n)
        if (LoadU16(page, CommitCounterPlace(generation) + 2 * n) < kNeverUsedCounter) return true;
    return false;
}

}  // namespace nomira::jet
