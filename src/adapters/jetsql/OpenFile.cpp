#include "adapters/jetsql/OpenFile.h"

#include <map>
#include <mutex>
#include <utility>

#include "nativefiles/NativeFiles.h"

namespace nomira::jetsql {
namespace {

// The statements of one look-up follow each other by less than that.
constexpr std::chrono::microseconds kJustNow{20};

// Others who write between two looks at the file, time and again.
constexpr int kMostTries = 5;

// A file is one and the same under whatever path.
using FileId = std::pair<dev_t, ino_t>;

struct Registry {
    std::mutex mutex;
    std::map<FileId, std::weak_ptr<OpenFile>> files;
};

Registry& TheRegistry() {
    static Registry registry;
    return registry;
}

FileId IdOf(const std::filesystem::path& path) {
    const auto status = nativefiles::StatusOf(path);
    if (!status) jet::Fail(jet::FailureKind::InputOutput, "No such file or directory");
    return {status->st_dev, status->st_ino};
}

}  // namespace

std::shared_ptr<OpenFile> OpenFile::At(const std::filesystem::path& path) {
    Registry& registry = TheRegistry();
    const std::lock_guard lock(registry.mutex);
    std::erase_if(registry.files, [](const auto& entry) { return entry.second.expired(); });
    std::weak_ptr<OpenFile>& known = registry.files[IdOf(path)];
    if (auto open = known.lock()) return open;
    std::shared_ptr<OpenFile> fresh(new OpenFile(path));
    known = fresh;
    return fresh;
}

OpenFile::OpenFile(std::filesystem::path path) : m_path(std::move(path)) {
    Read();
}

OpenFile::~OpenFile() {
    try {
        m_pages->Rest();
    } catch (const std::exception&) {
        // What was committed stands in the journal, and comes in at the next opening.
    }
}

void OpenFile::Read() {
    auto pages = jet::FilePages::Open(m_path, jet::OpenMode::ReadWrite);
    jet::FilePages* raw = pages.get();
    m_file = std::make_unique<jet::AccessFile>(std::move(pages));
    m_pages = raw;
    ++m_nReading;
}

void OpenFile::Look() {
    if (m_writer != nullptr || m_nWalks > 0) return;
    const auto now = std::chrono::steady_clock::now();
    if (now - m_looked < kJustNow) return;
    if (!m_pages->IsAsRead()) Read();
    m_looked = now;
}

void OpenFile::Begin(const void* writer) {
    if (m_writer == writer) return;
    if (m_writer != nullptr)
        jet::Fail(jet::FailureKind::Held, "the database is locked by another connection");
    Take();
    m_writer = writer;
}

void OpenFile::Take() {
    // What was made of the pages is stale if others have changed the file meanwhile.
    for (int nTry = 0; !m_pages->StartWriting(); ++nTry) {
        m_pages->Rest();
        if (m_nWalks > 0 || nTry == kMostTries)
            jet::Fail(jet::FailureKind::Held, "the database is locked by another program");
        Read();
    }
}

void OpenFile::Commit(const void* writer) {
    if (IsWriting(writer)) m_pages->Commit();
}

void OpenFile::End(const void* writer) {
    if (!IsWriting(writer)) return;
    m_writer = nullptr;
    m_pages->Rollback();
}

void OpenFile::Rest() {
    if (m_writer == nullptr) m_pages->Rest();
}

}  // namespace nomira::jetsql
