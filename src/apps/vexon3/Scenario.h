// What a simulator plays: the variables and programs that its controller has at the start, and what
// goes wrong or is sent when. docs/controller.md describes the file.
#pragma once

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "apps/vexon3/ScenarioEntry.h"
#include "apps/vexon3/Trigger.h"
#include "apps/vexon3/Variables.h"
#include "link/MessageRecord.h"

namespace nomira::simulator {

// What becomes of a call: one of these instead of the operation, or, with none of them, the
// operation itself after the delay.
struct Effect {
    std::chrono::milliseconds delay{0};
    std::optional<MessageRecord> failure;  // the operation fails with this record
    std::optional<std::string> nonsense;   // this line is the answer
    bool bDropNow = false;                 // the connection ends without an answer
    bool bDropMidway = false;              // half of the answer is sent, then the connection ends

    bool ReplacesAnswer() const { return failure || nonsense || bDropNow; }
};

struct Fault {
    Trigger trigger;
    Effect effect;
};

// What a consumer of messages is told.
struct AddedMessage {
    MessageRecord record;
};
struct AddedDialog {
    MessageRecord record;
};
struct WithdrawnMessage {
    std::int32_t nHandle;
};
using Told = std::variant<AddedMessage, AddedDialog, WithdrawnMessage>;

struct PlannedMessage {
    Trigger trigger;  // goes out behind the answer of this call
    Told told;
};

struct ProgramFile {
    Text sPath;  // below R1
    std::string sBytes;
};

struct Scenario {
    std::vector<Variable> variables;
    std::optional<std::filesystem::path> programFolder;  // copied below R1
    std::vector<ProgramFile> programs;
    std::vector<Fault> faults;
    std::vector<PlannedMessage> messages;
};

// Throws ScenarioError for a file that can't be read, is no JSON, or has an entry that can't be
// meant.
Scenario ReadScenario(const std::filesystem::path& file);
// The same for the file's bytes; `file` is its name, and paths in it go from its folder.
Scenario ParseScenario(std::string_view sBytes, const std::filesystem::path& file);

// One entry of "faults".
Fault ParseFault(const ScenarioEntry& entry);

}  // namespace nomira::simulator
