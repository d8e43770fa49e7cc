#include "apps/nomiractl/PlanViews.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <fmt/ostream.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <sstream>
#include <system_error>

#include "adapters/posix/NativeName.h"
#include "apps/nomiractl/Journal.h"
#include "apps/nomiractl/PlanFile.h"
#include "apps/nomiractl/ProgramRewrite.h"
#include "apps/nomiractl/Refusal.h"
#include "apps/nomiractl/ReplaceFile.h"
#include "apps/nomiractl/Words.h"
#include "nativefiles/NativeFiles.h"

namespace nomira::companion {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;
using Texts = std::optional<std::vector<std::optional<Text>>>;

std::string BytesOf(const fs::path& file) {
    try {
        return nativefiles::ReadAll(nativefiles::Open(file, O_RDONLY));
    } catch (const std::system_error& error) {
        throw Refusal(fmt::format("{}: {}", file.string(), error.code().message()),
                      ExitCode::Files);
    }
}

void PrintTexts(std::ostream& out, char cMark, const NameChange& name, const Texts& texts) {
    if (!texts) return;
    if (texts->empty()) fmt::print(out, "{}{}\n", cMark, ShownWhole(name.sKey));
    for (const std::optional<Text>& sText : *texts)
        fmt::print(out, "{}{} {}\n", cMark, ShownWhole(name.sKey),
                   ShownWhole(sText.value_or(Text())));
}

Json AsJson(const Texts& texts) {
    if (!texts) return {};
    Json json = Json::array();
    for (const std::optional<Text>& sText : *texts)
        json.push_back(sText ? Json(Utf8(*sText)) : Json());
    return json;
}

// As a shell takes it for one word.
std::string ForShell(const std::string& sWord) {
    const auto isPlain = [](unsigned char c) {
        return c >= 0x80 || std::isalnum(c) != 0 || std::strchr("_-./:=,@%+", c) != nullptr;
    };
    if (!sWord.empty() && std::all_of(sWord.begin(), sWord.end(), isPlain)) return sWord;
    std::string sQuoted = "'";
    for (const char c : sWord)
        sQuoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return sQuoted + "'";
}

const char* KindOf(const NameChange& name) {
    if (!name.before) return "added";
    return name.after ? "changed" : "removed";
}

void PrintDiff(const ProgramChange& program, std::ostream& out) {
    const std::string sBytes = BytesOf(program.file);
    Changed(program, sBytes);
    out << UnifiedDiff(program.file.string(), sBytes, LineChanges(sBytes, program.pieces));
}

}  // namespace

std::string CommandLine(const Plan& plan) {
    std::string sLine;
    for (const std::string& sWord : plan.command)
        sLine += (sLine.empty() ? "" : " ") + ForShell(sWord);
    return ShownWhole(posix::FromNative(sLine));
}

void PrintDiff(const Plan& plan, std::ostream& out) {
    for (const NameChange& name : NameChanges(plan.items)) {
        PrintTexts(out, '-', name, name.before);
        PrintTexts(out, '+', name, name.after);
    }
    for (const ProgramChange& program : plan.programs)
        PrintDiff(program, out);
}

Json PlanAsJson(const Plan& plan) {
    const PlanCounts counts = Count(plan);
    Json json{{"added", counts.nAdded},
              {"changed", counts.nChanged},
              {"removed", counts.nRemoved},
              {"lines", counts.nLines}};
    json["entries"] = Json::array();
    for (const NameChange& name : NameChanges(plan.items))
        json["entries"].push_back({{"kind", KindOf(name)},
                                   {"module", Utf8(name.sModule)},
                                   {"key", Utf8(name.sKey)},
                                   {"line", name.nLine},
                                   {"old", AsJson(name.before)},
                                   {"new", AsJson(name.after)}});
    json["programs"] = Json::array();
    for (const ProgramChange& program : plan.programs)
        json["programs"].push_back({{"file", Utf8(posix::FromNative(program.file.string()))},
                                    {"lines", program.pieces.size()}});
    return json;
}

void SavePlan(const Plan& plan, const Options& options) {
    std::ostringstream bytes;
    WritePlan(bytes, {{"nomiractl", "plan"}, {"time", TimeNow()}}, plan);
    ReplaceFile(options.planFile, bytes.str());
}

PlanInput InputOf(const fs::path& file) {
    return {fs::absolute(file), FingerprintOf(BytesOf(file))};
}

}  // namespace nomira::companion
