#include "adapters/posix/RegistryText.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "adapters/posix/NativeName.h"
#include "langtools/BasicText.h"

namespace nomira::posix {
namespace {

constexpr std::string_view kUtf16Mark = "\xFF\xFE";
constexpr std::string_view kUtf16BigMark = "\xFE\xFF";
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr TextView kHeader4 = u"REGEDIT4";
constexpr TextView kHeader5 = u"Windows Registry Editor Version 5.00";
constexpr TextView kBlanks = u" \t";

// The types whose data the 8-bit query turns into the 8-bit page.
constexpr std::uint32_t kStringTypes[] = {1, 2, 7};
constexpr std::uint32_t kTextType = 1;
constexpr std::uint32_t kBinaryType = 3;
constexpr std::uint32_t kNumberType = 4;

struct RootName {
    TextView sName;
    std::optional<RegistryRoot> root;  // nullopt: known, but never read by the program
};
constexpr RootName kRoots[] = {
    {u"HKEY_LOCAL_MACHINE", RegistryRoot::LocalMachine},
    {u"HKLM", RegistryRoot::LocalMachine},
    {u"HKEY_CURRENT_USER", RegistryRoot::CurrentUser},
    {u"HKCU", RegistryRoot::CurrentUser},
    {u"HKEY_CLASSES_ROOT", std::nullopt},
    {u"HKCR", std::nullopt},
    {u"HKEY_USERS", std::nullopt},
    {u"HKU", std::nullopt},
    {u"HKEY_CURRENT_CONFIG", std::nullopt},
    {u"HKCC", std::nullopt},
};

TextView Trimmed(TextView s) {
    const std::size_t nFirst = s.find_first_not_of(kBlanks);
    if (nFirst == TextView::npos) return {};
    return s.substr(nFirst, s.find_last_not_of(kBlanks) - nFirst + 1);
}

Text TextOfUtf16(std::string_view bytes) {
    Text sText;
    sText.reserve(bytes.size() / 2);
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        sText += static_cast<char16_t>(static_cast<unsigned char>(bytes[i]) |
                                       static_cast<unsigned char>(bytes[i + 1]) << 8);
    }
    return sText;
}

bool HoldsSurrogateOfByte(TextView sText) {
    bool bAfterHigh = false;
    for (const char16_t c : sText) {
        if (!bAfterHigh && c >= 0xDC80 && c <= 0xDCFF) return true;
        bAfterHigh = c >= 0xD800 && c <= 0xDBFF;
    }
    return false;
}

// The file's text. Version 5 without a mark is UTF-8 if it can be, else in the 8-bit page.
Text DecodeFile(std::string_view bytes, const CodePage& page) {
    if (bytes.starts_with(kUtf16Mark)) return TextOfUtf16(bytes.substr(kUtf16Mark.size()));
    if (bytes.starts_with(kUtf8Mark)) return FromNative(bytes.substr(kUtf8Mark.size()));
    if (bytes.starts_with("REGEDIT4")) return page.Decode(bytes);
    Text sText = FromNative(bytes);
    return HoldsSurrogateOfByte(sText) ? page.Decode(bytes) : sText;
}

// The lines of a text one after the other, with their numbers. CR LF, LF and CR end a line.
class LineReader {
  public:
    explicit LineReader(TextView sText) : m_sRest(sText) {}

    bool Next(TextView& sLine) {
        if (m_sRest.empty()) return false;
        ++m_nLine;
        const std::size_t nEnd = std::min(m_sRest.find_first_of(u"\r\n"), m_sRest.size());
        sLine = Trimmed(m_sRest.substr(0, nEnd));
        const bool bTwo = m_sRest.substr(nEnd).starts_with(u"\r\n");
        m_sRest.remove_prefix(std::min(nEnd + (bTwo ? 2 : 1), m_sRest.size()));
        return true;
    }
    int Line() const { return m_nLine; }

