#include "platform/Platform.h"

#include <stdexcept>

#include "langtools/CodePage.h"

namespace nomira {
namespace {

Platform g_platform;

// A missing port is a fault of the composition, not a failure that a module could trap.
template <typename Port>
Port& Require(Port* port) {
    if (!port) throw std::logic_error("a port of the platform is used before SetPlatform gave it");
    return *port;
}

}  // namespace

void SetPlatform(const Platform& platform) {
    g_platform = platform;
    SetSystemCodePage(platform.locale ? &platform.locale->EightBitPage() : nullptr);
}

Registry& TheRegistry() {
    return Require(g_platform.registry);
}
Processes& TheProcesses() {
    return Require(g_platform.processes);
}
Locale& TheLocale() {
    return Require(g_platform.locale);
}
Desktop& TheDesktop() {
    return Require(g_platform.desktop);
}
Files& TheFiles() {
    return Require(g_platform.files);
}
ClosedLibrary& TheClosedLibrary() {
    return Require(g_platform.closedLibrary);
}
const Text& CommandLine() {
    return g_platform.sCommandLine;
}

}  // namespace nomira
