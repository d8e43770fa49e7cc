// The controller and its middleware, without the sockets: it takes requests as lines and says what
// becomes of each. docs/controller.md tells the methods.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "adapters/rpc/Wire.h"
#include "apps/vexon3/FileSpace.h"
#include "apps/vexon3/Scenario.h"
#include "apps/vexon3/Variables.h"
#include "langtools/Text.h"

namespace nomira::simulator {

// One connection of a program; given by the server, never twice.
using ClientId = std::uint64_t;

struct OperationRow;

// What the server does about a request.
struct Reaction {
    std::string sAnswer;  // lines with their ends; empty for none
    std::chrono::milliseconds delay{0};
    bool bDrop = false;  // end the connection behind the answer
};

// The operations that a scenario can name.
std::vector<std::string> OperationNames();

class Controller {
  public:
    // Sends a line of its own accord to a client.
    using Send = std::function<void(ClientId, const std::string& sLine)>;
    // Takes a line of the log, without its end.
    using Log = std::function<void(const std::string& sLine)>;

    // The files must outlive the controller. The scenario's programs are not looked at.
    Controller(const FileSpace& files, const Scenario& scenario, Send send, Log log);

    // `sLine` without its end. Never throws for what stands in it.
    Reaction Handle(ClientId client, std::string_view sLine);

    // The client has gone, and all that was its.
    void Forget(ClientId client);

  private:
    friend struct OperationRow;

    struct Object {
        ClientId client;
        std::string sClass;
    };
    struct Watch {
        ClientId client;
        std::int32_t nObject;
        std::int32_t nId;
        Text sName;
    };
    // One request that is understood: who wants which operation.
    struct Call {
        ClientId client;
        std::string sOperation;
        const rpc::Json& params;
        std::int32_t nObject;  // 0 for the operations that belong to none
    };

    Reaction HandleRequest(ClientId client, const rpc::Json& request);
    Reaction Answer(const Call& call, const OperationRow& row, const rpc::Json& id);
    rpc::Json Run(const Call& call, const OperationRow& row, const rpc::Json& id);
    void RequireObject(Call& call, const OperationRow& row) const;
    Effect EffectOn(const Call& call, TextView sArguments);
    void SendPlanned(const Call& call, TextView sArguments);
    void Note(const Call& call, const std::string& sArguments, const std::string& sOutcome);

    void LogOf(ClientId client, const std::string& sWords);

    void SetVariable(TextView sName, TextView sValue);
    void Report(const Watch& watch);
    void Notify(ClientId client, const char* sMethod, rpc::Json params);
    void Tell(const Told& told);

    // The operations; each returns its result.
    rpc::Json CreateLinkObject(const Call& call);
    rpc::Json Release(const Call& call);
    rpc::Json ReadVar(const Call& call);
    rpc::Json WriteVar(const Call& call);
    rpc::Json ListDirectory(const Call& call);
    rpc::Json DeleteFile(const Call& call);
    rpc::Json CopyFile(const Call& call);
    rpc::Json ResolvePath(const Call& call);
    rpc::Json WriteFileFromMemory(const Call& call);
    rpc::Json ReadFileToMemory(const Call& call);
    rpc::Json StopProgram(const Call& call);
    rpc::Json CancelProgram(const Call& call);
    rpc::Json SelectProgram(const Call& call);
    rpc::Json RestartIo(const Call& call);
    rpc::Json InfoOn(const Call& call);
    rpc::Json InfoOff(const Call& call);
    rpc::Json Advise(const Call& call);
    rpc::Json ConfirmAllMessages(const Call& call);
    rpc::Json State(const Call& call);
    rpc::Json Set(const Call& call);
    rpc::Json SendMessage(const Call& call);
    rpc::Json AddFault(const Call& call);

    const FileSpace& m_files;
    Variables m_variables;
    std::vector<Fault> m_faults;
    std::vector<PlannedMessage> m_messages;
    Send m_send;
    Log m_log;

    std::map<std::int32_t, Object> m_objects;
    std::int32_t m_nLastObject = 0;
    std::vector<Watch> m_watches;
    std::map<std::int32_t, ClientId> m_consumers;  // by their object
    std::string m_sSelected;
    std::deque<std::string> m_calls;     // the last ones
    std::deque<std::string> m_commands;  // those of programs and I/O among all, the last ones
};

}  // namespace nomira::simulator
