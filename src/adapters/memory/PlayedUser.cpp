#include "adapters/memory/PlayedUser.h"

#include "ui/formlayer/FileLists.h"
#include "ui/formlayer/ListBox.h"
#include "ui/formlayer/PendantKeyControl.h"
#include "ui/formlayer/TreeView.h"

namespace nomira::memory {

void PlayedUser::Click(TextView sControl) {
    m_form.Get<Control>(sControl).UserClick();
}

void PlayedUser::Click(TextView sArray, std::int16_t nIndex) {
    m_form.Get<Control>(sArray, nIndex).UserClick();
}

void PlayedUser::Type(TextView sTextBox, TextView sText) {
    m_form.Get<TextBox>(sTextBox).UserType(sText);
}

void PlayedUser::Select(TextView sList, std::int16_t nEntry, bool bSelected) {
    m_form.Get<SelectionList>(sList).UserSelect(nEntry, bSelected);
}

void PlayedUser::PickDrive(TextView sDriveList, TextView sDrive) {
    m_form.Get<DriveListBox>(sDriveList).UserPick(sDrive);
}

void PlayedUser::Highlight(TextView sDirList, std::int16_t nEntry) {
    m_form.Get<DirListBox>(sDirList).UserHighlight(nEntry);
}

void PlayedUser::PressKey(TextView sDirList, std::int16_t nKeyAscii) {
    m_form.Get<DirListBox>(sDirList).UserKeyPress(nKeyAscii);
}

void PlayedUser::SelectNode(TextView sTree, TextView sKey) {
    auto& tree = m_form.Get<TreeView>(sTree);
    tree.UserSelect(tree.Nodes().Item(sKey));
}

void PlayedUser::PressTreeKey(TextView sTree, std::int16_t nKeyCode) {
    m_form.Get<TreeView>(sTree).UserKeyDown(nKeyCode, 0);
}

void PlayedUser::PressPendantKey(TextView sKeyControl, std::int16_t nKeyCode) {
    m_form.Get<PendantKeyControl>(sKeyControl).UserKey(nKeyCode);
}

void PlayedUser::PressTab() {
    m_form.FocusNext();
}

}  // namespace nomira::memory
