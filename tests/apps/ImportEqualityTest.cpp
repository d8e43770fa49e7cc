// The companion's import, which leaves alone what stands in the database already, against the
// program's own pass over the same files.
#include "adapters/jet/DefinitionPages.h"
#include "adapters/jet/FilePages.h"
#include "apps/BinaryRun.h"
#include "apps/GeneratedFiles.h"
#include "langtools/CodePage.h"
#include "langtools/Utf8.h"

namespace {

namespace fs = std::filesystem;
using nomira::companion::ExitCode;
using nomira::testing::BinaryRun;
using nomira::testing::ExecuteOn;
using nomira::testing::FormatUnderTest;
using nomira::testing::Generator;
using nomira::testing::kNumbers;
using nomira::testing::kPrefixes;
using nomira::testing::kTexts;
using nomira::testing::Outcome;
using nomira::testing::ProcessOutcome;
using nomira::testing::QueryOn;
using nomira::testing::RunProcess;
using nomira::testing::StoreFormat;
using nomira::testing::Strings;
using nomira::testing::TextFile;
using Table = std::vector<Strings>;

// What others may do to the rows between two imports: twins of another text and of the same one, a
// second text, other texts, texts that are in another language now.
const Strings kMeddling{
    "",
    "INSERT INTO Items(Module,KeyString) SELECT Module,KeyString FROM Items WHERE random()%3=0;"
    "INSERT INTO Messages SELECT Key_id,99,'twin' FROM Items"
    " WHERE Key_id NOT IN (SELECT Key_id FROM Messages)",
    "INSERT INTO Items(Module,KeyString) SELECT Module,KeyString FROM Items WHERE random()%3=0;"
    "INSERT INTO Messages SELECT twins.Key_id,99,String FROM Items AS twins JOIN Items AS old"
    " USING(Module,KeyString) JOIN Messages ON Messages.Key_id=old.Key_id"
    " WHERE twins.Key_id NOT IN (SELECT Key_id FROM Messages)",
    "INSERT INTO Messages SELECT Key_id,99,String FROM Messages WHERE random()%3=0;"
    "UPDATE Messages SET String='first' WHERE rowid IN"
    " (SELECT min(rowid) FROM Messages GROUP BY Key_id HAVING count(*)>1)",
    "UPDATE Messages SET String='changed' WHERE random()%3=0",
    "UPDATE Messages SET Language_id=1 WHERE random()%9=0",
};

std::string Quoted(const std::string& bytes) {
    std::string sText = nomira::ToUtf8(nomira::Windows1252().Decode(bytes));
    for (std::size_t n = 0; (n = sText.find('\'', n)) != std::string::npos; n += 2)
        sText.insert(n, "'");
    return "'" + sText + "'";
}

// The last number that the database has given to an item.
Table LastNumber(const fs::path& database) {
    namespace jet = nomira::jet;
    if (FormatUnderTest() == StoreFormat::Sqlite)
        return QueryOn(database, "SELECT name, seq FROM sqlite_sequence");
    jet::AccessFile file(jet::FilePages::Open(database, jet::OpenMode::ReadOnly));
    const std::uint32_t nPage = file.FindTable(u"Items")->Definition().nPage;
    return {{std::to_string(jet::DefinitionCounters(file.Pages(), nPage).LastAutonumber())}};
}

// Everything that a database has. A row of an Access file has its number from the place where it
// stands, which is nobody's business.
std::vector<Table> Everything(const fs::path& database) {
    const std::string sNumber = FormatUnderTest() == StoreFormat::Sqlite ? "rowid" : "0";
    return {
        QueryOn(database, "SELECT Key_id, quote(Module), quote(KeyString) FROM Items ORDER BY 1"),
        QueryOn(database, "SELECT " + sNumber +
                              ", Key_id, Language_id, quote(String) FROM Messages"
                              " ORDER BY 1, 2, 3, 4"),
        LastNumber(database)};
}

class ImportEqualityTest : public ::testing::Test {
  protected:
    ImportEqualityTest() { m_run.CreateDatabase(); }

