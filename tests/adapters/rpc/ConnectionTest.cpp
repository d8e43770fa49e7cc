#include "adapters/rpc/Connection.h"

#include <unistd.h>

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
