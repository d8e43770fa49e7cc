#include "adapters/posix/CodePages.h"

#include <iconv.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <string>
#include <utility>

namespace nomira::posix {
namespace {

constexpr char16_t kNoCharacter = 0xFFFD;
constexpr const char* kTextCharset = "UTF-16LE";  // Text on every machine that we build for

// Pages whose iconv name isn't "CP" and their number.
struct NamedPage {
    int nNumber;
    const char* sCharset;
};
constexpr NamedPage kNamedPages[] = {
    {20127, "US-ASCII"},    {20866, "KOI8-R"},      {21866, "KOI8-U"},     {28591, "ISO-8859-1"},
    {28592, "ISO-8859-2"},  {28593, "ISO-8859-3"},  {28594, "ISO-8859-4"}, {28595, "ISO-8859-5"},
    {28596, "ISO-8859-6"},  {28597, "ISO-8859-7"},  {28598, "ISO-8859-8"}, {28599, "ISO-8859-9"},
    {28603, "ISO-8859-13"}, {28605, "ISO-8859-15"}, {51932, "EUC-JP"},     {51949, "EUC-KR"},
    {54936, "GB18030"},     {65001, "UTF-8"},
};

std::string CharsetOf(int nCodePage) {
    for (const NamedPage& page : kNamedPages) {
        if (page.nNumber == nCodePage) return page.sCharset;
    }
    return "CP" + std::to_string(nCodePage);
}

// One direction of iconv.
class Converter {
  public:
    enum class Stop { Done, Invalid, Incomplete };

    Converter(const char* sTo, const char* sFrom) : m_handle(iconv_open(sTo, sFrom)) {}
    ~Converter() {
        if (IsOpen()) iconv_close(m_handle);
    }
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;

    bool IsOpen() const { return m_handle != Failed(); }

    // Appends what `bytes` means to `out`, as far as that goes; what wasn't read stays in `bytes`.
    Stop Convert(std::string_view& bytes, std::string& out) {
        iconv(m_handle, nullptr, nullptr, nullptr, nullptr);
        while (!bytes.empty()) {
            if (Step(bytes, out)) break;
            if (errno == EILSEQ) return Stop::Invalid;
            if (errno == EINVAL) return Stop::Incomplete;
        }
        Finish(out);
        return Stop::Done;
    }

  private:
    // What iconv_open gives for a pair that it doesn't know.
    static iconv_t Failed() {
        return reinterpret_cast<iconv_t>(-1);  // NOLINT(performance-no-int-to-ptr)
    }

    // One call; false if it stopped before the end, with errno telling why.
    bool Step(std::string_view& bytes, std::string& out) {
        std::array<char, 512> buffer;
        char* pIn = const_cast<char*>(bytes.data());
        std::size_t nIn = bytes.size();
        char* pOut = buffer.data();
        std::size_t nOut = buffer.size();
        const std::size_t nResult = iconv(m_handle, &pIn, &nIn, &pOut, &nOut);
        const int nErrno = errno;
        out.append(buffer.data(), buffer.size() - nOut);
        bytes.remove_prefix(bytes.size() - nIn);
        errno = nErrno;
        return nResult != static_cast<std::size_t>(-1);
    }

    // Some pages hold a character back until they know that nothing combines with it.
    void Finish(std::string& out) {
        std::array<char, 16> buffer;
        char* pOut = buffer.data();
        std::size_t nOut = buffer.size();
        iconv(m_handle, nullptr, nullptr, &pOut, &nOut);
        out.append(buffer.data(), buffer.size() - nOut);
    }

    iconv_t m_handle;
};

Text TextOf(std::string_view utf16) {
    Text sText;
    sText.reserve(utf16.size() / 2);
    for (std::size_t i = 0; i + 1 < utf16.size(); i += 2) {
        sText += static_cast<char16_t>(static_cast<unsigned char>(utf16[i]) |
                                       static_cast<unsigned char>(utf16[i + 1]) << 8);
    }
    return sText;
}

std::string Utf16Of(TextView sText) {
    std::string utf16;
    utf16.reserve(sText.size() * 2);
    for (const char16_t c : sText) {
        utf16 += static_cast<char>(c & 0xFF);
        utf16 += static_cast<char>(c >> 8);
    }
    return utf16;
}

// A page of any shape, through iconv.
class IconvPage : public CodePage {
  public:
    explicit IconvPage(int nNumber)
        : m_nNumber(nNumber),
          m_decoder(kTextCharset, CharsetOf(nNumber).c_str()),
          m_encoder(CharsetOf(nNumber).c_str(), kTextCharset) {}

