// Work on many things by several threads, with results that come in order, as if one had done it.
#pragma once

#include <algorithm>
#include <condition_variable>
#include <cstddef>
#include <exception>
#include <map>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace nomira::companion {

// Gives out the numbers below `nCount` to threads, a few at a time, and keeps what they have made
// of them until its turn has come. Threads that are far ahead wait.
template <typename Result>
class OrderedResults {
  public:
    OrderedResults(std::size_t nCount, std::size_t nThreads)
        : m_nCount(nCount), m_nMostAhead(kAhead * nThreads) {}

    struct Piece {
        std::size_t nFirst;
        std::size_t nEnd;
    };
    // nullopt if nothing is left to do.
    std::optional<Piece> TakePiece() {
        std::unique_lock lock(m_mutex);
        m_room.wait(lock, [this] { return m_bStopped || m_nGiven < m_nWanted + m_nMostAhead; });
        if (m_bStopped || m_nGiven == m_nCount) return std::nullopt;
        const Piece piece{m_nGiven, std::min(m_nCount, m_nGiven + kInPiece)};
        m_nGiven = piece.nEnd;
        return piece;
    }
    // The results of a whole piece, or those ahead of a failure and the failure.
    void Put(std::size_t nFirst, std::vector<Result> results, std::exception_ptr failure) {
        const std::lock_guard lock(m_mutex);
        m_done.emplace(nFirst, Done{std::move(results), std::move(failure)});
        m_come.notify_one();
    }

    struct Done {
        std::vector<Result> results;
        std::exception_ptr failure;
    };
    // The piece that begins with this number.
    Done Get(std::size_t nFirst) {
        std::unique_lock lock(m_mutex);
        m_nWanted = nFirst;
        m_room.notify_all();
        m_come.wait(lock, [&] { return m_done.contains(nFirst); });
        return std::move(m_done.extract(nFirst).mapped());
    }
    void Stop() {
        const std::lock_guard lock(m_mutex);
        m_bStopped = true;
        m_room.notify_all();
    }

  private:
    static constexpr std::size_t kInPiece = 16;
    static constexpr std::size_t kAhead = 8 * kInPiece;

    std::size_t m_nCount;
    std::size_t m_nMostAhead;
    std::mutex m_mutex;
    std::condition_variable m_room;  // for more results
    std::condition_variable m_come;  // a result has
    std::size_t m_nGiven = 0;
    std::size_t m_nWanted = 0;
    bool m_bStopped = false;
    std::map<std::size_t, Done> m_done;
};

// Calls `work(n)` for each number below `nCount`, on `nThreads` threads, and `take(result)` with
// what it gave, in this thread and in the order of the numbers. What `work` throws is thrown here
// when its turn has come, and nothing is taken any more; what follows may have been worked on
// in vain. With one thread, or one number, all of it happens in this thread.
template <typename Work, typename Take>
void InOrder(std::size_t nCount, std::size_t nThreads, Work work, Take take) {
    using Result = decltype(work(std::size_t{0}));
    const auto alone = [&] {
        for (std::size_t n = 0; n < nCount; ++n)
            take(work(n));
    };
    if (nThreads <= 1 || nCount <= 1) return alone();
    OrderedResults<Result> ordered(nCount, nThreads);
    const auto run = [&] {
        while (const auto piece = ordered.TakePiece()) {
            std::vector<Result> results;
            std::exception_ptr failure;
            try {
                for (std::size_t n = piece->nFirst; n < piece->nEnd; ++n)
                    results.push_back(work(n));
            } catch (...) {
                failure = std::current_exception();
            }
            ordered.Put(piece->nFirst, std::move(results), failure);
        }
    };
    struct Threads {
        ~Threads() {
            ordered.Stop();
            for (std::thread& thread : all)
                thread.join();
        }
        OrderedResults<Result>& ordered;
        std::vector<std::thread> all;
    } threads{ordered, {}};
    try {
        while (threads.all.size() < std::min(nThreads, nCount))
            threads.all.emplace_back(run);
    } catch (const std::system_error&) {
        if (threads.all.empty()) return alone();  // the system has no more of them
    }
    for (std::size_t nNext = 0; nNext < nCount;) {
        auto done = ordered.Get(nNext);
        nNext += done.results.size();
        for (Result& result : done.results)
            take(std::move(result));
        if (done.failure) std::rethrow_exception(done.failure);
    }
}

}  // namespace nomira::companion
