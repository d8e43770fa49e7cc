#include "apps/nomiractl/TextFileCheck.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <utility>

#include "apps/nomiractl/KeySelection.h"
#include "apps/nomiractl/NameCheck.h"
#include "apps/nomiractl/Words.h"
#include "conversion/KeyForms.h"
#include "conversion/PassObserver.h"
#include "conversion/TextImport.h"
#include "langtools/BasicText.h"
#include "langtools/CParser.h"
#include "langtools/CodePage.h"
#include "langtools/RuntimeError.h"
#include "platform/Platform.h"

namespace nomira::companion {
namespace {

constexpr TextView kBlanks = u" \t";

constexpr std::array<const char*, 5> kDigitWords{"no digits", "one digit", "one or two digits",
                                                 "one to three digits", "one to four digits"};

// Whether the bytes above 127, of which there must be some, are well-formed UTF-8.
bool LooksLikeUtf8(std::string_view bytes) {
    std::size_t nLetters = 0;
    for (std::size_t n = 0; n < bytes.size();) {
        const auto c = static_cast<unsigned char>(bytes[n]);
        const std::size_t nLength = c < 0x80               ? 1
                                    : (c & 0xE0U) == 0xC0U ? 2
                                    : (c & 0xF0U) == 0xE0U ? 3
                                    : (c & 0xF8U) == 0xF0U ? 4
                                                           : 0;
        if (nLength == 0 || n + nLength > bytes.size()) return false;
        for (std::size_t k = 1; k < nLength; ++k)
            if ((static_cast<unsigned char>(bytes[n + k]) & 0xC0U) != 0x80U) return false;
        if (nLength > 1) ++nLetters;
        n += nLength;
    }
    return nLetters > 0;
}

std::int64_t Column(std::size_t nPlace) {
    return static_cast<std::int64_t>(nPlace) + 1;
}

// The first word of a line as it stands in the file, and what is behind it.
struct FirstWord {
    explicit FirstWord(TextView sLine) {
        nPlace = std::min(sLine.find_first_not_of(kBlanks), sLine.size());
        const TextView sRest = sLine.substr(nPlace);
        sWord = sRest.substr(0, sRest.find_first_of(kBlanks));
        sBehind = sRest.substr(sWord.size());
        nTextPlace = sBehind.find_first_not_of(kBlanks);
        if (nTextPlace == TextView::npos) nTextPlace = sBehind.size();
        nTextPlace += nPlace + sWord.size();
    }
    std::size_t nPlace;  // zero-based
    TextView sWord;
    TextView sBehind;
    std::size_t nTextPlace;
};

class TextFileCheck {
  public:
    TextFileCheck(const TextSource& source, Findings& findings)
        : m_source(source), m_findings(findings) {}

    void Run(TextView sPath) {
        const auto file = TheFiles().OpenForInput(sPath);
        Text sLine;
        while (!file->AtEnd()) {
            ++m_place.nLine;
            file->ReadLine(sLine);
            m_bLfOnly = m_place.nLine == 1 && file->AtEnd() && sLine.find(u'\n') != Text::npos;
            CheckLine(sLine);
        }
        if (m_bSignalStored && !m_bWipesSignals && !m_bWipesWelding)
            m_findings.Add(Rule::TextNoWipe, {}, {});
        if (m_bWipesSignals) m_findings.File().wipes.push_back("signals");
        if (m_bWipesWelding) m_findings.File().wipes.push_back("welding");
    }

  private:
    void Add(Rule rule, Place place, const std::vector<std::string>& words) {
        m_findings.Add(rule, place, m_sLine, words);
    }
    void AddAt(std::size_t nPlace, Rule rule, const std::vector<std::string>& words = {}) {
        Add(rule, {m_place.nLine, Column(nPlace)}, words);
    }

    void CheckLine(const Text& sLine) {
        m_sLine = sLine;
        if (m_bStopped) return ScanAsWipe();  // the scan is a pass of its own, ahead of the import
        CheckLineEnds();
        CheckCharacters();
        ScanAsWipe();
        g_sLine = sLine;
        const KeyForm* form = nullptr;
        try {
            form = TakeTextLine(m_forms);
        } catch (const RuntimeError& error) {
            AddAt(0, Rule::TextLongLine);
            m_findings.Foretell({.nLine = m_place.nLine,
                                 .sWhat = "stops",
                                 .nError = static_cast<std::int32_t>(error.Number())});
            m_bStopped = true;
            return;
        }
        if (form)
            CheckStored(*form);
        else
            CheckPassedOver();
    }

