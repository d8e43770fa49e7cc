#include "apps/nomiractl/DatabaseCheck.h"

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <utility>

#include "apps/nomiractl/NameCheck.h"
#include "apps/nomiractl/TextFileCheck.h"
#include "apps/nomiractl/Words.h"
#include "conversion/KeyForms.h"
#include "conversion/PassObserver.h"
#include "conversion/TextExport.h"
#include "conversion/TextImport.h"
#include "langtools/BasicText.h"
#include "langtools/CodePage.h"
#include "langtools/Matches.h"
#include "langtools/RuntimeError.h"

namespace nomira::companion {
namespace {

constexpr TextView kLineEnds = u"\r\n";

// A row as the export took it.
struct ExportedRow {
    Text sKey;
    Text sText;
};

// Collects what the export takes while it lives.
class RowWatch : public PassObserver {
  public:
    RowWatch() { SetPassObserver(this); }
    ~RowWatch() override { SetPassObserver(nullptr); }
    RowWatch(const RowWatch&) = delete;
    RowWatch& operator=(const RowWatch&) = delete;

    void RowExported(TextView sKey, TextView sText) override {
        m_rows.push_back({Text(sKey), Text(sText)});
    }
    const std::vector<ExportedRow>& Rows() const { return m_rows; }

  private:
    std::vector<ExportedRow> m_rows;
};

// The texts that an import would make of the export, by the key in standard form.
using ReadBack = std::map<Text, Text>;

// A line too long for the import ends it; what that means is told line by line all the same.
void TakeBack(const KeyForms& forms, TextView sLine, ReadBack& back) {
    g_sLine = sLine;
    try {
        if (TakeTextLine(forms)) back[g_vSymbol] = g_vLongName;
    } catch (const RuntimeError&) {
    }
}

ReadBack ReadDump(const KeyForms& forms, TextView sDump) {
    ReadBack back;
    while (!sDump.empty()) {
        const std::size_t nEnd = std::min(sDump.find(kLineEnds), sDump.size());
        TakeBack(forms, sDump.substr(0, nEnd), back);
        sDump.remove_prefix(std::min(nEnd + kLineEnds.size(), sDump.size()));
    }
    return back;
}

class DatabaseCheck {
  public:
    explicit DatabaseCheck(Findings& findings) : m_findings(findings) {}

    void CheckItems(const std::vector<Item>& items) {
        std::map<std::pair<Text, Text>, int> counts;
        for (const Item& item : items) {
            if (++counts[{item.sModule, item.sKey}] == 1) continue;
            if (counts[{item.sModule, item.sKey}] == 2) m_twice.push_back(&item);
        }
        for (const Item* item : m_twice)
            Add(Rule::DatabaseDuplicateKey, item->sKey,
                {std::to_string(counts[{item->sModule, item->sKey}]), Shown(item->sModule)});
        for (const Item& item : items)
            CheckItem(item);
    }

    void CheckRoundTrip(const std::vector<ExportedRow>& rows, TextView sDump) {
        const KeyForms forms;
        const ReadBack back = ReadDump(forms, sDump);
        for (const ExportedRow& row : rows) {
            if (row.sText.find(u'\r') != Text::npos) {
                Add(Rule::DatabaseLineEnd, row.sKey);
                continue;
            }
            const auto found = back.find(row.sKey);
            if (found == back.end())
                Add(Rule::DatabaseNotReadBack, row.sKey, {WhyNotReadBack(forms, row.sKey)});
            else if (row.sText.empty())
                Add(Rule::DatabaseEmptyText, row.sKey,
                    {found->second.empty() ? "an empty text" : Shown(found->second)});
            else if (found->second != row.sText)
                Add(Rule::DatabaseReadBackChanged, row.sKey, {Shown(found->second)});
        }
    }

  private:
    void Add(Rule rule, const Text& sKey, std::vector<std::string> words = {}) {
        words.insert(words.begin(), Shown(sKey));
        m_findings.Add(rule, {}, sKey, words);
    }

