#include "adapters/sqlite/DatabasePool.h"

#include <algorithm>
#include <utility>

#include "langtools/RuntimeError.h"

namespace nomira::sqlite {
namespace {

// The long texts, the catalogue, and two more for whatever a test or a tool opens.
constexpr std::size_t kMostKept = 4;

}  // namespace

std::unique_ptr<Database> DatabasePool::Take(const std::filesystem::path& path) {
    std::unique_ptr<Database> database = TakeKept(path);
    const FileIdentity identity = IdentifyFile(path);
    if (!database || database->Identity() != identity)
        database = std::make_unique<Database>(path, identity);
    try {
        database->CheckReadable();
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

void DatabasePool::Forget(const std::filesystem::path& path) {
    TakeKept(path).reset();
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
    Forget(database->Path());
    if (m_kept.size() == kMostKept) m_kept.erase(m_kept.begin());
    m_kept.push_back(std::move(database));
}

}  // namespace nomira::sqlite
