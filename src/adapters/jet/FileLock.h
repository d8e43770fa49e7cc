// Locks on files that the system keeps for an open file and gives up with it, so that a killed
// process leaves none behind. They shut out other processes, and other open files of this one.
#pragma once

#include <cstdint>

#include "nativefiles/Descriptor.h"

namespace nomira::jet {

// Takes the whole file for this descriptor, which must be open for writing. False if somebody has a
// lock on it; raises InputOutput where the file system knows no locks.
bool TryLock(const nativefiles::Descriptor& file);
void Unlock(const nativefiles::Descriptor& file);

// Whether somebody else has a lock on any of these bytes; nCount 0: all to the end and beyond.
bool IsLockedByOthers(const nativefiles::Descriptor& file, std::int64_t nFrom = 0,
                      std::int64_t nCount = 0);

}  // namespace nomira::jet
