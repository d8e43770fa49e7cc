// The program's one door to the controller's middleware.
//
// The class is used at two levels. The outer object, g_Comm(), is all that the rest of the program
// sees: it holds no object of the link library, offers the last nine operations, and passes them on
// to an inner object. That one, in VexonCommands while there is a link, is of the same class; it
// holds the library's objects and carries out all the others.
//
// Unless it says otherwise, an operation of the inner object traps every failure: its result is
// False then, and the detail that the library's object gives is the text of VexonError. Where the
// inner object is missing, the outer's operations raise ObjectNotSet. Operations block until the
// library returns: vTimeOut is accepted and, but for CancelModul, not read.
//
// Paths of the controller are "TQX:\..." for a directory and "/R1/" + name for a look-up of a
// program, wherever it lies there. Lists of names are one text, each entry closed by a line feed.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>

#include "langtools/RuntimeError.h"
#include "langtools/Text.h"
#include "link/LinkLibrary.h"
#include "link/WatchTable.h"
#include "ui/formlayer/Form.h"

namespace nomira {

class cVexonComm : public IVOCallbackVar, public IOCallbackError, public IVOConsumeMessage {
  public:
    cVexonComm() = default;
    // As ServerOff.
    ~cVexonComm() override;
    cVexonComm(const cVexonComm&) = delete;
    cVexonComm& operator=(const cVexonComm&) = delete;

    // The inner object; empty without a link, and always in the inner object itself.
    std::unique_ptr<cVexonComm> VexonCommands;

    // ---- The link ----

    // Takes the form that is told of reports and messages, and makes the library's factory. False
    // without a form, and nothing changes then.
    bool Init(Form* oParent);
    // Makes the library's objects, in their order, for a connection of this name; mode -1
    // subscribes to the controller's messages too. A failure leaves the objects made so far. The
    // subscription goes to a consumer of its own that has no form, so that no form hears of it.
    bool ConnectToVexon(TextView sConnectName, std::int16_t nC_Mode = 0);
    // Releases the library's objects. Always False.
    bool ServerOff();

    // ---- Variables, their values in the controller's own text form ----

    bool SetVar(TextView strVarName, TextView strNewValue);
    // `strVarValue` receives u"NAME=VALUE"; a failure leaves it.
    bool ShowVar(TextView strVarName, Text& strVarValue);
    // Watches the variable: the form's SetInfoResult and Vexon1_CmdMessage get u"NAME=VALUE" at
    // each change. True at once for a name that is watched already. Failures go to the caller, and
    // the name counts as watched all the same. `sResult` is not used.
    bool SetInfoOn(TextView sVariableName, TextView sResult, std::int32_t vTimeOut = 3000);
    // False for a name that isn't watched.
    bool SetInfoOff(TextView sVariableName, std::int32_t vTimeOut = 3000);

    // ---- Files ----

    // Adds the names in u"TQX:\" + mask to `sDir`.
    bool GetRobotDirectory(Text& sDir, TextView vMask = {}, std::int32_t vTimeOut = 10000);
    // Copies a file of the disk to where the controller has a file of that name, or into its root.
    // u"SOURCE|TARGET" names the target. With wildcards, every file that matches goes its own way;
    // failures go to the caller then. False for a name without an extension.
    bool DownLoadDiskToRobot(TextView sFileName, std::int32_t vTimeOut = 70000);
    // The same from `sFile`. A file counts as known if its name occurs anywhere in the controller's
    // list. `bKonvert` is not used.
    bool DownLoadMemToRobot(TextView sFileName, TextView sFile, std::int32_t vTimeOut = 70000,
                            bool bKonvert = false);
    // Copies the controller's file of this name into the directory `sPath`, which gets a closing
    // "\" if it has none. True, and no copy, for a name without an extension that the controller
    // finds nevertheless. `sOptions` is not used.
    bool UpLoadFromRobotToDisk(TextView sFileName, Text& sPath, TextView sOptions = {},
                               std::int32_t vTimeOut = 70000);
    // The same into `sFile`, up to the first character 0.
    bool UpLoadFromRobotToMem(TextView sFileName, Text& sFile, TextView sOptions = {},
                              std::int32_t vTimeOut = 70000, bool bKonvert = false);
    bool DeleteRobotProgram(TextView sPrgName, std::int32_t vTimeOut = 10000);

    // ---- Programs and I/O ----

    bool RobotLevelStop(std::int32_t vTimeOut = 3000);
    bool ControlLevelStop(std::int32_t vTimeOut = 3000);
    // Selects the program; an empty name means the one in the controller's variable $PRO_I_O[].
    bool RunControlLevel(TextView vPrgName = {}, std::int32_t vTimeOut = 3000);
    // `strFile` becomes the program's full path on the controller, or empty if it is no file name.
    bool SelectModul(Text& strFile, TextView strParam, bool bImplizitCancel = false,
                     std::int32_t vTimeOut = 3000);
    // Cancels the robot's program, or stops and cancels the control's for a `vTimeOut` of -1.
    bool CancelModul(std::int32_t vTimeOut = 3000);

