#include "frame/entry/RunProgram.h"

#include <cstdint>

#include "frame/entry/Main.h"
#include "langtools/BasicText.h"
#include "langtools/ProgramEnd.h"
#include "langtools/RuntimeError.h"
#include "platform/Platform.h"
#include "ui/formlayer/FormLayer.h"

namespace nomira {
namespace {

void ShowRunTimeBox(const RuntimeError& error) {
    const Text sNumber = DecimalText(static_cast<std::int32_t>(error.Number()));
    const Text sText = u"Run-time error '" + sNumber + u"':\r\n\r\n" + error.Description();
    TheDesktop().ShowMessageBox(sText, kApplicationTitle, BoxIcon::None);
}

}  // namespace

int RunProgram() {
    try {
        Main();
        if (View* view = TheView(); view && AnyFormVisible()) view->RunEventLoop();
        return 0;
    } catch (const ProgramEnd&) {
        return 0;
    } catch (const RuntimeError& error) {
        ShowRunTimeBox(error);
        return 1;
    }
}

}  // namespace nomira
