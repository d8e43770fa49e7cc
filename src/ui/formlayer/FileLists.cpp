#include "ui/formlayer/FileLists.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "langtools/BasicText.h"
#include "langtools/RuntimeError.h"
#include "platform/Files.h"
#include "platform/Platform.h"

namespace nomira {
namespace {

constexpr TextView kFirstChoice = u"c:";  // ahead of floppy drives
constexpr std::size_t kDriveLength = 2;   // C:

Text Joined(TextView sDirectory, TextView sName) {
    Text sPath(sDirectory);
    if (!sPath.ends_with(u'\\')) sPath += u'\\';
    return sPath.append(sName);
}

std::uint16_t AttributesOfPath(TextView sPath) {
    try {
        return TheFiles().GetAttr(sPath);
    } catch (const RuntimeError& error) {
        if (error.Number() == ErrorNumber::FileNotFound) Raise(ErrorNumber::PathNotFound);
        throw;
    }
}

void RequireDirectory(TextView sPath) {
    const bool bDirectory = (AttributesOfPath(sPath) & AttributeDirectory) != 0;
    if (!bDirectory) Raise(ErrorNumber::PathNotFound);
}

std::vector<Text> Subdirectories(TextView sPath) {
    std::vector<Text> paths;
    if (sPath.empty()) return paths;
    for (const Text& sName : TheFiles().Dir(Joined(sPath, u"*"), AttributeDirectory)) {
        Text sEntry = Joined(sPath, sName);
        if (TheFiles().GetAttr(sEntry) & AttributeDirectory) paths.push_back(std::move(sEntry));
    }
    return paths;
}

// The path in full: see the header. An empty one stays empty, and is no directory.
Text FullPath(TextView sPath, TextView sShownPath) {
    Text sFull(sPath);
    const bool bDrive = Mid(sPath, 2).starts_with(u':');
    if (!sPath.empty() && !bDrive) {
        const TextView sDrive = sShownPath.empty() ? u"C:" : Left(sShownPath, 2);
        sFull = Joined(sDrive, sPath.starts_with(u'\\') ? sPath.substr(1) : sPath);
    }
    if (sFull.size() == kDriveLength) sFull += u'\\';
    if (sFull.size() > kRootLength && sFull.ends_with(u'\\')) sFull.pop_back();
    return sFull;
}

// The directory above; empty above a root.
TextView DirectoryAbove(TextView sPath) {
    if (sPath.size() <= kRootLength) return {};
    const std::size_t nLast = sPath.rfind(u'\\');
    return sPath.substr(0, std::max<std::size_t>(nLast, kRootLength));
}

// The names that match one of the patterns, each once.
std::vector<Text> MatchingNames(TextView sDirectory, TextView sPatterns) {
    std::vector<Text> names;
    while (!sPatterns.empty()) {
        const std::size_t nEnd = std::min(sPatterns.find(u';'), sPatterns.size());
        const TextView sPattern = Trim(sPatterns.substr(0, nEnd));
        if (!sPattern.empty())
            std::ranges::move(TheFiles().Dir(Joined(sDirectory, sPattern)),
                              std::back_inserter(names));
        sPatterns.remove_prefix(std::min(nEnd + 1, sPatterns.size()));
    }
    std::ranges::sort(names, {}, [](const Text& sName) { return std::pair(UCase(sName), sName); });
    names.erase(std::unique(names.begin(), names.end()), names.end());
    return names;
}

}  // namespace

Text DriveListBox::Drive() const {
    if (!m_sDrive.empty()) return m_sDrive;
    const std::vector<Text> drives = Drives();
    if (std::ranges::find(drives, kFirstChoice) != drives.end()) return Text(kFirstChoice);
    return drives.empty() ? Text() : drives.front();
}

std::vector<Text> DriveListBox::Drives() const {
    std::vector<Text> drives;
    for (const Text& sDrive : TheFiles().Drives())
        drives.push_back(LCase(sDrive));
    return drives;
}

void DriveListBox::SetDrive(TextView sDrive) {
    const Text sNew = LCase(nomira::Left(sDrive, 1)) + u":";
    const std::vector<Text> drives = Drives();
    if (std::ranges::find(drives, sNew) == drives.end()) Raise(ErrorNumber::DeviceUnavailable);
    if (sNew == Drive()) return;
    Assign(m_sDrive, sNew, u"Drive");
    Fire(onChange);
}

void DriveListBox::UserPick(TextView sDrive) {
    if (ReachedByUser()) SetDrive(sDrive);
}

void DirListBox::SetPath(TextView sPath) {
    const Text sFull = FullPath(sPath, m_sPath);
    RequireDirectory(sFull);
    const std::vector<Text> list = Subdirectories(sFull);
    const bool bNew = sFull != m_sPath;
    Assign(m_sPath, sFull, u"Path");
    Fill(list);
    if (bNew) Fire(onChange);
}

void DirListBox::Refresh() {
    Fill(Subdirectories(m_sPath));
    Control::Refresh();
}

void DirListBox::Fill(const std::vector<Text>& list) {
    Assign(m_list, list, u"List");
    Assign(m_nListIndex, std::int16_t{-1}, u"ListIndex");
}

std::int16_t DirListBox::ListCount() const {
    return ToInt16(std::ssize(m_list));
}

Text DirListBox::List(std::int16_t nIndex) const {
    if (nIndex >= 0) {
        if (nIndex >= std::ssize(m_list)) Raise(ErrorNumber::SubscriptOutOfRange);
        return m_list[static_cast<std::size_t>(nIndex)];
    }
    TextView sPath = m_sPath;
    for (int n = -1; n > nIndex; --n) {
        sPath = DirectoryAbove(sPath);
        if (sPath.empty()) Raise(ErrorNumber::SubscriptOutOfRange);
    }
    return Text(sPath);
}

void DirListBox::SetListIndex(std::int16_t nIndex) {
    List(nIndex);
    Assign(m_nListIndex, nIndex, u"ListIndex");
}

void DirListBox::UserHighlight(std::int16_t nIndex) {
    if (ReachedByUser()) SetListIndex(nIndex);
}

void DirListBox::UserOpen(std::int16_t nIndex) {
    if (ReachedByUser()) SetPath(List(nIndex));
}

void DirListBox::UserKeyPress(std::int16_t nKeyAscii) {
    if (ReachedByUser()) Fire(onKeyPress, nKeyAscii);
}

void FileListBox::SetPath(TextView sPath) {
    const Text sFull = FullPath(sPath, m_sPath);
    if (m_sPath == sFull) return;
    RequireDirectory(sFull);
    Assign(m_sPath, sFull, u"Path");
    Fill();
}

void FileListBox::SetPattern(TextView sPattern) {
    if (m_sPattern == sPattern) return;
    Assign(m_sPattern, sPattern, u"Pattern");
    Fill();
}

void FileListBox::Refresh() {
    Fill();
    Control::Refresh();
}

void FileListBox::Fill() {
    SetEntries(m_sPath.empty() ? std::vector<Text>() : MatchingNames(m_sPath, m_sPattern));
}

}  // namespace nomira
