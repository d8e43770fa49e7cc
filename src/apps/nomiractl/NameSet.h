// The names that a place holds, a database, a text file or programs, in one shape, to be compared.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "apps/nomiractl/Refusal.h"
#include "conversion/KeyScheme.h"
#include "langtools/Text.h"

namespace nomira::companion {

// A key in the order of an export: by class, then by number; keys of no class behind them.
struct NameKey {
    NameKey(TextView sKeyModule, TextView sKeyText);

    Text sModule;
    Text sKey;

    bool operator<(const NameKey& other) const { return Rank() < other.Rank(); }
    bool operator==(const NameKey& other) const {
        return sKey == other.sKey && sModule == other.sModule;
    }

  private:
    std::tuple<std::size_t, std::size_t, TextView, TextView> Rank() const {
        return {m_nClass, sKey.size(), sKey, sModule};
    }
    std::size_t m_nClass;
};

// A name where it was found.
struct NameUse {
    Text sText;          // empty: a key without a name
    std::string sFile;   // as the user wrote it
    std::int64_t nLine;  // 0 in a database
};

// The distinct names of each key, each with its first place: one, except where a database holds a
// key twice or programs don't agree.
using NameSet = std::map<NameKey, std::vector<NameUse>>;

// Adds a use if its text isn't there yet.
void AddName(NameSet& names, const NameKey& key, NameUse use);

// What an import would store of the file; the last line of a key counts. A marker is no name. The
// platform must be the installation's. Raises the core's failures, as for a line that is too long.
NameSet NamesOfTextFile(const std::filesystem::path& file);

// Every name in a fold header, with its place, in the order of the lines.
struct HeaderName {
    NameKey key;
    Text sText;
    std::int64_t nLine;
};
struct ProgramNames {
    std::vector<HeaderName> names;
    std::vector<std::int64_t> unreadable;  // lines at which the program's own run would end
};

// What the rewriter would look up in the programs, which it leaves alone: no database is asked.
// `take` gets those of each program, or `refused` why it can't be read, in their order; what they
// throw ends it. So many threads read them.
void NamesOfPrograms(
    const std::vector<std::filesystem::path>& files, std::size_t nThreads,
    const std::function<void(const std::filesystem::path&, const ProgramNames&)>& take,
    const std::function<void(const std::filesystem::path&, const Refusal&)>& refused);

}  // namespace nomira::companion
