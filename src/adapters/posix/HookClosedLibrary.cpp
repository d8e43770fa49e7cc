#include "adapters/posix/HookClosedLibrary.h"

#include <cstdlib>
#include <utility>

namespace nomira::posix {

HookClosedLibrary::HookClosedLibrary(std::string sCommand) : m_sCommand(std::move(sCommand)) {}

void HookClosedLibrary::RefreshConfDb() {
    if (m_sCommand.empty()) return;
    [[maybe_unused]] const int nStatus = std::system(m_sCommand.c_str());
}

}  // namespace nomira::posix
