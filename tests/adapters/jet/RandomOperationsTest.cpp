// Random operations on a file of two related tables, and the same ones on plain maps. The number of
// operations is a few thousand in each test; the environment variable NOMIRA_JET_OPERATIONS gives
// another one.

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <fstream>
#include <map>
#include <random>

#include "SecondReader.h"
#include "adapters/jet/Checker.h"
#include "adapters/jet/Compact.h"
#include "adapters/jet/FilePages.h"
#include "adapters/jet/KeyCodes.h"
#include "adapters/jet/MemoryPages.h"

namespace nomira::jet {
namespace {

namespace fs = std::filesystem;

using Text = std::u16string;

// With more of them the tables only grow, and so does the time that comparing takes.
constexpr std::size_t kMostItems = 2000;

// Of operations, from one comparison to the next.
constexpr int kStep = 1000;

constexpr const char* kNoSecondReader = "mdb-export is missing; script/bootstrap installs it";

// What the tables hold.
struct Item {
    Text sModule;
    Text sKeyString;

    bool operator==(const Item&) const = default;
};
using MessageKey = std::pair<std::int64_t, std::int64_t>;  // of the item, of the language
struct Model {
    std::map<std::int64_t, Item> items;
    std::map<MessageKey, std::optional<Text>> messages;

    bool operator==(const Model&) const = default;
};

// Where a file is kept, and how it is made, opened anew, and looked at from outside.
class Home {
  public:
    virtual ~Home() = default;
    virtual std::unique_ptr<PageStore> Create() = 0;
    // After the store that was there is gone.
    virtual std::unique_ptr<PageStore> Open() = 0;
    // Everything is committed.
    virtual void Leave(PageStore& store) = 0;
    virtual fs::path PathFor(PageStore& store) = 0;
    // Puts another file in the place of the one that was left.
    virtual void Replace(const Bytes& file) = 0;
};

void WriteFile(const fs::path& path, const Bytes& bytes) {
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
}

fs::path TemporaryPath(const std::string& sName) {
    return fs::temp_directory_path() / ("nomira-" + std::to_string(getpid()) + sName);
}

class MemoryHome : public Home {
  public:
    explicit MemoryHome(Generation generation) : m_generation(generation) {}
    ~MemoryHome() override { fs::remove(m_path); }

    std::unique_ptr<PageStore> Create() override {
        return std::make_unique<MemoryPages>(m_generation);
    }
    std::unique_ptr<PageStore> Open() override {
        return std::make_unique<MemoryPages>(m_generation, m_bytes);
    }
    void Leave(PageStore& store) override { m_bytes = dynamic_cast<MemoryPages&>(store).File(); }
    fs::path PathFor(PageStore& store) override {
        Leave(store);
        WriteFile(m_path, m_bytes);
        return m_path;
    }
    void Replace(const Bytes& file) override { m_bytes = file; }

  private:
    Generation m_generation;
    fs::path m_path = TemporaryPath("-memory.mdb");
    Bytes m_bytes;
};

class DiskHome : public Home {
  public:
    explicit DiskHome(Generation generation) : m_generation(generation) {}
    ~DiskHome() override { fs::remove(m_path); }

    std::unique_ptr<PageStore> Create() override { return FilePages::Create(m_path, m_generation); }
    std::unique_ptr<PageStore> Open() override {
        return FilePages::Open(m_path, OpenMode::ReadWrite);
    }
    void Leave(PageStore& store) override { dynamic_cast<FilePages&>(store).Rest(); }
    fs::path PathFor(PageStore& store) override {
        Leave(store);
        return m_path;
    }
    void Replace(const Bytes& file) override { WriteFile(m_path, file); }

  private:
    Generation m_generation;
    fs::path m_path = TemporaryPath("-disk.mdb");
};

class RandomOperations {
  public:
    RandomOperations(Home& home, Generation generation, unsigned nSeed)
        : m_home(home), m_generation(generation), m_random(nSeed) {
        auto pages = m_home.Create();
        AccessFile::CreateEmpty(*pages);
        pages->Commit();
        m_home.Leave(*pages);
        pages.reset();
        Take(m_home.Open());
        CreateTables();
        m_store->Commit();
    }

    // Comparing alternates with the operations.
    void Run(int nOperations, void (RandomOperations::*compare)() = &RandomOperations::Compare) {
        for (int n = 1; n <= nOperations && !::testing::Test::HasFailure(); ++n) {
            SCOPED_TRACE("operation " + std::to_string(n));
            RunOne();
            if (n % kStep == 0 || n == nOperations) (this->*compare)();
        }
    }

