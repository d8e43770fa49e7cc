// What is drawn: picture boxes, pictures, frames, progress bars and status bars.
#pragma once

#include "adapters/wx/Peer.h"
#include "adapters/wx/Surface.h"
#include "ui/formlayer/Picture.h"
#include "ui/formlayer/StatusBar.h"

namespace nomira::wx {

// Also an Image, which has no border.
class PicturePeer : public PeerOf<PictureBox> {
  public:
    PicturePeer(FormWindow& owner, PictureBox& control, wxWindow& parent);

  private:
    void SyncOwn() override;
    Surface* m_surface;
};

class FramePeer : public PeerOf<Frame> {
  public:
    FramePeer(FormWindow& owner, Frame& control, wxWindow& parent);

  private:
    void SyncOwn() override;
    Surface* m_surface;
};

class ProgressPeer : public PeerOf<ProgressBar> {
  public:
    ProgressPeer(FormWindow& owner, ProgressBar& control, wxWindow& parent);

  private:
    void SyncOwn() override;
    void OnPaint();

    wxWindow* m_bar;
    float m_nPart = -1;  // of the bar's width that is filled, 0 to 1
};

// The panels lie beside each other, each as wide as its least width; what goes beyond the bar is
// cut off. A clock panel shows the time of day.
class StatusBarPeer : public PeerOf<StatusBar> {
  public:
    StatusBarPeer(FormWindow& owner, StatusBar& control, wxWindow& parent);

  private:
    struct Shown {
        wxRect place;  // dots
        wxString sText;
        Text sPicture;
        bool bClock;
        bool operator==(const Shown&) const = default;
    };
    void SyncOwn() override;
    std::vector<Shown> Panels() const;
    void OnPaint();
    static void PaintPanel(wxDC& dc, const Shown& panel, const wxWindow& bar);

    wxWindow* m_bar;
    std::vector<Shown> m_panels;
};

}  // namespace nomira::wx
