// Port: the controller's link library, in the shape of its objects.
//
// The library is a set of objects that a factory makes by name, each bound to a named connection
// with the controller's middleware. There is one abstract class per object, its operations in the
// order of the object's own list: the order is part of the library's binary interface, so places
// that nothing calls are there as well, and unused. The class cVexonComm is the port's one user.
//
// Calls block until the library returns; nothing here takes a time-out. Every failure is a
// RuntimeError, mostly LinkFailure; its detail is then had from the object's GetLastErrorRecord.
// Callbacks arrive on the program's own thread, while it serves its events.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "langtools/Text.h"
#include "link/MessageRecord.h"

namespace nomira {

// The names by which the factory makes the objects.
inline constexpr TextView kSyncVarId = u"LNK_TqxLib.SyncVar";
inline constexpr TextView kSyncFileId = u"LNK_TqxLib.SyncFile";
inline constexpr TextView kSyncEditId = u"LNK_TqxLib.SyncEdit";
inline constexpr TextView kSyncSelectId = u"LNK_TqxLib.SyncSelect";
inline constexpr TextView kSyncIoId = u"LNK_TqxLib.SyncIo";
inline constexpr TextView kAsyncVarId = u"LNK_TqxLib.AsyncVar";
inline constexpr TextView kAdviseMessageId = u"LNK_TqxLib.AdviseMessage";

// ---- Callbacks: the library calls, the program implements ----

// Reports of variables. Only OnSetInfo belongs to an operation that this program uses.
class IVOCallbackVar {
  public:
    virtual ~IVOCallbackVar() = default;
    // The watched variable with this number has the value, in the controller's own text form.
    virtual void OnSetInfo(std::int32_t nID, TextView bstrVal) = 0;
    virtual void OnSetMultiVar(std::int32_t nID) = 0;
    virtual void OnSetVar(std::int32_t nID) = 0;
    virtual void OnShowMultiVar(std::int32_t nID, const LinkValue& varVals) = 0;
    virtual void OnShowVar(std::int32_t nID, TextView bstrVal) = 0;
};

class IOCallbackError {
  public:
    virtual ~IOCallbackError() = default;
    virtual void OnDialog(std::int32_t nID, const MessageRecord& dialogData) = 0;
    virtual void OnError(std::int32_t nID, const MessageRecord& errorData) = 0;
};

class IVOConsumeMessage {
  public:
    virtual ~IVOConsumeMessage() = default;
    virtual void OnAddMessage(const MessageRecord& message) = 0;
    virtual void OnAddDialog(const MessageRecord& dialogData) = 0;
    virtual void OnSubMessage(std::int32_t nMessageHandle) = 0;
};

// ---- Objects: the program calls, the library implements ----

// What every object of the library can be seen as: its error interface.
class LinkObject {
  public:
    virtual ~LinkObject() = default;  // releases the object
    // The detail of this object's last failure.
    virtual MessageRecord GetLastErrorRecord() = 0;
};

// Blocking access to the controller's variables. A value is one string in the controller's own
// text form.
class SyncVar : public LinkObject {
  public:
    virtual Text ReadVar(TextView sName) = 0;                    // 1
    virtual void WriteVar(TextView sName, TextView sValue) = 0;  // 2
};

// Blocking access to the controller's files. Paths of the controller are "TQX:\..." for a directory
// or a destination, "/R1/..." for a look-up; the disk's are its own.
class SyncFile : public LinkObject {
  public:
    virtual void Unused1() {}  // 1
    // The names in a directory. `sPath` may end in a mask; the two numbers are passed as the
    // controller software passes them, 0 and 5.
    virtual std::vector<Text> ListDirectory(TextView sPath, std::int32_t nFirst,
                                            std::int32_t nSecond) = 0;  // 2
    virtual void Unused3() {}                                           // 3
    virtual void DeleteFile(TextView sPath, std::int32_t nFlag) = 0;    // 4
    // Between disk and controller, in the direction that the two paths tell.
    virtual void CopyFile(TextView sSource, TextView sDestination, std::int32_t nFlags) = 0;  // 5
    virtual void Unused6() {}                                                                 // 6
    virtual void Unused7() {}                                                                 // 7
    // The full path on the controller of the file that "/R1/" + name finds; empty if there is none.
    virtual Text ResolvePath(TextView sLookup) = 0;  // 8
    virtual void Unused9() {}                        // 9
    // `sData` holds bytes as they stand in the file.
    virtual void WriteFileFromMemory(const std::string& sData, TextView sDestination,
                                     std::int32_t nFlags) = 0;                      // 10
    virtual std::string ReadFileToMemory(TextView sPath, std::int32_t nFlags) = 0;  // 11
};

// Made and released by the program, never called.
class SyncEdit : public LinkObject {};

// Selection and stop of programs. Level 1 is the robot's, 0 the control's.
class SyncSelect : public LinkObject {
  public:
    virtual void Unused1() {}                                                                  // 1
    virtual void Unused2() {}                                                                  // 2
    virtual void StopProgram(std::int32_t nLevel) = 0;                                         // 3
    virtual void CancelProgram(std::int32_t nLevel) = 0;                                       // 4
    virtual void SelectProgram(TextView sPath, TextView sParameters, std::int16_t bFlag) = 0;  // 5
};

class SyncIo : public LinkObject {
  public:
    // Command 12 restarts the bus; the last number is always 0.
    virtual void RestartIo(std::int32_t nCommand, std::int32_t nBus, std::int32_t nLast) = 0;  // 1
};

// Watches of variables.
class AsyncVar : public LinkObject {
  public:
    virtual void Unused1() {}  // 1
    virtual void Unused2() {}  // 2
    // Reports the variable to the callback under the number `nId`, at most every `nCycle`
    // milliseconds, until InfoOff. The callback must live as long.
    virtual void InfoOn(IVOCallbackVar& callback, std::int32_t nId, TextView sName,
                        std::int32_t nCycle) = 0;  // 3
    virtual void Unused4() {}                      // 4
    virtual void Unused5() {}                      // 5
    virtual void InfoOff(std::int32_t nId) = 0;    // 6
};

// Subscription to the controller's messages.
class AdviseMessage : public LinkObject {
  public:
    // Messages of the kinds in the filter go to the consumer, which the library keeps.
    virtual void Advise(std::shared_ptr<IVOConsumeMessage> consumer,
                        std::int32_t nFilter) = 0;  // 1
};

// The object of AdviseMessage has this second interface too; an implementation derives from both.
class ConfirmMessage {
  public:
    virtual ~ConfirmMessage() = default;
    virtual void Unused1() {}  // 1
    virtual void ConfirmAllMessages(IOCallbackError& callback, std::int32_t nFirst,
                                    std::int32_t nSecond) = 0;  // 2
};

class LinkFactory {
  public:
    virtual ~LinkFactory() = default;
    // A new object of the named class, bound to the named connection, which is the name of the
    // form that uses it. Raises LinkFailure for a class that the library hasn't, and where the
    // middleware can't be reached.
    virtual std::unique_ptr<LinkObject> CreateLinkObject(TextView sProgId,
                                                         TextView sConnectName) = 0;  // 1
};

class LinkLibrary {
  public:
    virtual ~LinkLibrary() = default;
    // Whether the library is on this machine. Where it isn't, nothing that implements its
    // interfaces can be made.
    virtual bool Installed() const = 0;
    // Raises CannotCreateObject where the library isn't installed.
    virtual std::unique_ptr<LinkFactory> CreateFactory() = 0;
};

// The library in use; set by the program's composition, and not owned. nullptr, the start value,
// is a machine without the library: creating the factory raises CannotCreateObject.
void SetLinkLibrary(LinkLibrary* library);
// Raises CannotCreateObject on a machine without the library.
void RequireLinkLibrary();
std::unique_ptr<LinkFactory> CreateLinkFactory();

}  // namespace nomira
