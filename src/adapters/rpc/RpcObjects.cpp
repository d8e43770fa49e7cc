#include "adapters/rpc/RpcObjects.h"

#include <map>
#include <string>
#include <system_error>
#include <utility>

#include "adapters/rpc/Base64.h"
#include "adapters/rpc/ControllerName.h"
#include "adapters/rpc/LinkError.h"
#include "adapters/rpc/LocalFile.h"
#include "adapters/rpc/RecordJson.h"

namespace nomira::rpc {
namespace {

// What an object needs: the connection, its number at the other end, and the disk's paths.
struct Place {
    std::shared_ptr<Connection> connection;
    std::int32_t nObject = 0;
    ResolvePath resolvePath;
};

void Nothing(const Json&) {}

// What all objects have in common: calls under their number, and the record of the last failure.
class Remote {
  public:
    explicit Remote(Place place) : m_place(std::move(place)) {}
    virtual ~Remote() { m_place.connection->Tell("Release", {{"object", m_place.nObject}}); }
    Remote(const Remote&) = delete;
    Remote& operator=(const Remote&) = delete;

  protected:
    // Runs `work`; a failure's record stays with the object.
    template <typename Work>
    auto Guarded(Work work) {
        try {
            return work();
        } catch (const LinkError& error) {
            m_lastError = error.Record();
            throw;
        }
    }

    // What `read` makes of the operation's result. `params` makes its parameters, and may raise
    // WireError for a text that can't be sent.
    template <typename Params, typename Read>
    auto Ask(std::string_view sOperation, Params params, Read read) {
        return Guarded([&] {
            const Json result = m_place.connection->Call(sOperation, Numbered(sOperation, params));
            return Understood(sOperation, [&] { return read(result); });
        });
    }
    template <typename Params>
    void Ask(std::string_view sOperation, Params params) {
        Ask(sOperation, params, Nothing);
    }

    Connection& TheConnection() const { return *m_place.connection; }
    std::int32_t Number() const { return m_place.nObject; }
    std::filesystem::path OnDisk(TextView sPath) const { return m_place.resolvePath(sPath); }

    MessageRecord m_lastError;

  private:
    template <typename Params>
    Json Numbered(std::string_view sOperation, Params params) {
        try {
            Json json = params();
            json["object"] = m_place.nObject;
            return json;
        } catch (const WireError& error) {
            throw TroubleError(LinkTrouble::BadRequest, error.what(), sOperation);
        }
    }

    // A result that can't be meant ends the connection.
    template <typename Read>
    auto Understood(std::string_view sOperation, Read read) {
        try {
            return read();
        } catch (const WireError& error) {
            m_place.connection->Close();
            throw TroubleError(LinkTrouble::BadAnswer, error.what(), sOperation);
        }
    }

    Place m_place;
};

template <typename Port>
class RemoteObject : public Port, protected Remote {
  public:
    explicit RemoteObject(Place place) : Remote(std::move(place)) {}
    MessageRecord GetLastErrorRecord() override { return m_lastError; }
};

class RemoteVar : public RemoteObject<SyncVar> {
  public:
    using RemoteObject::RemoteObject;
    Text ReadVar(TextView sName) override {
        return Ask(
            "ReadVar",
            [&] {
                return Json{{"name", ToWire(sName)}};
            },
            [](const Json& result) { return TextMember(result, "value"); });
    }
    void WriteVar(TextView sName, TextView sValue) override {
        Ask("WriteVar", [&] { return Json{{"name", ToWire(sName)}, {"value", ToWire(sValue)}}; });
    }
};

std::vector<Text> NamesOf(const Json& result, bool bDirectories) {
    const Json& list = Member(result, "names");
    if (!list.is_array()) throw WireError("\"names\" is no array");
    std::vector<Text> names;
    for (const Json& entry : list) {
        if (!entry.is_string()) throw WireError("a listed name is no text");
        Text sName = FromWire(entry.get_ref<const std::string&>());
        if (!(bDirectories ? IsPlainDirectory(sName) : IsPlainName(sName)))
            throw WireError("a listed name leads elsewhere, or is none");
        names.push_back(std::move(sName));
    }
    return names;
}

Text FoundPathOf(const Json& result) {
    Text sPath = TextMember(result, "path");
    if (!sPath.empty() && !IsControllerPath(sPath))
        throw WireError("a path that was looked up is none of the controller's");
    return sPath;
}

class RemoteFile : public RemoteObject<SyncFile> {
  public:
    using RemoteObject::RemoteObject;

