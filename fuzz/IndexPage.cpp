// A page of an index, of any bytes: the first one picks the generation and the kind of page, the
// last twelve are an entry to put in, the rest is the page. A page that passes the checks is
// changed and passes again.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <stdexcept>

#include "adapters/jet/IndexTree.h"
#include "adapters/jet/MemoryPages.h"

namespace nomira::jet {
namespace {

constexpr std::uint32_t kRoot = 1;
constexpr std::uint32_t kTable = 7;
constexpr std::size_t kKeyBytes = 8;

void Require(bool bHolds, const char* sWhat) {
    if (!bHolds) throw std::logic_error(sWhat);
}

class AppendedPages : public PageSource {
  public:
    explicit AppendedPages(PageStore& store) : m_store(store) {}
    std::uint32_t Take() override { return m_store.Append(); }
    void GiveBack(std::uint32_t) override {}

  private:
    PageStore& m_store;
};

// nullopt for a tree that contradicts itself.
std::optional<std::size_t> CountSoundEntries(IndexTree& tree) {
    std::vector<IndexEntry> entries;
    std::vector<std::uint32_t> pages;
    try {
        tree.Check(entries, pages);
    } catch (const Failure& failure) {
        Require(failure.Kind() == FailureKind::Damaged, "damage was called something else");
        return std::nullopt;
    }
    return entries.size();
}

void Walk(IndexTree& tree, ByteView key) {
    std::size_t nSeen = 0;
    for (auto cursor = tree.First(); !cursor.AtEnd(); cursor.Next())
        ++nSeen;
    for (auto cursor = tree.LowerBound(key); !cursor.AtEnd(); cursor.Next())
        Require(nSeen-- > 0, "there is more behind a key than in all");
}

void Change(IndexTree& tree, ByteView key, RowPlace place) {
    const auto nBefore = CountSoundEntries(tree);
    const bool bWasThere = tree.Remove(key, place);
    tree.Insert(key, place);
    const auto nBetween = CountSoundEntries(tree);
    const bool bIsThere = tree.Remove(key, place);
    if (!nBefore) return;
    Require(nBetween == *nBefore + (bWasThere ? 0 : 1), "an entry got lost");
    Require(bIsThere, "a new entry isn't there");
    Require(CountSoundEntries(tree) == *nBefore - (bWasThere ? 1 : 0), "an entry is left");
}

void Run(ByteView input) {
    const auto generation = (input[0] & 1U) != 0 ? Generation::Jet4 : Generation::Jet3;
    MemoryPages pages(generation);
    pages.Append();
    pages.Append();
    const ByteSpan root = pages.Change(kRoot);
    const ByteView bytes = input.subspan(1, input.size() - 1 - kKeyBytes - kPlaceBytes);
    std::copy_n(bytes.begin(), std::min(bytes.size(), root.size()), root.begin());
    root[0] =
        static_cast<std::uint8_t>((input[0] & 2U) != 0 ? PageKind::IndexNode : PageKind::IndexLeaf);
    StoreU32(root, 4, kTable);

    AppendedPages source(pages);
    IndexTree tree(pages, kRoot, kTable, &source);
    const ByteView key = input.last(kKeyBytes + kPlaceBytes).first(kKeyBytes);
    const auto nPlacePage = static_cast<std::uint32_t>(LoadBig<3>(input, input.size() - 4));
    for (int nPart = 0; nPart < 2; ++nPart) {
        try {
            if (nPart == 0)
                Walk(tree, key);
            else
                Change(tree, key, {nPlacePage, input.back()});
        } catch (const Failure& failure) {
            Require(failure.Kind() == FailureKind::Damaged ||
                        failure.Kind() == FailureKind::Constraint ||
                        failure.Kind() == FailureKind::Unsupported,
                    "a failure that a page can't earn");
        }
    }
}

}  // namespace
}  // namespace nomira::jet

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t nSize) {
    if (nSize > nomira::jet::kKeyBytes + nomira::jet::kPlaceBytes)
        nomira::jet::Run(nomira::jet::ByteView(data, nSize));
    return 0;
}
