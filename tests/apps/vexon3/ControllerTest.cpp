#include "apps/vexon3/Controller.h"

#include "adapters/rpc/Base64.h"
#include "testing/TemporaryFolder.h"
#include "testing/TextPrinting.h"

namespace nomira::simulator {
namespace {

using rpc::Json;
using testing::TemporaryFolder;

constexpr ClientId kClient = 1, kOther = 2;

class ControllerTest : public ::testing::Test {
  protected:
    // The controller of this scenario; the one that was there is gone.
    void Play(std::string_view sScenario) {
        m_controller.emplace(
            m_files, ParseScenario(sScenario, "test.json"),
            [this](ClientId client, const std::string& sLine) {
                m_sent.emplace_back(client, Json::parse(sLine));
            },
            [this](const std::string& sLine) { m_log.push_back(sLine); });
    }
    void SetUp() override { Play(R"({"variables": {"$A": "1", "$B": "2"}})"); }

    Reaction React(const Json& request, ClientId client = kClient) {
        return m_controller->Handle(client, request.dump());
    }
    Json AnswerTo(const Json& request, ClientId client = kClient) {
        return Json::parse(React(request, client).sAnswer);
    }
    static Json Request(const char* sMethod, const Json& params) {
        return {{"jsonrpc", "2.0"}, {"id", 9}, {"method", sMethod}, {"params", params}};
    }
    Json Call(const char* sMethod, const Json& params, ClientId client = kClient) {
        const Json answer = AnswerTo(Request(sMethod, params), client);
        EXPECT_EQ(answer.at("id"), 9);
        return answer.contains("result") ? answer.at("result") : answer.at("error");
    }
    int Make(const char* sClass, ClientId client = kClient) {
        return Call("CreateLinkObject", {{"class", sClass}, {"connection", "Test"}}, client)
            .at("object");
    }
    int CodeOf(const Json& request, ClientId client = kClient) {
        return AnswerTo(request, client).at("error").at("code");
    }
    int ReadCode(int nObject, const char* sName, ClientId client = kClient) {
        const Json error = Call("ReadVar", {{"object", nObject}, {"name", sName}}, client);
        return error.contains("code") ? error.at("code").get<int>() : 0;
    }

