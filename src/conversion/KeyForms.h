// The forms that keys have in the text files of this installation, and how a key of each gets into
// the database.
#pragma once

#include <vector>

#include "conversion/KeyScheme.h"
#include "langtools/Text.h"

namespace nomira {

// A form that a key can have in the file: a prefix and a number of digits.
struct KeyForm {
    Text sPattern;  // covers the whole key
    Text sPrefix;   // as the file has it; empty for the bare number of a process parameter
    const SignalClass* pClass;
    bool bReasonToWipe;  // an import that overwrites wipes the class's set for such a key
};

// All forms that this installation knows, in the order in which a line's key is tested. Asks the
// registry for the customer when it is made; meant to be made once per pass.
class KeyForms {
  public:
    KeyForms();

    bool IsCustomer() const { return m_bCustomer; }

    // nullptr if the word is no key.
    const KeyForm* Find(TextView sWord) const;

    // The key as the database has it. A welding channel's prefix is the same in both forms.
    Text Stored(const KeyForm& form, const Text& sKey) const;

  private:
    void Add(const Text& sPrefix, const SignalClass& signalClass, bool bReasonToWipe);

    bool m_bCustomer = false;
    std::vector<KeyForm> m_forms;
};

}  // namespace nomira
