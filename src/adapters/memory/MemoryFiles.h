// Drives, directories and files in memory.
//
// A path is C:\x\y; without a drive it counts from the root of C:. Names keep the case in which
// they were made and are found without regard to it. Drive C: is there from the start.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "langtools/RuntimeError.h"
#include "langtools/Text.h"
#include "platform/Files.h"

namespace nomira::memory {

// One file or directory.
struct MemoryNode {
    Text sName;  // last part of its path, in its own case
    std::uint16_t nAttributes = AttributeNormal;
    std::string bytes;
    bool IsDirectory() const { return (nAttributes & AttributeDirectory) != 0; }
};

class MemoryFiles : public Files {
  public:
    MemoryFiles();

    // Makes the file, the directories above it and its drive, or gives a file new contents.
    void Put(TextView sPath, std::string_view bytes);
    // The directory, those above it and its drive.
    void PutDirectory(TextView sPath);
    // The contents; a missing file fails the test by raising FileNotFound.
    std::string Bytes(TextView sPath) const;
    // Whether a file or directory is there.
    bool Exists(TextView sPath) const;

    // From now on, opening the file (for input or output), writing to it, or changing it (SetAttr,
    // MkDir, RmDir, Kill, Name) raises this number. Writing fails when more than `nRoom` bytes
    // would stand in the file.
    void FailOpen(TextView sPath, ErrorNumber number);
    void FailWrite(TextView sPath, ErrorNumber number, std::size_t nRoom = 0);
    void FailChange(TextView sPath, ErrorNumber number);
    void ClearFailures();

    // Files that are open for input or output.
    int OpenFiles() const { return *m_nOpenFiles; }

    std::unique_ptr<InputFile> OpenForInput(TextView sPath) override;
    std::unique_ptr<OutputFile> OpenForOutput(TextView sPath) override;
    std::vector<Text> Dir(TextView sPath, std::uint16_t nAttributes = AttributeNormal) override;
    std::uint16_t GetAttr(TextView sPath) override;
    void SetAttr(TextView sPath, std::uint16_t nAttributes) override;
    void MkDir(TextView sPath) override;
    void RmDir(TextView sPath) override;
    void Kill(TextView sPath) override;
    void Name(TextView sOldPath, TextView sNewPath) override;
    std::vector<Text> Drives() override;

  private:
    using Node = std::shared_ptr<MemoryNode>;
    struct WriteFailure {
        ErrorNumber number;
        std::size_t nRoom;
    };

    Node Find(TextView sFullPath) const;
    // The file or directory; raises why it isn't there.
    Node Require(TextView sFullPath) const;
    // Raises DeviceUnavailable or PathNotFound unless the directory above `sFullPath` exists.
    void RequireParent(TextView sFullPath) const;
    void RequireChangeable(TextView sFullPath) const;
    void RequireOpenable(TextView sPath, TextView sFullPath) const;
    bool HasChildren(TextView sFullPath) const;
    std::vector<Text> Matching(TextView sFullPath, std::uint16_t nAttributes) const;

    std::map<Text, Node> m_nodes;  // by full path in upper case; a drive is u"C:"
    std::map<Text, ErrorNumber> m_openFailures;
    std::map<Text, WriteFailure> m_writeFailures;
    std::map<Text, ErrorNumber> m_changeFailures;
    std::shared_ptr<int> m_nOpenFiles = std::make_shared<int>(0);
};

}  // namespace nomira::memory
