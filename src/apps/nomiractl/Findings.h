// What a check has found, and what it foretells; the report formats and the baseline are views of
// this.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "apps/nomiractl/Rules.h"
#include "langtools/Text.h"

namespace nomira::companion {

// A place in a file, one-based. 0 is no line (the file as a whole), or no column.
struct Place {
    std::int64_t nLine = 0;
    std::int64_t nColumn = 0;
};

struct Finding {
    Rule rule;
    std::string sFile;  // as the user wrote it
    Place place;
    std::string sSentence;
    // What the finding is about, the line or the key: it tells the finding again when lines have
    // moved.
    std::string sSubject;
};

// What becomes of a line when the program works on the file.
struct LineFate {
    std::int64_t nLine;
    std::string sWhat;                 // "stored", "passed-over", "changed", "stops"; in JSON
    std::optional<Text> sKey = {};     // stored: in standard form
    std::optional<Text> sModule = {};  // stored
    std::optional<Text> sText = {};    // stored: the text; changed: the new line
    std::optional<std::int32_t> nError = {};  // stops: the run-time error
};

// One file that was looked at.
struct CheckedFile {
    std::string sFile;
    const char* sKind;  // "text", "program", "database", "registry"; in JSON
    std::vector<LineFate> fates = {};
    std::vector<const char*> wipes = {};  // of a text file: "signals", "welding"
    bool bWritten = false;                // of a program: the rewrite would write it
};

class Findings {
  public:
    void Begin(std::string sFile, const char* sKind);
    // About the file that was begun last.
    void Add(Rule rule, Place place, TextView sSubject, const std::vector<std::string>& words = {});
    void Foretell(LineFate fate) { m_files.back().fates.push_back(std::move(fate)); }
    CheckedFile& File() { return m_files.back(); }

    // What was found of other files, behind what is there.
    void Append(Findings others);

    // Lines that were not taken, as bytes of the file, with the finding that tells why.
    void Reject(std::int64_t nLine, std::string bytes);

    struct Rejected {
        std::string sFile;
        std::int64_t nLine;
        std::string bytes;
    };

    std::vector<Finding>& All() { return m_all; }
    const std::vector<Finding>& All() const { return m_all; }
    const std::vector<CheckedFile>& Files() const { return m_files; }
    const std::vector<Rejected>& Rejects() const { return m_rejects; }

  private:
    std::vector<Finding> m_all;
    std::vector<CheckedFile> m_files;
    std::vector<Rejected> m_rejects;
};

}  // namespace nomira::companion
