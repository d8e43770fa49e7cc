// What every adapter of ClosedLibrary must do. A rig brings one, and counts what reaches the
// controller's side:
//
//     ClosedLibrary& Port();
//     int Refreshes();
#pragma once

#include "platform/ClosedLibrary.h"
#include "testing/TextPrinting.h"

namespace nomira::testing {

template <typename Rig>
class ClosedLibraryContract : public ::testing::Test {
  protected:
    Rig m_rig;
};

TYPED_TEST_SUITE_P(ClosedLibraryContract);

TYPED_TEST_P(ClosedLibraryContract, NothingIsToldUntilTheCall) {
    EXPECT_EQ(this->m_rig.Refreshes(), 0);
}

TYPED_TEST_P(ClosedLibraryContract, EachCallHasReachedTheOtherSideWhenItReturns) {
    this->m_rig.Port().RefreshConfDb();
    EXPECT_EQ(this->m_rig.Refreshes(), 1);
    this->m_rig.Port().RefreshConfDb();
    EXPECT_EQ(this->m_rig.Refreshes(), 2);
}

REGISTER_TYPED_TEST_SUITE_P(ClosedLibraryContract, NothingIsToldUntilTheCall,
                            EachCallHasReachedTheOtherSideWhenItReturns);

}  // namespace nomira::testing
