// A database file as numbered pages, and changes to them as transactions.
//
// Nothing above the pages keeps what the pages hold, except definitions: a page that is read anew
// after a roll-back is as it was, and so is everything made of it.
#pragma once

#include <cstdint>

#include "adapters/jet/Bytes.h"
#include "adapters/jet/Layout.h"

namespace nomira::jet {

// Where a row's slot is. Stays the same for the life of a row, wherever its bytes move.
struct RowPlace {
    std::uint32_t nPage = 0;  // 24 bits in the file
    std::uint8_t nRow = 0;

    auto operator<=>(const RowPlace&) const = default;  // NOLINT(modernize-use-nullptr)
};

class PageStore {
  public:
    virtual ~PageStore() = default;

    virtual const Layout& Format() const = 0;
    // Pages of the file, those that the transaction has appended included.
    virtual std::uint32_t Count() const = 0;
    virtual bool CanWrite() const = 0;

    // The page's bytes, with any encryption taken off. Good until the transaction ends or is rolled
    // back, and shows later changes. Raises Damaged for a page behind the end.
    virtual ByteView Read(std::uint32_t nPage) = 0;
    // The same to be changed, as part of the transaction; the first change begins one. Raises
    // NotWritable.
    virtual ByteSpan Change(std::uint32_t nPage) = 0;
    // Appends a page of zeros and gives its number.
    virtual std::uint32_t Append() = 0;

    // Ends the transaction: from here on the changes are the file's, whole, whatever happens to
    // this process. Without a transaction nothing happens. Raises InputOutput, and then it is
    // rolled back.
    virtual void Commit() = 0;
    // Takes back all that happened since the last commit.
    virtual void Rollback() = 0;

    // Marks inside a transaction, numbered from 0 without gaps. RollbackTo takes back what happened
    // since the mark, which stays; Release forgets the mark and those above it, and keeps what
    // happened.
    virtual void Mark(int nMark) = 0;
    virtual void RollbackTo(int nMark) = 0;
    virtual void Release(int nMark) = 0;

    // A number that is another one after each Change, Append or roll-back, and once the pages have
    // been read anew: as long as it stays, so does what was found on them. What Change gave must
    // have been written before anybody asks.
    virtual std::uint64_t Changes() const = 0;
};

// Where an object of the file (an index, a table, a long column) gets its pages from, and gives
// them back to. Keeps the maps of free and owned pages.
class PageSource {
  public:
    virtual ~PageSource() = default;

    // A page that nobody owns, now owned by the object; its bytes are zeros.
    virtual std::uint32_t Take() = 0;
    virtual void GiveBack(std::uint32_t nPage) = 0;
};

}  // namespace nomira::jet
