#include "adapters/jet/KeyTables.h"

#include <array>
#include <string_view>
#include <vector>

namespace nomira::jet {
namespace {

// ---- Jet 3

constexpr std::uint8_t kNoGlyph = 0x10;  // control characters and bytes without a meaning
constexpr std::uint8_t kBlank = 0x11;
constexpr std::uint8_t kFirstSymbol = 0x12;
constexpr std::uint8_t kFirstDigit = 0x56;

// Symbols that have a key byte of their own, in the order of these, from kFirstSymbol on.
constexpr std::string_view kSymbols =
    "!\"#$%&'()*+,-./:;<=>?@[\\]^_`{|}~"
    "\x83\x85\x86\x87\x88\x89\x95\x98\x99"
    "\xA1\xA2\xA3\xA4\xA5\xA6\xA7\xA8\xA9\xAA\xAC\xAE\xAF\xB0\xB1\xB4\xB5\xB6\xB7\xB8\xBA"
    "\xBC\xBD\xBE\xBF\xD7\xF7";

// Symbols that sort like another character: pairs of both.
constexpr std::string_view kSameAs =
    "\x82'\x8B'\x91'\x92'\x9B'"
    "\x84\"\x93\"\x94\"\xAB\"\xBB\""
    "\x96-\x97-\xAD-"
    "\xB9\x31\xB2\x32\xB3\x33"
    "\x09 \xA0 ";

// Key bytes of A to Z; small letters have the same.
constexpr std::array<std::uint8_t, 26> kNarrowLetters{
    0x60, 0x61, 0x62, 0x64, 0x66, 0x67, 0x68, 0x69, 0x6A, 0x6B, 0x6C, 0x6D, 0x6F,
    0x70, 0x72, 0x73, 0x74, 0x75, 0x76, 0x77, 0x78, 0x7A, 0x7B, 0x7C, 0x7D, 0x7E};
constexpr std::string_view kLettersWithAccents = "ACEINOSUY";

// Letters beside the alphabet, capital and small.
struct NarrowLetter {
    std::uint8_t nCapital;
    std::uint8_t nSmall;
    NarrowCode code;
};
constexpr NarrowLetter kNarrowExtras[] = {
    {0x8C, 0x9C, {0x72, 0x66, kPlainLetter, 2}},  // OE
    {0xC6, 0xE6, {0x60, 0x66, kPlainLetter, 2}},  // AE
    {0xDF, 0xDF, {0x76, 0x76, kPlainLetter, 2}},  // sharp s
    {0xD0, 0xF0, {0x65, 0, 0, 0}},                // eth
    {0xD8, 0xF8, {0x81, 0, 0, 0}},                // O with stroke
    {0xDE, 0xFE, {0x7F, 0, 0, 0}},                // thorn
};

// Letters with an accent: its digit, then pairs of the byte and the plain letter.
struct NarrowAccent {
    std::uint8_t nAccent;
    std::string_view sPairs;
};
constexpr NarrowAccent kNarrowAccents[] = {
    {3, "\xC0\x41\xE0\x41\xC8\x45\xE8\x45\xCCI\xECI\xD2O\xF2O\xD9U\xF9U"},            // grave
    {4, "\xC1\x41\xE1\x41\xC9\x45\xE9\x45\xCDI\xEDI\xD3O\xF3O\xDAU\xFAU\xDDY\xFDY"},  // acute
    {5, "\xC2\x41\xE2\x41\xCA\x45\xEA\x45\xCEI\xEEI\xD4O\xF4O\xDBU\xFBU"},            // circumflex
    {6, "\xC4\x41\xE4\x41\xCB\x45\xEB\x45\xCFI\xEFI\xD6O\xF6O\xDCU\xFCU\x9FY\xFFY"},  // diaeresis
    {7, "\xC3\x41\xE3\x41\xD1N\xF1N\xD5O\xF5O"},                                      // tilde
    {8, "\xC5\x41\xE5\x41"},                                                          // ring
    {9, "\xC7\x43\xE7\x43"},                                                          // cedilla
    {10, "\x8AS\x9AS"},                                                               // caron
};

using NarrowCodes = std::array<NarrowCode, 256>;

constexpr std::size_t At(char c) {
    return static_cast<std::uint8_t>(c);
}

constexpr NarrowCodes MakeNarrowCodes() {
    NarrowCodes codes{};
    for (NarrowCode& code : codes)
        code.first = kNoGlyph;
    codes[At(' ')].first = kBlank;
    for (std::size_t i = 0; i < kSymbols.size(); ++i)
        codes[At(kSymbols[i])].first = static_cast<std::uint8_t>(kFirstSymbol + i);
    for (std::size_t i = 0; i < 10; ++i)
        codes['0' + i].first = static_cast<std::uint8_t>(kFirstDigit + i);
    for (std::size_t i = 0; i < kNarrowLetters.size(); ++i) {
        NarrowCode code{kNarrowLetters[i], 0, 0, 0};
        if (kLettersWithAccents.find(static_cast<char>('A' + i)) != std::string_view::npos)
            code = {kNarrowLetters[i], 0, kPlainLetter, 1};
        codes['A' + i] = codes['a' + i] = code;
    }
    for (const NarrowLetter& letter : kNarrowExtras)
        codes[letter.nCapital] = codes[letter.nSmall] = letter.code;
    for (const NarrowAccent& accent : kNarrowAccents)
        for (std::size_t i = 0; i < accent.sPairs.size(); i += 2)
            codes[At(accent.sPairs[i])] = {codes[At(accent.sPairs[i + 1])].first, 0, accent.nAccent,
                                           1};
    for (std::size_t i = 0; i < kSameAs.size(); i += 2)
        codes[At(kSameAs[i])] = codes[At(kSameAs[i + 1])];
    return codes;
}

constexpr NarrowCodes kNarrowCodes = MakeNarrowCodes();

// ---- Jet 4

struct WideKey {
    char16_t c;
    std::uint16_t nKey;
};
constexpr WideKey kWideKeys[] = {
    // Blanks and the symbols of ASCII
    {u'\t', 0x0803},
    {u'\n', 0x0804},
    {u'\v', 0x0805},
    {u'\f', 0x0806},
    {u'\r', 0x0807},
    {u' ', 0x07},
    {u'!', 0x09},
    {u'"', 0x0A},
    {u'#', 0x0C},
    {u'$', 0x0E},
    {u'%', 0x10},
    {u'&', 0x12},
    {u'(', 0x14},
    {u')', 0x16},
    {u'*', 0x18},
    {u',', 0x1A},
    {u'.', 0x1C},
    {u'/', 0x1E},
    {u':', 0x20},
    {u';', 0x22},
    {u'?', 0x24},
    {u'@', 0x26},
    {u'[', 0x27},
    {u'\\', 0x29},
    {u']', 0x2A},
    {u'^', 0x2B02},
    {u'_', 0x2B03},
    {u'`', 0x2B07},
    {u'{', 0x2B09},
    {u'|', 0x2B0B},
    {u'}', 0x2B0D},
    {u'~', 0x2B0F},
    {u'+', 0x2C},
    {u'<', 0x2E},
    {u'=', 0x30},
    {u'>', 0x32},
    // Those of Latin 1
    {0xA0, 0x0802},
    {0xA1, 0x2B10},
    {0xA2, 0x34A6},
    {0xA3, 0x34A7},
    {0xA4, 0x34A8},
    {0xA5, 0x34A9},
    {0xA6, 0x2B11},
    {0xA7, 0x34AA},
    {0xA8, 0x2B12},
    {0xA9, 0x34AB},
    {0xAB, 0x3305},
    {0xAC, 0x34AC},
    {0xAE, 0x34AD},
    {0xAF, 0x2B13},
    {0xB0, 0x34AE},
    {0xB1, 0x3304},
    {0xB2, 0x3A},
    {0xB3, 0x3C},
    {0xB4, 0x2B14},
    {0xB5, 0x34AF},
    {0xB6, 0x34B0},
    {0xB7, 0x34B1},
    {0xB8, 0x2B15},
    {0xB9, 0x38},
    {0xBB, 0x3307},
    {0xBC, 0x3712},
    {0xBD, 0x3716},
    {0xBE, 0x371A},
    {0xBF, 0x2B16},
    {0xD7, 0x3309},
    {0xF7, 0x330A},
    // Letters that are no letter of the alphabet with an accent
    {u'Æ', 0x4A51},
    {u'æ', 0x4A51},
    {u'Þ', 0x6D57},
    {u'þ', 0x6D57},
    {u'ß', 0x6B6B},
    {u'Ĳ', 0x595B},
    {u'ĳ', 0x595B},
    {u'Œ', 0x6451},
    {u'œ', 0x6451},
    {u'Ŋ', 0x6305},
    {u'ŋ', 0x6305},
    {u'ſ', 0x6C06},
    // Punctuation
    {0x2016, 0x2B35},
    {0x2017, 0x2B36},
    {0x2030, 0x34BA},
    {0x2039, 0x2B46},
    {0x203A, 0x2B47},
    {0x20AC, 0x35A1},
    {0x2122, 0x6E04},
};

// Runs of characters whose keys count up by `nStep`.
struct WideRun {
    char16_t first;
    char16_t last;
    std::uint16_t nKey;
    std::uint16_t nStep;
};
constexpr WideRun kWideRuns[] = {
    {u'0', u'9', 0x36, 2},   {0x2018, 0x201F, 0x2B37, 1}, {0x2020, 0x2026, 0x34B3, 1},
    {u'Α', u'Ρ', 0x790C, 1}, {u'Σ', u'Ω', 0x791D, 1},     {u'α', u'ρ', 0x790C, 1},
    {u'ς', u'ς', 0x791D, 1}, {u'σ', u'ω', 0x791D, 1},
};

constexpr std::array<std::uint16_t, 26> kWideLetters{
    0x4A, 0x4C, 0x4D, 0x4F, 0x51, 0x53, 0x55, 0x57, 0x59, 0x5B, 0x5C, 0x5E, 0x60,
    0x62, 0x64, 0x66, 0x68, 0x69, 0x6B, 0x6D, 0x6F, 0x71, 0x73, 0x75, 0x76, 0x78};

// In the order of their keys, from kFirstCyrillic on; a blank stands for a key without a letter.
constexpr std::uint16_t kFirstCyrillic = 0x792F;
constexpr std::u16string_view kCyrillic = u"АБВГД ЂЕЄЖЗЅИІЇЙЈКЛЉМНЊОПРСТЋ УЎ ФХЦЧЏШЩЪЫЬЭЮЯ";
// From a capital to its small letter, in the two blocks.
constexpr char16_t kCyrillicToSmall = 0x20;       // from U+0410
constexpr char16_t kOtherCyrillicToSmall = 0x50;  // below

// What tells accented letters from their bases: the code, then pairs of the letter and its base.
struct WideAccent {
    std::uint8_t nExtra;
    std::u16string_view sPairs;
};
constexpr WideAccent kWideAccents[] = {
    // Raised or without a dot
    {0x03, u"ªAºOıIĸK"},
    // Tonos
    {0x05, u"ΆΑΈΕΉΗΊΙΌΟΎΥΏΩάΑέΕήΗίΙόΟύΥώΩ"},
    // Acute
    {0x0E, u"ÁAáAÉEéEÍIíIÓOóOÚUúUÝYýYĆCćCĹLĺLŃNńNŔRŕRŚSśSŹZźZЃГѓГЌКќК"},
    // Grave
    {0x0F, u"ÀAàAÈEèEÌIìIÒOòOÙUùU"},
    // Dot above
    {0x10, u"ĊCċCĖEėEĠGġGİIŻZżZ"},
    // Middle dot
    {0x11, u"ĿLŀL"},
    // Circumflex
    {0x12, u"ÂAâAÊEêEÎIîIÔOôOÛUûUĈCĉCĜGĝGĤHĥHĴJĵJŜSŝSŴWŵWŶYŷY"},
    // Diaeresis
    {0x13, u"ÄAäAËEëEÏIïIÖOöOÜUüUÿYŸYΪΙΫΥϊΙϋΥЁЕёЕ"},
    // Caron
    {0x14, u"ČCčCĎDďDĚEěEĽLľLŇNňNŘRřRŠSšSŤTťTŽZžZ"},
    // Breve
    {0x15, u"ĂAăAĔEĕEĞGğGĬIĭIŎOŏOŬUŭU"},
    // Tonos and diaeresis
    {0x16, u"ΐΙΰΥ"},
    // Macron
    {0x17, u"ĀAāAĒEēEĪIīIŌOōOŪUūU"},
    // Tilde
    {0x19, u"ÃAãAÑNñNÕOõOĨIĩIŨUũU"},
    // Ring
    {0x1A, u"ÅAåAŮUůU"},
    // Ogonek
    {0x1B, u"ĄAąAĘEęEĮIįIŲUųU"},
    // Cedilla
    {0x1C, u"ÇCçCĢGģGĶKķKĻLļLŅNņNŖRŗRŞSşSŢTţT"},
    // Double acute
    {0x1D, u"ŐOőOŰUűU"},
    // Stroke
    {0x1E, u"ĐDđDĦHħH"},
    {0x1F, u"ŁLłL"},
    {0x21, u"ØOøO"},
    // Of their own
    {0x48, u"ŉN"},
    {0x68, u"ÐDðD"},
};

// T with a stroke has a key of its own beside the stroke.
constexpr WideCode kStrokeT{0x6E06, 0x1E, 0};

// Characters without key bytes, in runs whose codes count up.
struct AsideRun {
    char16_t first;
    char16_t last;
    std::uint8_t nAside;
};
constexpr AsideRun kAsides[] = {
    {0x01, 0x08, 0x03},     {0x0E, 0x1F, 0x0B},     {u'\'', u'\'', 0x80},   {u'-', u'-', 0x82},
    {0x7F, 0x9F, 0x1D},     {0xAD, 0xAD, 0x83},     {0x2010, 0x2011, 0x84}, {0x2012, 0x2013, 0x88},
    {0x2014, 0x2015, 0x8B}, {0x2027, 0x2027, 0x86},
};

constexpr char16_t kFirstFullWidth = 0xFF01;  // the characters from '!' to '~' once more
constexpr char16_t kLastFullWidth = 0xFF5E;

// In blocks of 256 characters, as most of the 65,536 aren't known.
class WideCodes {
  public:
    WideCodes() : m_blocks(1) {
        Set(0, {});
        SetKeys();
        SetCyrillic();
        for (const WideAccent& accent : kWideAccents)
            for (std::size_t i = 0; i < accent.sPairs.size(); i += 2)
                Set(accent.sPairs[i], {Find(accent.sPairs[i + 1])->nKey, accent.nExtra, 0});
        Set(u'Ŧ', kStrokeT);
        Set(u'ŧ', kStrokeT);
        for (const AsideRun& run : kAsides)
            for (char16_t c = run.first; c <= run.last; ++c)
                Set(c, {0, 0, static_cast<std::uint8_t>(run.nAside + (c - run.first))});
        for (char16_t c = kFirstFullWidth; c <= kLastFullWidth; ++c)
            Set(c, *Find(static_cast<char16_t>(c - kFirstFullWidth + u'!')));
    }

