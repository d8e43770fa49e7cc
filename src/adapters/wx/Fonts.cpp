#include "adapters/wx/Fonts.h"

#include <wx/dcmemory.h>
#include <wx/tokenzr.h>

#include <algorithm>

#include "adapters/wx/WxText.h"

namespace nomira::wx {
namespace {

constexpr double kUsualSize = 8.25;  // points
constexpr double kSmallestSize = 6.5;
constexpr double kStep = 0.25;

// The first of them that the system has.
constexpr const char* kUsualFaces = "Arial,Liberation Sans,Nimbus Sans,DejaVu Sans Condensed";

class Ruler {
  public:
    explicit Ruler(const wxFont& font) {
        m_dc.SelectObject(m_bitmap);
        m_dc.SetFont(font);
    }
    int Width(const wxString& sText) const { return m_dc.GetTextExtent(sText).x; }
    int LineHeight() const { return m_dc.GetCharHeight(); }

  private:
    wxBitmap m_bitmap{1, 1};
    wxMemoryDC m_dc;
};

// Lines no wider than `nWidth`, as far as words can be parted.
wxString Broken(const wxString& sText, const Ruler& ruler, int nWidth) {
    wxString sResult, sLine;
    wxStringTokenizer words(sText, " ");
    while (words.HasMoreTokens()) {
        const wxString sWord = words.GetNextToken();
        const wxString sLonger = sLine.empty() ? sWord : sLine + " " + sWord;
        if (sLine.empty() || ruler.Width(sLonger) <= nWidth) {
            sLine = sLonger;
            continue;
        }
        sResult += sLine + "\n";
        sLine = sWord;
    }
    return sResult + sLine;
}

bool Fits(const wxString& sText, const Ruler& ruler, const wxSize& room) {
    int nLines = 0;
    wxStringTokenizer lines(sText, "\n", wxTOKEN_RET_EMPTY_ALL);
    while (lines.HasMoreTokens()) {
        ++nLines;
        if (ruler.Width(lines.GetNextToken()) > room.x) return false;
    }
    return nLines <= 1 || nLines * ruler.LineHeight() <= room.y;
}

}  // namespace

wxFont MakeFont(const Font& font) {
    const wxString sFace = font.sName.empty() ? wxString(kUsualFaces) : ToWx(font.sName);
    wxFontInfo info(font.nSize > 0 ? static_cast<double>(font.nSize) : kUsualSize);
    return wxFont(info.FaceName(sFace).Bold(font.bBold));
}

FittedText FitText(const wxString& sText, const wxFont& font, const wxSize& room) {
    const bool bSeveralLines = room.y >= 2 * Ruler(font).LineHeight();
    FittedText fitted{sText, font};
    for (double nSize = font.GetFractionalPointSize(); nSize >= kSmallestSize; nSize -= kStep) {
        fitted.font.SetFractionalPointSize(nSize);
        const Ruler ruler(fitted.font);
        if (Fits(sText, ruler, room)) break;
        if (!bSeveralLines) continue;
        fitted.sText = Broken(sText, ruler, room.x);
        if (Fits(fitted.sText, ruler, room)) break;
    }
    return fitted;
}

}  // namespace nomira::wx
