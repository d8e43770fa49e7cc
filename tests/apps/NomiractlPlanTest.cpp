// Plans that are saved, looked at, and applied later; bounds on what a run may change.
#include "apps/PrefixTest.h"

namespace {

namespace fs = std::filesystem;
using nomira::companion::ExitCode;
using nomira::testing::CommandRun;
using nomira::testing::Contains;
using nomira::testing::Outcome;
using nomira::testing::PrefixTest;
using nomira::testing::Strings;

constexpr const char* kOldProgram = ";FOLD OUT 7 'old' State\r\n";
constexpr const char* kNewProgram = ";FOLD OUT 7 'Pump' State\r\n";

class NomiractlPlanTest : public PrefixTest<> {
  protected:
    NomiractlPlanTest() {
        m_sNames = m_run.Write("names.txt", "OUT_7 Pump\r\nno key\r\nOUT_8 Valve\r\n");
        m_sPlan = (m_run.Root() / "saved.plan").string();
    }
    void ExpectOutdated(const std::string& sFile) const {
        const Outcome applied = m_run.Run({"apply", m_sPlan});
        EXPECT_EQ(applied.exit, ExitCode::Refused);
        EXPECT_TRUE(Contains(applied.err, sFile + ": has changed since the plan was made"))
            << applied.err;
    }

