// The pendant form: the front end on a controller.
//
// The operator works with the soft keys at the bottom and the status keys at the left. They come as
// hardware keys, as clicks on the drawn buttons, and by BOFKey; what a key does depends on its
// button alone, and a disabled one does nothing. All state lies in the controls and in the
// program's variables. The form shows no message box: problems stand in the status bar.
#pragma once

#include <cstdint>

#include "ui/FormAccess.h"
#include "ui/FormDesign.h"

namespace nomira {

class StdBofForm : public DesignedForm {
  public:
    StdBofForm();

    // In pendant mode the form gets its words and its handlers, goes into the state without a
    // chosen option, opens the long-text database, and connects to the controller, of which it
    // reads the system sizes. A database that can't be opened leaves only the key of the exit, a
    // missing link nothing but a word. In any other mode, when another form only needs its
    // controls, it stays as designed and does nothing.
    void Load() override;
    // Does nothing: cleaning up is the work of the exit's soft key. Leaves `nCancel`.
    void Form_Unload(std::int16_t& nCancel);

    // SetInfoResult, the link's report of a watched variable, is taken and ignored.
    void CallByName(TextView sMethod, std::span<const CallArgument> arguments) override;

    // A soft key, 0 to 6, or a status key, 0 to 5, has been pressed, in whatever way. Nothing
    // happens if it is disabled; the soft key of the exit doesn't come back. Raise
    // ControlElementMissing for other indexes.
    void SoftKey_Click(std::int16_t nIndex);
    void StatKeyL_Click(std::int16_t nIndex);
    // A key by its number, for the controller's own key handling: 10 to 15 are the status keys 0 to
    // 5, and 30 to 36 the soft keys 0 to 6; every other number does nothing.
    void BOFKey(std::int16_t nKeyNumber);
    // A click into the menu row, by its place: `nX` is in twips, and only the exact place of one of
    // the eight keys counts. The button and the shift keys are not looked at.
    void Form_MouseEvent(std::int16_t nButton, std::int16_t nShift, float nX, float nY);
    // Does nothing.
    void TreeView1_MouseDown(std::int16_t nButton, std::int16_t nShift, float nX, float nY);

    // Pictures for what an action does.
    const Picture& picRead() const { return Listed(*this, u"ImageList4", 6); }
    const Picture& picWrite() const { return Listed(*this, u"ImageList4", 7); }
    const Picture& picDelete() const { return Listed(*this, u"ImageList4", 8); }
    const Picture& picCompact() const { return Listed(*this, u"ImageList4", 9); }
    const Picture& picCritical() const { return Listed(*this, u"ImageList4", 10); }

  protected:
    // The menu row's keys, 0 to 7, have no work of their own.
    virtual void MenueKey_Click(std::int16_t nIndex);

  private:
    void AttachHandlers();
    void CheckDatabase();
    // With a link the system sizes are read.
    void ConnectLink();
    void FallBackFromDrive();

    // ---- Handlers ----

    void TqpKeys_FKey(std::int16_t nKeyCode);
    void Dir1_KeyPress(std::int16_t nKeyAscii);
    void Drive1_Change();
    void TreeView1_KeyDown(std::int16_t nKeyCode);

    Text m_sPrevNodeKey;  // of the tree's node that was dealt with last; empty at the start
};

}  // namespace nomira
