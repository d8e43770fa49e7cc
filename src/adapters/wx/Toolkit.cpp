#include "adapters/wx/Toolkit.h"

#include <wx/app.h>
#include <wx/image.h>
#include <wx/log.h>

namespace nomira::wx {
namespace {

class Application : public wxApp {
  public:
    Application() { SetExitOnFrameDelete(false); }
    bool OnInit() override { return true; }
};

// The toolkit wants arguments of its own, which none of the program's are.
char g_program[] = "nomira";
char* g_arguments[] = {g_program, nullptr};

}  // namespace

Toolkit::Toolkit() {
    const wxLogNull silent;
    int nArguments = 1;
    wxApp::SetInstance(new Application);
    m_bReady = wxEntryStart(nArguments, g_arguments) && wxTheApp->CallOnInit();
    if (!m_bReady) return;
    wxImage::AddHandler(new wxPNGHandler);  // the pictures are of that kind
}

Toolkit::~Toolkit() {
    if (!m_bReady) return;
    wxTheApp->OnExit();
    wxEntryCleanup();
}

}  // namespace nomira::wx
