// The operations of cVexonComm on the controller's files and programs.
#include <algorithm>
#include <vector>

#include "langtools/BasicText.h"
#include "langtools/CParser.h"
#include "langtools/CodePage.h"
#include "link/CheckFileName.h"
#include "link/cVexonComm.h"
#include "platform/FileNamePattern.h"
#include "platform/Platform.h"

namespace nomira {
namespace {

constexpr TextView kSpace = u"TQX:\\";
constexpr TextView kNewFiles = u"TQX:\\R1\\";
constexpr TextView kLookUp = u"/R1/";

constexpr std::int32_t kToController = 64;
constexpr std::int32_t kFromController = 4160;  // and through memory, both ways
constexpr std::int32_t kDeleteFlag = -1;
constexpr std::int32_t kListFirst = 0;
constexpr std::int32_t kListSecond = 5;

constexpr std::int32_t kControlLevel = 0;
constexpr std::int32_t kRobotLevel = 1;
constexpr std::int32_t kRestartCommand = 12;
constexpr std::int32_t kTimeOutForControlLevel = -1;

constexpr std::int32_t kOuterTimeOut = 75000;

Text Resolve(SyncFile& files, TextView sName) {
    return files.ResolvePath(Text(kLookUp).append(sName));
}

// Back to where the controller has the file, or to its root.
Text TargetOf(SyncFile& files, TextView sName) {
    const Text sKnown = Resolve(files, sName);
    return !sKnown.empty() ? sKnown : Text(kNewFiles).append(sName);
}

// The disk's files that match; a listing that fails is an empty one.
std::vector<Text> FilesLike(TextView sPattern) {
    try {
        return TheFiles().Dir(sPattern);
    } catch (const RuntimeError&) {
        return {};
    }
}

// As the controller keeps a selected program, u"$PRO_I_O[]=\"/R1/MAIN()\"", or without what stands
// around its path.
Text ProgramPath(TextView sSelected) {
    TextView sPath = sSelected;
    sPath = sPath.substr(sPath.find(u'=') + 1);
    sPath = sPath.substr(0, sPath.find(u'('));
    return Replace(sPath, u"\"", u"");
}

}  // namespace

// ---- Lists ----

bool cVexonComm::GetRobotDirectory(Text& sDir, TextView vMask, std::int32_t) {
    return Guarded(m_oSyncFile, [&](SyncFile& files) {
        const Text sPath = Text(kSpace).append(vMask);
        for (const Text& sItem : files.ListDirectory(sPath, kListFirst, kListSecond))
            sDir.append(sItem).append(u"\n");
    });
}

Text cVexonComm::ListNames(TextView sMask) {
    Text sNames;
    return Require(VexonCommands).GetRobotDirectory(sNames, sMask, kOuterTimeOut) ? sNames : Text();
}

Text cVexonComm::GetRobotFileList() {
    return ListNames(u"\\R1\\");
}

Text cVexonComm::GetRobotDirList() {
    return ListNames(u"\\R1\\*.");
}

// The path of a tree's node: below the first level it begins with the root's name.
Text cVexonComm::GetParticularFileList(TextView strPath) {
    CParser parser;
    parser.Parse(strPath, u"\\");
    const Text sPath(strPath);
    return ListNames(parser.count() < 2 ? u"\\R1\\" + sPath + u"\\" : u"\\" + sPath);
}

// ---- To the controller ----

bool cVexonComm::DownLoadDiskToRobot(TextView sFileName, std::int32_t) {
    if (!m_bLinked) return false;
    const std::size_t nBar = sFileName.find(u'|');
    const bool bBar = nBar != TextView::npos;
    if (HasWildcards(sFileName)) return !bBar && DownLoadMatching(sFileName);
    if (bBar) {
        return Guarded(m_oSyncFile, [&](SyncFile& files) {
            files.CopyFile(Trim(sFileName.substr(0, nBar)), Trim(sFileName.substr(nBar + 1)),
                           kToController);
        });
    }
    Text sName(sFileName);
    if (!CheckFileName(sName)) return false;
    return Guarded(m_oSyncFile, [&](SyncFile& files) {
        files.CopyFile(sFileName, TargetOf(files, sName), kToController);
    });
}

// Ends at the first name without an extension. No handler here: a failure goes to the caller.
bool cVexonComm::DownLoadMatching(TextView sPattern) {
    const Text sDirectory(sPattern.substr(0, sPattern.rfind(u'\\') + 1));
    for (const Text& sEntry : FilesLike(sPattern)) {
        Text sName = sEntry;
        if (!CheckFileName(sName)) return false;
        SyncFile& files = Require(m_oSyncFile);
        files.CopyFile(sDirectory + sEntry, TargetOf(files, sName), kToController);
    }
    return true;
}

bool cVexonComm::DownLoadMemToRobot(TextView sFileName, TextView sFile, std::int32_t, bool) {
    Text sName(sFileName);
    if (!m_bLinked || !CheckFileName(sName)) return false;
    Text sKnownNames;
    GetRobotDirectory(sKnownNames, u"");
    return Guarded(m_oSyncFile, [&](SyncFile& files) {
        const bool bKnown = InStrNoCase(1, sKnownNames, sName) > 0;
        const Text sTarget = bKnown ? Resolve(files, sName) : Text(kNewFiles).append(sName);
        std::string data;
        Str2ByteArray(sFile, data);
        files.WriteFileFromMemory(data, sTarget, kFromController);
    });
}

bool cVexonComm::Str2ByteArray(TextView StringIn, std::string& ByteArray) const {
    ByteArray = SystemCodePage().Encode(StringIn);
    return true;
}

bool cVexonComm::PutFileFromDiskToRobot(TextView strFile) {
    return Require(VexonCommands).DownLoadDiskToRobot(strFile, kOuterTimeOut);
}

// ---- From the controller ----

// A file that the look-up can't find is not fetched from anywhere else: the library is given two
// empty paths, and refuses.
bool cVexonComm::UpLoadFromRobotToDisk(TextView sFileName, Text& sPath, TextView, std::int32_t) {
    if (!sPath.ends_with(u'\\')) sPath += u'\\';
    if (!m_bLinked) return false;
    Text sName(sFileName);
    const bool bIsFile = CheckFileName(sName);
    return Guarded(m_oSyncFile, [&](SyncFile& files) {
        const Text sSource = Resolve(files, sName);
        if (sSource.empty())
            files.CopyFile(u"", u"", kFromController);
        else if (bIsFile)
            files.CopyFile(sSource, sPath + sName, kFromController);
    });
}

bool cVexonComm::UpLoadFromRobotToMem(TextView sFileName, Text& sFile, TextView, std::int32_t,
                                      bool) {
    return Guarded(m_oSyncFile, [&](SyncFile& files) {
        Text sName(sFileName);
        CheckFileName(sName);
        const Text sText =
            SystemCodePage().Decode(files.ReadFileToMemory(Resolve(files, sName), kFromController));
        sFile = sText.substr(0, sText.find(u'\0'));
    });
}

bool cVexonComm::PutFileFromRobotToDisk(TextView strFile, TextView strPath) {
    Text sPath(strPath);
    return Require(VexonCommands).UpLoadFromRobotToDisk(strFile, sPath, {}, kOuterTimeOut);
}

// ---- Programs and I/O ----

bool cVexonComm::DeleteRobotProgram(TextView sPrgName, std::int32_t) {
    Text sName(sPrgName);
    if (!CheckFileName(sName)) return false;
    return Guarded(m_oSyncFile,
                   [&](SyncFile& files) { files.DeleteFile(Resolve(files, sName), kDeleteFlag); });
}

bool cVexonComm::RobotLevelStop(std::int32_t) {
    return Guarded(m_oSyncSelect, [](SyncSelect& programs) { programs.StopProgram(kRobotLevel); });
}

bool cVexonComm::ControlLevelStop(std::int32_t) {
    return Guarded(m_oSyncSelect,
                   [](SyncSelect& programs) { programs.StopProgram(kControlLevel); });
}

bool cVexonComm::RunControlLevel(TextView vPrgName, std::int32_t) {
    Text sSelected(vPrgName);
    if (vPrgName.empty()) ShowVar(u"$PRO_I_O[]", sSelected);
    return Guarded(m_oSyncSelect, [&](SyncSelect& programs) {
        programs.SelectProgram(ProgramPath(sSelected), u"", 0);
    });
}

bool cVexonComm::SelectModul(Text& strFile, TextView strParam, bool bImplizitCancel, std::int32_t) {
    if (!CheckFileName(strFile)) return false;
    const bool bResolved =
        Guarded(m_oSyncFile, [&](SyncFile& files) { strFile = Resolve(files, strFile); });
    return bResolved && Guarded(m_oSyncSelect, [&](SyncSelect& programs) {
               programs.SelectProgram(strFile, strParam, bImplizitCancel ? -1 : 0);
           });
}

bool cVexonComm::CancelModul(std::int32_t vTimeOut) {
    const bool bControlLevel = vTimeOut == kTimeOutForControlLevel;
    if (bControlLevel) ControlLevelStop();
    return Guarded(m_oSyncSelect, [&](SyncSelect& programs) {
        programs.CancelProgram(bControlLevel ? kControlLevel : kRobotLevel);
    });
}

bool cVexonComm::IO_Restart(std::int32_t nBus, std::int32_t) {
    return Guarded(m_oSyncIo, [&](SyncIo& io) { io.RestartIo(kRestartCommand, nBus, 0); });
}

}  // namespace nomira
