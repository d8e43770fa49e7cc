#include "userprogram/Staging.h"

#include <cstdint>

#include "frame/ProgramVariables.h"
#include "langtools/BasicText.h"
#include "langtools/RuntimeError.h"
#include "link/cVexonComm.h"
#include "platform/Files.h"
#include "platform/Platform.h"
#include "ui/formlayer/StatusBar.h"
#include "userprogram/RewriteUserProgram.h"

namespace nomira {
namespace {

constexpr std::int16_t kProblemPanel = 4;
constexpr TextView picCritical = u"picCritical";

Text WithBackslash(TextView sDirectory) {
    Text sResult(sDirectory);
    if (!sResult.ends_with(u'\\')) sResult += u'\\';
    return sResult;
}

// ---- What a form has selected ----

const FileListBox& File1(const Form& form) {
    return form.Get<FileListBox>(u"File1");
}

const FileListBox& File2(const Form& form) {
    return form.Get<FileListBox>(u"File2");
}

// Empty if nothing is selected.
Text FirstSelectedPath(const FileListBox& list) {
    const std::vector<Text> names = SelectedNames(list);
    return names.empty() ? Text() : PathInList(list, names.front());
}

// The fourth panel, with a problem or, for an empty text, without one.
void ShowProblem(const Form& form, TextView sProblem, const Picture& picture) {
    Panel& panel = form.Get<StatusBar>(u"StatusBar1").Panels(kProblemPanel);
    panel.SetText(sProblem);
    panel.SetPicture(picture);
}

void ShowProblemUnless(bool bFine, const Form& form, TextView sProblem) {
    if (bFine)
        ShowProblem(form, u"", {});
    else
        ShowProblem(form, sProblem, {Text(picCritical)});
}

// ---- Directories ----

// The part up to the first "\"; it and the "\" are gone from the remainder.
TextView CutFirstPart(TextView& sRemainder) {
    const std::int32_t nEnd = InStr(sRemainder, u"\\");
    const TextView sPart = Left(sRemainder, nEnd - 1);
    sRemainder = Mid(sRemainder, nEnd + 1);
    return sPart;
}

}  // namespace

std::vector<Text> SelectedNames(const FileListBox& list) {
    std::vector<Text> names;
    for (std::int16_t n = 0; n < list.ListCount(); ++n)
        if (list.Selected(n)) names.push_back(list.List(n));
    return names;
}

Text PathInList(const FileListBox& list, TextView sName) {
    return WithBackslash(list.Path()).append(sName);
}

bool HasSelectionFile1(const Form& form) {
    return !SelectedNames(File1(form)).empty();
}

bool HasSelectionFile2(const Form& form) {
    return !SelectedNames(File2(form)).empty();
}

Text FirstSelectedFile1(const Form& form) {
    ShowProblemUnless(HasSelectionFile1(form), form, g_sMsgSelectFile);
    return FirstSelectedPath(File1(form));
}

Text FirstSelectedFile2(const Form& form) {
    return FirstSelectedPath(File2(form));
}

std::optional<std::vector<Text>> CollectSelectedFile2(const Form& form) {
    MakeDirectoryPath(TempDir);
    const bool bSelected = HasSelectionFile2(form);
    ShowProblemUnless(bSelected, form, g_sMsgSelectFile);
    return bSelected ? std::optional(SelectedNames(File2(form))) : std::nullopt;
}

bool HasTextFileName(const Form& form) {
    return !form.Get<TextBox>(u"Text1").Text().empty();
}

Text ExportTargetPath(const Form& form) {
    const bool bNamed = HasTextFileName(form);
    ShowProblemUnless(bNamed, form, g_sMsgEnterName);
    if (!bNamed) return {};
    return WithBackslash(form.Get<DirListBox>(u"Dir1").Path()) + form.Get<TextBox>(u"Text1").Text();
}

void MakeDirectoryPath(TextView sPath) {
    const Text sParts = WithBackslash(Mid(sPath, kRootLength + 1));
    TextView sRemainder = sParts;
    Text sSoFar(Left(sPath, kRootLength));
    sSoFar.append(CutFirstPart(sRemainder));
    while (!sSoFar.ends_with(u'\\')) {
        IgnoreFailure([&] { TheFiles().MkDir(sSoFar); });
        sSoFar += u'\\';
        if (!sRemainder.empty()) sSoFar.append(CutFirstPart(sRemainder));
    }
}

// ---- Programs on the controller ----

void StagedRewriteOnController(const Form& form) {
    const auto entries = CollectSelectedFile2(form);
    if (entries && !entries->empty()) RewriteOnController(*entries);
}

void RewriteOnController(const std::vector<Text>& entries) {
    const Text sDirectory = WithBackslash(TempDir);
    for (const Text& sEntry : entries) {
        if (!g_Comm().PutFileFromRobotToDisk(sEntry, TempDir)) continue;
        const Text sPath = sDirectory + sEntry;
        if (RewriteUserProgram(sPath)) g_Comm().PutFileFromDiskToRobot(sPath);
    }
    ClearTempDir();
}

void ClearTempDir() {
    IgnoreFailure([] { TheFiles().Kill(WithBackslash(TempDir) + u"*.src"); });
    IgnoreFailure([] { TheFiles().RmDir(TempDir); });
}

}  // namespace nomira
