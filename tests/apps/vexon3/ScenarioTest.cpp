#include "apps/vexon3/Scenario.h"

#include "apps/vexon3/Seed.h"
#include "testing/TemporaryFolder.h"
#include "testing/TextPrinting.h"

namespace nomira::simulator {
namespace {

using testing::TemporaryFolder;

Scenario Parse(std::string_view sJson) {
    return ParseScenario(sJson, "cell.json");
}

std::string ComplaintAbout(std::string_view sJson) {
    try {
        Parse(sJson);
        return "";
    } catch (const ScenarioError& error) {
        return error.what();
    }
}

TEST(ScenarioTest, AnEmptyOneIsFine) {
    const Scenario scenario = Parse("{}");
    EXPECT_TRUE(scenario.variables.empty());
    EXPECT_TRUE(scenario.faults.empty());
    EXPECT_NO_THROW(Parse("\xEF\xBB\xBF{}"));
}

TEST(ScenarioTest, VariablesAreTextsOrWholeNumbers) {
    const auto variables =
        Parse(R"({"variables": {"$A": "Tür", "$NUM_OUT": 4096, "$N": -1}})").variables;
    ASSERT_EQ(variables.size(), 3U);
    EXPECT_EQ(variables[0].sName, u"$A");
    EXPECT_EQ(variables[0].sValue, u"T\u00FCr");
    EXPECT_EQ(variables[1].sValue, u"-1");
    EXPECT_EQ(variables[2].sValue, u"4096");
}

TEST(ScenarioTest, ProgramsAreTextsOrLines) {
    const auto programs =
        Parse(
            R"j({"programs": {"files": {"a.src": "Tür", "Program\\b.src": ["DEF b()", "END"]}}})j")
            .programs;
    ASSERT_EQ(programs.size(), 2U);
    EXPECT_EQ(programs[0].sPath, u"Program\\b.src");
    EXPECT_EQ(programs[0].sBytes, "DEF b()\r\nEND\r\n");
    EXPECT_EQ(programs[1].sBytes, "T\xFCr");
}

TEST(ScenarioTest, FaultsHaveTheirEffects) {
    const auto faults = Parse(R"({"faults": [
        {"on": "CopyFile", "match": "*x.src*", "call": 2, "fail": "no room"},
        {"on": "ReadVar", "fail": {"nMessage": 7}},
        {"on": "ReadVar", "delay": 250},
        {"on": "ReadVar", "drop": "now"},
        {"on": "ReadVar", "drop": "midway", "delay": 1},
        {"on": "ReadVar", "nonsense": "%&$"}]})")
                            .faults;
    ASSERT_EQ(faults.size(), 6U);
    EXPECT_EQ(faults[0].trigger.Operation(), "CopyFile");
    EXPECT_EQ(faults[0].effect.failure->bstrCause, u"no room");
    EXPECT_EQ(faults[1].effect.failure->nMessage, 7);
    EXPECT_EQ(faults[2].effect.delay, std::chrono::milliseconds(250));
    EXPECT_FALSE(faults[2].effect.ReplacesAnswer());
    EXPECT_TRUE(faults[3].effect.bDropNow);
    EXPECT_TRUE(faults[4].effect.bDropMidway);
    EXPECT_EQ(faults[5].effect.nonsense, "%&$");
}

TEST(ScenarioTest, MessagesAreOfThreeKinds) {
    const auto messages = Parse(R"({"messages": [
        {"on": "Advise", "message": {"nMessage": 1}},
        {"on": "ReadVar", "match": "$A", "call": 1, "dialog": {"nMessage": 2}},
        {"on": "ConfirmAllMessages", "withdraw": 3}]})")
                              .messages;
    ASSERT_EQ(messages.size(), 3U);
    EXPECT_EQ(std::get<AddedMessage>(messages[0].told).record.nMessage, 1);
    EXPECT_EQ(std::get<AddedDialog>(messages[1].told).record.nMessage, 2);
    EXPECT_EQ(std::get<WithdrawnMessage>(messages[2].told).nHandle, 3);
}

struct Row {
    const char* sJson;
    const char* sComplaint;  // its beginning
};

