#include "conversion/KeyForms.h"

#include "conversion/ConversionFixture.h"
#include "conversion/PassObserver.h"
#include "conversion/TextImport.h"

namespace nomira::testing {
namespace {

class KeyFormsTest : public ConversionFixture {
  protected:
    const KeyForm* Take(TextView sLine) {
        g_sLine = sLine;
        return TakeTextLine(KeyForms());
    }
};

TEST_F(KeyFormsTest, AStandardInstallationKnowsItsOwnForm) {
    const KeyForms forms;
    EXPECT_FALSE(forms.IsCustomer());
    ASSERT_NE(forms.Find(u"IN_12"), nullptr);
    EXPECT_EQ(forms.Find(u"IN_12")->pClass->sPrefix, TextView(u"IN_"));
    EXPECT_EQ(forms.Find(u"17")->pClass->sPrefix, TextView(u"ZTQXProcParam_"));
    for (const TextView sWord : {u"E12", u"IN_12345", u"IN_", u"ZTQXProcParam_17", u"1234", u""})
        EXPECT_EQ(forms.Find(sWord), nullptr) << Printable(sWord);
    EXPECT_EQ(forms.Stored(*forms.Find(u"17"), u"17"), u"17");
}

TEST_F(KeyFormsTest, ACustomersKeysAreStoredInStandardForm) {
    BecomeCustomer();
    const KeyForms forms;
    EXPECT_TRUE(forms.IsCustomer());
    EXPECT_EQ(forms.Find(u"IN_12"), nullptr);
    EXPECT_EQ(forms.Stored(*forms.Find(u"E12"), u"E12"), u"IN_12");
    EXPECT_EQ(forms.Stored(*forms.Find(u"P7"), u"P7"), u"ZTQXProcParam_7");
    EXPECT_EQ(forms.Stored(*forms.Find(u"Weld15"), u"Weld15"), u"Weld15");
}

TEST_F(KeyFormsTest, ALineIsTakenWithoutADatabase) {
    ASSERT_NE(Take(u"IN_5\tF\u00FCllstand "), nullptr);
    EXPECT_EQ(g_sLine, u"IN_5    Fuellstand ");
    EXPECT_EQ(g_vSymbol, u"IN_5");
    EXPECT_EQ(g_vLongName, u"Fuellstand");
    ASSERT_NE(Take(u"IN_5"), nullptr);
    EXPECT_EQ(g_vLongName, u"|EMPTY|");
    EXPECT_EQ(Take(u"remark"), nullptr);
    EXPECT_EQ(g_vSymbol, u"remark");
    EXPECT_EQ(db.Query("SELECT * FROM Items").size(), 0U);
}

TEST_F(KeyFormsTest, TheWipeSeesNoKeyAheadOfATab) {
    g_sLine = u"IN_5\tPump";
    EXPECT_EQ(TakeWipeKey(KeyForms()), nullptr);
    EXPECT_EQ(g_sLine, u"IN_5\tPump");
    g_sLine = u"IN_5 Pump";
    ASSERT_NE(TakeWipeKey(KeyForms()), nullptr);
    EXPECT_TRUE(TakeWipeKey(KeyForms())->bReasonToWipe);
    g_sLine = u"BININ_5 Pump";
    EXPECT_FALSE(TakeWipeKey(KeyForms())->bReasonToWipe);
}

TEST_F(KeyFormsTest, AKeyThatIsPassedOverTellsItsClass) {
    const auto classOf = [](TextView sWord, bool bCustomer) {
        const SignalClass* pClass = nullptr;
        ReasonPassedOver(sWord, bCustomer, &pClass);
        return pClass ? pClass->sPrefix : TextView();
    };
    EXPECT_EQ(classOf(u"TimerText123", false), TextView(u"TimerText"));
    EXPECT_EQ(classOf(u"E5", false), TextView(u"IN_"));
    EXPECT_EQ(classOf(u"ZTQXProcParam_17", false), TextView(u"ZTQXProcParam_"));
    EXPECT_EQ(classOf(u"IN_5", true), TextView(u"IN_"));
    EXPECT_EQ(classOf(u"E12345", true), TextView(u"IN_"));
    EXPECT_EQ(classOf(u"pump", false), TextView());
}

}  // namespace
}  // namespace nomira::testing
