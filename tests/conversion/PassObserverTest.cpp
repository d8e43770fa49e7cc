#include "conversion/PassObserver.h"

#include <gtest/gtest.h>

#include "langtools/ProgramState.h"
#include "testing/TextPrinting.h"

namespace nomira::testing {
namespace {

struct Row {
    TextView sFirstWord;
    PassedOver standard;
    PassedOver customer;
};

// Words that are no key in either kind of installation.
constexpr Row kRows[] = {
    {u"", PassedOver::Blank, PassedOver::Blank},
    {u"Pump", PassedOver::UnknownKey, PassedOver::UnknownKey},
    {u"IN_", PassedOver::UnknownKey, PassedOver::UnknownKey},
    {u"IN_5x", PassedOver::UnknownKey, PassedOver::UnknownKey},
    {u"in_5", PassedOver::UnknownKey, PassedOver::UnknownKey},
    {u"Start1", PassedOver::UnknownKey, PassedOver::UnknownKey},
    {u"Start112", PassedOver::TooManyDigits, PassedOver::TooManyDigits},
    {u"IN_12345", PassedOver::TooManyDigits, PassedOver::UnknownKey},
    {u"TimerText123", PassedOver::TooManyDigits, PassedOver::OtherForm},
    {u"1234", PassedOver::TooManyDigits, PassedOver::UnknownKey},
    {u"E12345", PassedOver::UnknownKey, PassedOver::TooManyDigits},
    {u"ANAE123", PassedOver::UnknownKey, PassedOver::TooManyDigits},
    {u"ZTQXProcParam_17", PassedOver::OtherForm, PassedOver::OtherForm},
    {u"ZTQXProcParam_12345", PassedOver::UnknownKey, PassedOver::UnknownKey},
};

TEST(PassObserverTest, ReasonForPassingOver) {
    for (const Row& row : kRows) {
        EXPECT_EQ(ReasonPassedOver(row.sFirstWord, false), row.standard)
            << Printable(row.sFirstWord);
        EXPECT_EQ(ReasonPassedOver(row.sFirstWord, true), row.customer)
            << Printable(row.sFirstWord);
    }
}

TEST(PassObserverTest, KeysOfTheOtherKindOfInstallation) {
    for (const TextView sKey : {u"E5", u"A1234", u"ANAE5", u"ANAA5", u"BINE5", u"BINA5", u"P123",
                                u"M5", u"I5", u"F5", u"T5"})
        EXPECT_EQ(ReasonPassedOver(sKey, false), PassedOver::OtherForm) << Printable(sKey);
    for (const TextView sKey :
         {u"IN_5", u"OUT_1234", u"ANIN_5", u"ANOUT_5", u"BININ_5", u"BINOUT_5", u"123",
          u"NoticeText5", u"CounterText5", u"FlagText5", u"TimerText5"})
        EXPECT_EQ(ReasonPassedOver(sKey, true), PassedOver::OtherForm) << Printable(sKey);
}

TEST(PassObserverTest, NobodyWatchesAtFirst) {
    ThePassObserver().ImportBegins();
    ThePassObserver().LineStored(1, u"IN_1", u"IO", u"a", true);
    ThePassObserver().LinePassedOver(2, u"x", PassedOver::UnknownKey);
    ThePassObserver().RowExported(u"IN_1", u"a");
    ThePassObserver().RowLeftOut(u"IN_1", u"|EMPTY|");
    PassObserver observer;
    SetPassObserver(&observer);
    EXPECT_EQ(&ThePassObserver(), &observer);
    SetPassObserver(nullptr);
    EXPECT_NE(&ThePassObserver(), &observer);
    SetPassObserver(&observer);
    ResetProgramState();
    EXPECT_NE(&ThePassObserver(), &observer);
}

}  // namespace
}  // namespace nomira::testing
