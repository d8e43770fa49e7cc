#include "apps/nomira/Composition.h"

#include <malloc.h>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <string_view>

#include "adapters/sqlite/SqliteEngine.h"
#include "apps/nomira/CommandLine.h"
#include "database/DatabaseEngine.h"
#include "frame/entry/RunProgram.h"
#include "link/LinkLibrary.h"
#include "link/cVexonComm.h"
#include "ui/formlayer/FormLayer.h"

namespace nomira {
namespace {

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

int Run(std::span<const char* const> arguments, const MakeFrontEnd& makeFrontEnd) {
    posix::PosixMachine machine;
    machine.BecomePlatform(JoinArguments(arguments, machine.locale.EightBitPage()));
    const auto nativePath = [&machine](TextView sPath) { return machine.prefix.NativePath(sPath); };
    sqlite::SqliteEngine engine(nativePath);
    SetDatabaseEngine(&engine);
    rpc::RpcLinkLibrary link(rpc::DefaultSocket(machine.prefix.Root()), nativePath);
    const LinkInUse inUse(link);
    const std::shared_ptr<void> frontEnd =
        makeFrontEnd ? makeFrontEnd(Parts{machine, link}) : nullptr;
    const int nStatus = RunProgram();
    if (nStatus != 0 || frontEnd || !AnyFormVisible()) return nStatus;
    std::fputs(
        "nomira: there is no display to show the program's form on; give a batch command instead, "
        "such as 'TEXT_INTO_DB|OVERWRITE|C:\\names.txt'\n",
        stderr);
    return 1;
}

}  // namespace

bool WantsForm(std::span<const char* const> arguments) {
    const bool bNone = arguments.empty() || (arguments.size() == 1 && *arguments[0] == '\0');
    return bNone || std::ranges::any_of(arguments, [](std::string_view sArgument) {
               return sArgument.find('|') != std::string_view::npos;
           });
}

int RunNomira(std::span<const char* const> arguments, const MakeFrontEnd& makeFrontEnd) {
    KeepFreedMemory();
    try {
        return Run(arguments, makeFrontEnd);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "nomira: %s\n", error.what());
        return 1;
    }
}

}  // namespace nomira
