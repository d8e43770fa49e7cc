#include "adapters/sqlite/JetDatabase.h"

#include <system_error>
#include <utility>
#include <vector>

#include "adapters/jet/Compact.h"
#include "adapters/jet/JournalFile.h"
#include "adapters/sqlite/Failure.h"
#include "adapters/sqlite/NewFile.h"

namespace nomira::sqlite {
namespace {

constexpr const char* kModule = "nomira_access";
constexpr mode_t kPermissionBits = 0777;

// Messages go with their item, also in a file that doesn't say so itself.
std::vector<jetsql::Cascade> Cascades() {
    return {{u"Items", u"Key_id", u"Messages", u"Key_id"}};
}

jet::Generation GenerationFor(int nEngineType, jet::Generation own) {
    constexpr int kJet3 = 4;
    constexpr int kJet4 = 5;
    if (nEngineType == kJet3) return jet::Generation::Jet3;
    return nEngineType == kJet4 ? jet::Generation::Jet4 : own;
}

// The journal lies beside the file itself, wherever a link to it lies.
std::filesystem::path RealPath(const std::filesystem::path& path) {
    std::error_code error;
    const std::filesystem::path real = std::filesystem::weakly_canonical(path, error);
    return error ? path : real;
}

std::string ShapeOf(const std::vector<jetsql::NamedTable>& tables) {
    std::string sShape;
    for (const jetsql::NamedTable& table : tables)
        sShape += jetsql::CreateStatement(kModule, "", table) + table.sShape + '\n';
    return sShape;
}

}  // namespace

JetDatabase::JetDatabase(std::filesystem::path path, const FileIdentity& identity)
    : Database(std::move(path), identity),
      m_session(std::make_shared<jetsql::AccessSession>(Path(), Cascades())),
      m_journal(jet::JournalPath(RealPath(Path()))) {
    OpenHandle(":memory:", SQLITE_OPEN_READWRITE);
}

JetDatabase::~JetDatabase() {
    CloseHandle();
}

void JetDatabase::MakeCompacted(const std::filesystem::path& path, int nEngineType) {
    const jet::Bytes bytes = OnFile([&] {
        m_session->Open().Look();
        jet::AccessFile& source = m_session->File();
        return jet::Compact(source, GenerationFor(nEngineType, source.Kind())).bytes;
    });
    MakeFile(path, bytes, Identity().nMode & kPermissionBits);
}

bool JetDatabase::IsBeingWritten() const {
    std::error_code error;
    return std::filesystem::exists(m_journal, error) || error;
}

void JetDatabase::CheckContents() {
    OnFile([this] {
        m_session->Open().Look();
        if (m_nReading == m_session->Open().Reading()) return;
        const auto tables = jetsql::LocalTables(m_session->File());
        const std::string sShape = ShapeOf(tables);
        m_nReading = 0;
        if (sShape != m_sShape) DeclareTables(tables, sShape);
        m_nReading = m_session->Open().Reading();
    });
}

void JetDatabase::DeclareTables(const std::vector<jetsql::NamedTable>& tables,
                                const std::string& sShape) {
    m_sShape.clear();
    OpenHandle(":memory:", SQLITE_OPEN_READWRITE);
    if (jetsql::RegisterModule(Handle(), kModule, m_session) != SQLITE_OK) RaiseFailure(Handle());
    for (const jetsql::NamedTable& table : tables)
        RunOrRaise(jetsql::CreateStatement(kModule, "", table).c_str());
    m_sShape = sShape;
}

// What is read inside a transaction that is going to write stays as it was read.
void JetDatabase::PrepareToWrite() {
    if (InTransaction()) return;
    OnFile([this] { m_session->Open().Take(); });
}

bool JetDatabase::IsReadOnly() const {
    return OnFile([this] { return !m_session->Open().CanWrite(); });
}

bool JetDatabase::PutToRest() {
    return OnFile([this] {
        m_session->Rest();
        return true;
    });
}

}  // namespace nomira::sqlite
