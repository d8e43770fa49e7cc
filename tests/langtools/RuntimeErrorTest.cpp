#include "langtools/RuntimeError.h"

#include <gtest/gtest.h>

#include "testing/Raised.h"
#include "testing/TextPrinting.h"

namespace nomira::testing {
namespace {

TEST(RuntimeErrorTest, CarriesItsNumberAndTheStandardDescription) {
    const RuntimeError error(ErrorNumber::Overflow);
    EXPECT_EQ(error.Number(), ErrorNumber::Overflow);
    EXPECT_EQ(error.Description(), u"Overflow");
    EXPECT_STREQ(error.what(), "Run-time error 6: Overflow");
}

TEST(RuntimeErrorTest, CanHaveADescriptionOfItsOwn) {
    const RuntimeError error(ErrorNumber::FileNotFound, u"no T\u00FCr.txt");
    EXPECT_EQ(error.Description(), u"no T\u00FCr.txt");
    EXPECT_STREQ(error.what(), "Run-time error 53: no T?r.txt");
}

TEST(RuntimeErrorTest, NumbersShownToTheOperatorHaveTheirWords) {
    const std::pair<int, TextView> rows[] = {
        {5, u"Invalid procedure call or argument"},
        {6, u"Overflow"},
        {9, u"Subscript out of range"},
        {13, u"Type mismatch"},
        {52, u"Bad file name or number"},
        {53, u"File not found"},
        {55, u"File already open"},
        {57, u"Device I/O error"},
        {58, u"File already exists"},
        {61, u"Disk full"},
        {62, u"Input past end of file"},
        {68, u"Device unavailable"},
        {70, u"Permission denied"},
        {71, u"Disk not ready"},
        {75, u"Path/File access error"},
        {76, u"Path not found"},
        {91, u"Object variable or With block variable not set"},
        {93, u"Invalid pattern string"},
        {340, u"Control array element doesn't exist"},
        {380, u"Invalid property value"},
        {429, u"The component can't create the object"},
        {438, u"Object doesn't support this property or method"},
        {440, u"The link to the controller failed"},
        {457, u"This key is already associated with an element of this collection"},
        {35600, u"Index out of bounds"},
        {35601, u"Element not found"},
        {35602, u"Key is not unique in collection"},
    };
    for (const auto& [nNumber, sDescription] : rows)
        EXPECT_EQ(ErrorDescription(static_cast<ErrorNumber>(nNumber)), sDescription) << nNumber;
}

TEST(RuntimeErrorTest, SixteenBitCountsOverflow) {
    EXPECT_EQ(ToInt16(32767), 32767);
    EXPECT_EQ(ToInt16(-32768), -32768);
    EXPECT_EQ(Raised([] { ToInt16(32768); }), ErrorNumber::Overflow);
    EXPECT_EQ(Raised([] { ToInt16(-32769); }), ErrorNumber::Overflow);
}

}  // namespace
}  // namespace nomira::testing
