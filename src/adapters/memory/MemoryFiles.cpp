#include "adapters/memory/MemoryFiles.h"

#include <algorithm>
#include <utility>

#include "langtools/BasicText.h"
#include "langtools/CodePage.h"
#include "platform/FileNamePattern.h"

namespace nomira::memory {
namespace {

constexpr std::uint16_t kSettable =
    AttributeReadOnly | AttributeHidden | AttributeSystem | AttributeArchive;

// The path from its drive on, without "." and ".." parts, without "\" at its end: u"C:\x\y".
Text FullPath(TextView sPath) {
    Text sRest = Replace(sPath, u"/", u"\\");
    Text sFull = u"C:";
    if (sRest.size() >= 2 && sRest[1] == u':') {
        sFull = sRest.substr(0, 2);
        sRest.erase(0, 2);
    }
    sRest += u'\\';
    for (std::size_t nFrom = 0, nTo; (nTo = sRest.find(u'\\', nFrom)) != Text::npos;
         nFrom = nTo + 1) {
        const Text sPart = sRest.substr(nFrom, nTo - nFrom);
        if (sPart.empty() || sPart == u".") continue;
        if (sPart == u"..") {
            sFull.resize(std::max<std::size_t>(2, std::min(sFull.size(), sFull.rfind(u'\\'))));
        } else {
            sFull.append(u"\\").append(sPart);
        }
    }
    return sFull;
}

Text Key(TextView sFullPath) {
    return UCase(sFullPath);
}

bool IsDrive(TextView sFullPath) {
    return sFullPath.size() == 2;
}

TextView ParentOf(TextView sFullPath) {
    return sFullPath.substr(0, sFullPath.rfind(u'\\'));
}

TextView LastPartOf(TextView sFullPath) {
    return IsDrive(sFullPath) ? sFullPath : sFullPath.substr(sFullPath.rfind(u'\\') + 1);
}

// The full path; raises BadFileName if its last part can't be a name.
Text FullPathOfName(TextView sPath) {
    Text sFull = FullPath(sPath);
    if (sPath.empty() || CannotBeFileName(LastPartOf(sFull))) Raise(ErrorNumber::BadFileName);
    return sFull;
}

// Counts an open file for as long as it lives.
class OpenCount {
  public:
    explicit OpenCount(std::shared_ptr<int> count) : m_count(std::move(count)) { ++*m_count; }
    ~OpenCount() { --*m_count; }
    OpenCount(const OpenCount&) = delete;
    OpenCount& operator=(const OpenCount&) = delete;

  private:
    std::shared_ptr<int> m_count;
};

class MemoryInput : public InputFile {
  public:
    MemoryInput(std::string bytes, std::shared_ptr<int> count)
        : m_bytes(std::move(bytes)), m_count(std::move(count)) {}

    bool AtEnd() override { return m_nPos == m_bytes.size(); }

    void ReadLine(Text& sLine) override {
        if (AtEnd()) Raise(ErrorNumber::InputPastEnd);
        const std::size_t nCr = std::min(m_bytes.find('\r', m_nPos), m_bytes.size());
        sLine = SystemCodePage().Decode(std::string_view(m_bytes).substr(m_nPos, nCr - m_nPos));
        m_nPos = std::min(nCr + 1, m_bytes.size());
        if (nCr < m_bytes.size() && m_nPos < m_bytes.size() && m_bytes[m_nPos] == '\n') ++m_nPos;
    }

  private:
    std::string m_bytes;
    std::size_t m_nPos = 0;
    OpenCount m_count;
};

class MemoryOutput : public OutputFile {
  public:
    // Writing raises `number` when the file would hold more than `nRoom` bytes.
    MemoryOutput(std::shared_ptr<MemoryNode> node, std::optional<ErrorNumber> number,
                 std::size_t nRoom, std::shared_ptr<int> count)
        : m_node(std::move(node)), m_number(number), m_nRoom(nRoom) {
        m_count.emplace(std::move(count));
    }

    void PrintLine(TextView sText) override {
        if (!m_count) Raise(ErrorNumber::BadFileName);
        const std::string bytes = SystemCodePage().Encode(sText) + "\r\n";
        if (m_number && m_node->bytes.size() + bytes.size() > m_nRoom) Raise(*m_number);
        m_node->bytes += bytes;
    }

    void Close() override { m_count.reset(); }

