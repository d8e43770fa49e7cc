#include "adapters/rpc/Incoming.h"

#include "testing/TextPrinting.h"

namespace nomira::rpc {
namespace {

TEST(IncomingTest, AnAnswerHasItsNumberAndItsResult) {
    const auto incoming = ParseIncoming(R"({"jsonrpc": "2.0", "id": 7, "result": {"value": "1"}})");
    const auto& success = std::get<Success>(incoming);
    EXPECT_EQ(success.nId, 7);
    EXPECT_EQ(success.result, Json({{"value", "1"}}));
}

TEST(IncomingTest, AnErrorBringsItsRecord) {
    const auto incoming = ParseIncoming(
        R"({"jsonrpc": "2.0", "id": 7, "error": {"code": -32000, "message": "no",
            "data": {"nMessage": 5, "bstrCause": "why"}}})");
    const auto& failure = std::get<Failure>(incoming);
    EXPECT_EQ(failure.nId, 7);
    EXPECT_EQ(failure.record.nMessage, 5);
    EXPECT_EQ(failure.record.bstrCause, u"why");
}

TEST(IncomingTest, AnErrorWithoutARecordGetsOne) {
    const auto incoming = ParseIncoming(
        R"({"jsonrpc": "2.0", "id": 7, "error": {"code": -32601, "message": "what?"}})");
    const MessageRecord& record = std::get<Failure>(incoming).record;
    EXPECT_EQ(record.nMessage, -32601);
    EXPECT_EQ(record.bstrCause, u"what?");
}

TEST(IncomingTest, WithoutANumberItIsANotification) {
    auto incoming =
        ParseIncoming(R"({"jsonrpc": "2.0", "method": "OnSetInfo", "params": {"object": 1}})");
    EXPECT_EQ(std::get<Notification>(incoming).sMethod, "OnSetInfo");
    EXPECT_EQ(std::get<Notification>(incoming).params, Json({{"object", 1}}));
    incoming = ParseIncoming(R"({"jsonrpc": "2.0", "method": "Tick"})");
    EXPECT_EQ(std::get<Notification>(incoming).params, Json::object());
}

TEST(IncomingTest, AnythingElseIsNonsense) {
    for (const char* sLine :
         {"", "7", "[]", "null", "{}", R"({"jsonrpc": "1.0", "id": 1, "result": 1})",
          R"({"id": 1, "result": 1})", R"({"jsonrpc": 2.0, "id": 1, "result": 1})",
          R"({"jsonrpc": "2.0", "id": "1", "result": 1})",
          R"({"jsonrpc": "2.0", "id": null, "result": 1})",
          R"({"jsonrpc": "2.0", "id": 99999999999, "result": 1})", R"({"jsonrpc": "2.0", "id": 1})",
          R"({"jsonrpc": "2.0", "id": 1, "result": 1, "error": {"code": 1, "message": ""}})",
          R"({"jsonrpc": "2.0", "id": 1, "error": 1})",
          R"({"jsonrpc": "2.0", "id": 1, "error": {"message": ""}})",
          R"({"jsonrpc": "2.0", "id": 1, "error": {"code": 1}})",
          R"({"jsonrpc": "2.0", "id": 1, "error": {"code": 1, "message": "", "data": 7}})",
          R"({"jsonrpc": "2.0", "method": 1})",
          R"({"jsonrpc": "2.0", "method": "OnSetInfo", "params": [1]})"})
        EXPECT_THROW(ParseIncoming(sLine), WireError) << sLine;
}

}  // namespace
}  // namespace nomira::rpc
