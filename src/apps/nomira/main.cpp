// nomira, the program, on a POSIX system: its composition and nothing else. It picks the adapters,
// makes the command line out of the arguments, and leaves the rest to RunProgram.
//
// Exit status: 0, or 1 after a run-time error (shown in the run-time box), an unusable prefix, or
// a front end that has no window to show itself in (one line each on the error stream).
#include <malloc.h>

#include <cstdio>
#include <exception>
#include <span>

#include "adapters/posix/PosixMachine.h"
#include "adapters/rpc/RpcLinkLibrary.h"
#include "adapters/sqlite/SqliteEngine.h"
#include "apps/nomira/CommandLine.h"
#include "database/DatabaseEngine.h"
#include "frame/entry/RunProgram.h"
#include "link/LinkLibrary.h"
#include "link/cVexonComm.h"
#include "ui/formlayer/FormLayer.h"

namespace {

using namespace nomira;

// A pass makes and drops texts of some hundred kilobytes over and over. What it frees stays with
// the process, which is short-lived, rather than going back to the system and being cleared again.
void KeepFreedMemory() {
#ifdef M_TRIM_THRESHOLD
    constexpr int kMoreThanAPassNeeds = 256 * 1024 * 1024;
    mallopt(M_TRIM_THRESHOLD, kMoreThanAPassNeeds);
    mallopt(M_MMAP_THRESHOLD, kMoreThanAPassNeeds / 8);
#endif
}

// The link library for as long as the program may use it: a link that is still there at the end
// lets go of the library's objects first.
class LinkInUse {
  public:
    explicit LinkInUse(LinkLibrary& library) { SetLinkLibrary(&library); }
    ~LinkInUse() {
        g_Comm().ExitVexonComm();
        SetLinkLibrary(nullptr);
    }
    LinkInUse(const LinkInUse&) = delete;
    LinkInUse& operator=(const LinkInUse&) = delete;
};

int Run(std::span<const char* const> arguments) {
    posix::PosixMachine machine;
    machine.BecomePlatform(JoinArguments(arguments, machine.locale.EightBitPage()));
    const auto nativePath = [&machine](TextView sPath) { return machine.prefix.NativePath(sPath); };
    sqlite::SqliteEngine engine(nativePath);
    SetDatabaseEngine(&engine);
    rpc::RpcLinkLibrary link(rpc::DefaultSocket(machine.prefix.Root()), nativePath);
    const LinkInUse inUse(link);
    const int nStatus = RunProgram();
    if (nStatus != 0 || !AnyFormVisible()) return nStatus;
    std::fputs(
        "nomira: this build has no window to show the program's form in; give a batch command "
        "instead, such as 'TEXT_INTO_DB|OVERWRITE|C:\\names.txt'\n",
        stderr);
    return 1;
}

}  // namespace

int main(int nArguments, char** arguments) {
    KeepFreedMemory();
    try {
        const auto all = std::span<const char* const>(arguments, nArguments);
        return Run(all.subspan(nArguments > 0 ? 1 : 0));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "nomira: %s\n", error.what());
        return 1;
    }
}
