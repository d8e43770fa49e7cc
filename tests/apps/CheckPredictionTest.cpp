// What check foretells of generated files is what the program then does, line by line.
#include <map>
#include <set>

#include "adapters/sqlite/Utf8.h"
#include "apps/BinaryRun.h"
#include "langtools/BasicText.h"
#include "langtools/CodePage.h"
#include "testing/Random.h"

namespace {

namespace fs = std::filesystem;
using nomira::testing::BinaryRun;
using nomira::testing::ExecuteOn;
using nomira::testing::ProcessOutcome;
using nomira::testing::QueryOn;
using nomira::testing::Random;
using nomira::testing::RunProcess;
using Json = nlohmann::json;
using Strings = std::vector<std::string>;

std::string Decoded(const std::string& bytes) {
    return nomira::sqlite::ToUtf8(nomira::Windows1252().Decode(bytes));
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

class Generator {
  public:
    std::string Seed() const { return m_random.Seed(); }
    bool OneIn(std::size_t n) { return m_random.UpTo(n - 1) == 0; }
    std::size_t UpTo(std::size_t n) { return m_random.UpTo(n); }
    const std::string& OneOf(const Strings& all) { return all[m_random.UpTo(all.size() - 1)]; }
    std::string Number(std::size_t nMost) { return std::to_string(m_random.UpTo(nMost)); }

  private:
    Random m_random;
};

// ---- Text files ----

const Strings kPrefixes{"IN_",
                        "OUT_",
                        "ANIN_",
                        "ANOUT_",
                        "BININ_",
                        "BINOUT_",
                        "NoticeText",
                        "CounterText",
                        "FlagText",
                        "TimerText",
                        "ZTQXProcParam_",
                        "",
                        "Start1",
                        "Weld1",
                        "CraterChannel1",
                        "E",
                        "A",
                        "ANAE",
                        "ANAA",
                        "BINE",
                        "BINA",
                        "M",
                        "I",
                        "F",
                        "T",
                        "P",
                        "in_",
                        "Timertext",
                        "e"};
const Strings kNumbers{"", "0", "1", "2", "3", "7", "12", "007", "123", "1234", "12345", "5x"};
const Strings kBlanks{" ", "  ", "\t", " \t ", ""};
const Strings kTexts{"Pumpe",
                     "Zange auf",
                     "F\xFCllstand gro\xDF",
                     "\xDC"
                     "BER",
                     "a\tb",
                     "it's",
                     "x [ y",
                     "what?",
                     "no. #",
                     "Ready State 1",
                     "|EMPTY|",
                     "\xB5-step",
                     "IN_1",
                     "IN_2",
                     "",
                     "",
                     "\x01",
                     "F\xC3\xBCll",
                     "a\nIN_3 b",
                     "two  blanks ",
                     "\x80\x81"};
const Strings kRemarks{
    "",       " ",       "\t",         "# remark",     "; IN_5 x",           "17",
    "pump 3", "INN_5 x", "IN_12Pumpe", "FlagText5Tor", "\xEF\xBB\xBFIN_1 x", "IN_5=x"};
const Strings kLineEnds{"\r\n", "\r\n", "\r\n", "\r\n", "\r\n", "\r", "\r\r\n"};

std::string TextLine(Generator& any) {
    if (any.OneIn(5)) return any.OneOf(kRemarks);
    std::string sLine = any.OneIn(8) ? any.OneOf(kBlanks) : "";
    sLine += any.OneOf(kPrefixes) + any.OneOf(kNumbers);
    sLine += any.OneIn(4) ? any.OneOf(kBlanks) : " ";
    return sLine + any.OneOf(kTexts);
}

std::string TextFile(Generator& any) {
    std::string bytes;
    const bool bLfOnly = any.OneIn(20);
    const std::size_t nLines = any.UpTo(30);
    for (std::size_t n = 0; n < nLines; ++n)
        bytes += TextLine(any) + (bLfOnly ? "\n" : any.OneOf(kLineEnds));
    if (any.OneIn(30)) bytes += "IN_99 " + std::string(32'762, 'x') + "\r\nIN_98 never\r\n";
    if (any.OneIn(30)) {
        for (int n = 0; n < 32'768; ++n)
            bytes += "w ";
        bytes += "\r\nIN_97 x\r\n";
    }
    if (any.OneIn(3)) bytes += TextLine(any);
    return bytes;
}

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

const Strings kNames{
    "Pumpe", "Pump",          "old",        "",        "a*b",     "wh?t",       "x [ y", "in [1-9]",
    "it's",  "Ready State 1", "at point 3", "F\xFCll", "|EMPTY|", "main out 3", "OUT_4", "'"};
const Strings kSignals{"1", "2",  "3",   "4",  "5", "6",   "7", "8",
                       "9", " 3", "  4", "77", "",  "1E3", "x"};
const Strings kStates{" State=TRUE;%{PE}%P 2:1", " State", " state=FALSE",
                      " AT POINT State=TRUE",    "",       " at point State"};

std::string Condition(Generator& any) {
    const std::string sName = any.OneOf(kNames);
    return any.OneOf({"IN", "OUT", "CYCFLAG", "TIMER", "FLAG", "in", "MAIN"}) + " " +
           any.OneOf(kSignals) + " '" + sName + (any.OneIn(4) ? "')" : "' )");
}

std::string ProgramLine(Generator& any) {
    const std::string sIndent = any.OneIn(5) ? any.OneOf({"  ", "\t", " \t"}) : "";
    const std::string sName = "'" + any.OneOf(kNames) + "'";
    switch (any.UpTo(6)) {
        case 0:
            return any.OneOf({"$OUT[1]=TRUE", "", "DEF a()", ";FOLD my own", "; IN 5", ";ENDFOLD"});
        case 1:
            return sIndent + ";FOLD WAIT FOR ( " + Condition(any) + " AND ( " + Condition(any) +
                   " OR ( " + Condition(any) + " ;%{PE}%P IN 3 'hidden' ";
        case 2:
            return sIndent + ";FOLD ANOUT " + any.OneOf({"ON ", "OFF ", "", "on "}) +
                   any.OneOf({"Speed", "A", "Pumpe", "", "O[N"}) + any.OneOf({" = 0.5", ""}) +
                   ";%{PE}" + any.OneOf({"%VANOUT_DYN%P:CHANNEL_", "%VANOUT_STAT%P:CHANNEL_"}) +
                   any.OneOf({"1,", "2,4:0.5", "3", ",", "x,"});
        case 3:
            return sIndent + any.OneOf({";FOLD OUT ", ";FOLD WAIT FOR IN ", ";FOLD PULSE "}) +
                   any.OneOf(kSignals) + ": symName" + any.OneOf({" State=TRUE", " State", ""});
        default:
            return sIndent +
                   any.OneOf({";FOLD OUT ", ";FOLD PULSE ", ";FOLD SYN OUT ", ";FOLD SYN PULSE ",
                              ";FOLD WAIT FOR IN ", ";FOLD WAIT FOR OUT ", ";fold out ",
                              ";FOLD OUTLET "}) +
                   any.OneOf(kSignals) + " " + sName +
                   (any.OneIn(6) ? any.OneOf(kStates) : kStates[0]);
    }
}

std::string Program(Generator& any) {
    std::string bytes;
    const bool bLfOnly = any.OneIn(20);
    const std::size_t nLines = any.UpTo(8);
    for (std::size_t n = 0; n < nLines; ++n)
        bytes += ProgramLine(any) + (bLfOnly ? "\n" : any.OneIn(6) ? "\r" : "\r\n");
    if (any.OneIn(2)) bytes += ProgramLine(any);
    if (any.OneIn(40)) {
        for (int n = 0; n < 32'770; ++n)
            bytes += "\r\n";
    }
    return bytes;
}

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
            lines.at(fate["line"].get<std::size_t>() - 1) = nomira::Windows1252().Encode(
                nomira::sqlite::FromUtf8(fate["text"].get<std::string>()));
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
