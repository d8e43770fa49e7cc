#include "apps/vexon3/Controller.h"

#include <algorithm>
#include <array>
#include <limits>
#include <utility>

#include "adapters/posix/NativeName.h"
#include "adapters/rpc/Base64.h"
#include "adapters/rpc/RecordJson.h"
#include "apps/vexon3/OperationFailed.h"
#include "langtools/BasicText.h"

namespace nomira::simulator {

using rpc::BytesMember;
using rpc::Json;
using rpc::NumberMember;
using rpc::StringMember;
using rpc::TextMember;
using rpc::WireError;

// An operation: its name, the class of the objects that have it, its parameters in the order in
// which the log has them, and what carries it out.
struct OperationRow {
    std::string_view sName;
    std::string_view sClass;  // empty for the operations of no object
    std::array<const char*, 3> parameters;
    Json (Controller::*run)(const Controller::Call&);
    enum Kind { Plain, Command, Own } kind = Plain;  // Own: the simulator's own, for tests

    static const OperationRow* Find(std::string_view sName);
    static const std::array<OperationRow, 22> kRows;
};

constexpr const char* kSyncVar = "LNK_TqxLib.SyncVar";
constexpr const char* kSyncFile = "LNK_TqxLib.SyncFile";
constexpr const char* kSyncSelect = "LNK_TqxLib.SyncSelect";
constexpr const char* kSyncIo = "LNK_TqxLib.SyncIo";
constexpr const char* kAsyncVar = "LNK_TqxLib.AsyncVar";
constexpr const char* kAdviseMessage = "LNK_TqxLib.AdviseMessage";
constexpr std::string_view kAnyObject = "*";

// clang-format off
const std::array<OperationRow, 22> OperationRow::kRows{{
    {"CreateLinkObject", "", {"class", "connection"}, &Controller::CreateLinkObject},
    {"Release", kAnyObject, {}, &Controller::Release},
    {"ReadVar", kSyncVar, {"name"}, &Controller::ReadVar},
    {"WriteVar", kSyncVar, {"name", "value"}, &Controller::WriteVar},
    {"ListDirectory", kSyncFile, {"path", "first", "second"}, &Controller::ListDirectory},
    {"DeleteFile", kSyncFile, {"path", "flag"}, &Controller::DeleteFile},
    {"CopyFile", kSyncFile, {"source", "destination", "flags"}, &Controller::CopyFile},
    {"ResolvePath", kSyncFile, {"path"}, &Controller::ResolvePath},
    {"WriteFileFromMemory", kSyncFile, {"destination", "flags"}, &Controller::WriteFileFromMemory},
    {"ReadFileToMemory", kSyncFile, {"path", "flags"}, &Controller::ReadFileToMemory},
    {"StopProgram", kSyncSelect, {"level"}, &Controller::StopProgram, Command},
    {"CancelProgram", kSyncSelect, {"level"}, &Controller::CancelProgram, Command},
    {"SelectProgram", kSyncSelect, {"path", "parameters", "flag"}, &Controller::SelectProgram, Command},
    {"RestartIo", kSyncIo, {"command", "bus", "last"}, &Controller::RestartIo, Command},
    {"InfoOn", kAsyncVar, {"id", "name", "cycle"}, &Controller::InfoOn},
    {"InfoOff", kAsyncVar, {"id"}, &Controller::InfoOff},
    {"Advise", kAdviseMessage, {"filter"}, &Controller::Advise},
    {"ConfirmAllMessages", kAdviseMessage, {"first", "second"}, &Controller::ConfirmAllMessages},
    {"sim.state", "", {}, &Controller::State, Own},
    {"sim.set", "", {"name", "value"}, &Controller::Set, Own},
    {"sim.message", "", {}, &Controller::SendMessage, Own},
    {"sim.fault", "", {}, &Controller::AddFault, Own},
}};
// clang-format on

namespace {

constexpr std::string_view kClasses[] = {kSyncVar, kSyncFile, "LNK_TqxLib.SyncEdit", kSyncSelect,
                                         kSyncIo,  kAsyncVar, kAdviseMessage};

constexpr std::size_t kHistory = 1000;

void Keep(std::deque<std::string>& history, std::string sEntry) {
    history.push_back(std::move(sEntry));
    if (history.size() > kHistory) history.pop_front();
}

std::string LineOfError(const Json& id, int nCode, const std::string& sWords, Json data = nullptr) {
    Json error{{"code", nCode}, {"message", sWords}};
    if (!data.is_null()) error["data"] = std::move(data);
    return rpc::LineOf({{"jsonrpc", "2.0"}, {"id", id}, {"error", std::move(error)}});
}

std::string LineOfFailure(const Json& id, const MessageRecord& record) {
    return LineOfError(id, rpc::kOperationFailed, rpc::ToWire(record.bstrCause),
                       rpc::RecordToJson(record));
}

// The arguments as the log has them: "C:\x.src, TQX:\R1\x.src, 64".
std::string ArgumentsOf(const OperationRow& row, const Json& params) {
    std::string sArguments;
    for (const char* sName : row.parameters) {
        if (sName == nullptr) break;
        if (sName != row.parameters[0]) sArguments += ", ";
        const auto found = params.find(sName);
        if (found == params.end()) continue;
        sArguments += found->is_string() ? found->get<std::string>() : found->dump();
    }
    return sArguments;
}

bool IsId(const Json& id) {
    return id.is_number_integer() || id.is_string() || id.is_null();
}

Json Done() {
    return Json::object();
}

Json Strings(const std::vector<Text>& texts) {
    Json strings = Json::array();
    for (const Text& sText : texts)
        strings.push_back(rpc::ToWire(sText));
    return strings;
}

}  // namespace

const OperationRow* OperationRow::Find(std::string_view sName) {
    const auto found = std::ranges::find(kRows, sName, &OperationRow::sName);
    return found == kRows.end() ? nullptr : &*found;
}

std::vector<std::string> OperationNames() {
    std::vector<std::string> names;
    for (const OperationRow& row : OperationRow::kRows)
        if (row.kind != OperationRow::Own) names.emplace_back(row.sName);
    return names;
}

Controller::Controller(const FileSpace& files, const Scenario& scenario, Send send, Log log)
    : m_files(files),
      m_faults(scenario.faults),
      m_messages(scenario.messages),
      m_send(std::move(send)),
      m_log(std::move(log)) {
    for (const Variable& variable : scenario.variables)
        m_variables.Set(variable.sName, variable.sValue);
}

// ---- From a line to an answer ----

Reaction Controller::Handle(ClientId client, std::string_view sLine) {
    try {
        return HandleRequest(client, rpc::ParseLine(sLine));
    } catch (const WireError& error) {
        return {LineOfError(nullptr, rpc::kNotJson, error.what())};
    }
}

Reaction Controller::HandleRequest(ClientId client, const Json& request) {
    const bool bObject = request.is_object();
    const Json id = bObject && request.contains("id") ? request["id"] : Json();
    const bool bMethod = bObject && request.contains("method") && request["method"].is_string();
    const bool bVersion = bObject && request.contains("jsonrpc") && request["jsonrpc"] == "2.0";
    if (!bMethod || !bVersion || !IsId(id))
        return {LineOfError(IsId(id) ? id : Json(), rpc::kNoRequest, "this is no request")};

    const Json nothing = Json::object();
    const Json& params = request.contains("params") ? request["params"] : nothing;
    Call call{client, request["method"].get<std::string>(), params, 0};
    const OperationRow* row = OperationRow::Find(call.sOperation);
    Reaction reaction;
    try {
        if (row == nullptr) {
            reaction.sAnswer = LineOfError(id, rpc::kNoSuchMethod, "there is no such method");
        } else {
            if (!params.is_object()) throw WireError("\"params\" is no object");
            RequireObject(call, *row);
            reaction = Answer(call, *row, id);
        }
    } catch (const WireError& error) {
        LogOf(client, std::string("refused: ") + error.what());
        reaction = {LineOfError(id, rpc::kBadParams, error.what())};
    }
    // A notification gets no answer, but for the fate that the scenario has for it.
    if (!request.contains("id")) reaction.sAnswer.clear();
    return reaction;
}

void Controller::RequireObject(Call& call, const OperationRow& row) const {
    if (row.sClass.empty()) return;
    call.nObject = NumberMember(call.params, "object");
    const auto found = m_objects.find(call.nObject);
    const bool bFits = found != m_objects.end() && found->second.client == call.client &&
                       (row.sClass == kAnyObject || row.sClass == found->second.sClass);
    if (!bFits) throw WireError("there is no such object with that operation");
}

Reaction Controller::Answer(const Call& call, const OperationRow& row, const Json& id) {
    if (row.kind == OperationRow::Own) return {rpc::LineOf(Run(call, row, id))};
    const std::string sArguments = ArgumentsOf(row, call.params);
    const Text sSeen = rpc::FromWire(sArguments);
    const Effect effect = EffectOn(call, sSeen);
    Keep(m_calls, call.sOperation + "(" + sArguments + ")");

    Reaction reaction{{}, effect.delay, effect.bDropNow || effect.bDropMidway};
    if (effect.ReplacesAnswer()) {
        if (effect.nonsense) reaction.sAnswer = *effect.nonsense + '\n';
        if (effect.failure) reaction.sAnswer = LineOfFailure(id, *effect.failure);
        Note(call, sArguments, "as the scenario says");
        return reaction;
    }
    if (row.kind == OperationRow::Command) Keep(m_commands, m_calls.back());
    try {
        reaction.sAnswer = rpc::LineOf(Run(call, row, id));
        if (reaction.sAnswer.size() > rpc::kMaxLine)
            throw OperationFailed(Trouble::TooLong, rpc::FromWire(call.sOperation));
        Note(call, sArguments, "done");
        SendPlanned(call, sSeen);
    } catch (const OperationFailed& failed) {
        reaction.sAnswer = LineOfFailure(id, failed.Record());
        Note(call, sArguments, "failed: " + rpc::ToWire(failed.Record().bstrCause));
    }
    if (effect.bDropMidway) reaction.sAnswer.resize(reaction.sAnswer.size() / 2);
    return reaction;
}

Json Controller::Run(const Call& call, const OperationRow& row, const Json& id) {
    return {{"jsonrpc", "2.0"}, {"id", id}, {"result", (this->*row.run)(call)}};
}

// Every fault counts the call; the delays add up, and of the others the first one is taken.
Effect Controller::EffectOn(const Call& call, TextView sArguments) {
    Effect effect;
    for (Fault& fault : m_faults) {
        if (!fault.trigger.Sees(call.sOperation, sArguments)) continue;
        const auto delay = effect.delay + fault.effect.delay;
        if (!effect.ReplacesAnswer() && !effect.bDropMidway) effect = fault.effect;
        effect.delay = delay;
    }
    return effect;
}

void Controller::SendPlanned(const Call& call, TextView sArguments) {
    for (PlannedMessage& planned : m_messages)
        if (planned.trigger.Sees(call.sOperation, sArguments)) Tell(planned.told);
}

void Controller::Note(const Call& call, const std::string& sArguments,
                      const std::string& sOutcome) {
    LogOf(call.client, call.sOperation + "(" + sArguments + "): " + sOutcome);
}

// One line each, whatever stands in it.
void Controller::LogOf(ClientId client, const std::string& sWords) {
    std::string sLine = "client " + std::to_string(client) + ": " + sWords;
    for (char& c : sLine)
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) c = '?';
    m_log(sLine);
}

