// Text files in the form that the command line tells: code page, UTF-8, line ends.
#include "apps/PrefixTest.h"
#include "testing/Random.h"

namespace {

using nomira::companion::ExitCode;
using nomira::testing::CommandRun;
using nomira::testing::Contains;
using nomira::testing::ExecuteOn;
using nomira::testing::Outcome;
using nomira::testing::PrefixTest;
using nomira::testing::Random;
using nomira::testing::Strings;

const Strings kUtf8Lf{"--encoding", "utf-8", "--eol", "lf"};

class NomiractlEncodingTest : public PrefixTest<> {
  protected:
    static Strings With(Strings args, const Strings& more) {
        args.insert(args.end(), more.begin(), more.end());
        return args;
    }
    std::string Export(const Strings& options) const {
        const Outcome exported = m_run.Run(With({"export", "-"}, options));
        EXPECT_EQ(exported.exit, ExitCode::Done) << exported.err;
        return exported.out;
    }
};

// Every byte that a text can have: a CR or a LF ends a line, and blanks at its ends go.
std::string LineWithEveryByte() {
    std::string sLine = "IN_1 <";
    for (int n = 0; n < 256; ++n)
        if (n != '\r' && n != '\n') sLine += static_cast<char>(n);
    return sLine + ">\r\n";
}

class RoundTripTest : public NomiractlEncodingTest,
                      public ::testing::WithParamInterface<const char*> {};

INSTANTIATE_TEST_SUITE_P(Pages, RoundTripTest,
                         ::testing::Values("1250", "1251", "1252", "8859-1", "8859-15"));

TEST_P(RoundTripTest, WhatIsExportedAsUtf8ComesBackTheSame) {
    const Strings page{"--code-page", GetParam()};
    ASSERT_EQ(Import(LineWithEveryByte(), page).exit, ExitCode::Done);
    const std::string bytes = Export(page);
    const std::string utf8 = Export(With(page, kUtf8Lf));
    EXPECT_EQ(utf8.find('\r'), std::string::npos);
    ExecuteOn(m_run.Database(), "DELETE FROM Items; DELETE FROM Messages");
    const Outcome back = Import(utf8, With(page, kUtf8Lf));
    ASSERT_EQ(back.exit, ExitCode::Done) << back.err;
    EXPECT_EQ(Export(With(page, kUtf8Lf)), utf8);
    EXPECT_EQ(Export(page), bytes);
    EXPECT_GT(bytes.size(), 200U);
}

TEST_F(NomiractlEncodingTest, AnyTextsComeBackTheSameFromUtf8) {
    Random random;
    SCOPED_TRACE(random.Seed());
    for (int nRound = 0; nRound < 20 && !HasFailure(); ++nRound) {
        std::string bytes;
        for (int nLine = 1; nLine < 30; ++nLine) {
            bytes += "OUT_" + std::to_string(nLine) + " ";
            for (std::size_t n = random.UpTo(30); n > 0; --n)
                bytes += static_cast<char>(0x20 + random.UpTo(0xDF));
            bytes += "\r\n";
        }
        ASSERT_EQ(Import(bytes, {"--overwrite"}).exit, ExitCode::Done);
        const std::string utf8 = Export(kUtf8Lf);
        const std::string plain = Export({});
        ASSERT_EQ(Import(utf8, With({"--overwrite"}, kUtf8Lf)).exit, ExitCode::Done);
        EXPECT_EQ(Export(kUtf8Lf), utf8);
        EXPECT_EQ(Export({}), plain);
    }
}

// A command that has changed something must not fail at its report.
TEST_F(NomiractlEncodingTest, JsonIsUtf8WhateverBytesAFileNameHas) {
    const std::string sText = m_run.Write("n\xFC.txt", "OUT_7 Pump\r\n");
    const std::string sProgram = m_run.Write("p\xFC.src", ";FOLD OUT 7 'old' State\r\n");
    const std::string sPlan = (m_run.Root() / "a\xFC.plan").string();
    const std::string sDatabase = (m_run.Root() / "d\xFC.db").string();
    ASSERT_EQ(m_run.Run({"db", "create", sDatabase, "--json"}).exit, ExitCode::Done);
    for (const Strings& command : {Strings{"import", sText},
                                   {"set", "IN_1", "x"},
                                   {"rm", "IN_1"},
                                   {"rewrite", sProgram},
                                   {"undo"},
                                   {"export", (m_run.Root() / "e\xFC.txt").string()},
                                   {"check", sText, sProgram, sDatabase},
                                   {"xref", sProgram},
                                   {"db", "info"},
                                   {"db", "verify"},
                                   {"db", "compact"},
                                   {"db", "backup", (m_run.Root() / "b\xFC.db").string()}}) {
        const Outcome outcome = m_run.Run(With(command, {"--db", sDatabase, "--json"}));
        EXPECT_EQ(outcome.exit, ExitCode::Done) << command.front() << outcome.err;
        EXPECT_TRUE(Contains(outcome.out, "\xEF\xBF\xBD")) << command.front() << outcome.out;
    }
    m_run.Run({"rewrite", sProgram, "--db", sDatabase, "--plan", sPlan});
    const Outcome applied = m_run.Run({"apply", sPlan, "--json"});
    EXPECT_EQ(applied.exit, ExitCode::Done) << applied.err;
    EXPECT_EQ(applied.Json()["lines"], 1);
}

TEST_F(NomiractlEncodingTest, ThePageDecidesWhatBytesMean) {
    ASSERT_EQ(Import("IN_1 \xE6\r\n", {"--code-page", "1251"}).exit, ExitCode::Done);
    EXPECT_EQ(m_run.Texts(), Strings{"IO IN_1 ж"});
    EXPECT_EQ(Export({"--code-page", "1251"}), "IN_1 \xE6\r\n\r\n");
    EXPECT_EQ(Export({"--code-page", "8859-5"}), "IN_1 \xD6\r\n\r\n");
    EXPECT_EQ(m_run.Run({"export", "-"}).exit, ExitCode::Refused);
    EXPECT_EQ(m_run.Run({"get", "IN_1", "--encoding", "code-page", "--code-page", "1251"}).out,
              "\xE6\n");
    // The option counts more than the settings.
    std::ofstream(m_run.Prefix() / "nomira.conf") << "codepage = 1251\n";
    EXPECT_EQ(Export({}), "IN_1 \xE6\r\n\r\n");
    EXPECT_EQ(Export({"--code-page", "8859-5"}), "IN_1 \xD6\r\n\r\n");
}

TEST_F(NomiractlEncodingTest, WithoutAWordNothingIsGuessed) {
    ASSERT_EQ(Import("IN_1 \xC2\xB5\r\n", {}).exit, ExitCode::Done);
    EXPECT_EQ(m_run.Texts(), Strings{"IO IN_1 Âµ"});
    ASSERT_EQ(Import("IN_1 \xC2\xB5\r\n", {"--encoding", "utf-8"}).exit, ExitCode::Done);
    EXPECT_EQ(m_run.Texts(), Strings{"IO IN_1 µ"});
    ASSERT_EQ(Import("IN_1 a\nIN_2 b\r\n", {}).exit, ExitCode::Done);
    EXPECT_EQ(m_run.Texts(), Strings{"IO IN_1 a\nIN_2 b"});
    ASSERT_EQ(Import("IN_1 a\nIN_2 b\r\n", {"--eol", "lf"}).exit, ExitCode::Done);
    EXPECT_EQ(m_run.Texts(), (Strings{"IO IN_1 a", "IO IN_2 b"}));
}

TEST_F(NomiractlEncodingTest, WhatCannotBeTakenIsRefusedWithItsPlaceAndNothingChanges) {
    ASSERT_EQ(Import("IN_1 old\r\n", {}).exit, ExitCode::Done);
    const std::string sFile = (m_run.Root() / "in.txt").string();
    const auto refused = [&](const std::string& bytes, const Strings& options) {
        const Outcome imported = Import(bytes, With({"--overwrite"}, options));
        EXPECT_EQ(imported.exit, ExitCode::Refused) << bytes;
        EXPECT_EQ(m_run.Texts(), Strings{"IO IN_1 old"});
        const Outcome diff = m_run.Run(With({"diff", sFile, "db"}, options));
        EXPECT_EQ(diff.exit, ExitCode::Refused);
        EXPECT_EQ(diff.err, imported.err);
        return imported.err;
    };
    EXPECT_EQ(
        refused("IN_1 new\nIN_2 ä 5 Ω\n", kUtf8Lf),
        "nomiractl: " + sFile + ":2:10: the character \"Ω\" (U+03A9) is not in code page 1252\n");
    EXPECT_EQ(refused("IN_1 new\nIN_2 \xE4\n", kUtf8Lf),
              "nomiractl: " + sFile + ":2:6: the byte E4 is no UTF-8\n");
    EXPECT_EQ(refused("IN_1 \xAA\r\n", {"--code-page", "1253"}),
              "nomiractl: " + sFile + ":1:6: a byte that is no character of code page 1253\n");
    EXPECT_EQ(refused("\xEF\xBB\xBFIN_1 new\r\n", {}),
              "nomiractl: " + sFile +
                  ":1:1: the file begins with a UTF-8 mark; give --encoding utf-8, or save it in"
                  " code page 1252\n");
    EXPECT_EQ(Import("\xEF\xBB\xBFIN_1 new\r\n", {"--encoding", "utf-8"}).exit, ExitCode::Done);
    EXPECT_EQ(m_run.Texts(), Strings{"IO IN_1 new"});
}

TEST_F(NomiractlEncodingTest, ATextWithALineEndIsToldAndRefusedWhereItsFormIsLost) {
    ASSERT_EQ(Import("IN_1 a\nb\r\n", {}).exit, ExitCode::Done);
    EXPECT_EQ(Export({}), "IN_1 a\nb\r\n\r\n");
    const Outcome lf = m_run.Run({"export", "-", "--eol", "lf"});
    EXPECT_EQ(lf.exit, ExitCode::Refused);
    EXPECT_EQ(lf.out, "");
    EXPECT_EQ(lf.err,
              "nomiractl: IN_1: its text has a line end in it: it would come back as two lines\n");
    ExecuteOn(m_run.Database(), "UPDATE Messages SET String='a'||char(13)||'b'");
    const Outcome crlf = m_run.Run({"export", "-"});
    EXPECT_EQ(crlf.exit, ExitCode::Done);
    EXPECT_EQ(crlf.out, "IN_1 a\rb\r\n\r\n");
    EXPECT_TRUE(crlf.err.starts_with("nomiractl: warning: IN_1: its text has a line end"));
}

TEST_F(NomiractlEncodingTest, DiffComparesFilesInTheToldForm) {
    ASSERT_EQ(Import("IN_1 \xB5m\r\n", {}).exit, ExitCode::Done);
    const std::string sFile = m_run.Write("u.txt", "IN_1 µm\n");
    EXPECT_EQ(m_run.Run(With({"diff", sFile, "db"}, kUtf8Lf)).exit, ExitCode::Done);
    EXPECT_EQ(m_run.Run({"diff", sFile, "db"}).exit, ExitCode::Differs);
}

TEST_F(NomiractlEncodingTest, SetTakesAndGetGivesTheTextAsTold) {
    ASSERT_EQ(m_run.Run({"set", "IN_1", "\xB5m", "--encoding", "code-page"}).exit, ExitCode::Done);
    EXPECT_EQ(m_run.Texts(), Strings{"IO IN_1 µm"});
    EXPECT_EQ(m_run.Run({"get", "IN_1"}).out, "µm\n");
    EXPECT_EQ(m_run.Run({"get", "IN_1", "--encoding", "code-page"}).out, "\xB5m\n");
    EXPECT_EQ(m_run.Run({"list", "--encoding", "code-page"}).out, "IN_1\t\xB5m\n");
    const Outcome wrong = m_run.Run({"set", "IN_1", "1 \xB5m"});
    EXPECT_EQ(wrong.exit, ExitCode::Refused);
    EXPECT_EQ(wrong.err,
              "nomiractl: IN_1: character 3: the byte B5 is no UTF-8; --encoding code-page takes it"
              " as the code page's\n");
    ExecuteOn(m_run.Database(), "UPDATE Messages SET String='5 Ω'");
    for (const char* sCommand : {"get", "list"}) {
        const Outcome lost = m_run.Run({sCommand, "IN_1", "--encoding", "code-page"});
        EXPECT_EQ(lost.exit, ExitCode::Refused);
        EXPECT_EQ(lost.out, "");
        EXPECT_EQ(lost.err,
                  "nomiractl: IN_1: character 3: the character \"Ω\" (U+03A9) is not in code page"
                  " 1252\n");
    }
}

TEST_F(NomiractlEncodingTest, RejectsAreInTheFormOfTheFile) {
    const std::string sRejects = (m_run.Root() / "rejects.txt").string();
    const std::string sFile = m_run.Write("u.txt", "E1 µm 5 Ω\n");
    EXPECT_EQ(m_run.Run(With({"check", sFile, "--rejects", sRejects}, kUtf8Lf)).exit,
              ExitCode::Differs);
    EXPECT_TRUE(CommandRun::Bytes(sRejects).ends_with("E1 µm 5 Ω\r\n"));
}

TEST_F(NomiractlEncodingTest, AFormThatIsNoneIsWrongUsage) {
    for (const Strings& options :
         {Strings{"--encoding", "latin1"}, Strings{"--eol", "cr"}, Strings{"--code-page", "utf-8"},
          Strings{"--code-page", "nonsense"}}) {
        const Outcome outcome = m_run.Run(With({"import", "x"}, options));
        EXPECT_EQ(outcome.exit, ExitCode::WrongUsage) << options[1];
        EXPECT_NE(outcome.err.find(options[0]), std::string::npos) << outcome.err;
    }
}

// ---- The standard input ----

TEST_F(NomiractlEncodingTest, TextComesFromTheStandardInputToo) {
    ASSERT_EQ(m_run.RunOn("IN_1 pump\r\n", {"import", "-", "--overwrite"}).exit, ExitCode::Done);
    EXPECT_EQ(m_run.Texts(), Strings{"IO IN_1 pump"});
    const Outcome diff = m_run.RunOn("IN_1 Pumpe\r\n", {"diff", "db", "-"});
    EXPECT_EQ(diff.exit, ExitCode::Differs);
    EXPECT_NE(diff.out.find("+++ -\n"), std::string::npos) << diff.out;
    EXPECT_NE(diff.out.find("-IN_1 pump\n+IN_1 Pumpe\n"), std::string::npos) << diff.out;
    EXPECT_EQ(m_run.RunOn("IN_1 pump\r\n", {"diff", "-", "db"}).exit, ExitCode::Done);
    const Outcome check = m_run.RunOn("IN_1 pump\r\nE1 x\r\n", {"check", "-"});
    EXPECT_EQ(check.exit, ExitCode::Differs);
    EXPECT_TRUE(check.out.starts_with("-:2:1: error: E1: ")) << check.out;
    EXPECT_EQ(m_run.RunOn("IN_1 µm\n", With({"check", "-"}, kUtf8Lf)).exit, ExitCode::Differs);
    EXPECT_EQ(m_run.RunOn("IN_1 m\n", With({"check", "-"}, kUtf8Lf)).exit, ExitCode::Done);
}

TEST_F(NomiractlEncodingTest, TheStandardInputIsReadOnce) {
    EXPECT_EQ(m_run.RunOn("", {"diff", "-", "-"}).exit, ExitCode::WrongUsage);
    EXPECT_EQ(m_run.RunOn("", {"check", "-", "-"}).exit, ExitCode::WrongUsage);
}

TEST_F(NomiractlEncodingTest, APlanOfTheStandardInputIsAppliedLater) {
    const std::string sPlan = (m_run.Root() / "a.plan").string();
    ASSERT_EQ(m_run.RunOn("IN_1 pump\r\n", {"import", "-", "--plan", sPlan}).exit, ExitCode::Done);
    EXPECT_EQ(m_run.Texts(), Strings{});
    EXPECT_EQ(m_run.Run({"apply", sPlan}).exit, ExitCode::Done);
    EXPECT_EQ(m_run.Texts(), Strings{"IO IN_1 pump"});
}

}  // namespace
