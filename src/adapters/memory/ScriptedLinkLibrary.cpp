#include "adapters/memory/ScriptedLinkLibrary.h"

#include <algorithm>
#include <initializer_list>
#include <utility>

#include "langtools/BasicText.h"
#include "langtools/RuntimeError.h"
#include "platform/FileNamePattern.h"

namespace nomira::memory {
namespace {

constexpr TextView kRoot = u"TQX:";

// A path of the controller in one form: u"TQX:\R1\x.src", without "\" at its end.
Text ControllerPath(TextView sPath) {
    Text sRest = Replace(sPath, u"/", u"\\");
    if (EqualNoCase(Left(sRest, std::ssize(kRoot)), kRoot)) sRest.erase(0, kRoot.size());
    Text sFull(kRoot);
    for (const char16_t c : u"\\" + sRest)
        if (c != u'\\' || sFull.back() != u'\\') sFull += c;
    if (sFull.ends_with(u'\\')) sFull.pop_back();
    return sFull;
}

bool IsOnController(TextView sPath) {
    return EqualNoCase(Left(sPath, std::ssize(kRoot)), kRoot) || sPath.starts_with(u'/');
}

TextView ParentOf(TextView sPath) {
    return sPath.substr(0, sPath.rfind(u'\\'));
}

TextView NameOf(TextView sPath) {
    return sPath.substr(sPath.rfind(u'\\') + 1);
}

Text CallText(TextView sOperation, std::initializer_list<Text> arguments) {
    Text sCall(sOperation);
    sCall += u'(';
    for (const Text& sArgument : arguments) {
        if (&sArgument != arguments.begin()) sCall += u", ";
        sCall += sArgument;
    }
    return sCall + u')';
}

}  // namespace

// What every object has: its calls are written down and fail as told, and its last failure stays.
class ScriptedCalls {
  protected:
    ScriptedCalls(ScriptedLinkLibrary& library, Text sName)
        : m_library(library), m_sName(std::move(sName)) {}
    ~ScriptedCalls() { m_library.calls.push_back(CallText(u"Release", {m_sName})); }

    void Call(TextView sOperation, std::initializer_list<Text> arguments) {
        m_library.calls.push_back(CallText(sOperation, arguments));
        const MessageRecord* detail = m_library.FailureOf(m_library.calls.back());
        if (detail) Fail(*detail);
    }
    [[noreturn]] void Refuse(TextView sCause) { Fail(ScriptedLinkLibrary::FailureRecord(sCause)); }
    [[noreturn]] void Fail(const MessageRecord& detail) {
        m_lastError = detail;
        Raise(ErrorNumber::LinkFailure);
    }

    ScriptedLinkLibrary& m_library;
    MessageRecord m_lastError;
    Text m_sName;
};

namespace {

template <typename Port>
class ScriptedObject : public Port, protected ScriptedCalls {
  public:
    ScriptedObject(ScriptedLinkLibrary& library, Text sName)
        : ScriptedCalls(library, std::move(sName)) {}
    MessageRecord GetLastErrorRecord() override {
        MessageRecord record = m_lastError;
        Call(u"GetLastErrorRecord", {m_sName});
        return record;
    }
};

}  // namespace

class ScriptedVar : public ScriptedObject<SyncVar> {
  public:
    using ScriptedObject::ScriptedObject;
    Text ReadVar(TextView sName) override {
        Call(u"ReadVar", {Text(sName)});
        const auto value = m_library.Variable(sName);
        if (!value) Refuse(u"no such variable");
        return *value;
    }
    void WriteVar(TextView sName, TextView sValue) override {
        Call(u"WriteVar", {Text(sName), Text(sValue)});
        m_library.SetVariable(sName, sValue);
    }
};

class ScriptedFile : public ScriptedObject<SyncFile> {
  public:
    using ScriptedObject::ScriptedObject;

