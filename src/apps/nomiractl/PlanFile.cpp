#include "apps/nomiractl/PlanFile.h"

#include <fmt/format.h>

#include <fstream>
#include <system_error>
#include <utility>

#include "apps/nomiractl/Refusal.h"
#include "langtools/Utf8.h"

namespace nomira::companion {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

constexpr int kVersion = 1;

bool IsUtf8(std::string_view bytes) {
    const Text sText = FromUtf8(bytes);
    for (std::size_t n = 0; n < sText.size(); ++n) {
        if ((sText[n] & 0xF800) != 0xD800) continue;
        const bool bPair = (sText[n] & 0xFC00) == 0xD800 && n + 1 < sText.size() &&
                           (sText[n + 1] & 0xFC00) == 0xDC00;
        if (!bPair) return false;
        ++n;
    }
    return ToUtf8(sText) == bytes;
}

Json Packed(const std::string& bytes) {
    if (IsUtf8(bytes)) return bytes;
    Text sWide;
    for (const char c : bytes)
        sWide += static_cast<unsigned char>(c);
    return {{"bytes", ToUtf8(sWide)}};
}

std::string Unpacked(const Json& json) {
    if (json.is_string()) return json.get<std::string>();
    std::string bytes;
    for (const char16_t c : FromUtf8(json.at("bytes").get<std::string>()))
        bytes += static_cast<char>(c);
    return bytes;
}

Json Packed(const std::optional<Text>& sText) {
    return sText ? Packed(ToUtf8(*sText)) : Json();
}

std::optional<Text> TextOf(const Json& json) {
    if (json.is_null()) return std::nullopt;
    return FromUtf8(Unpacked(json));
}

Json AsJson(const std::optional<ItemRow>& row) {
    if (!row) return {};
    Json json{{"id", row->nKeyId}, {"module", Packed(row->sModule)}, {"key", Packed(row->sKey)}};
    json["messages"] = Json::array();
    for (const MessageRow& message : row->messages)
        json["messages"].push_back(Json::array({message.nLanguage, Packed(message.sText)}));
    return json;
}

std::optional<ItemRow> ItemOf(const Json& json) {
    if (json.is_null()) return std::nullopt;
    ItemRow row{json.at("id"), TextOf(json.at("module")), TextOf(json.at("key")), {}};
    for (const Json& message : json.at("messages"))
        row.messages.push_back({message.at(0), TextOf(message.at(1))});
    return row;
}

Json AsJson(const ProgramChange& program) {
    Json json{{"file", Packed(program.file.string())},
              {"before", AsText(program.before)},
              {"after", AsText(program.after)}};
    if (const auto& state = program.state)
        json["state"] = Json::array(
            {state->nDevice, state->nInode, state->nMode, state->nSeconds, state->nNanoseconds});
    json["changes"] = Json::array();
    for (const BytesChange& piece : program.pieces)
        json["changes"].push_back(
            Json::array({piece.nLine, piece.nPlace, Packed(piece.sOld), Packed(piece.sNew)}));
    return json;
}

Fingerprint RequiredFingerprint(const Json& json) {
    const auto fingerprint = FingerprintFromText(json.get<std::string>());
    if (!fingerprint) throw Refusal("no fingerprint");
    return *fingerprint;
}

ProgramChange ProgramOf(const Json& json) {
    ProgramChange program{Unpacked(json.at("file")),
                          RequiredFingerprint(json.at("before")),
                          RequiredFingerprint(json.at("after")),
                          {},
                          {}};
    if (json.contains("state")) {
        const Json& state = json.at("state");
        program.state = FileState{state.at(0), state.at(1), state.at(2), state.at(3), state.at(4)};
    }
    for (const Json& piece : json.at("changes"))
        program.pieces.push_back(
            {piece.at(0), piece.at(1), Unpacked(piece.at(2)), Unpacked(piece.at(3))});
    return program;
}

Json AsJson(const PlanCounts& counts) {
    return {{"added", counts.nAdded},
            {"changed", counts.nChanged},
            {"removed", counts.nRemoved},
            {"programs", counts.nPrograms},
            {"lines", counts.nLines}};
}

Json FullHead(const PlanHead& head, const Plan& plan) {
    Json full = head;
    full["version"] = kVersion;
    full["command"] = Json::array();
    for (const std::string& sWord : plan.command)
        full["command"].push_back(Packed(sWord));
    full["database"] = Packed(plan.database.string());
    if (plan.databaseState) full["database_state"] = AsText(*plan.databaseState);
    if (plan.nUndoes) full["undoes"] = *plan.nUndoes;
    full["counts"] = AsJson(Count(plan));
    return full;
}

void TakeLine(Plan& plan, const Json& line) {
    const Json& value = line.begin().value();
    const std::string& sWhat = line.begin().key();
    if (sWhat == "input")
        plan.inputs.push_back({Unpacked(value.at("file")), RequiredFingerprint(value.at("state"))});
    else if (sWhat == "item")
        plan.items.push_back(
            {ItemOf(value.at("before")), ItemOf(value.at("after")), value.at("line")});
    else if (sWhat == "program")
        plan.programs.push_back(ProgramOf(value));
    else if (sWhat == "note")
        plan.notes.push_back({Unpacked(value.at("file")), value.at("line"), value.at("reason"),
                              TextOf(value.at("what")).value_or(Text())});
    else
        throw Refusal("an unknown line");
}

Json RequiredHead(std::istream& in) {
    std::string sLine;
    if (!std::getline(in, sLine)) throw Refusal("an empty file");
    Json head = Json::parse(sLine);
    if (!head.contains("nomiractl") || head.at("version") != kVersion)
        throw Refusal("of another version");
    return head;
}

PlanOnDisk ReadLines(std::istream& in) {
    PlanOnDisk file{RequiredHead(in), {}};
    TakePlanHead(file.plan, file.head);
    std::size_t nLines = 1;
    for (std::string sLine; std::getline(in, sLine); ++nLines) {
        const Json line = Json::parse(sLine);
        if (!line.contains("end")) {
            TakeLine(file.plan, line);
            continue;
        }
        if (line.at("end") != nLines) break;
        return file;
    }
    throw Refusal("it is not whole");
}

// Whatever is wrong with the file, in the words of its user.
template <typename Work>
auto InPlanWords(const fs::path& file, Work work) {
    std::ifstream in(file, std::ios::binary);
    std::error_code ignored;
    if (!in || fs::is_directory(file, ignored))
        throw Refusal(fmt::format("{}: can't be read", file.string()), ExitCode::Files);
    try {
        return work(in);
    } catch (const Json::exception&) {
        throw Refusal(
            fmt::format("{}: no plan that can be used: its lines are not a plan's", file.string()));
    } catch (const std::exception& error) {
        throw Refusal(fmt::format("{}: no plan that can be used: {}", file.string(), error.what()));
    }
}

}  // namespace

