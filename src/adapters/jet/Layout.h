// The two generations of the format and where they differ in places and sizes. What a figure means
// stands beside the code that uses it; all of them are facts of the format, found in files that the
// makers' own programs wrote.
#pragma once

#include <cstddef>
#include <cstdint>

namespace nomira::jet {

enum class Generation : std::uint8_t { Jet3, Jet4 };

// All in bytes, places from the start of the page or record.
struct Layout {
    Generation generation;
    std::size_t nPageSize;
    std::uint8_t nVersion;  // in the header, at kVersionPlace

    // Data pages
    std::size_t nSlotCountPlace;  // 16 bits
    std::size_t nSlotsPlace;      // the first row's offset, 16 bits each
    std::size_t nMostRowBytes;    // a row with its trailer

    // Table definitions
    std::size_t nDefinitionHead;   // bytes ahead of the first statistics block
    std::size_t nStatisticsBlock;  // one per real index
    std::size_t nColumnRecord;
    std::size_t nRealIndexRecord;
    std::size_t nLogicalIndexRecord;

    // Index pages
    std::size_t nEntryMaskPlace;
    std::size_t nEntryMaskBytes;
    std::size_t nEntriesPlace;  // first entry; entries may fill the rest of the page

    // Maps of pages
    std::size_t nMapRowBytes;           // a new map: kind, first page, bitmap
    std::uint32_t nPagesPerBitmapPage;  // of a bitmap that has pages of its own

    // Long values
    std::size_t nInlineLimit;  // longest value that stays in its row
    std::size_t nLongChunk;    // data bytes of one row in a chain

    // Text
    std::size_t nCharacterBytes;  // in a column's length and a plain text
};

inline constexpr Layout kJet3Layout{Generation::Jet3,
                                    2048,
                                    0,
                                    8,
                                    10,
                                    2012,
                                    43,
                                    8,
                                    18,
                                    39,
                                    20,
                                    22,
                                    226,
                                    248,
                                    133,
                                    16352,
                                    32,
                                    2032,
                                    1};
inline constexpr Layout kJet4Layout{Generation::Jet4,
                                    4096,
                                    1,
                                    12,
                                    14,
                                    4060,
                                    63,
                                    12,
                                    25,
                                    52,
                                    28,
                                    27,
                                    453,
                                    480,
                                    69,
                                    32736,
                                    64,
                                    4072,
                                    2};

inline constexpr const Layout& LayoutOf(Generation generation) {
    return generation == Generation::Jet3 ? kJet3Layout : kJet4Layout;
}

// Kinds of pages: the first byte of each; the second is 1.
enum class PageKind : std::uint8_t {
    Header = 0,
    Data = 1,
    Definition = 2,
    IndexNode = 3,
    IndexLeaf = 4,
    Bitmap = 5,
};

inline constexpr std::size_t kMostSlots = 255;  // rows of a page: the number is one byte

}  // namespace nomira::jet
