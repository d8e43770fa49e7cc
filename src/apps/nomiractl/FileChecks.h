// Looks at the files that a command is about to use, before the core does: the core keeps quiet
// about what it can't open. All of these throw Refusal with the remedy.
#pragma once

#include <filesystem>

namespace nomira::companion {

// A file that can be read, to be imported.
void CheckTextFile(const std::filesystem::path& path);

// Whether this process may write to the file, if it is there. Nobody's write bit keeps the
// superuser out as well: the database adapter sees it so.
bool IsWritable(const std::filesystem::path& path);

// A program that can be changed.
void RequireWritable(const std::filesystem::path& path);

// A path at which nothing stands, in a folder that is there: for a file that is made.
void RequireFree(const std::filesystem::path& path);

enum class DatabaseUse { Read, Write };

// A file that may be a database and may be used so. Opens and closes it, so that it must not be
// open in the engine yet.
void CheckDatabase(const std::filesystem::path& path, DatabaseUse use);

}  // namespace nomira::companion
