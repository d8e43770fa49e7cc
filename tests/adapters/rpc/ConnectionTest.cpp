#include "adapters/rpc/Connection.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <functional>
#include <future>

#include "adapters/rpc/LinkError.h"
#include "adapters/rpc/ScriptedPeer.h"
#include "testing/TextPrinting.h"

namespace nomira::rpc {
namespace {

using testing::Conversation;
using testing::ScriptedPeer;
using testing::TemporaryFolder;

// The message key of the failure's record; empty if the call comes back.
Text TroubleOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const LinkError& error) {
        EXPECT_EQ(error.Number(), ErrorNumber::LinkFailure);
        EXPECT_FALSE(error.Record().bstrCause.empty());
        return error.Record().bstrDBMessage;
    }
    return {};
}

// A call to a peer that answers with these bytes and then ends.
Text TroubleOfAnswer(const std::string& sBytes) {
    ScriptedPeer peer([&](Conversation& talk) {
        talk.Read();
        talk.Write(sBytes);
    });
    Connection connection(peer.Socket());
    const Text sTrouble = TroubleOf([&] { connection.Call("Ask", Json::object()); });
    EXPECT_FALSE(connection.IsOpen());
    EXPECT_EQ(TroubleOf([&] { connection.Call("Ask", Json::object()); }), u"LinkLost");
    return sTrouble;
}

// Takes the notifications of an object down.
class Recorder : public NotificationReceiver {
  public:
    std::vector<std::string> methods;
    void Receive(const Notification& notification) override {
        methods.push_back(notification.sMethod);
    }
};

TEST(ConnectionTest, ACallGetsItsResult) {
    Json request;
    {
        ScriptedPeer peer([&](Conversation& talk) {
            request = talk.Answer({{"value", "T\xC3\xBCr"}});
        });
        Connection connection(peer.Socket());
        EXPECT_EQ(connection.Call("ReadVar", {{"name", "$A"}}), Json({{"value", "T\xC3\xBCr"}}));
        EXPECT_TRUE(connection.IsOpen());
    }
    EXPECT_EQ(request.at("jsonrpc"), "2.0");
    EXPECT_EQ(request.at("method"), "ReadVar");
    EXPECT_EQ(request.at("params"), Json({{"name", "$A"}}));
    EXPECT_TRUE(request.at("id").is_number_integer());
}

TEST(ConnectionTest, CallsHaveNumbersOfTheirOwn) {
    std::vector<Json> ids;
    {
        ScriptedPeer peer([&](Conversation& talk) {
            for (int n = 0; n < 3; ++n)
                ids.push_back(talk.Answer(n).at("id"));
        });
        Connection connection(peer.Socket());
        for (int n = 0; n < 3; ++n)
            EXPECT_EQ(connection.Call("Ask", Json::object()), n);
    }
    ASSERT_EQ(ids.size(), 3U);
    EXPECT_NE(ids[0], ids[1]);
    EXPECT_NE(ids[1], ids[2]);
}

TEST(ConnectionTest, NobodyThereIsAFailure) {
    const TemporaryFolder folder;
    EXPECT_EQ(TroubleOf([&] { Connection(folder / "none.sock"); }), u"LinkLost");
    EXPECT_EQ(TroubleOf([&] { Connection(folder / "no folder/none.sock"); }), u"LinkLost");
    EXPECT_EQ(TroubleOf([&] { Connection(folder / std::string(200, 'x')); }), u"LinkLost");
    EXPECT_EQ(TroubleOf([&] { Connection(""); }), u"LinkLost");
    folder.Put("file", "x");
    EXPECT_EQ(TroubleOf([&] { Connection(folder / "file"); }), u"LinkLost");
}

TEST(ConnectionTest, AFolderMayLieDeeperThanASocketsAddressReaches) {
    const TemporaryFolder folder;
    const auto deep = folder / std::string(200, 'd');
    std::filesystem::create_directory(deep);
    asio::io_context context;
    const auto old = std::filesystem::current_path();
    std::filesystem::current_path(deep);
    const asio::local::stream_protocol::acceptor acceptor(
        context, asio::local::stream_protocol::endpoint("s"));
    std::filesystem::current_path(old);
    EXPECT_TRUE(Connection(deep / "s").IsOpen());
}

