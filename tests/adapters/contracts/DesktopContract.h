// What every adapter of Desktop must do. A rig brings a desktop on which nothing is open:
//
//     Desktop& Port();                         // the instance under test
//     void StartOther();                       // an instance that was there before it
//     void OpenWindow(TextView sTitle);        // of the other instance
//     void CloseWindow(TextView sTitle);
//     std::vector<Text> Activated(), Raised(); // what the other instance was asked to show
//     std::string Boxes();                     // "TITLE: TEXT", a line for each box
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/Desktop.h"
#include "testing/TextPrinting.h"

namespace nomira::testing {

using Titles = std::vector<Text>;

template <typename Rig>
class DesktopContract : public ::testing::Test {
  protected:
    Desktop& Port() { return m_rig.Port(); }
    Rig m_rig;
};

TYPED_TEST_SUITE_P(DesktopContract);

TYPED_TEST_P(DesktopContract, TheFirstInstanceFindsNoOtherEvenIfItAsksTwice) {
    EXPECT_FALSE(this->Port().PreviousInstance());
    EXPECT_FALSE(this->Port().PreviousInstance());
}

TYPED_TEST_P(DesktopContract, ALaterInstanceFindsTheFirst) {
    this->m_rig.StartOther();
    EXPECT_TRUE(this->Port().PreviousInstance());
    EXPECT_TRUE(this->Port().PreviousInstance());
}

TYPED_TEST_P(DesktopContract, AWindowIsFoundByItsExactTitle) {
    this->m_rig.StartOther();
    this->m_rig.OpenWindow(u"Longname - Conversion");
    EXPECT_TRUE(this->Port().FindWindow(u"Longname - Conversion"));
    for (const TextView sTitle : {u"Longname", u"longname - conversion", u"Nomira", u""})
        EXPECT_EQ(this->Port().FindWindow(sTitle), std::nullopt) << Printable(sTitle);
}

TYPED_TEST_P(DesktopContract, AClosedWindowIsNotFound) {
    this->m_rig.StartOther();
    this->m_rig.OpenWindow(u"A");
    this->m_rig.OpenWindow(u"B");
    this->m_rig.CloseWindow(u"A");
    EXPECT_EQ(this->Port().FindWindow(u"A"), std::nullopt);
    EXPECT_TRUE(this->Port().FindWindow(u"B"));
}

TYPED_TEST_P(DesktopContract, WithoutAnyWindowNothingHappens) {
    EXPECT_EQ(this->Port().FindWindow(u"Nomira"), std::nullopt);
    this->Port().ActivateByTitle(u"Nomira");
    this->Port().BringWindowToTop(1);
}

TYPED_TEST_P(DesktopContract, AFoundWindowIsRaised) {
    this->m_rig.StartOther();
    this->m_rig.OpenWindow(u"Ö - 1");
    this->m_rig.OpenWindow(u"Nomira");
    this->Port().BringWindowToTop(*this->Port().FindWindow(u"Nomira"));
    this->Port().BringWindowToTop(*this->Port().FindWindow(u"Ö - 1"));
    this->Port().BringWindowToTop(0);
    this->Port().BringWindowToTop(999);
    EXPECT_EQ(this->m_rig.Raised(), (Titles{u"Nomira", u"Ö - 1"}));
}

TYPED_TEST_P(DesktopContract, ActivationReachesTheOtherInstance) {
    this->m_rig.StartOther();
    this->m_rig.OpenWindow(u"Nomira");
    this->Port().ActivateByTitle(u"Nomira");
    EXPECT_EQ(this->m_rig.Activated(), Titles{u"Nomira"});
    EXPECT_EQ(this->m_rig.Raised(), Titles{});
}

TYPED_TEST_P(DesktopContract, BoxesAreShownInTheirOrder) {
    this->Port().ShowMessageBox(u"größer", u"Nomira", BoxIcon::Exclamation);
    this->Port().ShowMessageBox(u"b", u"Other", BoxIcon::None);
    EXPECT_EQ(this->m_rig.Boxes(),
              "Nomira: gr\xC3\xB6\xC3\x9F"
              "er\nOther: b\n");
}

TYPED_TEST_P(DesktopContract, TheScreenHasASize) {
    const ScreenSize size = this->Port().Screen();
    EXPECT_EQ(size.nWidth, 15360);
    EXPECT_EQ(size.nHeight, 11520);
}

REGISTER_TYPED_TEST_SUITE_P(DesktopContract, TheFirstInstanceFindsNoOtherEvenIfItAsksTwice,
                            ALaterInstanceFindsTheFirst, AWindowIsFoundByItsExactTitle,
                            AClosedWindowIsNotFound, WithoutAnyWindowNothingHappens,
                            AFoundWindowIsRaised, ActivationReachesTheOtherInstance,
                            BoxesAreShownInTheirOrder, TheScreenHasASize);

}  // namespace nomira::testing