    std::vector<Text> ListDirectory(TextView sPath, std::int32_t nFirst,
                                    std::int32_t nSecond) override {
        Call(u"ListDirectory", {Text(sPath), DecimalText(nFirst), DecimalText(nSecond)});
        const auto told = m_library.listings.find(Text(sPath));
        return told != m_library.listings.end() ? told->second : m_library.List(sPath);
    }

    void DeleteFile(TextView sPath, std::int32_t nFlag) override {
        Call(u"DeleteFile", {Text(sPath), DecimalText(nFlag)});
        if (m_library.m_files.erase(UCase(ControllerPath(sPath))) == 0) Refuse(u"no such file");
    }

    void CopyFile(TextView sSource, TextView sDestination, std::int32_t nFlags) override {
        Call(u"CopyFile", {Text(sSource), Text(sDestination), DecimalText(nFlags)});
        if (sSource.empty() || sDestination.empty()) Refuse(u"no path");
        const std::string bytes = IsOnController(sSource) ? OnController(sSource) : OnDisk(sSource);
        if (IsOnController(sDestination))
            m_library.PutFile(sDestination, bytes);
        else
            PutOnDisk(sDestination, bytes);
    }

    Text ResolvePath(TextView sLookup) override {
        Call(u"ResolvePath", {Text(sLookup)});
        const auto told = m_library.lookUps.find(Text(sLookup));
        if (told != m_library.lookUps.end()) return told->second;
        const Text sName = UCase(NameOf(ControllerPath(sLookup)));
        for (const auto& [sKey, file] : m_library.m_files)
            if (sKey.starts_with(u"TQX:\\R1\\") && NameOf(sKey) == sName) return file.sPath;
        return {};
    }

    void WriteFileFromMemory(const std::string& sData, TextView sDestination,
                             std::int32_t nFlags) override {
        const Text sLength = DecimalText(std::ssize(sData));
        Call(u"WriteFileFromMemory",
             {sLength + u" bytes", Text(sDestination), DecimalText(nFlags)});
        if (sDestination.empty()) Refuse(u"no path");
        m_library.PutFile(sDestination, sData);
    }

    std::string ReadFileToMemory(TextView sPath, std::int32_t nFlags) override {
        Call(u"ReadFileToMemory", {Text(sPath), DecimalText(nFlags)});
        return OnController(sPath);
    }

  private:
    std::string OnController(TextView sPath) {
        const auto bytes = m_library.FileBytes(sPath);
        if (!bytes) Refuse(u"no such file on the controller");
        return *bytes;
    }
    std::string OnDisk(TextView sPath) {
        if (!m_library.m_disk.Exists(sPath)) Refuse(u"no such file on the disk");
        return m_library.m_disk.Bytes(sPath);
    }
    void PutOnDisk(TextView sPath, std::string_view bytes) {
        if (!m_library.m_disk.Exists(ParentOf(sPath))) Refuse(u"no such directory on the disk");
        m_library.m_disk.Put(sPath, bytes);
    }
};

class ScriptedWatches : public ScriptedObject<AsyncVar> {
  public:
    using ScriptedObject::ScriptedObject;
    ~ScriptedWatches() override {
        std::erase_if(m_library.m_watches, [this](const auto& watch) { return IsOwn(watch); });
    }
    void InfoOn(IVOCallbackVar& callback, std::int32_t nId, TextView sName,
                std::int32_t nCycle) override {
        Call(u"InfoOn", {DecimalText(nId), Text(sName), DecimalText(nCycle)});
        m_library.m_watches.push_back({this, &callback, nId, Text(sName)});
        m_library.ReportTo(m_library.m_watches.back());
    }
    void InfoOff(std::int32_t nId) override {
        Call(u"InfoOff", {DecimalText(nId)});
        const auto nGone = std::erase_if(m_library.m_watches, [this, nId](const auto& watch) {
            return IsOwn(watch) && watch.nId == nId;
        });
        if (nGone == 0) Refuse(u"no such watch");
    }

