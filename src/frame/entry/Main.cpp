#include "frame/entry/Main.h"

#include <memory>

#include "frame/KillProcess.h"
#include "frame/ProgramVariables.h"
#include "frame/Settings.h"
#include "frame/entry/BatchDispatch.h"
#include "langtools/BasicText.h"
#include "langtools/CTools.h"
#include "platform/Platform.h"
#include "ui/NomiraMain.h"
#include "ui/StdBofForm.h"
#include "ui/formlayer/FormLayer.h"

namespace nomira {
namespace {

constexpr TextView kMiddlewareProcess = u"vexon3.exe";
constexpr std::int16_t kIoSize = 1024;

void RaiseFirstInstance() {
    TheDesktop().ActivateByTitle(kApplicationTitle);
    BringMainWindowToTop();
}

void ReadInstallation() {
    ReadRegistryString(kInstallDirSetting, g_sInstallDir);
    ReadRegistryString(kLanguageSetting, g_sLanguage);
}

// The detour through decimal text takes at most nine of its characters, so that a language of ten
// digits loses the last one. No language of a system is that large, and the value is compared
// only with ids that came the same way.
std::int32_t LanguageFromText(TextView sHexadecimal) {
    std::int32_t nLanguage = 0;
    g_Tools().Str2Long(DecimalText(HexValue(sHexadecimal)), nLanguage);
    return nLanguage;
}

void WorkOutLanguage() {
    g_nLanguageId = g_sLanguage.empty() ? GetDefaultLanguageId() : LanguageFromText(g_sLanguage);
}

template <typename FrontEnd>
void ShowFrontEnd() {
    Form& form = LoadForm(std::make_unique<FrontEnd>());
    form.SetLive(true);
    form.Show();
}

void PickFrontEnd() {
    const TextView sCommandLine = CommandLine();
    // The registry and the processes are asked whatever the command line is.
    const bool bNoCommand = sCommandLine.empty();
    const bool bCustomer = !GetCustomer().empty();
    const bool bMiddleware = IsProcessRunning(kMiddlewareProcess);

    g_bPendantMode = bNoCommand && bCustomer && bMiddleware;
    if (g_bPendantMode)
        ShowFrontEnd<StdBofForm>();
    else if (bNoCommand)
        ShowFrontEnd<NomiraMain>();
    else if (IsBatchCommand(sCommandLine))
        RunBatch(sCommandLine);
}

}  // namespace

void Main() {
    if (TheDesktop().PreviousInstance()) {
        RaiseFirstInstance();
        return;
    }
    ReadTextFileSettings();
    ReadInstallation();
    WorkOutLanguage();
    g_nNumIo = kIoSize;
    g_bBatchMode = false;
    PickFrontEnd();
}

}  // namespace nomira