TEST(ConnectionTest, AProcessOfAnotherUserIsRefused) {
    ScriptedPeer peer(std::vector<ScriptedPeer::Script>{[](Conversation& talk) { talk.AwaitEnd(); },
                                                        [](Conversation&) {}});
    EXPECT_EQ(TroubleOf([&] { Connection(peer.Socket(), ::geteuid() + 1); }), u"LinkLost");
    EXPECT_EQ(TroubleOf([&] { Connection(peer.Socket(), ::geteuid()); }), u"");
}

TEST(ConnectionTest, AProgramStartedMeanwhileDoesNotKeepTheLinkOpen) {
    ScriptedPeer peer([](Conversation& talk) { talk.AwaitEnd(); });
    Connection connection(peer.Socket());
    EXPECT_EQ(::fcntl(connection.Descriptor(), F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
}

TEST(ConnectionTest, APeerThatDiesEndsTheCall) {
    EXPECT_EQ(TroubleOfAnswer(""), u"LinkLost");
    EXPECT_EQ(TroubleOfAnswer("{\"jsonrpc\": \"2.0\", \"id\": 1, \"res"), u"LinkLost");
    EXPECT_EQ(TroubleOfAnswer(R"({"jsonrpc": "2.0", "id": 1, "result": 1})"), u"LinkLost");
}

TEST(ConnectionTest, APeerThatDiesBeforeTheCallEndsIt) {
    ScriptedPeer peer([](Conversation&) {});
    Connection connection(peer.Socket());
    EXPECT_EQ(TroubleOf([&] {
                  for (;;)
                      connection.Call("Ask", Json::object());
              }),
              u"LinkLost");
    EXPECT_FALSE(connection.IsOpen());
}

TEST(ConnectionTest, NonsenseEndsTheConnection) {
    for (const char* sLine :
         {"\n", "nonsense\n", "{}\n", "[]\n", "7\n", "{\"jsonrpc\": \"2.0\", \"id\": 1}\n",
          "{\"jsonrpc\": \"2.0\", \"id\": 2, \"result\": 1}\n",
          "{\"jsonrpc\": \"2.0\", \"id\": \"1\", \"result\": 1}\n",
          "{\"jsonrpc\": \"2.0\", \"id\": null, \"error\": {\"code\": 1, \"message\": \"\"}}\n",
          "{\"jsonrpc\": \"2.0\", \"id\": 2, \"error\": {\"code\": 1, \"message\": \"\"}}\n",
          "{\"jsonrpc\": \"2.0\", \"id\": 1, \"result\": \"\xFF\"}\n",
          "{\"jsonrpc\": \"2.0\", \"id\": 1, \"result\": \"\\uDC00\"}\n",
          "{\"jsonrpc\": \"2.0\", \"method\": 7}\n"})
        EXPECT_EQ(TroubleOfAnswer(sLine), u"BadAnswer") << sLine;
    EXPECT_EQ(TroubleOfAnswer("{\"jsonrpc\": \"2.0\", \"id\": 1, \"result\": " +
                              std::string(100'000, '[') + "\n"),
              u"BadAnswer");
}

TEST(ConnectionTest, ALineWithoutEndIsNotReadForEver) {
    const std::string sPiece(1'000'000, 'x');
    ScriptedPeer peer([&](Conversation& talk) {
        talk.Read();
        for (;;)
            talk.Write(sPiece);
    });
    Connection connection(peer.Socket());
    EXPECT_EQ(TroubleOf([&] { connection.Call("Ask", Json::object()); }), u"BadAnswer");
    EXPECT_FALSE(connection.IsOpen());
}

TEST(ConnectionTest, AFloodOfNotificationsIsNotKeptForEver) {
    ScriptedPeer peer([&](Conversation& talk) {
        talk.Read();
        for (;;)
            talk.Notify("OnSetInfo", {{"object", 1}});
    });
    Connection connection(peer.Socket());
    EXPECT_EQ(TroubleOf([&] { connection.Call("Ask", Json::object()); }), u"BadAnswer");
}

TEST(ConnectionTest, AnErrorIsTheOperationsAndTheLinkStays) {
    ScriptedPeer peer([](Conversation& talk) {
        const Json request = talk.Read();
        talk.Write(LineOf({{"jsonrpc", "2.0"},
                           {"id", request.at("id")},
                           {"error",
                            {{"code", -32000},
                             {"message", "no"},
                             {"data", {{"bstrDBMessage", "Closed"}, {"bstrCause", "why"}}}}}}));
        talk.Answer("well");
    });
    Connection connection(peer.Socket());
    EXPECT_EQ(TroubleOf([&] { connection.Call("Ask", Json::object()); }), u"Closed");
    EXPECT_EQ(connection.Call("Ask", Json::object()), "well");
}

TEST(ConnectionTest, AnAnswerMayComeInPieces) {
    ScriptedPeer peer([](Conversation& talk) {
        const Json request = talk.Read();
        for (const char c : Conversation::AnswerTo(request, "piecemeal"))
            talk.Write(std::string(1, c));
    });
    Connection connection(peer.Socket());
    EXPECT_EQ(connection.Call("Ask", Json::object()), "piecemeal");
}

TEST(ConnectionTest, ARequestTooLongForALineIsNotSent) {
    ScriptedPeer peer([](Conversation& talk) { talk.Answer("well"); });
    Connection connection(peer.Socket());
    EXPECT_EQ(TroubleOf([&] {
                  connection.Call("Ask", {{"a", std::string(kMaxLine, 'x')}});
              }),
              u"BadRequest");
    EXPECT_EQ(connection.Call("Ask", Json::object()), "well");
}

// Far more than a socket holds, so that each waits for the other one to read.
const std::string kMuch(8'000'000, 'x');

TEST(ConnectionTest, BothMayWriteMuchAtOnce) {
    ScriptedPeer peer([](Conversation& talk) {
        talk.Notify("First", {{"object", 1}, {"value", kMuch}});
        const Json request = talk.Read();
        EXPECT_EQ(request.at("params").at("data"), kMuch);
        talk.Write(Conversation::AnswerTo(request, "well"));
        talk.AwaitEnd();
    });
    Connection connection(peer.Socket());
    Recorder recorder;
    connection.AddReceiver(1, recorder);
    EXPECT_EQ(connection.Call("Ask", {{"data", kMuch}}), "well");
    connection.Serve();
    EXPECT_EQ(recorder.methods, (std::vector<std::string>{"First"}));
}

TEST(ConnectionTest, AnAnswerAheadOfItsCallEndsTheConnection) {
    ScriptedPeer peer([](Conversation& talk) {
        talk.Write(Conversation::AnswerTo({{"id", 1}}, "too soon"));
        talk.Notify("First", {{"object", 1}, {"value", kMuch}});
        talk.AwaitEnd();
    });
    Connection connection(peer.Socket());
    EXPECT_EQ(TroubleOf([&] { connection.Call("Ask", {{"data", kMuch}}); }), u"BadAnswer");
    EXPECT_FALSE(connection.IsOpen());
}

std::atomic<int> nSignals = 0;

TEST(ConnectionTest, ASignalDoesNotEndACall) {
    struct sigaction action {
    }, old{};
    action.sa_handler = [](int) { ++nSignals; };  // and no SA_RESTART: calls of the system end
    ASSERT_EQ(::sigaction(SIGUSR1, &action, &old), 0);
    const pthread_t caller = ::pthread_self();
    {
        ScriptedPeer peer([caller](Conversation& talk) {
            const Json request = talk.Read();
            for (int n = 1; n <= 100; ++n) {
                ::pthread_kill(caller, SIGUSR1);
                while (nSignals < n)
                    std::this_thread::yield();
            }
            talk.Write(Conversation::AnswerTo(request, "well"));
        });
        Connection connection(peer.Socket());
        EXPECT_EQ(connection.Call("Ask", Json::object()), "well");
    }
    ::sigaction(SIGUSR1, &old, nullptr);
}

TEST(ConnectionTest, NotificationsWaitUntilTheyAreServed) {
    ScriptedPeer peer([](Conversation& talk) {
        const Json request = talk.Read();
        talk.Notify("First", {{"object", 1}});
        talk.Notify("Other", {{"object", 2}});
        talk.Notify("Second", {{"object", 1}});
        talk.Write(Conversation::AnswerTo(request, "well"));
        talk.AwaitEnd();
    });
    Connection connection(peer.Socket());
    Recorder recorder;
    connection.AddReceiver(1, recorder);
    EXPECT_EQ(connection.Call("Ask", Json::object()), "well");
    EXPECT_TRUE(recorder.methods.empty());
    EXPECT_TRUE(connection.HasWaiting());
    connection.Serve();
    EXPECT_EQ(recorder.methods, (std::vector<std::string>{"First", "Second"}));
    EXPECT_FALSE(connection.HasWaiting());
}

TEST(ConnectionTest, AReceiverThatIsGoneGetsNothing) {
    ScriptedPeer peer([](Conversation& talk) {
        const Json request = talk.Read();
        talk.Notify("First", {{"object", 1}});
        talk.Write(Conversation::AnswerTo(request, "well"));
        talk.AwaitEnd();
    });
    Connection connection(peer.Socket());
    Recorder recorder;
    connection.AddReceiver(1, recorder);
    connection.Call("Ask", Json::object());
    connection.RemoveReceiver(1);
    connection.Serve();
    EXPECT_TRUE(recorder.methods.empty());
    EXPECT_TRUE(connection.IsOpen());
}

TEST(ConnectionTest, ServingDoesNotWait) {
    ScriptedPeer peer([](Conversation& talk) { talk.AwaitEnd(); });
    Connection connection(peer.Socket());
    connection.Serve();  // would never come back
    EXPECT_TRUE(connection.IsOpen());
}

// Serves until the connection closes; the peer's script sees to that.
void ServeToTheEnd(Connection& connection) {
    while (connection.IsOpen())
        connection.Serve();
}

TEST(ConnectionTest, NonsenseWhileServingEndsTheConnection) {
    for (const char* sLine : {"nonsense\n", "{\"jsonrpc\": \"2.0\", \"id\": 1, \"result\": 1}\n",
                              "{\"jsonrpc\": \"2.0\", \"method\": \"OnSetInfo\"}\n"}) {
        ScriptedPeer peer([&](Conversation& talk) {
            talk.Write(sLine);
            talk.AwaitEnd();
        });
        Connection connection(peer.Socket());
        ServeToTheEnd(connection);
        EXPECT_EQ(TroubleOf([&] { connection.Call("Ask", Json::object()); }), u"LinkLost");
    }
}

TEST(ConnectionTest, APeerThatDiesIsSeenWhileServing) {
    ScriptedPeer peer([&](Conversation& talk) { talk.Notify("Last", {{"object", 1}}); });
    Connection connection(peer.Socket());
    Recorder recorder;
    connection.AddReceiver(1, recorder);
    ServeToTheEnd(connection);
    connection.Serve();
    EXPECT_EQ(recorder.methods, (std::vector<std::string>{"Last"}));
}

// A peer that sends these notifications for object 1 with the answer to the first call, and then
// answers further ones.
ScriptedPeer::Script Notifying(std::vector<const char*> methods) {
    return [methods = std::move(methods)](Conversation& talk) {
        const Json request = talk.Read();
        for (const char* sMethod : methods)
            talk.Notify(sMethod, {{"object", 1}});
        talk.Write(Conversation::AnswerTo(request, "well"));
        for (;;)
            talk.Answer("well");
    };
}

// Takes methods down, and does something about each.
class Reacting : public Recorder {
  public:
    std::function<void()> react;
    void Receive(const Notification& notification) override {
        Recorder::Receive(notification);
        react();
    }
};

TEST(ConnectionTest, WhatACallbackRaisesGoesUpAndTheRestIsThereAtTheNextTime) {
    ScriptedPeer peer(Notifying({"First", "Second", "Third"}));
    Connection connection(peer.Socket());
    Reacting receiver;
    receiver.react = [] { Raise(ErrorNumber::NoSuchMember); };
    connection.AddReceiver(1, receiver);
    connection.Call("Ask", Json::object());
    for (const std::size_t nServed : {1U, 2U, 3U}) {
        EXPECT_THROW(connection.Serve(), RuntimeError);
        EXPECT_EQ(receiver.methods.size(), nServed);
    }
    EXPECT_NO_THROW(connection.Serve());
    EXPECT_EQ(connection.Call("Ask", Json::object()), "well");
}

TEST(ConnectionTest, ACallbackMayCallAndServe) {
    ScriptedPeer peer(Notifying({"First", "Second", "Third"}));
    Connection connection(peer.Socket());
    Reacting receiver;
    receiver.react = [&] {
        EXPECT_EQ(connection.Call("Ask", Json::object()), "well");
        connection.Serve();
    };
    connection.AddReceiver(1, receiver);
    connection.Call("Ask", Json::object());
    connection.Serve();
    EXPECT_EQ(receiver.methods, (std::vector<std::string>{"First", "Second", "Third"}));
}

TEST(ConnectionTest, ACallbackMayCloseTheConnection) {
    ScriptedPeer peer(Notifying({"First", "Second"}));
    Connection connection(peer.Socket());
    Reacting receiver;
    receiver.react = [&] {
        connection.Close();
        connection.RemoveReceiver(1);
    };
    connection.AddReceiver(1, receiver);
    connection.Call("Ask", Json::object());
    connection.Serve();
    EXPECT_EQ(receiver.methods, (std::vector<std::string>{"First"}));
}

// Waits until the peer has closed its end; what it has sent is still there.
void AwaitPeersEnd(Connection& connection) {
    pollfd descriptor{connection.Descriptor(), POLLRDHUP, 0};
    ASSERT_EQ(::poll(&descriptor, 1, 20'000), 1);
}

TEST(ConnectionTest, TheLastReportsOfAPeerAreServed) {
    ScriptedPeer peer([&](Conversation& talk) {
        const Json last{{"jsonrpc", "2.0"}, {"method", "Last"}, {"params", {{"object", 1}}}};
        talk.Write(Conversation::AnswerTo(talk.Read(), "well") + LineOf(last));
    });
    Connection connection(peer.Socket());
    Recorder recorder;
    connection.AddReceiver(1, recorder);
    EXPECT_EQ(connection.Call("Ask", Json::object()), "well");
    AwaitPeersEnd(connection);
    connection.Serve();
    EXPECT_EQ(recorder.methods, (std::vector<std::string>{"Last"}));
    EXPECT_FALSE(connection.IsOpen());
}

TEST(ConnectionTest, CollectingSeesThatThePeerHasGone) {
    ScriptedPeer peer([&](Conversation& talk) {
        for (int n = 0; n < 5'000; ++n)  // more than one read takes, and less than may wait
            talk.Notify("Report", {{"object", 1}});
    });
    Connection connection(peer.Socket());
    Recorder recorder;
    connection.AddReceiver(1, recorder);
    while (connection.IsOpen())
        connection.Collect();
    EXPECT_TRUE(recorder.methods.empty());
    connection.Serve();
    EXPECT_EQ(recorder.methods.size(), 5'000U);
}

TEST(ConnectionTest, WhatIsToldHasNoNumberAndNoAnswer) {
    std::vector<Json> seen;
    {
        ScriptedPeer peer([&](Conversation& talk) {
            seen.push_back(talk.Read());
            seen.push_back(talk.Answer("well"));
        });
        Connection connection(peer.Socket());
        connection.Tell("Release", {{"object", 1}});
        EXPECT_EQ(connection.Call("Ask", Json::object()), "well");
    }
    ASSERT_EQ(seen.size(), 2U);
    EXPECT_EQ(seen[0].at("method"), "Release");
    EXPECT_FALSE(seen[0].contains("id"));
    EXPECT_EQ(seen[1].at("method"), "Ask");
}

TEST(ConnectionTest, TellingAPeerThatDoesNotReadNeverWaits) {
    constexpr int kMany = 20'000;  // far more than a socket holds
    std::promise<void> told;
    std::vector<Json> objects;
    {
        ScriptedPeer peer([&](Conversation& talk) {
            told.get_future().wait();
            for (int n = 0; n < kMany; ++n)
                objects.push_back(talk.Read().at("params").at("object"));
            talk.Answer("well");
        });
        Connection connection(peer.Socket());
        for (int n = 0; n < kMany; ++n)
            connection.Tell("Release", {{"object", n}});
        told.set_value();
        EXPECT_EQ(connection.Call("Ask", Json::object()), "well");
    }
    ASSERT_EQ(std::ssize(objects), kMany);
    for (int n = 0; n < kMany; ++n)
        EXPECT_EQ(objects[static_cast<std::size_t>(n)], n);
}

}  // namespace
}  // namespace nomira::rpc
