// What holds for every program that is rewritten, whatever stands in it.
#include <fmt/format.h>

#include "apps/BinaryRun.h"
#include "apps/GeneratedFiles.h"
#include "apps/PrefixTest.h"
#include "apps/nomiractl/DatabaseWork.h"
#include "apps/nomiractl/Machine.h"
#include "apps/nomiractl/NameTable.h"
#include "apps/nomiractl/ProgramRewrite.h"
#include "conversion/TextImport.h"
#include "langtools/CodePage.h"
#include "langtools/Utf8.h"

namespace {

namespace fs = std::filesystem;
using namespace nomira;
using namespace nomira::companion;
using nomira::testing::BinaryRun;
using nomira::testing::CommandRun;
using nomira::testing::ExecuteOn;
using nomira::testing::Generator;
using nomira::testing::Outcome;
using nomira::testing::PrefixTest;
using nomira::testing::Strings;

std::string Decoded(const std::string& bytes) {
    return ToUtf8(Windows1252().Decode(bytes));
}

std::string Quoted(const std::string& bytes) {
    std::string sText = Decoded(bytes);
    for (std::size_t n = 0; (n = sText.find('\'', n)) != std::string::npos; n += 2)
        sText.insert(n, "'");
    return "'" + sText + "'";
}

// Any bytes but those that end a line, or that `sBut` names.
std::string AnyBytes(Generator& any, std::size_t nMost, const std::string& sBut = {}) {
    std::string bytes;
    for (std::size_t n = any.UpTo(nMost); n > 0; --n) {
        const char c = static_cast<char>(any.UpTo(255));
        if (c != '\r' && sBut.find(c) == std::string::npos) bytes += c;
    }
    return bytes;
}

// A program with a few bytes that are others, or gone, or there twice.
std::string Damaged(Generator& any, std::string bytes) {
    for (std::size_t n = any.UpTo(4); n > 0 && !bytes.empty(); --n) {
        const std::size_t nPlace = any.UpTo(bytes.size() - 1);
        switch (any.UpTo(2)) {
            case 0:
                bytes[nPlace] = static_cast<char>(any.UpTo(255));
                break;
            case 1:
                bytes.erase(nPlace, 1 + any.UpTo(3));
                break;
            default:
                bytes.insert(nPlace, bytes.substr(nPlace, any.UpTo(20)));
        }
    }
    return bytes;
}

std::string AsText(const RewritePlan& plan) {
    std::string sText = Decoded(plan.sNewBytes) + "\n";
    for (const LineChange& change : plan.changes)
        sText += fmt::format("{} {} {} -> {}\n", change.nLine, change.nPlace, Decoded(change.sOld),
                             Decoded(change.sNew));
    for (const LineFinding& refused : plan.refused)
        sText += fmt::format("{} {}\n", refused.nLine, ToUtf8(refused.sText));
    if (plan.stopped)
        sText +=
            fmt::format("stopped at {}: {}\n", plan.stopped->nLine, ToUtf8(plan.stopped->sText));
    return sText + ToUtf8(g_vLongName);
}

class RewritePropertyTest : public PrefixTest<BinaryRun> {
  protected:
    // Names of signals 1 to 9 of each class, some twice, some without a text, some with two.
    void Refill(Generator& any) const {
        const Strings prefixes{"IN_", "OUT_", "ANOUT_", "NoticeText", "TimerText", "FlagText"};
        const Strings modules{"IO", "IO", "IO", "Notice", "Timer", "Flag"};
        std::string sSql = "DELETE FROM Items; DELETE FROM Messages;";
        for (int nId = 1; nId <= 70; ++nId) {
            const std::size_t nClass = any.UpTo(prefixes.size() - 1);
            const std::string sId = std::to_string(nId);
            sSql += "INSERT INTO Items VALUES(" + sId + ",'" +
                    (any.OneIn(12) ? "A10TP" : modules[nClass]) + "','" + prefixes[nClass] +
                    std::to_string(1 + any.UpTo(8)) + "');";
            for (std::size_t n = any.OneIn(6) ? any.UpTo(2) : 1; n > 0; --n)
                sSql += "INSERT INTO Messages VALUES(" + sId + "," + (any.OneIn(10) ? "1" : "99") +
                        "," +
                        (any.OneIn(10) ? "NULL" : Quoted(any.OneOf(nomira::testing::kNames))) +
                        ");";
        }
        ExecuteOn(m_run.Database(), sSql);
    }
};

// The quick way leaves lines out that are no headers, and asks a table instead of the database.
TEST_F(RewritePropertyTest, TheQuickWayAndThePlainOneGiveTheSamePlan) {
    Generator any;
    SCOPED_TRACE(any.Seed());
    Options options;
    options.prefix = m_run.Prefix();
    int nChanged = 0;
    for (int nRound = 0; nRound < 12 && !HasFailure(); ++nRound) {
        Refill(any);
        Machine machine(options);
        DatabaseWork database(machine.Database(), machine.Engine(), DatabaseUse::Read);
        Text sEarlier = u"earlier";
        for (int n = 0; n < 60 && !HasFailure(); ++n) {
            std::string bytes = nomira::testing::Program(any);
            if (bytes.size() > 10'000) continue;
            if (any.OneIn(2)) bytes = Damaged(any, bytes);
            SCOPED_TRACE(Decoded(bytes));
            g_vLongName = sEarlier;
            const std::string sPlain =
                AsText(PlanRewrite(bytes, machine.Boxes(), LookAt::EveryLine));
            const NameTable names(database.ReadItems());
            g_vLongName = sEarlier;
            const RewritePlan quick = PlanRewrite(bytes, machine.Boxes(), LookAt::Quick);
            EXPECT_EQ(AsText(quick), sPlain);
            nChanged += quick.changes.empty() ? 0 : 1;
            sEarlier = g_vLongName;
        }
    }
    EXPECT_GT(nChanged, 50);
}

// A header that is as the controller writes it, between lines of any bytes.
TEST_F(RewritePropertyTest, OutsideOfAChangedNameNoByteDiffers) {
    Generator any;
    SCOPED_TRACE(any.Seed());
    std::string sNames;
    for (int n = 1; n <= 20; ++n)
        sNames += "OUT_" + std::to_string(n) + " name no " + std::to_string(n) + "\r\n";
    ASSERT_EQ(m_run.Run({"import", m_run.Write("names.txt", sNames)}).exit, ExitCode::Done);
    int nChanged = 0;
    for (int nRound = 0; nRound < 15 && !HasFailure(); ++nRound) {
        Strings files, expected;
        for (int nFile = 0; nFile < 10; ++nFile) {
            std::string sOld, sNew;
            for (std::size_t nLines = any.UpTo(12); nLines > 0; --nLines) {
                const std::string sEnd =
                    nLines == 1 && any.OneIn(2) ? "" : any.OneOf({"\r\n", "\r", "\r\n", "\r\r"});
                if (any.OneIn(2)) {
                    const std::string sLine = "x" + AnyBytes(any, 40) + sEnd;
                    sOld += sLine;
                    sNew += sLine;
                    continue;
                }
                const std::string sNumber = std::to_string(1 + any.UpTo(19));
                const std::string sHead = any.OneOf({"", " ", "   "}) +
                                          any.OneOf({";FOLD OUT ", ";fold Out "}) + sNumber + " '";
                const std::string sTail = "' State=TRUE;%{PE}" + AnyBytes(any, 30) +
                                          any.OneOf({"", "\n", "\nx = 1\n"}) + sEnd;
                sOld += sHead + AnyBytes(any, 12, "'*?#[") + sTail;
                sNew += sHead + "name no " + sNumber + sTail;
            }
            files.push_back(m_run.Write("p" + std::to_string(nFile) + ".src", sOld));
            expected.push_back(sNew);
            nChanged += sOld == sNew ? 0 : 1;
        }
        Strings args{"rewrite", any.OneIn(2) ? "--atomic=rename" : "--atomic=in-place"};
        args.insert(args.end(), files.begin(), files.end());
        const Outcome done = m_run.Run(args);
        EXPECT_EQ(done.exit, ExitCode::Done) << done.err;
        for (std::size_t n = 0; n < files.size(); ++n)
            EXPECT_EQ(Decoded(CommandRun::Bytes(files[n])), Decoded(expected[n]));
    }
    EXPECT_GT(nChanged, 50);
}

// The core's parser has more tokens then than it can count, and would raise that at every later
// header.
TEST_F(RewritePropertyTest, AHeaderWithTooManyPartsStopsNoOtherProgram) {
    ASSERT_EQ(m_run.Run({"import", m_run.Write("names.txt", "IN_1 Pump\r\n")}).exit,
              ExitCode::Done);
    std::string sMany = ";FOLD WAIT FOR ( IN 1 'old' ) ";
    for (int n = 0; n < 33'000; ++n)
        sMany += ";x";
    const std::string sBad = m_run.Write("a.src", sMany + "\r\n");
    const std::string sGood = m_run.Write("b.src", ";FOLD WAIT FOR ( IN 1 'old' ) ;%{PE}\r\n");
    const Outcome done = m_run.Run({"rewrite", sBad, sGood});
    EXPECT_EQ(done.exit, ExitCode::Refused) << done.err;
    EXPECT_EQ(CommandRun::Bytes(sBad), sMany + "\r\n");
    EXPECT_EQ(CommandRun::Bytes(sGood), ";FOLD WAIT FOR ( IN 1 'Pump' ) ;%{PE}\r\n");
}

}  // namespace
