// What a writing command is about to do, worked out before anything is changed. The dry run, the
// diff, the JSON, the saved plan, the apply and the record of a run are views of this one object.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "apps/nomiractl/Fingerprint.h"
#include "apps/nomiractl/LongTexts.h"
#include "langtools/Text.h"

namespace nomira::companion {

// A piece of a program that becomes another one; what is outside of these stays, byte by byte.
struct BytesChange {
    std::int64_t nLine;  // one-based
    std::size_t nPlace;  // of the piece's first byte in the old program, zero-based
    std::string sOld;
    std::string sNew;
};

// Which file stood at a path, and when it was last written.
struct FileState {
    std::uint64_t nDevice = 0, nInode = 0;
    std::uint32_t nMode = 0;
    std::int64_t nSeconds = 0, nNanoseconds = 0;  // since the start of 1970
};

struct ProgramChange {
    std::filesystem::path file;  // absolute
    Fingerprint before;
    Fingerprint after;
    std::vector<BytesChange> pieces;   // in their order
    std::optional<FileState> state{};  // ahead of the change; while a run is being done
};

// A message of an item, in any language. Null is nullopt.
struct MessageRow {
    std::int64_t nLanguage;
    std::optional<Text> sText;

    bool operator==(const MessageRow&) const = default;
};

// An item of the database as it stands, with all its messages.
struct ItemRow {
    std::int64_t nKeyId;
    std::optional<Text> sModule;
    std::optional<Text> sKey;
    std::vector<MessageRow> messages;

    bool operator==(const ItemRow&) const = default;
};

// An item that comes (nothing before), goes (nothing after) or changes. Both have the same key id.
struct ItemChange {
    std::optional<ItemRow> before;
    std::optional<ItemRow> after;
    std::int64_t nLine = 0;  // of the input that asks for it; 0 if none does
};

// What the plan leaves as it is, with the reason in a stable word.
struct PlanNote {
    std::string sFile;
    std::int64_t nLine;
    std::string sReason;  // "unchanged", or as the reports name it
    Text sWhat;           // the line, or the key
};

// A file that the plan was worked out from.
struct PlanInput {
    std::filesystem::path file;  // absolute
    Fingerprint fingerprint;
};

struct Plan {
    std::vector<std::string> command{};  // the words of the command line
    std::filesystem::path database{};    // absolute; the one that is changed or looked up in
    std::optional<Fingerprint> databaseState{};  // of all its rows; in plans that are saved
    std::vector<PlanInput> inputs{};
    std::vector<ItemChange> items{};
    std::vector<ProgramChange> programs{};
    std::vector<PlanNote> notes{};
    std::optional<int> nUndoes{};  // the run that this one takes back

    bool IsEmpty() const { return items.empty() && programs.empty(); }
};

// Gives each change the line that asks for its name, and each name with a line but without a change
// a note that it is unchanged.
void TakeLines(Plan& plan, const std::string& sFile,
               const std::map<std::pair<Text, Text>, std::int64_t>& lineOfName);

struct PlanCounts {
    std::size_t nAdded = 0, nChanged = 0, nRemoved = 0;  // names of the database
    std::size_t nPrograms = 0, nLines = 0;

    std::size_t All() const { return nAdded + nChanged + nRemoved + nLines; }
};

// One name of the database whose texts change, in the long-text language.
struct NameChange {
    Text sModule;
    Text sKey;
    std::optional<std::vector<std::optional<Text>>> before;  // nullopt: not there
    std::optional<std::vector<std::optional<Text>>> after;
    std::int64_t nLine;
};

// The items by name, so that one that was removed and made anew with the same text is no change,
// nor is one whose other languages alone differ. Sorted by module and key.
std::vector<NameChange> NameChanges(const std::vector<ItemChange>& items);

PlanCounts Count(const Plan& plan);
// "2 programs (5 lines)", "3 added, 1 removed"; "nothing" for an empty plan.
std::string InWords(const PlanCounts& counts);

// The plan that takes this one back.
Plan Inverse(const Plan& plan);

// The new bytes of a program. Throws Refusal if the old ones are not those that were planned with.
std::string Changed(const ProgramChange& change, std::string_view bytes);

// Throws Refusal if the plan changes more names and lines than that.
void RequireAtMost(const Plan& plan, std::optional<std::size_t> nMost);

}  // namespace nomira::companion
