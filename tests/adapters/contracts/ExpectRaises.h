// EXPECT_RAISES(ErrorNumber::ObjectClosed, connection->Close()), for tests that say it often.
#pragma once

#include <gtest/gtest.h>

#include "testing/Raised.h"

#define EXPECT_RAISES(number, action) EXPECT_EQ(::nomira::testing::Raised([&] { action; }), number)
