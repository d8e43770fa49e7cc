// What the user asked for on the command line. Paths are native ones.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace nomira::companion {

struct Options {
    std::filesystem::path prefix;                 // empty: the system's own
    std::filesystem::path database;               // empty: where the prefix has it
    std::optional<std::string> customer;          // in the place of the registry's, UTF-8
    std::optional<int> codePage;                  // in the place of the settings', its number
    std::string sEncoding;                        // "code-page", "utf-8"; empty: the usual one
    std::string sLineEnds;                        // "crlf", "lf"; empty: the usual ones
    std::filesystem::path file;                   // the command's own argument; "-" for a stream
    std::vector<std::filesystem::path> programs;  // files and directories, to be rewritten
    std::vector<std::string> names;               // the controller's programs or variables
    std::string directory;                        // of the controller
    std::filesystem::path folder = ".";           // where fetched programs go
    std::string target;                           // where a sent one goes; empty: where it belongs
    std::vector<std::string> keys;                // as KeySelection takes them
    std::vector<std::string> classes;             // words for ClassOfWord
    std::vector<std::string> sizes;               // as "in=2048"
    std::string sText;                            // a part of the texts that are looked for
    std::filesystem::path oldSide;                // of a diff
    std::filesystem::path newSide;
    std::filesystem::path baseline;       // findings that are known
    std::filesystem::path writeBaseline;  // where to keep what is found as known
    std::filesystem::path rejects;        // where to put lines that are not taken
    std::string sShell;                   // that completes commands
    std::string sFormat = "text";         // of a report: text, json, sarif, junit
    std::string storeFormat = "sqlite";   // of a database: FormatWords()
    std::string sKind = "auto";           // of the files, as KindOf takes it
    std::string sColour = "auto";         // auto, always, never
    bool bPredict = false;                // foretell what becomes of each line
    bool bListRules = false;
    bool bUnnamed = false;                  // signals that programs use and that have no name
    bool bUnused = false;                   // names that no program uses
    bool bEmpty = false;                    // keys without a text alone
    bool bFilled = false;                   // keys with a text alone
    bool bAll = false;                      // every program of the controller
    std::filesystem::path planFile;         // where the plan is saved instead of applied
    std::optional<std::size_t> maxChanges;  // names and lines
    std::optional<std::size_t> jobs;        // threads; none: one for each processor
    std::string atomic;                     // "in-place" or "rename"; empty: the usual way
    std::string key;                        // whose text is set
    std::string text;                       // UTF-8
    std::optional<int> run;                 // to be taken back; none: the last one
    std::vector<std::string> words;         // of the command line, as they were given
    bool bDirectories = false;
    bool bForce = false;  // write over what is there
    bool bOverwrite = false;
    bool bWithSymbols = false;  // keep the symbol of a harvested comment "symbol ; text"
    bool bDiff = false;
    bool bCheck = false;
    bool bDryRun = false;
    bool bJson = false;
    bool bQuiet = false;
};

}  // namespace nomira::companion