    bool IsOpen() const { return m_decoder.IsOpen() && m_encoder.IsOpen(); }

    int Number() const override { return m_nNumber; }

    Text Decode(std::string_view bytes) const override {
        Text sText;
        while (!bytes.empty()) {
            std::string utf16;
            const Converter::Stop stop = m_decoder.Convert(bytes, utf16);
            sText += TextOf(utf16);
            if (stop == Converter::Stop::Done) break;
            sText += kNoCharacter;
            bytes.remove_prefix(stop == Converter::Stop::Incomplete ? bytes.size() : 1);
        }
        return sText;
    }

    std::string Encode(TextView sText) const override {
        const std::string utf16 = Utf16Of(sText);
        std::string_view rest = utf16;
        std::string bytes;
        while (!rest.empty()) {
            if (m_encoder.Convert(rest, bytes) == Converter::Stop::Done) break;
            bytes += '?';
            rest.remove_prefix(LengthOfNext(rest));
        }
        return bytes;
    }

    bool Holds(char16_t c) const override {
        const std::string utf16 = Utf16Of(TextView(&c, 1));
        std::string_view rest = utf16;
        std::string bytes;
        return m_encoder.Convert(rest, bytes) == Converter::Stop::Done;
    }

    // Whether the byte begins a sequence, so that it means nothing by itself.
    bool IsLeadByte(char cByte) const {
        std::string_view bytes(&cByte, 1);
        std::string utf16;
        return m_decoder.Convert(bytes, utf16) == Converter::Stop::Incomplete;
    }

  private:
    // Bytes of the next character of UTF-16: four for a whole surrogate pair.
    static std::size_t LengthOfNext(std::string_view utf16) {
        const Text sNext = TextOf(utf16.substr(0, 4));
        const bool bPair =
            sNext.size() == 2 && (sNext[0] & 0xFC00) == 0xD800 && (sNext[1] & 0xFC00) == 0xDC00;
        return std::min<std::size_t>(utf16.size(), bPair ? 4 : 2);
    }

    int m_nNumber;
    mutable Converter m_decoder;
    mutable Converter m_encoder;
};

bool IsSingleByte(const IconvPage& page) {
    for (int n = 0x80; n < 0x100; ++n) {
        if (page.IsLeadByte(static_cast<char>(n))) return false;
    }
    return true;
}

bool IsWindowsPage(int nCodePage) {
    return nCodePage == 874 || (nCodePage >= 1250 && nCodePage <= 1258);
}

std::unique_ptr<CodePage> TableOf(const IconvPage& page) {
    SingleBytePage::Table table{};
    for (std::size_t n = 0; n < table.size(); ++n) {
        const char cByte = static_cast<char>(n);
        const Text sCharacter = page.Decode(std::string_view(&cByte, 1));
        table[n] = sCharacter.size() == 1 ? sCharacter[0] : kNoCharacter;
        const bool bOpen = table[n] == kNoCharacter && n >= 0x80 && n <= 0x9F;
        if (bOpen && IsWindowsPage(page.Number())) table[n] = static_cast<char16_t>(n);
    }
    return std::make_unique<SingleBytePage>(page.Number(), table);
}

}  // namespace

std::unique_ptr<CodePage> MakeCodePage(int nCodePage) {
    if (nCodePage == Windows1252().Number()) return std::make_unique<SingleBytePage>(Windows1252());
    auto page = std::make_unique<IconvPage>(nCodePage);
    if (!page->IsOpen()) return nullptr;
    if (IsSingleByte(*page)) return TableOf(*page);
    return page;
}

}  // namespace nomira::posix
