#include "scenarios/Plant.h"

#include "adapters/sqlite/StoreSchema.h"
#include "database/DatabaseEngine.h"
#include "database/adoModul.h"
#include "frame/entry/RunProgram.h"
#include "langtools/ProgramState.h"
#include "link/cVexonComm.h"
#include "platform/Platform.h"
#include "ui/formlayer/FormLayer.h"

namespace nomira::testing {
namespace {

namespace fs = std::filesystem;

Form& TheFrontEnd() {
    for (const TextView sClass : {u"StdBofForm", u"NomiraMain"})
        if (Form* form = FindForm(sClass); form && form->Visible()) return *form;
    throw std::logic_error("no front end is on the screen");
}

}  // namespace

Plant::Plant()
    : simulator(NOMIRA_SIMULATOR),
      m_machine(simulator.Folder()),
      m_engine([this](TextView sPath) { return m_machine.prefix.NativePath(sPath); }),
      m_library(simulator.Socket(),
                [this](TextView sPath) { return m_machine.prefix.NativePath(sPath); }) {
    for (const char* sFolder : {"tqx/Data", "tqx/Roboter/TQX/R1"})
        fs::create_directories(OnDriveC(sFolder));
    sqlite::CreateStore(Database(), FormatUnderTest());
    SetDatabaseEngine(&m_engine);
}

Plant::~Plant() {
    g_Comm().ExitVexonComm();
    SetLinkLibrary(nullptr);
    CloseDatabase();
    SetDatabaseEngine(nullptr);
    ResetProgramState();
    SetPlatform({});
}

fs::path Plant::OnDriveC(std::string_view sName) const {
    return simulator.Folder() / "drives/c" / sName;
}

void Plant::Put(std::string_view sName, std::string_view bytes) const {
    SimulatorProcess::Put(OnDriveC(sName), std::string(bytes));
}

std::optional<std::string> Plant::Bytes(std::string_view sName) const {
    return SimulatorProcess::Bytes(OnDriveC(sName));
}

void Plant::PutOnRobot(std::string_view sName, std::string_view bytes) const {
    SimulatorProcess::Put(simulator.Root() / sName, std::string(bytes));
}

std::optional<std::string> Plant::BytesOnRobot(std::string_view sName) const {
    return SimulatorProcess::Bytes(simulator.Root() / sName);
}

void Plant::AddEmptyDrive(char cLetter) const {
    fs::create_directory_symlink(simulator.Folder() / "no-medium",
                                 simulator.Folder() / "drives" / std::string(1, cLetter));
}

fs::path Plant::CreateCatalogue() const {
    fs::path path = OnDriveC("tqx/Data/orvo_tab.mdb");
    sqlite::CreateStore(path, FormatUnderTest());
    return path;
}

void Plant::StoreText(const std::string& sModule, const std::string& sKey,
                      const std::string& sText) const {
    ExecuteOn(Database(), "INSERT INTO Items (Module, KeyString) VALUES ('" + sModule + "', '" +
                              sKey +
                              "'); INSERT INTO Messages (Key_id, Language_id, String) VALUES "
                              "((SELECT max(Key_id) FROM Items), 99, '" +
                              sText + "');");
}

std::vector<std::string> Plant::Texts() const {
    std::vector<std::string> texts;
    for (const auto& row :
         QueryOn(Database(),
                 "SELECT KeyString || '=' || IFNULL(String, '<null>') FROM Items JOIN "
                 "Messages USING (Key_id) WHERE Language_id = 99 ORDER BY KeyString"))
        texts.push_back(row.front());
    return texts;
}

void Plant::WriteRegistry() const {
    std::string sText =
        "REGEDIT4\r\n\r\n[HKEY_LOCAL_MACHINE\\Software\\Orvo\\Version]\r\n"
        "\"InstallationDir\"=\"C:\\\\tqx\"\r\n";
    if (!m_sCustomer.empty()) sText += "\"Customer\"=\"" + m_sCustomer + "\"\r\n";
    if (m_bGerman)
        sText += "\r\n[HKEY_CURRENT_USER\\Software\\Orvo\\Database]\r\n\"Language\"=\"7\"\r\n";
    SimulatorProcess::Put(simulator.Folder() / "registry.reg", sText);
}

int Plant::Run(const std::function<void(memory::PlayedUser&, Form&)>& operate) {
    WriteRegistry();
    m_machine.BecomePlatform({});
    SetPlatform({.registry = &m_machine.registry,
                 .processes = &processes,
                 .locale = &m_machine.locale,
                 .desktop = &desktop,
                 .files = &m_machine.files,
                 .closedLibrary = &m_machine.closedLibrary,
                 .sCommandLine = {}});
    SetLinkLibrary(&m_library);
    SetView(&view);
    view.onEventLoop = [&] {
        Form& form = TheFrontEnd();
        memory::PlayedUser user(form);
        operate(user, form);
    };
    return RunProgram();
}

}  // namespace nomira::testing
