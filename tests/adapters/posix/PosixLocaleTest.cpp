#include "adapters/posix/PosixLocale.h"

#include <cstdlib>
#include <set>
#include <string>

#include "adapters/posix/CodePages.h"
#include "adapters/posix/LanguageTable.h"
#include "adapters/posix/PrefixSettings.h"
#include "testing/TextPrinting.h"

namespace nomira::posix {
namespace {

TEST(PosixLocaleTest, TheLanguageComesFromItsName) {
    const struct {
        const char* sName;
        int nId;
    } rows[] = {
        {"de_DE.UTF-8", 0x0407}, {"de_AT", 0x0C07},         {"de", 0x0407},    {"de_XX", 0x0407},
        {"de_DE@euro", 0x0407},  {"en_GB.UTF-8", 0x0809},   {"fr_FR", 0x040C}, {"es_ES", 0x0C0A},
        {"pt_BR", 0x0416},       {"zh_CN.GB18030", 0x0804}, {"ja_JP", 0x0411}, {"C", 0x0409},
        {"C.UTF-8", 0x0409},     {"POSIX", 0x0409},         {"", 0x0409},      {"xx_YY", 0x0409},
    };
    for (const auto& row : rows)
        EXPECT_EQ(PosixLocale(1252, row.sName).UserDefaultLangId(), row.nId) << row.sName;
}

TEST(PosixLocaleTest, TheFirstVariableThatIsSetNamesTheLanguage) {
    const char* const names[] = {"LC_ALL", "LC_MESSAGES", "LANG"};
    for (const char* sName : names)
        ::unsetenv(sName);
    EXPECT_EQ(PosixLocale::LanguageOfEnvironment(), "");
    ::setenv("LANG", "de_DE", 1);
    EXPECT_EQ(PosixLocale::LanguageOfEnvironment(), "de_DE");
    ::setenv("LC_MESSAGES", "fr_FR", 1);
    EXPECT_EQ(PosixLocale::LanguageOfEnvironment(), "fr_FR");
    ::setenv("LC_ALL", "", 1);
    EXPECT_EQ(PosixLocale::LanguageOfEnvironment(), "fr_FR");
    ::setenv("LC_ALL", "it_IT", 1);
    EXPECT_EQ(PosixLocale::LanguageOfEnvironment(), "it_IT");
    for (const char* sName : names)
        ::unsetenv(sName);
}

TEST(PosixLocaleTest, LocalesHaveThePagesOfTheirLanguages) {
    PosixLocale locale(1252, "pl_PL.UTF-8");
    const struct {
        std::int32_t nLocale;
        Text sPage;
    } rows[] = {
        {0x0407, u"1252"}, {0x0419, u"1251"}, {0x0415, u"1250"},  {0x0411, u"932"},
        {0x0439, u"0"},    {0x0400, u"1250"}, {0x0800, u"1250"},  {0, u"1250"},
        {7, u"1252"},      {0x19, u"1251"},   {0x10407, u"1252"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(locale.DefaultAnsiCodePage(row.nLocale), row.sPage + u'\0') << row.nLocale;
    EXPECT_EQ(locale.DefaultAnsiCodePage(0x03FF), std::nullopt);
    EXPECT_EQ(locale.DefaultAnsiCodePage(99), std::nullopt);
}

TEST(PosixLocaleTest, PageZeroIsTheSystemsOwn) {
    EXPECT_EQ(PosixLocale(1251, "").Decode(0, "\xC0"), Text(u"А"));
}

TEST(PosixLocaleTest, TheSystemsPageCanBeAnother) {
    PosixLocale locale(1250, "");
    EXPECT_EQ(locale.EightBitPage().Number(), 1250);
    EXPECT_EQ(locale.EightBitPage().Decode("\x9C"), Text(u"ś"));
    EXPECT_THROW(PosixLocale(4711, ""), PrefixError);
}

TEST(LanguageTableTest, EveryNameIsThereOnce) {
    std::set<std::string_view> names;
    for (const Language& language : Languages()) {
        EXPECT_TRUE(names.insert(language.sName).second) << language.sName;
        EXPECT_EQ(FindLanguage(language.sName), &language);
        EXPECT_EQ(FindLanguage(language.nId)->nId, language.nId);
    }
}

TEST(LanguageTableTest, EveryPageIsOneOfThisSystem) {
    for (const Language& language : Languages()) {
        if (language.nCodePage == 0) continue;
        EXPECT_NE(MakeCodePage(language.nCodePage), nullptr) << language.sName;
    }
}

TEST(CodePagesTest, SingleBytePagesKeepEveryByte) {
    for (const int nPage : {1250, 1251, 1252, 1254, 1256, 1258, 437, 850, 28591, 28605}) {
        const auto page = MakeCodePage(nPage);
        ASSERT_NE(page, nullptr) << nPage;
        EXPECT_EQ(page->Number(), nPage);
        for (int n = 0; n < 256; ++n) {
            const std::string byte(1, static_cast<char>(n));
            EXPECT_EQ(page->Encode(page->Decode(byte)), byte) << nPage << " byte " << n;
        }
    }
}

TEST(CodePagesTest, AByteWithoutACharacterIsMarked) {
    // Byte D2 of the Greek page is open, and it isn't one of the control block.
    EXPECT_EQ(MakeCodePage(1253)->Decode("\xD2z"), Text(u"\uFFFDz"));
    EXPECT_EQ(MakeCodePage(1253)->Decode("\x81"), Text(u"\u0081"));
}

TEST(CodePagesTest, PagesOfSeveralBytesACharacter) {
    const auto page = MakeCodePage(932);
    ASSERT_NE(page, nullptr);
    EXPECT_EQ(page->Decode("A\x93\xFA\xB1z"), Text(u"A日ｱz"));
    EXPECT_EQ(page->Encode(u"A日ｱz"), "A\x93\xFA\xB1z");
    EXPECT_TRUE(page->Holds(u'日'));
    EXPECT_FALSE(page->Holds(u'ł'));
}

TEST(CodePagesTest, WhatIsNothingInThePageIsReplaced) {
    const auto utf8 = MakeCodePage(65001);
    ASSERT_NE(utf8, nullptr);
    EXPECT_EQ(utf8->Decode("a\xC3\xBC\xF0\x9F\x99\x82z"), Text(u"aü\U0001F642z"));
    EXPECT_EQ(utf8->Decode("a\xFFz"), Text(u"a\uFFFDz"));
    EXPECT_EQ(utf8->Decode("a\xC3"), Text(u"a\uFFFD"));
    EXPECT_EQ(utf8->Encode(u"ü\U0001F642"), "\xC3\xBC\xF0\x9F\x99\x82");
    EXPECT_EQ(MakeCodePage(932)->Encode(u"ł\U0001F642x"), "??x");
    EXPECT_EQ(MakeCodePage(1251)->Encode(u"Жü"), "\xC6?");
}

TEST(CodePagesTest, LongTextIsConvertedWhole) {
    const Text sLong(5000, u'日');
    const auto page = MakeCodePage(932);
    EXPECT_EQ(page->Encode(sLong).size(), 10000U);
    EXPECT_EQ(page->Decode(page->Encode(sLong)), sLong);
}

TEST(CodePagesTest, UnknownPagesAreNone) {
    for (const int nPage : {0, -1, 4711, 99999})
        EXPECT_EQ(MakeCodePage(nPage), nullptr) << nPage;
}

}  // namespace
}  // namespace nomira::posix
