#include "apps/nomiractl/Machine.h"

#include <fmt/ostream.h>

#include <optional>
#include <utility>

#include "adapters/posix/NativeName.h"
#include "adapters/posix/PosixMachine.h"
#include "adapters/rpc/RpcLinkLibrary.h"
#include "adapters/sqlite/SqliteEngine.h"
#include "apps/nomiractl/CustomerRegistry.h"
#include "apps/nomiractl/HeldNotice.h"
#include "apps/nomiractl/SourceFiles.h"
#include "apps/nomiractl/Words.h"
#include "database/adoModul.h"
#include "langtools/BasicText.h"
#include "langtools/CodePage.h"
#include "langtools/ProgramState.h"
#include "link/LinkLibrary.h"
#include "platform/Platform.h"

namespace nomira::companion {
namespace {

namespace fs = std::filesystem;

fs::path PrefixRoot(const Options& options) {
    return options.prefix.empty() ? posix::Prefix::RootFromEnvironment() : options.prefix;
}

}  // namespace

struct Machine::Parts {
    explicit Parts(const Options& options)
        : posix(PrefixRoot(options)),
          database(options.database.empty() ? fs::path(posix.prefix.NativePath(kLongTextDatabase))
                                            : options.database),
          files(posix.files),
          notice(posix.closedLibrary),
          engine([this](TextView sPath) { return FileOf(sPath); }),
          link(rpc::DefaultSocket(posix.prefix.Root()),
               [this](TextView sPath) { return FileOf(sPath); }) {
        if (options.codePage) otherLocale.emplace(*options.codePage);
        if (options.customer)
            customerRegistry.emplace(posix.registry, LocaleInUse().EightBitPage().Encode(
                                                         posix::FromNative(*options.customer)));
    }

    Locale& LocaleInUse() { return otherLocale ? *otherLocale : posix.locale; }

    fs::path FileOf(TextView sPath) const {
        if (EqualNoCase(sPath, kLongTextDatabase)) return database;
        return posix.prefix.NativePath(sPath);
    }

    void BecomePlatform() {
        SetPlatform({.registry = RegistryInUse(),
                     .processes = &posix.processes,
                     .locale = &LocaleInUse(),
                     .desktop = &desktop,
                     .files = &files,
                     .closedLibrary = &notice,
                     .sCommandLine = {}});
    }

    Registry* RegistryInUse() {
        if (otherRegistry) return &*otherRegistry;
        if (customerRegistry) return &*customerRegistry;
        return &posix.registry;
    }

    posix::PosixMachine posix;
    std::optional<posix::PosixLocale> otherLocale;
    fs::path database;
    SourceFiles files;
    std::optional<CustomerRegistry> customerRegistry;
    std::optional<posix::RegFileRegistry> otherRegistry;
    CollectingDesktop desktop;
    HeldNotice notice;
    sqlite::SqliteEngine engine;
    rpc::RpcLinkLibrary link;
};

Machine::Machine(const Options& options) : m_parts(std::make_unique<Parts>(options)) {
    ResetProgramState();
    m_parts->BecomePlatform();
    SetDatabaseEngine(&m_parts->engine);
    SetLinkLibrary(&m_parts->link);
}

Machine::~Machine() {
    ResetProgramState();
    SetLinkLibrary(nullptr);
    SetDatabaseEngine(nullptr);
    SetPlatform({});
}

const fs::path& Machine::Database() const {
    return m_parts->database;
}

DatabaseEngine& Machine::Engine() {
    return m_parts->engine;
}

std::filesystem::path Machine::ControllerSocket() const {
    return rpc::DefaultSocket(m_parts->posix.prefix.Root());
}

CollectingDesktop& Machine::Boxes() {
    return m_parts->desktop;
}

void Machine::PrintWarnings(std::ostream& err) const {
    posix::RegFileRegistry& registry = m_parts->posix.registry;
    for (const posix::RegistryFinding& finding : registry.Findings())
        fmt::print(err, "nomiractl: warning: {}:{}: {}\n", registry.File().string(), finding.nLine,
                   finding.sWhat);
}

void Machine::TakeText(const fs::path& path, std::shared_ptr<const TextSource> source,
                       TextSource::OnLine onLine) {
    m_parts->files.Put(CorePath(path), std::move(source), std::move(onLine));
}

void Machine::TakeRegistry(const fs::path& file) {
    m_parts->otherRegistry.emplace(file);
    m_parts->BecomePlatform();
}

void Machine::TellOfChange() {
    NotifyDatabaseChanged();
    ReleaseNotice();
}

void Machine::ReleaseNotice() {
    m_parts->notice.Release();
}

}  // namespace nomira::companion
