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

// The parts of one. The bytes are no fewer than a place takes up.
inline ByteView KeyOf(ByteView entry) {
    return entry.first(entry.size() - kPlaceBytes);
}
inline RowPlace PlaceIn(ByteView entry) {
    return {static_cast<std::uint32_t>(LoadBig<3>(entry, entry.size() - kPlaceBytes)),
            entry.back()};
}
inline IndexEntry SplitEntry(ByteView entry) {
    const ByteView key = KeyOf(entry);
    return {{key.begin(), key.end()}, PlaceIn(entry)};
}

}  // namespace nomira::jet
