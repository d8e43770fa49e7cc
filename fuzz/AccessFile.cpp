// An Access file of any bytes. Either the input is a whole file; or its first byte picks the
// generation of a sound file that is made here, and the rest changes bytes of it, four for each:
// the page, the place on it (two, little-endian), and what its byte is combined with. The file is
// read through, checked, and written to; only a Failure may come out, and a file that passes the
// checks passes them again after it was written to.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <set>
#include <stdexcept>
#include <utility>

#include "adapters/jet/Checker.h"
#include "adapters/jet/DataPage.h"
#include "adapters/jet/Header.h"
#include "adapters/jet/MemoryPages.h"

namespace nomira::jet {
namespace {

constexpr int kRows = 18;
constexpr std::size_t kMostReads = 5000;

void Require(bool bHolds, const char* sWhat) {
    if (!bHolds) throw std::logic_error(sWhat);
}

// ---- The sound file

void CreateTables(AccessFile& file) {
    NewTable items;
    items.sName = u"Items";
    items.columns = {{u"Key_id", ColumnType::Long, 0, true, false},
                     {u"KeyString", ColumnType::Text, 255, false, true},
                     {u"Stamp", ColumnType::DateTime, 0, false, false},
                     {u"Seen", ColumnType::Boolean, 0, false, false}};
    items.indexes = {{u"PrimaryKey", {u"Key_id"}, true, true},
                     {u"KeyString", {u"KeyString"}, false, false}};
    file.CreateTable(items);
    NewTable messages;
    messages.sName = u"Messages";
    messages.columns = {{u"Key_id", ColumnType::Long, 0, false, false},
                        {u"Language_id", ColumnType::Integer, 0, false, false},
                        {u"String", ColumnType::Memo, 0, false, true}};
    messages.indexes = {{u"PrimaryKey", {u"Key_id", u"Language_id"}, true, true},
                        {u"Key_id", {u"Key_id"}, false, false}};
    file.CreateTable(messages);
    file.CreateRelationship({u"ItemsMessages", u"Items", u"Key_id", u"Messages", u"Key_id", true});
}

Row ItemOf(std::size_t nLength, char16_t c) {
    return {Value(), std::u16string(nLength, c), 36526.5, true};
}

// The file is worth changing as long as it has these.
void RequireVariety(AccessFile& file, const std::vector<RowPlace>& places) {
    PageStore& store = file.Pages();
    const auto& indexes = file.FindTable(u"Items")->Definition().realIndexes;
    Require(std::ranges::any_of(indexes,
                                [&](const RealIndex& index) {
                                    return store.Read(index.nRootPage)[0] ==
                                           static_cast<std::uint8_t>(PageKind::IndexNode);
                                }),
            "no index has more than one page");
    Require(std::ranges::any_of(places,
                                [&](RowPlace place) {
                                    return DataPage(store, place.nPage).Flags(place.nRow) ==
                                           SlotMoved;
                                }),
            "no row has moved");
}

// Rows that moved, values inline, in a row, in a chain, an index of more than one page.
void FillTables(AccessFile& file) {
    Table& items = *file.FindTable(u"Items");
    Table& messages = *file.FindTable(u"Messages");
    std::vector<RowPlace> places;
    for (int n = 0; n < kRows; ++n) {
        Row item = ItemOf(n % 3 == 0 ? 20 : 250, static_cast<char16_t>(u'a' + n % 9));
        places.push_back(items.Insert(item));
        // The chain is of two pages.
        const std::size_t nChain = file.Pages().Format().nPageSize + 100;
        const std::size_t nLength = n == 0 ? nChain : static_cast<std::size_t>(n % 3 * 150);
        Row message{item[0], std::int64_t{1}, std::u16string(nLength, u'm')};
        messages.Insert(message);
    }
    for (int n = 0; n < kRows; n += 3) {
        Row item = items.Read(places[static_cast<std::size_t>(n)]);
        item[1] = std::u16string(250, u'z');
        items.Update(places[static_cast<std::size_t>(n)], item);
    }
    items.Delete(places[1]);
    RequireVariety(file, places);
}

Bytes SoundFile(Generation generation) {
    auto pages = std::make_unique<MemoryPages>(generation);
    MemoryPages& store = *pages;
    AccessFile::CreateEmpty(store);
    AccessFile file(std::move(pages));
    CreateTables(file);
    FillTables(file);
    store.Commit();
    return store.File();
}

const Bytes& SoundFileOf(Generation generation) {
    static const Bytes jet3 = SoundFile(Generation::Jet3);
    static const Bytes jet4 = SoundFile(Generation::Jet4);
    return generation == Generation::Jet3 ? jet3 : jet4;
}

std::unique_ptr<MemoryPages> PagesOf(ByteView input) {
    if (input.size() >= kSignatureBytes)
        if (const auto generation = GenerationOf(input.first(kSignatureBytes)))
            return std::make_unique<MemoryPages>(*generation, Bytes(input.begin(), input.end()));
    const auto generation = (input[0] & 1U) != 0 ? Generation::Jet4 : Generation::Jet3;
    Bytes file = SoundFileOf(generation);
    for (std::size_t n = 1; n + 4 <= input.size(); n += 4) {
        const std::size_t nPlace =
            input[n] * LayoutOf(generation).nPageSize + LoadU16(input, n + 1);
        file[nPlace % file.size()] ^= input[n + 3];
    }
    return std::make_unique<MemoryPages>(generation, std::move(file));
}

// ---- What is done with it

// Only what bytes of a file can earn.
template <typename Part>
bool Try(Part part) {
    try {
        part();
        return true;
    } catch (const Failure& failure) {
        Require(failure.Kind() == FailureKind::Damaged ||
                    failure.Kind() == FailureKind::Unsupported ||
                    failure.Kind() == FailureKind::Constraint,
                "a failure that a file's bytes can't earn");
        return false;
    }
}

// Each row once; one that is the same from all sides says no more.
void ReadThrough(Table& table) {
    std::set<RowPlace> places;
    const auto read = [&](RowPlace place) {
        if (places.insert(place).second) Try([&] { table.Read(place); });
    };
    for (auto scan = table.Rows(); !scan.AtEnd() && places.size() < kMostReads; scan.Next())
        read(scan.Place());
    for (std::size_t n = 0; n < table.Definition().realIndexes.size(); ++n)
        Try([&] {
            for (auto cursor = table.Index(n).First(); !cursor.AtEnd(); cursor.Next())
                read(cursor.Place());
        });
}

bool IsSound(AccessFile& file) {
    return std::ranges::all_of(CheckFile(file), &Finding::bWarning);
}

void Write(AccessFile& file) {
    if (Table* items = file.FindTable(u"Items")) {
        Row item = ItemOf(30, u'n');
        item.resize(items->Definition().columns.size());
        const RowPlace place = items->Insert(item);
        item = items->Read(place);
        items->Update(place, item);
        const auto first = items->Rows();
        if (!first.AtEnd()) items->Delete(first.Place());
    }
    if (Table* messages = file.FindTable(u"Messages")) {
        const auto first = messages->Rows();
        if (first.AtEnd()) return;
        Row message = messages->Read(first.Place());
        messages->Update(first.Place(), message);
        messages->Delete(first.Place());
    }
}

void Run(ByteView input) {
    auto pages = PagesOf(input);
    MemoryPages& store = *pages;
    Try([&] {
        AccessFile file(std::move(pages));
        for (const CatalogueEntry& entry : file.Catalogue())
            if (entry.IsTable())
                Try([&] { ReadThrough(file.TableAt(static_cast<std::uint32_t>(entry.nId))); });
        const bool bSound = IsSound(file);
        if (Try([&] { Write(file); }))
            Require(!bSound || IsSound(file), "writing has damaged a sound file");
        store.Rollback();
    });
}

}  // namespace
}  // namespace nomira::jet

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t nSize) {
    if (nSize > 0) nomira::jet::Run(nomira::jet::ByteView(data, nSize));
    return 0;
}
