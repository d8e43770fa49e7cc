#include "apps/nomiractl/Plan.h"

#include <sstream>

#include "apps/nomiractl/PlanFile.h"
#include "apps/nomiractl/Refusal.h"
#include "testing/Random.h"
#include "testing/TemporaryFolder.h"
#include "testing/TextPrinting.h"

namespace nomira::companion {
namespace {

using testing::Random;
using testing::TemporaryFolder;

ItemRow Row(std::int64_t nId, TextView sKey, std::optional<Text> sText) {
    return {nId, u"IO", Text(sKey), {{99, std::move(sText)}}};
}

// A program and a change of it, of random pieces.
struct RandomChange {
    std::string sOld, sNew;
    ProgramChange change;
};

RandomChange MakeChange(Random& random) {
    const auto bytes = [&](std::size_t nMost) {
        std::string s(random.UpTo(nMost), '\0');
        for (char& c : s)
            c = static_cast<char>(random.UpTo(255));
        return s;
    };
    RandomChange made;
    for (std::size_t nLine = 1, nPieces = random.UpTo(5); nLine <= nPieces; ++nLine) {
        const std::string sBetween = bytes(20), sOld = bytes(5), sNew = bytes(9);
        made.sOld += sBetween;
        made.sNew += sBetween;
        made.change.pieces.push_back(
            {static_cast<std::int64_t>(nLine), made.sOld.size(), sOld, sNew});
        made.sOld += sOld;
        made.sNew += sNew;
    }
    const std::string sRest = bytes(20);
    made.sOld += sRest;
    made.sNew += sRest;
    made.change.file = "/x/a.src";
    made.change.before = FingerprintOf(made.sOld);
    made.change.after = FingerprintOf(made.sNew);
    return made;
}

TEST(PlanTest, TheInverseGivesTheOldBytesWhateverThePieces) {
    Random random;
    SCOPED_TRACE(random.Seed());
    for (int n = 0; n < 500; ++n) {
        const RandomChange made = MakeChange(random);
        ASSERT_EQ(Changed(made.change, made.sOld), made.sNew);
        const Plan inverse = Inverse(Plan{.programs = {made.change}});
        ASSERT_EQ(Changed(inverse.programs.at(0), made.sNew), made.sOld);
    }
}

TEST(PlanTest, BytesThatWereNotPlannedWithAreRefused) {
    Random random;
    SCOPED_TRACE(random.Seed());
    RandomChange made = MakeChange(random);
    EXPECT_THROW(Changed(made.change, made.sOld + "x"), Refusal);
    made.change.pieces.push_back({1, made.sOld.size() + 1, "", "x"});
    EXPECT_THROW(Changed(made.change, made.sOld), Refusal);
}

TEST(PlanTest, NamesAreCountedAndNotRows) {
    Plan plan;
    plan.items = {{Row(1, u"IN_1", u"a"), std::nullopt, 0},  // made anew with another id
                  {std::nullopt, Row(9, u"IN_1", u"a"), 1},
                  {Row(2, u"IN_2", u"a"), Row(2, u"IN_2", u"b"), 2},
                  {Row(3, u"IN_3", u"a"), std::nullopt, 0},
                  {std::nullopt, Row(10, u"IN_4", std::nullopt), 4}};
    const PlanCounts counts = Count(plan);
    EXPECT_EQ(counts.nAdded, 1U);
    EXPECT_EQ(counts.nChanged, 1U);
    EXPECT_EQ(counts.nRemoved, 1U);
    EXPECT_EQ(InWords(counts), "1 added, 1 changed, 1 removed");
    const Plan inverse = Inverse(plan);
    EXPECT_EQ(Count(inverse).nAdded, 1U);
    EXPECT_EQ(NameChanges(inverse.items).size(), 3U);
    EXPECT_EQ(InWords(Count(Plan{})), "nothing");
}

TEST(PlanTest, MoreChangesThanAllowedAreRefused) {
    Random random;
    SCOPED_TRACE(random.Seed());
    Plan plan;
    while (Count(plan).All() < 7)
        plan.programs.push_back(MakeChange(random).change);
    const std::size_t nAll = Count(plan).All();
    EXPECT_NO_THROW(RequireAtMost(plan, std::nullopt));
    EXPECT_NO_THROW(RequireAtMost(plan, nAll));
    EXPECT_THROW(RequireAtMost(plan, nAll - 1), Refusal);
}

Plan RichPlan(Random& random) {
    Plan plan{.command = {"rewrite", "B\xFCro/a.src"}, .database = "/x/names.db"};
    plan.databaseState = FingerprintOf("rows");
    plan.inputs.push_back({"/x/\xFC", FingerprintOf("in")});
    plan.items = {{Row(1, u"IN_1", u"\u00E4\xD800"), std::nullopt, 7},
                  {ItemRow{2, std::nullopt, u"K", {}}, ItemRow{2, u"M", std::nullopt, {}}, 0}};
    for (int n = 0; n < 20; ++n)
        plan.programs.push_back(MakeChange(random).change);
    plan.programs.front().state = FileState{1, 2, 3, 4, 5};
    plan.notes.push_back({"n.txt", 3, "unknown-key", u"\u00FCber"});
    plan.nUndoes = 12;
    return plan;
}

std::string Written(const PlanHead& head, const Plan& plan) {
    std::ostringstream out;
    WritePlan(out, head, plan);
    return out.str();
}

TEST(PlanFileTest, AnyBytesAndTextsComeBackAsTheyWere) {
    const TemporaryFolder folder;
    Random random;
    SCOPED_TRACE(random.Seed());
    const Plan plan = RichPlan(random);
    const std::string sBytes = Written({{"nomiractl", "plan"}}, plan);
    folder.Put("p", sBytes);
    const Plan back = ReadPlan(folder / "p").plan;
    EXPECT_EQ(back.command, plan.command);
    EXPECT_EQ(back.inputs.at(0).file, plan.inputs.at(0).file);
    EXPECT_EQ(back.items.at(0).before, plan.items.at(0).before);
    EXPECT_EQ(back.items.at(1).after, plan.items.at(1).after);
    EXPECT_EQ(back.items.at(0).nLine, 7);
    for (std::size_t n = 0; n < plan.programs.size(); ++n)
        for (std::size_t i = 0; i < plan.programs[n].pieces.size(); ++i)
            EXPECT_EQ(back.programs.at(n).pieces.at(i).sNew, plan.programs[n].pieces[i].sNew);
    EXPECT_EQ(back.programs.at(0).state->nNanoseconds, 5);
    EXPECT_EQ(back.notes.at(0).sWhat, u"\u00FCber");
    EXPECT_EQ(back.nUndoes, 12);
    EXPECT_EQ(Written({{"nomiractl", "plan"}}, back), sBytes);
}

TEST(PlanFileTest, AFileThatWasCutOffAnywhereIsNoPlan) {
    const TemporaryFolder folder;
    Random random;
    SCOPED_TRACE(random.Seed());
    Plan plan = RichPlan(random);
    plan.programs.resize(2);
    const std::string sBytes = Written({{"nomiractl", "plan"}}, plan);
    for (std::size_t n = 0; n + 1 < sBytes.size(); ++n) {  // the last line end may lack
        folder.Put("p", sBytes.substr(0, n));
        EXPECT_THROW(ReadPlan(folder / "p"), Refusal) << n;
    }
}

TEST(PlanFileTest, OtherFilesAreRefused) {
    const TemporaryFolder folder;
    for (const char* sNone : {"", "{}", "[]", "1", "x", "{\"nomiractl\":\"plan\",\"version\":2}"}) {
        folder.Put("p", sNone);
        EXPECT_THROW(ReadPlan(folder / "p"), Refusal) << sNone;
        EXPECT_THROW(ReadPlanHead(folder / "p"), Refusal) << sNone;
    }
    EXPECT_THROW(ReadPlan(folder / "none"), Refusal);
}

}  // namespace
}  // namespace nomira::companion
