#include "adapters/rpc/RpcLinkLibrary.h"

#include <sys/stat.h>

#include <functional>
#include <future>

#include "adapters/contracts/LinkLibraryContract.h"
#include "adapters/rpc/Base64.h"
#include "adapters/rpc/LinkError.h"
#include "adapters/rpc/ScriptedPeer.h"
#include "testing/TextPrinting.h"

namespace nomira::rpc {
namespace {

namespace fs = std::filesystem;
using testing::Conversation;
using testing::Raised;
using testing::RecordingVarCallback;
using testing::ScriptedPeer;
using testing::TemporaryFolder;

// The library with a peer that plays the scripts, and a folder as C:.
class Link {
  public:
    explicit Link(std::vector<ScriptedPeer::Script> scripts) : m_peer(std::move(scripts)) {}
    explicit Link(ScriptedPeer::Script script) : m_peer(std::move(script)) {}

  private:
    ScriptedPeer m_peer;

  public:
    RpcLinkLibrary library{m_peer.Socket(), [this](TextView sPath) { return OnDisk(sPath); }};
    TemporaryFolder disk;

    template <typename Object>
    std::unique_ptr<Object> Make(TextView sProgId) {
        return Cast<Object>(library.CreateFactory()->CreateLinkObject(sProgId, u"Test"));
    }
    template <typename Object>
    static std::unique_ptr<Object> Cast(std::unique_ptr<LinkObject> object) {
        return std::unique_ptr<Object>(dynamic_cast<Object*>(object.release()));
    }
    std::unique_ptr<SyncFile> Files() { return Make<SyncFile>(kSyncFileId); }
    std::unique_ptr<SyncVar> Variables() { return Make<SyncVar>(kSyncVarId); }

