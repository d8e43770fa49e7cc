#include "database/FolderFiles.h"

#include "langtools/BasicText.h"
#include "langtools/RuntimeError.h"
#include "testing/TextPrinting.h"

namespace nomira::testing {
namespace {

std::string NameOf(TextView sPath) {
    return Printable(LCase(sPath.substr(sPath.find_last_of(u'\\') + 1)));
}

}  // namespace

std::vector<Text> FolderFiles::Dir(TextView sPath, std::uint16_t nAttributes) {
    const std::string sName = NameOf(sPath);
    calls.push_back("dir " + sName);
    const bool bSeen = (nAttributes & AttributeHidden) != 0 || !hidden.contains(sName);
    if (!bSeen || !std::filesystem::exists(m_folder / sName)) return {};
    return {FromAscii(sName)};
}

void FolderFiles::Kill(TextView sPath) {
    calls.push_back("kill " + NameOf(sPath));
    if (bKillFails) Raise(ErrorNumber::PermissionDenied);
    if (!std::filesystem::remove(m_folder / NameOf(sPath))) Raise(ErrorNumber::FileNotFound);
}

void FolderFiles::Name(TextView sOldPath, TextView sNewPath) {
    calls.push_back("name " + NameOf(sOldPath) + ' ' + NameOf(sNewPath));
    if (bNameFails) Raise(ErrorNumber::PathFileAccess);
    if (std::filesystem::exists(m_folder / NameOf(sNewPath))) Raise(ErrorNumber::FileAlreadyExists);
    std::filesystem::rename(m_folder / NameOf(sOldPath), m_folder / NameOf(sNewPath));
}

// The compaction has no business with the rest.
std::unique_ptr<InputFile> FolderFiles::OpenForInput(TextView /*sPath*/) {
    Raise(ErrorNumber::DeviceIo);
}
std::unique_ptr<OutputFile> FolderFiles::OpenForOutput(TextView /*sPath*/) {
    Raise(ErrorNumber::DeviceIo);
}
std::uint16_t FolderFiles::GetAttr(TextView /*sPath*/) {
    Raise(ErrorNumber::DeviceIo);
}
void FolderFiles::SetAttr(TextView /*sPath*/, std::uint16_t /*nAttributes*/) {
    Raise(ErrorNumber::DeviceIo);
}
void FolderFiles::MkDir(TextView /*sPath*/) {
    Raise(ErrorNumber::DeviceIo);
}
void FolderFiles::RmDir(TextView /*sPath*/) {
    Raise(ErrorNumber::DeviceIo);
}
std::vector<Text> FolderFiles::Drives() {
    return {};
}

}  // namespace nomira::testing
