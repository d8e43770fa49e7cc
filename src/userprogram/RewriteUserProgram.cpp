#include "userprogram/RewriteUserProgram.h"

#include <cstdint>
#include <vector>

#include "conversion/TextImport.h"
#include "frame/Progress.h"
#include "langtools/CParser.h"
#include "langtools/RuntimeError.h"
#include "platform/Platform.h"
#include "ui/formlayer/FormLayer.h"
#include "ui/formlayer/StatusBar.h"
#include "userprogram/FoldHeader.h"

namespace nomira {
namespace {

constexpr TextView kDesktopForm = u"NomiraMain";
constexpr std::int16_t kRunningPanel = 2;  // tells what is running

void ShowBar(bool bVisible) {
    if (auto* bar = FindControl<ProgressBar>(kDesktopForm, u"ProgressBar1")) {
        bar->SetVisible(bVisible);
    }
}

void ShowFileName(TextView sPath) {
    g_Parser().Parse(sPath, u"\\");
    const Text sName = g_Parser().Token(g_Parser().count());
    if (auto* bar = FindControl<StatusBar>(kDesktopForm, u"StatusBar1"))
        bar->Panels(kRunningPanel).SetText(sName);
    if (auto* label = FindControl<Label>(u"StdForm", u"Information")) label->SetCaption(sName);
}

std::vector<Text> RewriteLines(InputFile& file) {
    std::vector<Text> lines;
    while (!file.AtEnd()) {
        file.ReadLine(g_sLine);
        RewriteFoldLine();
        lines.push_back(g_sLine);
        AdvanceProgress();
    }
    return lines;
}

void WriteLines(TextView sPath, const std::vector<Text>& lines) {
    const auto file = TheFiles().OpenForOutput(sPath);
    const std::int16_t nLines = ToInt16(std::ssize(lines));
    for (std::int16_t n = 0; n < nLines; ++n)
        file->PrintLine(lines[static_cast<std::size_t>(n)]);
    file->Close();
}

}  // namespace

bool RewriteUserProgram(TextView sPath) {
    auto file = TheFiles().OpenForInput(sPath);
    ShowBar(true);
    ShowFileName(sPath);
    g_bLineChanged = false;
    const std::vector<Text> lines = RewriteLines(*file);
    ShowBar(false);
    file.reset();
    if (g_bLineChanged) WriteLines(sPath, lines);
    return g_bLineChanged;
}

void RewriteDirectory(TextView sDir) {
    const Text sDirectory(sDir);
    for (const Text& sEntry : TheFiles().Dir(sDirectory + u"*.SRC", AttributeDirectory)) {
        const Text sPath = sDirectory + sEntry;
        if (TheFiles().GetAttr(sPath) & AttributeDirectory) continue;
        RewriteUserProgram(sPath);
    }
}

}  // namespace nomira
