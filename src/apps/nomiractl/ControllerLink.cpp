#include "apps/nomiractl/ControllerLink.h"

#include <fmt/format.h>

#include <string>
#include <utility>

#include "adapters/posix/NativeName.h"
#include "adapters/rpc/ControllerName.h"
#include "apps/nomiractl/Refusal.h"
#include "apps/nomiractl/Words.h"
#include "langtools/BasicText.h"
#include "link/cVexonComm.h"

namespace nomira::companion {
namespace {

namespace fs = std::filesystem;

constexpr TextView kRoot = u"R1";
constexpr TextView kSpace = u"TQX:";
constexpr TextView kDirectoryMask = u"*.";
constexpr std::size_t kMostDetail = 1000;

// The link looks programs up by name alone, and passes over one without an extension.
void RequireProgramName(TextView sName) {
    if (!rpc::IsPlainName(sName) || sName.find(u'.') == TextView::npos)
        throw Refusal(
            "is no program's name; write it with its extension and without a directory, for the"
            " controller finds it by its name",
            ExitCode::Controller);
}

// The link would take these characters for more than a part of the file's name.
void RequirePlainPath(const fs::path& path) {
    if (path.string().find_first_of("|*?") != std::string::npos)
        throw Refusal(fmt::format("{}: the link can't work with a path that has one of | * ? in it;"
                                  " rename the file or its folder",
                                  path.string()),
                      ExitCode::Controller);
}

void RequireTarget(TextView sTarget) {
    const TextView sStart = u"TQX:\\";
    const bool bStarts = EqualNoCase(Left(sTarget, std::ssize(sStart)), sStart);
    if (!bStarts || !rpc::IsPlainDirectory(sTarget.substr(sStart.size())))
        throw Refusal(
            fmt::format("{}: no path of the controller; write one as TQX:\\R1\\Program\\x.src",
                        Shown(sTarget)),
            ExitCode::Controller);
}

std::vector<Text> Lines(TextView sText) {
    std::vector<Text> lines;
    while (!sText.empty()) {
        const std::size_t nEnd = sText.find(u'\n');
        lines.emplace_back(sText.substr(0, nEnd));
        sText.remove_prefix(nEnd == TextView::npos ? sText.size() : nEnd + 1);
    }
    return lines;
}

struct Meaning {
    TextView sDetail;  // a part of what the link says
    const char* sWords;
};

// A look-up that finds nothing makes the link ask for a copy from nowhere to nowhere.
constexpr Meaning kMeanings[]{
    {u"one path must be the controller's", "; the controller finds no program of this name"},
};

const char* MeaningOf(TextView sDetail) {
    for (const Meaning& meaning : kMeanings)
        if (InStr(sDetail, meaning.sDetail) > 0) return meaning.sWords;
    return "";
}

std::string Because(TextView sDetail) {
    if (sDetail.empty()) return ", and the link gives no reason";
    return fmt::format("{}: {}{}", MeaningOf(sDetail), ShownWhole(sDetail.substr(0, kMostDetail)),
                       sDetail.size() > kMostDetail ? "..." : "");
}

}  // namespace

ControllerLink::ControllerLink(fs::path socket) : m_socket(std::move(socket)) {
    Run("", [](cVexonComm&) { return true; });
}

ControllerLink::~ControllerLink() {
    g_Comm().ExitVexonComm();
}

bool ControllerLink::Connect() {
    g_Comm().ExitVexonComm();
    return g_Comm().ConnectingVexon(m_owner.Class(), &m_owner) &&
           g_Comm().VexonCommands->VexonIsConnected();
}

// That a link is there tells nothing: only its inner object knows whether somebody has answered.
template <typename Operation>
void ControllerLink::Run(std::string_view sWhat, Operation operation) {
    const bool bLinked = g_Comm().IsVexonConnected() && g_Comm().VexonCommands->VexonIsConnected();
    if (!bLinked && !Connect())
        throw Refusal(
            fmt::format("no controller answers on {}; start its middleware, or the simulator"
                        " vexon3.exe",
                        m_socket.string()),
            ExitCode::Controller);
    if (operation(*g_Comm().VexonCommands)) return;
    const Text sDetail = g_Comm().VexonCommands->VexonError();
    Connect();
    throw Refusal(fmt::format("{}{}", sWhat, Because(sDetail)), ExitCode::Controller);
}

std::vector<Text> ControllerLink::List(TextView sMask) {
    Text sNames;
    Run("the directory can't be listed",
        [&](cVexonComm& link) { return link.GetRobotDirectory(sNames, sMask); });
    return Lines(sNames);
}

std::vector<Text> ControllerLink::Files(TextView sDirectory) {
    return List(u"\\" + Text(sDirectory) + u"\\");
}

std::vector<Text> ControllerLink::Directories(TextView sDirectory) {
    return List(u"\\" + Text(sDirectory) + u"\\" + Text(kDirectoryMask));
}

void ControllerLink::Fetch(TextView sName, const fs::path& folder) {
    RequireProgramName(sName);
    Text sFolder = CorePath(folder);
    Run("can't be fetched",
        [&](cVexonComm& link) { return link.UpLoadFromRobotToDisk(sName, sFolder); });
}

void ControllerLink::Send(const fs::path& file, TextView sTarget) {
    RequirePlainPath(file);
    Text sPath = CorePath(file);
    if (sTarget.empty()) {
        RequireProgramName(posix::FromNative(file.filename().string()));
    } else {
        RequireTarget(sTarget);
        sPath.append(u"|").append(sTarget);
    }
    Run("can't be sent", [&](cVexonComm& link) { return link.DownLoadDiskToRobot(sPath); });
}

Text ControllerLink::Read(TextView sVariable) {
    Text sValue;
    Run("can't be read", [&](cVexonComm&) { return g_Comm().VCShowVar(sVariable, sValue); });
    return sValue;
}

void ControllerLink::Write(TextView sVariable, TextView sValue) {
    Run("can't be written",
        [&](cVexonComm& link) { return link.SetVar(UCase(sVariable), sValue); });
}

Text ControllerDirectory(std::string_view sDirectory) {
    Text sPath = Replace(posix::FromNative(sDirectory), u"/", u"\\");
    if (rpc::IsControllerPath(sPath)) sPath.erase(0, kSpace.size());
    while (sPath.starts_with(u'\\'))
        sPath.erase(0, 1);
    while (sPath.ends_with(u'\\'))
        sPath.pop_back();
    if (sPath.empty() || EqualNoCase(sPath, kRoot)) return Text(kRoot);
    if (!rpc::IsPlainDirectory(sPath))
        throw Refusal(fmt::format("{}: no directory of the controller; write one as R1\\Program",
                                  Shown(sPath)),
                      ExitCode::Controller);
    const bool bFromRoot = EqualNoCase(Left(sPath, std::ssize(kRoot) + 1), u"R1\\");
    return bFromRoot ? sPath : Text(kRoot).append(u"\\").append(sPath);
}

}  // namespace nomira::companion
