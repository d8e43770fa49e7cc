// Arbitrary bytes as a text file, wiped for and imported, and as text edited in the view, on either
// kind of installation. The first byte picks the kind. No database is behind it, only a list of
// what would have been stored.
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <vector>

#include "adapters/memory/MemoryMachine.h"
#include "conversion/KeyScheme.h"
#include "conversion/TextExport.h"
#include "conversion/TextImport.h"
#include "database/adoModul.h"
#include "frame/Settings.h"
#include "langtools/RuntimeError.h"

namespace nomira {
namespace {

constexpr TextView kFile = u"C:\\names.txt";

void Require(bool bHolds) {
    if (!bHolds) std::abort();
}

struct StoredText {
    Text sModule;
    Text sKey;
    Text sText;
};

std::vector<StoredText> g_stored;

class FakeConnection : public Connection {
  public:
    void SetProvider(TextView) override {}
    void SetConnectionText(TextView) override {}
    void Open(TextView, TextView, TextView, std::int32_t) override { m_nState = kStateOpen; }
    std::int32_t State() const override { return m_nState; }
    void Close() override { m_nState = kStateClosed; }
    void BeginTrans() override {}
    void CommitTrans() override {}
    void RollbackTrans() override {}

  private:
    std::int32_t m_nState = kStateClosed;
};

// No query finds anything, so that every store adds an item and then its message.
class FakeRecordset : public Recordset {
  public:
    void Open(TextView, Connection& connection, CursorKind, LockKind, std::int32_t) override {
        Require(connection.State() == kStateOpen);
    }
    std::int32_t State() const override { return kStateOpen; }
    void Close() override {}
    bool Bof() const override { return true; }
    bool Eof() const override { return true; }
    void MoveFirst() override { Raise(ErrorNumber::NoCurrentRecord); }
    void MoveNext() override { Raise(ErrorNumber::NoCurrentRecord); }
    FieldValue Field(TextView) override { return static_cast<std::int64_t>(g_stored.size()); }
    void AddNew() override {}
    void SetField(TextView sName, const FieldValue& value) override {
        if (sName == u"Module") g_stored.push_back({std::get<Text>(value), {}, {}});
        if (sName == u"KeyString") g_stored.back().sKey = std::get<Text>(value);
        if (sName == u"String") g_stored.back().sText = std::get<Text>(value);
    }
    void Update() override {}
};

class FakeEngine : public DatabaseEngine {
  public:
    FakeEngine() { SetDatabaseEngine(this); }
    ~FakeEngine() override { SetDatabaseEngine(nullptr); }
    FakeEngine(const FakeEngine&) = delete;
    FakeEngine& operator=(const FakeEngine&) = delete;

    std::unique_ptr<Connection> CreateConnection() override {
        return std::make_unique<FakeConnection>();
    }
    std::unique_ptr<Recordset> CreateRecordset() override {
        return std::make_unique<FakeRecordset>();
    }
    void CompactDatabase(TextView, TextView) override {}
};

bool IsBareNumber(TextView sKey) {
    return !sKey.empty() && sKey.size() <= 3 &&
           sKey.find_first_not_of(u"0123456789") == TextView::npos;
}

void CheckStored(const StoredText& stored, bool bCustomer) {
    const SignalClass* signalClass = ClassOfKey(stored.sKey);
    if (signalClass)
        Require(stored.sModule == signalClass->sModule);
    else
        Require(!bCustomer && IsBareNumber(stored.sKey) && stored.sModule == u"ZTQXProcParam");
    Require(stored.sText.find_first_of(u"öÖäÄüÜß\t") == Text::npos);
    Require(!stored.sText.empty() || signalClass->bWelding);
}

void RunPass(void (*pass)(TextView)) {
    try {
        pass(kFile);
        Require(!g_Connection);
    } catch (const RuntimeError& error) {
        Require(error.Number() == ErrorNumber::Overflow);
    }
}

void ImportBytes(std::string_view bytes, bool bCustomer) {
    g_stored.clear();
    memory::MemoryMachine machine;
    FakeEngine engine;
    machine.files.Put(kFile, bytes);
    if (bCustomer)
        machine.registry.SetString(RegistryRoot::LocalMachine, u"Software\\Orvo\\Version",
                                   u"Customer", kCustomerVw);
    RunPass(ClearDbForTextFile);
    RunPass(TextIntoDb);
    Require(machine.files.OpenFiles() == 0);
    CloseDatabase();
    for (const StoredText& stored : g_stored)
        CheckStored(stored, bCustomer);
}

void ApplyBytes(std::string_view bytes, bool bCustomer) {
    g_stored.clear();
    memory::MemoryMachine machine;
    FakeEngine engine;
    if (bCustomer)
        machine.registry.SetString(RegistryRoot::LocalMachine, u"Software\\Orvo\\Version",
                                   u"Customer", kCustomerVw);
    Text sText = machine.locale.EightBitPage().Decode(bytes);
    try {
        ApplyEditedText(sText);
        Require(sText == g_sLastExport);
    } catch (const RuntimeError& error) {
        Require(error.Number() == ErrorNumber::Overflow ||
                error.Number() == ErrorNumber::InvalidProcedureCall);
    }
    CloseDatabase();
    for (const StoredText& stored : g_stored) {
        const SignalClass* signalClass = ClassOfKey(stored.sKey);
        Require(signalClass && stored.sModule == signalClass->sModule);
    }
}

}  // namespace
}  // namespace nomira

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize) {
    if (nSize == 0) return 0;
    const std::string_view bytes(reinterpret_cast<const char*>(pData), nSize);
    nomira::ImportBytes(bytes.substr(1), (pData[0] & 1) != 0);
    nomira::ApplyBytes(bytes.substr(1), (pData[0] & 1) != 0);
    return 0;
}
