// stats: how full the classes are, and which numbers are free.
#include <fmt/format.h>
#include <fmt/ostream.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <map>
#include <nlohmann/json.hpp>
#include <vector>

#include "apps/nomiractl/Commands.h"
#include "apps/nomiractl/DatabaseWork.h"
#include "apps/nomiractl/KeySelection.h"
#include "apps/nomiractl/Machine.h"
#include "apps/nomiractl/Words.h"
#include "apps/nomiractl/WriteJson.h"

namespace nomira::companion {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::int64_t kMostNumbers = 9999;  // what a key can have

struct NumberRange {
    std::int64_t nFrom, nTo;
};

struct ClassStats {
    std::int64_t nSize = 0;
    std::map<std::int64_t, bool> numbers{};  // with a key; whether it is filled
    std::vector<NumberRange> free{};         // without a key, up to the size

    std::int64_t CountFilled() const {
        return std::count_if(numbers.begin(), numbers.end(),
                             [](const auto& number) { return number.second; });
    }
    std::int64_t CountEmpty() const { return std::ssize(numbers) - CountFilled(); }
    std::int64_t CountBeyond() const {
        return std::count_if(numbers.begin(), numbers.end(),
                             [this](const auto& number) { return number.first > nSize; });
    }
    std::int64_t CountFree() const {
        std::int64_t nCount = 0;
        for (const NumberRange& range : free)
            nCount += range.nTo - range.nFrom + 1;
        return nCount;
    }
};

using AllStats = std::array<ClassStats, kSignalClassCount>;

[[noreturn]] void RefuseSize(const std::string& sSize) {
    throw Refusal(fmt::format("{}: no size; write one as in=2048, up to {}", sSize, kMostNumbers),
                  ExitCode::WrongUsage);
}

void TakeSize(AllStats& all, const std::string& sSize) {
    const std::size_t nEquals = sSize.find('=');
    if (nEquals == std::string::npos) RefuseSize(sSize);
    const SignalClass& signalClass = ClassOfWord(sSize.substr(0, nEquals));
    std::int64_t nSize = -1;
    const char* const pEnd = sSize.data() + sSize.size();
    const auto read = std::from_chars(sSize.data() + nEquals + 1, pEnd, nSize);
    if (read.ec != std::errc() || read.ptr != pEnd || nSize < 0 || nSize > kMostNumbers)
        RefuseSize(sSize);
    all[static_cast<std::size_t>(&signalClass - SignalClasses().data())].nSize = nSize;
}

bool IsFilled(const Item& item) {
    return std::any_of(item.texts.begin(), item.texts.end(), [](const auto& sText) {
        return sText && !sText->empty() && *sText != kEmptyMarker;
    });
}

void FindFree(ClassStats& stats) {
    std::int64_t nNext = 1;
    const auto close = [&](std::int64_t nUpTo) {
        if (nUpTo >= nNext) stats.free.push_back({nNext, nUpTo});
    };
    for (const auto& [nNumber, bFilled] : stats.numbers) {
        if (nNumber > stats.nSize) break;
        close(nNumber - 1);
        nNext = std::max(nNext, nNumber + 1);
    }
    close(stats.nSize);
}

AllStats ReadStats(const Options& options, const std::vector<Item>& items) {
    AllStats all;
    for (std::size_t n = 0; n < all.size(); ++n)
        all[n].nSize = SignalClasses()[n].nDefaultSize;
    for (const std::string& sSize : options.sizes)
        TakeSize(all, sSize);
    for (const Item& item : items) {
        const std::size_t nRow = ClassRow(item.sModule, item.sKey);
        if (nRow == kOtherKeys) continue;
        bool& bFilled = all[nRow].numbers[NumberOfKey(SignalClasses()[nRow], item.sKey)];
        bFilled = bFilled || IsFilled(item);
    }
    for (ClassStats& stats : all)
        FindFree(stats);
    return all;
}

std::string Shown(const NumberRange& range) {
    return range.nFrom == range.nTo ? std::to_string(range.nFrom)
                                    : fmt::format("{}..{}", range.nFrom, range.nTo);
}

std::string FreeNumbers(const ClassStats& stats, std::size_t nMost) {
    std::vector<std::string> words;
    for (std::size_t n = 0; n < std::min(nMost, stats.free.size()); ++n)
        words.push_back(Shown(stats.free[n]));
    if (stats.free.size() > nMost) words.emplace_back("...");
    return fmt::format("{}", fmt::join(words, " "));
}

Json AsJson(std::size_t nClass, const ClassStats& stats) {
    Json json{{"class", ClassWord(nClass)},  {"name", Utf8(SignalClasses()[nClass].sName)},
              {"size", stats.nSize},         {"filled", stats.CountFilled()},
              {"empty", stats.CountEmpty()}, {"beyond_size", stats.CountBeyond()},
              {"free", stats.CountFree()},   {"free_numbers", Json::array()}};
    for (const NumberRange& range : stats.free)
        json["free_numbers"].push_back({range.nFrom, range.nTo});
    return json;
}

void PrintRow(std::size_t nClass, const ClassStats& stats, bool bAllFree, std::ostream& out) {
    constexpr std::size_t kFewRanges = 4;
    const std::string sFree = FreeNumbers(stats, bAllFree ? stats.free.size() : kFewRanges);
    fmt::print(out, "{:<10}{:>6}{:>8}{:>8}{:>8}{}{}\n", ClassWord(nClass), stats.nSize,
               stats.CountFilled(), stats.CountEmpty(), stats.CountFree(),
               sFree.empty() ? "" : "  ", sFree);
}

}  // namespace

ExitCode ShowStats(const Options& options, Streams streams) {
    std::vector<const SignalClass*> wanted;
    for (const std::string& sWord : options.classes)
        wanted.push_back(&ClassOfWord(sWord));
    Machine machine(options);
    machine.PrintWarnings(streams.err);
    DatabaseWork database(machine.Database(), machine.Engine(), DatabaseUse::Read);
    const AllStats all = ReadStats(options, database.ReadItems());
    Json json = Json::array();
    if (!options.bJson && !options.bQuiet)
        fmt::print(streams.out, "{:<10}{:>6}{:>8}{:>8}{:>8}  free numbers\n", "class", "size",
                   "filled", "empty", "free");
    for (std::size_t n = 0; n < all.size(); ++n) {
        if (!wanted.empty() &&
            std::find(wanted.begin(), wanted.end(), &SignalClasses()[n]) == wanted.end())
            continue;
        json.push_back(AsJson(n, all[n]));
        if (!options.bJson && !options.bQuiet) PrintRow(n, all[n], !wanted.empty(), streams.out);
    }
    if (options.bJson) WriteJson(streams.out, json);
    return ExitCode::Done;
}

}  // namespace nomira::companion
