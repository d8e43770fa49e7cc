#include "apps/nomiractl/PrivateFolder.h"

#include <fmt/format.h>
#include <stdlib.h>

#include <cerrno>
#include <string>
#include <system_error>

#include "apps/nomiractl/Refusal.h"

namespace nomira::companion {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void Refuse(const fs::path& place, const std::error_code& error) {
    throw Refusal(fmt::format("{}: no temporary folder can be made there: {}; name another place"
                              " with TMPDIR",
                              place.string(), error.message()),
                  ExitCode::Files);
}

fs::path TemporaryPlace() {
    std::error_code error;
    fs::path place = fs::temp_directory_path(error);
    if (error) Refuse("TMPDIR", error);
    return place;
}

}  // namespace

PrivateFolder::PrivateFolder() {
    const fs::path place = TemporaryPlace();
    std::string sName = (place / "nomiractl-XXXXXX").string();
    if (!::mkdtemp(sName.data())) Refuse(place, {errno, std::generic_category()});
    m_path = sName;
}

PrivateFolder::~PrivateFolder() {
    if (m_bKept) return;
    std::error_code ignored;
    fs::remove_all(m_path, ignored);
}

}  // namespace nomira::companion