    void CheckItem(const Item& item) {
        CheckKey(item);
        if (item.texts.empty()) return Add(Rule::DatabaseNoMessage, item.sKey);
        if (item.texts.size() > 1)
            Add(Rule::DatabaseTwoMessages, item.sKey, {std::to_string(item.texts.size())});
        for (const std::optional<Text>& sText : item.texts)
            CheckText(item.sKey, sText);
    }

    void CheckKey(const Item& item) {
        if (ClassRow(item.sModule, item.sKey) != kOtherKeys) return;
        const bool bNumber =
            !item.sKey.empty() && item.sKey.find_first_not_of(u"0123456789") == Text::npos;
        const SignalClass& params = SignalClasses()[kPlainClassCount - 1];
        if (bNumber && item.sModule == params.sModule)
            return Add(Rule::DatabaseBareNumber, item.sKey);
        Add(Rule::DatabaseNoClass, item.sKey, {Shown(item.sModule)});
        for (const SignalClass& signalClass : SignalClasses())
            CheckWiped(item.sKey, signalClass);
    }

    // Keys that the delete of a class takes along.
    void CheckWiped(const Text& sKey, const SignalClass& signalClass) {
        if (sKey.starts_with(signalClass.sPrefix)) return;
        const Text sPattern = Replace(signalClass.sPrefix, u"_", u"?") + u"*";
        if (Matches(sKey, sPattern))
            Add(Rule::DatabaseWipedByChance, sKey, {Utf8(signalClass.sName) + "s"});
    }

    void CheckText(const Text& sKey, const std::optional<Text>& sText) {
        if (!sText) return Add(Rule::DatabaseNullText, sKey);
        if (*sText == kEmptyMarker) return Add(Rule::DatabaseEmptyMarker, sKey);
        if (*sText == sKey) Add(Rule::DatabaseIsKey, sKey);
        const CodePage& page = SystemCodePage();
        const auto lost = std::find_if(sText->begin(), sText->end(),
                                       [&page](char16_t c) { return !page.Holds(c); });
        if (lost != sText->end())
            Add(Rule::DatabaseNoCharacter, sKey,
                {Utf8(TextView(&*lost, 1)), std::to_string(page.Number())});
        CheckFlaws(sKey, *sText);
    }

    void CheckFlaws(const Text& sKey, const Text& sText) {
        constexpr std::array kRules{Rule::DatabaseRefusedSign, Rule::DatabaseApostrophe,
                                    Rule::DatabaseOpenBracket, Rule::DatabaseWildcard,
                                    Rule::DatabaseState};
        for (const NameFinding& flaw : FlawsOf(sText))
            Add(kRules.at(static_cast<std::size_t>(flaw.flaw)), sKey, {flaw.sSign});
    }

    static std::string WhyNotReadBack(const KeyForms& forms, const Text& sKey) {
        const SignalClass& signalClass = *ClassOfKey(sKey);
        const Text sWord = forms.IsCustomer() ? SwapKeyPrefix(sKey, signalClass.sPrefix,
                                                              signalClass.sCustomerPrefix)
                                              : sKey;
        switch (ReasonPassedOver(sWord, forms.IsCustomer())) {
            case PassedOver::TooManyDigits:
                return DigitSentence(signalClass);
            case PassedOver::OtherForm:
                return "process parameters in standard form are not read back on this installation";
            default:
                return "the row is too long";
        }
    }

    Findings& m_findings;
    std::vector<const Item*> m_twice;
};

}  // namespace

void CheckNames(DatabaseWork& database, Findings& findings) {
    DatabaseCheck check(findings);
    for (const Text& sDamage : database.FindDamage())
        findings.Add(Rule::DatabaseDamaged, {}, {}, {Shown(sDamage)});
    check.CheckItems(database.ReadItems());
    const RowWatch watch;
    const Text& sDump = BuildLongTextDump();
    database.RequireNoFailure();
    check.CheckRoundTrip(watch.Rows(), sDump);
}

}  // namespace nomira::companion