    TemporaryFolder m_folder;
    FileSpace m_files{m_folder.Path()};
    std::optional<Controller> m_controller;
    std::vector<std::pair<ClientId, Json>> m_sent;
    std::vector<std::string> m_log;
};

// ---- Requests ----

TEST_F(ControllerTest, WhatIsNoRequestGetsTheCodeForIt) {
    EXPECT_EQ(Json::parse(m_controller->Handle(kClient, "nonsense").sAnswer).at("error").at("code"),
              -32700);
    EXPECT_EQ(Json::parse(m_controller->Handle(kClient, std::string(99, '[')).sAnswer).at("id"),
              nullptr);
    for (const Json& request :
         {Json(), Json(7), Json::array(), Json::object(), Json({{"method", "ReadVar"}, {"id", 1}}),
          Json({{"jsonrpc", "2.0"}, {"id", 1}}),
          Json({{"jsonrpc", "2.0"}, {"id", 1}, {"method", 7}}),
          Json({{"jsonrpc", "2.0"}, {"id", {1}}, {"method", "sim.state"}}),
          Json({{"jsonrpc", "1.0"}, {"id", 1}, {"method", "sim.state"}})})
        EXPECT_EQ(CodeOf(request), -32600) << request;
    EXPECT_EQ(CodeOf(Request("Nothing", Json::object())), -32601);
    EXPECT_EQ(CodeOf(Request("sim.set", Json::array())), -32602);
    EXPECT_EQ(CodeOf(Request("sim.set", {{"name", "$A"}})), -32602);
}

TEST_F(ControllerTest, AnAnswerHasTheIdAsItCame) {
    for (const Json& id : {Json(7), Json("seven"), Json()}) {
        Json request = Request("sim.state", Json::object());
        request["id"] = id;
        EXPECT_EQ(AnswerTo(request).at("id"), id);
    }
}

TEST_F(ControllerTest, ANotificationGetsNoAnswer) {
    const int nObject = Make("LNK_TqxLib.SyncVar");
    Json request = Request("Release", {{"object", nObject}});
    request.erase("id");
    EXPECT_EQ(React(request).sAnswer, "");
    EXPECT_EQ(ReadCode(nObject, "$A"), -32602);
    request["method"] = "Nothing";
    EXPECT_EQ(React(request).sAnswer, "");
}

// ---- Objects ----

TEST_F(ControllerTest, OnlyTheLibrarysClassesAreMade) {
    EXPECT_EQ(Call("CreateLinkObject", {{"class", "LNK_TqxLib.X"}, {"connection", ""}}).at("code"),
              -32602);
    EXPECT_EQ(Call("CreateLinkObject", {{"class", "LNK_TqxLib.SyncVar"}}).at("code"), -32602);
}

TEST_F(ControllerTest, AnObjectHasTheOperationsOfItsClass) {
    EXPECT_EQ(ReadCode(Make("LNK_TqxLib.SyncFile"), "$A"), -32602);
    EXPECT_EQ(ReadCode(12345, "$A"), -32602);
    EXPECT_EQ(ReadCode(Make("LNK_TqxLib.SyncVar"), "$A"), 0);
}

TEST_F(ControllerTest, AnObjectIsItsClientsAlone) {
    const int nObject = Make("LNK_TqxLib.SyncVar");
    EXPECT_EQ(ReadCode(nObject, "$A", kOther), -32602);
    EXPECT_EQ(Call("Release", {{"object", nObject}}, kOther).at("code"), -32602);
    EXPECT_EQ(ReadCode(nObject, "$A"), 0);
}

TEST_F(ControllerTest, AClientThatIsGoneLeavesNothing) {
    const int nWatches = Make("LNK_TqxLib.AsyncVar");
    const int nAdvise = Make("LNK_TqxLib.AdviseMessage");
    Call("InfoOn", {{"object", nWatches}, {"id", 1}, {"name", "$A"}, {"cycle", 200}});
    Call("Advise", {{"object", nAdvise}, {"filter", 311}});
    m_controller->Forget(kClient);
    m_sent.clear();
    Call("sim.set", {{"name", "$A"}, {"value", "9"}}, kOther);
    Call("sim.message", {{"message", Json::object()}}, kOther);
    EXPECT_TRUE(m_sent.empty());
    const Json state = Call("sim.state", Json::object(), kOther);
    EXPECT_TRUE(state.at("objects").empty());
    EXPECT_TRUE(state.at("watches").empty());
    EXPECT_EQ(state.at("consumers"), 0);
}

// ---- Operations ----

TEST_F(ControllerTest, AFailureCarriesItsRecord) {
    const Json error = Call("ReadVar", {{"object", Make("LNK_TqxLib.SyncVar")}, {"name", "$NONE"}});
    EXPECT_EQ(error.at("code"), -32000);
    EXPECT_EQ(error.at("data").at("bstrDBMessage"), "NoSuchVariable");
    EXPECT_EQ(error.at("data").at("bstrDBModule"), "Vexon3");
    EXPECT_EQ(error.at("data").at("varParams"), Json({{"lower", 0}, {"elements", {"$NONE"}}}));
    EXPECT_EQ(error.at("data").at("varDBParams").at("elements").size(), 1U);
}

TEST_F(ControllerTest, AReportGoesToEachWatchOfTheVariable) {
    const int nWatches = Make("LNK_TqxLib.AsyncVar");
    Call("InfoOn", {{"object", nWatches}, {"id", 1}, {"name", "$a"}, {"cycle", 200}});
    Call("InfoOn", {{"object", nWatches}, {"id", 2}, {"name", "$B"}, {"cycle", 200}});
    ASSERT_EQ(m_sent.size(), 2U);  // the values at the start
    EXPECT_EQ(m_sent[0].second.at("params"),
              Json({{"object", nWatches}, {"id", 1}, {"value", "1"}}));
    m_sent.clear();
    const int nVariables = Make("LNK_TqxLib.SyncVar", kOther);
    Call("WriteVar", {{"object", nVariables}, {"name", "$A"}, {"value", "one"}}, kOther);
    ASSERT_EQ(m_sent.size(), 1U);
    EXPECT_EQ(m_sent[0].first, kClient);
    EXPECT_EQ(m_sent[0].second.at("method"), "OnSetInfo");
    EXPECT_FALSE(m_sent[0].second.contains("id"));
    EXPECT_EQ(m_sent[0].second.at("params"),
              Json({{"object", nWatches}, {"id", 1}, {"value", "one"}}));
}

TEST_F(ControllerTest, OnlyAVariableAndAWatchThatAreThereCount) {
    const int nWatches = Make("LNK_TqxLib.AsyncVar");
    const Json watch{{"object", nWatches}, {"id", 1}, {"name", "$NONE"}, {"cycle", 200}};
    EXPECT_EQ(Call("InfoOn", watch).at("code"), -32000);
    EXPECT_EQ(Call("InfoOff", {{"object", nWatches}, {"id", 1}}).at("code"), -32000);
    EXPECT_TRUE(m_sent.empty());
}

TEST_F(ControllerTest, StateTellsWhatWasAsked) {
    m_folder.Put("R1/x.src", "x");
    const int nSelect = Make("LNK_TqxLib.SyncSelect");
    Call("SelectProgram",
         {{"object", nSelect}, {"path", "/R1/MAIN"}, {"parameters", "a=1"}, {"flag", 0}});
    const Json state = Call("sim.state", Json::object());
    EXPECT_EQ(state.at("variables"), Json({{"$A", "1"}, {"$B", "2"}}));
    EXPECT_EQ(state.at("files"), Json({"TQX:\\R1\\x.src"}));
    EXPECT_EQ(state.at("selected"), "/R1/MAIN");
    EXPECT_EQ(state.at("commands"), Json({"SelectProgram(/R1/MAIN, a=1, 0)"}));
    EXPECT_EQ(state.at("calls"), Json({"CreateLinkObject(LNK_TqxLib.SyncSelect, Test)",
                                       "SelectProgram(/R1/MAIN, a=1, 0)"}));
    Call("CancelProgram", {{"object", nSelect}, {"level", 1}});
    EXPECT_EQ(Call("sim.state", Json::object()).at("selected"), "");
}

TEST_F(ControllerTest, TheHistoryHasAnEnd) {
    const int nObject = Make("LNK_TqxLib.SyncVar");
    for (int n = 0; n < 1100; ++n)
        ReadCode(nObject, "$A");
    const Json calls = Call("sim.state", Json::object()).at("calls");
    EXPECT_EQ(calls.size(), 1000U);
    EXPECT_EQ(calls[0], "ReadVar($A)");
}

TEST_F(ControllerTest, AFileTooLongForTheLinkIsAFailure) {
    m_folder.Put("R1/x.src", "");
    std::filesystem::resize_file(m_folder / "R1/x.src", rpc::kMaxLine / 4 * 3);
    const int nFiles = Make("LNK_TqxLib.SyncFile");
    const Json error = Call("ReadFileToMemory",
                            {{"object", nFiles}, {"path", "TQX:\\R1\\x.src"}, {"flags", 4160}});
    EXPECT_EQ(error.at("data").at("bstrDBMessage"), "TooLong");
}

TEST_F(ControllerTest, DataMustBeBase64) {
    const int nFiles = Make("LNK_TqxLib.SyncFile");
    const Json error = Call(
        "WriteFileFromMemory",
        {{"object", nFiles}, {"destination", "TQX:\\R1\\x.src"}, {"flags", 4160}, {"data", "!"}});
    EXPECT_EQ(error.at("code"), -32602);
    EXPECT_TRUE(m_files.AllFiles().empty());
}

TEST_F(ControllerTest, EachCallHasALineInTheLog) {
    const int nObject = Make("LNK_TqxLib.SyncVar");
    ReadCode(nObject, "$A");
    ReadCode(nObject, "$NO\nNE");
    ReadCode(77, "$A");
    EXPECT_EQ(m_log, (std::vector<std::string>{
                         "client 1: CreateLinkObject(LNK_TqxLib.SyncVar, Test): done",
                         "client 1: ReadVar($A): done",
                         "client 1: ReadVar($NO?NE): failed: the controller has no such variable",
                         "client 1: refused: there is no such object with that operation"}));
}

// ---- Faults and messages ----

TEST_F(ControllerTest, TheScenariosFailureTakesTheOperationsPlace) {
    Play(R"({"variables": {"$A": "1"},
             "faults": [{"on": "WriteVar", "match": "$A, 7", "call": 2, "fail": "locked"}]})");
    const int nObject = Make("LNK_TqxLib.SyncVar");
    const Json write{{"object", nObject}, {"name", "$A"}, {"value", "7"}};
    EXPECT_EQ(Call("WriteVar", write), Json::object());
    Call("WriteVar", {{"object", nObject}, {"name", "$A"}, {"value", "8"}});
    const Json error = Call("WriteVar", write);
    EXPECT_EQ(error.at("data").at("bstrCause"), "locked");
    EXPECT_EQ(error.at("message"), "locked");
    EXPECT_EQ(Call("sim.state", Json::object()).at("variables").at("$A"), "8");
    EXPECT_EQ(Call("WriteVar", write), Json::object());
}

TEST_F(ControllerTest, FaultsSayWhatBecomesOfAnAnswer) {
    Play(R"({"variables": {"$A": "1"}, "faults": [
             {"on": "ReadVar", "match": "now", "drop": "now"},
             {"on": "ReadVar", "match": "$A", "drop": "midway"},
             {"on": "ReadVar", "match": "nonsense", "nonsense": "%&$"},
             {"on": "ReadVar", "match": "late", "delay": 20},
             {"on": "ReadVar", "match": "la*", "delay": 300, "fail": "late"},
             {"on": "ReadVar", "match": "late", "fail": "not this one"}]})");
    const int nObject = Make("LNK_TqxLib.SyncVar");
    const auto react = [&](const char* sName) {
        return React(Request("ReadVar", {{"object", nObject}, {"name", sName}}));
    };
    EXPECT_EQ(react("now").sAnswer, "");
    EXPECT_TRUE(react("now").bDrop);
    EXPECT_TRUE(react("$A").bDrop);
    EXPECT_FALSE(react("$A").sAnswer.empty());
    EXPECT_EQ(react("$A").sAnswer.find('\n'), std::string::npos);
    EXPECT_EQ(react("nonsense").sAnswer, "%&$\n");
    EXPECT_FALSE(react("nonsense").bDrop);
    EXPECT_EQ(react("late").delay, std::chrono::milliseconds(320));
    EXPECT_EQ(Json::parse(react("late").sAnswer).at("error").at("message"), "late");
    EXPECT_EQ(react("other").delay, std::chrono::milliseconds(0));
}

