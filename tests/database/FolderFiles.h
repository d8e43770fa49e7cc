// The files port on one real folder, as far as the compaction needs it: a path means the file of
// its last part, in lower case.
#pragma once

#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "platform/Files.h"

namespace nomira::testing {

class FolderFiles : public Files {
  public:
    explicit FolderFiles(std::filesystem::path folder) : m_folder(std::move(folder)) {}

    std::vector<std::string> calls;  // "dir orvo_con.mdb", "kill ...", "name ... ..."
    std::set<std::string> hidden;    // names that carry the hidden attribute
    bool bKillFails = false;
    bool bNameFails = false;

    std::vector<Text> Dir(TextView sPath, std::uint16_t nAttributes) override;
    void Kill(TextView sPath) override;
    void Name(TextView sOldPath, TextView sNewPath) override;

    std::unique_ptr<InputFile> OpenForInput(TextView sPath) override;
    std::unique_ptr<OutputFile> OpenForOutput(TextView sPath) override;
    std::uint16_t GetAttr(TextView sPath) override;
    void SetAttr(TextView sPath, std::uint16_t nAttributes) override;
    void MkDir(TextView sPath) override;
    void RmDir(TextView sPath) override;
    std::vector<Text> Drives() override;

  private:
    std::filesystem::path m_folder;
};

}  // namespace nomira::testing
