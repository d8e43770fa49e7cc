// The ground on which a form's controls lie: a form's client area, a frame, a picture box. It
// paints itself: its colour, a border with a caption, a picture, and the frame lines of the Shape
// controls that lie on it, which have no window of their own.
#pragma once

#include <wx/bmpbndl.h>
#include <wx/window.h>

#include <vector>

#include "langtools/Text.h"

namespace nomira::wx {

class Surface : public wxWindow {
  public:
    enum class Border { None, Captioned, Line };

    Surface(wxWindow& parent, Border border);

    void SetCaption(const wxString& sCaption);
    void SetPicture(TextView sPicture);
    // Places of frame lines.
    void SetLines(std::vector<wxRect> lines);
    const std::vector<wxRect>& Lines() const { return m_lines; }

    bool IsPainted() const { return m_bPainted; }

  private:
    void OnPaint();
    void PaintBorder(wxDC& dc) const;
    void PaintCaptionedBorder(wxDC& dc) const;
    void PaintPicture(wxDC& dc) const;

    Border m_border;
    wxString m_sCaption;
    Text m_sPicture;
    std::vector<wxRect> m_lines;
    bool m_bPainted = false;
};

// The picture for the window in its own size, or as large as the room lets it be; sharp on a screen
// with several real dots to each of the window's. The bundle must hold one.
wxBitmap PictureFor(const wxWindow& window, const wxBitmapBundle& bundle, const wxSize& room);

}  // namespace nomira::wx
