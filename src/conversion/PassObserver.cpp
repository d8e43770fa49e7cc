#include "conversion/PassObserver.h"

#include <algorithm>

#include "langtools/ProgramState.h"

namespace nomira {
namespace {

PassObserver* g_observer = nullptr;

const OnProgramReset g_reset{[] { g_observer = nullptr; }};

constexpr TextView kProcParamModule = u"ZTQXProcParam";

// The class's prefix as a text file of that kind of installation has it.
TextView FilePrefix(const SignalClass& signalClass, bool bCustomer) {
    if (bCustomer) return signalClass.sCustomerPrefix;
    return signalClass.sModule == kProcParamModule ? TextView() : signalClass.sPrefix;
}

// How many digits make up all that follows the prefix; 0 if that isn't so.
int DigitsBehind(TextView sPrefix, TextView sWord) {
    if (!sWord.starts_with(sPrefix)) return 0;
    const TextView sNumber = sWord.substr(sPrefix.size());
    const bool bDigits = std::all_of(sNumber.begin(), sNumber.end(),
                                     [](char16_t c) { return c >= u'0' && c <= u'9'; });
    return bDigits ? static_cast<int>(sNumber.size()) : 0;
}

// The class whose key in that kind of installation's text files the word is, but for the number of
// its digits.
struct Fit {
    const SignalClass* pClass = nullptr;
    bool bTooLong = false;
};

Fit FitOf(TextView sWord, bool bCustomer) {
    for (const SignalClass& signalClass : SignalClasses()) {
        const int nDigits = DigitsBehind(FilePrefix(signalClass, bCustomer), sWord);
        if (nDigits > 0) return {&signalClass, nDigits > signalClass.nMaxDigits};
    }
    return {};
}

struct Reason {
    PassedOver why;
    const SignalClass* pClass;
};

Reason ReasonOf(TextView sFirstWord, bool bCustomer) {
    if (sFirstWord.empty()) return {PassedOver::Blank, nullptr};
    const Fit own = FitOf(sFirstWord, bCustomer);
    if (own.bTooLong) return {PassedOver::TooManyDigits, own.pClass};
    const Fit other = FitOf(sFirstWord, !bCustomer);
    if (other.pClass && !other.bTooLong) return {PassedOver::OtherForm, other.pClass};
    const SignalClass* pClass = ClassOfKey(sFirstWord);
    return {pClass ? PassedOver::OtherForm : PassedOver::UnknownKey, pClass};
}

}  // namespace

void PassObserver::LineStored(std::int64_t /*nLine*/, TextView /*sKey*/, TextView /*sModule*/,
                              TextView /*sText*/, bool /*bStored*/) {}

void PassObserver::LinePassedOver(std::int64_t /*nLine*/, TextView /*sLine*/,
                                  PassedOver /*reason*/) {}

void PassObserver::RowExported(TextView /*sKey*/, TextView /*sText*/) {}

void PassObserver::RowLeftOut(TextView /*sKey*/, TextView /*sText*/) {}

void SetPassObserver(PassObserver* observer) {
    g_observer = observer;
}

PassObserver& ThePassObserver() {
    static PassObserver nobody;
    return g_observer ? *g_observer : nobody;
}

PassedOver ReasonPassedOver(TextView sFirstWord, bool bCustomer, const SignalClass** ppClass) {
    const Reason reason = ReasonOf(sFirstWord, bCustomer);
    if (ppClass) *ppClass = reason.pClass;
    return reason.why;
}

}  // namespace nomira
