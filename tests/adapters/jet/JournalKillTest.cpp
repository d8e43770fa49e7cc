// Kills a writing process at random moments: the next one to open the file finds it as it was after
// some transaction, and after none that came before the last which was committed.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <new>
#include <random>

#include "adapters/jet/PageFiles.h"
#include "testing/TemporaryFolder.h"

namespace nomira::jet {
namespace {

using testing::MakeFile;
using testing::OpenToWrite;
using testing::PagesOf;

constexpr int kRounds = 50;
constexpr std::uint32_t kCounterPage = 2;
constexpr std::uint32_t kTransactionsToRest = 23;

// What transaction n does, whoever runs it.
void Change(PageStore& pages, std::uint32_t n) {
    StoreU32(pages.Change(kCounterPage), 0, n);
    std::mt19937 random(n);
    for (int i = 0; i < 4; ++i) {
        const auto nPage = static_cast<std::uint32_t>(3 + random() % (pages.Count() - 3));
        StoreU32(pages.Change(nPage), random() % 500 * 4, n);
    }
    if (n % 9 == 0) StoreU32(pages.Change(pages.Append()), 100, n);
}

std::uint32_t CounterOf(PageStore& pages) {
    return LoadU32(pages.Read(kCounterPage), 0);
}

// Memory that a child and its parent share.
class SharedNumber {
  public:
    SharedNumber()
        : m_place(::mmap(nullptr, sizeof(std::atomic<std::uint32_t>), PROT_READ | PROT_WRITE,
                         MAP_SHARED | MAP_ANONYMOUS, -1, 0)),
          m_number(new (m_place) std::atomic<std::uint32_t>(0)) {}
    ~SharedNumber() { ::munmap(m_place, sizeof(std::atomic<std::uint32_t>)); }
    SharedNumber(const SharedNumber&) = delete;
    SharedNumber& operator=(const SharedNumber&) = delete;
    std::atomic<std::uint32_t>& operator*() const { return *m_number; }

  private:
    void* m_place;
    std::atomic<std::uint32_t>* m_number;
};

// Works on until it is killed.
[[noreturn]] void RunChild(const std::filesystem::path& path,
                           std::atomic<std::uint32_t>& committed) {
    try {
        const auto pages = OpenToWrite(path);
        for (std::uint32_t n = CounterOf(*pages) + 1;; ++n) {
            Change(*pages, n);
            pages->Commit();
            committed = n;
            if (n % kTransactionsToRest == 0) pages->Rest();
        }
    } catch (const std::exception&) {
        ::_exit(1);
    }
}

TEST(JournalKillTest, NothingCommittedIsLostAtAnyMoment) {
    const nomira::testing::TemporaryFolder folder;
    const std::filesystem::path path = folder / "a.mdb";
    MakeFile(path, Generation::Jet3);
    MakeFile(folder / "model.mdb", Generation::Jet3);
    const auto model = OpenToWrite(folder / "model.mdb");
    StoreU32(model->Change(kCounterPage), 0, 0);
    const auto first = OpenToWrite(path);
    StoreU32(first->Change(kCounterPage), 0, 0);
    first->Commit();
    first->Rest();

    const unsigned nSeed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(nSeed));
    std::mt19937 random(nSeed);
    const SharedNumber committed;
    for (int nRound = 0; nRound < kRounds; ++nRound) {
        const std::uint32_t nStart = CounterOf(*model);
        *committed = nStart;
        const pid_t pid = ::fork();
        if (pid == 0) RunChild(path, *committed);
        // Any moment of a transaction is as good as another; often the one is hit that rests.
        const std::uint32_t nGoal = random() % 2 == 0
                                        ? nStart + 1 + static_cast<std::uint32_t>(random() % 40)
                                        : (nStart / kTransactionsToRest + 1) * kTransactionsToRest;
        while (*committed < nGoal) {
            ASSERT_EQ(::waitpid(pid, nullptr, WNOHANG), 0) << "the child has failed";
            ::usleep(50);
        }
        ::usleep(static_cast<useconds_t>(random() % 3000));
        ::kill(pid, SIGKILL);
        ASSERT_EQ(::waitpid(pid, nullptr, 0), pid);
        const auto pages =
            FilePages::Open(path, nRound % 2 == 0 ? OpenMode::ReadWrite : OpenMode::ReadOnly);
        const std::uint32_t nReached = CounterOf(*pages);
        ASSERT_GE(nReached, *committed);
        ASSERT_LE(nReached, *committed + 1);
        while (CounterOf(*model) < nReached) {
            Change(*model, CounterOf(*model) + 1);
            model->Commit();
        }
        ASSERT_EQ(PagesOf(*pages), PagesOf(*model)) << "round " << nRound;
    }
    EXPECT_GT(CounterOf(*model), static_cast<std::uint32_t>(kRounds));
}

}  // namespace
}  // namespace nomira::jet
