#include "langtools/CodePage.h"

#include <algorithm>
#include <cstddef>

#include "langtools/Ascii.h"

namespace nomira {
namespace {

constexpr char16_t kNoCharacter = 0xFFFD;
constexpr std::size_t kAsciiCount = 128;

// Bytes 80 to 9F of page 1252; all others equal the character of the same number.
constexpr std::array<char16_t, 32> k1252Block80{
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

SingleBytePage::Table Table1252() {
    SingleBytePage::Table table{};
    for (std::size_t n = 0; n < table.size(); ++n)
        table[n] = static_cast<char16_t>(n);
    for (std::size_t n = 0; n < k1252Block80.size(); ++n)
        table[0x80 + n] = k1252Block80[n];
    return table;
}

const CodePage*& Active() {
    static const CodePage* page = &Windows1252();
    return page;
}

}  // namespace

SingleBytePage::SingleBytePage(int nNumber, const Table& table)
    : m_nNumber(nNumber), m_table(table) {
    for (std::size_t n = table.size(); n-- > 0;) {  // downwards: of two bytes the lower one wins
        const char16_t c = table[n];
        if (c == kNoCharacter) continue;
        const auto byte = static_cast<unsigned char>(n);
        if (c < m_lowToByte.size()) {
            m_lowToByte[c] = byte;
        } else {
            m_toByte[c] = byte;
        }
    }
    m_bHoldsAscii = true;
    for (std::size_t n = 0; n < kAsciiCount; ++n)
        m_bHoldsAscii = m_bHoldsAscii && table[n] == n;
}

Text SingleBytePage::Decode(std::string_view bytes) const {
    if (m_bHoldsAscii && AsciiLength(bytes) == bytes.size()) return {bytes.begin(), bytes.end()};
    Text sText(bytes.size(), u'\0');
    for (std::size_t n = 0; n < bytes.size(); ++n) {
        sText[n] = m_table[static_cast<unsigned char>(bytes[n])];
    }
    return sText;
}

bool SingleBytePage::Holds(char16_t c) const {
    if (c >= m_lowToByte.size()) return m_toByte.contains(c);
    return m_lowToByte[c] != 0 || c == m_table[0];
}

char SingleBytePage::EncodeRare(char16_t c) const {
    if (!Holds(c)) return '?';
    const auto found = m_toByte.find(c);
    return found == m_toByte.end() ? '\0' : static_cast<char>(found->second);
}

char SingleBytePage::EncodeOne(char16_t c) const {
    const unsigned char nByte = c < m_lowToByte.size() ? m_lowToByte[c] : 0;
    return nByte != 0 ? static_cast<char>(nByte) : EncodeRare(c);
}

std::string SingleBytePage::Encode(TextView sText) const {
    std::string bytes(sText.size(), '\0');
    std::size_t n = 0;
    while (n < sText.size()) {
        if (m_bHoldsAscii) {
            const TextView sRun = sText.substr(n, AsciiLength(sText.substr(n)));
            std::transform(sRun.begin(), sRun.end(), bytes.data() + n,
                           [](char16_t c) { return static_cast<char>(c); });
            n += sRun.size();
            if (n == sText.size()) break;
        }
        bytes[n] = EncodeOne(sText[n]);
        ++n;
    }
    return bytes;
}

const SingleBytePage& Windows1252() {
    static const SingleBytePage page(1252, Table1252());
    return page;
}

const CodePage& SystemCodePage() {
    return *Active();
}

void SetSystemCodePage(const CodePage* page) {
    Active() = page ? page : &Windows1252();
}

}  // namespace nomira
