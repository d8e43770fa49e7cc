// Writes a file whole or not at all.
#pragma once

#include <filesystem>
#include <string_view>

namespace nomira::companion {

// Puts the bytes into the file: beside it first, then in its place in one step, so that whoever
// looks sees the old file or the new one. The file keeps its rights; a link is followed; what is no
// plain file (a pipe, a device) is written to as it stands. Throws Refusal, and the file is then as
// it was.
void ReplaceFile(const std::filesystem::path& path, std::string_view bytes);

}  // namespace nomira::companion
