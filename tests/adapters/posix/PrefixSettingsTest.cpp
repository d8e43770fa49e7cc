#include "adapters/posix/PrefixSettings.h"

#include <string>

#include "testing/TextPrinting.h"

namespace nomira::posix {
namespace {

PrefixSettings Parse(std::string_view bytes) {
    return ParsePrefixSettings(bytes, "nomira.conf");
}

// What is wrong with the settings; empty if nothing is.
std::string Complaint(std::string_view bytes) {
    try {
        Parse(bytes);
    } catch (const PrefixError& error) {
        return error.what();
    }
    return {};
}

TEST(PrefixSettingsTest, AnEmptyFileLeavesTheDefaults) {
    const PrefixSettings settings = Parse("");
    EXPECT_EQ(settings.nCodePage, 1252);
    EXPECT_EQ(settings.sRefreshHook, "");
    EXPECT_TRUE(settings.placedPaths.empty());
}

TEST(PrefixSettingsTest, EverySettingIsRead) {
    const PrefixSettings settings = Parse(
        "\xEF\xBB\xBF# the cell's settings\r\n"
        "\r\n"
        "  codepage=1250  \r\n"
        "refresh-hook = tell --cell=7 # not a comment\n"
        "path\tC:\\Program Files\\a b.mdb = /srv/a = b.db");
    EXPECT_EQ(settings.nCodePage, 1250);
    EXPECT_EQ(settings.sRefreshHook, "tell --cell=7 # not a comment");
    ASSERT_EQ(settings.placedPaths.size(), 1U);
    EXPECT_EQ(settings.placedPaths[0].sPath, Text(u"C:\\Program Files\\a b.mdb"));
    EXPECT_EQ(settings.placedPaths[0].sNative, "/srv/a = b.db");
}

TEST(PrefixSettingsTest, ALaterLineWins) {
    EXPECT_EQ(Parse("codepage = 1250\ncodepage = 1251\n").nCodePage, 1251);
    EXPECT_EQ(Parse("refresh-hook = a\nrefresh-hook =\n").sRefreshHook, "");
}

TEST(PrefixSettingsTest, ABadLineIsNamedWithItsRemedy) {
    const struct {
        const char* bytes;
        const char* sPlace;
        const char* sRemedy;
    } rows[] = {
        {"codepage\n", "nomira.conf:1: ", "name = value"},
        {"# x\n\ncodepage = abc\n", "nomira.conf:3: ", "codepage = 1252"},
        {"codepage =\n", "nomira.conf:1: ", "codepage = 1252"},
        {"codepage = 4711\n", "nomira.conf:1: ", "codepage = 1252"},
        {"codepage = 1252x\n", "nomira.conf:1: ", "codepage = 1252"},
        {"codepage = -1252\n", "nomira.conf:1: ", "codepage = 1252"},
        {"codepage x = 1252\n", "nomira.conf:1: ", "the settings are codepage"},
        {"colour = red\n", "nomira.conf:1: ", "the settings are codepage"},
        {"= red\n", "nomira.conf:1: ", "the settings are codepage"},
        {"path = /x\n", "nomira.conf:1: ", "the settings are codepage"},
        {"path tqx = /x\n", "nomira.conf:1: ", "path C:\\tqx\\data\\orvo_con.mdb = "},
        {"path C:\\ = /x\n", "nomira.conf:1: ", "path C:\\tqx\\data\\orvo_con.mdb = "},
        {"path C:\\tqx = x\n", "nomira.conf:1: ", "path C:\\tqx\\data\\orvo_con.mdb = "},
        {"path C:\\tqx =\n", "nomira.conf:1: ", "path C:\\tqx\\data\\orvo_con.mdb = "},
    };
    for (const auto& row : rows) {
        const std::string sComplaint = Complaint(row.bytes);
        EXPECT_EQ(sComplaint.find(row.sPlace), 0U) << row.bytes << sComplaint;
        EXPECT_NE(sComplaint.find(row.sRemedy), std::string::npos) << row.bytes << sComplaint;
    }
}

}  // namespace
}  // namespace nomira::posix