    std::vector<Text> ListDirectory(TextView sPath, std::int32_t nFirst,
                                    std::int32_t nSecond) override {
        return Ask(
            "ListDirectory",
            [&] {
                return Json{{"path", ToWire(sPath)}, {"first", nFirst}, {"second", nSecond}};
            },
            [&](const Json& result) { return NamesOf(result, AsksForDirectories(sPath)); });
    }

    void DeleteFile(TextView sPath, std::int32_t nFlag) override {
        Ask("DeleteFile", [&] { return Json{{"path", ToWire(sPath)}, {"flag", nFlag}}; });
    }

    void CopyFile(TextView sSource, TextView sDestination, std::int32_t nFlags) override {
        const bool bFrom = IsControllerPath(sSource), bTo = IsControllerPath(sDestination);
        if (bFrom && !bTo && !sDestination.empty())
            Fetch(sSource, sDestination, nFlags);
        else if (bTo && !bFrom && !sSource.empty())
            Send(sSource, sDestination, nFlags);
        else
            Guarded([] {
                throw TroubleError(LinkTrouble::BadRequest,
                                   "one path must be the controller's, and one the disk's",
                                   "CopyFile");
            });
    }

    Text ResolvePath(TextView sLookup) override {
        return Ask(
            "ResolvePath",
            [&] {
                return Json{{"path", ToWire(sLookup)}};
            },
            FoundPathOf);
    }

    void WriteFileFromMemory(const std::string& sData, TextView sDestination,
                             std::int32_t nFlags) override {
        Ask("WriteFileFromMemory", [&] {
            return Json{{"data", ToBase64(sData)},
                        {"destination", ToWire(sDestination)},
                        {"flags", nFlags}};
        });
    }

    std::string ReadFileToMemory(TextView sPath, std::int32_t nFlags) override {
        return Ask(
            "ReadFileToMemory",
            [&] {
                return Json{{"path", ToWire(sPath)}, {"flags", nFlags}};
            },
            [](const Json& result) { return BytesMember(result, "data"); });
    }

  private:
    static Json CopyParams(TextView sSource, TextView sDestination, std::int32_t nFlags) {
        return {
            {"source", ToWire(sSource)}, {"destination", ToWire(sDestination)}, {"flags", nFlags}};
    }

    // Does `work` with the file of the disk that the path means; the system's complaint becomes a
    // failure of this object.
    template <typename Work>
    auto WithDisk(TextView sPath, Work work) {
        return Guarded([&] {
            const std::filesystem::path file = OnDisk(sPath);
            try {
                return work(file);
            } catch (const std::system_error& error) {
                throw TroubleError(LinkTrouble::LocalFile,
                                   file.string() + ": " + error.code().message(), "CopyFile");
            }
        });
    }

    void Send(TextView sSource, TextView sDestination, std::int32_t nFlags) {
        const std::string sBytes =
            WithDisk(sSource, [&](const auto& file) { return ReadLocalFile(file, kMaxLine); });
        Ask("CopyFile", [&] {
            Json params = CopyParams(sSource, sDestination, nFlags);
            params["data"] = ToBase64(sBytes);
            return params;
        });
    }

    void Fetch(TextView sSource, TextView sDestination, std::int32_t nFlags) {
        const std::string sBytes = Ask(
            "CopyFile", [&] { return CopyParams(sSource, sDestination, nFlags); },
            [](const Json& result) { return BytesMember(result, "data"); });
        WithDisk(sDestination, [&](const auto& file) { ReplaceLocalFile(file, sBytes); });
    }
};

class RemoteSelect : public RemoteObject<SyncSelect> {
  public:
    using RemoteObject::RemoteObject;
    void StopProgram(std::int32_t nLevel) override {
        Ask("StopProgram", [&] { return Json{{"level", nLevel}}; });
    }
    void CancelProgram(std::int32_t nLevel) override {
        Ask("CancelProgram", [&] { return Json{{"level", nLevel}}; });
    }
    void SelectProgram(TextView sPath, TextView sParameters, std::int16_t bFlag) override {
        Ask("SelectProgram", [&] {
            return Json{
                {"path", ToWire(sPath)}, {"parameters", ToWire(sParameters)}, {"flag", bFlag}};
        });
    }
};

class RemoteIo : public RemoteObject<SyncIo> {
  public:
    using RemoteObject::RemoteObject;
    void RestartIo(std::int32_t nCommand, std::int32_t nBus, std::int32_t nLast) override {
        Ask("RestartIo", [&] {
            return Json{{"command", nCommand}, {"bus", nBus}, {"last", nLast}};
        });
    }
};

class RemoteWatches : public RemoteObject<AsyncVar>, private NotificationReceiver {
  public:
    explicit RemoteWatches(Place place) : RemoteObject(std::move(place)) {
        TheConnection().AddReceiver(Number(), *this);
    }
    ~RemoteWatches() override { TheConnection().RemoveReceiver(Number()); }

