#include "link/LinkFixture.h"

namespace nomira::testing {
namespace {

class VariableAccessTest : public LinkFixture {
  protected:
    VariableAccessTest() { m_library.SetVariable(u"$A", u" 1=2 "); }
};

TEST_F(VariableAccessTest, SetVarWritesTheValue) {
    EXPECT_TRUE(Linked().SetVar(u"$A", u"5"));
    EXPECT_EQ(Calls(), Texts{u"WriteVar($A, 5)"});
    EXPECT_EQ(m_library.Variable(u"$A"), u"5");
}

TEST_F(VariableAccessTest, ShowVarGivesNameAndValue) {
    Text sValue = u"old";
    EXPECT_TRUE(Linked().ShowVar(u"$A", sValue));
    EXPECT_EQ(sValue, u"$A= 1=2 ");
}

TEST_F(VariableAccessTest, FailedShowVarLeavesTheText) {
    Text sValue = u"old";
    EXPECT_FALSE(Linked().ShowVar(u"$NONE", sValue));
    EXPECT_EQ(sValue, u"old");
    EXPECT_FALSE(Unlinked().ShowVar(u"$A", sValue));
    EXPECT_FALSE(Unlinked().SetVar(u"$A", u"5"));
    EXPECT_EQ(sValue, u"old");
}

// ---- VCShowVar ----

TEST_F(VariableAccessTest, VCShowVarGivesTheValueAlone) {
    Linked();
    Text sValue;
    EXPECT_TRUE(g_Comm().VCShowVar(u"$a", sValue));
    EXPECT_EQ(Calls(), Texts{u"ReadVar($A)"});
    EXPECT_EQ(sValue, u"1=2");
}

// The controller gives a name that itself holds "=": all behind the first one is the value.
TEST_F(VariableAccessTest, VCShowVarCutsAtTheFirstEqualsSign) {
    m_library.SetVariable(u"X=Y", u"Z");
    Linked();
    Text sValue;
    EXPECT_TRUE(g_Comm().VCShowVar(u"x=y", sValue));
    EXPECT_EQ(sValue, u"Y=Z");
}

TEST_F(VariableAccessTest, FailedVCShowVarCutsWhatWasThere) {
    Linked();
    Text sValue = u"old = value ";
    EXPECT_FALSE(g_Comm().VCShowVar(u"$NONE", sValue));
    EXPECT_EQ(sValue, u"value");
    EXPECT_FALSE(g_Comm().VCShowVar(u"$NONE", sValue));
    EXPECT_EQ(sValue, u"value");
}

// ---- Watches ----

TEST_F(VariableAccessTest, WatchIsMadeOnce) {
    cVexonComm& inner = Linked();
    EXPECT_TRUE(inner.SetInfoOn(u"$A", u""));
    EXPECT_TRUE(inner.SetInfoOn(u"$A", u""));
    EXPECT_TRUE(inner.SetInfoOn(u"$a", u""));
    EXPECT_EQ(Calls(), (Texts{u"InfoOn(1, $A, 200)", u"InfoOn(2, $a, 200)"}));
}

TEST_F(VariableAccessTest, WatchThatIsMadeAgainHasANewNumber) {
    cVexonComm& inner = Linked();
    inner.SetInfoOn(u"$A", u"");
    EXPECT_TRUE(inner.SetInfoOff(u"$A"));
    EXPECT_TRUE(inner.SetInfoOn(u"$A", u""));
    EXPECT_EQ(Calls(), (Texts{u"InfoOn(1, $A, 200)", u"InfoOff(1)", u"InfoOn(2, $A, 200)"}));
}

TEST_F(VariableAccessTest, EndOfAnUnknownWatchIsFalse) {
    cVexonComm& inner = Linked();
    EXPECT_FALSE(inner.SetInfoOff(u"$A"));
    EXPECT_EQ(Calls(), Texts{});
}

TEST_F(VariableAccessTest, WatchIsForgottenEvenIfItsEndFails) {
    cVexonComm& inner = Linked();
    inner.SetInfoOn(u"$A", u"");
    Fail(u"InfoOff");
    EXPECT_FALSE(inner.SetInfoOff(u"$A"));
    m_library.calls.clear();
    EXPECT_FALSE(inner.SetInfoOff(u"$A"));
    EXPECT_EQ(Calls(), Texts{});
}

TEST_F(VariableAccessTest, FailedWatchGoesToTheCallerAndCountsAsMade) {
    cVexonComm& inner = Linked();
    Fail(u"InfoOn");
    EXPECT_EQ(Raised([&] { inner.SetInfoOn(u"$A", u""); }), ErrorNumber::LinkFailure);
    EXPECT_EQ(inner.VexonError(), u"");
    m_library.calls.clear();
    EXPECT_TRUE(inner.SetInfoOn(u"$A", u""));
    EXPECT_EQ(Calls(), Texts{});
}

TEST_F(VariableAccessTest, WatchWithoutItsObjectFailsAtTheCaller) {
    EXPECT_EQ(Raised([&] { Unlinked().SetInfoOn(u"$A", u""); }), ErrorNumber::ObjectNotSet);
    EXPECT_FALSE(Unlinked().SetInfoOff(u"$A"));
}

TEST_F(VariableAccessTest, ReportsGoToTheFormByName) {
    cVexonComm& inner = Linked();
    inner.SetInfoOn(u"$B", u"");
    inner.SetInfoOn(u"$C", u"");
    m_library.SetVariable(u"$C", u"9");
    EXPECT_EQ(m_form.calls, Texts{});
    m_library.ServeEvents();
    EXPECT_EQ(m_form.calls, (Texts{u"SetInfoResult($C=9)", u"Vexon1_CmdMessage($C=9, 0%)"}));
}

TEST_F(VariableAccessTest, ReportOfAnUnknownNumberHasNoName) {
    Linked().OnSetInfo(99, u"value");
    EXPECT_EQ(m_form.calls, (Texts{u"SetInfoResult(=value)", u"Vexon1_CmdMessage(=value, 0%)"}));
}

// A form that ends the link when it hears of a report.
class EndingForm : public CalledForm {
  public:
    void CallByName(TextView sMethod, std::span<const CallArgument> arguments) override {
        CalledForm::CallByName(sMethod, arguments);
        g_Comm().ExitVexonComm();
    }
};

TEST_F(VariableAccessTest, FormMayEndTheLinkFromAReport) {
    EndingForm form;
    g_Comm().ConnectingVexon(u"Form", &form);
    g_Comm().VexonCommands->SetInfoOn(u"$A", u"");
    m_library.ServeEvents();
    EXPECT_EQ(form.calls, (Texts{u"SetInfoResult($A= 1=2 )", u"Vexon1_CmdMessage($A= 1=2 , 0%)"}));
    EXPECT_FALSE(g_Comm().IsVexonConnected());
}

TEST_F(VariableAccessTest, FormThatRefusesReportsIsNoFailure) {
    cVexonComm& inner = Linked();
    m_form.bFails = true;
    EXPECT_NO_THROW(inner.OnSetInfo(1, u"x"));
    EXPECT_EQ(m_form.calls.size(), 2U);
}

}  // namespace
}  // namespace nomira::testing
