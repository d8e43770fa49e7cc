// A plant for one scenario: the program from its entry to its end, on real files, a real database
// and the simulator as a process of its own; an operator plays at the form. Only the screen, the
// message boxes and the list of processes are in memory.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "adapters/memory/MemoryDesktop.h"
#include "adapters/memory/MemoryProcesses.h"
#include "adapters/memory/PlayedUser.h"
#include "adapters/memory/RecordingView.h"
#include "adapters/posix/PosixMachine.h"
#include "adapters/rpc/RpcLinkLibrary.h"
#include "adapters/sqlite/SqliteEngine.h"
#include "testing/SimulatorProcess.h"
#include "testing/TestDatabase.h"

namespace nomira::testing {

// A program that knows output 7 by an old name, and the same when the name is Pump.
inline constexpr const char* kProgram =
    "DEF a()\r\n;FOLD OUT 7 'old' State=TRUE;%{PE}\r\n$OUT[7]=TRUE\r\n;ENDFOLD\r\nEND\r\n";
inline constexpr const char* kRewritten =
    "DEF a()\r\n;FOLD OUT 7 'Pump' State=TRUE;%{PE}\r\n$OUT[7]=TRUE\r\n;ENDFOLD\r\nEND\r\n";

class Plant {
  public:
    // C:\tqx is the installation, with its folders Data and Roboter\TQX\R1, and the long-text
    // database is empty.
    Plant();
    ~Plant();
    Plant(const Plant&) = delete;
    Plant& operator=(const Plant&) = delete;

    // ---- Before the start ----

    // The customer in the registry; with one, and the middleware running, it is a controller.
    void UseCustomer(std::string sCustomer) { m_sCustomer = std::move(sCustomer); }
    // German, by its number 7.
    void UseGerman() { m_bGerman = true; }
    // The middleware's process is seen; the simulator runs in any case until it is stopped.
    void RunMiddleware() { processes.Add(u"C:\\tqx\\VEXON3.EXE"); }
    // A file below drive C.
    void Put(std::string_view sName, std::string_view bytes) const;
    // nullopt if it isn't there; so below.
    std::optional<std::string> Bytes(std::string_view sName) const;
    std::filesystem::path OnDriveC(std::string_view sName) const;
    // A file of the controller, below its root.
    void PutOnRobot(std::string_view sName, std::string_view bytes) const;
    std::optional<std::string> BytesOnRobot(std::string_view sName) const;
    // A drive letter without a medium.
    void AddEmptyDrive(char cLetter) const;
    // An item with its long text.
    void StoreText(const std::string& sModule, const std::string& sKey,
                   const std::string& sText) const;

    // ---- The run ----

    // Runs the program, and the operator's acts in its event loop. Its exit status.
    int Run(const std::function<void(memory::PlayedUser&, Form&)>& operate);

    std::filesystem::path Database() const { return OnDriveC("tqx/Data/orvo_con.mdb"); }
    // Makes an empty language catalogue, and gives its path.
    std::filesystem::path CreateCatalogue() const;

    // "KEY=TEXT" for each long text, by key; a Null text is as "<null>".
    std::vector<std::string> Texts() const;

    memory::MemoryDesktop desktop;
    memory::MemoryProcesses processes;
    memory::RecordingView view;
    SimulatorProcess simulator;

  private:
    void WriteRegistry() const;

    std::string m_sCustomer;
    bool m_bGerman = false;
    posix::PosixMachine m_machine;
    sqlite::SqliteEngine m_engine;
    rpc::RpcLinkLibrary m_library;
};

}  // namespace nomira::testing
