// What check foretells of generated files is what the program then does, line by line.
#include <map>
#include <set>

#include "apps/BinaryRun.h"
#include "apps/GeneratedFiles.h"
#include "langtools/BasicText.h"
#include "langtools/CodePage.h"
#include "langtools/Utf8.h"

namespace {

namespace fs = std::filesystem;
using nomira::testing::BinaryRun;
using nomira::testing::ExecuteOn;
using nomira::testing::Generator;
using nomira::testing::kNames;
using nomira::testing::kPrefixes;
using nomira::testing::ProcessOutcome;
using nomira::testing::Program;
using nomira::testing::QueryOn;
using nomira::testing::RunProcess;
using nomira::testing::Strings;
using nomira::testing::TextFile;
using Json = nlohmann::json;

std::string Decoded(const std::string& bytes) {
    return nomira::ToUtf8(nomira::Windows1252().Decode(bytes));
}

// The lines as the program reads them: CR LF or a lone CR ends one.
Strings LinesOf(const std::string& bytes) {
    Strings lines;
    for (std::size_t n = 0; n < bytes.size();) {
        const std::size_t nEnd = std::min(bytes.find('\r', n), bytes.size());
        lines.push_back(bytes.substr(n, nEnd - n));
        n = nEnd + (bytes.compare(nEnd, 2, "\r\n") == 0 ? 2 : 1);
    }
    return lines;
}

// ---- Text files ----

using Stored = std::map<std::pair<std::string, std::string>, std::string>;

class TextPredictionTest : public ::testing::TestWithParam<const char*> {
  protected:
    TextPredictionTest() {
        m_run.CreateDatabase();
        if (std::string(GetParam()) == "VW")
            std::ofstream(m_run.Prefix() / "registry.reg")
                << "REGEDIT4\r\n\r\n[HKEY_LOCAL_MACHINE\\Software\\Orvo\\Version]\r\n"
                   "\"Customer\"=\"VW\"\r\n";
    }

    // One key of each class, so that a wipe shows.
    Stored Refill() const {
        const Strings modules{"IO",
                              "IO",
                              "IO",
                              "IO",
                              "IO",
                              "IO",
                              "Notice",
                              "Counter",
                              "Flag",
                              "Timer",
                              "ZTQXProcParam",
                              "ZTQXProcParam",
                              "A10TP",
                              "A10TP",
                              "A10TP"};
        std::string sSql = "DELETE FROM Items; DELETE FROM Messages;";
        Stored stored;
        for (std::size_t n = 0; n < modules.size(); ++n) {
            const std::string sKey = kPrefixes[n] + "9";
            sSql += "INSERT INTO Items VALUES(" + std::to_string(n + 1) + ",'" + modules[n] +
                    "','" + sKey + "');INSERT INTO Messages VALUES(" + std::to_string(n + 1) +
                    ",99,'old');";
            stored[{modules[n], sKey}] = "old";
        }
        ExecuteOn(m_run.Database(), sSql);
        return stored;
    }

    Stored InDatabase() const {
        Stored stored;
        for (const auto& row : QueryOn(m_run.Database(),
                                       "SELECT Module, KeyString, String FROM Items JOIN Messages"
                                       " USING(Key_id)"))
            stored[{row[0], row[1]}] = row[2];
        return stored;
    }

    static void Wipe(Stored& stored, const std::string& sSet) {
        std::erase_if(stored, [&](const auto& row) {
            const bool bWelding = row.first.first == "A10TP";
            const bool bBare = row.first.second == "9";
            return bWelding == (sSet == "welding") && !bBare;
        });
    }

