// A user at a form without a screen: finds controls by their names and acts on them, as a view does
// for the one before the screen. A control that the user can't reach takes no act; a missing one
// raises as Form::Get does.
#pragma once

#include <cstdint>

#include "langtools/Text.h"
#include "ui/formlayer/Form.h"

namespace nomira::memory {

class PlayedUser {
  public:
    // The form must outlive the user's acts.
    explicit PlayedUser(Form& form) : m_form(form) {}

    void Click(TextView sControl);
    void Click(TextView sArray, std::int16_t nIndex);
    // The text that stands in the box afterwards.
    void Type(TextView sTextBox, TextView sText);
    // Entries are counted from 0.
    void Select(TextView sList, std::int16_t nEntry, bool bSelected = true);
    void PickDrive(TextView sDriveList, TextView sDrive);
    void Highlight(TextView sDirList, std::int16_t nEntry);
    void PressKey(TextView sDirList, std::int16_t nKeyAscii);
    // Moves to the node of this key.
    void SelectNode(TextView sTree, TextView sKey);
    void PressTreeKey(TextView sTree, std::int16_t nKeyCode);
    void PressPendantKey(TextView sKeyControl, std::int16_t nKeyCode);
    void PressTab();

  private:
    Form& m_form;
};

}  // namespace nomira::memory
