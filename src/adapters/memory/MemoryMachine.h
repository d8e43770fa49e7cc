// A whole machine in memory, for tests: while it lives it is the platform, and the program's
// variables have their start values when it comes and when it goes.
#pragma once

#include "adapters/memory/MemoryClosedLibrary.h"
#include "adapters/memory/MemoryDesktop.h"
#include "adapters/memory/MemoryFiles.h"
#include "adapters/memory/MemoryLocale.h"
#include "adapters/memory/MemoryProcesses.h"
#include "adapters/memory/MemoryRegistry.h"
#include "adapters/memory/RecordingView.h"
#include "langtools/Text.h"

namespace nomira::memory {

struct MemoryMachine {
    MemoryMachine();
    ~MemoryMachine();
    MemoryMachine(const MemoryMachine&) = delete;
    MemoryMachine& operator=(const MemoryMachine&) = delete;

    MemoryRegistry registry;
    MemoryProcesses processes;
    MemoryLocale locale;
    MemoryDesktop desktop;
    MemoryFiles files;
    MemoryClosedLibrary closedLibrary;

    // What stands behind the program's name when it is started.
    void UseCommandLine(Text sCommandLine);
    // Another 8-bit page for the system; it must outlive the machine.
    void UseCodePage(const CodePage& page);

  private:
    void BecomePlatform();
    Text m_sCommandLine;
};

}  // namespace nomira::memory
