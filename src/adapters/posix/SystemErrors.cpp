#include "adapters/posix/SystemErrors.h"

#include <cerrno>
#include <optional>

namespace nomira::posix {
namespace {

struct Row {
    int nErrno;
    std::optional<FileOperation> operation;  // nullopt: any
    ErrorNumber number;
};

// The first row that fits counts.
constexpr Row kRows[] = {
    {ENOENT, std::nullopt, ErrorNumber::FileNotFound},
    {ENOTDIR, std::nullopt, ErrorNumber::PathNotFound},
    {EISDIR, std::nullopt, ErrorNumber::PathFileAccess},
    {EACCES, std::nullopt, ErrorNumber::PathFileAccess},
    {EPERM, std::nullopt, ErrorNumber::PathFileAccess},
    {EROFS, std::nullopt, ErrorNumber::PathFileAccess},
    {ELOOP, std::nullopt, ErrorNumber::PathFileAccess},
    {ENOTEMPTY, std::nullopt, ErrorNumber::PathFileAccess},
    {EMFILE, std::nullopt, ErrorNumber::PathFileAccess},
    {ENFILE, std::nullopt, ErrorNumber::PathFileAccess},
    {ETXTBSY, std::nullopt, ErrorNumber::PathFileAccess},
    {EBUSY, FileOperation::RemoveDirectory, ErrorNumber::PathFileAccess},
    {EBUSY, std::nullopt, ErrorNumber::PermissionDenied},
    {EAGAIN, FileOperation::ReadOrWrite, ErrorNumber::DeviceIo},
    {EAGAIN, std::nullopt, ErrorNumber::PermissionDenied},
    {EEXIST, FileOperation::MakeDirectory, ErrorNumber::PathFileAccess},
    {EEXIST, FileOperation::RemoveDirectory, ErrorNumber::PathFileAccess},
    {EEXIST, std::nullopt, ErrorNumber::FileAlreadyExists},
    {ENOSPC, std::nullopt, ErrorNumber::DiskFull},
    {EDQUOT, std::nullopt, ErrorNumber::DiskFull},
    {EFBIG, std::nullopt, ErrorNumber::DiskFull},
    {ENODEV, std::nullopt, ErrorNumber::DeviceUnavailable},
    {ENXIO, std::nullopt, ErrorNumber::DeviceUnavailable},
    {ENAMETOOLONG, std::nullopt, ErrorNumber::BadFileName},
    {EINVAL, FileOperation::ReadOrWrite, ErrorNumber::DeviceIo},
    {EINVAL, FileOperation::RemoveDirectory, ErrorNumber::PathFileAccess},
    {EINVAL, std::nullopt, ErrorNumber::BadFileName},
    {EILSEQ, std::nullopt, ErrorNumber::BadFileName},
};

}  // namespace

ErrorNumber ErrorNumberOf(int nErrno, FileOperation operation) {
    for (const Row& row : kRows) {
        if (row.nErrno == nErrno && row.operation.value_or(operation) == operation) {
            return row.number;
        }
    }
    return ErrorNumber::DeviceIo;
}

}  // namespace nomira::posix