void Controller::Forget(ClientId client) {
    std::erase_if(m_objects, [client](const auto& row) { return row.second.client == client; });
    std::erase_if(m_watches, [client](const Watch& watch) { return watch.client == client; });
    std::erase_if(m_consumers, [client](const auto& row) { return row.second == client; });
}

// ---- To the programs, of its own accord ----

void Controller::Notify(ClientId client, const char* sMethod, Json params) {
    m_send(client,
           rpc::LineOf({{"jsonrpc", "2.0"}, {"method", sMethod}, {"params", std::move(params)}}));
}

void Controller::Report(const Watch& watch) {
    Notify(watch.client, "OnSetInfo",
           {{"object", watch.nObject},
            {"id", watch.nId},
            {"value", rpc::ToWire(m_variables.Read(watch.sName))}});
}

void Controller::SetVariable(TextView sName, TextView sValue) {
    m_variables.Set(sName, sValue);
    for (const Watch& watch : m_watches)
        if (EqualNoCase(watch.sName, sName)) Report(watch);
}

void Controller::Tell(const Told& told) {
    for (const auto& [nObject, client] : m_consumers) {
        const Json object{{"object", nObject}};
        Json params = object;
        if (const auto* pMessage = std::get_if<AddedMessage>(&told)) {
            params["message"] = rpc::RecordToJson(pMessage->record);
            Notify(client, "OnAddMessage", std::move(params));
        } else if (const auto* pDialog = std::get_if<AddedDialog>(&told)) {
            params["dialog"] = rpc::RecordToJson(pDialog->record);
            Notify(client, "OnAddDialog", std::move(params));
        } else {
            params["handle"] = std::get<WithdrawnMessage>(told).nHandle;
            Notify(client, "OnSubMessage", std::move(params));
        }
    }
}

