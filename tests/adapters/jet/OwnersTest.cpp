#include "adapters/jet/Owners.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <set>

#include "adapters/jet/FilePages.h"
#include "adapters/jet/Header.h"
#include "adapters/jet/MemoryPages.h"
#include "adapters/jet/Rc4.h"

namespace nomira::testing {
namespace {

namespace fs = std::filesystem;
using jet::AccessFile;
using jet::Bytes;
using jet::Generation;

// As a workgroup's file gives them: nine bytes of its own, and others among the mark.
Bytes LongIdentity(std::uint8_t nOwn) {
    Bytes identity{1, nOwn, 0x54, 0x32, 0x43, 0x62, 0x02, 0x84, 0x1B};
    const Bytes mark{0xDF, 0x56, 0x1A, 0x17, 0x23, 0x6A, 0x4B, 0x11};
    while (identity.size() < 102)
        jet::Append(identity, mark);
    identity.resize(102);
    return identity;
}

std::unique_ptr<AccessFile> NewFile(Generation generation) {
    auto pages = std::make_unique<jet::MemoryPages>(generation);
    AccessFile::CreateEmpty(*pages);
    return std::make_unique<AccessFile>(std::move(pages));
}

struct Keyed {
    std::uint64_t nDate;
    std::uint32_t nBuild;
    std::uint32_t nKey;
};
// Three that occur in files; they belong together.
constexpr Keyed kKeyed[]{{0x40E29FF17D1F72BC, 8618, 0x75FF76EA},
                         {0x40E4AB3E3BD3853E, 9756, 0x3853837E},
                         {0x40E29EF7B32F9559, 8618, 0xBBCF9192}};

// A file of that header, with all its owners hidden by that key.
std::unique_ptr<AccessFile> FileWith(const Keyed& keyed) {
    auto file = NewFile(Generation::Jet4);
    const jet::ByteSpan page = file->Pages().Change(0);
    jet::MaskHeader(page, Generation::Jet4);
    jet::StoreLittle<8>(page, 0x72, keyed.nDate);
    jet::StoreU32(page, 0x6A, keyed.nBuild);
    jet::MaskHeader(page, Generation::Jet4);
    for (const auto& [nTable, sColumn] :
         {std::pair(jet::kObjectsTable, u"Owner"), std::pair(jet::kRightsTable, u"SID")}) {
        jet::SystemTable table(*file, nTable);
        const std::size_t nColumn = table.Column(sColumn);
        for (auto scan = table.Rows().Rows(); !scan.AtEnd(); scan.Next()) {
            jet::Row row = table.Rows().Read(scan.Place());
            auto& who = std::get<Bytes>(row[nColumn]);
            jet::ApplyRc4(kKeyed[0].nKey, who);
            jet::ApplyRc4(keyed.nKey, who);
            table.Rows().Update(scan.Place(), row);
        }
    }
    return file;
}

void Grant(AccessFile& file, Bytes who) {
    jet::SetGrants(file, 4, {{std::move(who), 0xFFFFF, false}});
}

TEST(OwnersTest, Jet3HidesNothing) {
    const auto file = NewFile(Generation::Jet3);
    const jet::OwnerCipher cipher(*file);
    EXPECT_EQ(cipher.Apply(LongIdentity(7)), LongIdentity(7));
    EXPECT_EQ(cipher.Apply(Bytes{3, 1}), (Bytes{3, 1}));
}

TEST(OwnersTest, TheKeyOfAJet4FileComesFromItsHeaderAndALongIdentity) {
    for (const Keyed& keyed : kKeyed) {
        const auto file = FileWith(keyed);
        Bytes hidden = LongIdentity(7);
        jet::ApplyRc4(keyed.nKey, hidden);
        Grant(*file, hidden);
        const jet::OwnerCipher cipher(*file);
        EXPECT_EQ(cipher.Apply(hidden), LongIdentity(7));
        EXPECT_EQ(cipher.Apply(LongIdentity(7)), hidden);
        Bytes admin{3, 1};
        jet::ApplyRc4(keyed.nKey, admin);
        EXPECT_EQ(cipher.Apply(admin), (Bytes{3, 1}));
    }
}

TEST(OwnersTest, WithoutOneOnlyTheIdentitiesOfAllFilesAreKnown) {
    const auto file = FileWith(kKeyed[1]);
    Bytes admin{3, 1};
    jet::ApplyRc4(kKeyed[1].nKey, admin);
    EXPECT_EQ(jet::OwnerCipher(*file).Apply(admin), (Bytes{3, 1}));
    EXPECT_EQ(jet::OwnerCipher(*file).Apply(LongIdentity(7)), std::nullopt);
    Grant(*file, LongIdentity(7));  // hidden by no key that the header could mean
    EXPECT_EQ(jet::OwnerCipher(*file).Apply(admin), (Bytes{3, 1}));
    EXPECT_EQ(jet::OwnerCipher(*file).Apply(LongIdentity(7)), std::nullopt);
}

TEST(OwnersTest, AFileOfOurOwnNeedsNoLongIdentity) {
    Bytes hidden = LongIdentity(7);
    jet::ApplyRc4(kKeyed[0].nKey, hidden);
    const auto file = NewFile(Generation::Jet4);
    EXPECT_EQ(jet::OwnerCipher(*file).Apply(hidden), LongIdentity(7));
}

TEST(OwnersTest, ThoseOfTheMakersFilesBecomePlain) {
    const char* sFolder = std::getenv("NOMIRA_ACCESS_SAMPLES");
    if (sFolder == nullptr) GTEST_SKIP() << "NOMIRA_ACCESS_SAMPLES names no folder with samples";
    std::set<Bytes> inJet3;
    std::set<Bytes> inJet4;
    for (const auto& entry : fs::directory_iterator(sFolder)) {
        if (entry.path().extension() != ".mdb") continue;
        SCOPED_TRACE(entry.path().filename());
        AccessFile file(jet::FilePages::Open(entry.path(), jet::OpenMode::ReadOnly));
        const jet::OwnerCipher cipher(file);
        jet::SystemTable rights(file, jet::kRightsTable);
        for (auto scan = rights.Rows().Rows(); !scan.AtEnd(); scan.Next()) {
            const auto plain = cipher.Apply(std::get<Bytes>(rights.Read(scan.Place(), u"SID")));
            ASSERT_TRUE(plain);
            (file.Kind() == Generation::Jet3 ? inJet3 : inJet4).insert(*plain);
        }
    }
    EXPECT_GT(inJet3.size(), 3U);
    std::set<Bytes> inBoth;
    std::set_intersection(inJet3.begin(), inJet3.end(), inJet4.begin(), inJet4.end(),
                          std::inserter(inBoth, inBoth.end()));
    EXPECT_GT(inBoth.size(), 3U);  // a long one too
}

}  // namespace
}  // namespace nomira::testing
