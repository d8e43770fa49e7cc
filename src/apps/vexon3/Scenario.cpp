#include "apps/vexon3/Scenario.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "adapters/rpc/LocalFile.h"
#include "adapters/rpc/RecordJson.h"
#include "adapters/rpc/Wire.h"
#include "apps/vexon3/Controller.h"
#include "apps/vexon3/OperationFailed.h"
#include "langtools/BasicText.h"
#include "langtools/CodePage.h"

namespace nomira::simulator {
namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

MessageRecord RecordOf(const ScenarioEntry& entry) {
    try {
        return rpc::RecordFromJson(entry.Value());
    } catch (const rpc::WireError& error) {
        entry.Fail(std::string(error.what()) + "; write it as docs/controller.md shows records");
    }
}

std::string OperationOf(const ScenarioEntry& entry) {
    std::string sOperation = entry.String();
    const std::vector<std::string> known = OperationNames();
    if (std::ranges::count(known, sOperation) != 0) return sOperation;
    std::string sKnown;
    for (const std::string& sName : known)
        sKnown += (sKnown.empty() ? "" : ", ") + sName;
    entry.Fail("is no operation; write one of " + sKnown);
}

Trigger TriggerOf(const ScenarioEntry& entry) {
    const auto match = entry.Find("match");
    const auto call = entry.Find("call");
    return {OperationOf(entry.At("on")), match ? match->Text() : Text(u"*"),
            call ? std::optional(call->NumberFrom(1)) : std::nullopt};
}

void SetDrop(const ScenarioEntry& entry, Effect& effect) {
    const std::string sWhen = entry.String();
    effect.bDropNow = sWhen == "now";
    effect.bDropMidway = sWhen == "midway";
    if (!effect.bDropNow && !effect.bDropMidway) entry.Fail("must be \"now\" or \"midway\"");
}

std::string LineOfNonsense(const ScenarioEntry& entry) {
    std::string sLine = entry.String();
    if (sLine.find('\n') != std::string::npos) entry.Fail("must be one line; drop the line feed");
    return sLine;
}

Effect EffectOf(const ScenarioEntry& entry) {
    Effect effect;
    const auto delay = entry.Find("delay");
    if (delay) effect.delay = std::chrono::milliseconds(delay->NumberFrom(0));
    int nInstead = 0;
    if (const auto fail = entry.Find("fail"); fail && ++nInstead > 0)
        effect.failure =
            fail->Value().is_string() ? RecordAsWritten(fail->Text()) : RecordOf(*fail);
    if (const auto drop = entry.Find("drop"); drop && ++nInstead > 0) SetDrop(*drop, effect);
    if (const auto nonsense = entry.Find("nonsense"); nonsense && ++nInstead > 0)
        effect.nonsense = LineOfNonsense(*nonsense);
    if (nInstead > 1 || (nInstead == 0 && !delay))
        entry.Fail("needs one of \"fail\", \"drop\" and \"nonsense\", or a \"delay\" alone");
    return effect;
}

Told ToldOf(const ScenarioEntry& entry) {
    const auto message = entry.Find("message"), dialog = entry.Find("dialog"),
               withdraw = entry.Find("withdraw");
    if (message.has_value() + dialog.has_value() + withdraw.has_value() != 1)
        entry.Fail("needs exactly one of \"message\", \"dialog\" and \"withdraw\"");
    if (message) return AddedMessage{RecordOf(*message)};
    if (dialog) return AddedDialog{RecordOf(*dialog)};
    return WithdrawnMessage{withdraw->NumberFrom(0)};
}

PlannedMessage MessageOf(const ScenarioEntry& entry) {
    entry.RequireObject({"on", "match", "call", "message", "dialog", "withdraw"});
    return {TriggerOf(entry), ToldOf(entry)};
}

Text ValueOf(const ScenarioEntry& entry) {
    if (entry.Value().is_number_integer()) return FromAscii(entry.Value().dump());
    if (!entry.Value().is_string()) entry.Fail("must be a text, in quotes, or a whole number");
    return entry.Text();
}

// A text, or a list of lines; on the disk it is in the controllers' 8-bit page.
std::string BytesOf(const ScenarioEntry& entry) {
    if (!entry.Value().is_array()) return Windows1252().Encode(entry.Text());
    std::string sBytes;
    for (const ScenarioEntry& line : entry.Elements())
        sBytes += Windows1252().Encode(line.Text()) + "\r\n";
    return sBytes;
}

void ReadPrograms(const ScenarioEntry& entry, const std::filesystem::path& file,
                  Scenario& scenario) {
    entry.RequireObject({"folder", "files"});
    if (const auto folder = entry.Find("folder")) {
        scenario.programFolder = file.parent_path() / folder->String();
        if (!std::filesystem::is_directory(*scenario.programFolder))
            folder->Fail("there is no folder " + scenario.programFolder->string() +
                         "; name one, from the scenario's own folder on");
    }
    if (const auto files = entry.Find("files"))
        for (const auto& [sPath, text] : files->Members())
            scenario.programs.push_back({rpc::FromWire(sPath), BytesOf(text)});
}

nlohmann::json ParseJson(std::string_view sBytes, const std::string& sFile) {
    if (sBytes.starts_with(kByteOrderMark)) sBytes.remove_prefix(kByteOrderMark.size());
    try {
        return rpc::Json::parse(sBytes.begin(), sBytes.end());
    } catch (const rpc::Json::parse_error& error) {
        const auto nTo = std::min<std::size_t>(error.byte, sBytes.size());
        const auto nLine = std::ranges::count(sBytes.substr(0, nTo), '\n') + 1;
        throw ScenarioError(sFile + ":" + std::to_string(nLine) +
                            ": this is no JSON from here on; look for a missing quote, comma or "
                            "brace just ahead");
    }
}

}  // namespace

Fault ParseFault(const ScenarioEntry& entry) {
    entry.RequireObject({"on", "match", "call", "delay", "fail", "drop", "nonsense"});
    return {TriggerOf(entry), EffectOf(entry)};
}

Scenario ParseScenario(std::string_view sBytes, const std::filesystem::path& file) {
    const nlohmann::json json = ParseJson(sBytes, file.string());
    const ScenarioEntry whole(file.string(), "", json);
    whole.RequireObject({"variables", "programs", "faults", "messages"});
    Scenario scenario;
    if (const auto variables = whole.Find("variables"))
        for (const auto& [sName, value] : variables->Members())
            scenario.variables.push_back({rpc::FromWire(sName), ValueOf(value)});
    if (const auto programs = whole.Find("programs")) ReadPrograms(*programs, file, scenario);
    if (const auto faults = whole.Find("faults"))
        for (const ScenarioEntry& fault : faults->Elements())
            scenario.faults.push_back(ParseFault(fault));
    if (const auto messages = whole.Find("messages"))
        for (const ScenarioEntry& message : messages->Elements())
            scenario.messages.push_back(MessageOf(message));
    return scenario;
}

Scenario ReadScenario(const std::filesystem::path& file) {
    std::string sBytes;
    try {
        sBytes = rpc::ReadLocalFile(file, rpc::kMaxLine);
    } catch (const std::system_error& error) {
        throw ScenarioError(file.string() + ": can't be read (" + error.code().message() +
                            "); name a scenario file");
    }
    return ParseScenario(sBytes, file);
}

}  // namespace nomira::simulator
