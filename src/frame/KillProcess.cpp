#include "frame/KillProcess.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "langtools/BasicText.h"
#include "langtools/CodePage.h"
#include "langtools/RuntimeError.h"
#include "platform/Platform.h"

namespace nomira {
namespace {

// Titles of the main window, in the order in which they are tried: the desktop form's, then the
// one that the application goes by.
constexpr TextView kMainWindowTitles[] = {u"Longname - Conversion", kApplicationTitle};

constexpr std::int16_t kEnglish = 9;
constexpr std::int64_t kRedecodeLimit = 256;  // characters of the conversion's buffer
constexpr char16_t kNul = u'\0';

TextView CutAtNul(TextView sText) {
    return sText.substr(0, sText.find(kNul));
}

// Whether the searched name occurs in a file name. The empty one occurs in every file name that
// could be read, and in no empty one.
bool Occurs(TextView sName, TextView sFileName) {
    return InStr(UCase(sFileName), UCase(sName)) > 0;
}

// What stands behind the last "\" of the process's path; empty if it can't be read.
Text FileNameOfProcess(std::uint32_t nProcessId) {
    const Text sModule = TheProcesses().ModuleFileName(nProcessId).value_or(Text());
    const Text sPath(Trim(Replace(sModule, TextView(&kNul, 1), u"")));
    return GetField(sPath, u"\\", 0, 0, CountFields(sPath, u"\\") - 1);
}

}  // namespace

bool IsProcessRunning(TextView sName) {
    return GetPlatformId() == Processes::kPlatform9x ? IsProcessRunning9x(sName)
                                                     : IsProcessRunningNt(sName);
}

bool IsProcessRunningNt(TextView sName) {
    const auto ids = TheProcesses().EnumProcesses();
    return std::any_of(ids.begin(), ids.end(), [&](std::uint32_t nProcessId) {
        return Occurs(sName, FileNameOfProcess(nProcessId));
    });
}

bool IsProcessRunning9x(TextView sName) {
    const auto names = TheProcesses().SnapshotNames();
    return names && std::any_of(names->begin(), names->end(),
                                [&](TextView sFileName) { return Occurs(sName, sFileName); });
}

std::int32_t GetPlatformId() {
    return TheProcesses().PlatformId();
}

std::int16_t GetDefaultLanguageId() {
    try {
        return static_cast<std::int16_t>(TheLocale().UserDefaultLangId() & 0xFF);
    } catch (const RuntimeError&) {
        return kEnglish;
    }
}

Text GetLocaleCodePage(std::int32_t nLocale) {
    const auto sPage = TheLocale().DefaultAnsiCodePage(nLocale);
    return sPage && !sPage->empty() ? Text(CutAtNul(*sPage)) : Text(u"1252");
}

Text RedecodeText(std::int32_t nCodePage, TextView sText) {
    const std::string bytes = SystemCodePage().Encode(CutAtNul(sText));
    const Text sRead = TheLocale().Decode(nCodePage, bytes);
    // A longer text fills the system's buffer and is lost behind its end.
    return Text(CutAtNul(Left(sRead, kRedecodeLimit)));
}

std::int16_t CountFields(TextView sText, TextView sDelimiter) {
    if (sText.empty()) return 0;
    const Text sClosed = Text(sText).append(sDelimiter);
    TextView sRest = sClosed;
    std::int64_t nCount = 0;
    while (const std::int32_t nPos = InStr(sRest, sDelimiter)) {
        ++nCount;
        // One character on, however long the delimiter is.
        sRest = Mid(sRest, std::int64_t{nPos} + 1);
    }
    return ToInt16(nCount);
}

Text GetField(TextView sText, TextView sDelimiter, std::int32_t nRow, std::int32_t nWidth,
              std::int32_t nColumn) {
    const Text sClosed = Text(sText).append(sDelimiter);
    TextView sRest = sClosed;
    const std::int64_t nField = nWidth == 0 ? nColumn : std::int64_t{nRow} * nWidth + nColumn;
    for (std::int64_t i = 0; i < nField && !sRest.empty(); ++i) {
        const std::int32_t nPos = InStr(sRest, sDelimiter);
        sRest = nPos == 0 ? TextView() : sRest.substr(std::size_t(nPos) - 1 + sDelimiter.size());
    }
    const std::int32_t nEnd = InStr(sRest, sDelimiter);
    return nEnd == 0 ? Text() : Text(Left(sRest, nEnd - 1));
}

void BringMainWindowToTop() {
    for (const TextView sTitle : kMainWindowTitles) {
        const auto window = TheDesktop().FindWindow(sTitle);
        if (!window) continue;
        TheDesktop().BringWindowToTop(*window);
        return;
    }
}

}  // namespace nomira
