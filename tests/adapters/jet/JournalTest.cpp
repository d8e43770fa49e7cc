// What a killed process leaves is played back to a transaction that was committed, whatever moment
// it was; what isn't the file's own journal never comes near it.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "adapters/jet/PageFiles.h"
#include "testing/TemporaryFolder.h"

namespace nomira::jet {
namespace {

using testing::MakeFile;
using testing::OpenToWrite;
using testing::PagesOf;
using testing::ReadFile;
using testing::WriteFile;
namespace fs = std::filesystem;
using Contents = std::vector<Bytes>;

class JournalTest : public ::testing::TestWithParam<Generation> {
  protected:
    JournalTest() {
        MakeFile(m_path, GetParam());
        m_base = ReadFile(m_path);
    }

    fs::path Journal() const { return JournalPath(m_path); }
    std::size_t PageSize() const { return LayoutOf(GetParam()).nPageSize; }

    void ChangeSomething(PageStore& pages) {
        for (int n = 0; n < 3; ++n) {
            const auto nPage = static_cast<std::uint32_t>(1 + m_random() % (pages.Count() - 1));
            const std::size_t nFrom = m_random() % PageSize();
            const std::size_t nBytes = std::min<std::size_t>(m_random() % 40, PageSize() - nFrom);
            for (std::uint8_t& b : pages.Change(nPage).subspan(nFrom, nBytes))
                b = static_cast<std::uint8_t>(m_random());
        }
        if (m_random() % 4 == 0) pages.Change(pages.Append())[m_random() % PageSize()] = 1;
    }

    // Commits so often; leaves the journal as a killed process would, and the file as before.
    // What the pages were after each commit, from before the first on, is in m_states.
    void LeaveJournal(int nCommits) {
        const auto pages = OpenToWrite(m_path);
        m_states.push_back(PagesOf(*pages));
        m_sizes.push_back(0);
        for (int n = 0; n < nCommits; ++n) {
            ChangeSomething(*pages);
            pages->Commit();
            m_states.push_back(PagesOf(*pages));
            m_sizes.push_back(ReadFile(Journal()).size());
        }
        m_journal = ReadFile(Journal());
        pages->Rest();
        m_rested = ReadFile(m_path);
        Restore(m_base, m_journal);
    }

    // As it is once the file itself is being written.
    void SealJournal() {
        auto journal = JournalReader::Open(Journal());
        std::vector<PageChange> changes;
        while (journal->Next(changes)) {
        }
        JournalWriter(Journal(), *journal).Seal();
        m_journal = ReadFile(Journal());
    }

    void Restore(const Bytes& file, const Bytes& journal) {
        WriteFile(m_path, file);
        WriteFile(Journal(), journal);
    }

    // What a reader makes of the two files, who leaves them as they are.
    Contents Seen() {
        const Bytes file = ReadFile(m_path);
        Contents seen = PagesOf(m_path);
        EXPECT_EQ(ReadFile(m_path), file);
        EXPECT_TRUE(fs::exists(Journal()));
        return seen;
    }
    // And then a writer, who plays back, which takes its time on the disk.
    Contents Recovered() {
        Contents seen = Seen();
        EXPECT_EQ(PagesOf(m_path, OpenMode::ReadWrite), seen);
        EXPECT_FALSE(fs::exists(Journal()));
        EXPECT_EQ(PagesOf(m_path), seen) << "from the file alone";
        return seen;
    }

    void ExpectRefused() {
        const Bytes file = ReadFile(m_path);
        const Bytes journal = ReadFile(Journal());
        for (const OpenMode mode : {OpenMode::ReadOnly, OpenMode::ReadWrite}) {
            try {
                FilePages::Open(m_path, mode);
                ADD_FAILURE() << "not refused";
            } catch (const Failure& failure) {
                EXPECT_EQ(failure.Kind(), FailureKind::Damaged);
                EXPECT_NE(std::string(failure.what()).find("journal"), std::string::npos);
            }
            EXPECT_EQ(ReadFile(m_path), file);
            EXPECT_EQ(ReadFile(Journal()), journal);
        }
    }

