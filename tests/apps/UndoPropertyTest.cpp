// What each writing command does, undo takes back to the last byte; and what export writes, import
// reads.
#include "apps/BinaryRun.h"
#include "apps/GeneratedFiles.h"
#include "apps/PrefixTest.h"
#include "langtools/CodePage.h"
#include "langtools/Utf8.h"

namespace {

namespace fs = std::filesystem;
using nomira::companion::ExitCode;
using nomira::testing::BinaryRun;
using nomira::testing::CommandRun;
using nomira::testing::ExecuteOn;
using nomira::testing::Generator;
using nomira::testing::kNumbers;
using nomira::testing::kPrefixes;
using nomira::testing::kTexts;
using nomira::testing::Outcome;
using nomira::testing::PrefixTest;
using nomira::testing::QueryOn;
using nomira::testing::Strings;
using Table = std::vector<Strings>;

std::string Quoted(const std::string& bytes) {
    std::string sText = nomira::ToUtf8(nomira::Windows1252().Decode(bytes));
    for (std::size_t n = 0; (n = sText.find('\'', n)) != std::string::npos; n += 2)
        sText.insert(n, "'");
    return "'" + sText + "'";
}

class UndoPropertyTest : public PrefixTest<BinaryRun> {
  protected:
    // All rows, whatever order they lie in.
    std::vector<Table> Rows() const {
        return {QueryOn(m_run.Database(),
                        "SELECT Key_id, quote(Module), quote(KeyString) FROM Items ORDER BY 1"),
                QueryOn(m_run.Database(),
                        "SELECT Key_id, Language_id, quote(String) FROM Messages ORDER BY 1,2,3")};
    }

    // Rows as others may leave them too: Nulls, twins, several texts and languages.
    void FillDatabase(Generator& any) const {
        std::string sSql = "DELETE FROM Items; DELETE FROM Messages;";
        int nId = 0;
        for (std::size_t n = 5 + any.UpTo(20); n > 0; --n) {
            nId += 1 + static_cast<int>(any.UpTo(2));
            const std::string sId = std::to_string(nId);
            sSql += "INSERT INTO Items VALUES(" + sId + "," +
                    any.OneOf({"'IO'", "'IO'", "'IO'", "'Flag'", "NULL"}) + "," +
                    (any.OneIn(20) ? "NULL" : Quoted(kPrefixes[any.UpTo(5)] + any.Number(9))) +
                    ");";
            for (std::size_t nMessage = any.OneIn(5) ? any.UpTo(3) : 1; nMessage > 0; --nMessage)
                sSql += "INSERT INTO Messages VALUES(" + sId + "," +
                        any.OneOf({"99", "99", "99", "1", "2"}) + "," +
                        (any.OneIn(10) ? "NULL" : Quoted(any.OneOf(kTexts))) + ");";
        }
        ExecuteOn(m_run.Database(), sSql);
    }

    std::string Folder() const { return (m_run.Root() / "C1").string(); }
    void MakePrograms(Generator& any) const {
        fs::remove_all(Folder());
        fs::create_directory(Folder());
        for (int n = 0; n < 4; ++n)
            m_run.Write("C1/p" + std::to_string(n) + ".src", nomira::testing::Program(any));
    }
    Strings Programs() const {
        Strings programs;
        for (int n = 0; n < 4; ++n)
            programs.push_back(CommandRun::Bytes(Folder() + "/p" + std::to_string(n) + ".src"));
        return programs;
    }

    std::string AnyKey(Generator& any) const {
        return kPrefixes[any.UpTo(5)] + std::to_string(any.UpTo(9));
    }
    std::string Harvest(Generator& any) const {
        std::string bytes;
        for (std::size_t n = 1 + any.UpTo(5); n > 0; --n)
            bytes += "X" + any.Number(9) + " = " + any.OneOf({"E", "A", "M"}) + any.Number(40) +
                     " \\ ;" + any.OneOf({"Name", "Tor auf", "sym ; Text"}) + "\r\n";
        return bytes;
    }

