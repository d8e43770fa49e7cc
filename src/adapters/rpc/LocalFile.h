// Whole files on this side of the link.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>

namespace nomira::rpc {

// The bytes of a regular file. Throws std::system_error, also for one of more than `nLimit` bytes
// (file_too_large) and for what is no regular file (invalid_argument): a pipe would be waited for.
std::string ReadLocalFile(const std::filesystem::path& path, std::size_t nLimit);

// Puts the bytes into the file: into a new one beside it first, which then takes its place in one
// step, so that whoever looks sees the old bytes or the new ones. The file keeps its rights; a link
// is followed. Throws std::system_error, also for what is there and no regular file, and the file
// is then as it was.
void ReplaceLocalFile(const std::filesystem::path& path, std::string_view sBytes);

}  // namespace nomira::rpc