    void Compare() {
        for (const Finding& finding : CheckFile(*m_file))
            ADD_FAILURE() << finding.sText << ", page " << finding.nPage;
        Model found;
        for (auto scan = Items().Rows(); !scan.AtEnd(); scan.Next()) {
            const Row row = Items().Read(scan.Place());
            found.items[std::get<std::int64_t>(row[0])] = {std::get<Text>(row[1]),
                                                           std::get<Text>(row[2])};
        }
        for (auto scan = Messages().Rows(); !scan.AtEnd(); scan.Next()) {
            const Row row = Messages().Read(scan.Place());
            const MessageKey key{std::get<std::int64_t>(row[0]), std::get<std::int64_t>(row[1])};
            found.messages[key] =
                IsNull(row[2]) ? std::nullopt : std::optional(std::get<Text>(row[2]));
        }
        EXPECT_TRUE(found == m_now);
        EXPECT_EQ(Items().RowCount(), m_now.items.size());
        EXPECT_EQ(Messages().RowCount(), m_now.messages.size());
    }

    // The rows as both readers see them.
    void CompareTwice() {
        Compare();
        Commit();
        const fs::path path = m_home.PathFor(*m_store);
        for (const char* sTable : {"Items", "Messages"}) {
            const auto printed = testing::PrintTable(path, sTable);
            EXPECT_EQ(testing::DifferenceOf(*TableOf(sTable), printed), "") << sTable;
        }
    }

  private:
    using Operation = void (RandomOperations::*)();
    struct Weighted {
        unsigned nWeight;
        Operation operation;
    };

    void Take(std::unique_ptr<PageStore> pages) {
        m_store = pages.get();
        m_file = std::make_unique<AccessFile>(std::move(pages));
    }

    void CreateTables() {
        NewTable items;
        items.sName = u"Items";
        items.columns = {{u"Key_id", ColumnType::Long, 0, true, false},
                         {u"Module", ColumnType::Text, 50, false, true},
                         {u"KeyString", ColumnType::Text, 255, false, true}};
        items.indexes = {{u"PrimaryKey", {u"Key_id"}, true, true},
                         {u"KeyString", {u"KeyString"}, false, false},
                         {u"Both", {u"Module", u"KeyString"}, false, false}};
        m_file->CreateTable(items);
        NewTable messages;
        messages.sName = u"Messages";
        messages.columns = {{u"Key_id", ColumnType::Long, 0, false, false},
                            {u"Language_id", ColumnType::Integer, 0, false, false},
                            {u"String", ColumnType::Memo, 0, false, true}};
        messages.indexes = {{u"PrimaryKey", {u"Key_id", u"Language_id"}, true, true},
                            {u"Key_id", {u"Key_id"}, false, false}};
        m_file->CreateTable(messages);
        m_file->CreateRelationship(
            {u"ItemsMessages", u"Items", u"Key_id", u"Messages", u"Key_id", true});
    }

    Table* TableOf(const std::string& sName) {
        return m_file->FindTable(std::u16string(sName.begin(), sName.end()));
    }
    Table& Items() { return *TableOf("Items"); }
    Table& Messages() { return *TableOf("Messages"); }

    // ---- Chance

    std::uint32_t Below(std::size_t n) {
        return static_cast<std::uint32_t>(m_random() % std::max<std::size_t>(n, 1));
    }
    template <typename Map>
    typename Map::const_iterator AnyOf(const Map& map) {
        const auto found = map.lower_bound(Around(map));
        return found == map.end() ? map.begin() : found;
    }
    std::int64_t Around(const std::map<std::int64_t, Item>& items) {
        return items.empty() ? 0 : Below(static_cast<std::size_t>(items.rbegin()->first) + 1);
    }
    MessageKey Around(const std::map<MessageKey, std::optional<Text>>& messages) {
        if (messages.empty()) return {};
        return {Below(static_cast<std::size_t>(messages.rbegin()->first.first) + 1), Below(6)};
    }
    Text AnyText(std::size_t nMost) {
        const Text sLetters = u"abcdefghijklmnopqrstuvwxyzABCDEFGH 0123456789_-'äöüßéÉ";
        const std::size_t nLength = Below(nMost + 1);
        Text s;
        for (std::size_t n = 0; n < nLength; ++n)
            s += sLetters[Below(Below(3) == 0 ? sLetters.size() : 8)];
        return s;
    }
    // Some are inline, some have a row, some a chain.
    std::optional<Text> AnyString() {
        constexpr std::array<std::size_t, 8> kLengths{10, 20, 40, 80, 80, 300, 3000, 12000};
        if (Below(20) == 0) return std::nullopt;
        Text s = AnyText(kLengths[Below(kLengths.size())]);
        if (m_generation == Generation::Jet4 && Below(5) == 0) s += u"Żółć ЖЯ";
        return s;
    }
    Item AnyItem() { return {AnyText(50), AnyText(Below(4) == 0 ? 255 : 40)}; }

