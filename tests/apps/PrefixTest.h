// The base of most tests of the companion's commands: a prefix of their own with an empty database.
#pragma once

#include <gtest/gtest.h>

#include "apps/CommandRun.h"

namespace nomira::testing {

// `Runner` is CommandRun, or BinaryRun for tests of the real program.
template <typename Runner = CommandRun>
class PrefixTest : public ::testing::Test {
  protected:
    PrefixTest() { m_run.CreateDatabase(); }

    // Imports a file in.txt of these bytes.
    Outcome Import(const std::string& bytes, Strings options = {}) const {
        options.insert(options.begin(), {"import", m_run.Write("in.txt", bytes)});
        return m_run.Run(options);
    }
    static void ExpectDone(const Outcome& outcome) {
        EXPECT_EQ(outcome.exit, companion::ExitCode::Done) << outcome.err;
    }
    static void ExpectRefused(const Outcome& outcome, const std::string& sWords,
                              companion::ExitCode exit = companion::ExitCode::Refused) {
        EXPECT_EQ(outcome.exit, exit) << outcome.out;
        EXPECT_TRUE(Contains(outcome.err, sWords)) << outcome.err;
    }

    Runner m_run;
};

}  // namespace nomira::testing