  private:
    bool IsOwn(const ScriptedLinkLibrary::Watch& watch) const { return watch.owner == this; }
};

namespace {

class ScriptedSelect : public ScriptedObject<SyncSelect> {
  public:
    using ScriptedObject::ScriptedObject;
    void StopProgram(std::int32_t nLevel) override { Call(u"StopProgram", {DecimalText(nLevel)}); }
    void CancelProgram(std::int32_t nLevel) override {
        Call(u"CancelProgram", {DecimalText(nLevel)});
    }
    void SelectProgram(TextView sPath, TextView sParameters, std::int16_t bFlag) override {
        Call(u"SelectProgram", {Text(sPath), Text(sParameters), DecimalText(bFlag)});
    }
};

class ScriptedIo : public ScriptedObject<SyncIo> {
  public:
    using ScriptedObject::ScriptedObject;
    void RestartIo(std::int32_t nCommand, std::int32_t nBus, std::int32_t nLast) override {
        Call(u"RestartIo", {DecimalText(nCommand), DecimalText(nBus), DecimalText(nLast)});
    }
};

class ScriptedAdvise : public ScriptedObject<AdviseMessage>, public ConfirmMessage {
  public:
    using ScriptedObject::ScriptedObject;
    ~ScriptedAdvise() override { std::erase(m_library.consumers, m_consumer); }
    void Advise(std::shared_ptr<IVOConsumeMessage> consumer, std::int32_t nFilter) override {
        Call(u"Advise", {DecimalText(nFilter)});
        m_consumer = std::move(consumer);
        m_library.consumers.push_back(m_consumer);
    }
    void ConfirmAllMessages(IOCallbackError& callback, std::int32_t nFirst,
                            std::int32_t nSecond) override {
        Call(u"ConfirmAllMessages", {DecimalText(nFirst), DecimalText(nSecond)});
        m_library.lastConfirmation = &callback;
    }

