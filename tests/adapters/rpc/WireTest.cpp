#include "adapters/rpc/Wire.h"

#include "testing/TextPrinting.h"

namespace nomira::rpc {
namespace {

std::string Nested(int nDepth) {
    return std::string(static_cast<std::size_t>(nDepth), '[') +
           std::string(static_cast<std::size_t>(nDepth), ']');
}

TEST(WireTest, ALineIsOneJsonText) {
    EXPECT_EQ(ParseLine("{\"a\": [1, \"b\"]}"), Json({{"a", {1, "b"}}}));
    for (const char* sLine : {"", " ", "{", "{}{}", "nonsense", "{\"a\":}", "{'a':1}", "\"\xFF\"",
                              "\"\\uD800\"", "\"\xED\xA0\x80\"", "[1,]"})
        EXPECT_THROW(ParseLine(sLine), WireError) << sLine;
}

TEST(WireTest, NestingHasALimit) {
    EXPECT_NO_THROW(ParseLine(Nested(kMaxDepth)));
    EXPECT_THROW(ParseLine(Nested(kMaxDepth + 1)), WireError);
    EXPECT_THROW(ParseLine(std::string(1'000'000, '[')), WireError);
    std::string sObjects;
    for (int n = 0; n < 100'000; ++n)
        sObjects += "{\"a\":";
    EXPECT_THROW(ParseLine(sObjects), WireError);
}

TEST(WireTest, ThePiecesOfALineHaveALimit) {
    const auto listOf = [](std::size_t nValues, std::string_view sValue) {
        std::string sList = "[";
        for (std::size_t n = 0; n < nValues; ++n)
            sList.append(n == 0 ? "" : ",").append(sValue);
        return sList + "]";
    };
    EXPECT_EQ(ParseLine(listOf(kMaxPieces, "0")).size(), kMaxPieces);
    EXPECT_THROW(ParseLine(listOf(kMaxPieces + 1, "0")), WireError);
    EXPECT_EQ(ParseLine(listOf(kMaxPieces / 2, "{}")).size(), kMaxPieces / 2);
    EXPECT_THROW(ParseLine(listOf(kMaxPieces / 2 + 1, "{}")), WireError);
    EXPECT_THROW(ParseLine("{\"a\":" + listOf(kMaxPieces, "\"\"") + "}"), WireError);
}

TEST(WireTest, WhatStandsInATextIsNoPieceAndNoNesting) {
    const std::string sBrackets(100, '['), sCommas(kMaxPieces + 1, ',');
    for (const std::string& sText : {sBrackets, sCommas, "\\\"" + sBrackets, sBrackets + "\\\\"})
        EXPECT_NO_THROW(ParseLine("[\"" + sText + "\", \"" + sText + "\"]"));
    EXPECT_THROW(ParseLine("[\"\\\\\"," + Nested(kMaxDepth) + "]"), WireError);
}

TEST(WireTest, ALineHasALimit) {
    std::string sLine(kMaxLine - 2, 'x');
    sLine = '"' + sLine + '"';
    EXPECT_EQ(ParseLine(sLine).get_ref<const std::string&>().size(), kMaxLine - 2);
    EXPECT_THROW(ParseLine(sLine + ' '), WireError);
}

TEST(WireTest, ALineEndsWithALineFeedAndHoldsNone) {
    EXPECT_EQ(LineOf({{"a", "x\ny"}}), "{\"a\":\"x\\ny\"}\n");
}

TEST(WireTest, TextsSurvive) {
    for (const Text& sText : {Text(u""), Text(u"abc"), Text(u"T\u00FCr\u20AC"),
                              Text(u"\U0001F600 and \uFFFF"), Text(u"a\0b", 3)})
        EXPECT_EQ(FromWire(ToWire(sText)), sText);
    EXPECT_EQ(ToWire(u"\u00FC\u20AC\U0001F600"), "\xC3\xBC\xE2\x82\xAC\xF0\x9F\x98\x80");
}

TEST(WireTest, HalfOfASurrogatePairCantBeSent) {
    for (const Text& sText : {Text(1, 0xD800), Text(1, 0xDC00), Text(u"a") + char16_t(0xD83D),
                              Text(1, 0xD83D) + u"x", Text(1, 0xDE00) + char16_t(0xD83D)})
        EXPECT_THROW(ToWire(sText), WireError);
}

TEST(WireTest, WhatIsNoUtf8IsNoText) {
    for (const char* sBytes : {"\xFF", "\xC3", "\xC0\x80", "a\x80", "\xF8\x88\x80\x80\x80"})
        EXPECT_THROW(FromWire(sBytes), WireError);
}

TEST(WireTest, MembersHaveTheirKind) {
    const Json object{{"text", "T\xC3\xBCr"}, {"number", -7}, {"truth", true}, {"bytes", "Zm9v"}};
    EXPECT_EQ(TextMember(object, "text"), u"T\u00FCr");
    EXPECT_EQ(NumberMember(object, "number"), -7);
    EXPECT_TRUE(BoolMember(object, "truth"));
    EXPECT_EQ(BytesMember(object, "bytes"), "foo");
    EXPECT_THROW(TextMember(object, "number"), WireError);
    EXPECT_THROW(NumberMember(object, "text"), WireError);
    EXPECT_THROW(NumberMember(object, "truth"), WireError);
    EXPECT_THROW(BoolMember(object, "number"), WireError);
    EXPECT_THROW(BytesMember(object, "text"), WireError);
    EXPECT_THROW(BytesMember(object, "number"), WireError);
    EXPECT_THROW(TextMember(object, "missing"), WireError);
    EXPECT_THROW(TextMember(Json::array(), "text"), WireError);
}

TEST(WireTest, NumbersHave32Bits) {
    EXPECT_EQ(NumberMember({{"n", 2147483647}}, "n"), 2147483647);
    EXPECT_EQ(NumberMember({{"n", -2147483648LL}}, "n"), -2147483647 - 1);
    for (const char* sNumber : {"2147483648", "-2147483649", "9223372036854775807",
                                "18446744073709551615", "1e3", "1.0", "99999999999999999999999"})
        EXPECT_THROW(NumberMember({{"n", Json::parse(sNumber)}}, "n"), WireError) << sNumber;
}

}  // namespace
}  // namespace nomira::rpc
