#include "adapters/memory/MemoryMachine.h"

#include <utility>

#include "langtools/ProgramState.h"
#include "platform/Platform.h"

namespace nomira::memory {

MemoryMachine::MemoryMachine() {
    ResetProgramState();
    BecomePlatform();
}

MemoryMachine::~MemoryMachine() {
    ResetProgramState();
    SetPlatform({});
}

void MemoryMachine::UseCommandLine(Text sCommandLine) {
    m_sCommandLine = std::move(sCommandLine);
    BecomePlatform();
}

void MemoryMachine::UseCodePage(const CodePage& page) {
    locale.page = &page;
    BecomePlatform();
}

void MemoryMachine::BecomePlatform() {
    SetPlatform({.registry = &registry,
                 .processes = &processes,
                 .locale = &locale,
                 .desktop = &desktop,
                 .files = &files,
                 .closedLibrary = &closedLibrary,
                 .sCommandLine = m_sCommandLine});
}

}  // namespace nomira::memory