  private:
    std::shared_ptr<MemoryNode> m_node;
    std::optional<ErrorNumber> m_number;
    std::size_t m_nRoom;
    std::optional<OpenCount> m_count;
};

}  // namespace

MemoryFiles::MemoryFiles() {
    PutDirectory(u"C:\\");
}

void MemoryFiles::Put(TextView sPath, std::string_view bytes) {
    const Text sFull = FullPath(sPath);
    PutDirectory(ParentOf(sFull));
    Node& node = m_nodes[Key(sFull)];
    if (!node) {
        node = std::make_shared<MemoryNode>();
        node->sName = LastPartOf(sFull);
        node->nAttributes = AttributeArchive;
    }
    node->bytes = bytes;
}

void MemoryFiles::PutDirectory(TextView sPath) {
    const Text sFull = FullPath(sPath);
    if (!IsDrive(sFull)) PutDirectory(ParentOf(sFull));
    Node& node = m_nodes[Key(sFull)];
    if (!node) {
        node = std::make_shared<MemoryNode>();
        node->sName = LastPartOf(sFull);
        node->nAttributes = AttributeDirectory;
    }
}

std::string MemoryFiles::Bytes(TextView sPath) const {
    return Require(FullPath(sPath))->bytes;
}

bool MemoryFiles::Exists(TextView sPath) const {
    return Find(FullPath(sPath)) != nullptr;
}

void MemoryFiles::FailOpen(TextView sPath, ErrorNumber number) {
    m_openFailures.insert_or_assign(Key(FullPath(sPath)), number);
}

void MemoryFiles::FailWrite(TextView sPath, ErrorNumber number, std::size_t nRoom) {
    m_writeFailures.insert_or_assign(Key(FullPath(sPath)), WriteFailure{number, nRoom});
}

void MemoryFiles::FailChange(TextView sPath, ErrorNumber number) {
    m_changeFailures.insert_or_assign(Key(FullPath(sPath)), number);
}

void MemoryFiles::ClearFailures() {
    m_openFailures.clear();
    m_writeFailures.clear();
    m_changeFailures.clear();
}

MemoryFiles::Node MemoryFiles::Find(TextView sFullPath) const {
    const auto found = m_nodes.find(Key(sFullPath));
    return found == m_nodes.end() ? nullptr : found->second;
}

MemoryFiles::Node MemoryFiles::Require(TextView sFullPath) const {
    if (Node node = Find(sFullPath)) return node;
    RequireParent(sFullPath);
    Raise(ErrorNumber::FileNotFound);
}

void MemoryFiles::RequireParent(TextView sFullPath) const {
    if (!Find(sFullPath.substr(0, 2))) Raise(ErrorNumber::DeviceUnavailable);
    const Node parent = Find(ParentOf(sFullPath));
    if (!parent || !parent->IsDirectory()) Raise(ErrorNumber::PathNotFound);
}

void MemoryFiles::RequireChangeable(TextView sFullPath) const {
    const auto found = m_changeFailures.find(Key(sFullPath));
    if (found != m_changeFailures.end()) Raise(found->second);
}

void MemoryFiles::RequireOpenable(TextView sPath, TextView sFullPath) const {
    const auto found = m_openFailures.find(Key(sFullPath));
    if (found != m_openFailures.end()) Raise(found->second);
    if (sPath.empty() || CannotBeFileName(LastPartOf(sFullPath))) Raise(ErrorNumber::BadFileName);
    if (sPath.ends_with(u'\\')) RequireParent(sFullPath);
    Node node = Find(sFullPath);
    if (sPath.ends_with(u'\\') || (node && node->IsDirectory())) {
        Raise(ErrorNumber::PathFileAccess);
    }
}

bool MemoryFiles::HasChildren(TextView sFullPath) const {
    const Text sBelow = Key(sFullPath) + u'\\';
    const auto next = m_nodes.lower_bound(sBelow);
    return next != m_nodes.end() && next->first.starts_with(sBelow);
}

std::vector<Text> MemoryFiles::Matching(TextView sFullPath, std::uint16_t nAttributes) const {
    const Text sParent = Key(ParentOf(sFullPath));
    std::vector<Text> names;
    for (const auto& [sKey, node] : m_nodes) {
        if (IsDrive(sKey) || ParentOf(sKey) != sParent) continue;
        if (!CountsInDir(node->nAttributes, nAttributes)) continue;
        if (MatchesFileName(node->sName, LastPartOf(sFullPath))) names.push_back(node->sName);
    }
    std::sort(names.begin(), names.end(), ComesBeforeInListing);
    return names;
}

std::unique_ptr<InputFile> MemoryFiles::OpenForInput(TextView sPath) {
    const Text sFull = FullPath(sPath);
    RequireOpenable(sPath, sFull);
    return std::make_unique<MemoryInput>(Require(sFull)->bytes, m_nOpenFiles);
}

std::unique_ptr<OutputFile> MemoryFiles::OpenForOutput(TextView sPath) {
    const Text sFull = FullPath(sPath);
    RequireOpenable(sPath, sFull);
    RequireParent(sFull);
    Node node = Find(sFull);
    if (node && (node->nAttributes & AttributeReadOnly)) Raise(ErrorNumber::PathFileAccess);
    Put(sFull, "");
    Find(sFull)->nAttributes |= AttributeArchive;
    const auto failure = m_writeFailures.find(Key(sFull));
    const bool bFails = failure != m_writeFailures.end();
    return std::make_unique<MemoryOutput>(
        Find(sFull), bFails ? std::optional(failure->second.number) : std::nullopt,
        bFails ? failure->second.nRoom : 0, m_nOpenFiles);
}

std::vector<Text> MemoryFiles::Dir(TextView sPath, std::uint16_t nAttributes) {
    // A path that ends with its directory lists all of it.
    const bool bWhole = sPath.empty() || sPath.ends_with(u'\\') || sPath.ends_with(u':');
    return Matching(bWhole ? FullPath(sPath) + u"\\*" : FullPath(sPath), nAttributes);
}

std::uint16_t MemoryFiles::GetAttr(TextView sPath) {
    const Text sFull = FullPathOfName(sPath);
    return Require(sFull)->nAttributes;
}

void MemoryFiles::SetAttr(TextView sPath, std::uint16_t nAttributes) {
    if (nAttributes & ~kSettable) Raise(ErrorNumber::InvalidProcedureCall);
    const Text sFull = FullPathOfName(sPath);
    RequireChangeable(sFull);
    const Node node = Require(sFull);
    const int nKind = node->nAttributes & AttributeDirectory;
    node->nAttributes = static_cast<std::uint16_t>(nAttributes | nKind);
}

void MemoryFiles::MkDir(TextView sPath) {
    const Text sFull = FullPathOfName(sPath);
    RequireChangeable(sFull);
    RequireParent(sFull);
    if (Find(sFull)) Raise(ErrorNumber::PathFileAccess);
    PutDirectory(sFull);
}

void MemoryFiles::RmDir(TextView sPath) {
    const Text sFull = FullPathOfName(sPath);
    RequireChangeable(sFull);
    RequireParent(sFull);
    Node node = Find(sFull);
    if (!node || !node->IsDirectory()) Raise(ErrorNumber::PathNotFound);
    if (IsDrive(sFull) || HasChildren(sFull)) Raise(ErrorNumber::PathFileAccess);
    m_nodes.erase(Key(sFull));
}

void MemoryFiles::Kill(TextView sPath) {
    const Text sFull = FullPath(sPath);
    if (sPath.empty()) Raise(ErrorNumber::BadFileName);
    RequireChangeable(sFull);
    RequireParent(sFull);
    if (sPath.ends_with(u'\\')) Raise(ErrorNumber::PathFileAccess);
    const std::vector<Text> names = Matching(sFull, AttributeNormal);
    if (names.empty()) Raise(ErrorNumber::FileNotFound);
    for (const Text& sName : names) {
        const Text sFile = Text(ParentOf(sFull)) + u'\\' + sName;
        RequireChangeable(sFile);
        if (Find(sFile)->nAttributes & AttributeReadOnly) Raise(ErrorNumber::PathFileAccess);
        m_nodes.erase(Key(sFile));
    }
}

void MemoryFiles::Name(TextView sOldPath, TextView sNewPath) {
    const Text sOld = FullPathOfName(sOldPath), sNew = FullPathOfName(sNewPath);
    if (IsDrive(sOld) || IsDrive(sNew)) Raise(ErrorNumber::PathFileAccess);
    RequireChangeable(sOld);
    RequireChangeable(sNew);
    Require(sOld);
    RequireParent(sNew);
    if (Key(sOld) != Key(sNew) && Find(sNew)) Raise(ErrorNumber::FileAlreadyExists);
    std::map<Text, Node> moved;
    const Text sBelow = Key(sOld) + u'\\';
    std::erase_if(m_nodes, [&](const auto& entry) {
        const bool bMoves = entry.first == Key(sOld) || entry.first.starts_with(sBelow);
        if (bMoves) moved[Key(sNew) + entry.first.substr(sOld.size())] = entry.second;
        return bMoves;
    });
    m_nodes.merge(moved);
    Find(sNew)->sName = LastPartOf(sNew);
}

std::vector<Text> MemoryFiles::Drives() {
    std::vector<Text> drives;
    for (const auto& [sKey, node] : m_nodes) {
        if (IsDrive(sKey)) drives.push_back(sKey);
    }
    return drives;
}

}  // namespace nomira::memory
