#include "adapters/sqlite/DatabasePool.h"

#include <algorithm>
#include <utility>

#include "adapters/sqlite/JetDatabase.h"
#include "adapters/sqlite/SqliteFile.h"
#include "langtools/RuntimeError.h"

namespace nomira::sqlite {
namespace {

// The long texts, the catalogue, and two more for whatever a test or a tool opens.
constexpr std::size_t kMostKept = 4;
// Paths of the program: it has two.
constexpr std::size_t kMostResolved = 64;

}  // namespace

std::unique_ptr<Database> MakeDatabase(const std::filesystem::path& path,
                                       const FileIdentity& identity) {
    auto file = std::make_unique<SqliteFile>(path, identity);
    if (!file->IsAccessFile()) return file;
    file.reset();
    return std::make_unique<JetDatabase>(path, identity);
}

std::unique_ptr<Database> DatabasePool::Take(TextView sPath) {
    if (auto unchanged = TakeUnchanged(sPath)) return unchanged;
    const std::filesystem::path path = m_resolvePath(sPath);
    if (m_resolved.size() >= kMostResolved) m_resolved.clear();
    m_resolved.insert_or_assign(Text(sPath), path);
    std::unique_ptr<Database> database = TakeKept(path);
    const FileState state = LookAtFile(path);
    if (!database || database->Identity() != state.identity)
        database = MakeDatabase(path, state.identity);
    try {
        database->CheckReadable(state, m_clock());
    } catch (const RuntimeError&) {
        // Kept, so that the next try on this file doesn't wait for the lock in vain once more.
        if (database->WasBusy()) Keep(std::move(database));
        throw;
    }
    return database;
}

void DatabasePool::GiveBack(std::unique_ptr<Database> database) {
    if (database->Rest()) Keep(std::move(database));
}

std::unique_ptr<Database> DatabasePool::TakeUnchanged(TextView sPath) {
    const auto resolved = m_resolved.find(Text(sPath));
    if (resolved == m_resolved.end()) return nullptr;
    std::unique_ptr<Database> database = TakeKept(resolved->second);
    if (!database) return nullptr;
    const auto state = TryLookAtFile(database->Path());
    if (state && database->IsAsRemembered(*state)) return database;
    Keep(std::move(database));
    return nullptr;
}

std::unique_ptr<Database> DatabasePool::TakeKept(const std::filesystem::path& path) {
    const auto found = std::find_if(m_kept.begin(), m_kept.end(),
                                    [&](const auto& kept) { return kept->Path() == path; });
    if (found == m_kept.end()) return nullptr;
    std::unique_ptr<Database> database = std::move(*found);
    m_kept.erase(found);
    return database;
}

void DatabasePool::Keep(std::unique_ptr<Database> database) {
    TakeKept(database->Path()).reset();
    if (m_kept.size() == kMostKept) m_kept.erase(m_kept.begin());
    m_kept.push_back(std::move(database));
}

}  // namespace nomira::sqlite