    // ---- Places by keys

    static Bytes KeyOf(std::initializer_list<std::pair<ColumnType, std::int64_t>> values,
                       Generation generation) {
        Bytes key;
        for (const auto& [type, nValue] : values) {
            Column column;
            column.type = type;
            AppendKey(key, nValue, column, true, generation);
        }
        return key;
    }
    RowPlace PlaceOf(Table& table, const Bytes& key) {
        const auto cursor = table.Index(PrimaryOf(table)).LowerBound(key);
        EXPECT_FALSE(cursor.AtEnd());
        EXPECT_TRUE(std::ranges::equal(cursor.Key(), key));
        return cursor.Place();
    }
    static std::size_t PrimaryOf(Table& table) {
        for (const LogicalIndex& index : table.Definition().logicalIndexes)
            if (index.kind == LogicalKind::PrimaryKey) return index.nRealIndex;
        ADD_FAILURE() << "no primary key";
        return 0;
    }
    RowPlace PlaceOfItem(std::int64_t nKey) {
        return PlaceOf(Items(), KeyOf({{ColumnType::Long, nKey}}, m_generation));
    }
    RowPlace PlaceOfMessage(const MessageKey& key) {
        return PlaceOf(Messages(),
                       KeyOf({{ColumnType::Long, key.first}, {ColumnType::Integer, key.second}},
                             m_generation));
    }

    // ---- Rows

    static Row RowOf(const Value& key, const Item& item) {
        return {key, item.sModule, item.sKeyString};
    }
    static Row RowOf(const MessageKey& key, const std::optional<Text>& sString) {
        return {key.first, key.second, sString ? Value(*sString) : Value()};
    }

    template <typename Change>
    void ExpectRefused(Change change) {
        try {
            change();
            ADD_FAILURE() << "was taken";
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.Kind(), FailureKind::Constraint) << failure.what();
        }
    }

    // ---- Operations

    void RunOne() {
        static constexpr std::array<Weighted, 13> kOperations{{
            {300, &RandomOperations::InsertItem},
            {60, &RandomOperations::InsertItemOfKey},
            {600, &RandomOperations::InsertMessage},
            {250, &RandomOperations::UpdateItem},
            {350, &RandomOperations::UpdateMessage},
            {100, &RandomOperations::MoveMessage},
            {70, &RandomOperations::DeleteItem},
            {150, &RandomOperations::DeleteMessage},
            {30, &RandomOperations::TryForbidden},
            {40, &RandomOperations::Commit},
            {10, &RandomOperations::RollBack},
            {10, &RandomOperations::Reopen},
            {4, &RandomOperations::ReplaceByCompacted},
        }};
        unsigned nAll = 0;
        for (const Weighted& weighted : kOperations)
            nAll += weighted.nWeight;
        std::uint32_t nChance = Below(nAll);
        for (const Weighted& weighted : kOperations) {
            if (nChance < weighted.nWeight) {
                (this->*weighted.operation)();
                return;
            }
            nChance -= weighted.nWeight;
        }
    }

    void InsertItem() {
        if (m_now.items.size() > kMostItems) {
            DeleteItem();
            return;
        }
        const Item item = AnyItem();
        Row row = RowOf(Value(), item);
        Items().Insert(row);
        const std::int64_t nKey = std::get<std::int64_t>(row[0]);
        EXPECT_FALSE(m_now.items.contains(nKey));
        m_now.items[nKey] = item;
    }

    void InsertItemOfKey() {
        const std::int64_t nKey = Around(m_now.items) + Below(20);
        const Item item = AnyItem();
        Row row = RowOf(nKey, item);
        if (m_now.items.contains(nKey)) {
            ExpectRefused([&] { Items().Insert(row); });
        } else {
            Items().Insert(row);
            m_now.items[nKey] = item;
        }
    }

    void InsertMessage() {
        if (m_now.items.empty()) return;
        const MessageKey key{AnyOf(m_now.items)->first, Below(6)};
        const auto sString = AnyString();
        Row row = RowOf(key, sString);
        if (m_now.messages.contains(key)) {
            ExpectRefused([&] { Messages().Insert(row); });
        } else {
            Messages().Insert(row);
            m_now.messages[key] = sString;
        }
    }

    void UpdateItem() {
        if (m_now.items.empty()) return;
        const std::int64_t nKey = AnyOf(m_now.items)->first;
        const Item item = AnyItem();
        Items().Update(PlaceOfItem(nKey), RowOf(nKey, item));
        m_now.items[nKey] = item;
    }