// ---- Operations ----

Json Controller::CreateLinkObject(const Call& call) {
    const std::string sClass = StringMember(call.params, "class");
    StringMember(call.params, "connection");
    if (std::ranges::count(kClasses, sClass) == 0) throw WireError("there is no such class");
    if (m_nLastObject == std::numeric_limits<std::int32_t>::max())
        throw WireError("there are no more numbers for objects");
    m_objects[++m_nLastObject] = {call.client, sClass};
    return {{"object", m_nLastObject}};
}

Json Controller::Release(const Call& call) {
    m_objects.erase(call.nObject);
    m_consumers.erase(call.nObject);
    std::erase_if(m_watches, [&](const Watch& watch) { return watch.nObject == call.nObject; });
    return Done();
}

Json Controller::ReadVar(const Call& call) {
    return {{"value", rpc::ToWire(m_variables.Read(TextMember(call.params, "name")))}};
}

Json Controller::WriteVar(const Call& call) {
    const Text sName = TextMember(call.params, "name"), sValue = TextMember(call.params, "value");
    m_variables.Write(sName, sValue);
    SetVariable(sName, sValue);
    return Done();
}

Json Controller::ListDirectory(const Call& call) {
    NumberMember(call.params, "first");
    NumberMember(call.params, "second");
    return {{"names", Strings(m_files.List(TextMember(call.params, "path")))}};
}

