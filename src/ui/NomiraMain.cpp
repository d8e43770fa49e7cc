#include "ui/NomiraMain.h"

#include "conversion/TextExport.h"
#include "database/adoModul.h"
#include "frame/KillProcess.h"
#include "frame/ProgramVariables.h"
#include "frame/Settings.h"
#include "langtools/ProgramEnd.h"
#include "link/cVexonComm.h"
#include "platform/Files.h"
#include "platform/Platform.h"
#include "ui/FormLayout.h"
#include "ui/ListHandlers.h"
#include "ui/Options.h"
#include "ui/ProgramTree.h"
#include "ui/RunConversion.h"
#include "ui/formlayer/FileLists.h"
#include "ui/formlayer/FormLayer.h"
#include "ui/formlayer/StatusBar.h"

namespace nomira {
namespace {

using Kind = ControlKind;

// The places overlap on purpose: the option that is chosen decides which of the lists are seen.
// clang-format off
constexpr ControlDesign kControls[] = {
    {u"Dir1", Kind::DirList, 120, 720, 1815, 2340, u"", 0},
    {u"Drive1", Kind::DriveList, 120, 240, 1815, 315, u"", 1},
    {u"TreeView1", Kind::Tree, 120, 720, 1815, 2415, u"", 2, {.sImageList = u"ImageList1"}},
    {u"Option1", Kind::RadioButton, 2160, 240, 2415, 255, u"Textfile -> Database", 3},
    {u"Option2", Kind::RadioButton, 2160, 600, 2415, 255, u"Database -> Textfile", 4},
    {u"Option3", Kind::RadioButton, 2160, 960, 2415, 255, u"Database (IO's) -> Programs", 5},
    {u"Text1", Kind::TextBox, 2040, 1800, 1695, 375, u"", 6,
     {.bVisible = false, .bMultiLine = true}},
    {u"txtboxView", Kind::TextBox, 120, 240, 3615, 2895, u"", 7,
     {.bMultiLine = true, .bBothScrollBars = true}},
    {u"List1", Kind::ListBox, 2040, 1440, 1695, 1230, u"", 8,
     {.nMultiSelect = SelectionList::kSimple}},
    {u"File1", Kind::FileList, 2040, 1440, 1695, 1065, u"", 9},
    {u"File2", Kind::FileList, 2040, 1440, 1695, 1260, u"", 10,
     {.nMultiSelect = SelectionList::kSimple}},
    {u"chkBoxAdd", Kind::CheckBox, 2040, 2760, 1695, 255, u"overwrite old datas", 11,
     {.nValue = CheckBox::kChecked}},
    {u"chkBoxSelAll", Kind::CheckBox, 2040, 2760, 975, 255, u"select all", 12},
    {u"cmdStart", Kind::Button, 3840, 1440, 855, 495, u"Start", 13},
    {u"cmdExit", Kind::Button, 3840, 2040, 855, 495, u"Exit", 14},
    {u"cmdView", Kind::Button, 3840, 2640, 855, 495, u"View DB", 15},
    {u"ProgressBar1", Kind::ProgressBar, 480, 2280, 855, 255, u"", 16},
    {u"StatusBar1", Kind::StatusBar, 0, 3240, 4830, 285, u"", 17, {.nPanels = 1}},
    {u"Picture1", Kind::PictureBox, 30, 3270, 255, 255, u"", 18, {.sPicture = u"picLinked"}},
};
// clang-format on

constexpr ContainerDesign kContainers[] = {{u"", kControls}};

constexpr TextView kTreePictures[] = {u"picTreeRoot", u"picTreeNode"};
constexpr PictureListDesign kPictureLists[] = {{u"ImageList1", 16, 16, kTreePictures}};

constexpr FormDesign kDesign{kNomiraMainClass, u"Longname - Conversion", 4830, 3525, kContainers,
                             kPictureLists};

constexpr std::int32_t kFirstPanelWidth = 255;

struct AddedPanel {
    TextView sKey;
    std::int32_t nMinWidth;
    std::int16_t nStyle;
};

constexpr AddedPanel kAddedPanels[] = {
    {u"Objekt2", 1700, Panel::kTextStyle},
    {u"Objekt3", 2100, Panel::kTextStyle},
    {u"Objekt4", 960, Panel::kClockStyle},
};

constexpr TextView kMiddlewareProcess = u"VEXON3.EXE";
constexpr TextView kLeaveViewCaption = u"Exit View";

void AddPanels(StatusBar& bar) {
    for (const AddedPanel& added : kAddedPanels) {
        Panel& panel = bar.AddPanel(Text(added.sKey));
        panel.SetMinWidth(added.nMinWidth);
        panel.SetStyle(added.nStyle);
    }
}

void CentreOnScreen(Form& form) {
    const ScreenSize screen = TheDesktop().Screen();
    form.Move((screen.nWidth - form.Width()) / 2, (screen.nHeight - form.Height()) / 2,
              form.Width(), form.Height());
}

void InitProgressBar(ProgressBar& progress) {
    progress.SetMin(1);
    progress.SetMax(27);
    progress.SetVisible(false);
}

void Warn(TextView sText, TextView sTitle) {
    TheDesktop().ShowMessageBox(sText, sTitle, BoxIcon::Exclamation);
}

bool IsMiddlewareLinked(Form& form) {
    return IsProcessRunning(kMiddlewareProcess) &&
           g_Comm().ConnectingVexon(kNomiraMainClass, &form);
}

}  // namespace

NomiraMain::NomiraMain() : DesignedForm(kDesign) {}

void NomiraMain::Load() {
    StartLists();
    AttachHandlers();
    CentreOnScreen(*this);
    auto& bar = Get<StatusBar>(u"StatusBar1");
    bar.Panels(1).SetMinWidth(kFirstPanelWidth);
    auto& progress = Get<ProgressBar>(u"ProgressBar1");
    InitProgressBar(progress);
    SetVisible(*this, {u"Picture1"}, false);
    // Over the second panel.
    progress.Move(bar.Left() + 2055, bar.Top() + 90, 2000, bar.Height() / 2);
    AddPanels(bar);
    InitFormLayout(*this);
    CheckDatabase();
    GoToInstallation();
}

void NomiraMain::AttachHandlers() {
    Get<RadioButton>(u"Option1").onClick = [this] { ShowOption1(*this); };
    Get<RadioButton>(u"Option2").onClick = [this] { ShowOption2(*this); };
    Get<RadioButton>(u"Option3").onClick = [this] { Option3_Click(); };
    Get<CheckBox>(u"chkBoxSelAll").onClick = [this] { SelectAll(*this); };
    Get<Button>(u"cmdStart").onClick = [this] { RunConversion(*this); };
    Get<Button>(u"cmdView").onClick = [this] { cmdView_Click(); };
    Get<Button>(u"cmdExit").onClick = [this] { cmdExit_Click(); };
    Get<DirListBox>(u"Dir1").onChange = [this] { FollowDirectory(*this); };
    Get<DriveListBox>(u"Drive1").onChange = [this] { Drive1_Change(); };
}

// The connection is left open; the next one to open it closes it.
void NomiraMain::CheckDatabase() {
    if (OpenDatabase(kLongTextDatabase)) return;
    SetEnabled(*this, {u"cmdView", u"cmdStart"}, false);
    Get<StatusBar>(u"StatusBar1").Panels(kResultPanel).SetText(u"no connect to database !!!");
}

void NomiraMain::GoToInstallation() {
    if (g_sInstallDir.empty()) return;
    auto& drive = Get<DriveListBox>(u"Drive1");
    m_sLastDrive = drive.Drive();
    try {
        drive.SetDrive(nomira::Left(g_sInstallDir, kRootLength));
        Get<DirListBox>(u"Dir1").SetPath(Mid(g_sInstallDir, kRootLength + 1));
    } catch (const RuntimeError&) {
        if (!m_sLastDrive.empty()) drive.SetDrive(m_sLastDrive);  // empty on a PC without drives
    }
}

void NomiraMain::Option3_Click() {
    if (!IsMiddlewareLinked(*this)) {
        ShowOption3(*this);
        return;
    }
    SetVisible(*this, {u"Picture1"}, true);
    if (Text sDirList = g_Comm().GetRobotDirList(); !sDirList.empty())
        FillRobotTree(*this, sDirList);
    if (Text sFileList = g_Comm().GetRobotFileList(); !sFileList.empty())
        ShowRobotPrograms(*this, sFileList);
}

void NomiraMain::cmdView_Click() {
    SetVisible(*this,
               {u"Dir1", u"Drive1", u"Option1", u"Option2", u"Option3", u"Text1", u"File1",
                u"File2", u"List1", u"TreeView1", u"chkBoxAdd", u"chkBoxSelAll"},
               false);
    SetVisible(*this, {u"txtboxView", u"cmdStart"}, true);
    Get<FileListBox>(u"File1").SetPattern(g_sTextFileExt);
    Get<FileListBox>(u"File2").SetPattern(kProgramPattern);
    Get<Button>(u"cmdStart").SetCaption(kSaveCaption);
    Get<Button>(u"cmdExit").SetCaption(kLeaveViewCaption);
    SetEnabled(*this, {u"cmdExit", u"cmdStart"}, false);
    ProcessPendingEvents();
    auto& bar = Get<StatusBar>(u"StatusBar1");
    bar.Panels(kWorkPanel).SetText(u"exporting data");
    bar.Refresh();
    SetVisible(*this, {u"ProgressBar1"}, true);
    Get<TextBox>(u"txtboxView").SetText(BuildLongTextDump());
    SetEnabled(*this, {u"cmdExit", u"cmdStart"}, true);
    SetVisible(*this, {u"ProgressBar1"}, false);
    bar.Panels(kWorkPanel).SetText(u"");
}

void NomiraMain::cmdExit_Click() {
    if (Equal(Get<Button>(u"cmdExit").Caption(), kLeaveViewCaption)) {
        LeaveView();
        return;
    }
    if (g_Comm().VexonCommands) g_Comm().VexonCommands->ServerOff();
    EndProgram();
}

void NomiraMain::LeaveView() {
    SetVisible(*this, {u"Dir1", u"Drive1", u"Option1", u"Option2", u"Option3"}, true);
    ShowChosenOption();
    SetVisible(*this, {u"txtboxView"}, false);
    Get<Button>(u"cmdStart").SetCaption(u"Start");
    Get<Button>(u"cmdExit").SetCaption(u"Exit");
}

void NomiraMain::ShowChosenOption() {
    for (const TextView sOption : {u"Option1", u"Option2", u"Option3"}) {
        const auto& option = Get<RadioButton>(sOption);
        if (!option.Value()) continue;
        option.onClick();
        return;
    }
    SetVisible(*this, {u"cmdStart"}, false);
}

// Back on the drive of the load, the lists follow by the change that this is.
void NomiraMain::Drive1_Change() {
    auto& drive = Get<DriveListBox>(u"Drive1");
    try {
        Get<DirListBox>(u"Dir1").SetPath(drive.Drive());
    } catch (const RuntimeError& error) {
        if (error.Number() != ErrorNumber::DeviceUnavailable) {
            Warn(u"Runtime error!", error.Description());
            return;
        }
        Warn(u"Please insert disk in drive A:", u"Tip");
        drive.SetDrive(m_sLastDrive);
    }
}

}  // namespace nomira