    void CheckLineEnds() {
        const std::size_t nFeed = m_sLine.find(u'\n');
        if (nFeed != Text::npos) AddAt(nFeed, m_bLfOnly ? Rule::TextLfOnly : Rule::TextLoneLf);
    }

    bool IsUtf8() const { return m_source.Form().encoding == TextEncoding::Utf8; }

    void CheckCharacters() {
        if (IsUtf8())
            CheckUtf8();
        else
            CheckBytes();
        CheckControls();
    }

    void CheckUtf8() {
        const CodePage& page = SystemCodePage();
        for (const TextFlaw& flaw : FlawsOfLine(m_sLine, m_place.nLine, TextEncoding::Utf8, page))
            Add(flaw.flaw == Flaw::NotUtf8 ? Rule::TextNotUtf8 : Rule::TextOutsidePage,
                {flaw.nLine, flaw.nColumn}, {InWords(flaw, page)});
    }

    void CheckBytes() {
        const CodePage& page = SystemCodePage();
        const std::string sPage = std::to_string(page.Number());
        const auto isAscii = [](char16_t c) { return c < 0x80; };
        const bool bAscii = std::all_of(m_sLine.begin(), m_sLine.end(), isAscii);
        const std::string bytes = bAscii ? std::string() : page.Encode(m_sLine);
        if (m_place.nLine == 1 && bytes.starts_with("\xEF\xBB\xBF"))
            AddAt(0, Rule::TextUtf8Mark, {sPage});
        else if (m_place.nLine == 1 && HasUtf16Mark(bytes))
            AddAt(0, Rule::TextUtf16Mark, {sPage});
        else if (const auto n = m_sLine.find(kNoCharacter); n != Text::npos)
            AddAt(n, Rule::TextNoCharacter, {sPage});
        else if (LooksLikeUtf8(bytes))
            AddAt(FirstAbove127(), Rule::TextUtf8, {sPage, Shown(Trim(m_sLine))});
    }

    std::size_t FirstAbove127() const {
        const auto found =
            std::find_if(m_sLine.begin(), m_sLine.end(), [](char16_t c) { return c >= 0x80; });
        return static_cast<std::size_t>(found - m_sLine.begin());
    }

    void CheckControls() {
        const auto isControl = [](char16_t c) {
            return (c < 0x20 && c != u'\t' && c != u'\n') || c == 0x7F;
        };
        const auto found = std::find_if(m_sLine.begin(), m_sLine.end(), isControl);
        if (found != m_sLine.end())
            AddAt(static_cast<std::size_t>(found - m_sLine.begin()), Rule::TextControl,
                  {std::to_string(static_cast<unsigned>(*found))});
    }

    // What the scan of OVERWRITE makes of the line.
    void ScanAsWipe() {
        m_bSeenByWipe = false;
        if (m_bWipeStopped) return;
        g_sLine = m_sLine;
        try {
            const KeyForm* form = TakeWipeKey(m_forms);
            m_bSeenByWipe = form != nullptr;
            if (form && form->pClass->bWelding) m_bWipesWelding = true;
            if (form && !form->pClass->bWelding && form->bReasonToWipe) m_bWipesSignals = true;
        } catch (const RuntimeError&) {
            AddAt(0, Rule::TextManyWords);
            m_bWipeStopped = true;
            g_Parser() = CParser();  // one that has overflowed stays so
        }
    }

    // ---- Lines that are stored ----

    void CheckStored(const KeyForm& form) {
        const Text sKey = g_vSymbol;
        const Text sText = g_vLongName;
        m_findings.Foretell({.nLine = m_place.nLine,
                             .sWhat = "stored",
                             .sKey = sKey,
                             .sModule = Text(form.pClass->sModule),
                             .sText = sText});
        if (!form.pClass->bWelding) m_bSignalStored = true;
        CheckDuplicate(Text(form.pClass->sModule), sKey);
        if (m_bLfOnly) return;
        const FirstWord word(m_sLine);
        CheckKey(form, word, sKey);
        CheckText(form, word, sKey, sText);
    }

