// Text boxes and labels.
#pragma once

#include "adapters/wx/Peer.h"

class wxStaticText;
class wxTextCtrl;

namespace nomira::wx {

class TextPeer : public PeerOf<TextBox> {
  public:
    TextPeer(FormWindow& owner, TextBox& control, wxWindow& parent);

  private:
    void SyncOwn() override;
    void OnTyped();

    wxTextCtrl* m_box;
    Text m_sShown;  // what stands in the box, with the program's line ends
};

class LabelPeer : public PeerOf<Label> {
  public:
    LabelPeer(FormWindow& owner, Label& control, wxWindow& parent);

  private:
    void SyncOwn() override;
};

}  // namespace nomira::wx
