// A record of an Access file's journal over any bytes: it is refused, or all that it changes lies
// in pages and in the record.

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "adapters/jet/JournalFile.h"

namespace nomira::jet {
namespace {

constexpr std::size_t kPageSize = 2048;

void Require(bool bHolds) {
    if (!bHolds) std::abort();
}

void CheckRanges(const PageChange& change, ByteView record) {
    for (const PageChange::Range& range : change.ranges) {
        Require(range.nPlace + range.bytes.size() <= kPageSize);
        Require(range.bytes.empty() ||
                (range.bytes.data() >= record.data() &&
                 range.bytes.data() + range.bytes.size() <= record.data() + record.size()));
    }
}

}  // namespace
}  // namespace nomira::jet

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t nSize) {
    const nomira::jet::ByteView record(data, nSize);
    try {
        std::vector<nomira::jet::PageChange> changes;
        nomira::jet::ReadChanges(record, nomira::jet::kPageSize, changes);
        for (const auto& change : changes)
            nomira::jet::CheckRanges(change, record);
    } catch (const nomira::jet::Failure&) {
        return 0;
    }
    return 0;
}
