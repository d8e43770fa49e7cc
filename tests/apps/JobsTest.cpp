// Commands over many programs with any number of threads.
#include <atomic>
#include <set>
#include <stdexcept>

#include "apps/BinaryRun.h"
#include "apps/GeneratedFiles.h"
#include "apps/PrefixTest.h"
#include "apps/nomiractl/InOrder.h"
#include "langtools/CodePage.h"
#include "langtools/Utf8.h"

namespace {

namespace fs = std::filesystem;
using nomira::companion::ExitCode;
using nomira::companion::InOrder;
using nomira::testing::BinaryRun;
using nomira::testing::CommandRun;
using nomira::testing::ExecuteOn;
using nomira::testing::Generator;
using nomira::testing::Outcome;
using nomira::testing::PrefixTest;
using nomira::testing::Strings;

// ---- The threads ----

TEST(InOrderTest, ResultsComeInOrderWhicheverThreadHasMadeThem) {
    for (const std::size_t nThreads : {1, 2, 5, 40}) {
        std::vector<std::size_t> taken;
        InOrder(
            1'000, nThreads, [](std::size_t n) { return n * n; },
            [&](std::size_t n) { taken.push_back(n); });
        ASSERT_EQ(taken.size(), 1'000U);
        for (std::size_t n = 0; n < taken.size(); ++n)
            ASSERT_EQ(taken[n], n * n);
    }
}

TEST(InOrderTest, WorksInThisThreadAloneWithOneThread) {
    const auto here = std::this_thread::get_id();
    InOrder(
        100, 1, [](std::size_t) { return std::this_thread::get_id(); },
        [&](std::thread::id id) { EXPECT_EQ(id, here); });
    InOrder(
        100, 2, [](std::size_t) { return std::this_thread::get_id(); },
        [&](std::thread::id id) { EXPECT_NE(id, here); });
}

TEST(InOrderTest, AFailureOfTheWorkIsThrownWhenItsTurnHasCome) {
    for (const std::size_t nThreads : {1, 3}) {
        std::size_t nTaken = 0;
        const auto work = [](std::size_t n) {
            if (n >= 700) throw std::runtime_error(std::to_string(n));
            return n;
        };
        try {
            InOrder(1'000, nThreads, work, [&](std::size_t n) { EXPECT_EQ(n, nTaken++); });
            ADD_FAILURE();
        } catch (const std::runtime_error& error) {
            EXPECT_STREQ(error.what(), "700");
        }
        EXPECT_EQ(nTaken, 700U);
    }
}

TEST(InOrderTest, AFailureOfTheTakerEndsTheThreadsLongBeforeTheEnd) {
    std::atomic<std::size_t> nWorked = 0;
    EXPECT_THROW(InOrder(
                     1'000'000, 3, [&](std::size_t) { return ++nWorked; },
                     [](std::size_t) { throw std::runtime_error("enough"); }),
                 std::runtime_error);
    EXPECT_LT(nWorked, 10'000U);  // what the threads may be ahead, and more
}

TEST(InOrderTest, NothingToDoIsDone) {
    InOrder(
        0, 4, [](std::size_t n) { return n; }, [](std::size_t) { ADD_FAILURE(); });
}

// ---- The commands ----

class JobsTest : public PrefixTest<BinaryRun> {
  protected:
    std::string Folder() const { return (m_run.Root() / "C1").string(); }

    // Programs that show signals 1 to 9. Each second one begins with a number without a name, which
    // is compared with the last name of the programs ahead.
    void MakePrograms(Generator& any, int nCount) const {
        fs::remove_all(Folder());
        fs::create_directory(Folder());
        for (int n = 0; n < nCount; ++n) {
            std::string bytes = nomira::testing::Program(any);
            if (any.OneIn(2))
                bytes = ";FOLD OUT " + std::to_string(1 + any.UpTo(8)) +
                        ": symName State=TRUE;%{PE}\r\n" + bytes;
            m_run.Write("C1/p" + std::to_string(1000 + n) + ".src", bytes);
        }
    }
    void FillDatabase(Generator& any) const {
        std::string sSql = "DELETE FROM Items; DELETE FROM Messages;";
        int nId = 0;
        for (const char* const sPrefix : {"IN_", "OUT_", "ANOUT_"}) {
            for (int n = 1; n <= 9; ++n) {
                const std::string sId = std::to_string(++nId);
                sSql += "INSERT INTO Items VALUES(" + sId + ",'IO','" + sPrefix +
                        std::to_string(n) + "');INSERT INTO Messages VALUES(" + sId + ",99,'" +
                        any.OneOf({"Pumpe", "old", "", "in 3", "a*b", "OUT_4"}) + "');";
            }
        }
        ExecuteOn(m_run.Database(), sSql);
    }

    // The same command with so many threads.
    Outcome Run(Strings args, const std::string& sJobs) const {
        args.insert(args.end(), {"--jobs", sJobs});
        return m_run.Run(args);
    }
};

TEST_F(JobsTest, AnyNumberOfThreadsTellsTheSame) {
    Generator any;
    SCOPED_TRACE(any.Seed());
    for (int nRound = 0; nRound < 2 && !HasFailure(); ++nRound) {
        FillDatabase(any);
        MakePrograms(any, 80);
        fs::create_symlink("nowhere", Folder() + "/p1050x.src");  // one that can't be read
        for (const Strings& command :
             {Strings{"rewrite", "--dry-run", "--json", Folder()},
              Strings{"rewrite", "--dry-run", "--diff", Folder()},
              Strings{"check", "--format", "json", "--predict", Folder()},
              Strings{"xref", "--json", Folder()}, Strings{"diff", "--json", Folder(), "db"}}) {
            SCOPED_TRACE(command[0] + " " + command[1]);
            const Outcome alone = Run(command, "1");
            EXPECT_NE(alone.out + alone.err, "");
            for (const char* const sJobs : {"2", "7"}) {
                const Outcome together = Run(command, sJobs);
                EXPECT_EQ(together.exit, alone.exit);
                EXPECT_EQ(together.out, alone.out);
                EXPECT_EQ(together.err, alone.err);
            }
        }
    }
}

// The name that a program is compared with comes from the program ahead, which another thread has.
TEST_F(JobsTest, ANumberWithoutANameIsComparedWithTheNameOfTheProgramAhead) {
    ExecuteOn(m_run.Database(),
              "INSERT INTO Items VALUES(1,'IO','OUT_1');INSERT INTO Messages VALUES(1,99,'Pump')");
    const std::string sBare = ";FOLD OUT 1: symName State=TRUE;%{PE}\r\n";
    fs::create_directory(Folder());
    for (int n = 0; n < 100; ++n) {
        const std::string sName = n % 20 == 10 ? "Pump" : "Valve";  // Pump is current from there on
        m_run.Write("C1/p" + std::to_string(1000 + n) + ".src",
                    sBare + (n % 10 == 0 ? ";FOLD OUT 2 '" + sName + "' State=TRUE\r\n" : ""));
    }
    for (const char* const sJobs : {"1", "2", "8"}) {
        const auto json = Run({"rewrite", "--dry-run", "--json", Folder()}, sJobs).Json();
        for (std::size_t n = 0; n < 100; ++n) {
            // The first one has no program ahead, and 1, 2, ... follow the name of 0.
            const bool bCurrent = n > 10 && (n - 1) / 10 % 2 == 1;
            EXPECT_EQ(json["files"][n]["changed_lines"].size() - (n % 10 == 0 ? 1 : 0),
                      bCurrent ? 0U : 1U)
                << "program " << n << ", jobs " << sJobs;
        }
    }
}

TEST_F(JobsTest, AnyNumberOfThreadsLeavesTheSamePrograms) {
    Generator any;
    SCOPED_TRACE(any.Seed());
    FillDatabase(any);
    MakePrograms(any, 100);
    fs::copy(Folder(), m_run.Root() / "before");
    std::vector<Strings> left;
    for (const char* const sJobs : {"1", "5"}) {
        fs::remove_all(Folder());
        fs::copy(m_run.Root() / "before", Folder());
        Run({"rewrite", "--quiet", Folder()}, sJobs);
        left.emplace_back();
        for (int n = 0; n < 100; ++n)
            left.back().push_back(
                CommandRun::Bytes(Folder() + "/p" + std::to_string(1000 + n) + ".src"));
    }
    EXPECT_EQ(left[0], left[1]);
    EXPECT_NE(left[0][0] + left[0][1] + left[0][2] + left[0][3], "");
}

TEST_F(JobsTest, RefusesNoThreads) {
    EXPECT_EQ(Run({"xref", Folder()}, "0").exit, ExitCode::WrongUsage);
    EXPECT_EQ(Run({"xref", Folder()}, "many").exit, ExitCode::WrongUsage);
}

}  // namespace
