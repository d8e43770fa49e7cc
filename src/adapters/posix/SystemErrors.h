// This system's error codes as the old runtime's numbers.
#pragma once

#include "langtools/RuntimeError.h"

namespace nomira::posix {

// What the program was doing when the code came: some codes mean different things to the old
// runtime.
enum class FileOperation { Open, ReadOrWrite, Change, MakeDirectory, RemoveDirectory };

// A code that the table doesn't have is DeviceIo. ENOENT is FileNotFound: whether its directory
// is there is for the caller to find out.
//
//   ENOENT                               53 File not found
//   ENOTDIR                              76 Path not found
//   EISDIR EACCES EPERM EROFS ELOOP      75 Path/File access error
//   ENOTEMPTY EBUSY(directory)           75
//   EMFILE ENFILE ETXTBSY                75
//   EBUSY EAGAIN                         70 Permission denied (somebody else holds it)
//   EEXIST                               58 File already exists; 75 for a directory
//   ENOSPC EDQUOT EFBIG                  61 Disk full
//   ENODEV ENXIO                         68 Device unavailable
//   ENAMETOOLONG EINVAL EILSEQ           52 Bad file name; 57 once the file is open
//   EIO and all others                   57 Device I/O error
ErrorNumber ErrorNumberOf(int nErrno, FileOperation operation);

}  // namespace nomira::posix
