// The old runtime's file statements over this system's files, through the prefix.
//
// Attributes: a file without the owner's write bit is read-only (for the superuser too, who could
// write it), a name that begins with "." is hidden, a regular file has the archive bit. Setting
// attributes changes nothing but a file's write bits. Pipes, sockets and block devices are no
// files: opening one raises DeviceIo rather than wait. Failures are those of SystemErrors.h; a
// drive whose folder isn't there raises DeviceUnavailable.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "adapters/posix/Prefix.h"
#include "adapters/posix/SystemErrors.h"
#include "langtools/Text.h"
#include "platform/Files.h"

namespace nomira::posix {

class PosixFiles : public Files {
  public:
    // The prefix must outlive the adapter.
    explicit PosixFiles(const Prefix& prefix) : m_prefix(prefix) {}

    std::unique_ptr<InputFile> OpenForInput(TextView sPath) override;
    // An existing file is emptied in its place: it keeps its owner, rights and links.
    std::unique_ptr<OutputFile> OpenForOutput(TextView sPath) override;
    std::vector<Text> Dir(TextView sPath, std::uint16_t nAttributes = AttributeNormal) override;
    std::uint16_t GetAttr(TextView sPath) override;
    void SetAttr(TextView sPath, std::uint16_t nAttributes) override;
    void MkDir(TextView sPath) override;
    void RmDir(TextView sPath) override;
    void Kill(TextView sPath) override;
    // Files move between file systems, directories within one.
    void Name(TextView sOldPath, TextView sNewPath) override;
    std::vector<Text> Drives() override { return m_prefix.Drives(); }

  private:
    // Where the path lives. Raises BadFileName if its last part can't be a name.
    std::string NativeOf(TextView sPath) const;
    // The same for a path to be opened: raises PathFileAccess where a directory is meant.
    std::string NativeToOpen(TextView sPath) const;
    std::vector<Text> ListDirectory(TextView sDirectory) const;
    void KillOne(TextView sPath) const;
    // Raises DeviceUnavailable or PathNotFound unless the directory that holds the path is there.
    void RequireDirectoryOf(TextView sPath, const std::string& sNative) const;
    // Raises errno's number; where something is missing, that of what it is: drive, path or file.
    [[noreturn]] void RaiseErrno(FileOperation operation, TextView sPath,
                                 const std::string& sNative) const;

    const Prefix& m_prefix;
};

}  // namespace nomira::posix
