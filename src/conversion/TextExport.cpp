#include "conversion/TextExport.h"

#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "conversion/KeyScheme.h"
#include "conversion/PassObserver.h"
#include "conversion/TextImport.h"
#include "database/OpenRecordset.h"
#include "database/adoModul.h"
#include "frame/Progress.h"
#include "frame/Settings.h"
#include "langtools/BasicText.h"
#include "langtools/CParser.h"
#include "langtools/Matches.h"
#include "langtools/ProgramState.h"
#include "langtools/RuntimeError.h"
#include "platform/Platform.h"

namespace nomira {

Text g_sLastExport;

namespace {

constexpr TextView kLineEnd = u"\r\n";

// ---- The sort buffers ----

// Rows in ascending order of text. Those of one buffer share prefix and digit count, so that this
// is the order of their numbers, and no number is ever parsed. The rows stand one behind the other
// in one text, each with its line end: there are tens of thousands.
class SortBuffer {
  public:
    void Add(TextView sKey, TextView sText) {
        const std::size_t nFrom = m_sRows.size();
        m_sRows.append(sKey).append(u" ").append(sText);
        m_places.push_back({nFrom, m_sRows.size() - nFrom});
        m_sRows.append(kLineEnd);
    }
    void Clear() {
        m_sRows.clear();
        m_places.clear();
    }
    // The database often gives them in this order already.
    void Sort() {
        const auto before = [this](const Place& left, const Place& right) {
            return RowAt(left) < RowAt(right);
        };
        if (!std::is_sorted(m_places.begin(), m_places.end(), before))
            std::stable_sort(m_places.begin(), m_places.end(), before);
    }
    std::size_t Count() const { return m_places.size(); }
    TextView Row(std::size_t nIndex) const { return RowAt(m_places[nIndex]); }
    TextView RowWithEnd(std::size_t nIndex) const {
        const Place& place = m_places[nIndex];
        return TextView(m_sRows).substr(place.nFrom, place.nLength + kLineEnd.size());
    }

  private:
    struct Place {
        std::size_t nFrom;
        std::size_t nLength;
    };

    TextView RowAt(const Place& place) const {
        return TextView(m_sRows).substr(place.nFrom, place.nLength);
    }

    Text m_sRows;
    std::vector<Place> m_places;
};

// For keys of one, two, three and four digits. They outlive a read: one that fails leaves its rows
// here, and they go out with the next class.
SortBuffer adoList1;
SortBuffer adoList2;
SortBuffer adoList3;
SortBuffer adoList4;

constexpr std::array<SortBuffer*, kMaxExportDigits> kBuffers{&adoList1, &adoList2, &adoList3,
                                                             &adoList4};

void ClearBuffers() {
    for (SortBuffer* buffer : kBuffers) {
        buffer->Clear();
        if (buffer != kBuffers.back()) AdvanceProgress();
    }
}

const OnProgramReset g_reset{[] {
    g_sLastExport.clear();
    for (SortBuffer* buffer : kBuffers)
        buffer->Clear();
}};

// ---- The read of one class ----

// The value's text, made a Text if it is none yet; empty for a Null.
TextView FieldText(FieldValue& value) {
    if (IsNull(value)) return {};
    if (!std::holds_alternative<Text>(value)) value = ToText(std::move(value));
    return std::get<Text>(value);
}

// Distributes the rows of one class over the buffers.
class RowSorter {
  public:
    explicit RowSorter(TextView sPrefix) {
        Text sPattern(sPrefix);
        for (Text& sOfBuffer : m_patterns)
            sOfBuffer = sPattern += u'#';
    }

    void Take(const OpenRecordset& read) const {
        FieldValue text = read->Field(u"String");
        FieldValue key = read->Field(u"KeyString");
        const bool bNull = IsNull(text) || IsNull(key);
        const TextView sText = FieldText(text);
        const TextView sKey = FieldText(key);
        SortBuffer* buffer = bNull || Matches(sText, kEmptyMarker) ? nullptr : BufferFor(sKey);
        if (!buffer) {
            ThePassObserver().RowLeftOut(sKey, sText);
            return;
        }
        buffer->Add(sKey, sText);
        ThePassObserver().RowExported(sKey, sText);
    }

  private:
    // nullptr for a key that is none of the class, or has more digits than the buffers are for.
    // Each character of these patterns stands for one, so that at most one has the key's length.
    SortBuffer* BufferFor(TextView sKey) const {
        const auto found =
            std::find_if(m_patterns.begin(), m_patterns.end(), [sKey](const Text& sPattern) {
                return sKey.size() == sPattern.size() && Matches(sKey, sPattern);
            });
        return found == m_patterns.end()
                   ? nullptr
                   : kBuffers[static_cast<std::size_t>(found - m_patterns.begin())];
    }

