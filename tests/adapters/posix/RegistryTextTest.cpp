#include "adapters/posix/RegistryText.h"

#include <optional>
#include <string>
#include <vector>

#include "langtools/BasicText.h"
#include "langtools/CodePage.h"
#include "testing/TextPrinting.h"

namespace nomira::posix {
namespace {

using Bytes = RegistryText::Bytes;
constexpr RegistryRoot kMachine = RegistryRoot::LocalMachine;
constexpr RegistryRoot kUser = RegistryRoot::CurrentUser;

const std::string kHead4 = "REGEDIT4\r\n\r\n";
const std::string kHead5 = "Windows Registry Editor Version 5.00\r\n\r\n";
const std::string kKey = "[HKEY_LOCAL_MACHINE\\Software\\Orvo]\r\n";

RegistryText Parse(std::string_view bytes) {
    return ParseRegistryText(bytes, Windows1252());
}

std::string Utf16(std::string_view sAscii) {
    std::string bytes = "\xFF\xFE";
    for (const char c : sAscii)
        bytes.append({c, '\0'});
    return bytes;
}

std::optional<Bytes> Value(const RegistryText& text, TextView sName,
                           TextView sKey = u"Software\\Orvo", RegistryRoot root = kMachine) {
    const auto key = text.keys.find({root, FoldedKey(sKey)});
    if (key == text.keys.end()) return std::nullopt;
    const auto value = key->second.find(UCase(sName));
    return value == key->second.end() ? std::nullopt : std::optional(value->second);
}

// The data of the one value "v" that `sData` gives.
std::optional<Bytes> DataOf(const std::string& sHead, const std::string& sData) {
    return Value(Parse(sHead + kKey + "\"v\"=" + sData + "\r\n"), u"v");
}

Bytes Ascii(std::string_view s) {
    return Bytes(s.begin(), s.end());
}

TEST(RegistryTextTest, DataIsReadByItsKind) {
    const struct {
        std::string sData;
        Bytes bytes;
    } rows[] = {
        {"\"abc\"", {'a', 'b', 'c', 0}},
        {"\"\"", {0}},
        {"\"C:\\\\Orvo \\\"x\\\"\"", Ascii(std::string_view("C:\\Orvo \"x\"\0", 12))},
        {"\"a;b\" ; a comment", {'a', ';', 'b', 0}},
        {"dword:00000407", {7, 4, 0, 0}},
        {"DWORD:ffffffff", {0xFF, 0xFF, 0xFF, 0xFF}},
        {"dword:1 ; one", {1, 0, 0, 0}},
        {"hex:", {}},
        {"hex:01,02,fF", {1, 2, 0xFF}},
        {"hex:1,2,", {1, 2}},
        {"hex:01,02 ; two", {1, 2}},
        {"hex(b):01,00,00,00,00,00,00,00", {1, 0, 0, 0, 0, 0, 0, 0}},
        {"hex(0):61,62", {'a', 'b'}},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(DataOf(kHead4, row.sData), row.bytes) << row.sData;
        EXPECT_EQ(DataOf(kHead5, row.sData), row.bytes) << row.sData;
    }
}

TEST(RegistryTextTest, StringTypesInHexAreSixteenBitsInVersion5Alone) {
    for (const char* sType : {"hex(1):", "hex(2):", "hex(7):"}) {
        EXPECT_EQ(DataOf(kHead5, sType + std::string("61,00,ac,20,00,00")), (Bytes{'a', 0x80, 0}));
        EXPECT_EQ(DataOf(kHead4, sType + std::string("61,80,00")), (Bytes{'a', 0x80, 0}));
    }
    EXPECT_EQ(DataOf(kHead5, "hex(1):61,00,62"), Bytes{'a'});
}

TEST(RegistryTextTest, HexDataGoesOnBehindABackslash) {
    EXPECT_EQ(DataOf(kHead5, "hex:01,02,\\\r\n  03,\\\r\n\t04"), (Bytes{1, 2, 3, 4}));
    EXPECT_EQ(DataOf(kHead5, "hex:01,\\"), Bytes{1});
}

TEST(RegistryTextTest, MalformedDataIsPassedOverAndTold) {
    for (const std::string sData :
         {"", "abc", "\"open", "\"open\\", "\"a\"b", "dword:", "dword:123456789", "dword:xyz",
          "dword", "hex:0", "hex:123", "hex:0g", "hex:1,,2", "hex(:01", "hex():01", "hex(xyz):01",
          "hex(1:01", "str:x", "-x"}) {
        const RegistryText text = Parse(kHead5 + kKey + "\"v\"=" + sData + "\r\n\"w\"=\"x\"\r\n");
        const bool bHex0 = sData == "hex:0";  // one digit is enough
        EXPECT_EQ(Value(text, u"v").has_value(), bHex0) << sData;
        EXPECT_EQ(Value(text, u"w"), (Bytes{'x', 0})) << sData;
        EXPECT_EQ(text.findings.size(), bHex0 ? 0U : 1U) << sData;
        for (const RegistryFinding& finding : text.findings)
            EXPECT_EQ(finding.nLine, 4) << sData;
    }
}

TEST(RegistryTextTest, MalformedLinesArePassedOverAndTold) {
    const RegistryText text = Parse(kHead5 +
                                    "\"early\"=\"x\"\r\n"            // 3: no key yet
                                    "[HKEY_LOCAL_MACHINE\\Open\r\n"  // 4
                                    "\"v\"=\"x\"\r\n"                // passed over with it
                                    "[Nonsense\\Key]\r\n"            // 6
                                    "\"v\"=\"x\"\r\n"                // passed over with it
                                    "[]\r\n"                         // 8
                                    "[HKLM\\Good]\r\n"
                                    "rubbish\r\n"             // 10
                                    "\"noequals\" \"x\"\r\n"  // 11
                                    "\"unclosed=x\r\n"        // 12
                                    "; a comment\r\n"
                                    "@\r\n"  // 14
                                    "\"v\"=\"good\"\r\n");
    std::vector<int> lines;
    for (const RegistryFinding& finding : text.findings)
        lines.push_back(finding.nLine);
    EXPECT_EQ(lines, (std::vector<int>{3, 4, 6, 8, 10, 11, 12, 14}));
    EXPECT_EQ(Value(text, u"v", u"Good"), (Bytes{'g', 'o', 'o', 'd', 0}));
    EXPECT_EQ(text.keys.size(), 1U);
}

TEST(RegistryTextTest, RootsGoByTheirLongAndShortNames) {
    const RegistryText text = Parse(kHead4 +
                                    "[HKEY_LOCAL_MACHINE\\A]\n@=\"1\"\n[HKLM\\B]\n@=\"2\"\n"
                                    "[HKEY_CURRENT_USER\\A]\n@=\"3\"\n[hkcu\\B]\n@=\"4\"\n"
                                    "[HKEY_CLASSES_ROOT\\A]\n@=\"5\"\n[HKU\\A]\n@=\"6\"\n");
    EXPECT_EQ(Value(text, u"", u"A", kMachine), (Bytes{'1', 0}));
    EXPECT_EQ(Value(text, u"", u"B", kMachine), (Bytes{'2', 0}));
    EXPECT_EQ(Value(text, u"", u"A", kUser), (Bytes{'3', 0}));
    EXPECT_EQ(Value(text, u"", u"B", kUser), (Bytes{'4', 0}));
    EXPECT_EQ(text.keys.size(), 4U);
    EXPECT_TRUE(text.findings.empty());
}

TEST(RegistryTextTest, NoKeyIsTakenForAnotherOneOfTheSystem) {
    const RegistryText text = Parse(kHead4 + "[HKLM\\Software\\Wow6432Node\\Orvo]\n@=\"32\"\n");
    EXPECT_EQ(Value(text, u"", u"Software\\Wow6432Node\\Orvo"), (Bytes{'3', '2', 0}));
    EXPECT_EQ(Value(text, u""), std::nullopt);
}

TEST(RegistryTextTest, AKeyMayHoldBracketsAndBlanks) {
    const RegistryText text = Parse(kHead4 + "[HKLM\\a [x] b]\n@=\"1\"\n");
    EXPECT_EQ(Value(text, u"", u"a [x] b"), (Bytes{'1', 0}));
}

TEST(RegistryTextTest, LaterLinesWin) {
    const RegistryText text = Parse(kHead4 + kKey + "\"v\"=\"1\"\n\"V\"=\"2\"\n[HKLM\\x]\n" +
                                    "[HKLM\\SOFTWARE\\orvo]\n\"w\"=\"3\"\n");
    EXPECT_EQ(Value(text, u"v"), (Bytes{'2', 0}));
    EXPECT_EQ(Value(text, u"w"), (Bytes{'3', 0}));
}

TEST(RegistryTextTest, AValueMarkedForDeletionGoes) {
    const RegistryText text = Parse(kHead4 + kKey + "\"v\"=\"1\"\n@=\"2\"\n\"v\"=-\n@= - ; gone\n");
    EXPECT_EQ(Value(text, u"v"), std::nullopt);
    EXPECT_EQ(Value(text, u""), std::nullopt);
    EXPECT_TRUE(text.findings.empty());
}

TEST(RegistryTextTest, AKeyMarkedForDeletionGoesWithAllBelowIt) {
    const RegistryText text = Parse(kHead4 +
                                    "[HKLM\\a\\b]\n[HKLM\\a\\b\\c]\n[HKLM\\a\\bc]\n[HKCU\\a\\b]\n"
                                    "[-HKEY_LOCAL_MACHINE\\A\\B]\n\"passed\"=\"over\"\n");
    std::vector<Text> machine;
    for (const auto& [path, values] : text.keys) {
        if (path.first == kMachine) machine.push_back(path.second);
    }
    EXPECT_EQ(machine, (std::vector<Text>{u"A", u"A\\BC"}));
    EXPECT_TRUE(text.keys.contains({kUser, u"A\\B"}));
    EXPECT_TRUE(text.findings.empty());
}

TEST(RegistryTextTest, TheKeysAboveAreThereToo) {
    const RegistryText text = Parse(kHead4 + "[HKLM\\a\\b\\c]\n");
    EXPECT_TRUE(text.keys.contains({kMachine, u"A"}));
    EXPECT_TRUE(text.keys.contains({kMachine, u"A\\B"}));
}

TEST(RegistryTextTest, Version5IsReadInEveryEncoding) {
    const std::string sRest = kKey + "\"v\"=\"";
    EXPECT_EQ(Value(Parse(Utf16(kHead5 + sRest + "\xFC\"\r\n")), u"v"), (Bytes{0xFC, 0}));
    EXPECT_EQ(Value(Parse(kHead5 + sRest + "\xC3\xBC\"\r\n"), u"v"), (Bytes{0xFC, 0}));
    EXPECT_EQ(Value(Parse("\xEF\xBB\xBF" + kHead5 + sRest + "\xC3\xBC\"\r\n"), u"v"),
              (Bytes{0xFC, 0}));
    EXPECT_EQ(Value(Parse(kHead5 + sRest + "\xFC\"\r\n"), u"v"), (Bytes{0xFC, 0}));
}

TEST(RegistryTextTest, Version4IsInTheEightBitPage) {
    // The two bytes would be one letter in UTF-8.
    EXPECT_EQ(DataOf(kHead4, "\"\xC3\xBC\""), (Bytes{0xC3, 0xBC, 0}));
    EXPECT_TRUE(Parse(kHead4 + "[HKLM\\\xFC]\n").keys.contains({kMachine, u"Ü"}));
}

TEST(RegistryTextTest, ACharacterOutsideThePageIsAQuestionMark) {
    EXPECT_EQ(DataOf(kHead5, "\"\xD0\x96\""), (Bytes{'?', 0}));
}

TEST(RegistryTextTest, AFileWithoutItsHeaderIsReadAndTold) {
    const RegistryText text = Parse(kKey + "\"v\"=\"x\"\n");
    EXPECT_EQ(Value(text, u"v"), (Bytes{'x', 0}));
    ASSERT_EQ(text.findings.size(), 1U);
    EXPECT_EQ(text.findings[0].nLine, 1);
}

TEST(RegistryTextTest, AFileWithTheHighByteFirstIsNotRead) {
    const RegistryText text = Parse(std::string_view("\xFE\xFF\0R", 4));
    EXPECT_TRUE(text.keys.empty());
    EXPECT_EQ(text.findings.size(), 1U);
}

TEST(RegistryTextTest, NothingIsAnEmptyRegistry) {
    for (const std::string& bytes :
         {std::string(), std::string("\r\n\r\n"), std::string("\xFF\xFE"),
          std::string("\xFF\xFE\x41"), kHead4, kHead5}) {
        const RegistryText text = Parse(bytes);
        EXPECT_TRUE(text.keys.empty());
        EXPECT_TRUE(text.findings.empty());
    }
}

}  // namespace
}  // namespace nomira::posix
