#include "adapters/wx/PicturePeers.h"

#include <wx/datetime.h>
#include <wx/dcclient.h>
#include <wx/settings.h>

#include <utility>

#include "adapters/wx/Fonts.h"
#include "adapters/wx/Lengths.h"
#include "adapters/wx/NativeStyle.h"
#include "adapters/wx/PictureStore.h"
#include "adapters/wx/WxText.h"
#include "ui/formlayer/Form.h"

namespace nomira::wx {
namespace {

// Percent of the ground's brightness.
constexpr int kLineBrightness = 70;

constexpr int kPanelEdge = 3;
constexpr int kPanelGap = 1;

wxColour SystemColour(wxSystemColour colour) {
    return wxSystemSettings::GetColour(colour);
}

// A window that a peer paints.
wxWindow* DrawnWindow(wxWindow& parent) {
    auto* window = new wxWindow;
    window->SetBackgroundStyle(wxBG_STYLE_PAINT);
    window->Create(&parent, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxBORDER_NONE);
    return window;
}

Surface* Ground(wxWindow& parent, Surface::Border border) {
    auto* surface = new Surface(parent, border);
    surface->SetBackgroundColour(parent.GetBackgroundColour());
    return surface;
}

}  // namespace

PicturePeer::PicturePeer(FormWindow& owner, PictureBox& control, wxWindow& parent)
    : PeerOf(owner, control),
      m_surface(
          Ground(parent, As<Image>(&control) ? Surface::Border::None : Surface::Border::Line)) {
    Adopt(*m_surface);
}

void PicturePeer::SyncOwn() {
    m_surface->SetPicture(TheControl().Picture().sName);
}

FramePeer::FramePeer(FormWindow& owner, Frame& control, wxWindow& parent)
    : PeerOf(owner, control), m_surface(Ground(parent, Surface::Border::Captioned)) {
    Adopt(*m_surface);
}

void FramePeer::SyncOwn() {
    const wxString sCaption = ToWx(TheControl().Caption());
    m_surface->SetCaption(sCaption);
    SetAccessibleName(*m_surface, sCaption);
}

ProgressPeer::ProgressPeer(FormWindow& owner, ProgressBar& control, wxWindow& parent)
    : PeerOf(owner, control), m_bar(DrawnWindow(parent)) {
    Adopt(*m_bar);
    m_bar->Bind(wxEVT_PAINT, [this](wxPaintEvent&) { OnPaint(); });
}

void ProgressPeer::SyncOwn() {
    const ProgressBar& control = TheControl();
    const float nPart = (control.Value() - control.Min()) / (control.Max() - control.Min());
    if (nPart == m_nPart) return;
    m_nPart = nPart;
    m_bar->Refresh();
}

void ProgressPeer::OnPaint() {
    wxPaintDC dc(m_bar);
    const wxSize size = m_bar->GetClientSize();
    dc.SetPen(wxPen(SystemColour(wxSYS_COLOUR_BTNFACE).ChangeLightness(kLineBrightness)));
    dc.SetBrush(wxBrush(SystemColour(wxSYS_COLOUR_WINDOW)));
    dc.DrawRectangle(size);
    dc.SetPen(*wxTRANSPARENT_PEN);
    dc.SetBrush(wxBrush(SystemColour(wxSYS_COLOUR_HIGHLIGHT)));
    const int nFilled = wxRound(static_cast<float>(size.x - 2) * m_nPart);
    if (nFilled > 0) dc.DrawRectangle(1, 1, nFilled, size.y - 2);
}

StatusBarPeer::StatusBarPeer(FormWindow& owner, StatusBar& control, wxWindow& parent)
    : PeerOf(owner, control), m_bar(DrawnWindow(parent)) {
    m_bar->SetBackgroundColour(parent.GetBackgroundColour());
    Adopt(*m_bar);
    m_bar->Bind(wxEVT_PAINT, [this](wxPaintEvent&) { OnPaint(); });
}

std::vector<StatusBarPeer::Shown> StatusBarPeer::Panels() const {
    const StatusBar& control = TheControl();
    const wxRect bar(wxPoint(), PlaceOf(control).GetSize());
    std::vector<Shown> panels;
    for (std::int16_t n = 1; n <= control.PanelCount(); ++n) {
        const Panel& panel = control.Panels(n);
        wxRect place = DotRect(panel.Left(), 0, panel.MinWidth(), control.Height());
        place.Deflate(kPanelGap, 0);
        panels.push_back({place.Intersect(bar), ToWx(panel.Text()), panel.Picture().sName,
                          panel.Style() == Panel::kClockStyle});
    }
    return panels;
}

void StatusBarPeer::SyncOwn() {
    std::vector<Shown> panels = Panels();
    if (panels == m_panels) return;
    m_panels = std::move(panels);
    wxString sWords;
    for (const Shown& panel : m_panels)
        if (!panel.sText.empty()) sWords += (sWords.empty() ? "" : ", ") + panel.sText;
    SetAccessibleName(*m_bar, sWords.empty() ? m_bar->GetName() : sWords);
    m_bar->Refresh();
}

void StatusBarPeer::OnPaint() {
    wxPaintDC dc(m_bar);
    dc.SetBackground(wxBrush(m_bar->GetBackgroundColour()));
    dc.Clear();
    for (const Shown& panel : m_panels)
        if (panel.place.width > 0) PaintPanel(dc, panel, *m_bar);
}

void StatusBarPeer::PaintPanel(wxDC& dc, const Shown& panel, const wxWindow& bar) {
    dc.SetPen(wxPen(bar.GetBackgroundColour().ChangeLightness(kLineBrightness)));
    dc.SetBrush(*wxTRANSPARENT_BRUSH);
    dc.DrawRectangle(panel.place);
    wxRect room = panel.place;
    room.Deflate(kPanelEdge, 1);
    if (room.width <= 0) return;
    const wxDCClipper clip(dc, room);
    if (const wxBitmapBundle bundle = PictureBundle(panel.sPicture); bundle.IsOk()) {
        const wxBitmap picture = PictureFor(bar, bundle, room.GetSize());
        const wxSize size(picture.GetLogicalSize());
        dc.DrawBitmap(picture, room.x, room.y + (room.height - size.y) / 2, true);
        room.x += size.x + kPanelEdge;
        room.width -= size.x + kPanelEdge;
    }
    const wxString sText = panel.bClock ? wxDateTime::Now().Format("%H:%M") : panel.sText;
    const FittedText fitted = FitText(sText, bar.GetFont(), room.GetSize());
    dc.SetFont(fitted.font);
    dc.SetTextForeground(bar.GetForegroundColour());
    const wxSize text = dc.GetMultiLineTextExtent(fitted.sText);
    dc.DrawText(fitted.sText, room.x, room.y + (room.height - text.y) / 2);
}

}  // namespace nomira::wx