    static std::string Module(Generator& any, const std::string& sPrefix) {
        const auto starts = [&](const char* sStart) { return sPrefix.starts_with(sStart); };
        if (any.OneIn(20)) return any.OneOf({"NULL", "'io'", "'Other'"});
        if (starts("Notice") || starts("Counter") || starts("Flag") || starts("Timer"))
            return "'" + sPrefix.substr(0, sPrefix.find("Text")) + "'";
        if (starts("ZTQX") || sPrefix.empty()) return "'ZTQXProcParam'";
        return starts("Start") || starts("Weld") || starts("Crater") ? "'A10TP'" : "'IO'";
    }

    // Rows as an import leaves them, and such as only others make.
    static std::string Rows(Generator& any) {
        std::string sSql = "DELETE FROM Items; DELETE FROM Messages;";
        if (FormatUnderTest() == StoreFormat::Sqlite) sSql += "DELETE FROM sqlite_sequence;";
        int nId = 0;
        for (std::size_t n = any.UpTo(25); n > 0; --n) {
            nId += 1 + static_cast<int>(any.UpTo(2));
            const std::string sId = std::to_string(nId);
            const std::string sPrefix = kPrefixes[any.UpTo(14)];
            sSql += "INSERT INTO Items VALUES(" + sId + "," + Module(any, sPrefix) + "," +
                    (any.OneIn(30) ? "NULL" : Quoted(sPrefix + any.OneOf(kNumbers))) + ");";
            const std::size_t nMessages = any.OneIn(8) ? any.UpTo(2) : 1;
            for (std::size_t nMessage = 0; nMessage < nMessages; ++nMessage)
                sSql += "INSERT INTO Messages VALUES(" + sId + "," +
                        (any.OneIn(6) ? any.OneOf({"1", "2"}) : std::string("99")) + "," +
                        (any.OneIn(20) ? "NULL" : Quoted(any.OneOf(kTexts))) + ");";
        }
        return sSql;
    }

    // What the program's own pass makes of it.
    ProcessOutcome ImportWithTheProgram(const std::string& sFile, bool bOverwrite) const {
        return RunProcess(
            NOMIRA_PROGRAM,
            {std::string("TEXT_INTO_DB|") + (bOverwrite ? "OVERWRITE|" : "ADD|") + sFile},
            {{"NOMIRA_PREFIX", m_run.Prefix().string()}, {"LC_ALL", "C"}});
    }

    Outcome ImportWithTheCompanion(const std::string& sFile, bool bOverwrite) const {
        Strings args{"import", "--quiet", sFile, "--db", (m_run.Root() / "other.db").string()};
        if (bOverwrite) args.push_back("--overwrite");
        return m_run.Run(args);
    }

    BinaryRun m_run;
};

TEST_F(ImportEqualityTest, BothWaysLeaveTheSameRows) {
    Generator any;
    SCOPED_TRACE(any.Seed());
    int nDone = 0, nRefused = 0;
    for (int n = 0; n < 45 && !HasFailure(); ++n) {
        const std::string bytes = TextFile(any);
        const std::string sFile = m_run.Write("in.txt", bytes);
        const std::string sRows = Rows(any);
        SCOPED_TRACE(sRows + "\n" + bytes.substr(0, 3000));
        ExecuteOn(m_run.Database(), sRows);
        const fs::path other = m_run.Root() / "other.db";
        const bool bOverwrite = any.OneIn(3);
        for (const std::string& sMeddling : {std::string(), any.OneOf(kMeddling)}) {
            SCOPED_TRACE(sMeddling);
            ExecuteOn(m_run.Database(), sMeddling);
            fs::copy_file(m_run.Database(), other, fs::copy_options::overwrite_existing);
            const std::vector<Table> before = Everything(other);
            const ProcessOutcome program = ImportWithTheProgram(sFile, bOverwrite);
            const Outcome companion = ImportWithTheCompanion(sFile, bOverwrite);
            if (companion.exit != ExitCode::Done) {
                ++nRefused;
                EXPECT_EQ(Everything(other), before) << companion.err;
                continue;
            }
            ++nDone;
            EXPECT_EQ(program.nStatus, 0) << program.sErr;
            EXPECT_EQ(Everything(other), Everything(m_run.Database()));
        }
    }
    EXPECT_GT(nDone, 20);
    EXPECT_GT(nRefused, 0);
}

}  // namespace
