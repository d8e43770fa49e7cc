// Texts as a file stores them: Jet 3 in code page 1252, Jet 4 in UTF-16 or, where a text has
// characters of one byte alone, compressed to those.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "adapters/jet/Bytes.h"
#include "adapters/jet/Layout.h"

namespace nomira::jet {

// The five bytes that the code page leaves open stand for the control characters of their number,
// in both directions.
char16_t FromCodePage1252(std::uint8_t nByte);
// nullopt for a character that the code page lacks.
std::optional<std::uint8_t> ToCodePage1252(char16_t c);

// Whatever the bytes are; half a character at the end is left out.
std::u16string DecodeText(ByteView bytes, Generation generation);

// A stored text as ASCII, if all its characters are and none is U+0000; it is its UTF-8 as well
// then. The result lies in `bytes`, or in `room` where the characters have two bytes each there.
// nullopt otherwise, and for no characters.
std::optional<ByteView> AsciiOf(ByteView bytes, Generation generation, Bytes& room);

// nullopt if the generation can't store the text: Jet 3 knows the characters of its code page
// alone, and a Jet 4 text that begins with U+FEFF would be taken for a compressed one.
// bMayCompress: Jet 4 stores it with one byte per character if that can be and is shorter.
std::optional<Bytes> EncodeText(std::u16string_view sText, Generation generation,
                                bool bMayCompress);

}  // namespace nomira::jet