    BinaryRun m_run;
};
INSTANTIATE_TEST_SUITE_P(Installations, TextPredictionTest, ::testing::Values("", "VW"));

bool HasRule(const Json& check, const std::string& sFile, const std::string& sRule) {
    for (const Json& finding : check["findings"])
        if (finding["file"] == sFile && finding["rule"] == sRule) return true;
    return false;
}

// A line that nothing is said about is blank, or goes in word for word.
void ExpectFindingsFit(const Json& check, const Json& file, const Strings& lines) {
    std::set<int> told;
    for (const Json& finding : check["findings"])
        if (finding["file"] == file["file"]) told.insert(finding["line"].get<int>());
    for (const Json& fate : file["lines"]) {
        const int nLine = fate["line"];
        if (told.contains(nLine)) continue;
        const std::string& sLine = lines.at(static_cast<std::size_t>(nLine) - 1);
        if (fate["action"] == "passed-over") {
            EXPECT_EQ(sLine.find_first_not_of(" \t"), std::string::npos) << sLine;
            continue;
        }
        EXPECT_EQ(fate["action"], "stored");
        const std::size_t nBlank = std::min(sLine.find_first_of(" \t"), sLine.size());
        const std::size_t nText = std::min(sLine.find_first_not_of(" \t", nBlank), sLine.size());
        const std::size_t nEnd = sLine.find_last_not_of(' ') + 1;
        EXPECT_EQ(Decoded(sLine.substr(nText, nEnd - nText)), fate["text"]) << sLine;
    }
}

TEST_P(TextPredictionTest, TheProgramDoesWithEachLineWhatCheckSays) {
    Generator any;
    SCOPED_TRACE(any.Seed());
    Strings args{"check", "--format", "json", "--predict"};
    Strings contents;
    for (int n = 0; n < 150; ++n) {
        contents.push_back(TextFile(any));
        args.push_back(m_run.Write("f" + std::to_string(n) + ".txt", contents.back()));
    }
    const Json check = Json::parse(m_run.Start(args).sOut);
    ASSERT_EQ(check["files"].size(), contents.size());
    for (std::size_t n = 0; n < contents.size(); ++n) {
        const Json& file = check["files"][n];
        const std::string sFile = file["file"];
        SCOPED_TRACE(sFile + ": " + contents[n].substr(0, 3000));
        ExpectFindingsFit(check, file, LinesOf(contents[n]));
        const bool bOverwrite = any.OneIn(2);
        Stored expected = Refill();
        bool bStops = bOverwrite && HasRule(check, sFile, "text-many-words");
        if (bOverwrite)
            for (const Json& set : file["wipes"])
                Wipe(expected, set);
        for (const Json& fate : file["lines"]) {
            if (bStops) break;
            if (fate["action"] == "stored") expected[{fate["module"], fate["key"]}] = fate["text"];
            bStops = fate["action"] == "stops";
        }
        const ProcessOutcome outcome = RunProcess(
            NOMIRA_PROGRAM,
            {std::string("TEXT_INTO_DB|") + (bOverwrite ? "OVERWRITE|" : "ADD|") + sFile},
            {{"NOMIRA_PREFIX", m_run.Prefix().string()}, {"LC_ALL", "C"}});
        EXPECT_EQ(outcome.nStatus, bStops ? 1 : 0) << outcome.sErr;
        EXPECT_EQ(InDatabase(), expected);
        if (HasFailure()) break;
    }
}

// ---- Programs ----

class ProgramPredictionTest : public ::testing::Test {
  protected:
    // Names of signals 1 to 9 of each class that programs show.
    void Refill(Generator& any) const {
        const Strings prefixes{"IN_", "OUT_", "ANOUT_", "NoticeText", "TimerText", "FlagText"};
        const Strings modules{"IO", "IO", "IO", "Notice", "Timer", "Flag"};
        std::string sSql = "DELETE FROM Items; DELETE FROM Messages;";
        int nId = 0;
        for (std::size_t n = 0; n < prefixes.size(); ++n)
            for (int nNumber = 1; nNumber <= 9; ++nNumber) {
                if (any.OneIn(5)) continue;
                std::string sText = Decoded(any.OneOf(kNames));
                for (std::size_t q = 0; (q = sText.find('\'', q)) != std::string::npos; q += 2)
                    sText.insert(q, "'");
                const std::string sId = std::to_string(++nId);
                sSql += "INSERT INTO Items VALUES(" + sId + ",'" + modules[n] + "','" +
                        prefixes[n] + std::to_string(nNumber) + "');INSERT INTO Messages VALUES(" +
                        sId + ",99,'" + sText + "');";
            }
        ExecuteOn(m_run.Database(), sSql);
    }
    BinaryRun m_run;
};

// The bytes that the program leaves, if it comes to this file.
std::string Expected(const std::string& bytes, const Json& file) {
    if (!file["written"].get<bool>()) return bytes;
    Strings lines = LinesOf(bytes);
    std::string result;
    for (const Json& fate : file["lines"])
        if (fate["action"] == "changed")
            lines.at(fate["line"].get<std::size_t>() - 1) =
                nomira::Windows1252().Encode(nomira::FromUtf8(fate["text"].get<std::string>()));
    for (const std::string& sLine : lines)
        result += sLine + "\r\n";
    return result;
}

bool Stops(const Json& check, const Json& file) {
    for (const Json& fate : file["lines"])
        if (fate["action"] == "stops") return true;
    return HasRule(check, file["file"], "program-read-only") ||
           HasRule(check, file["file"], "program-too-many-lines");
}

TEST_F(ProgramPredictionTest, TheProgramDoesWithEachLineWhatCheckSays) {
    m_run.CreateDatabase();
    Generator any;
    SCOPED_TRACE(any.Seed());
    int nPrograms = 0, nChanged = 0, nStopped = 0;
    for (int nFolder = 0; nFolder < 60 && !HasFailure(); ++nFolder) {
        Refill(any);
        const fs::path folder = m_run.Root() / ("d" + std::to_string(nFolder));
        fs::create_directory(folder);
        Strings contents;
        for (int n = 0; n < 5; ++n) {
            contents.push_back(Program(any));
            const std::string sName =
                folder.filename().string() + "/p" + std::to_string(n) + ".src";
            m_run.Write(sName, contents.back());
            if (any.OneIn(20)) fs::permissions(m_run.Root() / sName, fs::perms::owner_read);
        }
        const ProcessOutcome checked =
            m_run.Start({"check", "--format", "json", "--predict", folder.string()});
        const Json check = Json::parse(checked.sOut);
        ASSERT_EQ(check["files"].size(), contents.size()) << checked.sErr;
        const ProcessOutcome outcome =
            RunProcess(NOMIRA_PROGRAM, {"UPDATE_USERFILES|SELECT_ALL|" + folder.string()},
                       {{"NOMIRA_PREFIX", m_run.Prefix().string()}, {"LC_ALL", "C"}});
        bool bStopped = false;
        for (std::size_t n = 0; n < contents.size(); ++n) {
            const Json& file = check["files"][n];
            const std::string sFile = file["file"];
            SCOPED_TRACE(sFile + ":\n" + Decoded(contents[n].substr(0, 3000)));
            std::string sExpected = bStopped ? contents[n] : Expected(contents[n], file);
            const bool bHere = !bStopped && Stops(check, file);
            // A program that can't be written keeps its bytes, be it too long or not.
            const bool bEmptied = HasRule(check, sFile, "program-too-many-lines") &&
                                  !HasRule(check, sFile, "program-read-only");
            if (bHere) sExpected = bEmptied ? "" : contents[n];
            EXPECT_EQ(Decoded(BinaryRun::Bytes(sFile)), Decoded(sExpected));
            nChanged += sExpected != contents[n] ? 1 : 0;
            nStopped += bHere ? 1 : 0;
            bStopped = bStopped || bHere;
            ++nPrograms;
        }
        EXPECT_EQ(outcome.nStatus, bStopped ? 1 : 0) << outcome.sErr;
    }
    EXPECT_EQ(nPrograms, 300);
    EXPECT_GT(nChanged, 30);
    EXPECT_GT(nStopped, 5);
}

}  // namespace
