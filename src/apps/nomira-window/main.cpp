// nomira-window: nomira on a display. It is not called by itself but by nomira, in whose process it
// goes on. If the display turns out not to answer, it works as nomira does without one.
#include <memory>
#include <span>
#include <vector>

#include "adapters/wx/Toolkit.h"
#include "adapters/wx/WxDesktop.h"
#include "adapters/wx/WxView.h"
#include "apps/nomira/Composition.h"
#include "platform/Platform.h"
#include "ui/formlayer/FormLayer.h"

namespace {

using namespace nomira;

// The windows, and all that is served beside them: what the link reports, and what another instance
// asks of this one.
struct FrontEnd {
    explicit FrontEnd(const Parts& parts)
        : machine(parts.machine), desktop(view, parts.machine.desktop) {
        SetView(&view);
        machine.UseDesktop(desktop);
        posix::PosixDesktop& session = parts.machine.desktop;
        view.onTitleShown = [&session](TextView sTitle) { session.AnnounceWindow(sTitle); };
        view.onTitleGone = [&session](TextView sTitle) { session.WithdrawWindow(sTitle); };
        view.AddSource({[&session] { return std::vector<int>{session.RequestDescriptor()}; },
                        [this, &session] { ServeRequests(session); }});
        rpc::RpcLinkLibrary& link = parts.link;
        view.AddSource(
            {[&link] { return link.EventDescriptors(); }, [&link] { link.ServeEvents(); }});
    }

    ~FrontEnd() { machine.UseDesktop(machine.desktop); }
    FrontEnd(const FrontEnd&) = delete;
    FrontEnd& operator=(const FrontEnd&) = delete;

    void ServeRequests(posix::PosixDesktop& session) {
        for (const posix::WindowRequest& request : session.TakeRequests())
            view.RaiseWindow(request.sTitle);
    }

    posix::PosixMachine& machine;
    wx::WxView view;
    wx::WxDesktop desktop;
};

}  // namespace

int main(int nArguments, char** arguments) {
    const wx::Toolkit toolkit;
    const MakeFrontEnd makeFrontEnd = [&toolkit](const Parts& parts) -> std::shared_ptr<void> {
        return toolkit.IsReady() ? std::make_shared<FrontEnd>(parts) : nullptr;
    };
    const auto all = std::span<const char* const>(arguments, nArguments);
    return RunNomira(all.subspan(nArguments > 0 ? 1 : 0), makeFrontEnd);
}
