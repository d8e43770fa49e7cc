#include "frame/entry/BatchDispatch.h"

#include <memory>

#include "conversion/TextExport.h"
#include "conversion/TextImport.h"
#include "frame/ProgramVariables.h"
#include "langtools/BasicText.h"
#include "langtools/CParser.h"
#include "langtools/CTools.h"
#include "platform/Platform.h"
#include "ui/StdForm.h"
#include "ui/formlayer/FormLayer.h"
#include "userprogram/RewriteUserProgram.h"

namespace nomira {
namespace {

constexpr std::int16_t kFewestParameters = 2;

// Copies, for the passes use the parser too.
struct BatchParameters {
    Text sCommand;  // upper case, trimmed
    Text sOption;   // upper case, trimmed
    Text sThird;    // as it stands
    Text sFile;     // trimmed
};

BatchParameters TakeParameters() {
    const auto word = [](std::int16_t nIndex) {
        return Text(Trim(UCase(g_Parser().Token(nIndex))));
    };
    const Text& sThird = g_Parser().Token(3);
    return {word(1), word(2), sThird, Text(Trim(sThird))};
}

void ShowPhase(TextView sPhase) {
    auto* label = FindControl<Label>(kStdFormClass, u"Information");
    if (!label) return;
    label->SetCaption(sPhase);
    label->Refresh();
}

void Complain(TextView sMessage) {
    TheDesktop().ShowMessageBox(sMessage, kApplicationTitle, BoxIcon::None);
}

void ComplainOfArguments() {
    Complain(u"command lines arguments wrong !!!");
}

// Tests the third parameter as it stands: one of blanks alone passes, and the passes then find no
// file. The export below tests the trimmed one.
void ImportText(const BatchParameters& parameters) {
    if (parameters.sThird.empty()) {
        ComplainOfArguments();
        return;
    }
    if (parameters.sOption == u"OVERWRITE") {
        ShowPhase(u"deleting database");
        ClearDbForTextFile(parameters.sFile);
    }
    ShowPhase(u"converting textfile into database");
    TextIntoDb(parameters.sFile);
}

void ExportText(const BatchParameters& parameters) {
    ShowPhase(u"converting database into textfile");
    if (parameters.sFile.empty())
        ComplainOfArguments();
    else
        DbIntoText(parameters.sFile);
}

void UpdateUserFiles(const BatchParameters& parameters) {
    ShowPhase(u"updating longtextname in userfiles");
    Text sPath = parameters.sFile;
    if (Right(sPath, 1) != u"\\") sPath += u'\\';
    if (parameters.sOption == u"SELECT_ALL")
        RewriteDirectory(sPath);
    else
        RewriteUserProgram(sPath);
}

struct BatchCommand {
    TextView sName;
    void (*run)(const BatchParameters& parameters);
};

constexpr BatchCommand kCommands[] = {
    {u"TEXT_INTO_DB", ImportText},
    {u"DB_INTO_TEXT", ExportText},
    {u"UPDATE_USERFILES", UpdateUserFiles},
};

void RunCommand(const BatchParameters& parameters) {
    for (const BatchCommand& command : kCommands)
        if (command.sName == parameters.sCommand) command.run(parameters);
}

void ShowStdForm() {
    Form& form = LoadForm(std::make_unique<StdForm>());
    form.Show();
    form.SetCaption(u"TQX Longname - Conversion");
}

}  // namespace

bool IsBatchCommand(TextView sCommandLine) {
    return InStr(sCommandLine, u"|") > 0;
}

void RunBatch(TextView sCommandLine) {
    g_bPendantMode = false;
    g_bBatchMode = true;
    const Text sUnquoted = g_Tools().ReplaceAllSubStrings(sCommandLine, u"\"", u"");
    g_Parser().Parse(sUnquoted, u"|", u" ");
    ShowStdForm();
    if (g_Parser().count() < kFewestParameters)
        Complain(u"Number of parameters too less !!!");
    else
        RunCommand(TakeParameters());
    UnloadForm(kStdFormClass);
}

}  // namespace nomira