    nomira::testing::TemporaryFolder m_folder;
    fs::path m_path = m_folder / "a.mdb";
    std::mt19937 m_random{20};
    Bytes m_base;     // the file before
    Bytes m_journal;  // after the last commit
    Bytes m_rested;   // the file with all of it
    std::vector<Contents> m_states;
    std::vector<std::size_t> m_sizes;  // of the journal after each commit
};

TEST_P(JournalTest, AKillAfterAnyCommitLosesNothing) {
    const auto pages = OpenToWrite(m_path);
    const fs::path copy = m_folder / "copy.mdb";
    for (int n = 0; n < 60; ++n) {
        ChangeSomething(*pages);
        pages->Commit();
        if (n % 20 == 13) pages->Rest();
        fs::copy_file(m_path, copy, fs::copy_options::overwrite_existing);
        if (fs::exists(Journal()))
            fs::copy_file(Journal(), JournalPath(copy), fs::copy_options::overwrite_existing);
        ChangeSomething(*pages);  // lost with the process
        pages->Rollback();
        ASSERT_EQ(PagesOf(copy), PagesOf(*pages)) << n;
        ASSERT_EQ(PagesOf(copy, OpenMode::ReadWrite), PagesOf(*pages)) << n;
        ASSERT_FALSE(fs::exists(JournalPath(copy)));
        ASSERT_EQ(PagesOf(copy), PagesOf(*pages)) << n;
    }
}

TEST_P(JournalTest, AJournalCutAnywhereGivesTheLastWholeTransaction) {
    LeaveJournal(5);
    std::size_t nState = 0;
    for (std::size_t nBytes = 0; nBytes <= m_journal.size(); ++nBytes) {
        if (nState + 1 < m_sizes.size() && nBytes == m_sizes[nState + 1]) ++nState;
        Bytes journal = m_journal;
        journal.resize(nBytes);
        Restore(m_base, journal);
        const bool bAtRecord = nBytes == m_sizes[nState] || nBytes % 97 == 0;
        ASSERT_EQ(bAtRecord ? Recovered() : Seen(), m_states[nState]) << nBytes;
        if (HasFailure()) return;
    }
    EXPECT_EQ(nState, 5U);
}

TEST_P(JournalTest, OldBytesBehindTheLastRecordAreNotApplied) {
    LeaveJournal(3);
    Bytes journal = m_journal;
    journal.resize(m_sizes[2]);
    Append(journal, ByteView(m_journal).subspan(m_sizes[1]));  // a record in the wrong place
    Restore(m_base, journal);
    EXPECT_EQ(Recovered(), m_states[2]);
    journal.resize(m_sizes[2]);
    journal.resize(journal.size() + 5000);  // zeros, as after a power failure
    Restore(m_base, journal);
    EXPECT_EQ(Recovered(), m_states[2]);
}

TEST_P(JournalTest, AByteThatIsWrongEndsTheJournalOrRefusesIt) {
    LeaveJournal(3);
    for (std::size_t n = 0; n < m_journal.size(); ++n) {
        Bytes journal = m_journal;
        journal[n] ^= 0x10;
        Restore(m_base, journal);
        if (n < 64) {
            ASSERT_NO_FATAL_FAILURE(ExpectRefused()) << n;
            continue;
        }
        const auto nWhole = static_cast<std::size_t>(
            std::upper_bound(m_sizes.begin(), m_sizes.end(), n) - m_sizes.begin() - 1);
        ASSERT_EQ(n % 97 == 0 ? Recovered() : Seen(), m_states[nWhole]) << n;
    }
}

TEST_P(JournalTest, AKillWhileTheJournalGoesIntoTheFileLosesNothing) {
    LeaveJournal(8);
    SealJournal();
    for (int i = 0; i < 50; ++i) {
        Bytes file = m_base;
        file.resize(i % 2 == 0 ? m_base.size() : m_rested.size());
        // Each page old, new or torn.
        for (std::size_t n = PageSize(); n < file.size(); n += PageSize()) {
            const std::size_t nNew = m_random() % 3 * PageSize() / 2;
            std::copy_n(m_rested.begin() + static_cast<std::ptrdiff_t>(n), nNew,
                        file.begin() + static_cast<std::ptrdiff_t>(n));
        }
        // A power failure may have kept the counter from the disk, or have brought it there first.
        constexpr std::uint16_t kCounters[] = {0, 0x0101, 0x0102};
        SetCommitCounter(file, GetParam(), kCounters[m_random() % 3]);
        Restore(file, m_journal);
        ASSERT_EQ(Recovered(), m_states.back());
        ASSERT_EQ(ReadFile(m_path), m_rested);
    }
}

TEST_P(JournalTest, AJournalThatIsInTheFileAlreadyGoes) {
    LeaveJournal(3);
    SealJournal();
    Restore(m_rested, m_journal);
    EXPECT_EQ(Recovered(), m_states.back());
    EXPECT_EQ(ReadFile(m_path), m_rested);
    EXPECT_FALSE(OpenToWrite(m_path)->WasInterrupted());
}

TEST_P(JournalTest, AFileOfAnotherStateIsLeftAlone) {
    LeaveJournal(3);
    Bytes file = m_base;
    SetCommitCounter(file, GetParam(), 0x0105);
    Restore(file, m_journal);
    ExpectRefused();
    file = m_base;  // somebody has used it together with others
    StoreU16(file, CommitCounterPlace(GetParam()) + 2, 0x0177);
    Restore(file, m_journal);
    ExpectRefused();
    file = m_base;
    file.resize(file.size() + PageSize());
    Restore(file, m_journal);
    ExpectRefused();
    file = m_base;  // nothing but a byte of a row
    for (std::size_t n = 1; n < file.size() / PageSize(); ++n)
        file[n * PageSize() + 3] ^= 1;
    Restore(file, m_journal);
    ExpectRefused();
}

TEST_P(JournalTest, NoOneElseMayHaveWrittenTheFileSinceTheJournalBegan) {
    LeaveJournal(3);
    Bytes file = m_base;
    for (const std::uint16_t nCounter : {std::uint16_t{0}, std::uint16_t{0x0102}}) {
        SetCommitCounter(file, GetParam(), nCounter);
        Restore(file, m_journal);
        ExpectRefused();
    }
    SealJournal();
    SetCommitCounter(file, GetParam(), 0x0103);
    Restore(file, m_journal);
    ExpectRefused();
    file = m_base;
    file.resize(file.size() - PageSize());
    Restore(file, m_journal);
    ExpectRefused();
}

TEST_P(JournalTest, EachJournalKnowsThePagesAsItFoundThem) {
    const auto pages = OpenToWrite(m_path);
    for (std::uint8_t n = 1; n < 3; ++n) {
        pages->Rest();
        pages->Change(5)[9] = n;
        pages->Commit();
    }
    const Bytes journal = ReadFile(Journal());
    Bytes file = ReadFile(m_path);
    pages->Rest();
    file[5 * PageSize()] ^= 1;
    Restore(file, journal);
    ExpectRefused();
}

TEST_P(JournalTest, AnotherFilesJournalIsRefused) {
    LeaveJournal(3);
    const fs::path other = m_folder / "other.mdb";
    MakeFile(other, GetParam() == Generation::Jet3 ? Generation::Jet4 : Generation::Jet3);
    m_path = other;
    WriteFile(Journal(), m_journal);
    ExpectRefused();
    WriteFile(Journal(), Bytes(1000, 'x'));
    ExpectRefused();
    WriteFile(Journal(), Bytes{'x'});
    ExpectRefused();
}

TEST_P(JournalTest, WhatIsNoFileIsNoJournal) {
    fs::create_directory(Journal());
    EXPECT_THROW(PagesOf(m_path), Failure);
    fs::remove(Journal());
    fs::create_symlink("/dev/zero", Journal());
    EXPECT_THROW(PagesOf(m_path), Failure);
}

// A journal whose checksums are right may still be made to do harm.
class ForgedJournalTest : public JournalTest {
  protected:
    void Leave(const std::function<void(JournalRecord&)>& fill) {
        fs::remove(Journal());
        Bytes without =
            Bytes(m_base.begin(), m_base.begin() + static_cast<std::ptrdiff_t>(PageSize()));
        SetCommitCounter(without, GetParam(), 0);
        JournalWriter writer(
            Journal(),
            {static_cast<std::uint32_t>(PageSize()), m_base.size(), HashOf(without), 0x0101}, 0600);
        JournalRecord record;
        fill(record);
        writer.Append(record);
    }
    Bytes Page(std::uint8_t nValue) const { return Bytes(PageSize(), nValue); }
};

TEST_P(ForgedJournalTest, OneThatFitsIsApplied) {
    Leave([&](JournalRecord& record) { record.AddPage(5, Page(5), Page(50), true); });
    EXPECT_EQ(Recovered()[4], Page(50));
}

TEST_P(ForgedJournalTest, PagesThatItMayNotTouchRefuseIt) {
    Leave([&](JournalRecord& record) { record.AddPage(0, Page(0), Page(1), false); });
    ExpectRefused();
    Leave([&](JournalRecord& record) { record.AddPage(12, Page(0), Page(1), false); });
    ExpectRefused();
    Leave([&](JournalRecord& record) { record.AddPage(0xFFFFFFFF, Page(0), Page(1), false); });
    ExpectRefused();
    Leave([&](JournalRecord& record) { record.AddPage(13, {}, Page(1), false); });  // a gap
    ExpectRefused();
    Leave([&](JournalRecord& record) { record.AddPage(5, {}, Page(1), false); });
    ExpectRefused();
    Leave([&](JournalRecord& record) { record.AddPage(5, Page(6), Page(1), true); });
    ExpectRefused();
}

TEST_P(ForgedJournalTest, BytesBehindThePageRefuseIt) {
    const Bytes longPage(2 * PageSize(), 7);
    Leave([&](JournalRecord& record) { record.AddPage(12, {}, longPage, true); });
    ExpectRefused();
}

INSTANTIATE_TEST_SUITE_P(Both, JournalTest, ::testing::Values(Generation::Jet3, Generation::Jet4));
INSTANTIATE_TEST_SUITE_P(Both, ForgedJournalTest,
                         ::testing::Values(Generation::Jet3, Generation::Jet4));

}  // namespace
}  // namespace nomira::jet
