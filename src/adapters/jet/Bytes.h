// Numbers in a file's bytes. The format is little-endian but for index entries, which are
// big-endian so that they compare as bytes. Every access is checked: a file may be damaged or
// hostile, and an offset out of it must never leave the bytes it points into.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <vector>

#include "adapters/jet/Failure.h"

namespace nomira::jet {

using Bytes = std::vector<std::uint8_t>;
using ByteView = std::span<const std::uint8_t>;
using ByteSpan = std::span<std::uint8_t>;

// `nLength` bytes from `nOffset` on. Raises Damaged if they don't lie in `bytes`.
inline ByteView Part(ByteView bytes, std::size_t nOffset, std::size_t nLength) {
    if (nOffset > bytes.size() || nLength > bytes.size() - nOffset)
        Fail(FailureKind::Damaged, "an offset leads out of its page");
    return bytes.subspan(nOffset, nLength);
}
inline ByteSpan Part(ByteSpan bytes, std::size_t nOffset, std::size_t nLength) {
    if (nOffset > bytes.size() || nLength > bytes.size() - nOffset)
        Fail(FailureKind::Damaged, "an offset leads out of its page");
    return bytes.subspan(nOffset, nLength);
}

// An unsigned number of `kBytes` bytes at `nOffset`.
template <std::size_t kBytes>
std::uint64_t LoadLittle(ByteView bytes, std::size_t nOffset) {
    const ByteView part = Part(bytes, nOffset, kBytes);
    std::uint64_t nValue = 0;
    if constexpr (std::endian::native == std::endian::little) {
        std::memcpy(&nValue, part.data(), kBytes);
    } else {
        for (std::size_t i = kBytes; i-- > 0;)
            nValue = nValue << 8 | part[i];
    }
    return nValue;
}
template <std::size_t kBytes>
std::uint64_t LoadBig(ByteView bytes, std::size_t nOffset) {
    const ByteView part = Part(bytes, nOffset, kBytes);
    std::uint64_t nValue = 0;
    for (const std::uint8_t n : part)
        nValue = nValue << 8 | n;
    return nValue;
}
// The low `kBytes` bytes of the number.
template <std::size_t kBytes>
void StoreLittle(ByteSpan bytes, std::size_t nOffset, std::uint64_t nValue) {
    for (std::uint8_t& n : Part(bytes, nOffset, kBytes)) {
        n = static_cast<std::uint8_t>(nValue);
        nValue >>= 8;
    }
}
template <std::size_t kBytes>
void StoreBig(ByteSpan bytes, std::size_t nOffset, std::uint64_t nValue) {
    const ByteSpan part = Part(bytes, nOffset, kBytes);
    for (std::size_t i = kBytes; i-- > 0; nValue >>= 8)
        part[i] = static_cast<std::uint8_t>(nValue);
}

inline std::uint8_t LoadU8(ByteView bytes, std::size_t nOffset) {
    return Part(bytes, nOffset, 1)[0];
}
inline std::uint16_t LoadU16(ByteView bytes, std::size_t nOffset) {
    return static_cast<std::uint16_t>(LoadLittle<2>(bytes, nOffset));
}
inline std::uint32_t LoadU24(ByteView bytes, std::size_t nOffset) {
    return static_cast<std::uint32_t>(LoadLittle<3>(bytes, nOffset));
}
inline std::uint32_t LoadU32(ByteView bytes, std::size_t nOffset) {
    return static_cast<std::uint32_t>(LoadLittle<4>(bytes, nOffset));
}
inline void StoreU8(ByteSpan bytes, std::size_t nOffset, std::uint8_t nValue) {
    Part(bytes, nOffset, 1)[0] = nValue;
}
inline void StoreU16(ByteSpan bytes, std::size_t nOffset, std::size_t nValue) {
    StoreLittle<2>(bytes, nOffset, nValue);
}
inline void StoreU24(ByteSpan bytes, std::size_t nOffset, std::uint32_t nValue) {
    StoreLittle<3>(bytes, nOffset, nValue);
}
inline void StoreU32(ByteSpan bytes, std::size_t nOffset, std::uint32_t nValue) {
    StoreLittle<4>(bytes, nOffset, nValue);
}

// Appends the low `kBytes` bytes of the number.
template <std::size_t kBytes>
void AppendLittle(Bytes& bytes, std::uint64_t nValue) {
    bytes.resize(bytes.size() + kBytes);
    StoreLittle<kBytes>(ByteSpan(bytes), bytes.size() - kBytes, nValue);
}
template <std::size_t kBytes>
void AppendBig(Bytes& bytes, std::uint64_t nValue) {
    bytes.resize(bytes.size() + kBytes);
    StoreBig<kBytes>(ByteSpan(bytes), bytes.size() - kBytes, nValue);
}
inline void Append(Bytes& bytes, ByteView more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
}

}  // namespace nomira::jet
