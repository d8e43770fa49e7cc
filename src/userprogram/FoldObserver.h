// Watches the rewriter of fold headers, so that the companion can tell what it looks up and why a
// line stays as it is. An observer is told of what happens and never changes it; the line as it is
// at that moment is g_sLine.
#pragma once

#include <cstdint>

#include "langtools/Text.h"

namespace nomira {

// The kinds of fold headers that are worked. Others are no headers to the rewriter.
enum class FoldKind { Simple, Wait, Analogue };

// A name in a header, to be looked up.
struct FoldName {
    TextView sModule;
    TextView sKey;
    TextView sOldName;    // what the database's text is compared with, as a pattern
    std::int32_t nPlace;  // where a new name goes, one-based; 0 if an analogue one has no place
};

enum class NameOutcome {
    NoDatabase,  // the connection failed: the name stays
    Refused,     // a program comment must not hold the text: the name stays
    Current,     // the text fits the old name as a pattern, or is the key: the name stays
    NoText,      // an analogue output without a text keeps its name
    Written,     // the line has changed, to an empty name where there is no text
};

class FoldObserver {
  public:
    virtual ~FoldObserver() = default;
    // g_sLine is a header of this kind; what is looked up in it follows.
    virtual void HeaderFound(FoldKind /*kind*/) {}
    // The number has no name yet, "12: symName"; the look-up follows.
    virtual void SymbolOnlyFound() {}
    // Told ahead of the look-up.
    virtual void NameFound(const FoldName& /*name*/) {}
    // What became of it. `sText` is the database's. Not told if the comparison fails.
    virtual void NameDecided(const FoldName& /*name*/, TextView /*sText*/,
                             NameOutcome /*outcome*/) {}
};

// Watches the rewriter in this thread; nullptr, the start value, watches nothing. Not owned.
void SetFoldObserver(FoldObserver* observer);
FoldObserver& TheFoldObserver();

}  // namespace nomira
