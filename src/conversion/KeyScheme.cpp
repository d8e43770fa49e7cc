#include "conversion/KeyScheme.h"

#include <algorithm>

#include "frame/ProgramVariables.h"
#include "frame/Settings.h"
#include "langtools/CTools.h"
#include "langtools/Matches.h"

namespace nomira {
namespace {

// In the order of the classes.
constexpr std::size_t kProcParam = 10;

bool IsNumberOfKey(TextView sNumber) {
    return !sNumber.empty() && sNumber.size() <= kMaxExportDigits &&
           std::all_of(sNumber.begin(), sNumber.end(),
                       [](char16_t c) { return c >= u'0' && c <= u'9'; });
}

}  // namespace

std::int16_t SignalClass::Size() const {
    return pSize ? *pSize : kWeldingSize;
}

const std::array<SignalClass, kSignalClassCount>& SignalClasses() {
    // clang-format off
    static const std::array<SignalClass, kSignalClassCount> classes{{
        {u"digital input",         u"IN_",            u"E",              u"IO",            &g_nNumIo,        1024, 4, false},
        {u"digital output",        u"OUT_",           u"A",              u"IO",            &g_nNumIo,        1024, 4, false},
        {u"notice",                u"NoticeText",     u"M",              u"Notice",        &g_nNumNotice,    32,   3, false},
        {u"counter",               u"CounterText",    u"I",              u"Counter",       &g_nNumCounter,   32,   2, false},
        {u"flag",                  u"FlagText",       u"F",              u"Flag",          &g_nNumFlag,      1024, 4, false},
        {u"timer",                 u"TimerText",      u"T",              u"Timer",         &g_nNumTimer,     32,   2, false},
        {u"analogue input",        u"ANIN_",          u"ANAE",           u"IO",            &g_nNumAnIn,      32,   2, false},
        {u"analogue output",       u"ANOUT_",         u"ANAA",           u"IO",            &g_nNumAnOut,     32,   2, false},
        {u"binary input",          u"BININ_",         u"BINE",           u"IO",            &g_nNumBinIn,     20,   2, false},
        {u"binary output",         u"BINOUT_",        u"BINA",           u"IO",            &g_nNumBinOut,    20,   2, false},
        {u"process parameter",     u"ZTQXProcParam_", u"P",              u"ZTQXProcParam", &g_nNumProcParam, 256,  3, false},
        {u"welding start channel", u"Start1",         u"Start1",         u"A10TP",         nullptr, kWeldingSize,  1, true},
        {u"welding channel",       u"Weld1",          u"Weld1",          u"A10TP",         nullptr, kWeldingSize,  1, true},
        {u"crater channel",        u"CraterChannel1", u"CraterChannel1", u"A10TP",         nullptr, kWeldingSize,  1, true},
    }};
    // clang-format on
    return classes;
}

const SignalClass* ClassOfKey(TextView sKey) {
    const auto& classes = SignalClasses();
    const auto found = std::find_if(classes.begin(), classes.end(), [sKey](const SignalClass& c) {
        return sKey.starts_with(c.sPrefix) && IsNumberOfKey(sKey.substr(c.sPrefix.size()));
    });
    return found == classes.end() ? nullptr : &*found;
}

void GetKeyPrefixes(Text& sIn, Text& sOut, Text& sAnIn, Text& sAnOut, Text& sBinIn, Text& sBinOut,
                    Text& sNotice, Text& sCounter, Text& sFlag, Text& sTimer, Text& sProcParam,
                    bool* bCustomer) {
    const bool bVw = IsCustomerVw();
    const std::array<Text*, kProcParam> inClassOrder{
        &sIn, &sOut, &sNotice, &sCounter, &sFlag, &sTimer, &sAnIn, &sAnOut, &sBinIn, &sBinOut};
    for (std::size_t n = 0; n < inClassOrder.size(); ++n) {
        const SignalClass& signalClass = SignalClasses()[n];
        *inClassOrder[n] = bVw ? signalClass.sCustomerPrefix : signalClass.sPrefix;
    }
    // Text files of standard installations give process parameters by their bare number.
    if (bVw) sProcParam = SignalClasses()[kProcParam].sCustomerPrefix;
    if (bCustomer) *bCustomer = bVw;
}

Text SwapKeyPrefix(TextView sLine, TextView sOldPrefix, TextView sNewPrefix) {
    if (!Matches(sLine, Text(sOldPrefix) + u"#*")) return Text(sLine);
    return Text(sNewPrefix) + g_Tools().RemoveFirstToken(sLine, sOldPrefix);
}

}  // namespace nomira
