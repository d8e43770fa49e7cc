// Page 0: what the file is, how its texts are ordered, and counters of commits. Part of it is
// masked, with the same mask in every file.
#pragma once

#include <optional>

#include "adapters/jet/Bytes.h"
#include "adapters/jet/Layout.h"

namespace nomira::jet {

struct Header {
    Generation generation = Generation::Jet4;
    // Of the cipher on all pages but this one; 0 for a file without.
    std::uint32_t nKey = 0;
    bool bHasPassword = false;
    std::uint16_t nCollation = 0;    // Jet 3 only: stands in each column too
    std::uint16_t nSortOrder = 0;    // LCID of new columns
    std::uint16_t nSortVersion = 0;  // Jet 4 only
    std::uint16_t nCodePage = 0;
    std::uint32_t nBuild = 0;         // of the engine that made the file
    std::uint64_t nCreationDate = 0;  // Jet 4 only: the bits of a double, as below
};

// First bytes of a file that GenerationOf looks at.
inline constexpr std::size_t kSignatureBytes = 0x18;

// nullopt for what is no Access file, or one of a generation that this library doesn't know.
std::optional<Generation> GenerationOf(ByteView firstBytes);

// Reads the page as it stands in the file. Raises Damaged for what is no Access file, Unsupported
// for one of another generation.
Header ReadHeader(ByteView page);

// Puts the mask on, or takes it off.
void MaskHeader(ByteSpan page, Generation generation);

// The header of a new file, as it stands in the file. The creation date, the engine's build and
// the key that hides owners (Owners.h) hang together by a rule that is known in part alone; new
// files have a set of them that belongs together.
Bytes NewHeader(Generation generation);

// The creation date of such a file, in days since 1899-12-30.
double NewCreationDate();

// The key of owners in a Jet 4 file with such a header; nullopt for another header.
std::optional<std::uint32_t> OwnerKeyOfNew(const Header& header);

// Who owns objects of a file that NewHeader begins, or may use them.
enum class OwnerId : std::uint8_t { Admin, Users, Engine, Creator };
Bytes OwnerBytes(OwnerId id, Generation generation);

// The counter that a program bumps which has the file to itself; 0 while it writes.
std::uint16_t CommitCounter(ByteView page, Generation generation);
void SetCommitCounter(ByteSpan page, Generation generation, std::uint16_t nCounter);
std::uint16_t NextCommitCounter(std::uint16_t nCounter);
// Its place in the file.
std::size_t CommitCounterPlace(Generation generation);
// Whether a program was interrupted while it wrote the file.
bool WasInterrupted(ByteView page, Generation generation);

}  // namespace nomira::jet