    void UpdateMessage() {
        if (m_now.messages.empty()) return;
        const auto [key, sOld] = *AnyOf(m_now.messages);
        const auto sString = Below(4) == 0 ? sOld : AnyString();
        Messages().Update(PlaceOfMessage(key), RowOf(key, sString));
        m_now.messages[key] = sString;
    }

    // To another item and language.
    void MoveMessage() {
        if (m_now.messages.empty()) return;
        const auto [from, sString] = *AnyOf(m_now.messages);
        const MessageKey to{AnyOf(m_now.items)->first, Below(6)};
        if (to == from) return;
        const RowPlace place = PlaceOfMessage(from);
        if (m_now.messages.contains(to)) {
            ExpectRefused([&] { Messages().Update(place, RowOf(to, sString)); });
        } else {
            Messages().Update(place, RowOf(to, sString));
            m_now.messages.erase(from);
            m_now.messages[to] = sString;
        }
    }

    void DeleteItem() {
        if (m_now.items.empty()) return;
        const std::int64_t nKey = AnyOf(m_now.items)->first;
        Items().Delete(PlaceOfItem(nKey));
        m_now.items.erase(nKey);
        std::erase_if(m_now.messages,
                      [&](const auto& message) { return message.first.first == nKey; });
    }

    void DeleteMessage() {
        if (m_now.messages.empty()) return;
        const MessageKey key = AnyOf(m_now.messages)->first;
        Messages().Delete(PlaceOfMessage(key));
        m_now.messages.erase(key);
    }

    void TryForbidden() {
        Row orphan = RowOf(MessageKey{1'000'000, 1}, Text(u"x"));
        ExpectRefused([&] { Messages().Insert(orphan); });
        Row withoutKey{Value(), std::int64_t{1}, Text(u"x")};
        ExpectRefused([&] { Messages().Insert(withoutKey); });
        Row tooLong = RowOf(Value(), {Text(51, u'x'), u""});
        ExpectRefused([&] { Items().Insert(tooLong); });
        if (m_now.messages.empty()) return;
        const std::int64_t nKey = AnyOf(m_now.messages)->first.first;
        ExpectRefused([&] {
            Items().Update(PlaceOfItem(nKey), RowOf(std::int64_t{1'000'000}, m_now.items[nKey]));
        });
    }

    void Commit() {
        m_store->Commit();
        m_committed = m_now;
    }

    void RollBack() {
        m_store->Rollback();
        m_now = m_committed;
    }

    void Reopen() {
        Commit();
        m_home.Leave(*m_store);
        m_file.reset();
        Take(m_home.Open());
    }

    void ReplaceByCompacted() {
        Commit();
        const CompactedFile compacted = Compact(*m_file, m_generation);
        EXPECT_TRUE(compacted.leftOut.empty());
        m_home.Leave(*m_store);
        m_file.reset();
        m_home.Replace(compacted.bytes);
        Take(m_home.Open());
    }

    Home& m_home;
    Generation m_generation;
    std::mt19937 m_random;
    std::unique_ptr<AccessFile> m_file;
    PageStore* m_store = nullptr;
    Model m_now;
    Model m_committed;
};

int Operations(int nUsually) {
    const char* sOperations = std::getenv("NOMIRA_JET_OPERATIONS");
    return sOperations == nullptr ? nUsually : std::atoi(sOperations);
}

class RandomOperationsTest : public ::testing::TestWithParam<Generation> {};

INSTANTIATE_TEST_SUITE_P(Generations, RandomOperationsTest,
                         ::testing::Values(Generation::Jet3, Generation::Jet4),
                         [](const auto& generation) {
                             return generation.param == Generation::Jet3 ? "Jet3" : "Jet4";
                         });

TEST_P(RandomOperationsTest, ATableFileHoldsWhatPlainMapsHold) {
    MemoryHome home(GetParam());
    RandomOperations operations(home, GetParam(), 20010305);
    operations.Run(Operations(6000));
}

TEST_P(RandomOperationsTest, AFileOnTheDiskHoldsWhatPlainMapsHoldForAnotherReaderToo) {
    ASSERT_TRUE(testing::HasSecondReader()) << kNoSecondReader;
    DiskHome home(GetParam());
    RandomOperations operations(home, GetParam(), 7);
    operations.Run(Operations(3000), &RandomOperations::CompareTwice);
}

TEST_P(RandomOperationsTest, AnotherReaderSeesTheSameRows) {
    ASSERT_TRUE(testing::HasSecondReader()) << kNoSecondReader;
    MemoryHome home(GetParam());
    RandomOperations operations(home, GetParam(), 1);
    operations.Run(Operations(2000), &RandomOperations::CompareTwice);
}

}  // namespace
}  // namespace nomira::jet
