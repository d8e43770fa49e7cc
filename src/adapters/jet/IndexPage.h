// One page of an index: a leaf of entries, or a node that names the pages below it. Works on the
// page's bytes in place; how pages hang together is IndexTree's matter.
//
// An entry is a key with the place of its row, as bytes that compare like the entries; in a node
// the page below follows, whose last entry this is. A page may hold a prefix that its entries
// share: the first entry is whole, the others go without it. Entries are named by the offset at
// which their stored bytes start (the first: 0), counted from where entries begin.
#pragma once

#include <array>
#include <optional>
#include <vector>

#include "adapters/jet/Bytes.h"
#include "adapters/jet/Layout.h"

namespace nomira::jet {

inline constexpr std::size_t kPlaceBytes = 4;  // of a row, at the end of an entry
inline constexpr std::size_t kChildBytes = 4;  // of a page below, behind an entry of a node

class IndexPage {
  public:
    // Raises Damaged if the bytes are no page of an index.
    IndexPage(ByteView page, const Layout& layout);

    bool IsLeaf() const;
    std::uint32_t Owner() const;     // the page of the table's definition
    std::uint32_t Previous() const;  // on its level; 0: none
    std::uint32_t Next() const;
    std::uint32_t Tail() const;  // of a node: the page below that has no entry, the last one
    std::size_t Prefix() const;  // bytes that the entries share
    std::uint8_t Level() const;  // 0 is a leaf

    // Behind the last entry; 0 on an empty page.
    std::size_t End() const;
    bool IsEmpty() const { return End() == 0; }
    std::size_t EndOf(std::size_t nStart) const;
    // 0 behind the last entry.
    std::size_t EndIfAny(std::size_t nStart) const { return MarkBehind(nStart); }
    std::size_t StartOfLast() const;

    // The first entry that isn't less than `entry`, End() if all are. The pages that a node's
    // entries name don't count.
    std::size_t Find(ByteView entry) const;
    // The same by fewer looks if it is the one behind the entry at `nStart`.
    std::size_t FindBehind(std::size_t nStart, ByteView entry) const;
    // The entry with the page's prefix, of a node without the page below. Raises Damaged if it
    // is too short to hold the place of a row.
    void Assemble(std::size_t nStart, Bytes& entry) const {
        Assemble(nStart, EndOf(nStart), entry);
    }
    void Assemble(std::size_t nStart, std::size_t nEnd, Bytes& entry) const;
    Bytes EntryAt(std::size_t nStart) const;
    std::uint32_t ChildAt(std::size_t nStart) const;  // of a node

    // All entries, whole, of a node with the pages below.
    std::vector<Bytes> Entries() const;

    // Raises Damaged if the page tells other free bytes than it has, or its mask leads out of it.
    void RequireSound() const;

  protected:
    std::size_t Capacity() const { return m_page.size() - m_layout.nEntriesPlace; }
    // 64 places of the mask, from 64 * nWord on.
    std::uint64_t MaskWord(std::size_t nWord) const;

    ByteView m_page;
    const Layout& m_layout;

  private:
    std::size_t Trailer() const { return IsLeaf() ? 0 : kChildBytes; }
    std::size_t MarkBehind(std::size_t nPlace) const;
    std::size_t MarkUpTo(std::size_t nPlace) const;
    ByteView Stored(std::size_t nStart, std::size_t nEnd) const;
    ByteView SharedPrefix() const;
};

class IndexPageEditor : public IndexPage {
  public:
    IndexPageEditor(ByteSpan page, const Layout& layout);

    // Makes the bytes an empty page; level 0 is a leaf.
    static void Format(ByteSpan page, const Layout& layout, std::uint32_t nOwner,
                       std::uint8_t nLevel);

    void SetPrevious(std::uint32_t nPage);
    void SetNext(std::uint32_t nPage);
    void SetTail(std::uint32_t nPage);

    // Puts a whole entry (of a node: with the page below) ahead of the one at `nStart`. False, and
    // nothing done, if there is no room or it doesn't share the page's prefix.
    bool Insert(std::size_t nStart, ByteView entry);
    void Remove(std::size_t nStart);
    // Puts these in the place of all entries; they share the prefix, and fit.
    void Fill(std::span<const Bytes> entries, std::size_t nPrefix);

  private:
    // Enough for the larger of the two page sizes.
    using MaskWords = std::array<std::uint64_t, 57>;

    void SetPrefix(std::size_t nPrefix);
    void StoreFree();
    std::size_t OwnStart(std::size_t nStart) const;
    MaskWords LoadMask() const;
    void StoreMask(const MaskWords& words);
    void OpenMarks(std::size_t nAt, std::size_t nBytes);
    void CloseMarks(std::size_t nEnd, std::size_t nBytes);

    ByteSpan m_bytes;
};

// Less than, equal to or greater than 0: as bytes, the shorter one first.
int CompareEntries(ByteView left, ByteView right);
// Bytes that two entries share at their start.
std::size_t SharedBytes(ByteView left, ByteView right);
// What entries take up on a page with the prefix.
std::size_t PackedBytes(std::span<const Bytes> entries, std::size_t nPrefix);
// The longest prefix that sorted entries can go without on a page, by the first and the last.
std::size_t LongestPrefix(ByteView first, ByteView last, const Layout& layout);
// The prefix with which the entries fit on a page: none if they fit without one, else the longest;
// nullopt if they don't fit.
std::optional<std::size_t> FittingPrefix(std::span<const Bytes> entries, const Layout& layout);

}  // namespace nomira::jet
