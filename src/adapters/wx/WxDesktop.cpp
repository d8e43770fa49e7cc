#include "adapters/wx/WxDesktop.h"

#include <wx/app.h>
#include <wx/msgdlg.h>

#include "adapters/wx/Lengths.h"
#include "adapters/wx/WxText.h"
#include "platform/Platform.h"

namespace nomira::wx {

void WxDesktop::ShowMessageBox(TextView sText, TextView sTitle, BoxIcon icon) {
    m_view.ShowChanges();
    const long nIcon = icon == BoxIcon::Exclamation ? wxICON_EXCLAMATION : wxICON_NONE;
    wxMessageBox(ToWxLines(sText), ToWx(sTitle.empty() ? kApplicationTitle : sTitle), wxOK | nIcon,
                 wxGetActiveWindow());
}

ScreenSize WxDesktop::Screen() {
    const wxSize size = wxGetDisplaySize();
    return {Twips(size.x), Twips(size.y)};
}

}  // namespace nomira::wx