    void CheckDuplicate(const Text& sModule, const Text& sKey) {
        const auto [known, bNew] = m_lines.try_emplace({sModule, sKey}, m_place.nLine, m_sLine);
        if (bNew) return;
        auto& [nEarlier, sEarlier] = known->second;
        m_findings.Add(Rule::TextDuplicateKey, {nEarlier, 1}, sEarlier,
                       {std::to_string(nEarlier), std::to_string(m_place.nLine)});
        nEarlier = m_place.nLine;
        sEarlier = m_sLine;
    }

    void CheckKey(const KeyForm& form, const FirstWord& word, const Text& sKey) {
        const std::string sWord = Shown(word.sWord);
        if (word.nPlace > 0) AddAt(0, Rule::TextLeadingBlank, {sWord});
        if (form.sPrefix.empty()) AddAt(word.nPlace, Rule::TextBareNumber, {sWord});
        const TextView sNumber = word.sWord.substr(form.sPrefix.size());
        if (sNumber.size() > 1 && sNumber.starts_with(u'0')) {
            const std::size_t nFrom = std::min(sNumber.find_first_not_of(u'0'), sNumber.size() - 1);
            AddAt(word.nPlace, Rule::TextLeadingZeros,
                  {sWord, Utf8(form.sPrefix + Text(sNumber.substr(nFrom)))});
        }
        if (form.bReasonToWipe && !m_bSeenByWipe && !m_bWipeStopped && word.nPlace == 0)
            AddAt(word.nPlace, Rule::TextTabBehindKey, {Shown(sKey)});
    }

    void CheckText(const KeyForm& form, const FirstWord& word, const Text& sKey,
                   const Text& sText) {
        const TextView sRaw = Trim(word.sBehind);
        const std::string sWord = Shown(word.sWord);
        if (sRaw.find_first_not_of(kBlanks) == TextView::npos) {
            AddAt(word.nPlace + word.sWord.size(),
                  form.pClass->bWelding ? Rule::TextNoChannelText : Rule::TextNoText, {sWord});
            return;
        }
        if (sText == kEmptyMarker) return AddAt(word.nTextPlace, Rule::TextMarker, {sWord});
        if (sText == sKey) AddAt(word.nTextPlace, Rule::TextIsKey, {sWord});
        CheckSpelling(word);
        CheckFlaws(word, sText);
    }

    // Letters and tabs that are spelled out on the way in.
    void CheckSpelling(const FirstWord& word) {
        for (std::size_t n = word.nTextPlace; n < m_sLine.size(); ++n) {
            Text sSign = m_sLine.substr(n, 1);
            const Text sBefore = sSign;
            NormalizeUmlauts(sSign);
            if (sSign == sBefore) continue;
            if (sBefore != u"\t") return AddAt(n, Rule::TextUmlaut, {Utf8(sBefore), Utf8(sSign)});
            if (m_sLine.find_first_not_of(kBlanks, n) != Text::npos) return AddAt(n, Rule::TextTab);
        }
    }

    void CheckFlaws(const FirstWord& word, const Text& sText) {
        constexpr std::array kRules{Rule::TextRefusedSign, Rule::TextApostrophe,
                                    Rule::TextOpenBracket, Rule::TextWildcard, Rule::TextState};
        for (const NameFinding& flaw : FlawsOf(sText)) {
            // The text may have got longer on its way in, but not by signs such as these.
            const TextView sSign = TextView(sText).substr(flaw.nPlace, 1);
            AddAt(m_sLine.find(sSign, word.nTextPlace),
                  kRules.at(static_cast<std::size_t>(flaw.flaw)), {flaw.sSign});
        }
    }

    // ---- Lines that are passed over ----

    void CheckPassedOver() {
        m_findings.Foretell({.nLine = m_place.nLine, .sWhat = "passed-over"});
        if (m_bLfOnly) return Reject();
        const SignalClass* pClass = nullptr;
        const PassedOver reason = ReasonPassedOver(g_vSymbol, m_forms.IsCustomer(), &pClass);
        const FirstWord word(m_sLine);
        switch (reason) {
            case PassedOver::Blank:
                return;
            case PassedOver::TooManyDigits:
                AddAt(word.nPlace, Rule::TextTooManyDigits,
                      {Shown(word.sWord), DigitSentence(*pClass)});
                break;
            case PassedOver::OtherForm:
                AddOtherForm(word, *pClass);
                break;
            case PassedOver::UnknownKey:
                if (!AddNearKey(word)) return AddRemark(word);
        }
        Reject();
    }