Json Controller::DeleteFile(const Call& call) {
    NumberMember(call.params, "flag");
    m_files.Delete(TextMember(call.params, "path"));
    return Done();
}

// With data, from the program's disk to here; without, from here to there.
Json Controller::CopyFile(const Call& call) {
    const Text sSource = TextMember(call.params, "source");
    const Text sDestination = TextMember(call.params, "destination");
    NumberMember(call.params, "flags");
    if (!call.params.contains("data")) return {{"data", rpc::ToBase64(m_files.Read(sSource))}};
    m_files.Write(sDestination, BytesMember(call.params, "data"));
    return Done();
}

Json Controller::ResolvePath(const Call& call) {
    return {{"path", rpc::ToWire(m_files.Resolve(TextMember(call.params, "path")))}};
}

Json Controller::WriteFileFromMemory(const Call& call) {
    NumberMember(call.params, "flags");
    const std::string sBytes = BytesMember(call.params, "data");
    m_files.Write(TextMember(call.params, "destination"), sBytes);
    return Done();
}

Json Controller::ReadFileToMemory(const Call& call) {
    NumberMember(call.params, "flags");
    return {{"data", rpc::ToBase64(m_files.Read(TextMember(call.params, "path")))}};
}

Json Controller::StopProgram(const Call& call) {
    NumberMember(call.params, "level");
    return Done();
}