    void InfoOn(IVOCallbackVar& callback, std::int32_t nId, TextView sName,
                std::int32_t nCycle) override {
        Ask("InfoOn", [&] {
            return Json{{"id", nId}, {"name", ToWire(sName)}, {"cycle", nCycle}};
        });
        m_callbacks[nId] = &callback;
    }
    void InfoOff(std::int32_t nId) override {
        m_callbacks.erase(nId);
        Ask("InfoOff", [&] { return Json{{"id", nId}}; });
    }

  private:
    void Receive(const Notification& notification) override {
        if (notification.sMethod != "OnSetInfo") return;
        const auto found = m_callbacks.find(NumberMember(notification.params, "id"));
        const Text sValue = TextMember(notification.params, "value");
        if (found != m_callbacks.end()) found->second->OnSetInfo(found->first, sValue);
    }

    std::map<std::int32_t, IVOCallbackVar*> m_callbacks;
};

class RemoteAdvise : public RemoteObject<AdviseMessage>,
                     public ConfirmMessage,
                     private NotificationReceiver {
  public:
    explicit RemoteAdvise(Place place) : RemoteObject(std::move(place)) {
        TheConnection().AddReceiver(Number(), *this);
    }
    ~RemoteAdvise() override { TheConnection().RemoveReceiver(Number()); }

    void Advise(std::shared_ptr<IVOConsumeMessage> consumer, std::int32_t nFilter) override {
        Ask("Advise", [&] { return Json{{"filter", nFilter}}; });
        m_consumer = std::move(consumer);
    }
    // The confirmation has no answer but the call's own, so that the callback is never called.
    void ConfirmAllMessages(IOCallbackError&, std::int32_t nFirst, std::int32_t nSecond) override {
        Ask("ConfirmAllMessages", [&] { return Json{{"first", nFirst}, {"second", nSecond}}; });
    }

  private:
    void Receive(const Notification& notification) override {
        const std::shared_ptr<IVOConsumeMessage> consumer = m_consumer;
        if (!consumer) return;
        const Json& params = notification.params;
        if (notification.sMethod == "OnAddMessage")
            consumer->OnAddMessage(RecordFromJson(Member(params, "message")));
        else if (notification.sMethod == "OnAddDialog")
            consumer->OnAddDialog(RecordFromJson(Member(params, "dialog")));
        else if (notification.sMethod == "OnSubMessage")
            consumer->OnSubMessage(NumberMember(params, "handle"));
    }

    std::shared_ptr<IVOConsumeMessage> m_consumer;
};

template <typename Object>
std::unique_ptr<LinkObject> Make(Place place) {
    return std::make_unique<Object>(std::move(place));
}

struct ClassRow {
    TextView sProgId;
    std::unique_ptr<LinkObject> (*make)(Place);
};
constexpr ClassRow kClasses[] = {
    {kSyncVarId, Make<RemoteVar>},
    {kSyncFileId, Make<RemoteFile>},
    {kSyncEditId, Make<RemoteObject<SyncEdit>>},
    {kSyncSelectId, Make<RemoteSelect>},
    {kSyncIoId, Make<RemoteIo>},
    {kAsyncVarId, Make<RemoteWatches>},
    {kAdviseMessageId, Make<RemoteAdvise>},
};

constexpr const char* kCreate = "CreateLinkObject";

const ClassRow& RowOf(TextView sProgId) {
    for (const ClassRow& row : kClasses)
        if (row.sProgId == sProgId) return row;
    throw TroubleError(LinkTrouble::BadRequest, "the library has no such class", kCreate);
}

Json CreateParams(TextView sProgId, TextView sConnectName) {
    try {
        return {{"class", ToWire(sProgId)}, {"connection", ToWire(sConnectName)}};
    } catch (const WireError& error) {
        throw TroubleError(LinkTrouble::BadRequest, error.what(), kCreate);
    }
}

}  // namespace

std::unique_ptr<LinkObject> MakeObject(const std::shared_ptr<Connection>& connection,
                                       const ResolvePath& resolvePath, TextView sProgId,
                                       TextView sConnectName) {
    const ClassRow& row = RowOf(sProgId);
    const Json result = connection->Call(kCreate, CreateParams(sProgId, sConnectName));
    try {
        return row.make({connection, NumberMember(result, "object"), resolvePath});
    } catch (const WireError& error) {
        connection->Close();
        throw TroubleError(LinkTrouble::BadAnswer, error.what(), kCreate);
    }
}

}  // namespace nomira::rpc
