// The contract of the link library over the wire: the adapter with a real simulator behind it.
#include "adapters/contracts/LinkLibraryContract.h"
#include "adapters/rpc/Connection.h"
#include "adapters/rpc/RecordJson.h"
#include "adapters/rpc/RpcLinkLibrary.h"
#include "langtools/BasicText.h"
#include "testing/SimulatorProcess.h"

namespace nomira::testing {
namespace {

using rpc::Json;

class SimulatorRig {
  public:
    SimulatorRig() { std::filesystem::create_directory(m_simulator.Disk()); }

    LinkLibrary& Port() { return m_library; }
    void StopMiddleware() { m_simulator.Stop(); }
    void SetVariable(TextView sName, TextView sValue) {
        m_control.Call("sim.set", {{"name", rpc::ToWire(sName)}, {"value", rpc::ToWire(sValue)}});
    }
    Text Variable(TextView sName) {
        return rpc::FromWire(State().at("variables").at(rpc::ToWire(sName)).get<std::string>());
    }
    void PutProgram(TextView sPath, std::string_view bytes) {
        SimulatorProcess::Put(FileOf(sPath), bytes);
    }
    std::optional<std::string> Program(TextView sPath) {
        return SimulatorProcess::Bytes(FileOf(sPath));
    }
    Text DiskPath(TextView sName) { return Text(u"C:\\") + Text(sName); }
    void PutOnDisk(TextView sName, std::string_view bytes) {
        SimulatorProcess::Put(OnThisSystem(DiskPath(sName)), bytes);
    }
    std::string OnDisk(TextView sName) {
        return SimulatorProcess::Bytes(OnThisSystem(DiskPath(sName))).value_or("nothing");
    }
    std::vector<Text> Commands() {
        std::vector<Text> commands;
        const Json state = State();
        for (const Json& command : state.at("commands"))
            commands.push_back(rpc::FromWire(command.get<std::string>()));
        return commands;
    }
    void SendMessage(const MessageRecord& message) {
        m_control.Call("sim.message", {{"message", rpc::RecordToJson(message)}});
    }
    bool ServeUntil(const std::function<bool()>& done) {
        m_library.ServeEvents();
        while (!done()) {
            if (!m_library.WaitForEvents(std::chrono::seconds(20))) return false;
            m_library.ServeEvents();
        }
        return true;
    }

  private:
    Json State() { return m_control.Call("sim.state", Json::object()); }
    std::filesystem::path FileOf(TextView sPath) {
        return m_simulator.Root() / "R1" / rpc::ToWire(Replace(sPath, u"\\", u"/"));
    }
    std::filesystem::path OnThisSystem(TextView sPath) {
        return m_simulator.Disk() / rpc::ToWire(Mid(sPath, 4));
    }

    SimulatorProcess m_simulator{NOMIRA_SIMULATOR};
    rpc::Connection m_control{m_simulator.Socket()};
    rpc::RpcLinkLibrary m_library{m_simulator.Socket(),
                                  [this](TextView sPath) { return OnThisSystem(sPath); }};
};

INSTANTIATE_TYPED_TEST_SUITE_P(Rpc, LinkLibraryContract, SimulatorRig);

}  // namespace
}  // namespace nomira::testing
