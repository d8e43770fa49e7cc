// This machine whole: every port's adapter over one prefix. A program's composition makes one,
// lets it become the platform, and keeps it until the end.
#pragma once

#include "adapters/posix/HookClosedLibrary.h"
#include "adapters/posix/PosixDesktop.h"
#include "adapters/posix/PosixFiles.h"
#include "adapters/posix/PosixLocale.h"
#include "adapters/posix/Prefix.h"
#include "adapters/posix/ProcProcesses.h"
#include "adapters/posix/RegFileRegistry.h"
#include "langtools/Text.h"

namespace nomira::posix {

struct PosixMachine {
    // Raises PrefixError if the prefix's settings can't be read.
    explicit PosixMachine(std::filesystem::path root = Prefix::RootFromEnvironment());
    PosixMachine(const PosixMachine&) = delete;
    PosixMachine& operator=(const PosixMachine&) = delete;

    Prefix prefix;
    RegFileRegistry registry;
    ProcProcesses processes;
    PosixLocale locale;
    PosixDesktop desktop;
    PosixFiles files;
    HookClosedLibrary closedLibrary;

    // Makes this the platform; the machine must outlive it.
    void BecomePlatform(Text sCommandLine);
    // Puts another desktop into the platform that this has become; it must outlive its use.
    void UseDesktop(Desktop& other);
};

}  // namespace nomira::posix
