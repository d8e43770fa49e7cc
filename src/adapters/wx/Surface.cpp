#include "adapters/wx/Surface.h"

#include <wx/dcclient.h>

#include <algorithm>
#include <utility>

#include "adapters/wx/Fonts.h"
#include "adapters/wx/NativeStyle.h"
#include "adapters/wx/PictureStore.h"

namespace nomira::wx {
namespace {

constexpr int kCaptionIndent = 8;
constexpr int kCaptionGap = 3;

// Percent of the ground's brightness.
constexpr int kLineBrightness = 70;

}  // namespace

wxBitmap PictureFor(const wxWindow& window, const wxBitmapBundle& bundle, const wxSize& room) {
    const wxSize own = bundle.GetDefaultSize();
    const double nScale = std::min({ScreenScale(), 1.0 * room.x / own.x, 1.0 * room.y / own.y});
    const double nReal = window.GetContentScaleFactor();
    wxBitmap picture = bundle.GetBitmap(wxSize(std::max(wxRound(own.x * nScale * nReal), 1),
                                               std::max(wxRound(own.y * nScale * nReal), 1)));
    picture.SetScaleFactor(nReal);
    return picture;
}

Surface::Surface(wxWindow& parent, Border border) : m_border(border) {
    SetBackgroundStyle(wxBG_STYLE_PAINT);
    Create(&parent, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxBORDER_NONE);
    Bind(wxEVT_PAINT, [this](wxPaintEvent&) { OnPaint(); });
}

void Surface::SetCaption(const wxString& sCaption) {
    if (m_sCaption == sCaption) return;
    m_sCaption = sCaption;
    Refresh();
}

void Surface::SetPicture(TextView sPicture) {
    if (m_sPicture == sPicture) return;
    m_sPicture = sPicture;
    Refresh();
}

void Surface::SetLines(std::vector<wxRect> lines) {
    if (m_lines == lines) return;
    m_lines = std::move(lines);
    Refresh();
}

void Surface::OnPaint() {
    m_bPainted = true;
    wxPaintDC dc(this);
    dc.SetBackground(wxBrush(GetBackgroundColour()));
    dc.Clear();
    dc.SetPen(wxPen(GetBackgroundColour().ChangeLightness(kLineBrightness)));
    dc.SetBrush(*wxTRANSPARENT_BRUSH);
    for (const wxRect& line : m_lines)
        dc.DrawRectangle(line);
    PaintBorder(dc);
    PaintPicture(dc);
}

void Surface::PaintBorder(wxDC& dc) const {
    if (m_border == Border::Captioned) PaintCaptionedBorder(dc);
    if (m_border == Border::Line) dc.DrawRectangle(GetClientSize());
}

// The upper line runs through the caption's middle and leaves it free.
void Surface::PaintCaptionedBorder(wxDC& dc) const {
    const wxSize size = GetClientSize();
    const wxSize room(size.x - 2 * (kCaptionIndent + kCaptionGap), size.y);
    const FittedText fitted = FitText(m_sCaption, GetFont(), room);
    dc.SetFont(fitted.font);
    dc.SetTextForeground(GetForegroundColour());
    const wxSize text = dc.GetTextExtent(fitted.sText);
    const int nTop = text.y / 2;
    dc.DrawRectangle(0, nTop, size.x, size.y - nTop);
    if (m_sCaption.empty()) return;
    dc.SetPen(wxPen(GetBackgroundColour()));
    dc.DrawLine(kCaptionIndent, nTop, kCaptionIndent + text.x + 2 * kCaptionGap, nTop);
    dc.DrawText(fitted.sText, kCaptionIndent + kCaptionGap, 0);
}

void Surface::PaintPicture(wxDC& dc) const {
    if (m_sPicture.empty()) return;
    const wxBitmapBundle bundle = PictureBundle(m_sPicture);
    if (!bundle.IsOk()) return;
    const wxSize room = GetClientSize();
    const wxBitmap picture = PictureFor(*this, bundle, room);
    const wxSize size(picture.GetLogicalSize());
    dc.DrawBitmap(picture, (room.x - size.x) / 2, (room.y - size.y) / 2, true);
}

}  // namespace nomira::wx
