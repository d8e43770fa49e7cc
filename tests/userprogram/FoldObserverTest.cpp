#include "userprogram/FoldObserver.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "conversion/TextImport.h"
#include "langtools/Utf8.h"
#include "testing/TextPrinting.h"
#include "userprogram/FoldHeader.h"
#include "userprogram/ProgramFixture.h"

namespace nomira::testing {
namespace {

const char* const kKinds[] = {"simple", "wait", "analogue"};
const char* const kOutcomes[] = {"no database", "refused", "current", "no text", "written"};

// Keeps what it is told, a line each.
class Recorder : public FoldObserver {
  public:
    Recorder() { SetFoldObserver(this); }
    ~Recorder() override { SetFoldObserver(nullptr); }
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;

    void HeaderFound(FoldKind kind) override {
        m_lines.emplace_back(kKinds[static_cast<int>(kind)]);
    }
    void SymbolOnlyFound() override { m_lines.emplace_back("symbol only"); }
    void NameFound(const FoldName& name) override {
        m_lines.push_back(ToUtf8(name.sModule) + " " + ToUtf8(name.sKey) + " '" +
                          ToUtf8(name.sOldName) + "' " + std::to_string(name.nPlace));
    }
    void NameDecided(const FoldName& name, TextView sText, NameOutcome outcome) override {
        m_lines.push_back(ToUtf8(name.sKey) + " '" + ToUtf8(sText) + "' " +
                          kOutcomes[static_cast<int>(outcome)]);
    }
    std::vector<std::string> Take() { return std::exchange(m_lines, {}); }

  private:
    std::vector<std::string> m_lines;
};

class FoldObserverTest : public ProgramFixture {
  protected:
    std::vector<std::string> Told(TextView sLine) {
        g_vLongName.clear();
        g_sLine = sLine;
        RewriteFoldLine();
        return recorder.Take();
    }
    Recorder recorder;
};

using Lines = std::vector<std::string>;

TEST_F(FoldObserverTest, TellsEachNameItsPlaceAndWhatBecameOfIt) {
    Store(u"IO", u"OUT_12", u"Cooling");
    EXPECT_EQ(Told(u";FOLD OUT 12 'old' State=TRUE"),
              (Lines{"simple", "IO OUT_12 'old' 14", "OUT_12 'Cooling' written"}));
    EXPECT_EQ(Told(u";FOLD OUT 12 'Cooling' State=TRUE").back(), "OUT_12 'Cooling' current");
    EXPECT_EQ(Told(u";FOLD OUT 13 'old' State=TRUE").back(), "OUT_13 '' written");
    EXPECT_EQ(Told(u";FOLD OUT 12: symName State=TRUE"),
              (Lines{"simple", "symbol only", "IO OUT_12 '' 13", "OUT_12 'Cooling' written"}));
}

TEST_F(FoldObserverTest, TellsWhyANameStays) {
    Store(u"IO", u"IN_1", u"a*b");
    Store(u"IO", u"ANOUT_3", u"");
    EXPECT_EQ(Told(u";FOLD WAIT FOR IN 1 'old' State=TRUE").back(), "IN_1 'a*b' refused");
    EXPECT_EQ(Told(u";FOLD ANOUT ON Speed = 0.5;%{PE}%VANOUT_DYN%P:CHANNEL_3,4").back(),
              "ANOUT_3 '' no text");
    m_database.RemoveFile();
    EXPECT_EQ(Told(u";FOLD OUT 12 'old' State=TRUE").back(), "OUT_12 '' no database");
}

TEST_F(FoldObserverTest, TellsEachConditionOfAWait) {
    EXPECT_EQ(Told(u";FOLD WAIT FOR ( IN 9 'a' ) AND ( CYCFLAG 2 'b' ) ;%{PE}"),
              (Lines{"wait", "IO IN_9 'a' 23", "IN_9 '' written", "Notice NoticeText2 'b' 44",
                     "NoticeText2 '' written"}));
}

TEST_F(FoldObserverTest, TellsNothingOfOtherLines) {
    EXPECT_EQ(Told(u";FOLD my own"), Lines{});
    EXPECT_EQ(Told(u"$OUT[1]=TRUE"), Lines{});
}

}  // namespace
}  // namespace nomira::testing
