#include "conversion/TextImport.h"

#include <array>
#include <cstdint>
#include <memory>

#include "conversion/KeyForms.h"
#include "conversion/KeyScheme.h"
#include "conversion/PassObserver.h"
#include "database/adoModul.h"
#include "frame/Progress.h"
#include "langtools/BasicText.h"
#include "langtools/CParser.h"
#include "langtools/CTools.h"
#include "langtools/ProgramState.h"
#include "langtools/RuntimeError.h"
#include "platform/Platform.h"
#include "ui/formlayer/FormLayer.h"

namespace nomira {

thread_local Text g_sLine;
thread_local Text g_vSymbol;
thread_local Text g_vLongName;

namespace {

const OnProgramReset g_reset{[] {
    g_sLine.clear();
    g_vSymbol.clear();
    g_vLongName.clear();
}};

// nullptr if the file can't be opened.
std::unique_ptr<InputFile> OpenTextFile(TextView sFile) {
    try {
        return TheFiles().OpenForInput(sFile);
    } catch (const RuntimeError&) {
        return nullptr;
    }
}

void ShowConverting() {
    if (auto* label = FindControl<Label>(u"StdForm", u"Information"))
        label->SetCaption(u"converting data");
}

// The first word of g_sLine; empty in a line of blanks.
void TakeSymbol() {
    g_Parser().Parse(Trim(g_sLine), u" ", u" ");
    g_vSymbol = g_Parser().Token(1);
}

// The line isn't trimmed before its key is taken off: with blanks ahead of the key it doesn't
// begin with it, and the key stays in the long text as its first word.
void TakeLongName(bool bWelding) {
    g_vLongName = Trim(g_Tools().RemoveFirstToken(g_sLine, g_vSymbol));
    if (!bWelding && g_vLongName.empty()) g_vLongName = kEmptyMarker;
}

void StoreLine(const KeyForms& forms, std::int64_t nLine) {
    const KeyForm* form = TakeTextLine(forms);
    if (!form) {
        ThePassObserver().LinePassedOver(nLine, g_sLine,
                                         ReasonPassedOver(g_vSymbol, forms.IsCustomer()));
        return;
    }
    const bool bStored = StoreLongText(g_vLongName, form->pClass->sModule, g_vSymbol);
    ThePassObserver().LineStored(nLine, g_vSymbol, form->pClass->sModule, g_vLongName, bStored);
}

// Wipes a set of classes at the first key that asks for it, and never again.
class Wipe {
  public:
    void ForKey(const KeyForm& form) {
        if (form.pClass->bWelding)
            Once(m_bWeldingDone, WipeWeldingChannels);
        else if (form.bReasonToWipe)
            Once(m_bSignalsDone, WipeSignals);
    }

  private:
    static void Once(bool& bDone, void (*wipe)()) {
        if (bDone) return;
        bDone = true;
        wipe();
    }
    static void Delete(const SignalClass& signalClass) {
        DeleteItemsByPrefix(signalClass.sPrefix, signalClass.sModule, signalClass.Size());
    }
    static void WipeWeldingChannels() {
        for (const SignalClass& signalClass : SignalClasses())
            if (signalClass.bWelding) Delete(signalClass);
    }
    static void WipeSignals() {
        for (const SignalClass& signalClass : SignalClasses()) {
            if (signalClass.bWelding) continue;
            AdvanceProgress();
            Delete(signalClass);
        }
    }

    bool m_bWeldingDone = false;
    bool m_bSignalsDone = false;
};

struct Spelling {
    TextView sLetter;
    TextView sSpelledOut;
};

constexpr TextView kUmlauts = u"öÖäÄüÜß";
constexpr std::array<Spelling, 7> kSpellings{{
    {u"ö", u"oe"},
    {u"Ö", u"Oe"},
    {u"ä", u"ae"},
    {u"Ä", u"Ae"},
    {u"ü", u"ue"},
    {u"Ü", u"Ue"},
    {u"ß", u"ss"},
}};
constexpr Spelling kTab{u"\t", u"    "};

void SpellOut(Text& sLine, const Spelling& spelling) {
    sLine = g_Tools().ReplaceAllSubStrings(sLine, spelling.sLetter, spelling.sSpelledOut);
}

}  // namespace

void TextIntoDb(TextView sFile) {
    std::unique_ptr<InputFile> file = OpenTextFile(sFile);
    if (!file) return;
    const KeyForms forms;
    OpenDatabase(kLongTextDatabase);
    ShowConverting();
    ThePassObserver().ImportBegins();
    for (std::int64_t nLine = 1; !file->AtEnd(); ++nLine) {
        file->ReadLine(g_sLine);
        StoreLine(forms, nLine);
        AdvanceProgress();
    }
    file.reset();
    CloseDatabase();
    NotifyDatabaseChanged();
}

void ClearDbForTextFile(TextView sFile) {
    const std::unique_ptr<InputFile> file = OpenTextFile(sFile);
    if (!file) return;
    const KeyForms forms;
    OpenDatabase(kLongTextDatabase);
    Wipe wipe;
    while (!file->AtEnd()) {
        file->ReadLine(g_sLine);
        if (const KeyForm* form = TakeWipeKey(forms)) wipe.ForKey(*form);
    }
    CloseDatabase();
    NotifyDatabaseChanged();
}

const KeyForm* TakeTextLine(const KeyForms& forms) {
    NormalizeUmlauts(g_sLine);
    TakeSymbol();
    const KeyForm* form = forms.Find(g_vSymbol);
    if (!form) return nullptr;
    TakeLongName(form->pClass->bWelding);
    g_vSymbol = forms.Stored(*form, g_vSymbol);
    return form;
}

const KeyForm* TakeWipeKey(const KeyForms& forms) {
    TakeSymbol();
    return forms.Find(g_vSymbol);
}

Text& NormalizeUmlauts(Text& sLine) {
    if (g_Tools().FindChrInStr(sLine, kUmlauts))
        for (const Spelling& spelling : kSpellings)
            SpellOut(sLine, spelling);
    if (InStr(sLine, kTab.sLetter) > 0) SpellOut(sLine, kTab);
    return sLine;
}

}  // namespace nomira
