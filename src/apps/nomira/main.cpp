// nomira, the program, on a POSIX system. By itself it shows nothing: where there is a display and
// a form to show on it, the process goes on as nomira-window, which lies beside this executable.
// docs/decisions/0004-windows-in-a-program-of-their-own.md tells why these are two.
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <span>
#include <system_error>

#include "apps/nomira/Composition.h"

namespace {

bool IsSet(const char* pVariable) {
    const char* pValue = std::getenv(pVariable);
    return pValue && *pValue != '\0';
}

bool HasDisplay() {
    return IsSet("DISPLAY") || IsSet("WAYLAND_DISPLAY");
}

// Comes back only if there is no such program.
void BecomeWindowProgram(char** arguments) {
    std::error_code ignored;
    const auto here = std::filesystem::read_symlink("/proc/self/exe", ignored);
    if (!ignored) ::execv((here.parent_path() / "nomira-window").c_str(), arguments);
}

}  // namespace

int main(int nArguments, char** arguments) {
    auto own = std::span<const char* const>(arguments, nArguments);
    own = own.subspan(nArguments > 0 ? 1 : 0);
    if (HasDisplay() && nomira::WantsForm(own)) BecomeWindowProgram(arguments);
    return nomira::RunNomira(own, {});
}
