// The machine as the program sees it: one object that holds the ports. A program's composition
// fills it before Main runs; tests fill it with the adapters in memory. Nothing here is owned.
#pragma once

#include "langtools/Text.h"
#include "platform/ClosedLibrary.h"
#include "platform/Desktop.h"
#include "platform/Files.h"
#include "platform/Locale.h"
#include "platform/Processes.h"
#include "platform/Registry.h"

namespace nomira {

struct Platform {
    Registry* registry = nullptr;
    Processes* processes = nullptr;
    Locale* locale = nullptr;
    Desktop* desktop = nullptr;
    Files* files = nullptr;
    ClosedLibrary* closedLibrary = nullptr;
    // What stands behind the program's name, as the system hands it over.
    Text sCommandLine;
};

// Makes `platform` the machine. Its ports must outlive their last use. The locale's 8-bit page
// becomes the system's page of CodePage.h.
void SetPlatform(const Platform& platform);

Registry& TheRegistry();
Processes& TheProcesses();
Locale& TheLocale();
Desktop& TheDesktop();
Files& TheFiles();
ClosedLibrary& TheClosedLibrary();
const Text& CommandLine();

// The application's title: title of its message boxes, and the window title by which an instance
// that runs already is found.
inline constexpr TextView kApplicationTitle = u"Nomira";

}  // namespace nomira