    std::array<Text, kMaxExportDigits> m_patterns;
};

void FillBuffers(const OpenRecordset& read, TextView sPrefix) {
    if (read->Bof() && read->Eof()) return;
    const RowSorter sorter(sPrefix);
    for (read->MoveFirst(); !read->Eof(); read->MoveNext()) {
        sorter.Take(read);
        AdvanceProgress();
    }
}

// Appends the buffers' rows to the result row by row: what stands in it counts even if a later
// step fails. The count is asked anew each time, for the progress call lets events through.
void AppendRows(Text& sResult, TextView sPrefix, TextView sCustomerPrefix) {
    const bool bCustomer = IsCustomerVw();
    for (SortBuffer* buffer : kBuffers) {
        buffer->Sort();
        for (std::size_t n = 0; n < buffer->Count(); ++n) {
            if (bCustomer)
                sResult.append(SwapKeyPrefix(buffer->Row(n), sPrefix, sCustomerPrefix))
                    .append(kLineEnd);
            else
                sResult += buffer->RowWithEnd(n);
            if (n % 2 == 0) AdvanceProgress();
        }
    }
}

// What ReadClassRows gives, appended.
void AppendClassRows(Text& sResult, TextView sModule, TextView sPrefix, TextView sCustomerPrefix) {
    std::optional<OpenRecordset> read;
    try {
        OpenDatabase(kLongTextDatabase);
        read.emplace(ExportReadStatement(sModule, sPrefix), g_Connection.get(), CursorKind::Static,
                     LockKind::ReadOnly);
        FillBuffers(*read, sPrefix);
        AppendRows(sResult, sPrefix, sCustomerPrefix);
        ClearBuffers();
        (*read)->Close();
    } catch (const RuntimeError&) {
        // The result is what it holds now, and the buffers keep what they hold.
    }
    CloseDatabase();
}

// In characters: more than the largest set of keys takes with texts of a usual length, so that the
// dump doesn't move while it grows. Room that isn't used costs nothing.
constexpr std::size_t kDumpRoom = std::size_t{4} * 1024 * 1024;

// ---- The file ----

// A file that has any attribute but that of an archived one loses them, so that it can be written
// over. One that is missing, or won't have it, is for the open to find out.
void MakeWritable(TextView sFile) {
    try {
        if (TheFiles().GetAttr(sFile) != AttributeArchive)
            TheFiles().SetAttr(sFile, AttributeArchive);
    } catch (const RuntimeError&) {
    }
}

// nullptr if the file can't be opened.
std::unique_ptr<OutputFile> OpenTarget(TextView sFile) {
    try {
        return TheFiles().OpenForOutput(sFile);
    } catch (const RuntimeError&) {
        return nullptr;
    }
}

// ---- Edited text ----

// The level of a line tells how its key is cut off. Above 0, the key holds a "_" and the level is
// the count of digits behind it. Below 0, the key ends in "Text" and digits, as many as the level
// says, and at the blank.
struct EditLevel {
    TextView sPattern;
    int nLevel;
};

// The first that matches counts, so that more digits come before fewer.
constexpr std::array<EditLevel, 30> kEditLevels{{
    {u"OUT_####*", 4},
    {u"IN_####*", 4},
    {u"OUT_###*", 3},
    {u"IN_###*", 3},
    {u"ZTQXProcParam_###*", 3},
    {u"OUT_##*", 2},
    {u"IN_##*", 2},
    {u"ANIN_##*", 2},
    {u"ANOUT_##*", 2},
    {u"BININ_##*", 2},
    {u"BINOUT_##*", 2},
    {u"ZTQXProcParam_##*", 2},
    {u"OUT_#*", 1},
    {u"IN_#*", 1},
    {u"ANIN_#*", 1},
    {u"ANOUT_#*", 1},
    {u"BININ_#*", 1},
    {u"BINOUT_#*", 1},
    {u"ZTQXProcParam_#*", 1},
    {u"FlagText#### *", -4},
    {u"FlagText### *", -3},
    {u"NoticeText### *", -3},
    {u"CounterText## *", -2},
    {u"NoticeText## *", -2},
    {u"TimerText## *", -2},
    {u"FlagText## *", -2},
    {u"CounterText# *", -1},
    {u"NoticeText# *", -1},
    {u"TimerText# *", -1},
    {u"FlagText# *", -1},
}};

// 0 if the line is none of them.
int LevelOf(TextView sLine) {
    const auto found =
        std::find_if(kEditLevels.begin(), kEditLevels.end(),
                     [sLine](const EditLevel& level) { return Matches(sLine, level.sPattern); });
    return found == kEditLevels.end() ? 0 : found->nLevel;
}

// Stores the row whose key is the first `nKeyLength` characters of the line.
void StoreRow(TextView sLine, std::int32_t nKeyLength, TextView sModule) {
    StoreLongText(Trim(Mid(sLine, nKeyLength + 1)), sModule, Left(sLine, nKeyLength));
}

void StoreNumberedRow(TextView sLine, int nLevel) {
    const std::int32_t nKeyLength = InStr(Trim(sLine), u"_") + nLevel;
    const bool bProcParam = InStr(Left(sLine, nKeyLength), u"ZTQXProcParam_") > 0;
    StoreRow(sLine, nKeyLength, bProcParam ? u"ZTQXProcParam" : u"IO");
}

// The module is the key less its digits and less "Text".
void StoreTextRow(TextView sLine, int nLevel) {
    constexpr int kSuffixLength = 4;
    const std::int32_t nKeyLength = InStr(Trim(sLine), u" ") - 1;
    StoreRow(sLine, nKeyLength, Left(sLine, nKeyLength + nLevel - kSuffixLength));
}

// A welding row may have blanks ahead of it, which were tabs: it is looked at trimmed.
void StoreWeldingRow(TextView sLine) {
    constexpr std::array<TextView, 3> kRows{u"Start1# *", u"Weld1# *", u"CraterChannel1# *"};
    const TextView sRow = Trim(sLine);
    const bool bWelding = std::any_of(
        kRows.begin(), kRows.end(), [sRow](TextView sPattern) { return Matches(sRow, sPattern); });
    if (bWelding) StoreRow(sRow, InStr(sRow, u" ") - 1, u"A10TP");
}

void StoreEditedLine(TextView sLine) {
    const int nLevel = LevelOf(sLine);
    if (nLevel > 0) StoreNumberedRow(sLine, nLevel);
    if (nLevel < 0) StoreTextRow(sLine, nLevel);
    StoreWeldingRow(sLine);
}

void StoreEditedLines(TextView sText) {
    g_Parser().Parse(sText, kLineEnd, u" ");
    const std::int16_t nLines = g_Parser().count();
    for (std::int32_t n = 1; n <= nLines; ++n) {
        Text sLine(Trim(g_Parser().Token(static_cast<std::int16_t>(n))));
        StoreEditedLine(NormalizeUmlauts(sLine));
        AdvanceProgress();
    }
}

void DeleteAllClasses() {
    for (const SignalClass& signalClass : SignalClasses()) {
        DeleteItemsByPrefix(signalClass.sPrefix, signalClass.sModule, signalClass.Size());
        if (!signalClass.bWelding) AdvanceProgress();
    }
}

// The line with its customer key in standard form; unchanged if it has none. No two customer
// prefixes fit the same line, for a digit follows each.
Text LineToStandard(TextView sLine) {
    for (const SignalClass& signalClass : SignalClasses()) {
        if (signalClass.bWelding) continue;
        Text sSwapped = SwapKeyPrefix(sLine, signalClass.sCustomerPrefix, signalClass.sPrefix);
        if (sSwapped != sLine) return sSwapped;
    }
    return Text(sLine);
}

}  // namespace

void DbIntoText(TextView sFile) {
    const Text& sText = BuildLongTextDump();
    if (sText.empty()) return;
    MakeWritable(sFile);
    const std::unique_ptr<OutputFile> file = OpenTarget(sFile);
    if (!file) return;
    file->PrintLine(sText);
    file->Close();
}

const Text& BuildLongTextDump() {
    Text sDump;
    sDump.reserve(kDumpRoom);
    for (const SignalClass& signalClass : SignalClasses())
        AppendClassRows(sDump, signalClass.sModule, signalClass.sPrefix,
                        signalClass.sCustomerPrefix);
    g_sLastExport = std::move(sDump);
    return g_sLastExport;
}

Text ReadClassRows(TextView sModule, TextView sPrefix, std::int16_t /*nSize*/,
                   TextView sCustomerPrefix) {
    Text sResult;
    AppendClassRows(sResult, sModule, sPrefix, sCustomerPrefix);
    return sResult;
}

void ApplyEditedText(Text& sText) {
    if (sText == g_sLastExport) return;
    OpenDatabase(kLongTextDatabase);
    DeleteAllClasses();
    if (IsCustomerVw()) sText = CustomerTextToStandard(sText);
    StoreEditedLines(sText);
    CloseDatabase();
    NotifyDatabaseChanged();
    g_sLastExport = sText;
}

Text CustomerTextToStandard(TextView sText) {
    Text sResult;
    g_Parser().Parse(sText, kLineEnd, u" ");
    const std::int16_t nLines = g_Parser().count();
    for (std::int32_t n = 1; n <= nLines; ++n) {
        sResult += LineToStandard(Trim(g_Parser().Token(static_cast<std::int16_t>(n))));
        sResult += kLineEnd;
    }
    return sResult;
}

}  // namespace nomira
