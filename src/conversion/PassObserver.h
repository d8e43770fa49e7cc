// Watches the passes line by line, so that the companion can report what the program itself keeps
// quiet about. An observer is told of what happens and never changes it. Lines count from 1.
#pragma once

#include <cstdint>

#include "conversion/KeyScheme.h"
#include "langtools/Text.h"

namespace nomira {

// Why an import passed a line over.
enum class PassedOver {
    Blank,          // nothing but blanks (or tabs)
    UnknownKey,     // its first word is no key of this installation
    TooManyDigits,  // a key's prefix, but more digits than its class takes
    OtherForm,      // a key in a form that this installation doesn't read: that of the other kind
                    // of installation, or the one in which a standard one exports its process
                    // parameters
};

class PassObserver {
  public:
    virtual ~PassObserver() = default;
    // The file and the database are open, the first line follows.
    virtual void ImportBegins() {}
    // What TextIntoDb gave the store: the key in standard form, and the text as it is stored, the
    // empty marker included. `bStored` is the store's own answer.
    virtual void LineStored(std::int64_t nLine, TextView sKey, TextView sModule, TextView sText,
                            bool bStored);
    // `sLine` with its umlauts and tabs spelled out.
    virtual void LinePassedOver(std::int64_t nLine, TextView sLine, PassedOver reason);
    // The export took a row (`sKey` in standard form), or left it out: a Null, an empty marker, or
    // a key that is none of the class. A Null comes as an empty text.
    virtual void RowExported(TextView sKey, TextView sText);
    virtual void RowLeftOut(TextView sKey, TextView sText);
};

// nullptr, the start value, watches nothing. Not owned.
void SetPassObserver(PassObserver* observer);
PassObserver& ThePassObserver();

// Why a line whose first word is no key was passed over; for the observer alone, it decides
// nothing. `ppClass`, if given, takes the class whose key the word is meant to be, nullptr for a
// blank line or an unknown key.
PassedOver ReasonPassedOver(TextView sFirstWord, bool bCustomer,
                            const SignalClass** ppClass = nullptr);

}  // namespace nomira
