// What every adapter of Locale must do. A rig brings the locale of a German user on a system with
// page 1252, which also knows page 1251:
//
//     Locale& Port();
#pragma once

#include <optional>

#include "langtools/CodePage.h"
#include "platform/Locale.h"
#include "testing/TextPrinting.h"

namespace nomira::testing {

template <typename Rig>
class LocaleContract : public ::testing::Test {
  protected:
    Rig m_rig;
};

TYPED_TEST_SUITE_P(LocaleContract);

TYPED_TEST_P(LocaleContract, TheUsersLanguageHasItsSixteenBitId) {
    EXPECT_EQ(this->m_rig.Port().UserDefaultLangId(), 1031);
}

TYPED_TEST_P(LocaleContract, ALocalesPageComesWithATerminator) {
    EXPECT_EQ(this->m_rig.Port().DefaultAnsiCodePage(0x0409), Text(u"1252") + u'\0');
}

TYPED_TEST_P(LocaleContract, AnUnknownLocaleHasNoPage) {
    EXPECT_EQ(this->m_rig.Port().DefaultAnsiCodePage(0x7F7F), std::nullopt);
}

TYPED_TEST_P(LocaleContract, BytesAreReadInTheGivenPage) {
    EXPECT_EQ(this->m_rig.Port().Decode(1252, "\xC0\x80z"), Text(u"À€z"));
    EXPECT_EQ(this->m_rig.Port().Decode(1251, "\xC0z"), Text(u"Аz"));
    EXPECT_EQ(this->m_rig.Port().Decode(1252, ""), Text());
}

TYPED_TEST_P(LocaleContract, AnUnknownPageGivesNoText) {
    EXPECT_EQ(this->m_rig.Port().Decode(4711, "abc"), Text());
    EXPECT_EQ(this->m_rig.Port().Decode(-1, "abc"), Text());
}

TYPED_TEST_P(LocaleContract, TheSystemsPageIsTheOneThatWasSet) {
    const CodePage& page = this->m_rig.Port().EightBitPage();
    EXPECT_EQ(page.Number(), 1252);
    EXPECT_EQ(page.Decode("\x80"), Text(u"€"));
}

REGISTER_TYPED_TEST_SUITE_P(LocaleContract, TheUsersLanguageHasItsSixteenBitId,
                            ALocalesPageComesWithATerminator, AnUnknownLocaleHasNoPage,
                            BytesAreReadInTheGivenPage, AnUnknownPageGivesNoText,
                            TheSystemsPageIsTheOneThatWasSet);

}  // namespace nomira::testing