TEST_F(ControllerTest, AFaultMayComeLater) {
    const int nObject = Make("LNK_TqxLib.SyncVar");
    EXPECT_EQ(Call("sim.fault", {{"on", "ReadVar"}, {"fail", "now it fails"}}), Json::object());
    EXPECT_EQ(ReadCode(nObject, "$A"), -32000);
    EXPECT_EQ(Call("sim.fault", {{"on", "Nothing"}}).at("code"), -32602);
}

TEST_F(ControllerTest, PlannedMessagesGoToTheConsumers) {
    Play(R"({"messages": [{"on": "Advise", "message": {"nMessage": 1}},
                          {"on": "StopProgram", "call": 2, "dialog": {"nMessage": 2}},
                          {"on": "CancelProgram", "withdraw": 3}]})");
    const int nSelect = Make("LNK_TqxLib.SyncSelect");
    Call("CancelProgram", {{"object", nSelect}, {"level", 1}});
    EXPECT_TRUE(m_sent.empty());
    const int nAdvise = Make("LNK_TqxLib.AdviseMessage");
    Call("Advise", {{"object", nAdvise}, {"filter", 311}});
    Call("StopProgram", {{"object", nSelect}, {"level", 1}});
    ASSERT_EQ(m_sent.size(), 1U);
    EXPECT_EQ(m_sent[0].second.at("method"), "OnAddMessage");
    EXPECT_EQ(m_sent[0].second.at("params").at("object"), nAdvise);
    EXPECT_EQ(m_sent[0].second.at("params").at("message").at("nMessage"), 1);
    Call("StopProgram", {{"object", nSelect}, {"level", 1}});
    Call("CancelProgram", {{"object", nSelect}, {"level", 1}});
    ASSERT_EQ(m_sent.size(), 3U);
    EXPECT_EQ(m_sent[1].second.at("method"), "OnAddDialog");
    EXPECT_EQ(m_sent[2].second.at("method"), "OnSubMessage");
    EXPECT_EQ(m_sent[2].second.at("params").at("handle"), 3);
}

}  // namespace
}  // namespace nomira::simulator