  private:
    TextView m_sRest;
    int m_nLine = 0;
};

// The text between quotes that begins at `sText`; what stands behind it stays in `sText`. nullopt
// if the quotes aren't closed. "\" takes the next character as it is.
std::optional<Text> TakeQuoted(TextView& sText) {
    Text sContents;
    for (std::size_t i = 1; i < sText.size(); ++i) {
        if (sText[i] == u'"') {
            sText.remove_prefix(i + 1);
            return sContents;
        }
        if (sText[i] == u'\\' && i + 1 < sText.size()) ++i;
        sContents += sText[i];
    }
    return std::nullopt;
}

bool OnlyCommentFollows(TextView sText) {
    sText = Trimmed(sText);
    return sText.empty() || sText.starts_with(u';');
}

std::optional<std::uint32_t> HexNumber(TextView sDigits, std::size_t nMost) {
    if (sDigits.empty() || sDigits.size() > nMost) return std::nullopt;
    std::uint32_t n = 0;
    for (const char16_t c : sDigits) {
        const std::size_t nDigit = TextView(u"0123456789ABCDEF").find(UCase(c));
        if (nDigit == TextView::npos) return std::nullopt;
        n = n << 4 | static_cast<std::uint32_t>(nDigit);
    }
    return n;
}

// "01,02,ff"; a comma may stand at the end.
std::optional<RegistryText::Bytes> HexBytes(TextView sList) {
    RegistryText::Bytes bytes;
    sList = Trimmed(sList);
    while (!sList.empty()) {
        const std::size_t nEnd = std::min(sList.find(u','), sList.size());
        const auto nByte = HexNumber(Trimmed(sList.substr(0, nEnd)), 2);
        if (!nByte) return std::nullopt;
        bytes.push_back(static_cast<std::uint8_t>(*nByte));
        sList = Trimmed(sList.substr(std::min(nEnd + 1, sList.size())));
    }
    return bytes;
}

RegistryText::Bytes EncodeBytes(TextView sText, const CodePage& page) {
    const std::string bytes = page.Encode(sText);
    return RegistryText::Bytes(bytes.begin(), bytes.end());
}

class Parser {
  public:
    Parser(TextView sText, const CodePage& page, bool bUtf16)
        : m_lines(sText), m_page(page), m_bUtf16Data(bUtf16) {}

    RegistryText Run() {
        ReadHeader();
        for (TextView sLine; m_lines.Next(sLine);) {
            m_nLine = m_lines.Line();
            ReadLine(sLine);
        }
        return std::move(m_result);
    }

    void Find(std::string sWhat) { m_result.findings.push_back({m_nLine, std::move(sWhat)}); }

  private:
    using Path = RegistryText::Path;

    void ReadHeader() {
        TextView sLine;
        while (m_lines.Next(sLine) && sLine.empty()) {
        }
        m_nLine = m_lines.Line();
        if (sLine == kHeader5) {
            m_bUtf16Data = true;
        } else if (sLine == kHeader4) {
            m_bUtf16Data = false;
        } else if (!sLine.empty()) {
            Find(
                "no header; the first line must be \"REGEDIT4\" or \"Windows Registry Editor "
                "Version 5.00\"");
            ReadLine(sLine);
        }
    }

    void ReadLine(TextView sLine) {
        if (sLine.empty() || sLine.starts_with(u';')) return;
        if (sLine.starts_with(u'[')) return ReadKeyLine(sLine);
        if (sLine.starts_with(u'@') || sLine.starts_with(u'"')) return ReadValueLine(sLine);
        Find("neither a key in brackets nor a value");
    }

    void ReadKeyLine(TextView sLine) {
        m_key.reset();
        m_bPassOver = true;
        const std::size_t nEnd = sLine.rfind(u']');
        if (nEnd == TextView::npos) return Find("the key's bracket isn't closed");
        TextView sKey = sLine.substr(1, nEnd - 1);
        const bool bDelete = sKey.starts_with(u'-');
        if (bDelete) sKey.remove_prefix(1);
        const std::size_t nRootEnd = std::min(sKey.find(u'\\'), sKey.size());
        for (const RootName& name : kRoots) {
            if (!EqualNoCase(name.sName, sKey.substr(0, nRootEnd))) continue;
            if (!name.root) return;
            const Path path{*name.root, FoldedKey(sKey.substr(nRootEnd))};
            return bDelete ? RemoveKey(path) : EnterKey(path);
        }
        Find("the key begins with no root of the registry, such as HKEY_LOCAL_MACHINE");
    }

    void EnterKey(const Path& path) {
        const auto& [root, sKey] = path;
        for (std::size_t n = sKey.find(u'\\'); n != Text::npos; n = sKey.find(u'\\', n + 1)) {
            m_result.keys[{root, sKey.substr(0, n)}];
        }
        m_result.keys[path];
        m_key = path;
    }

    void RemoveKey(const Path& path) {
        const Text sBelow = path.second.empty() ? Text() : path.second + u'\\';
        std::erase_if(m_result.keys, [&](const auto& entry) {
            return entry.first.first == path.first &&
                   (entry.first.second == path.second || entry.first.second.starts_with(sBelow));
        });
    }

    void ReadValueLine(TextView sLine) {
        std::optional<Text> sName = Text();
        if (sLine.starts_with(u'@')) {
            sLine.remove_prefix(1);
        } else {
            sName = TakeQuoted(sLine);
        }
        sLine = Trimmed(sLine);
        if (!sName || !sLine.starts_with(u'='))
            return Find("the value has no name with \"=\" behind it");
        ReadData(UCase(*sName), Trimmed(sLine.substr(1)));
    }

    struct Data {
        std::uint32_t nType;
        RegistryText::Bytes bytes;
    };

