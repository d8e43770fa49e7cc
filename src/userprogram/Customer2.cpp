#include "userprogram/Customer2.h"

#include <algorithm>

#include "database/adoModul.h"
#include "frame/ProgramVariables.h"
#include "frame/Progress.h"
#include "langtools/BasicText.h"
#include "langtools/ProgramState.h"
#include "platform/Platform.h"
#include "ui/formlayer/FormLayer.h"
#include "userprogram/HarvestLine.h"

namespace nomira {

HarvestLists m_colLongText;
HarvestLists m_colShortName;
HarvestLists m_colKey;

namespace {

// What one line tells of a signal.
struct Assignment {
    Text sName;
    Text sSymbol;
    Text sLong;
};

void ClearLists() {
    for (HarvestLists* lists : {&m_colLongText, &m_colShortName, &m_colKey}) {
        for (KeyedTexts& list : *lists)
            list.Clear();
    }
}

const OnProgramReset g_reset(ClearLists);

bool SymbolBoxChecked() {
    const auto* box = FindControl<CheckBox>(u"StdBofForm", u"chkBoxSymbol");
    return box && box->Value() == CheckBox::kChecked;
}

Text WithoutSymbol(const Text& sLong) {
    const std::int32_t nSemicolon = InStr(sLong, u";");
    return nSemicolon == 0 ? sLong : Text(Trim(Mid(sLong, nSemicolon + 1)));
}

// The parts build on each other: cutting the name changes the line for the two cuts behind it.
Assignment TakeApart(Text& sLine) {
    Assignment assignment;
    assignment.sName = CutSignalName(sLine);
    assignment.sSymbol = CutSymbol(sLine);
    assignment.sLong = CutLongText(sLine);
    if (!SymbolBoxChecked()) assignment.sLong = WithoutSymbol(assignment.sLong);
    return assignment;
}

// A key that is there already leaves the lists as they were: the first line of a signal wins.
void KeepSignal(const Assignment& assignment) {
    const TextView sClass = ClassifySignal(assignment.sName);
    const auto& classes = HarvestClasses();
    const auto found = std::ranges::find(classes, sClass, &HarvestClass::sClass);
    if (found == classes.end()) return;
    const auto n = static_cast<std::size_t>(found - classes.begin());
    const Text sKey = Text(found->sKeyPrefix).append(DecimalText(SignalNumber(assignment.sName)));
    m_colLongText[n].Add(assignment.sLong, sKey);
    m_colShortName[n].Add(assignment.sName, sKey);
    m_colKey[n].Add(sKey, sKey);
}

void HarvestOneLine(TextView sRead) {
    Text sLine = RewriteLine(sRead);
    if (!IsSignalLine(sLine)) return;
    const Assignment assignment = TakeApart(sLine);
    if (assignment.sName.empty()) return;
    if (assignment.sSymbol.empty() && assignment.sLong.empty()) return;
    KeepSignal(assignment);
}

// The same box asks "add to the old texts?" on the pendant and "overwrite them?" on the desktop.
bool WipeWanted(const Form& form) {
    const std::int16_t nValue = form.Get<CheckBox>(u"chkBoxAdd").Value();
    return nValue == (g_bPendantMode ? CheckBox::kCleared : CheckBox::kChecked);
}

void WipeClasses() {
    for (const HarvestWipe& wipe : HarvestWipes())
        DeleteItemsByPrefix(wipe.sKeyPrefix, wipe.sModule, *wipe.pSize);
}

void StoreClass(std::size_t nClass) {
    for (std::size_t n = 0; n < m_colKey[nClass].Count(); ++n) {
        StoreLongText(m_colLongText[nClass].Item(n), HarvestClasses()[nClass].sModule,
                      m_colKey[nClass].Item(n));
        AdvanceProgress();
    }
}

}  // namespace

bool KeyedTexts::Add(TextView sItem, TextView sKey) {
    if (!m_keys.insert(Text(sKey)).second) return false;
    m_items.emplace_back(sItem);
    return true;
}

void KeyedTexts::Clear() {
    m_items.clear();
    m_keys.clear();
}

const std::array<HarvestClass, kHarvestClassCount>& HarvestClasses() {
    static constexpr std::array<HarvestClass, kHarvestClassCount> kClasses{{
        {u"E", u"IO", u"IN_"},
        {u"A", u"IO", u"OUT_"},
        {u"ANAE", u"IO", u"ANIN_"},
        {u"ANAA", u"IO", u"ANOUT_"},
        {u"BINE", u"IO", u"BININ_"},
        {u"BINA", u"IO", u"BINOUT_"},
        {u"P", u"ZTQXProcParam", u"ZTQXProcParam_"},
    }};
    return kClasses;
}

const std::array<HarvestWipe, kHarvestWipeCount>& HarvestWipes() {
    // The sizes of the two analogue classes are meant to stand the other way round here, those of
    // the binary ones not. It never shows, for the delete looks at the key alone.
    static constexpr std::array<HarvestWipe, kHarvestWipeCount> kWipes{{
        {u"IN_", u"IO", &g_nNumIo},
        {u"OUT_", u"IO", &g_nNumIo},
        {u"ANIN_", u"IO", &g_nNumAnOut},
        {u"ANOUT_", u"IO", &g_nNumAnIn},
        {u"BININ_", u"IO", &g_nNumBinIn},
        {u"BINOUT_", u"IO", &g_nNumBinOut},
        {u"NoticeText", u"Notice", &g_nNumNotice},
        {u"CounterText", u"Counter", &g_nNumCounter},
        {u"FlagText", u"Flag", &g_nNumFlag},
        {u"TimerText", u"Timer", &g_nNumTimer},
        {u"ZTQXProcParam_", u"ZTQXProcParam", &g_nNumProcParam},
    }};
    return kWipes;
}

bool HarvestFile(TextView sPath) {
    if (sPath.empty()) return false;
    ClearLists();
    const auto file = TheFiles().OpenForInput(sPath);
    for (Text sLine; !file->AtEnd();) {
        file->ReadLine(sLine);
        HarvestOneLine(sLine);
    }
    return std::ranges::any_of(m_colKey, [](const KeyedTexts& list) { return list.Count() > 0; });
}

void WriteHarvest(const Form& form) {
    OpenDatabase(kLongTextDatabase);
    if (WipeWanted(form)) WipeClasses();
    for (std::size_t n = 0; n < kHarvestClassCount; ++n)
        StoreClass(n);
    CloseDatabase();
    NotifyDatabaseChanged();
}

}  // namespace nomira