    void Reject() {
        m_findings.Reject(m_place.nLine,
                          EncodeLine(m_sLine, m_source.Form().encoding, SystemCodePage()));
    }

    // A line that begins with a letter or a digit may be a key with a slip; others are remarks.
    void AddRemark(const FirstWord& word) {
        AddAt(word.nPlace, Rule::TextRemark, {Shown(word.sWord)});
        const char16_t c = UCase(word.sWord.front());
        if ((c >= u'A' && c <= u'Z') || (c >= u'0' && c <= u'9')) Reject();
    }

    // The same signal's key as this installation reads it.
    std::string OwnForm(const SignalClass& signalClass, TextView sWord) const {
        const std::optional<Text> sStandard = StandardKey(sWord);
        if (!sStandard) {  // the bare number of a standard installation
            return Utf8(Text(signalClass.sCustomerPrefix).append(sWord));
        }
        const TextView sNumber = TextView(*sStandard).substr(signalClass.sPrefix.size());
        for (const TextView sPrefix :
             {m_forms.IsCustomer() ? signalClass.sCustomerPrefix : signalClass.sPrefix,
              TextView()}) {
            const Text sOwn = Text(sPrefix).append(sNumber);
            if (m_forms.Find(sOwn)) return Utf8(sOwn);
        }
        return "fewer digits";
    }

    void AddOtherForm(const FirstWord& word, const SignalClass& signalClass) {
        const bool bOwnLongForm = !m_forms.IsCustomer() && ClassOfKey(word.sWord);
        AddAt(word.nPlace, bOwnLongForm ? Rule::TextParamNotRead : Rule::TextOtherForm,
              {Shown(word.sWord), OwnForm(signalClass, word.sWord)});
    }

    // A word that would be a key in another case, or up to its last digit.
    bool AddNearKey(const FirstWord& word) {
        for (const SignalClass& signalClass : SignalClasses()) {
            for (const TextView sPrefix : {signalClass.sPrefix, signalClass.sCustomerPrefix}) {
                if (const Text sKey = KeyInCase(word.sWord, sPrefix); IsKey(sKey)) {
                    AddAt(word.nPlace, Rule::TextKeyCase, {Shown(word.sWord), Utf8(sKey)});
                    return true;
                }
                if (const Text sKey = KeyUpToDigits(word.sWord, sPrefix); IsKey(sKey)) {
                    AddAt(word.nPlace + sKey.size(), Rule::TextKeyRunOn,
                          {Shown(word.sWord), Utf8(sKey)});
                    return true;
                }
            }
        }
        return false;
    }

    bool IsKey(const Text& sKey) const { return !sKey.empty() && m_forms.Find(sKey); }

    // Both are empty for a word that doesn't begin so.
    static Text KeyInCase(TextView sWord, TextView sPrefix) {
        if (!EqualNoCase(sWord.substr(0, sPrefix.size()), sPrefix)) return {};
        return Text(sPrefix).append(sWord.substr(sPrefix.size()));
    }
    static Text KeyUpToDigits(TextView sWord, TextView sPrefix) {
        if (!sWord.starts_with(sPrefix)) return {};
        std::size_t nEnd = sPrefix.size();
        while (nEnd < sWord.size() && sWord[nEnd] >= u'0' && sWord[nEnd] <= u'9')
            ++nEnd;
        return Text(sWord.substr(0, nEnd));
    }

    const TextSource& m_source;
    Findings& m_findings;
    const KeyForms m_forms;
    Place m_place{};
    Text m_sLine;
    std::map<std::pair<Text, Text>, std::pair<std::int64_t, Text>> m_lines;  // by module and key
    bool m_bLfOnly = false;
    bool m_bStopped = false;
    bool m_bWipeStopped = false;
    bool m_bSeenByWipe = false;
    bool m_bWipesSignals = false;
    bool m_bWipesWelding = false;
    bool m_bSignalStored = false;
};

}  // namespace

std::string DigitSentence(const SignalClass& signalClass) {
    return fmt::format("{}s have {}", Utf8(signalClass.sName),
                       kDigitWords.at(static_cast<std::size_t>(signalClass.nMaxDigits)));
}

void CheckTextFileLines(const std::filesystem::path& file, const TextSource& source,
                        Findings& findings) {
    TextFileCheck(source, findings).Run(CorePath(file));
}

}  // namespace nomira::companion
