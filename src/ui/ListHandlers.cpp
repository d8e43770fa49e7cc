#include "ui/ListHandlers.h"

#include "frame/Settings.h"
#include "ui/FormAccess.h"
#include "ui/formlayer/FileLists.h"

namespace nomira {
namespace {

void SelectEveryEntry(SelectionList& list, bool bSelected) {
    for (std::int16_t n = 0; n < list.ListCount(); ++n)
        list.SetSelected(n, bSelected);
}

}  // namespace

void SelectAll(const Form& form) {
    const std::int16_t nValue = form.Get<CheckBox>(u"chkBoxSelAll").Value();
    if (nValue == CheckBox::kGrey) return;
    for (const TextView sList : {u"File2", u"List1"})
        SelectEveryEntry(form.Get<SelectionList>(sList), nValue == CheckBox::kChecked);
}

void FollowDirectory(const Form& form) {
    auto& textFiles = form.Get<FileListBox>(u"File1");
    auto& programs = form.Get<FileListBox>(u"File2");
    const Text sPath = form.Get<DirListBox>(u"Dir1").Path();
    textFiles.SetPattern(g_sTextFileExt);
    programs.SetPattern(kProgramPattern);
    textFiles.SetPath(sPath);
    programs.SetPath(sPath);
    try {
        programs.SetSelected(0, true);
    } catch (const RuntimeError&) {  // no program there
    }
}

}  // namespace nomira
