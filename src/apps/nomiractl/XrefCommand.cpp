// xref: where programs use the signals, which of these have no name, and which names nobody uses.
#include <fmt/format.h>
#include <fmt/ostream.h>

#include <algorithm>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "adapters/posix/NativeName.h"
#include "apps/nomiractl/Commands.h"
#include "apps/nomiractl/DatabaseWork.h"
#include "apps/nomiractl/Jobs.h"
#include "apps/nomiractl/KeySelection.h"
#include "apps/nomiractl/Machine.h"
#include "apps/nomiractl/NameSet.h"
#include "apps/nomiractl/ProgramPaths.h"
#include "apps/nomiractl/Words.h"
#include "apps/nomiractl/WriteJson.h"

namespace nomira::companion {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

struct Use {
    std::string sFile;
    std::int64_t nLine;
};

struct Signal {
    Text sName = {};  // in the database; empty: none
    std::vector<Use> uses = {};
};

using Signals = std::map<NameKey, Signal>;

bool IsUsedUnnamed(const Signal& signal) {
    return !signal.uses.empty() && signal.sName.empty();
}

bool IsNamedUnused(const Signal& signal) {
    return signal.uses.empty() && !signal.sName.empty();
}

class XrefRun {
  public:
    XrefRun(const Options& options, Streams streams)
        : m_options(options), m_streams(streams), m_selection({}, options.classes) {}

    void TakeNames(const std::vector<Item>& items) {
        for (const Item& item : items) {
            if (item.texts.empty() || !item.texts.front()) continue;
            const Text& sText = *item.texts.front();  // what a look-up finds
            if (sText.empty() || sText == kEmptyMarker || sText == item.sKey) continue;
            Text& sName = m_signals[NameKey(item.sModule, item.sKey)].sName;
            if (sName.empty()) sName = sText;
        }
    }

    void TakePrograms() {
        NamesOfPrograms(
            NamedPrograms(m_options.programs), ThreadsFor(m_options),
            [this](const fs::path& program, const ProgramNames& found) {
                TakeProgram(program, found);
            },
            [this](const fs::path& program, const Refusal& refusal) {
                fmt::print(m_streams.err, "nomiractl: {}: {}\n", program.string(), refusal.what());
                m_exit = Graver(m_exit, refusal.Exit());
            });
    }

    ExitCode Finish() {
        std::erase_if(m_signals, [this](const auto& signal) { return !IsWanted(signal); });
        if (m_options.bJson)
            PrintJson();
        else if (!m_options.bQuiet)
            Print();
        return m_exit;
    }

  private:
    void TakeProgram(const fs::path& program, const ProgramNames& found) {
        for (const HeaderName& name : found.names)
            m_signals[name.key].uses.push_back({program.string(), name.nLine});
        for (const std::int64_t nLine : found.unreadable)
            fmt::print(m_streams.err, "nomiractl: warning: {}:{}: a header that can't be read\n",
                       program.string(), nLine);
    }

    bool IsWanted(const Signals::value_type& entry) const {
        const auto& [key, signal] = entry;
        if (!m_selection.Holds(key.sModule, key.sKey)) return false;
        if (!m_options.bUnnamed && !m_options.bUnused) return true;
        return (m_options.bUnnamed && IsUsedUnnamed(signal)) ||
               (m_options.bUnused && IsNamedUnused(signal));
    }

    void Print() const {
        std::size_t nUsed = 0, nUnnamed = 0, nUnused = 0;
        for (const auto& [key, signal] : m_signals) {
            nUsed += signal.uses.empty() ? 0 : 1;
            nUnnamed += IsUsedUnnamed(signal) ? 1 : 0;
            nUnused += IsNamedUnused(signal) ? 1 : 0;
            const std::string sMark = IsUsedUnnamed(signal)   ? "  (used, without a name)"
                                      : IsNamedUnused(signal) ? "  (named, not used)"
                                                              : "";
            fmt::print(m_streams.out, "{}{}{}{}\n", ShownWhole(key.sKey),
                       signal.sName.empty() ? "" : " ", ShownWhole(signal.sName), sMark);
            for (const Use& use : signal.uses)
                fmt::print(m_streams.out, "    {}:{}\n", use.sFile, use.nLine);
        }
        fmt::print(m_streams.out, "{} signals used, {} of them without a name; {} names not used\n",
                   nUsed, nUnnamed, nUnused);
    }

    void PrintJson() const {
        Json json = Json::array();
        for (const auto& [key, signal] : m_signals) {
            Json uses = Json::array();
            for (const Use& use : signal.uses)
                uses.push_back({{"file", Utf8(posix::FromNative(use.sFile))}, {"line", use.nLine}});
            Json one{{"key", Utf8(key.sKey)}, {"module", Utf8(key.sModule)}};
            one["name"] = signal.sName.empty() ? Json(nullptr) : Json(Utf8(signal.sName));
            one["used"] = !signal.uses.empty();
            one["uses"] = std::move(uses);
            json.push_back(std::move(one));
        }
        WriteJson(m_streams.out, json);
    }

    const Options& m_options;
    Streams m_streams;
    KeySelection m_selection;
    Signals m_signals;
    ExitCode m_exit = ExitCode::Done;
};

}  // namespace

ExitCode CrossReference(const Options& options, Streams streams) {
    XrefRun run(options, streams);
    Machine machine(options);
    machine.PrintWarnings(streams.err);
    {
        DatabaseWork database(machine.Database(), machine.Engine(), DatabaseUse::Read);
        run.TakeNames(database.ReadItems());
    }
    run.TakePrograms();
    return run.Finish();
}

}  // namespace nomira::companion