    std::string m_sNames, m_sPlan;
};

TEST_F(NomiractlPlanTest, AnImportIsPlannedFirstAndAppliedLater) {
    const Outcome planned = m_run.Run({"import", m_sNames, "--plan", m_sPlan});
    ExpectDone(planned);
    EXPECT_TRUE(Contains(planned.out, "dry run: nothing is changed")) << planned.out;
    EXPECT_TRUE(m_run.Texts().empty());
    ExpectDone(m_run.Run({"apply", m_sPlan}));
    EXPECT_EQ(m_run.Texts(), (Strings{"IO OUT_7 Pump", "IO OUT_8 Valve"}));
    ExpectDone(m_run.Run({"undo"}));
    EXPECT_TRUE(m_run.Texts().empty());
}

TEST_F(NomiractlPlanTest, ThePlanTellsWhatItLeavesAndWhy) {
    ExpectDone(m_run.Run({"import", m_sNames}));
    m_sNames = m_run.Write("names.txt", "OUT_7 Pump\r\nno key\r\nOUT_8 Other\r\n");
    ExpectDone(m_run.Run({"import", m_sNames, "--plan", m_sPlan}));
    const std::string sPlan = CommandRun::Bytes(m_sPlan);
    EXPECT_TRUE(Contains(sPlan, R"("line":2,"reason":"unknown-key","what":"no key")")) << sPlan;
    EXPECT_TRUE(Contains(sPlan, R"("line":1,"reason":"unchanged","what":"OUT_7")")) << sPlan;
}

TEST_F(NomiractlPlanTest, AppliesTheSameAsTheCommandItself) {
    ExpectDone(m_run.Run({"import", m_sNames, "--plan", m_sPlan}));
    const auto planned = m_run.Run({"apply", m_sPlan, "--dry-run", "--json"}).Json();
    EXPECT_EQ(planned["added"], 2);
    EXPECT_EQ(planned["entries"][1]["line"], 3);
    EXPECT_TRUE(m_run.Texts().empty());
    EXPECT_EQ(m_run.Run({"apply", m_sPlan, "--dry-run", "--diff", "--quiet"}).out,
              "+OUT_7 Pump\n+OUT_8 Valve\n");
    EXPECT_EQ(m_run.Run({"import", m_sNames, "--diff", "--quiet"}).out,
              "+OUT_7 Pump\n+OUT_8 Valve\n");
}

TEST_F(NomiractlPlanTest, ItIsRefusedOnceTheTextFileHasChanged) {
    ExpectDone(m_run.Run({"import", m_sNames, "--plan", m_sPlan}));
    m_run.Write("names.txt", "OUT_7 Pump\r\n");
    ExpectOutdated("names.txt");
    EXPECT_TRUE(m_run.Texts().empty());
}

TEST_F(NomiractlPlanTest, ItIsRefusedOnceTheDatabaseHasChanged) {
    ExpectDone(m_run.Run({"import", m_sNames, "--plan", m_sPlan}));
    ExpectDone(m_run.Run({"import", m_run.Write("other.txt", "IN_1 x\r\n")}));
    ExpectOutdated("orvo_con.mdb");
    EXPECT_EQ(m_run.Texts().size(), 1U);
}

TEST_F(NomiractlPlanTest, ARewriteIsPlannedFirstAndAppliedLater) {
    ExpectDone(m_run.Run({"import", m_sNames}));
    const std::string sFile = m_run.Write("a.src", kOldProgram);
    ExpectDone(m_run.Run({"rewrite", sFile, "--plan", m_sPlan}));
    EXPECT_EQ(CommandRun::Bytes(sFile), kOldProgram);
    ExpectDone(m_run.Run({"apply", m_sPlan}));
    EXPECT_EQ(CommandRun::Bytes(sFile), kNewProgram);
}

TEST_F(NomiractlPlanTest, APlanOfARewriteIsRefusedOnceAProgramHasChanged) {
    ExpectDone(m_run.Run({"import", m_sNames}));
    const std::string sFirst = m_run.Write("a.src", kOldProgram);
    const std::string sFile = m_run.Write("b.src", kOldProgram);
    ExpectDone(m_run.Run({"rewrite", sFirst, sFile, "--plan", m_sPlan}));
    m_run.Write("b.src", std::string(kOldProgram) + "more");
    const Outcome applied = m_run.Run({"apply", m_sPlan});
    EXPECT_EQ(applied.exit, ExitCode::Files);
    EXPECT_TRUE(Contains(applied.err, "b.src: has changed meanwhile")) << applied.err;
    EXPECT_EQ(CommandRun::Bytes(sFirst), kOldProgram);
}

TEST_F(NomiractlPlanTest, ItIsRefusedOnceAProgramThatStaysHasChanged) {
    ExpectDone(m_run.Run({"import", m_sNames}));
    const std::string sFirst = m_run.Write("a.src", kOldProgram);
    const std::string sStays = m_run.Write("b.src", kNewProgram);
    ExpectDone(m_run.Run({"rewrite", sFirst, sStays, "--plan", m_sPlan}));
    m_run.Write("b.src", kOldProgram);
    ExpectOutdated("b.src");
    EXPECT_EQ(CommandRun::Bytes(sFirst), kOldProgram);
    m_run.Write("b.src", kNewProgram);
    ExpectDone(m_run.Run({"apply", m_sPlan}));
    EXPECT_EQ(CommandRun::Bytes(sFirst), kNewProgram);
}

TEST_F(NomiractlPlanTest, ADryRunIsRefusedAsTheRunWouldBe) {
    ExpectDone(m_run.Run({"import", m_sNames}));
    const std::string sFile = m_run.Write("a.src", kOldProgram);
    ExpectDone(m_run.Run({"rewrite", sFile, "--plan", m_sPlan}));
    ExpectDone(m_run.Run({"apply", m_sPlan, "--dry-run"}));
    EXPECT_EQ(CommandRun::Bytes(sFile), kOldProgram);
    m_run.Write("a.src", std::string(kOldProgram) + "more");
    ExpectRefused(m_run.Run({"apply", m_sPlan, "--dry-run"}), "a.src: has changed meanwhile",
                  ExitCode::Files);
}

TEST_F(NomiractlPlanTest, WhatIsNoPlanIsRefusedInWordsOfTheUser) {
    const Outcome text = m_run.Run({"apply", m_sNames});
    ExpectRefused(text, "names.txt: no plan that can be used: its lines are not a plan's");
    EXPECT_FALSE(Contains(text.err, "json"));
    ExpectRefused(m_run.Run({"apply", m_run.Write("empty", "")}), "an empty file");
    ExpectRefused(m_run.Run({"apply", m_run.Root().string()}), "can't be read", ExitCode::Files);
}

TEST_F(NomiractlPlanTest, ALimitOfChangesIsANumber) {
    for (const char* sLimit : {"-1", "x", "1.5"})
        EXPECT_EQ(m_run.Run({"import", m_sNames, "--max-changes", sLimit}).exit,
                  ExitCode::WrongUsage)
            << sLimit;
    EXPECT_TRUE(m_run.Texts().empty());
}

TEST_F(NomiractlPlanTest, AHarvestIsPlannedAsWell) {
    const std::string sFile = m_run.Write("signals.txt", "X = E12 \\ ;Motor\r\n");
    ExpectDone(m_run.Run({"harvest", sFile, "--plan", m_sPlan}));
    EXPECT_TRUE(m_run.Texts().empty());
    ExpectDone(m_run.Run({"apply", m_sPlan}));
    EXPECT_EQ(m_run.Texts(), (Strings{"IO IN_12 Motor"}));
    ExpectDone(m_run.Run({"undo"}));
    EXPECT_TRUE(m_run.Texts().empty());
}

TEST_F(NomiractlPlanTest, MoreChangesThanAllowedChangeNothing) {
    const Outcome refused = m_run.Run({"import", m_sNames, "--max-changes", "1"});
    EXPECT_EQ(refused.exit, ExitCode::Refused);
    EXPECT_TRUE(Contains(refused.err, "2 changes, and --max-changes allows 1")) << refused.err;
    EXPECT_TRUE(m_run.Texts().empty());
    ExpectDone(m_run.Run({"import", m_sNames, "--max-changes", "2"}));

    const std::string sFile = m_run.Write("a.src", kOldProgram);
    EXPECT_EQ(m_run.Run({"rewrite", sFile, "--max-changes", "0"}).exit, ExitCode::Refused);
    EXPECT_EQ(CommandRun::Bytes(sFile), kOldProgram);
    ExpectDone(m_run.Run({"rewrite", sFile, "--max-changes", "1"}));
    EXPECT_EQ(CommandRun::Bytes(sFile), kNewProgram);
}

TEST_F(NomiractlPlanTest, AFileThatIsNoPlanIsRefused) {
    const Outcome refused = m_run.Run({"apply", m_sNames});
    EXPECT_EQ(refused.exit, ExitCode::Refused);
    EXPECT_TRUE(Contains(refused.err, "no plan that can be used")) << refused.err;
    EXPECT_EQ(m_run.Run({"apply", "/none"}).exit, ExitCode::Files);
}

TEST_F(NomiractlPlanTest, AReadOnlyProgramIsReportedAndTheOthersAreDone) {
    ExpectDone(m_run.Run({"import", m_sNames}));
    const std::string sLocked = m_run.Write("a.src", kOldProgram);
    const std::string sFree = m_run.Write("b.src", kOldProgram);
    fs::permissions(sLocked, fs::perms{0444});
    const Outcome done = m_run.Run({"rewrite", sLocked, sFree});
    EXPECT_NE(done.exit, ExitCode::Done);
    EXPECT_TRUE(Contains(done.err, "a.src: the file is read-only")) << done.err;
    EXPECT_EQ(CommandRun::Bytes(sLocked), kOldProgram);
    EXPECT_EQ(CommandRun::Bytes(sFree), kNewProgram);
}

}  // namespace