constexpr Row kBad[] = {
    {"", "cell.json:1: this is no JSON"},
    {"{\n\"variables\": {\n", "cell.json:3: this is no JSON"},
    {"{\n\"variables\" {}}", "cell.json:2: this is no JSON"},
    {"{\"a\": \"\xFF\"}", "cell.json:1: this is no JSON"},
    {"[]", "cell.json: must be an object with any of \"variables\", \"programs\""},
    {R"({"variable": {}})", "cell.json: variable: is not known; known are \"variables\""},
    {R"({"variables": []})", "cell.json: variables: must be an object"},
    {R"({"variables": {"$A": true}})", "cell.json: variables.$A: must be a text, in quotes, or"},
    {R"({"programs": {"folder": "none"}})", "cell.json: programs.folder: there is no folder none"},
    {R"({"programs": {"files": {"a.src": 7}}})", "cell.json: programs.files.a.src: must be a text"},
    {R"({"programs": {"files": {"a.src": ["x", 7]}}})", "cell.json: programs.files.a.src[1]: must"},
    {R"({"faults": {}})", "cell.json: faults: must be a list"},
    {R"({"faults": [{}]})", "cell.json: faults[0]: \"on\" is missing"},
    {R"({"faults": [{"on": "Copy", "drop": "now"}]})",
     "cell.json: faults[0].on: is no operation; write one of CreateLinkObject, Release, ReadVar"},
    {R"({"faults": [{"on": "sim.set", "drop": "now"}]})", "cell.json: faults[0].on: is no"},
    {R"({"faults": [{"on": "ReadVar"}]})", "cell.json: faults[0]: needs one of \"fail\""},
    {R"({"faults": [{"on": "ReadVar", "fail": "a", "drop": "now"}]})",
     "cell.json: faults[0]: needs one of \"fail\""},
    {R"({"faults": [{"on": "ReadVar", "drop": "later"}]})",
     "cell.json: faults[0].drop: must be \"now\" or \"midway\""},
    {R"({"faults": [{"on": "ReadVar", "nonsense": "a\nb"}]})",
     "cell.json: faults[0].nonsense: must be one line"},
    {R"({"faults": [{"on": "ReadVar", "delay": -1}]})",
     "cell.json: faults[0].delay: must be a whole number from 0 on"},
    {R"({"faults": [{"on": "ReadVar", "delay": 1e10}]})", "cell.json: faults[0].delay: must be"},
    {R"({"faults": [{"on": "ReadVar", "delay": 99999999999}]})",
     "cell.json: faults[0].delay: must"},
    {R"({"faults": [{"on": "ReadVar", "call": 0, "drop": "now"}]})",
     "cell.json: faults[0].call: must be a whole number from 1 on"},
    {R"({"faults": [{"on": "ReadVar", "match": 1, "drop": "now"}]})",
     "cell.json: faults[0].match: must be a text"},
    {R"({"faults": [{"on": "ReadVar", "fail": {"nMessage": "x"}}]})",
     "cell.json: faults[0].fail: \"nMessage\" is no whole number"},
    {R"({"messages": [{"on": "Advise"}]})", "cell.json: messages[0]: needs exactly one of"},
    {R"({"messages": [{"on": "Advise", "message": {}, "withdraw": 1}]})",
     "cell.json: messages[0]: needs exactly one of"},
    {R"({"messages": [{"on": "Advise", "message": "x"}]})", "cell.json: messages[0].message: "},
};

TEST(ScenarioTest, AComplaintNamesFileKeyAndRemedy) {
    for (const Row& row : kBad)
        EXPECT_EQ(ComplaintAbout(row.sJson).rfind(row.sComplaint, 0), 0U)
            << row.sJson << "\n  gives " << ComplaintAbout(row.sJson);
}

TEST(ScenarioTest, AFileThatIsNotThereIsAComplaint) {
    EXPECT_THROW(ReadScenario("no such file.json"), ScenarioError);
    EXPECT_THROW(ReadScenario("/"), ScenarioError);
}

TEST(ScenarioTest, ProgramsArePutBelowTheirRoot) {
    const TemporaryFolder folder;
    folder.Put("cell/main.src", "main");
    folder.Put("cell/Program/sub.src", "sub");
    folder.Put("cell.json", R"({"programs": {"folder": "cell",
                                "files": {"Program\\sub.src": "other", "New/x.src": "x"}}})");
    const FileSpace files(folder / "space");
    SeedPrograms(ReadScenario(folder / "cell.json"), files);
    EXPECT_EQ(files.AllFiles(), (std::vector<Text>{u"TQX:\\R1\\main.src", u"TQX:\\R1\\New\\x.src",
                                                   u"TQX:\\R1\\Program\\sub.src"}));
    EXPECT_EQ(folder.Bytes("space/R1/Program/sub.src"), "other");
}

TEST(ScenarioTest, NoProgramIsPutElsewhere) {
    const TemporaryFolder folder;
    const FileSpace files(folder / "space");
    for (const Text& sPath : {Text(u"..\\..\\x.src"), Text(u"../../x.src"), Text(u"C:\\x.src"),
                              Text(u""), Text(u"sub\\"), Text(u"..")}) {
        Scenario scenario;
        scenario.programs.push_back({sPath, "x"});
        EXPECT_THROW(SeedPrograms(scenario, files), ScenarioError);
    }
    EXPECT_TRUE(files.AllFiles().empty());
}

TEST(ScenarioTest, TheSampleIsFine) {
    const Scenario scenario =
        ReadScenario(std::filesystem::path(NOMIRA_SOURCE_DIR) / "samples/controller.json");
    EXPECT_FALSE(scenario.variables.empty());
    const TemporaryFolder folder;
    const FileSpace files(folder / "space");
    SeedPrograms(scenario, files);
    EXPECT_FALSE(files.AllFiles().empty());
}

}  // namespace
}  // namespace nomira::simulator
