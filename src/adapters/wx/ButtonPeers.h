// Push buttons, radio buttons and check boxes.
#pragma once

#include "adapters/wx/Peer.h"
#include "ui/formlayer/Buttons.h"

class wxButton;
class wxCheckBox;
class wxRadioButton;

namespace nomira::wx {

class ButtonPeer : public PeerOf<Button> {
  public:
    ButtonPeer(FormWindow& owner, Button& control, wxWindow& parent);

  private:
    void SyncOwn() override;
    void ShowPictures();

    wxButton* m_button;
    Picture m_shown, m_shownDisabled;
};

class RadioPeer : public PeerOf<RadioButton> {
  public:
    RadioPeer(FormWindow& owner, RadioButton& control, wxWindow& parent);

  private:
    void SyncOwn() override;
    wxRadioButton* m_button;
};

class CheckPeer : public PeerOf<CheckBox> {
  public:
    CheckPeer(FormWindow& owner, CheckBox& control, wxWindow& parent);

  private:
    void SyncOwn() override;
    wxCheckBox* m_box;
};

}  // namespace nomira::wx
