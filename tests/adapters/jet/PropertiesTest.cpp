#include "adapters/jet/Properties.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <limits>

#include "adapters/jet/AccessFile.h"
#include "adapters/jet/FilePages.h"
#include "testing/Random.h"

namespace nomira::testing {
namespace {

namespace fs = std::filesystem;
using jet::Bytes;
using jet::Generation;
using jet::Properties;

Bytes BytesOf(std::string_view sText) {
    return {sText.begin(), sText.end()};
}

// Of a table with one column.
Properties Some() {
    return {.names = {u"Description", u"Required", u"DefaultValue"},
            .blocks = {{.nKind = 0,
                        .sName = u"",
                        .properties = {{.nFlags = 1, .nType = 10, .nName = 0, .value = u"über"}}},
                       {.nKind = 1,
                        .sName = u"Größe",
                        .properties = {{.nFlags = 0, .nType = 1, .nName = 1, .value = Bytes{1}},
                                       {.nFlags = 1, .nType = 12, .nName = 2, .value = u""}}}}};
}

void ExpectSame(const Properties& left, const Properties& right) {
    EXPECT_EQ(left.names, right.names);
    ASSERT_EQ(left.blocks.size(), right.blocks.size());
    for (std::size_t n = 0; n < left.blocks.size(); ++n) {
        EXPECT_EQ(left.blocks[n].nKind, right.blocks[n].nKind);
        EXPECT_EQ(left.blocks[n].sName, right.blocks[n].sName);
        const auto& these = left.blocks[n].properties;
        const auto& those = right.blocks[n].properties;
        ASSERT_EQ(these.size(), those.size());
        for (std::size_t i = 0; i < these.size(); ++i) {
            EXPECT_EQ(these[i].nFlags, those[i].nFlags);
            EXPECT_EQ(these[i].nType, those[i].nType);
            EXPECT_EQ(these[i].nName, those[i].nName);
            EXPECT_EQ(these[i].value, those[i].value);
        }
    }
}

TEST(PropertiesTest, TheyStandInBlocksOfTheFilesOwnTexts) {
    using std::string_view_literals::operator""sv;
    const Bytes jet3 = BytesOf(
        "KKD\0"
        "\x2b\0\0\0\x80\0\x0b\0Description\x08\0Required\x0c\0DefaultValue"
        "\x18\0\0\0\0\0\x06\0\0\0\0\0\x0c\0\x01\x0a\0\0\x04\0\xfc"
        "ber"
        "\x22\0\0\0\x01\0\x0b\0\0\0\x05\0Gr\xf6\xdf"
        "e\x09\0\0\x01\x01\0\x01\0\x01\x08\0\x01\x0c\x02\0\0\0"sv);
    const auto read = jet::ReadProperties(jet3, Generation::Jet3);
    ASSERT_TRUE(read);
    ExpectSame(*read, Some());
    EXPECT_EQ(jet::WriteProperties(Some(), Generation::Jet3), jet3);
    const auto jet4 = jet::WriteProperties(Some(), Generation::Jet4);
    ASSERT_TRUE(jet4);
    EXPECT_EQ(Bytes(jet4->begin(), jet4->begin() + 16),
              BytesOf("MR2\0\x4a\0\0\0\x80\0\x16\0D\0e\0"sv));
}

TEST(PropertiesTest, EachGenerationReadsBackWhatItHasWritten) {
    for (const Generation generation : {Generation::Jet3, Generation::Jet4}) {
        const auto written = jet::WriteProperties(Some(), generation);
        ASSERT_TRUE(written);
        const auto read = jet::ReadProperties(*written, generation);
        ASSERT_TRUE(read);
        ExpectSame(*read, Some());
    }
}

TEST(PropertiesTest, ATextThatTheGenerationLacksIsNotWritten) {
    Properties some = Some();
    some.blocks[0].properties[0].value = std::u16string(u"\u0416");
    EXPECT_EQ(jet::WriteProperties(some, Generation::Jet3), std::nullopt);
    EXPECT_NE(jet::WriteProperties(some, Generation::Jet4), std::nullopt);
    some.blocks[0].properties[0].value = std::u16string(40000, u'x');  // 16 bits count its bytes
    EXPECT_NE(jet::WriteProperties(some, Generation::Jet3), std::nullopt);
    EXPECT_EQ(jet::WriteProperties(some, Generation::Jet4), std::nullopt);
}

TEST(PropertiesTest, WhatMakesNoSenseIsNotRead) {
    const Bytes whole = *jet::WriteProperties(Some(), Generation::Jet4);
    EXPECT_EQ(jet::ReadProperties(whole, Generation::Jet3), std::nullopt);
    EXPECT_EQ(jet::ReadProperties({}, Generation::Jet4), std::nullopt);
    for (std::size_t n = 5; n < whole.size(); ++n) {
        // Where a block ends the rest is missing altogether, and nothing contradicts that.
        const auto read = jet::ReadProperties({whole.data(), n}, Generation::Jet4);
        if (read) {
            EXPECT_LT(read->blocks.size(), Some().blocks.size()) << n;
        }
    }
    Bytes changed = whole;
    changed[4] = 3;  // a block shorter than its head
    EXPECT_EQ(jet::ReadProperties(changed, Generation::Jet4), std::nullopt);
    Properties nameless = Some();
    nameless.names.pop_back();
    EXPECT_EQ(
        jet::ReadProperties(*jet::WriteProperties(nameless, Generation::Jet4), Generation::Jet4),
        std::nullopt);
}

TEST(PropertiesTest, AnyBytesAreReadOrRefused) {
    const Bytes whole = *jet::WriteProperties(Some(), Generation::Jet4);
    Random random;
    SCOPED_TRACE(random.Seed());
    for (int n = 0; n < 20000; ++n) {
        Bytes changed = whole;
        for (int i = 0; i < 3; ++i)
            changed[random.UpTo(changed.size() - 1)] = static_cast<std::uint8_t>(random.UpTo(255));
        const auto read = jet::ReadProperties(changed, Generation::Jet4);
        if (!read) continue;
        const auto written = jet::WriteProperties(*read, Generation::Jet4);
        if (!written) continue;
        const auto again = jet::ReadProperties(*written, Generation::Jet4);
        ASSERT_TRUE(again);
        ExpectSame(*again, *read);
    }
}

TEST(PropertiesTest, ThoseOfTheMakersFilesAreWrittenAsTheyWereRead) {
    const char* sFolder = std::getenv("NOMIRA_ACCESS_SAMPLES");
    if (sFolder == nullptr) GTEST_SKIP() << "NOMIRA_ACCESS_SAMPLES names no folder with samples";
    int nFound = 0;
    for (const auto& entry : fs::directory_iterator(sFolder)) {
        if (entry.path().extension() != ".mdb") continue;
        jet::AccessFile file(jet::FilePages::Open(entry.path(), jet::OpenMode::ReadOnly));
        jet::Table& objects = *file.FindTable(u"MSysObjects");
        const auto nColumn = static_cast<std::size_t>(objects.Definition().FindColumn(u"LvProp"));
        for (auto scan = objects.Rows(); !scan.AtEnd(); scan.Next()) {
            const jet::Value value = objects.Read(scan.Place(), nColumn);
            const auto* blob = std::get_if<Bytes>(&value);
            if (blob == nullptr) continue;
            const auto read = jet::ReadProperties(*blob, file.Kind());
            ASSERT_TRUE(read) << entry.path();
            EXPECT_EQ(jet::WriteProperties(*read, file.Kind()), *blob) << entry.path();
            ++nFound;
        }
    }
    EXPECT_GT(nFound, 50);
}

}  // namespace
}  // namespace nomira::testing