    // A command that changes something, as far as there is something to change.
    Strings AnyCommand(Generator& any) const {
        const std::string sText = m_run.Write("in.txt", nomira::testing::TextFile(any));
        const std::string sPlan = (m_run.Root() / "plan").string();
        switch (any.UpTo(7)) {
            case 0:
                return {"import", sText};
            case 1:
                return {"import", "--overwrite", sText};
            case 2:
                return {"set", AnyKey(any), any.OneOf({"new", "", "other"})};
            case 3:
                return {"rm", AnyKey(any) + ".." + "IN_9", AnyKey(any)};
            case 4:
                return {"harvest", m_run.Write("h.txt", Harvest(any))};
            case 5:
                m_run.Run({"import", sText, "--plan", sPlan});
                return {"apply", sPlan};
            case 6:
                return {"rewrite", any.OneOf({"--atomic=rename", "--atomic=in-place"}), Folder()};
            default:
                m_run.Run({"rewrite", "--plan", sPlan, Folder()});
                return {"apply", sPlan};
        }
    }
};

TEST_F(UndoPropertyTest, UndoGivesBackWhatWasThere) {
    Generator any;
    SCOPED_TRACE(any.Seed());
    int nChanged = 0;
    for (int nRound = 0; nRound < 8 && !HasFailure(); ++nRound) {
        FillDatabase(any);
        MakePrograms(any);
        struct State {
            std::vector<Table> rows;
            Strings programs;
            bool operator==(const State&) const = default;
        };
        const auto now = [this] { return State{Rows(), Programs()}; };
        // As many runs as there are, to be taken back one after another.
        std::vector<State> ahead;
        Strings words;
        for (int n = 0; n < 5; ++n) {
            const State before = now();
            const Strings command = AnyCommand(any);
            const Outcome done = m_run.Run(command);
            if (now() == before) continue;
            ahead.push_back(before);
            words.push_back(command[0] + " " + command[1] + ": " + done.err);
        }
        for (; !ahead.empty() && !HasFailure(); ahead.pop_back(), words.pop_back()) {
            SCOPED_TRACE(words.back());
            const Outcome undone = m_run.Run({"undo"});
            EXPECT_EQ(undone.exit, ExitCode::Done) << undone.err;
            EXPECT_EQ(now().rows, ahead.back().rows);
            EXPECT_EQ(now().programs, ahead.back().programs);
            ++nChanged;
        }
    }
    EXPECT_GT(nChanged, 5);
}

TEST_F(UndoPropertyTest, ARestoredBackupIsTakenBackToo) {
    Generator any;
    SCOPED_TRACE(any.Seed());
    const std::string sBackup = (m_run.Root() / "backup.db").string();
    for (int n = 0; n < 5 && !HasFailure(); ++n) {
        fs::remove(sBackup);
        FillDatabase(any);
        const std::vector<Table> old = Rows();
        ASSERT_EQ(m_run.Run({"db", "backup", sBackup}).exit, ExitCode::Done);
        FillDatabase(any);
        const std::vector<Table> before = Rows();
        const Outcome restored = m_run.Run({"db", "restore", sBackup});
        EXPECT_EQ(restored.exit, ExitCode::Done) << restored.err;
        EXPECT_EQ(Rows(), old);
        const Outcome undone = m_run.Run({"undo"});
        EXPECT_EQ(undone.exit, ExitCode::Done) << undone.err;
        EXPECT_EQ(Rows(), before);
    }
}

// Texts of every byte that a text file can hold; what an import spells out is spelt out already.
TEST_F(UndoPropertyTest, AnExportThatIsImportedIsExportedAgainByteByByte) {
    Generator any;
    SCOPED_TRACE(any.Seed());
    const auto exported = [&](const std::string& sName) {
        const std::string sFile = (m_run.Root() / sName).string();
        const Outcome done = m_run.Run({"export", "--quiet", sFile});
        EXPECT_EQ(done.exit, ExitCode::Done) << done.err;
        return CommandRun::Bytes(sFile);
    };
    std::size_t nBytes = 0;
    for (int n = 0; n < 10 && !HasFailure(); ++n) {
        std::string bytes;
        for (std::size_t nLine = 5 + any.UpTo(40); nLine > 0; --nLine) {
            // Process parameters have another key in a standard installation's export.
            std::string sText;
            for (std::size_t nLength = 1 + any.UpTo(20); nLength > 0; --nLength) {
                const char c = static_cast<char>(any.UpTo(255));
                if (c != '\r') sText += c;
            }
            bytes += kPrefixes[any.UpTo(9)] + any.Number(9) + " t" + sText + "\r\n";
        }
        ExecuteOn(m_run.Database(), "DELETE FROM Items; DELETE FROM Messages");
        ASSERT_EQ(m_run.Run({"import", m_run.Write("in.txt", bytes)}).exit, ExitCode::Done);
        const std::string sFirst = exported("first.txt");
        ExecuteOn(m_run.Database(), "DELETE FROM Items; DELETE FROM Messages");
        const Outcome back = m_run.Run({"import", (m_run.Root() / "first.txt").string()});
        ASSERT_EQ(back.exit, ExitCode::Done) << back.err;
        EXPECT_EQ(exported("second.txt"), sFirst);
        nBytes += sFirst.size();
    }
    EXPECT_GT(nBytes, 1'000U);
}

}  // namespace