Json Controller::CancelProgram(const Call& call) {
    NumberMember(call.params, "level");
    m_sSelected.clear();
    return Done();
}

Json Controller::SelectProgram(const Call& call) {
    StringMember(call.params, "parameters");
    NumberMember(call.params, "flag");
    m_sSelected = StringMember(call.params, "path");
    return Done();
}

Json Controller::RestartIo(const Call& call) {
    for (const char* sName : {"command", "bus", "last"})
        NumberMember(call.params, sName);
    return Done();
}

Json Controller::InfoOn(const Call& call) {
    NumberMember(call.params, "cycle");
    const Watch watch{call.client, call.nObject, NumberMember(call.params, "id"),
                      TextMember(call.params, "name")};
    m_variables.Read(watch.sName);
    m_watches.push_back(watch);
    Report(watch);
    return Done();
}

Json Controller::InfoOff(const Call& call) {
    const std::int32_t nId = NumberMember(call.params, "id");
    const auto nGone = std::erase_if(m_watches, [&](const Watch& watch) {
        return watch.nObject == call.nObject && watch.nId == nId;
    });
    if (nGone == 0) throw OperationFailed(Trouble::NoSuchWatch, DecimalText(nId));
    return Done();
}

Json Controller::Advise(const Call& call) {
    NumberMember(call.params, "filter");
    m_consumers[call.nObject] = call.client;
    return Done();
}

Json Controller::ConfirmAllMessages(const Call& call) {
    NumberMember(call.params, "first");
    NumberMember(call.params, "second");
    return Done();
}

// ---- For tests and people ----

Json Controller::State(const Call&) {
    Json variables = Json::object();
    for (const Variable& variable : m_variables.All())
        variables[rpc::ToWire(variable.sName)] = rpc::ToWire(variable.sValue);
    Json objects = Json::array();
    for (const auto& [nObject, object] : m_objects)
        objects.push_back(
            {{"object", nObject}, {"class", object.sClass}, {"client", object.client}});
    Json watches = Json::array();
    for (const Watch& watch : m_watches)
        watches.push_back(
            {{"object", watch.nObject}, {"id", watch.nId}, {"name", rpc::ToWire(watch.sName)}});
    return {{"variables", std::move(variables)},
            {"files", Strings(m_files.AllFiles())},
            {"objects", std::move(objects)},
            {"watches", std::move(watches)},
            {"consumers", m_consumers.size()},
            {"selected", m_sSelected},
            {"commands", m_commands},
            {"calls", m_calls}};
}

Json Controller::Set(const Call& call) {
    SetVariable(TextMember(call.params, "name"), TextMember(call.params, "value"));
    return Done();
}

Json Controller::SendMessage(const Call& call) {
    Tell(AddedMessage{rpc::RecordFromJson(rpc::Member(call.params, "message"))});
    return Done();
}

Json Controller::AddFault(const Call& call) {
    try {
        m_faults.push_back(ParseFault(ScenarioEntry("sim.fault", "", call.params)));
    } catch (const ScenarioError& error) {
        throw WireError(error.what());
    }
    return Done();
}

}  // namespace nomira::simulator
