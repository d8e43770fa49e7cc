// The controller's link library as a script: a small controller in memory that answers as it was
// told, fails where it was told, and writes down every call.
//
// The objects that it makes must not outlive it.
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "adapters/memory/MemoryFiles.h"
#include "langtools/Text.h"
#include "link/LinkLibrary.h"

namespace nomira::memory {

class ScriptedLinkLibrary : public LinkLibrary {
  public:
    // Files are copied from and to `disk`, which must live as long.
    explicit ScriptedLinkLibrary(MemoryFiles& disk) : m_disk(disk) {}

    // ---- The script ----

    // Whether the library is on the machine, and whether it reaches the controller's middleware.
    bool bInstalled = true;
    bool bMiddlewareRuns = true;

    // A variable's new value, which its watches hear of at the next ServeEvents.
    void SetVariable(TextView sName, TextView sValue);
    // nullopt if the controller has no such variable.
    std::optional<Text> Variable(TextView sName) const;

    // A file of the controller, such as u"TQX:\R1\Program\x.src", and the directories above it.
    void PutFile(TextView sPath, std::string_view bytes);
    void PutDirectory(TextView sPath);
    // nullopt if the controller has no such file.
    std::optional<std::string> FileBytes(TextView sPath) const;

    // What ListDirectory and ResolvePath answer to a path, written as it is asked for; to others
    // they answer with the files that are there.
    std::map<Text, std::vector<Text>> listings;
    std::map<Text, Text> lookUps;

    // From now on every call whose entry in `calls` begins with `sCall` fails, and leaves `detail`
    // with its object: u"CopyFile", or u"CreateLinkObject(LNK_TqxLib.SyncIo" for one class.
    void Fail(TextView sCall, MessageRecord detail = FailureRecord(u"as told"));
    void ClearFailures() { m_failures.clear(); }
    // A failure's detail with this cause and one parameter of each kind.
    static MessageRecord FailureRecord(TextView sCause);

    // A message of the controller; the consumers get it at the next ServeEvents.
    void SendMessage(MessageRecord message) { m_messages.push_back(std::move(message)); }
    // Hands the reports and messages that wait to the callbacks, as the library does while the
    // program serves its events.
    void ServeEvents();

    // ---- What happened ----

    // Each call of an operation, as u"CopyFile(C:\x.src, TQX:\R1\x.src, 64)", and each release of
    // an object, as u"Release(LNK_TqxLib.SyncVar)"; the factory's is u"Release(factory)".
    std::vector<Text> calls;
    // The consumers of messages that the library keeps.
    std::vector<std::shared_ptr<IVOConsumeMessage>> consumers;
    // The callback of the last ConfirmAllMessages.
    const IOCallbackError* lastConfirmation = nullptr;

    bool Installed() const override { return bInstalled; }
    std::unique_ptr<LinkFactory> CreateFactory() override;

  private:
    friend class ScriptedCalls;
    friend class ScriptedFile;
    friend class ScriptedVar;
    friend class ScriptedWatches;

    struct ControllerFile {
        Text sPath;  // in its own case
        std::string bytes;
    };
    struct Watch {
        const void* owner;
        IVOCallbackVar* callback;
        std::int32_t nId;
        Text sName;
    };
    struct Report {
        Watch watch;
        Text sValue;
    };

    // The detail with which this call is to fail; nullptr if it isn't.
    const MessageRecord* FailureOf(TextView sCall) const;
    std::vector<Text> List(TextView sPath) const;
    void ReportTo(const Watch& watch);

    MemoryFiles& m_disk;
    std::map<Text, Text> m_variables;
    std::map<Text, ControllerFile> m_files;  // by full path in upper case
    std::vector<Text> m_directories;         // full paths
    std::vector<std::pair<Text, MessageRecord>> m_failures;
    std::vector<Watch> m_watches;
    std::deque<Report> m_reports;
    std::deque<MessageRecord> m_messages;
};

}  // namespace nomira::memory
