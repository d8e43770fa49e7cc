#include "adapters/posix/PosixMachine.h"

#include <utility>

#include "platform/Platform.h"

namespace nomira::posix {

PosixMachine::PosixMachine(std::filesystem::path root)
    : prefix(std::move(root)),
      registry(prefix.RegistryFile()),
      locale(prefix.Settings().nCodePage),
      desktop(prefix.Root()),
      files(prefix),
      closedLibrary(prefix.Settings().sRefreshHook) {}

void PosixMachine::BecomePlatform(Text sCommandLine) {
    SetPlatform({.registry = &registry,
                 .processes = &processes,
                 .locale = &locale,
                 .desktop = &desktop,
                 .files = &files,
                 .closedLibrary = &closedLibrary,
                 .sCommandLine = std::move(sCommandLine)});
}

void PosixMachine::UseDesktop(Desktop& other) {
    SetPlatform({.registry = &registry,
                 .processes = &processes,
                 .locale = &locale,
                 .desktop = &other,
                 .files = &files,
                 .closedLibrary = &closedLibrary,
                 .sCommandLine = CommandLine()});
}

}  // namespace nomira::posix
