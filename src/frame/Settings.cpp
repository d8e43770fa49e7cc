#include "frame/Settings.h"

#include <cstdint>
#include <string_view>
#include <vector>

#include "langtools/BasicText.h"
#include "langtools/CodePage.h"
#include "langtools/ProgramState.h"
#include "langtools/RuntimeError.h"
#include "platform/Platform.h"

namespace nomira {

Text g_sTextFileExt;
Text g_sTextFileName;
Text g_sTextFilePath;

namespace {

const OnProgramReset g_reset{[] {
    for (Text* psSetting : {&g_sTextFileExt, &g_sTextFileName, &g_sTextFilePath})
        psSetting->clear();
}};

// An open registry key; IsOpen is false if there is no such key.
class OpenRegistryKey {
  public:
    OpenRegistryKey(RegistryRoot root, TextView sKey)
        : m_bOpen(TheRegistry().OpenKey(root, sKey, m_key) == Registry::kSuccess) {}
    ~OpenRegistryKey() {
        if (m_bOpen) TheRegistry().CloseKey(m_key);
    }
    OpenRegistryKey(const OpenRegistryKey&) = delete;
    OpenRegistryKey& operator=(const OpenRegistryKey&) = delete;

    bool IsOpen() const { return m_bOpen; }

    // The value's bytes and one more, as the old reader's buffer had it.
    std::vector<std::uint8_t> ReadBytes(TextView sValueName, std::uint32_t nSize) const {
        std::vector<std::uint8_t> buffer(std::size_t{nSize} + 1);
        TheRegistry().QueryValue(m_key, sValueName, buffer);
        return buffer;
    }
    std::uint32_t Size(TextView sValueName) const {
        return TheRegistry().QueryValue(m_key, sValueName, {});
    }

  private:
    Registry::KeyHandle m_key = 0;
    bool m_bOpen;
};

// Each byte by itself: the reader never looks at two bytes together, so that a page of several
// bytes a character isn't decoded as such.
Text DecodeEachByte(const std::vector<std::uint8_t>& bytes, std::int16_t nLastIndex) {
    Text sText;
    for (std::int32_t i = 0; i <= nLastIndex; ++i) {
        const char cByte = static_cast<char>(bytes[static_cast<std::size_t>(i)]);
        sText += SystemCodePage().Decode(std::string_view(&cByte, 1));
    }
    return sText;
}

Text ReadValueText(const OpenRegistryKey& key, TextView sValueName) {
    const std::uint32_t nSize = key.Size(sValueName);
    // The last byte is left out, be it a terminator or not: values that were stored without one,
    // and numbers, lose a byte.
    const std::int16_t nLastIndex = ToInt16(std::int64_t{nSize} - 2);
    return DecodeEachByte(key.ReadBytes(sValueName, nSize), nLastIndex);
}

bool IsBlank(TextView sValue) {
    return Trim(sValue).empty();
}

Text ReadOrDefault(const Setting& setting, TextView sDefault) {
    Text sValue;
    ReadRegistryString(setting, sValue);
    return IsBlank(sValue) ? Text(sDefault) : sValue;
}

}  // namespace

Text ReadRegistryString(RegistryRoot root, TextView sKey, TextView sValueName, Text& sResult) {
    sResult.clear();
    const OpenRegistryKey key(root, sKey);
    if (key.IsOpen()) sResult = ReadValueText(key, sValueName);
    return sResult;
}

Text ReadRegistryString(const Setting& setting, Text& sResult) {
    return ReadRegistryString(setting.root, setting.sKey, setting.sValue, sResult);
}

Text GetCustomer() {
    return ReadOrDefault(kCustomerSetting, u"");
}

bool IsCustomerVw() {
    return GetCustomer() == kCustomerVw;
}

bool IsAsciiOptionInstalled() {
    return !ReadOrDefault(kAsciiOptionSetting, u"").empty();
}

TextView DefaultTextFilePath() {
    if (!IsCustomerVw()) return u"\\Data";
    return IsAsciiOptionInstalled() ? u"\\Roboter\\IBGN\\TQX\\R1\\IBGN" : u"\\Roboter\\Init";
}

void ReadTextFileSettings() {
    g_sTextFileExt = ReadOrDefault(kTextFileExtSetting, u"*.txt");
    g_sTextFileName = ReadOrDefault(kTextFileNameSetting, u"SymName");
    g_sTextFilePath = ReadOrDefault(kTextFilePathSetting, u"");
    // Asked only now: the customer and the option are not read where a path is given.
    if (g_sTextFilePath.empty()) g_sTextFilePath = DefaultTextFilePath();
}

}  // namespace nomira
