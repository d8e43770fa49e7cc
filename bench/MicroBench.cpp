// The three routines that each line, or each name, goes through.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <stdexcept>

#include "adapters/sqlite/SqliteEngine.h"
#include "adapters/sqlite/StoreSchema.h"
#include "database/adoModul.h"
#include "langtools/CParser.h"
#include "langtools/Matches.h"

namespace {

namespace fs = std::filesystem;
using namespace nomira;

void MatchesAKey(benchmark::State& state) {
    const Text sKey = u"OUT_1024";
    for (auto _ : state)
        benchmark::DoNotOptimize(Matches(sKey, u"OUT_####"));
}
BENCHMARK(MatchesAKey);

void MatchesNoKey(benchmark::State& state) {
    const Text sKey = u"FlagText1024";
    for (auto _ : state)
        benchmark::DoNotOptimize(Matches(sKey, u"OUT_####"));
}
BENCHMARK(MatchesNoKey);

void MatchesARowWithARest(benchmark::State& state) {
    const Text sRow = u"IN_12 gripper 4 opened, left side of the turntable";
    for (auto _ : state)
        benchmark::DoNotOptimize(Matches(sRow, u"IN_##*"));
}
BENCHMARK(MatchesARowWithARest);

void ParsesALine(benchmark::State& state) {
    const Text sLine = u"IN_12 gripper 4 opened, left side of the turntable";
    for (auto _ : state) {
        g_Parser().Parse(sLine, u" ", u" ");
        benchmark::DoNotOptimize(g_Parser().Token(1).data());
    }
}
BENCHMARK(ParsesALine);

// A store with some keys in it, in the program's own place.
class Store {
  public:
    static constexpr int kKeys = 1000;

    // The engine takes the store for one that was last changed `age` ago.
    explicit Store(std::chrono::hours age)
        : m_path(MakeFolder() / "store.db"),
          m_engine([this](TextView) { return m_path; },
                   [age] { return sqlite::SystemTime() + age; }) {
        sqlite::CreateStore(m_path);
        SetDatabaseEngine(&m_engine);
        OpenDatabase(kLongTextDatabase);
        for (int n = 0; n < kKeys; ++n)
            StoreLongText(u"gripper 4 opened", u"IO", KeyOf(n));
        CloseDatabase();
    }
    ~Store() {
        SetDatabaseEngine(nullptr);
        fs::remove_all(m_path.parent_path());
    }
    Store(const Store&) = delete;
    Store& operator=(const Store&) = delete;

    static Text KeyOf(int n) {
        const std::string sNumber = std::to_string(n);
        return u"IN_" + Text(sNumber.begin(), sNumber.end());
    }

  private:
    static fs::path MakeFolder() {
        std::string sName = (fs::temp_directory_path() / "nomira-bench-XXXXXX").string();
        if (!mkdtemp(sName.data())) throw std::runtime_error("no temporary folder");
        return sName;
    }

    fs::path m_path;
    sqlite::SqliteEngine m_engine;
};

// As the rewriter of programs does it: the file is opened and closed for each name. The store was
// changed just now, or so long ago that what was read once is remembered.
void ReadsALongText(benchmark::State& state, std::chrono::hours age) {
    const Store store(age);
    int n = 0;
    Text sText;
    for (auto _ : state) {
        sText.clear();
        if (!ReadLongText(sText, u"IO", Store::KeyOf(n++ % Store::kKeys)) || sText.empty())
            state.SkipWithError("the text can't be read");
    }
}
BENCHMARK_CAPTURE(ReadsALongText, ChangedJustNow, std::chrono::hours(0));
BENCHMARK_CAPTURE(ReadsALongText, ChangedLongAgo, std::chrono::hours(1));

}  // namespace

BENCHMARK_MAIN();
