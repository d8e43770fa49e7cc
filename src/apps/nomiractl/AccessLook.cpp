#include "apps/nomiractl/AccessLook.h"

#include <fmt/format.h>

#include <memory>
#include <utility>

#include "adapters/jet/AccessFile.h"
#include "adapters/jet/Checker.h"
#include "adapters/jet/FilePages.h"
#include "adapters/jet/JournalFile.h"
#include "adapters/jet/LockFile.h"
#include "adapters/jet/PageAllocator.h"
#include "apps/nomiractl/Refusal.h"
#include "apps/nomiractl/Words.h"

namespace nomira::companion {
namespace {

namespace fs = std::filesystem;

template <typename Work>
auto InWords(const fs::path& path, Work work) {
    try {
        return work();
    } catch (const jet::Failure& failure) {
        throw Refusal(fmt::format("{}: {}", path.string(), failure.what()), ExitCode::Database);
    }
}

std::vector<AccessTable> TablesOf(jet::AccessFile& file) {
    std::vector<AccessTable> tables;
    for (const jet::CatalogueEntry& entry : file.Catalogue()) {
        if (!entry.IsTable() || entry.IsSystem()) continue;
        const jet::Table* table = file.FindTable(entry.sName);
        if (table != nullptr) tables.push_back({Utf8(entry.sName), table->RowCount()});
    }
    return tables;
}

std::vector<AccessUser> UsersOf(const fs::path& path) {
    std::vector<AccessUser> users;
    const auto lockFile = jet::FindLockFile(path);
    if (!lockFile) return users;
    for (const jet::LockFileUser& user : jet::ReadLockFile(*lockFile))
        users.push_back({user.sComputer, user.sName, user.bPresent});
    return users;
}

std::uint32_t FreePagesOf(jet::PageStore& pages) {
    std::uint32_t nFree = 0;
    for (std::uint32_t nPage = 0; nPage < pages.Count(); ++nPage)
        nFree += jet::IsFree(pages, nPage) ? 1 : 0;
    return nFree;
}

std::string WhyNotWritable(const fs::path& path) {
    if (const auto lockFile = jet::FindLockFile(path); lockFile && jet::IsLockFileHeld(*lockFile))
        return "somebody has the file open in Access";
    return {};
}

}  // namespace

AccessLook LookIntoAccessFile(const fs::path& path) {
    return InWords(path, [&] {
        auto opened = jet::FilePages::Open(path, jet::OpenMode::ReadOnly);
        const bool bInterrupted = opened->WasInterrupted();
        jet::AccessFile file(std::move(opened));
        AccessLook look;
        look.tables = TablesOf(file);
        look.nPages = file.Pages().Count();
        look.nFreePages = FreePagesOf(file.Pages());
        look.users = UsersOf(path);
        look.sWhyNotWritable = WhyNotWritable(path);
        look.bJournal = fs::exists(jet::JournalPath(path));
        look.bInterrupted = bInterrupted;
        return look;
    });
}

AccessDamage CheckAccessFile(const fs::path& path) {
    return InWords(path, [&] {
        jet::AccessFile file(jet::FilePages::Open(path, jet::OpenMode::ReadOnly));
        AccessDamage damage;
        for (const jet::Finding& finding : jet::CheckFile(file))
            (finding.bWarning ? damage.oddities : damage.problems)
                .push_back(fmt::format("page {}: {}", finding.nPage, finding.sText));
        return damage;
    });
}

}  // namespace nomira::companion
