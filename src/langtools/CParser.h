// CParser cuts a text into tokens at a separator and keeps them for numbered access.
//
// The program holds one instance, g_Parser(), for all callers; each Parse overwrites the tokens of
// the last one, so a caller reads what it needs before anyone else parses. The scanner remembers
// its position between calls, and callers have come to rely on the quirks that follow from it.
#pragma once

#include <cstdint>
#include <vector>

#include "langtools/Text.h"

namespace nomira {

class CParser {
  public:
    using Tokens = std::vector<Text>;

    // Cuts `strline`: the first token ends at `strFirstSeperator`, all further ones at
    // `strNextSeperator`; a blank `strNextSeperator` means the same as the first. Separators of
    // several characters count as a whole. Leading first separators are dropped. An empty token
    // ends the scan, so there are no empty fields.
    // Returns the object's own list, the one that count and Token read, or nullptr (and no
    // tokens) if `strFirstSeperator` is empty. The arguments may be tokens of the list. Of more
    // than 32,767 tokens one too many is kept: count, Token and every later Parse, which counts
    // what it removes, raise Overflow for them.
    const Tokens* Parse(TextView strline, TextView strFirstSeperator = u" ",
                        TextView strNextSeperator = u" ");

    // How many tokens there are. Raises Overflow above 32,767.
    std::int16_t count() const;

    // The token at the one-based place, the empty text outside 1 to count. Raises like count.
    const Text& Token(std::int16_t nIndex) const;

  private:
    Text GetNextToken(TextView strline, TextView sSeparator);
    static std::int32_t MeasureToken(TextView strline, std::int32_t nPos, TextView sSeparator);
    static std::int32_t SkipSeparators(TextView strline, std::int32_t nPos, TextView sSeparator);

    Tokens m_colTokens;
    Text m_sFirstSeperator = u" ";
    Text m_sNextSeperator = u" ";
    Text m_sSource;
    // The scan, kept from call to call of GetNextToken and never cleared by Parse.
    Text sScanText;
    Text sScanSeparator;
    std::int32_t nScanPos = 0;
    std::int32_t nScanLen = 0;
};

// The one parser of the thread, made when first used.
CParser& g_Parser();

}  // namespace nomira
