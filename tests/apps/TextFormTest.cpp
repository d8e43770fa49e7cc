#include "apps/nomiractl/TextForm.h"

#include <gtest/gtest.h>

#include "adapters/posix/CodePages.h"
#include "apps/nomiractl/CodePageName.h"
#include "apps/nomiractl/Refusal.h"
#include "apps/nomiractl/TextSource.h"
#include "testing/Random.h"
#include "testing/TextPrinting.h"

namespace nomira::companion {
namespace {

using Lines = std::vector<std::string>;
using nomira::testing::Random;

Lines LinesOf(std::string_view bytes, LineEnds ends) {
    Lines lines;
    while (!bytes.empty())
        lines.emplace_back(TakeLine(bytes, ends));
    return lines;
}

TEST(TextFormTest, ALineEndsAsTheFormHasIt) {
    struct Row {
        const char* bytes;
        Lines crlf;
        Lines lf;
    };
    const Row rows[]{
        {"", {}, {}},
        {"a", {"a"}, {"a"}},
        {"a\r\nb\r\n", {"a", "b"}, {"a", "b"}},
        {"a\rb", {"a", "b"}, {"a", "b"}},
        {"a\nb\n", {"a\nb\n"}, {"a", "b"}},
        {"\r\n\n\r", {"", "\n"}, {"", "", ""}},
        {"a\n\rb", {"a\n", "b"}, {"a", "", "b"}},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(LinesOf(row.bytes, LineEnds::CrLf), row.crlf) << row.bytes;
        EXPECT_EQ(LinesOf(row.bytes, LineEnds::Lf), row.lf) << row.bytes;
        EXPECT_EQ(CountLines(row.bytes, LineEnds::Lf), static_cast<std::int64_t>(row.lf.size()));
    }
}

TEST(TextFormTest, EveryByteComesBackInEachPageAndInUtf8) {
    std::string all;
    for (int n = 0; n < 256; ++n)
        all += static_cast<char>(n);
    for (const int nPage : {1250, 1251, 1252, 28591, 28605}) {
        const auto page = posix::MakeCodePage(nPage);
        ASSERT_TRUE(page) << nPage;
        const Text sText = DecodeLine(all, TextEncoding::CodePage, *page);
        EXPECT_EQ(sText.size(), 256U);
        EXPECT_TRUE(FlawsOfLine(sText, 1, TextEncoding::CodePage, *page).empty()) << nPage;
        EXPECT_EQ(EncodeLine(sText, TextEncoding::CodePage, *page), all) << nPage;
        const std::string utf8 = EncodeLine(sText, TextEncoding::Utf8, *page);
        const Text sBack = DecodeLine(utf8, TextEncoding::Utf8, *page);
        EXPECT_EQ(sBack, sText) << nPage;
        EXPECT_TRUE(FlawsOfLine(sBack, 1, TextEncoding::Utf8, *page).empty()) << nPage;
    }
}

TEST(TextFormTest, AnyBytesComeBackFromUtf8FlawsAndAll) {
    Random random;
    SCOPED_TRACE(random.Seed());
    const CodePage& page = Windows1252();
    for (int nRound = 0; nRound < 2'000; ++nRound) {
        std::string bytes;
        for (std::size_t n = random.UpTo(20); n > 0; --n)
            bytes += static_cast<char>(random.UpTo(255));
        EXPECT_EQ(EncodeLine(DecodeLine(bytes, TextEncoding::Utf8, page), TextEncoding::Utf8, page),
                  bytes);
    }
}

TEST(TextFormTest, FlawsHaveTheirPlaceInCharacters) {
    const auto found = [](std::string_view line, TextEncoding encoding, int nPage) {
        const auto page = posix::MakeCodePage(nPage);
        Lines words;
        for (const TextFlaw& flaw :
             FlawsOfLine(DecodeLine(line, encoding, *page), 7, encoding, *page))
            words.push_back(std::to_string(flaw.nLine) + ":" + std::to_string(flaw.nColumn) + " " +
                            InWords(flaw, *page));
        return words;
    };
    using enum TextEncoding;
    EXPECT_EQ(found("ä€", Utf8, 1252), Lines{});
    EXPECT_EQ(found("ä€", Utf8, 28591),
              Lines{"7:2 the character \"€\" (U+20AC) is not in code page 28591"});
    EXPECT_EQ(found("ä€", Utf8, 28605), Lines{});
    EXPECT_EQ(found("ä\U0001F6A9Ω", Utf8, 1252),
              (Lines{"7:2 the character \"\U0001F6A9\" (U+1F6A9) is not in code page 1252",
                     "7:3 the character \"Ω\" (U+03A9) is not in code page 1252"}));
    EXPECT_EQ(found("a\xFC\xC3", Utf8, 1252),
              (Lines{"7:2 the byte FC is no UTF-8", "7:3 the byte C3 is no UTF-8"}));
    // Over-long, and a half of a pair.
    EXPECT_EQ(found("\xC0\x80", Utf8, 1252).size(), 2U);
    EXPECT_EQ(found("\xED\xA0\x80", Utf8, 1252).size(), 3U);
    EXPECT_EQ(found("a\xAAz", CodePage, 1253),
              Lines{"7:2 a byte that is no character of code page 1253"});
}

TEST(TextFormTest, WhatAFileCannotHoldOfTheDatabaseIsFound) {
    const Text sRow{u'a', 0xD83D, u'Ω'};
    const auto columns = [&](TextEncoding encoding) {
        std::vector<std::int64_t> all;
        for (const TextFlaw& flaw : FlawsOfRow(sRow, 1, encoding, Windows1252()))
            all.push_back(flaw.nColumn);
        return all;
    };
    EXPECT_EQ(columns(TextEncoding::CodePage), (std::vector<std::int64_t>{2, 3}));
    EXPECT_EQ(columns(TextEncoding::Utf8), std::vector<std::int64_t>{2});
}

TEST(CodePageNameTest, KnowsThePagesByTheirUsualNames) {
    const std::pair<const char*, std::optional<int>> rows[]{
        {"1252", 1252},
        {"cp1250", 1250},
        {"Windows-1251", 1251},
        {"8859-1", 28591},
        {"ISO-8859-15", 28605},
        {"iso8859-2", 28592},
        {"Latin1", 28591},
        {"latin9", 28605},
        {"", std::nullopt},
        {"utf-8", std::nullopt},
        {"65001", std::nullopt},
        {"cp65001", std::nullopt},
        {"8859-99", std::nullopt},
        {"-1252", std::nullopt},
        {"1252x", std::nullopt},
        {"99999999999", std::nullopt},
    };
    for (const auto& [sName, nPage] : rows)
        EXPECT_EQ(CodePageOfName(sName), nPage) << sName;
}

// ---- Whole files ----

std::string Refused(const std::string& bytes, TextForm form) {
    try {
        TextSource("a.txt", bytes, form).RequireNoFlaws();
    } catch (const Refusal& refusal) {
        return refusal.what();
    }
    return {};
}

TEST(TextSourceTest, AMarkIsTakenFromUtf8AndRefusedElsewhere) {
    EXPECT_EQ(TextSource("a", "\xEF\xBB\xBFIN_1 x", {.encoding = TextEncoding::Utf8}).Bytes(),
              "IN_1 x");
    EXPECT_EQ(Refused("\xEF\xBB\xBFIN_1 x", {}),
              "a.txt:1:1: the file begins with a UTF-8 mark; give --encoding utf-8, or save it in"
              " code page 1252");
    for (const char* bytes : {"\xFF\xFEI", "\xFE\xFF"})
        EXPECT_EQ(Refused(bytes, {}).substr(0, 49),
                  "a.txt:1:1: the file begins with a UTF-16 mark; sa");
}

TEST(TextSourceTest, EachFlawIsALineUpToAMost) {
    const TextForm form{TextEncoding::Utf8, LineEnds::Lf};
    EXPECT_EQ(Refused("ok\nä Ω\n\xFF\n", form),
              "a.txt:2:3: the character \"Ω\" (U+03A9) is not in code page 1252\n"
              "nomiractl: a.txt:3:1: the byte FF is no UTF-8");
    EXPECT_EQ(Refused("ok\nä €\n", form), "");
    const std::string sMany = Refused(std::string(50, '\xFF'), form);
    EXPECT_EQ(std::count(sMany.begin(), sMany.end(), '\n'), 20);
    EXPECT_TRUE(sMany.ends_with("1:20: the byte FF is no UTF-8\nnomiractl: and more"));
}

TEST(TextSourceTest, IsReadFromTheStartAsOftenAsItIsOpenedAndTellsEachLine) {
    const TextSource source("a", "\xEF\xBB\xBFä\r\nbc\nd",
                            {.encoding = TextEncoding::Utf8, .ends = LineEnds::Lf});
    for (int nRound = 0; nRound < 2; ++nRound) {
        std::size_t nBytes = 0;
        const auto file = source.Open([&nBytes](std::size_t nMore) { nBytes += nMore; });
        std::vector<Text> lines;
        for (Text sLine; !file->AtEnd(); lines.push_back(sLine))
            file->ReadLine(sLine);
        EXPECT_EQ(lines, (std::vector<Text>{u"ä", u"bc", u"d"}));
        EXPECT_EQ(nBytes, source.Bytes().size());
    }
}

}  // namespace
}  // namespace nomira::companion