    static std::optional<Data> OfType(std::uint32_t nType,
                                      std::optional<RegistryText::Bytes> bytes) {
        if (!bytes) return std::nullopt;
        return Data{nType, std::move(*bytes)};
    }

    void ReadData(const Text& sName, TextView sData) {
        // Read in any case: the lines on which the data goes on belong to it.
        const Text sWhole = WithContinuation(sData);
        sData = sWhole;
        const bool bDelete = sData.starts_with(u'-') && OnlyCommentFollows(sData.substr(1));
        const auto data = bDelete ? std::nullopt : DataOf(sData);
        if (!bDelete && !data) return Find("the value's data is neither text, dword nor hex");
        if (!m_key) {
            if (!m_bPassOver) Find("the value stands under no key");
            return;
        }
        RegistryText::Values& values = m_result.keys[*m_key];
        if (bDelete) {
            values.erase(sName);
        } else {
            values[sName] = data->bytes;
            m_result.origins[{*m_key, sName}] = {m_nLine, data->nType};
        }
    }

    // Hexadecimal data goes on with the next line where a line ends with "\".
    Text WithContinuation(TextView sData) {
        Text sWhole(sData);
        if (!UCase(sData.substr(0, 3)).starts_with(u"HEX")) return sWhole;
        for (TextView sNext; sWhole.ends_with(u'\\');) {
            sWhole.pop_back();
            if (!m_lines.Next(sNext)) break;
            sWhole += sNext;
        }
        return sWhole;
    }

    std::optional<Data> DataOf(TextView sData) const {
        if (sData.starts_with(u'"')) return OfType(kTextType, StringData(sData));
        const TextView sCode = sData.substr(0, sData.find(u';'));
        const std::size_t nColon = sCode.find(u':');
        if (nColon == TextView::npos) return std::nullopt;
        const Text sKind = UCase(Trimmed(sCode.substr(0, nColon)));
        const TextView sRest = Trimmed(sCode.substr(nColon + 1));
        if (sKind == u"DWORD") return OfType(kNumberType, NumberData(sRest));
        if (const auto nType = HexType(sKind))
            return OfType(*nType, TypedData(*nType, HexBytes(sRest)));
        return std::nullopt;
    }

    std::optional<RegistryText::Bytes> StringData(TextView sData) const {
        const auto sText = TakeQuoted(sData);
        if (!sText || !OnlyCommentFollows(sData)) return std::nullopt;
        return EncodeBytes(*sText + u'\0', m_page);
    }

    static std::optional<RegistryText::Bytes> NumberData(TextView sDigits) {
        const auto n = HexNumber(sDigits, 8);
        if (!n) return std::nullopt;
        RegistryText::Bytes bytes;
        for (int nShift = 0; nShift < 32; nShift += 8)
            bytes.push_back(static_cast<std::uint8_t>(*n >> nShift));
        return bytes;
    }

    // The type of "HEX" or "HEX(n)".
    static std::optional<std::uint32_t> HexType(TextView sKind) {
        if (sKind == u"HEX") return kBinaryType;
        if (!sKind.starts_with(u"HEX(") || !sKind.ends_with(u')')) return std::nullopt;
        return HexNumber(sKind.substr(4, sKind.size() - 5), 8);
    }

    std::optional<RegistryText::Bytes> TypedData(
        std::uint32_t nType, const std::optional<RegistryText::Bytes>& bytes) const {
        const bool bString = std::find(std::begin(kStringTypes), std::end(kStringTypes), nType) !=
                             std::end(kStringTypes);
        if (!bytes || !bString || !m_bUtf16Data) return bytes;
        return EncodeBytes(TextOfUtf16(std::string(bytes->begin(), bytes->end())), m_page);
    }

    LineReader m_lines;
    const CodePage& m_page;
    bool m_bUtf16Data;  // string types written as hex hold UTF-16
    int m_nLine = 0;
    std::optional<Path> m_key;  // where values go
    bool m_bPassOver = false;   // values stand under a key that isn't read, or was told as wrong
    RegistryText m_result;
};

}  // namespace

Text FoldedKey(TextView sKey) {
    while (sKey.starts_with(u'\\'))
        sKey.remove_prefix(1);
    while (sKey.ends_with(u'\\'))
        sKey.remove_suffix(1);
    return UCase(sKey);
}

RegistryText ParseRegistryText(std::string_view bytes, const CodePage& page) {
    if (bytes.starts_with(kUtf16BigMark)) {
        RegistryText nothing;
        nothing.findings.push_back({0,
                                    "the file is UTF-16 with the high byte first, which the "
                                    "registry editor never writes; save it as UTF-8"});
        return nothing;
    }
    const Text sText = DecodeFile(bytes, page);
    return Parser(sText, page, bytes.starts_with(kUtf16Mark)).Run();
}

}  // namespace nomira::posix
