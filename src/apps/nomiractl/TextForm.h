// The form in which the user has a text file's bytes: its encoding and its line ends. The program's
// own form is the 8-bit code page and CR LF; every other one must be asked for, nothing is guessed
// and nothing is replaced. Pure functions on bytes and Text.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "apps/nomiractl/Options.h"
#include "langtools/CodePage.h"
#include "langtools/Text.h"

namespace nomira::companion {

enum class TextEncoding { CodePage, Utf8 };

enum class LineEnds {
    CrLf,  // read: CR LF and a lone CR end a line, as in the program
    Lf,    // read: a lone LF does so too
};

struct TextForm {
    TextEncoding encoding = TextEncoding::CodePage;
    LineEnds ends = LineEnds::CrLf;
};

// The options' form, or `usual` for what they don't tell.
TextForm FormOf(const Options& options, TextForm usual = {});

// Why a character can't be taken.
enum class Flaw {
    NotUtf8,      // a byte that is no UTF-8
    OutsidePage,  // a character that the code page lacks
    NoCharacter,  // a byte without a character in the code page
    HalfPair,     // half of a surrogate pair, which only a database can hold
};

// A place that can't be taken. Lines and columns count from 1, columns in characters.
struct TextFlaw {
    Flaw flaw;
    std::int64_t nLine;
    std::int64_t nColumn;
    std::string sSign;  // the character in UTF-8 with its number, or the byte's number
};

// The first line of `bytes`, without its end, which is taken off them.
std::string_view TakeLine(std::string_view& bytes, LineEnds ends);
std::int64_t CountLines(std::string_view bytes, LineEnds ends);

// A line's bytes as Text. Bytes that are no UTF-8 become halves of surrogate pairs (NativeName.h),
// those without a character in the page U+FFFD.
Text DecodeLine(std::string_view line, TextEncoding encoding, const CodePage& page);
// The other way, which gives the same bytes for a line in UTF-8, flaws and all.
std::string EncodeLine(TextView sLine, TextEncoding encoding, const CodePage& page);

// What of a line, decoded so, no text of the database may hold.
std::vector<TextFlaw> FlawsOfLine(TextView sLine, std::int64_t nLine, TextEncoding encoding,
                                  const CodePage& page);

// What of a row of the database a file in this encoding can't hold. UTF-8 holds every character.
std::vector<TextFlaw> FlawsOfRow(TextView sRow, std::int64_t nLine, TextEncoding encoding,
                                 const CodePage& page);

// UTF-8's byte-order mark, which a file in UTF-8 may begin with.
inline constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
// Whether the bytes begin with a mark of UTF-16.
bool HasUtf16Mark(std::string_view bytes);

// The flaw as words: "the character \"€\" (U+20AC) is not in code page 1250".
std::string InWords(const TextFlaw& flaw, const CodePage& page);

}  // namespace nomira::companion
