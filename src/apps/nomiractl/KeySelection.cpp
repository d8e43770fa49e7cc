#include "apps/nomiractl/KeySelection.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "adapters/posix/NativeName.h"
#include "apps/nomiractl/LongTexts.h"
#include "apps/nomiractl/Refusal.h"
#include "langtools/BasicText.h"

namespace nomira::companion {
namespace {

constexpr std::string_view kDots = "..";

// In the order of the classes.
constexpr std::array<const char*, kSignalClassCount> kWords{
    "in",    "out",   "notice", "counter", "flag",  "timer", "anin",
    "anout", "binin", "binout", "param",   "start", "weld",  "crater"};

std::string AllWords() {
    return fmt::format("{}", fmt::join(kWords, ", "));
}

bool IsNumber(TextView sWord) {
    return !sWord.empty() && std::all_of(sWord.begin(), sWord.end(),
                                         [](char16_t c) { return c >= u'0' && c <= u'9'; });
}

[[noreturn]] void RefuseKey(const std::string& sWord) {
    throw Refusal(fmt::format("{}: no key; write one as IN_5, IN_1..IN_40 or 1..40", sWord),
                  ExitCode::WrongUsage);
}

// One end of a range.
struct Bound {
    const SignalClass* pClass;  // nullptr for a bare number
    std::int64_t nNumber;
};

std::optional<Bound> BoundOf(TextView sWord) {
    if (IsNumber(sWord)) return Bound{nullptr, Val(sWord)};
    const std::optional<Text> sKey = StandardKey(sWord);
    if (!sKey) return std::nullopt;
    const SignalClass* pClass = ClassOfKey(*sKey);
    return Bound{pClass, NumberOfKey(*pClass, *sKey)};
}

}  // namespace

const char* ClassWord(std::size_t nClass) {
    return kWords.at(nClass);
}

const SignalClass& ClassOfWord(const std::string& sWord) {
    const Text sText = posix::FromNative(sWord);
    for (std::size_t n = 0; n < kSignalClassCount; ++n) {
        const SignalClass& signalClass = SignalClasses()[n];
        if (EqualNoCase(sText, FromAscii(kWords[n])) || EqualNoCase(sText, signalClass.sName) ||
            EqualNoCase(sText, signalClass.sPrefix))
            return signalClass;
    }
    throw Refusal(fmt::format("{}: no class; there are {}", sWord, AllWords()),
                  ExitCode::WrongUsage);
}

std::int64_t NumberOfKey(const SignalClass& signalClass, TextView sKey) {
    return Val(sKey.substr(signalClass.sPrefix.size()));
}

std::optional<Text> StandardKey(TextView sKey) {
    if (ClassOfKey(sKey)) return Text(sKey);
    for (const SignalClass& signalClass : SignalClasses()) {
        Text sStandard = SwapKeyPrefix(sKey, signalClass.sCustomerPrefix, signalClass.sPrefix);
        if (sStandard != sKey && ClassOfKey(sStandard)) return sStandard;
    }
    return std::nullopt;
}

KeySelection::KeySelection(const std::vector<std::string>& keys,
                           const std::vector<std::string>& classes) {
    for (const std::string& sWord : keys)
        Add(sWord);
    for (const std::string& sWord : classes)
        m_classes.push_back(&ClassOfWord(sWord));
}

void KeySelection::Add(const std::string& sWord) {
    if (const std::size_t nDots = sWord.find(kDots); nDots != std::string::npos)
        return AddRange(sWord, nDots);
    const Text sKey = posix::FromNative(sWord);
    if (IsNumber(sKey)) {
        m_ranges.push_back({nullptr, Val(sKey), Val(sKey)});
        m_keys.push_back(sKey);  // a process parameter stored under its bare number
    } else if (std::optional<Text> sStandard = StandardKey(sKey)) {
        m_keys.push_back(std::move(*sStandard));
    } else {
        RefuseKey(sWord);
    }
}

void KeySelection::AddRange(const std::string& sWord, std::size_t nDots) {
    const auto from = BoundOf(posix::FromNative(sWord.substr(0, nDots)));
    const auto to = BoundOf(posix::FromNative(sWord.substr(nDots + kDots.size())));
    if (!from || !to || (to->pClass && to->pClass != from->pClass) || to->nNumber < from->nNumber)
        RefuseKey(sWord);
    m_ranges.push_back({from->pClass, from->nNumber, to->nNumber});
}

bool KeySelection::Holds(TextView sModule, TextView sKey) const {
    const std::size_t nRow = ClassRow(sModule, sKey);
    const SignalClass* pClass = nRow == kOtherKeys ? nullptr : &SignalClasses()[nRow];
    if (!m_classes.empty() &&
        (!pClass || std::find(m_classes.begin(), m_classes.end(), pClass) == m_classes.end()))
        return false;
    if (m_keys.empty() && m_ranges.empty()) return true;
    if (std::find(m_keys.begin(), m_keys.end(), sKey) != m_keys.end()) return true;
    if (!pClass) return false;
    const std::int64_t nNumber = NumberOfKey(*pClass, sKey);
    return std::any_of(m_ranges.begin(), m_ranges.end(), [&](const Range& range) {
        return (!range.pClass || range.pClass == pClass) && nNumber >= range.nFrom &&
               nNumber <= range.nTo;
    });
}

}  // namespace nomira::companion