    // ---- Messages and state ----

    // Failures go to the caller; without a subscription to messages it always fails.
    bool ConfirmAll(std::int32_t vTimeOut = 3000);
    // Always True.
    bool TqxOk(std::int32_t vTimeOut = 3000);
    bool IO_Restart(std::int32_t nBus, std::int32_t vTimeOut = 3000);
    // Whether Init, and ConnectToVexon since, went well.
    bool VexonIsConnected() const;
    // The detail of the last failure; empty until there is one.
    Text VexonError() const;
    // The text's bytes in the system's 8-bit code page, without a terminator.
    bool Str2ByteArray(TextView StringIn, std::string& ByteArray) const;

    // ---- The outer object ----

    // Ends the link, if there is one.
    void ExitVexonComm();
    // Whether there is an inner object; it tells nothing of the controller.
    bool IsVexonConnected() const;
    // Makes the inner object and lets it connect, unless there is one. True if there is one then,
    // whether the controller answers or not; False without the link library, where there can be
    // none.
    bool ConnectingVexon(TextView strName, Form* objForm);
    // The programs in the controller's root, in a directory such as u"R1\Program", and the root's
    // directories; empty if that fails.
    Text GetRobotFileList();
    Text GetParticularFileList(TextView strPath);
    Text GetRobotDirList();
    // UpLoadFromRobotToDisk and DownLoadDiskToRobot.
    bool PutFileFromRobotToDisk(TextView strFile, TextView strPath);
    bool PutFileFromDiskToRobot(TextView strFile);
    // ShowVar of the name in capitals; of the text then in `strVarValue`, what stands behind its
    // first "=" is left there, trimmed. That happens to what a failure has left there, too.
    bool VCShowVar(TextView strVarName, Text& strVarValue);

    // ---- Callbacks of the library ----

    void OnSetInfo(std::int32_t nID, TextView bstrVal) override;
    void OnSetMultiVar(std::int32_t) override {}
    void OnSetVar(std::int32_t) override {}
    void OnShowMultiVar(std::int32_t, const LinkValue&) override {}
    void OnShowVar(std::int32_t, TextView) override {}
    void OnDialog(std::int32_t, const MessageRecord&) override {}
    void OnError(std::int32_t, const MessageRecord&) override {}
    // The form's RobMessage and Vexon1_Message get the message's type and text.
    void OnAddMessage(const MessageRecord& message) override;
    void OnAddDialog(const MessageRecord&) override {}
    void OnSubMessage(std::int32_t) override {}

  private:
    // The object; raises ObjectNotSet for an empty one.
    template <typename Object>
    static Object& Require(const std::unique_ptr<Object>& object) {
        if (!object) Raise(ErrorNumber::ObjectNotSet);
        return *object;
    }
    // Runs an operation on one of the library's objects under the one handler that there is: true
    // if it came back.
    template <typename Object, typename Operation>
    bool Guarded(const std::unique_ptr<Object>& object, Operation operation) {
        try {
            operation(Require(object));
            return true;
        } catch (const RuntimeError&) {
            BuildErrorText(object.get());
            return false;
        }
    }
    // Keeps the detail of the object's failure; without an object, or without a detail that makes a
    // text, the last one stays.
    void BuildErrorText(LinkObject* failed);

    // Releases the member, then makes its object anew.
    template <typename Object>
    void MakeAnew(std::unique_ptr<Object>& member, TextView sProgId);
    void MakeObjects();
    void SubscribeToMessages();
    // Calls the form's method; a form without it, or no form, is no failure. Needs no object: the
    // method may end the link, and the callback's object with it.
    static void CallForm(const std::weak_ptr<Form>& form, TextView sMethod,
                         std::initializer_list<CallArgument> arguments);
    bool DownLoadMatching(TextView sPattern);
    Text ListNames(TextView sMask);

    std::unique_ptr<LinkFactory> m_oFactory;
    std::unique_ptr<SyncVar> m_oSyncVar;
    std::unique_ptr<SyncFile> m_oSyncFile;
    std::unique_ptr<SyncEdit> m_oSyncEdit;  // made and released, never called
    std::unique_ptr<SyncSelect> m_oSyncSelect;
    std::unique_ptr<SyncIo> m_oSyncIo;
    std::unique_ptr<AsyncVar> m_oAsyncVar;
    std::unique_ptr<AdviseMessage> m_oAdviseMessage;
    std::weak_ptr<Form> m_oParent;
    Text m_sConnectName;
    Text m_sLastError;
    bool m_bLinked = false;
    bool m_bConnected = false;  // goes with m_bLinked; nothing reads it
    WatchTable m_watches;
    std::int16_t m_nC_Mode = 0;
};

// The one outer object, made when first used. A composition that takes its library away ends the
// link first.
cVexonComm& g_Comm();

}  // namespace nomira
