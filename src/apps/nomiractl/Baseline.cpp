#include "apps/nomiractl/Baseline.h"

#include <fmt/format.h>

#include <map>
#include <nlohmann/json.hpp>
#include <tuple>
#include <vector>

#include "adapters/posix/NativeName.h"
#include "apps/nomiractl/Refusal.h"
#include "apps/nomiractl/RewriteRun.h"
#include "apps/nomiractl/Words.h"

namespace nomira::companion {
namespace {

using Json = nlohmann::ordered_json;
using Name = std::tuple<std::string, std::string, std::string>;  // rule, file, subject

constexpr int kVersion = 1;

Name NameOf(const Finding& finding) {
    const std::filesystem::path file(Utf8(posix::FromNative(finding.sFile)));
    return {RowOf(finding.rule).sId, file.lexically_normal().string(), finding.sSubject};
}

[[noreturn]] void Refuse(const std::filesystem::path& baseline, std::string_view sWhy) {
    throw Refusal(fmt::format("{}: {}; make a baseline with: nomiractl check --write-baseline FILE",
                              baseline.string(), sWhy));
}

std::map<Name, int> ReadKnown(const std::filesystem::path& baseline) {
    std::string bytes;
    try {
        bytes = ReadProgram(baseline);
    } catch (const Refusal& refusal) {
        throw Refusal(fmt::format("{}: {}", baseline.string(), refusal.what()), refusal.Exit());
    }
    std::map<Name, int> known;
    try {
        const Json json = Json::parse(bytes);
        if (json.at("version").get<int>() != kVersion) Refuse(baseline, "of another version");
        for (const Json& finding : json.at("findings"))
            ++known[{finding.at("rule"), finding.at("file"), finding.at("subject")}];
    } catch (const Json::exception&) {
        Refuse(baseline, "no baseline");
    }
    return known;
}

}  // namespace

std::string BaselineOf(const Findings& findings) {
    std::string bytes = fmt::format("{{\"version\": {}, \"findings\": [\n", kVersion);
    for (std::size_t n = 0; n < findings.All().size(); ++n) {
        const auto [sRule, sFile, sSubject] = NameOf(findings.All()[n]);
        bytes += Json{{"rule", sRule}, {"file", sFile}, {"subject", sSubject}}.dump();
        bytes += n + 1 < findings.All().size() ? ",\n" : "\n";
    }
    return bytes + "]}\n";
}

std::size_t HideKnown(const std::filesystem::path& baseline, Findings& findings) {
    std::map<Name, int> known = ReadKnown(baseline);
    return std::erase_if(findings.All(), [&known](const Finding& finding) {
        const auto found = known.find(NameOf(finding));
        return found != known.end() && found->second-- > 0;
    });
}

}  // namespace nomira::companion
