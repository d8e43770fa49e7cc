// An entry as a leaf stores it: the key, then the place of the row as page and slot, big-endian.
#pragma once

#include "adapters/jet/IndexTree.h"

namespace nomira::jet {

inline Bytes JoinEntry(ByteView key, RowPlace place) {
    Bytes bytes;
    bytes.reserve(key.size() + kPlaceBytes + kChildBytes);
    Append(bytes, key);
    AppendBig<3>(bytes, place.nPage);
    bytes.push_back(place.nRow);
    return bytes;
}

// The bytes are no fewer than a place takes up.
inline void SplitEntry(ByteView bytes, IndexEntry& entry) {
    const ByteView key = bytes.first(bytes.size() - kPlaceBytes);
    entry.key.assign(key.begin(), key.end());
    entry.place = {static_cast<std::uint32_t>(LoadBig<3>(bytes, key.size())), bytes.back()};
}

}  // namespace nomira::jet
