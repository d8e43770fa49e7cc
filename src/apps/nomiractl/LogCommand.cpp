#include <fmt/chrono.h>
#include <fmt/format.h>
#include <fmt/ostream.h>

#include <ctime>
#include <iomanip>
#include <nlohmann/json.hpp>
#include <sstream>

#include "apps/nomiractl/Commands.h"
#include "apps/nomiractl/RunLog.h"
#include "apps/nomiractl/Runs.h"
#include "apps/nomiractl/WriteJson.h"

namespace nomira::companion {
namespace {

// In the time of this place, to the minute.
std::string LocalTime(const std::string& sTime) {
    std::tm utc{};
    std::istringstream(sTime) >> std::get_time(&utc, "%Y-%m-%dT%H:%M:%SZ");
    return fmt::format("{:%Y-%m-%d %H:%M}", fmt::localtime(::timegm(&utc)));
}

std::string StateOf(const RunEntry& entry) {
    if (entry.nUndoneBy) return fmt::format("  (taken back by {})", *entry.nUndoneBy);
    return {};
}

nlohmann::ordered_json AsJson(const RunEntry& entry) {
    nlohmann::ordered_json json{{"run", entry.nRun},
                                {"time", entry.sTime},
                                {"command", entry.sCommand},
                                {"added", entry.counts.nAdded},
                                {"changed", entry.counts.nChanged},
                                {"removed", entry.counts.nRemoved},
                                {"programs", entry.counts.nPrograms},
                                {"lines", entry.counts.nLines}};
    if (entry.nUndoes) json["undoes"] = *entry.nUndoes;
    if (entry.nUndoneBy) json["undone_by"] = *entry.nUndoneBy;
    return json;
}

}  // namespace

ExitCode ShowRuns(const Options& options, Streams streams) {
    const std::vector<RunEntry> entries = ReadRunLog(JournalFolder(options));
    if (options.bJson) {
        auto json = nlohmann::ordered_json::array();
        for (const RunEntry& entry : entries)
            json.push_back(AsJson(entry));
        WriteJson(streams.out, nlohmann::ordered_json{{"runs", std::move(json)}});
        return ExitCode::Done;
    }
    if (options.bQuiet) return ExitCode::Done;
    for (const RunEntry& entry : entries)
        fmt::print(streams.out, "{:>6}  {}  {}: {}{}\n", entry.nRun, LocalTime(entry.sTime),
                   entry.sCommand, InWords(entry.counts), StateOf(entry));
    if (entries.empty()) fmt::print(streams.out, "no run has changed anything yet\n");
    return ExitCode::Done;
}

}  // namespace nomira::companion
