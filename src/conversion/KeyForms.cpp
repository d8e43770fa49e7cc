#include "conversion/KeyForms.h"

#include <algorithm>
#include <array>

#include "langtools/Matches.h"

namespace nomira {
namespace {

// The prefixes of this installation, as GetKeyPrefixes fills them. The process parameter's stays
// empty on a standard installation: there its key is the bare number.
struct KeyPrefixes {
    Text sIn, sOut, sAnIn, sAnOut, sBinIn, sBinOut;
    Text sNotice, sCounter, sFlag, sTimer, sProcParam;
    bool bCustomer = false;

    KeyPrefixes() {
        GetKeyPrefixes(sIn, sOut, sAnIn, sAnOut, sBinIn, sBinOut, sNotice, sCounter, sFlag, sTimer,
                       sProcParam, &bCustomer);
    }
};

struct ImportedClass {
    TextView sStandardPrefix;
    Text KeyPrefixes::*pPrefix;  // as the file has it
    bool bReasonToWipe;
};

// The signals in the order in which a line's key is tested; the welding channels follow.
constexpr std::array<ImportedClass, kPlainClassCount> kImportOrder{{
    {u"IN_", &KeyPrefixes::sIn, true},
    {u"OUT_", &KeyPrefixes::sOut, true},
    {u"ANIN_", &KeyPrefixes::sAnIn, true},
    {u"ANOUT_", &KeyPrefixes::sAnOut, true},
    // The binary classes are wiped with the others, but never were asked for.
    {u"BININ_", &KeyPrefixes::sBinIn, false},
    {u"BINOUT_", &KeyPrefixes::sBinOut, false},
    {u"ZTQXProcParam_", &KeyPrefixes::sProcParam, true},
    {u"NoticeText", &KeyPrefixes::sNotice, true},
    {u"CounterText", &KeyPrefixes::sCounter, true},
    {u"FlagText", &KeyPrefixes::sFlag, true},
    {u"TimerText", &KeyPrefixes::sTimer, true},
}};

const SignalClass& ClassOfPrefix(TextView sStandardPrefix) {
    const auto& classes = SignalClasses();
    return *std::find_if(classes.begin(), classes.end(),
                         [sStandardPrefix](const auto& c) { return c.sPrefix == sStandardPrefix; });
}

}  // namespace

KeyForms::KeyForms() {
    const KeyPrefixes prefixes;
    m_bCustomer = prefixes.bCustomer;
    for (const ImportedClass& imported : kImportOrder)
        Add(prefixes.*imported.pPrefix, ClassOfPrefix(imported.sStandardPrefix),
            imported.bReasonToWipe);
    for (const SignalClass& signalClass : SignalClasses())
        if (signalClass.bWelding) Add(Text(signalClass.sPrefix), signalClass, true);
}

const KeyForm* KeyForms::Find(TextView sWord) const {
    const auto found = std::find_if(m_forms.begin(), m_forms.end(), [sWord](const auto& form) {
        return Matches(sWord, form.sPattern);
    });
    return found == m_forms.end() ? nullptr : &*found;
}

Text KeyForms::Stored(const KeyForm& form, const Text& sKey) const {
    return IsCustomer() ? SwapKeyPrefix(sKey, form.sPrefix, form.pClass->sPrefix) : sKey;
}

void KeyForms::Add(const Text& sPrefix, const SignalClass& signalClass, bool bReasonToWipe) {
    Text sPattern = sPrefix;
    for (int nDigits = 1; nDigits <= signalClass.nMaxDigits; ++nDigits) {
        sPattern += u'#';
        m_forms.push_back({sPattern, sPrefix, &signalClass, bReasonToWipe});
    }
}

}  // namespace nomira