  private:
    std::shared_ptr<IVOConsumeMessage> m_consumer;
};

template <typename Object>
std::unique_ptr<LinkObject> Make(ScriptedLinkLibrary& library, TextView sProgId) {
    return std::make_unique<Object>(library, Text(sProgId));
}

struct Class {
    TextView sProgId;
    std::unique_ptr<LinkObject> (*make)(ScriptedLinkLibrary&, TextView);
};

constexpr Class kClasses[] = {
    {kSyncVarId, Make<ScriptedVar>},
    {kSyncFileId, Make<ScriptedFile>},
    {kSyncEditId, Make<ScriptedObject<SyncEdit>>},
    {kSyncSelectId, Make<ScriptedSelect>},
    {kSyncIoId, Make<ScriptedIo>},
    {kAsyncVarId, Make<ScriptedWatches>},
    {kAdviseMessageId, Make<ScriptedAdvise>},
};

class ScriptedFactory : public LinkFactory, private ScriptedCalls {
  public:
    explicit ScriptedFactory(ScriptedLinkLibrary& library) : ScriptedCalls(library, u"factory") {}
    std::unique_ptr<LinkObject> CreateLinkObject(TextView sProgId, TextView sConnectName) override {
        Call(u"CreateLinkObject", {Text(sProgId), Text(sConnectName)});
        if (!m_library.bMiddlewareRuns) Refuse(u"no middleware");
        for (const Class& known : kClasses)
            if (known.sProgId == sProgId) return known.make(m_library, sProgId);
        Refuse(u"no such class");
    }
};

}  // namespace

std::unique_ptr<LinkFactory> ScriptedLinkLibrary::CreateFactory() {
    calls.emplace_back(u"CreateFactory()");
    if (!bInstalled) Raise(ErrorNumber::CannotCreateObject);
    return std::make_unique<ScriptedFactory>(*this);
}

void ScriptedLinkLibrary::SetVariable(TextView sName, TextView sValue) {
    m_variables[Text(sName)] = sValue;
    for (const Watch& watch : m_watches)
        if (watch.sName == sName) ReportTo(watch);
}

std::optional<Text> ScriptedLinkLibrary::Variable(TextView sName) const {
    const auto found = m_variables.find(Text(sName));
    return found == m_variables.end() ? std::nullopt : std::optional(found->second);
}

void ScriptedLinkLibrary::PutFile(TextView sPath, std::string_view bytes) {
    const Text sFull = ControllerPath(sPath);
    PutDirectory(ParentOf(sFull));
    m_files.try_emplace(UCase(sFull), ControllerFile{sFull, {}}).first->second.bytes = bytes;
}

void ScriptedLinkLibrary::PutDirectory(TextView sPath) {
    const Text sFull = ControllerPath(sPath);
    if (sFull == kRoot || std::ranges::count(m_directories, sFull) != 0) return;
    PutDirectory(ParentOf(sFull));
    m_directories.push_back(sFull);
}

std::optional<std::string> ScriptedLinkLibrary::FileBytes(TextView sPath) const {
    const auto found = m_files.find(UCase(ControllerPath(sPath)));
    return found == m_files.end() ? std::nullopt : std::optional(found->second.bytes);
}

// A path without a mask means the files of that directory; the mask "*." means its directories.
std::vector<Text> ScriptedLinkLibrary::List(TextView sPath) const {
    const Text sFull = ControllerPath(sPath);
    const bool bMask = HasWildcards(NameOf(sFull));
    const TextView sDirectory = bMask ? ParentOf(sFull) : TextView(sFull);
    const auto isInside = [&](TextView s) { return EqualNoCase(ParentOf(s), sDirectory); };
    std::vector<Text> names;
    if (bMask && NameOf(sFull) == u"*.") {
        for (const Text& sSub : m_directories)
            if (isInside(sSub)) names.emplace_back(NameOf(sSub));
        return names;
    }
    for (const auto& [sKey, file] : m_files)
        if (isInside(file.sPath) && (!bMask || MatchesFileName(NameOf(file.sPath), NameOf(sFull))))
            names.emplace_back(NameOf(file.sPath));
    return names;
}

void ScriptedLinkLibrary::Fail(TextView sCall, MessageRecord detail) {
    m_failures.emplace_back(sCall, std::move(detail));
}

MessageRecord ScriptedLinkLibrary::FailureRecord(TextView sCause) {
    MessageRecord record;
    record.eMessageType = 2;
    record.nMessage = 1;
    record.bstrDBModule = u"Link";
    record.bstrCause = sCause;
    record.bstrDBMessage = u"Failure";
    record.varParams = LinkArray{0, {u"p"}};
    record.varDBParams = LinkArray{0, {u"c"}};
    return record;
}

const MessageRecord* ScriptedLinkLibrary::FailureOf(TextView sCall) const {
    const auto found = std::ranges::find_if(
        m_failures, [&](const auto& failure) { return sCall.starts_with(failure.first); });
    return found == m_failures.end() ? nullptr : &found->second;
}

void ScriptedLinkLibrary::ReportTo(const Watch& watch) {
    const auto value = Variable(watch.sName);
    if (value) m_reports.push_back({watch, *value});
}

void ScriptedLinkLibrary::ServeEvents() {
    const auto reports = std::exchange(m_reports, {});
    for (const Report& report : reports) {
        const bool bStillOn = std::ranges::any_of(m_watches, [&](const Watch& watch) {
            return watch.owner == report.watch.owner && watch.nId == report.watch.nId;
        });
        if (bStillOn) report.watch.callback->OnSetInfo(report.watch.nId, report.sValue);
    }
    const auto messages = std::exchange(m_messages, {});
    for (const MessageRecord& message : messages)
        for (const auto& consumer : std::vector(consumers))
            consumer->OnAddMessage(message);
}

}  // namespace nomira::memory
