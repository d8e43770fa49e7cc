#include "adapters/rpc/RecordJson.h"

#include "testing/TextPrinting.h"

namespace nomira::rpc {
namespace {

MessageRecord FullRecord() {
    MessageRecord record;
    record.nLowTimeStamp = 1;
    record.nHighTimeStamp = 2;
    record.nBiasTimeStamp = -60;
    record.eMessageType = 3;
    record.nMessage = 4;
    record.nMessageHandle = 5;
    record.bstrDBModule = u"Mod";
    record.bstrCause = u"T\u00FCr";
    record.bDBCause = true;
    record.bstrDBMessage = u"key";
    record.varParams = LinkArray{-1, {u"a", u"", u"b"}};
    record.varDBParams = Text(u"alone");
    return record;
}

TEST(RecordJsonTest, ARecordSurvives) {
    EXPECT_EQ(RecordFromJson(RecordToJson(FullRecord())), FullRecord());
    EXPECT_EQ(RecordFromJson(RecordToJson({})), MessageRecord{});
    MessageRecord empty;
    empty.varParams = LinkArray{1, {}};
    EXPECT_EQ(RecordFromJson(RecordToJson(empty)), empty);
}

TEST(RecordJsonTest, MembersHaveTheRecordsNames) {
    EXPECT_EQ(RecordToJson(FullRecord()),
              Json::parse(R"({"nLowTimeStamp": 1, "nHighTimeStamp": 2, "nBiasTimeStamp": -60,
                  "eMessageType": 3, "nMessage": 4, "nMessageHandle": 5, "bstrDBModule": "Mod",
                  "bstrCause": "Tür", "bDBCause": true, "bstrDBMessage": "key",
                  "varParams": {"lower": -1, "elements": ["a", "", "b"]},
                  "varDBParams": "alone"})"));
}

TEST(RecordJsonTest, WhatIsMissingIsEmpty) {
    EXPECT_EQ(RecordFromJson(Json::object()), MessageRecord{});
    MessageRecord record;
    record.nMessage = 7;
    EXPECT_EQ(RecordFromJson({{"nMessage", 7}, {"unknown", "x"}}), record);
}

TEST(RecordJsonTest, AnotherKindIsRefused) {
    for (const char* sJson :
         {"[]", "1", "null", R"({"nMessage": "1"})", R"({"nMessage": 1.5})", R"({"bstrCause": 1})",
          R"({"bDBCause": 1})", R"({"varParams": 1})", R"({"varParams": []})",
          R"({"varParams": {"lower": 0}})", R"({"varParams": {"lower": 0, "elements": "x"}})",
          R"({"varDBParams": {"lower": 0, "elements": [1]}})",
          R"({"varDBParams": {"elements": []}})"})
        EXPECT_THROW(RecordFromJson(Json::parse(sJson)), WireError) << sJson;
}

}  // namespace
}  // namespace nomira::rpc