void WritePlan(std::ostream& out, const PlanHead& head, const Plan& plan) {
    std::size_t nLines = 0;
    const auto write = [&](const Json& line) {
        out << line.dump() << '\n';
        ++nLines;
    };
    write(FullHead(head, plan));
    for (const PlanInput& input : plan.inputs)
        write({{"input",
                {{"file", Packed(input.file.string())}, {"state", AsText(input.fingerprint)}}}});
    for (const ItemChange& item : plan.items)
        write({{"item",
                {{"line", item.nLine},
                 {"before", AsJson(item.before)},
                 {"after", AsJson(item.after)}}}});
    for (const ProgramChange& program : plan.programs)
        write({{"program", AsJson(program)}});
    for (const PlanNote& note : plan.notes)
        write({{"note",
                {{"file", Packed(note.sFile)},
                 {"line", note.nLine},
                 {"reason", note.sReason},
                 {"what", Packed(std::optional(note.sWhat))}}}});
    write({{"end", nLines}});
}

PlanOnDisk ReadPlan(const fs::path& file) {
    return InPlanWords(file, [](std::istream& in) { return ReadLines(in); });
}

PlanHead ReadPlanHead(const fs::path& file) {
    return InPlanWords(file, [](std::istream& in) { return RequiredHead(in); });
}

void TakePlanHead(Plan& plan, const PlanHead& head) {
    for (const Json& word : head.at("command"))
        plan.command.push_back(Unpacked(word));
    plan.database = Unpacked(head.at("database"));
    if (head.contains("database_state"))
        plan.databaseState = RequiredFingerprint(head.at("database_state"));
    if (head.contains("undoes")) plan.nUndoes = head.at("undoes").get<int>();
}

PlanCounts CountsOf(const PlanHead& head) {
    const Json& json = head.at("counts");
    return {json.at("added"), json.at("changed"), json.at("removed"), json.at("programs"),
            json.at("lines")};
}

}  // namespace nomira::companion
