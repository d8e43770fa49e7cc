// 8-bit code pages: how the bytes of text files, programs and registry values become Text.
//
// A single-byte page is a table of 256 characters. Pages of another shape come from an adapter
// that implements CodePage over the system's own conversion.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <unordered_map>

#include "langtools/Text.h"

namespace nomira {

class CodePage {
  public:
    virtual ~CodePage() = default;
    // The page's number, such as 1252.
    virtual int Number() const = 0;
    // Every byte becomes a character; a byte (or sequence) without one becomes U+FFFD, so that
    // decoding never fails and never shortens the text to nothing.
    virtual Text Decode(std::string_view bytes) const = 0;
    // A character outside the page becomes "?", as the system writes it.
    virtual std::string Encode(TextView sText) const = 0;
    // Whether the page has a code for this character.
    virtual bool Holds(char16_t c) const = 0;
    // Whether each byte is a character by itself, the ASCII ones as in ASCII, and several threads
    // may use the page at once.
    virtual bool IsPlain() const { return false; }
};

// A page of 256 characters, one per byte value.
class SingleBytePage : public CodePage {
  public:
    using Table = std::array<char16_t, 256>;
    // U+FFFD in the table marks a byte value without a character.
    SingleBytePage(int nNumber, const Table& table);

    int Number() const override { return m_nNumber; }
    Text Decode(std::string_view bytes) const override;
    std::string Encode(TextView sText) const override;
    bool Holds(char16_t c) const override;
    bool IsPlain() const override { return m_bHoldsAscii; }

  private:
    char EncodeOne(char16_t c) const;
    // A character without a byte above 0 in m_lowToByte.
    char EncodeRare(char16_t c) const;

    int m_nNumber;
    Table m_table;
    bool m_bHoldsAscii = false;                              // each of them as the byte it is
    std::array<unsigned char, 256> m_lowToByte{};            // characters below U+0100
    std::unordered_map<char16_t, unsigned char> m_toByte{};  // the others
};

// Windows code page 1252, Western European, the page of the controllers' systems. The five byte
// values that the page leaves open (81, 8D, 8F, 90, 9D) are the C1 characters of the same number,
// as the system's conversion has it, so that every byte survives a round trip.
const SingleBytePage& Windows1252();

// The system's 8-bit page: 1252 until a program's composition sets another.
const CodePage& SystemCodePage();
// The page must outlive every use; nullptr means Windows1252 again.
void SetSystemCodePage(const CodePage* page);

}  // namespace nomira
