#include "ui/formlayer/FileLists.h"

#include <utility>

#include "langtools/RuntimeError.h"
#include "platform/Platform.h"

namespace nomira {
namespace {

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

// The place in a list of `nCount`; raises if it has none.
std::size_t PlaceIn(std::size_t nCount, std::int16_t nIndex) {
    if (nIndex < 0 || static_cast<std::size_t>(nIndex) >= nCount)
        Raise(ErrorNumber::SubscriptOutOfRange);
    return static_cast<std::size_t>(nIndex);
}

}  // namespace

void DirListBox::SetPath(TextView sPath) {
    RequireDirectory(sPath);
    const std::vector<Text> list = Subdirectories(sPath);
    Assign(m_sPath, sPath, u"Path");
    Fill(list);
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

const Text& DirListBox::List(std::int16_t nIndex) const {
    return nIndex == -1 ? m_sPath : m_list[PlaceIn(m_list.size(), nIndex)];
}

void DirListBox::SetListIndex(std::int16_t nIndex) {
    List(nIndex);
    Assign(m_nListIndex, nIndex, u"ListIndex");
}

void FileListBox::SetPath(TextView sPath) {
    if (m_sPath == sPath) return;
    RequireDirectory(sPath);
    Assign(m_sPath, sPath, u"Path");
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
    std::vector<Entry> entries;
    if (!m_sPath.empty()) {
        for (const Text& sName : TheFiles().Dir(Joined(m_sPath, m_sPattern)))
            entries.push_back({sName});
    }
    Assign(m_entries, entries, u"List");
}

std::int16_t FileListBox::ListCount() const {
    return ToInt16(std::ssize(m_entries));
}

FileListBox::Entry& FileListBox::At(std::int16_t nIndex) {
    return m_entries[PlaceIn(m_entries.size(), nIndex)];
}

const FileListBox::Entry& FileListBox::At(std::int16_t nIndex) const {
    return m_entries[PlaceIn(m_entries.size(), nIndex)];
}

const Text& FileListBox::List(std::int16_t nIndex) const {
    return At(nIndex).sName;
}

bool FileListBox::Selected(std::int16_t nIndex) const {
    return At(nIndex).bSelected;
}

void FileListBox::SetSelected(std::int16_t nIndex, bool bSelected) {
    std::vector<Entry> entries = m_entries;
    if (bSelected && !m_bMultiSelect) {
        for (Entry& entry : entries)
            entry.bSelected = false;
    }
    entries[PlaceIn(entries.size(), nIndex)].bSelected = bSelected;
    Assign(m_entries, entries, u"Selected");
}

}  // namespace nomira
