#include "frame/Settings.h"

#include "adapters/memory/MemoryMachine.h"
#include "langtools/CodePage.h"
#include "testing/ForwardingPorts.h"
#include "testing/Raised.h"
#include "testing/TextPrinting.h"

namespace nomira {
namespace {

using testing::ForwardingRegistry;
using testing::Raised;

constexpr TextView kLongname = u"Software\\Nomira Program Settings\\Longname";
constexpr TextView kVersion = u"Software\\Orvo\\Version";
constexpr TextView kAscii = u"Software\\Orvo\\Options\\ASCII";

class SettingsTest : public ::testing::Test {
  protected:
    memory::MemoryMachine machine;

    void SetLongname(TextView sName, TextView sValue) {
        machine.registry.SetString(RegistryRoot::CurrentUser, kLongname, sName, sValue);
    }
    void SetCustomer(TextView sValue) {
        machine.registry.SetString(RegistryRoot::LocalMachine, kVersion, u"Customer", sValue);
    }
    void SetAsciiOption(TextView sValue) {
        machine.registry.SetString(RegistryRoot::LocalMachine, kAscii, u"Name", sValue);
    }
    Text ReadBytes(const std::vector<std::uint8_t>& bytes) {
        machine.registry.Set(RegistryRoot::CurrentUser, u"Key", u"Value", bytes);
        Text sResult;
        return ReadRegistryString(RegistryRoot::CurrentUser, u"Key", u"Value", sResult);
    }
    // Puts a wrapper in front of the registry.
    void Install(Registry& registry) {
        Platform platform = testing::PortsOf(machine);
        platform.registry = &registry;
        SetPlatform(platform);
    }
};

TEST_F(SettingsTest, ReaderDropsTheLastByteWhateverItIs) {
    struct Row {
        std::vector<std::uint8_t> bytes;
        TextView sText;
    };
    const Row rows[] = {
        {{'a', 'b', 'c', 0}, u"abc"},              // stored with its terminator
        {{'a', 'b', 'c'}, u"ab"},                  // stored without one
        {{0x41, 0x42, 0x43, 0x44}, u"ABC"},        // a 32-bit number
        {{}, u""},                                 // empty value
        {{0}, u""},                                // empty string
        {{'a'}, u""},                              // one byte, and that is the last
        {{0x80, 0xE4, 0}, u"\u20AC\u00E4"},        // the system's 8-bit page
        {{'a', 0, 'b', 0}, TextView(u"a\0b", 3)},  // a terminator midway is a byte like others
    };
    for (const Row& row : rows)
        EXPECT_EQ(ReadBytes(row.bytes), row.sText) << testing::Printable(row.sText);
}

TEST_F(SettingsTest, ReaderGivesTheNumberOneAsThreeCharacters) {
    EXPECT_EQ(ReadBytes({1, 0, 0, 0}), Text(u"\u0001\0\0", 3));
}

TEST_F(SettingsTest, ReaderCountsBytesWithSixteenBits) {
    const std::vector<std::uint8_t> fits(32'769, 'x');
    EXPECT_EQ(ReadBytes(fits), Text(32'768, u'x'));

    const std::vector<std::uint8_t> tooLong(32'770, 'x');
    EXPECT_EQ(Raised([&] { ReadBytes(tooLong); }), ErrorNumber::Overflow);
}

TEST_F(SettingsTest, ReaderTakesEachByteByItselfInAPageOfSeveralBytes) {
    // Two bytes together are one character of this page, one byte alone is none.
    class PairPage : public CodePage {
      public:
        int Number() const override { return 932; }
        Text Decode(std::string_view bytes) const override {
            return bytes.size() == 1 ? u"\uFFFD" : u"\u3042";
        }
        std::string Encode(TextView) const override { return {}; }
        bool Holds(char16_t) const override { return true; }
    };
    const PairPage page;
    machine.UseCodePage(page);
    EXPECT_EQ(ReadBytes({0x82, 0xA0, 0}), u"\uFFFD\uFFFD");
}

TEST_F(SettingsTest, ReaderClearsItsResultWhenTheKeyOrTheValueIsMissing) {
    Text sResult = u"a text that is no default";
    EXPECT_EQ(ReadRegistryString(RegistryRoot::CurrentUser, u"No\\Such", u"Value", sResult), u"");
    EXPECT_EQ(sResult, u"");

    SetCustomer(u"VW");
    sResult = u"a text that is no default";
    EXPECT_EQ(ReadRegistryString(RegistryRoot::LocalMachine, kVersion, u"Other", sResult), u"");
    EXPECT_EQ(sResult, u"");
}

TEST_F(SettingsTest, AKeyThatCannotBeOpenedForAnyReasonGivesTheEmptyText) {
    class Denying : public ForwardingRegistry {
      public:
        using ForwardingRegistry::ForwardingRegistry;
        std::int32_t OpenKey(RegistryRoot root, TextView sKey, KeyHandle& key) override {
            ForwardingRegistry::OpenKey(root, sKey, key);
            return 5;  // the system's code for denied access
        }
    };
    SetCustomer(u"VW");
    Denying registry(machine.registry);
    Install(registry);
    Text sResult = u"a text that is no default";
    EXPECT_EQ(ReadRegistryString(RegistryRoot::LocalMachine, kVersion, u"Customer", sResult), u"");
    EXPECT_EQ(sResult, u"");
    EXPECT_TRUE(registry.asked.empty());
    EXPECT_EQ(GetCustomer(), u"");
}

TEST_F(SettingsTest, ReaderLeavesTheTextInItsArgumentToo) {
    SetCustomer(u"Somebody");
    Text sResult = u"before";
    EXPECT_EQ(ReadRegistryString(RegistryRoot::LocalMachine, kVersion, u"Customer", sResult),
              u"Somebody");
    EXPECT_EQ(sResult, u"Somebody");
}

TEST_F(SettingsTest, ReaderLooksUnderTheRootThatIsAsked) {
    SetCustomer(u"Somebody");
    Text sResult;
    EXPECT_EQ(ReadRegistryString(RegistryRoot::CurrentUser, kVersion, u"Customer", sResult), u"");
}

TEST_F(SettingsTest, ReaderClosesEveryKeyThatItOpens) {
    ForwardingRegistry registry(machine.registry);
    Install(registry);
    SetCustomer(u"Somebody");
    GetCustomer();
    IsAsciiOptionInstalled();
    machine.registry.Set(RegistryRoot::LocalMachine, kVersion, u"Customer",
                         std::vector<std::uint8_t>(40'000, 'x'));
    EXPECT_EQ(Raised([] { GetCustomer(); }), ErrorNumber::Overflow);
    EXPECT_EQ(registry.nOpenKeys, 0);
    EXPECT_EQ(registry.asked, (std::vector<Text>{u"Customer", u"Customer"}));
}

TEST_F(SettingsTest, CustomerIsTheTextAsReadUnlessBlank) {
    struct Row {
        TextView sValue, sCustomer;
        bool bVw;
    };
    const Row rows[] = {
        {u"VW", u"VW", true},        {u"vw", u"vw", false}, {u" VW", u" VW", false},
        {u"VW ", u"VW ", false},     {u"", u"", false},     {u"   ", u"", false},
        {u"Other", u"Other", false}, {u"\t", u"\t", false},  // a tab is no blank
    };
    for (const Row& row : rows) {
        SetCustomer(row.sValue);
        EXPECT_EQ(GetCustomer(), row.sCustomer);
        EXPECT_EQ(IsCustomerVw(), row.bVw) << testing::Printable(row.sValue);
    }
}

TEST_F(SettingsTest, CustomerIsEmptyWithoutARegistryEntry) {
    EXPECT_EQ(GetCustomer(), u"");
    EXPECT_FALSE(IsCustomerVw());
}

TEST_F(SettingsTest, AsciiOptionIsInstalledWhenItsNameIsNotBlank) {
    EXPECT_FALSE(IsAsciiOptionInstalled());
    SetAsciiOption(u"  ");
    EXPECT_FALSE(IsAsciiOptionInstalled());
    SetAsciiOption(u"anything");
    EXPECT_TRUE(IsAsciiOptionInstalled());
}

TEST_F(SettingsTest, CustomerAndOptionAreReadAnewAtEachCall) {
    SetCustomer(u"first");
    EXPECT_EQ(GetCustomer(), u"first");
    SetCustomer(u"second");
    EXPECT_EQ(GetCustomer(), u"second");
}

TEST_F(SettingsTest, TextFileSettingsHaveDefaults) {
    ReadTextFileSettings();
    EXPECT_EQ(g_sTextFileExt, u"*.txt");
    EXPECT_EQ(g_sTextFileName, u"SymName");
    EXPECT_EQ(g_sTextFilePath, u"\\Data");
}

TEST_F(SettingsTest, TextFileSettingsComeFromTheUsersKey) {
    SetLongname(u"TextFileExtention", u"*.sym");
    SetLongname(u"TextFileName", u"Names");
    SetLongname(u"TextFilePath", u"\\Roboter\\Names");
    ReadTextFileSettings();
    EXPECT_EQ(g_sTextFileExt, u"*.sym");
    EXPECT_EQ(g_sTextFileName, u"Names");
    EXPECT_EQ(g_sTextFilePath, u"\\Roboter\\Names");
}

TEST_F(SettingsTest, BlankTextFileSettingsCountAsMissing) {
    for (const TextView sName : {u"TextFileExtention", u"TextFileName", u"TextFilePath"})
        SetLongname(sName, u"   ");
    ReadTextFileSettings();
    EXPECT_EQ(g_sTextFileExt, u"*.txt");
    EXPECT_EQ(g_sTextFileName, u"SymName");
    EXPECT_EQ(g_sTextFilePath, u"\\Data");
}

TEST_F(SettingsTest, TextFileSettingsKeepTheBlanksAroundThem) {
    SetLongname(u"TextFileExtention", u" *.txt ");
    SetLongname(u"TextFileName", u"  Name");
    SetLongname(u"TextFilePath", u" \\My Data ");
    ReadTextFileSettings();
    EXPECT_EQ(g_sTextFileExt, u" *.txt ");
    EXPECT_EQ(g_sTextFileName, u"  Name");
    EXPECT_EQ(g_sTextFilePath, u" \\My Data ");
}

TEST_F(SettingsTest, DefaultPathDependsOnCustomerAndOption) {
    struct Row {
        TextView sCustomer, sOption, sPath;
    };
    const Row rows[] = {
        {u"", u"", u"\\Data"},
        {u"Other", u"ASCII", u"\\Data"},
        {u"vw", u"ASCII", u"\\Data"},
        {u" VW", u"ASCII", u"\\Data"},
        {u"VW", u"ASCII", u"\\Roboter\\IBGN\\TQX\\R1\\IBGN"},
        {u"VW", u"", u"\\Roboter\\Init"},
        {u"VW", u"  ", u"\\Roboter\\Init"},
    };
    for (const Row& row : rows) {
        SetCustomer(row.sCustomer);
        SetAsciiOption(row.sOption);
        ReadTextFileSettings();
        EXPECT_EQ(g_sTextFilePath, row.sPath) << testing::Printable(row.sCustomer);
    }
}

TEST_F(SettingsTest, ReadsOnlyWhatItNeedsInOrder) {
    ForwardingRegistry registry(machine.registry);
    Install(registry);
    const std::vector<Text> settings{u"TextFileExtention", u"TextFileName", u"TextFilePath"};
    const auto withSettings = [&](std::vector<Text> more) {
        std::vector<Text> all = settings;
        all.insert(all.end(), more.begin(), more.end());
        return all;
    };
    SetAsciiOption(u"ASCII");
    SetLongname(u"TextFilePath", u"\\Given");
    SetCustomer(u"VW");
    ReadTextFileSettings();
    EXPECT_EQ(registry.asked, withSettings({}));

    registry.asked.clear();
    SetLongname(u"TextFilePath", u"");
    ReadTextFileSettings();
    EXPECT_EQ(registry.asked, withSettings({u"Customer", u"Name"}));

    registry.asked.clear();
    SetCustomer(u"Other");
    ReadTextFileSettings();
    EXPECT_EQ(registry.asked, withSettings({u"Customer"}));
}

}  // namespace
}  // namespace nomira