    const std::optional<WideCode>& Find(char16_t c) const {
        return m_blocks[m_blockOf[c >> 8U]][c & 0xFFU];
    }

  private:
    using Block = std::array<std::optional<WideCode>, 256>;

    void Set(char16_t c, WideCode code) {
        std::uint8_t& nBlock = m_blockOf[c >> 8U];
        if (nBlock == 0) {
            nBlock = static_cast<std::uint8_t>(m_blocks.size());
            m_blocks.emplace_back();
        }
        m_blocks[nBlock][c & 0xFFU] = code;
    }

    void SetKeys() {
        for (const WideKey& key : kWideKeys)
            Set(key.c, {key.nKey, 0, 0});
        for (const WideRun& run : kWideRuns)
            for (char16_t c = run.first; c <= run.last; ++c)
                Set(c, {static_cast<std::uint16_t>(run.nKey + run.nStep * (c - run.first)), 0, 0});
        for (std::size_t i = 0; i < kWideLetters.size(); ++i) {
            Set(static_cast<char16_t>(u'A' + i), {kWideLetters[i], 0, 0});
            Set(static_cast<char16_t>(u'a' + i), {kWideLetters[i], 0, 0});
        }
    }

    void SetCyrillic() {
        for (std::size_t i = 0; i < kCyrillic.size(); ++i) {
            const char16_t c = kCyrillic[i];
            if (c == u' ') continue;
            const WideCode code{static_cast<std::uint16_t>(kFirstCyrillic + i), 0, 0};
            Set(c, code);
            Set(static_cast<char16_t>(c + (c >= u'А' ? kCyrillicToSmall : kOtherCyrillicToSmall)),
                code);
        }
    }

    std::array<std::uint8_t, 256> m_blockOf{};  // 0: the block without a known character
    std::vector<Block> m_blocks;
};

}  // namespace

const NarrowCode& NarrowCodeOf(std::uint8_t nByte) {
    return kNarrowCodes[nByte];
}

std::optional<WideCode> WideCodeOf(char16_t c) {
    static const WideCodes codes;
    return codes.Find(c);
}

}  // namespace nomira::jet