  private:
    fs::path OnDisk(TextView sPath) {
        std::string sName = ToWire(sPath.substr(sPath.find_last_of(u"\\/:") + 1));
        return disk / sName;
    }
};

// A peer that makes one object, and answers its first call with this result.
ScriptedPeer::Script Answering(Json result) {
    return [result = std::move(result)](Conversation& talk) {
        talk.MakeObject(5);
        talk.Answer(result);
        talk.AwaitEnd();
    };
}

void ExpectTrouble(LinkObject& object, const std::function<void()>& action, TextView sTrouble) {
    EXPECT_EQ(Raised(action), ErrorNumber::LinkFailure);
    EXPECT_EQ(object.GetLastErrorRecord().bstrDBMessage, sTrouble);
    EXPECT_FALSE(object.GetLastErrorRecord().bstrCause.empty());
}

// ---- Objects and connections ----

TEST(RpcLinkLibraryTest, TheLibraryIsThereWithoutThePeer) {
    const TemporaryFolder folder;
    RpcLinkLibrary library(folder / "none.sock", [](TextView) { return fs::path(); });
    const auto factory = library.CreateFactory();
    EXPECT_EQ(Raised([&] { factory->CreateLinkObject(kSyncVarId, u"Test"); }),
              ErrorNumber::LinkFailure);
}

TEST(RpcLinkLibraryTest, AFactoryHasOneConnection) {
    std::vector<Json> requests;
    {
        Link link([&](Conversation& talk) {
            for (int n = 1; n <= 3; ++n)
                requests.push_back(talk.Answer({{"object", n}}));
        });
        const auto factory = link.library.CreateFactory();
        std::vector<std::unique_ptr<LinkObject>> objects;
        for (const TextView sId : {kSyncVarId, kSyncFileId, kSyncEditId})
            objects.push_back(factory->CreateLinkObject(sId, u"NomiraMain"));
    }
    ASSERT_EQ(requests.size(), 3U);
    EXPECT_EQ(requests[1].at("method"), "CreateLinkObject");
    EXPECT_EQ(requests[1].at("params"),
              Json({{"class", "LNK_TqxLib.SyncFile"}, {"connection", "NomiraMain"}}));
}

TEST(RpcLinkLibraryTest, AReleasedObjectIsReleasedThereToo) {
    Json release;
    {
        Link link([&](Conversation& talk) {
            talk.MakeObject(7);
            release = talk.Read();
        });
        link.Variables().reset();
    }
    EXPECT_EQ(release.at("method"), "Release");
    EXPECT_EQ(release.at("params"), Json({{"object", 7}}));
}

TEST(RpcLinkLibraryTest, AnUnknownClassIsNotAskedFor) {
    Link link([](Conversation& talk) { talk.AwaitEnd(); });
    EXPECT_EQ(Raised([&] { link.Make<LinkObject>(u"LNK_TqxLib.Other"); }),
              ErrorNumber::LinkFailure);
}

TEST(RpcLinkLibraryTest, NoObjectComesOfNonsense) {
    for (const Json& result : {Json(), Json(7), Json::object(), Json({{"object", "1"}})}) {
        Link link([&](Conversation& talk) {
            talk.Answer(result);
            talk.AwaitEnd();
        });
        EXPECT_EQ(Raised([&] { link.Variables(); }), ErrorNumber::LinkFailure);
    }
}

TEST(RpcLinkLibraryTest, BehindALostPeerNewObjectsConnectAnew) {
    Link link({[](Conversation& talk) { talk.MakeObject(1); },
               [](Conversation& talk) {
                   talk.MakeObject(1);
                   talk.Answer({{"value", "4096"}});
               }});
    const auto factory = link.library.CreateFactory();
    const auto old = Link::Cast<SyncVar>(factory->CreateLinkObject(kSyncVarId, u"Test"));
    ExpectTrouble(
        *old, [&] { old->ReadVar(u"$NUM_OUT"); }, u"LinkLost");
    const auto next = Link::Cast<SyncVar>(factory->CreateLinkObject(kSyncVarId, u"Test"));
    EXPECT_EQ(next->ReadVar(u"$NUM_OUT"), u"4096");
    ExpectTrouble(
        *old, [&] { old->ReadVar(u"$NUM_OUT"); }, u"LinkLost");
}

TEST(RpcLinkLibraryTest, APeerThatHasComeBackIsFoundByTheNextObject) {
    Link link({[](Conversation& talk) { talk.MakeObject(1); },
               [](Conversation& talk) {
                   talk.MakeObject(1);
                   talk.Answer({{"value", "4096"}});
               }});
    const auto factory = link.library.CreateFactory();
    const auto old = Link::Cast<SyncVar>(factory->CreateLinkObject(kSyncVarId, u"Test"));
    ASSERT_TRUE(link.library.WaitForEvents(std::chrono::seconds(20)));  // the peer's end
    const auto next = Link::Cast<SyncVar>(factory->CreateLinkObject(kSyncVarId, u"Test"));
    EXPECT_EQ(next->ReadVar(u"$NUM_OUT"), u"4096");
}

TEST(RpcLinkLibraryTest, ACallWaitsForALatePeer) {
    std::promise<void> go;
    Link link([&](Conversation& talk) {
        talk.MakeObject(1);
        const Json request = talk.Read();
        go.get_future().wait();
        talk.Write(Conversation::AnswerTo(request, {{"value", "late"}}));
    });
    const auto variables = link.Variables();
    auto value = std::async(std::launch::async, [&] { return variables->ReadVar(u"$A"); });
    go.set_value();
    EXPECT_EQ(value.get(), u"late");
}

TEST(RpcLinkLibraryTest, ObjectsMayOutliveTheLibrary) {
    auto link = std::make_unique<Link>([](Conversation& talk) { talk.MakeObject(1); });
    const auto variables = link->Variables();
    link.reset();
    EXPECT_EQ(Raised([&] { variables->ReadVar(u"$A"); }), ErrorNumber::LinkFailure);
}

// ---- What is sent ----

TEST(RpcLinkLibraryTest, ATextThatCantBeSentIsAFailureOfTheObject) {
    Link link(Answering({{"value", "well"}}));
    const auto variables = link.Variables();
    const Text sBroken(1, 0xD800);
    ExpectTrouble(
        *variables, [&] { variables->ReadVar(sBroken); }, u"BadRequest");
    ExpectTrouble(
        *variables, [&] { variables->WriteVar(u"$A", sBroken); }, u"BadRequest");
    EXPECT_EQ(variables->ReadVar(u"$A"), u"well");
}

TEST(RpcLinkLibraryTest, AConnectionsNameThatCantBeSentIsAFailure) {
    Link link([](Conversation& talk) { talk.AwaitEnd(); });
    const auto factory = link.library.CreateFactory();
    EXPECT_EQ(Raised([&] { factory->CreateLinkObject(kSyncVarId, Text(1, 0xDFFF)); }),
              ErrorNumber::LinkFailure);
}

// ---- What comes back ----

TEST(RpcLinkLibraryTest, AResultOfAnotherKindEndsTheConnection) {
    for (const Json& result : {Json(), Json("4096"), Json::object(), Json({{"value", 4096}})}) {
        Link link(Answering(result));
        const auto variables = link.Variables();
        ExpectTrouble(
            *variables, [&] { variables->ReadVar(u"$A"); }, u"BadAnswer");
        ExpectTrouble(
            *variables, [&] { variables->ReadVar(u"$A"); }, u"LinkLost");
    }
}

TEST(RpcLinkLibraryTest, TheErrorsRecordStaysWithTheObject) {
    Link link([](Conversation& talk) {
        talk.MakeObject(1);
        const Json request = talk.Read();
        talk.Write(LineOf({{"jsonrpc", "2.0"},
                           {"id", request.at("id")},
                           {"error",
                            {{"code", -32000},
                             {"message", "no"},
                             {"data", {{"nMessage", 77}, {"bstrCause", "why"}}}}}}));
        talk.AwaitEnd();
    });
    const auto variables = link.Variables();
    EXPECT_EQ(variables->GetLastErrorRecord(), MessageRecord{});
    EXPECT_EQ(Raised([&] { variables->ReadVar(u"$A"); }), ErrorNumber::LinkFailure);
    EXPECT_EQ(variables->GetLastErrorRecord().nMessage, 77);
    EXPECT_EQ(variables->GetLastErrorRecord().bstrCause, u"why");
}

TEST(RpcLinkLibraryTest, AListedNameThatLeadsElsewhereIsNonsense) {
    for (const char* sName : {"..\\..\\x.src", "../x.src", "/etc/passwd", "C:x.src", "x:y", "..",
                              ".", "", "a\nb.src", "sub\\x.src"}) {
        Link link(Answering({{"names", {"good.src", sName}}}));
        const auto files = link.Files();
        ExpectTrouble(
            *files, [&] { files->ListDirectory(u"TQX:\\\\R1\\", 0, 5); }, u"BadAnswer");
    }
}

TEST(RpcLinkLibraryTest, AListIsAListOfTexts) {
    for (const Json& names : {Json("x"), Json(7), Json::object(), Json({1}), Json({nullptr})}) {
        Link link(Answering({{"names", names}}));
        const auto files = link.Files();
        ExpectTrouble(
            *files, [&] { files->ListDirectory(u"TQX:\\\\R1\\", 0, 5); }, u"BadAnswer");
    }
}

TEST(RpcLinkLibraryTest, ListedDirectoriesMayBeNested) {
    Link link(Answering({{"names", {"Program", "Program\\Sub"}}}));
    EXPECT_EQ(link.Files()->ListDirectory(u"TQX:\\\\R1\\*.", 0, 5),
              (std::vector<Text>{u"Program", u"Program\\Sub"}));
    Link hostile(Answering({{"names", {"Program\\..\\.."}}}));
    const auto files = hostile.Files();
    ExpectTrouble(
        *files, [&] { files->ListDirectory(u"TQX:\\\\R1\\*.", 0, 5); }, u"BadAnswer");
}

TEST(RpcLinkLibraryTest, AFoundPathIsTheControllers) {
    for (const char* sPath : {"C:\\Windows\\x.src", "/etc/passwd", "x.src", "\\R1\\x.src"}) {
        Link link(Answering({{"path", sPath}}));
        const auto files = link.Files();
        ExpectTrouble(
            *files, [&] { files->ResolvePath(u"/R1/x.src"); }, u"BadAnswer");
    }
    Link nothing(Answering({{"path", ""}}));
    EXPECT_EQ(nothing.Files()->ResolvePath(u"/R1/x.src"), u"");
}

// ---- Copies ----

TEST(RpcLinkLibraryTest, ACopyGoesBetweenTheTwoSidesOnly) {
    const std::pair<TextView, TextView> pairs[] = {
        {u"", u""},
        {u"C:\\x.src", u""},
        {u"", u"C:\\x.src"},
        {u"TQX:\\R1\\x.src", u""},
        {u"", u"TQX:\\R1\\x.src"},
        {u"C:\\x.src", u"C:\\y.src"},
        {u"/etc/passwd", u"C:\\y.src"},
        {u"TQX:\\R1\\x.src", u"TQX:\\R1\\y.src"},
    };
    bool bAsked = false;
    {
        Link link([&](Conversation& talk) {
            talk.MakeObject(1);
            bAsked = talk.Read().at("method") != "Release";
        });
        link.disk.Put("x.src", "x");
        const auto files = link.Files();
        for (const auto& [sSource, sDestination] : pairs)
            ExpectTrouble(
                *files, [&] { files->CopyFile(sSource, sDestination, 64); }, u"BadRequest");
        EXPECT_FALSE(fs::exists(link.disk / "y.src"));
    }
    EXPECT_FALSE(bAsked);
}

TEST(RpcLinkLibraryTest, TheBytesOfACopyToTheControllerGoAlong) {
    Json request;
    {
        Link link([&](Conversation& talk) {
            talk.MakeObject(3);
            request = talk.Answer(Json::object());
        });
        link.disk.Put("x.src", std::string("a\0\xFF", 3));
        link.Files()->CopyFile(u"C:\\Temp\\x.src", u"tqx:\\R1\\x.src", 64);
    }
    EXPECT_EQ(request.at("method"), "CopyFile");
    EXPECT_EQ(request.at("params"), Json({{"object", 3},
                                          {"source", "C:\\Temp\\x.src"},
                                          {"destination", "tqx:\\R1\\x.src"},
                                          {"flags", 64},
                                          {"data", ToBase64(std::string("a\0\xFF", 3))}}));
}

TEST(RpcLinkLibraryTest, AFileThatCantBeReadIsNotAskedAbout) {
    Link link(Answering(Json::object()));
    ASSERT_EQ(::mkfifo((link.disk / "pipe.src").c_str(), 0600), 0);
    const auto files = link.Files();
    for (const TextView sSource : {u"C:\\none.src", u"C:\\pipe.src"})
        ExpectTrouble(
            *files, [&] { files->CopyFile(sSource, u"TQX:\\R1\\x.src", 64); }, u"LocalFile");
}

TEST(RpcLinkLibraryTest, AFileTooLongForTheLinkIsAFailure) {
    Link link(Answering({{"names", Json::array()}}));
    std::ofstream(link.disk / "x.src").close();
    fs::resize_file(link.disk / "x.src", kMaxLine / 4 * 3);  // in base64 it fills the line
    const auto files = link.Files();
    ExpectTrouble(
        *files, [&] { files->CopyFile(u"C:\\x.src", u"TQX:\\R1\\x.src", 64); }, u"BadRequest");
    EXPECT_EQ(files->ListDirectory(u"TQX:\\\\R1\\", 0, 5), std::vector<Text>{});
}

TEST(RpcLinkLibraryTest, AFetchedFileEndsWhereTheProgramSaid) {
    Json request;
    {
        Link link([&](Conversation& talk) {
            talk.MakeObject(3);
            // What else stands in the answer says nothing about the place.
            request = talk.Answer({{"data", ToBase64("new")},
                                   {"destination", "C:\\other.src"},
                                   {"path", "../other.src"}});
        });
        link.disk.Put("x.src", "old, and longer");
        link.Files()->CopyFile(u"TQX:\\R1\\x.src", u"C:\\Temp\\x.src", 4160);
        EXPECT_EQ(link.disk.Bytes("x.src"), "new");
        EXPECT_EQ(std::distance(fs::directory_iterator(link.disk.Path()), {}), 1);
    }
    EXPECT_FALSE(request.at("params").contains("data"));
}

TEST(RpcLinkLibraryTest, AFetchThatFailsLeavesTheFile) {
    for (const Json& result :
         {Json::object(), Json({{"data", "no base64"}}), Json({{"data", 7}})}) {
        Link link(Answering(result));
        link.disk.Put("x.src", "old");
        const auto files = link.Files();
        ExpectTrouble(
            *files, [&] { files->CopyFile(u"TQX:\\R1\\x.src", u"C:\\x.src", 4160); }, u"BadAnswer");
        EXPECT_EQ(link.disk.Bytes("x.src"), "old");
    }
}

TEST(RpcLinkLibraryTest, AFetchedFileThatCantBeWrittenIsAFailure) {
    Link link(Answering({{"data", ToBase64("new")}}));
    fs::create_directory(link.disk / "x.src");
    const auto files = link.Files();
    ExpectTrouble(
        *files, [&] { files->CopyFile(u"TQX:\\R1\\x.src", u"C:\\x.src", 4160); }, u"LocalFile");
}

// ---- Watches and messages ----

// Serves until `done`; the peer's script sees to it that there is something to wait for.
void ServeUntil(RpcLinkLibrary& library, const std::function<bool()>& done) {
    while (!done() && library.WaitForEvents(std::chrono::seconds(20)))
        library.ServeEvents();
    EXPECT_TRUE(done());
}

TEST(RpcLinkLibraryTest, ReportsForUnknownWatchesArePassedOver) {
    Link link([](Conversation& talk) {
        talk.MakeObject(5);
        talk.Answer(Json::object());
        talk.Notify("OnSetInfo", {{"object", 5}, {"id", 2}, {"value", "other watch"}});
        talk.Notify("OnSetInfo", {{"object", 6}, {"id", 1}, {"value", "other object"}});
        talk.Notify("OnElse", {{"object", 5}, {"id", 1}, {"value", "other method"}});
        talk.Notify("OnSetInfo", {{"object", 5}, {"id", 1}, {"value", "mine"}});
        talk.AwaitEnd();
    });
    const auto watches = link.Make<AsyncVar>(kAsyncVarId);
    RecordingVarCallback callback;
    watches->InfoOn(callback, 1, u"$A", 200);
    ServeUntil(link.library, [&] { return !callback.reports.empty(); });
    EXPECT_EQ(callback.reports, (std::vector<RecordingVarCallback::Report>{{1, u"mine"}}));
}

TEST(RpcLinkLibraryTest, AStoppedWatchIsSilentAboutWhatWasUnderWay) {
    Link link([](Conversation& talk) {
        talk.MakeObject(5);
        talk.Answer(Json::object());
        talk.Answer(Json::object());
        const Json request = talk.Read();
        for (const int nId : {1, 2})
            talk.Notify("OnSetInfo", {{"object", 5}, {"id", nId}, {"value", "last"}});
        talk.Write(Conversation::AnswerTo(request, Json::object()));
        talk.AwaitEnd();
    });
    const auto watches = link.Make<AsyncVar>(kAsyncVarId);
    RecordingVarCallback callback;
    watches->InfoOn(callback, 1, u"$A", 200);
    watches->InfoOn(callback, 2, u"$B", 200);
    watches->InfoOff(1);
    link.library.ServeEvents();
    EXPECT_EQ(callback.reports, (std::vector<RecordingVarCallback::Report>{{2, u"last"}}));
}

TEST(RpcLinkLibraryTest, AReportOfAnotherKindEndsTheConnection) {
    for (const Json& params : {Json({{"object", 5}}), Json({{"object", 5}, {"id", 1}}),
                               Json({{"object", 5}, {"id", 1}, {"value", 7}}), Json::object(),
                               Json({{"object", 5}, {"id", "1"}, {"value", ""}})}) {
        Link link([&](Conversation& talk) {
            talk.MakeObject(5);
            talk.Answer(Json::object());
            talk.Notify("OnSetInfo", params);
            talk.AwaitEnd();
        });
        const auto watches = link.Make<AsyncVar>(kAsyncVarId);
        RecordingVarCallback callback;
        watches->InfoOn(callback, 1, u"$A", 200);
        ASSERT_TRUE(link.library.WaitForEvents(std::chrono::seconds(20)));
        link.library.ServeEvents();
        EXPECT_TRUE(callback.reports.empty());
        ExpectTrouble(
            *watches, [&] { watches->InfoOff(1); }, u"LinkLost");
    }
}

// A callback that ends its own watches, as the program may.
class EndingCallback : public RecordingVarCallback {
  public:
    std::unique_ptr<AsyncVar> watches;
    void OnSetInfo(std::int32_t nId, TextView sValue) override {
        RecordingVarCallback::OnSetInfo(nId, sValue);
        watches.reset();
    }
};

TEST(RpcLinkLibraryTest, ACallbackMayReleaseItsObject) {
    Link link([](Conversation& talk) {
        talk.MakeObject(5);
        const Json request = talk.Read();
        for (const char* sValue : {"one", "two", "three"})
            talk.Notify("OnSetInfo", {{"object", 5}, {"id", 1}, {"value", sValue}});
        talk.Write(Conversation::AnswerTo(request, Json::object()));
        talk.AwaitEnd();
    });
    EndingCallback callback;
    callback.watches = link.Make<AsyncVar>(kAsyncVarId);
    callback.watches->InfoOn(callback, 1, u"$A", 200);
    link.library.ServeEvents();
    EXPECT_EQ(callback.reports, (std::vector<RecordingVarCallback::Report>{{1, u"one"}}));
}

// Takes down what a consumer is told.
class Consumer : public IVOConsumeMessage {
  public:
    std::vector<std::string> told;
    void OnAddMessage(const MessageRecord& record) override {
        told.push_back("message " + std::to_string(record.nMessage));
    }
    void OnAddDialog(const MessageRecord& record) override {
        told.push_back("dialog " + std::to_string(record.nMessage));
    }
    void OnSubMessage(std::int32_t nHandle) override {
        told.push_back("withdrawn " + std::to_string(nHandle));
    }
};

TEST(RpcLinkLibraryTest, AConsumerIsToldOfMessagesDialogsAndTheirEnd) {
    Link link([](Conversation& talk) {
        talk.MakeObject(5);
        talk.Answer(Json::object());
        talk.Notify("OnAddMessage", {{"object", 5}, {"message", {{"nMessage", 1}}}});
        talk.Notify("OnAddDialog", {{"object", 5}, {"dialog", {{"nMessage", 2}}}});
        talk.Notify("OnSubMessage", {{"object", 5}, {"handle", 3}});
        talk.AwaitEnd();
    });
    const auto advise = link.Make<AdviseMessage>(kAdviseMessageId);
    const auto consumer = std::make_shared<Consumer>();
    advise->Advise(consumer, 311);
    ServeUntil(link.library, [&] { return consumer->told.size() >= 3; });
    EXPECT_EQ(consumer->told, (std::vector<std::string>{"message 1", "dialog 2", "withdrawn 3"}));
}

TEST(RpcLinkLibraryTest, WithoutAConsumerMessagesArePassedOver) {
    Link link([](Conversation& talk) {
        talk.MakeObject(5);
        talk.Notify("OnAddMessage", {{"object", 5}, {"message", {{"nMessage", 1}}}});
        talk.Answer(Json::object());
        talk.AwaitEnd();
    });
    const auto advise = link.Make<AdviseMessage>(kAdviseMessageId);
    ASSERT_TRUE(link.library.WaitForEvents(std::chrono::seconds(20)));
    link.library.ServeEvents();
    const auto consumer = std::make_shared<Consumer>();
    EXPECT_NO_THROW(advise->Advise(consumer, 311));
    EXPECT_TRUE(consumer->told.empty());
}

}  // namespace
}  // namespace nomira::rpc
