#include "link/cVexonComm.h"

#include "langtools/ProgramState.h"
#include "link/LinkFixture.h"

namespace nomira::testing {
namespace {

const Texts kObjects{u"LNK_TqxLib.SyncVar",    u"LNK_TqxLib.SyncFile", u"LNK_TqxLib.SyncEdit",
                     u"LNK_TqxLib.SyncSelect", u"LNK_TqxLib.SyncIo",   u"LNK_TqxLib.AsyncVar"};

Texts Creations(TextView sConnection) {
    Texts calls;
    for (const Text& sObject : kObjects)
        calls.push_back(u"CreateLinkObject(" + sObject + u", " + Text(sConnection) + u")");
    return calls;
}

Texts Releases() {
    Texts calls;
    for (const Text& sObject : kObjects)
        calls.push_back(u"Release(" + sObject + u")");
    return calls;
}

class cVexonCommTest : public LinkFixture {};

// ---- Init ----

TEST_F(cVexonCommTest, InitWithoutAFormChangesNothing) {
    cVexonComm comm;
    EXPECT_FALSE(comm.Init(nullptr));
    EXPECT_FALSE(comm.VexonIsConnected());
    EXPECT_EQ(Calls(), Texts{});

    EXPECT_TRUE(comm.Init(&m_form));
    EXPECT_FALSE(comm.Init(nullptr));
    EXPECT_TRUE(comm.VexonIsConnected());
}

TEST_F(cVexonCommTest, InitMakesTheFactoryAndLinks) {
    cVexonComm comm;
    EXPECT_TRUE(comm.Init(&m_form));
    EXPECT_TRUE(comm.VexonIsConnected());
    EXPECT_EQ(Calls(), Texts{u"CreateFactory()"});
}

TEST_F(cVexonCommTest, InitWithoutTheLibraryIsFalseAndUnlinks) {
    cVexonComm comm;
    comm.Init(&m_form);
    m_library.bInstalled = false;
    EXPECT_FALSE(comm.Init(&m_form));
    EXPECT_FALSE(comm.VexonIsConnected());
    SetLinkLibrary(nullptr);
    EXPECT_FALSE(comm.Init(&m_form));
}

// ---- ConnectToVexon ----

TEST_F(cVexonCommTest, ConnectMakesTheObjectsInTheirOrder) {
    cVexonComm comm;
    comm.Init(&m_form);
    m_library.calls.clear();
    EXPECT_TRUE(comm.ConnectToVexon(u"NomiraMain"));
    EXPECT_TRUE(comm.VexonIsConnected());
    EXPECT_EQ(Calls(), Creations(u"NomiraMain"));
    EXPECT_TRUE(m_library.consumers.empty());
}

TEST_F(cVexonCommTest, EachObjectIsReleasedBeforeItIsMadeAnew) {
    cVexonComm comm;
    comm.Init(&m_form);
    comm.ConnectToVexon(u"A");
    m_library.calls.clear();
    comm.ConnectToVexon(u"B");
    const Texts creations = Creations(u"B"), releases = Releases();
    Texts expected;
    for (std::size_t n = 0; n < creations.size(); ++n) {
        expected.push_back(releases[n]);
        expected.push_back(creations[n]);
    }
    EXPECT_EQ(Calls(), expected);
}

TEST_F(cVexonCommTest, OnlyModeMinusOneSubscribesToMessages) {
    for (const int nMode : {0, 1, -2}) {
        cVexonComm comm;
        comm.Init(&m_form);
        EXPECT_TRUE(comm.ConnectToVexon(u"A", static_cast<std::int16_t>(nMode)));
        EXPECT_TRUE(m_library.consumers.empty()) << nMode;
    }
    cVexonComm comm;
    comm.Init(&m_form);
    m_library.calls.clear();
    EXPECT_TRUE(comm.ConnectToVexon(u"A", -1));
    Texts expected = Creations(u"A");
    expected.push_back(u"CreateLinkObject(LNK_TqxLib.AdviseMessage, A)");
    expected.push_back(u"Advise(311)");
    EXPECT_EQ(Calls(), expected);
}

TEST_F(cVexonCommTest, FailedConnectKeepsTheObjectsMadeSoFar) {
    m_library.SetVariable(u"$A", u"1");
    m_library.PutFile(u"TQX:\\R1\\x.src", "x");
    cVexonComm comm;
    comm.Init(&m_form);
    Fail(u"CreateLinkObject(LNK_TqxLib.SyncSelect");
    EXPECT_FALSE(comm.ConnectToVexon(u"A"));
    EXPECT_FALSE(comm.VexonIsConnected());
    Text sValue;
    EXPECT_TRUE(comm.ShowVar(u"$A", sValue));
    EXPECT_TRUE(comm.DeleteRobotProgram(u"x.src"));
    EXPECT_FALSE(comm.RobotLevelStop());
    EXPECT_FALSE(comm.IO_Restart(1));
}

TEST_F(cVexonCommTest, FailedConnectEmptiesTheMembersOnItsWay) {
    m_library.SetVariable(u"$A", u"1");
    cVexonComm comm;
    comm.Init(&m_form);
    comm.ConnectToVexon(u"A");
    m_library.bMiddlewareRuns = false;
    EXPECT_FALSE(comm.ConnectToVexon(u"A"));
    Text sValue;
    EXPECT_FALSE(comm.ShowVar(u"$A", sValue));
    EXPECT_TRUE(comm.RobotLevelStop());
}

TEST_F(cVexonCommTest, ConnectWithoutInitIsFalse) {
    cVexonComm comm;
    EXPECT_FALSE(comm.ConnectToVexon(u"A"));
    EXPECT_EQ(comm.VexonError(), u"");
}

TEST_F(cVexonCommTest, SuccessfulConnectLinksAgain) {
    cVexonComm comm;
    comm.Init(&m_form);
    m_library.bMiddlewareRuns = false;
    comm.ConnectToVexon(u"A");
    m_library.bMiddlewareRuns = true;
    EXPECT_TRUE(comm.ConnectToVexon(u"A"));
    EXPECT_TRUE(comm.VexonIsConnected());
}

class WrongFactory : public LinkFactory {
  public:
    std::unique_ptr<LinkObject> CreateLinkObject(TextView, TextView) override {
        class Edit : public SyncEdit {
            MessageRecord GetLastErrorRecord() override { return {}; }
        };
        return std::make_unique<Edit>();
    }
};

class WrongLibrary : public LinkLibrary {
  public:
    bool Installed() const override { return true; }
    std::unique_ptr<LinkFactory> CreateFactory() override {
        return std::make_unique<WrongFactory>();
    }
};

TEST_F(cVexonCommTest, ObjectOfAnotherClassFailsTheConnect) {
    WrongLibrary library;
    SetLinkLibrary(&library);
    cVexonComm comm;
    EXPECT_TRUE(comm.Init(&m_form));
    EXPECT_FALSE(comm.ConnectToVexon(u"A"));
}

// ---- ServerOff ----

TEST_F(cVexonCommTest, ServerOffReleasesAllInOrderAndIsFalse) {
    cVexonComm comm;
    comm.Init(&m_form);
    comm.ConnectToVexon(u"A", -1);
    m_library.calls.clear();
    EXPECT_FALSE(comm.ServerOff());
    Texts expected = Releases();
    expected.push_back(u"Release(LNK_TqxLib.AdviseMessage)");
    expected.push_back(u"Release(factory)");
    EXPECT_EQ(Calls(), expected);
    EXPECT_TRUE(comm.VexonIsConnected()) << "it leaves the flag";
    EXPECT_FALSE(comm.ServerOff());
}

TEST_F(cVexonCommTest, DestructionReleasesAllInOrder) {
    {
        cVexonComm comm;
        comm.Init(&m_form);
        comm.ConnectToVexon(u"A");
        m_library.calls.clear();
    }
    Texts expected = Releases();
    expected.push_back(u"Release(factory)");
    EXPECT_EQ(Calls(), expected);
}

// ---- The outer object ----

TEST_F(cVexonCommTest, ConnectingMakesTheInnerObjectOnce) {
    EXPECT_FALSE(g_Comm().IsVexonConnected());
    EXPECT_TRUE(g_Comm().ConnectingVexon(u"NomiraMain", &m_form));
    EXPECT_TRUE(g_Comm().IsVexonConnected());
    Texts expected = Creations(u"NomiraMain");
    expected.insert(expected.begin(), u"CreateFactory()");
    EXPECT_EQ(Calls(), expected);

    const cVexonComm* first = g_Comm().VexonCommands.get();
    EXPECT_EQ(first->VexonCommands, nullptr);
    EXPECT_TRUE(g_Comm().ConnectingVexon(u"StdBofForm", &m_form));
    EXPECT_EQ(g_Comm().VexonCommands.get(), first);
    EXPECT_EQ(Calls(), expected);
}

TEST_F(cVexonCommTest, ConnectingWithoutTheMiddlewareIsTrueAllTheSame) {
    m_library.bMiddlewareRuns = false;
    EXPECT_TRUE(g_Comm().ConnectingVexon(u"A", &m_form));
    EXPECT_TRUE(g_Comm().IsVexonConnected());
    EXPECT_FALSE(g_Comm().VexonCommands->VexonIsConnected());
    EXPECT_EQ(g_Comm().GetRobotFileList(), u"");
    EXPECT_EQ(g_Comm().GetRobotDirList(), u"");
    EXPECT_EQ(g_Comm().GetParticularFileList(u"R1\\Program"), u"");
}

TEST_F(cVexonCommTest, ConnectingWithoutTheLibraryIsFalse) {
    m_library.bInstalled = false;
    EXPECT_FALSE(g_Comm().ConnectingVexon(u"A", &m_form));
    EXPECT_FALSE(g_Comm().IsVexonConnected());
    EXPECT_EQ(Calls(), Texts{});
    SetLinkLibrary(nullptr);
    EXPECT_FALSE(g_Comm().ConnectingVexon(u"A", &m_form));
    SetLinkLibrary(&m_library);
    m_library.bInstalled = true;
    EXPECT_TRUE(g_Comm().ConnectingVexon(u"A", &m_form));
}

TEST_F(cVexonCommTest, SecondConnectingDoesNotTryAgain) {
    m_library.bMiddlewareRuns = false;
    g_Comm().ConnectingVexon(u"A", &m_form);
    m_library.bMiddlewareRuns = true;
    EXPECT_TRUE(g_Comm().ConnectingVexon(u"A", &m_form));
    EXPECT_FALSE(g_Comm().VexonCommands->VexonIsConnected());
}

TEST_F(cVexonCommTest, ConnectingWithoutAFormIsTrueButNotLinked) {
    EXPECT_TRUE(g_Comm().ConnectingVexon(u"A", nullptr));
    EXPECT_FALSE(g_Comm().VexonCommands->VexonIsConnected());
    EXPECT_EQ(Calls(), Texts{});
}

TEST_F(cVexonCommTest, ExitEndsTheLink) {
    g_Comm().ExitVexonComm();
    EXPECT_EQ(Calls(), Texts{});
    Linked();
    g_Comm().ExitVexonComm();
    EXPECT_FALSE(g_Comm().IsVexonConnected());
    Texts expected = Releases();
    expected.push_back(u"Release(factory)");
    EXPECT_EQ(Calls(), expected);
    EXPECT_TRUE(g_Comm().ConnectingVexon(u"A", &m_form));
    EXPECT_TRUE(g_Comm().VexonCommands->VexonIsConnected());
}

TEST_F(cVexonCommTest, OperationsOfTheOuterObjectNeedTheInnerOne) {
    EXPECT_EQ(Raised([] { g_Comm().GetRobotFileList(); }), ErrorNumber::ObjectNotSet);
    EXPECT_EQ(Raised([] { g_Comm().GetRobotDirList(); }), ErrorNumber::ObjectNotSet);
    EXPECT_EQ(Raised([] { g_Comm().GetParticularFileList(u"x"); }), ErrorNumber::ObjectNotSet);
    EXPECT_EQ(Raised([] { g_Comm().PutFileFromDiskToRobot(u"x.src"); }), ErrorNumber::ObjectNotSet);
    EXPECT_EQ(Raised([] { g_Comm().PutFileFromRobotToDisk(u"x.src", u"C:\\"); }),
              ErrorNumber::ObjectNotSet);
    Text sValue = u"as before=";
    EXPECT_EQ(Raised([&] { g_Comm().VCShowVar(u"$A", sValue); }), ErrorNumber::ObjectNotSet);
    EXPECT_EQ(sValue, u"as before=");
}

TEST_F(cVexonCommTest, ResetOfTheProgramEndsTheLink) {
    Linked();
    ResetProgramState();
    EXPECT_TRUE(WasCalled(u"Release(factory)"));
    EXPECT_FALSE(g_Comm().IsVexonConnected());
}

TEST_F(cVexonCommTest, TqxOkIsTrueWithoutALink) {
    cVexonComm comm;
    EXPECT_TRUE(comm.TqxOk());
    EXPECT_EQ(Calls(), Texts{});
}

// ---- Messages ----

MessageRecord Message() {
    MessageRecord message;
    message.nMessageHandle = 7;
    message.eMessageType = 2;
    message.bstrCause = u"x";
    return message;
}

TEST_F(cVexonCommTest, MessageGoesToTheFormAsText) {
    Linked().OnAddMessage(Message());
    EXPECT_EQ(m_form.calls, (Texts{u"RobMessage(2, 7,False,x,,,2,0,0,0,0)",
                                   u"Vexon1_Message(2, 7,False,x,,,2,0,0,0,0)"}));
}

TEST_F(cVexonCommTest, FormWithoutTheMethodsIsNoFailure) {
    cVexonComm& inner = Linked();
    m_form.bFails = true;
    EXPECT_NO_THROW(inner.OnAddMessage(Message()));
    EXPECT_EQ(m_form.calls.size(), 2U) << "the second is tried all the same";
    cVexonComm withoutForm;
    EXPECT_NO_THROW(withoutForm.OnAddMessage(Message()));
}

TEST_F(cVexonCommTest, FormThatHasGoneIsNotCalled) {
    cVexonComm comm;
    {
        CalledForm form;
        comm.Init(&form);
        comm.OnAddMessage(Message());
        EXPECT_EQ(form.calls.size(), 2U);
    }
    EXPECT_NO_THROW(comm.OnAddMessage(Message()));
}

// The consumer is a fresh object without a form.
TEST_F(cVexonCommTest, SubscriptionDoesNotReachTheForm) {
    cVexonComm& inner = Linked(-1);
    ASSERT_EQ(m_library.consumers.size(), 1U);
    EXPECT_NE(m_library.consumers.front().get(), static_cast<IVOConsumeMessage*>(&inner));
    EXPECT_EQ(m_library.consumers.front().use_count(), 2) << "the library alone keeps it";
    m_library.SendMessage(Message());
    m_library.ServeEvents();
    EXPECT_EQ(m_form.calls, Texts{});
}

TEST_F(cVexonCommTest, OtherCallbacksDoNothing) {
    cVexonComm& inner = Linked();
    inner.OnAddDialog(Message());
    inner.OnSubMessage(7);
    inner.OnDialog(1, Message());
    inner.OnError(1, Message());
    inner.OnSetMultiVar(1);
    inner.OnSetVar(1);
    inner.OnShowMultiVar(1, LinkArray{0, {u"x"}});
    inner.OnShowVar(1, u"x");
    EXPECT_EQ(m_form.calls, Texts{});
    EXPECT_EQ(Calls(), Texts{});
    EXPECT_EQ(inner.VexonError(), u"");
}

TEST_F(cVexonCommTest, ConfirmAllGoesToTheSubscriptionWithItselfAsCallback) {
    cVexonComm& inner = Linked(-1);
    EXPECT_TRUE(inner.ConfirmAll());
    EXPECT_EQ(Calls(), Texts{u"ConfirmAllMessages(0, 0)"});
    EXPECT_EQ(m_library.lastConfirmation, static_cast<IOCallbackError*>(&inner));
}

TEST_F(cVexonCommTest, ConfirmAllFailsAtItsCaller) {
    EXPECT_EQ(Raised([&] { Linked().ConfirmAll(); }), ErrorNumber::ObjectNotSet);
    cVexonComm& inner = Linked(-1);
    Fail(u"ConfirmAllMessages");
    EXPECT_EQ(Raised([&] { inner.ConfirmAll(); }), ErrorNumber::LinkFailure);
    EXPECT_EQ(inner.VexonError(), u"");
}

// ---- The detail of a failure ----

TEST_F(cVexonCommTest, DetailOfTheLastFailureIsKept) {
    cVexonComm& inner = Linked();
    EXPECT_EQ(inner.VexonError(), u"");
    m_library.Fail(u"StopProgram", memory::ScriptedLinkLibrary::FailureRecord(u"no program"));
    EXPECT_FALSE(inner.RobotLevelStop());
    EXPECT_EQ(inner.VexonError(),
              u"Error: bDBCause=False , bstrCause=no program , bstrDBMessage=Failure"
              u" , bstrDBModule=Link , eMessageType=2 , nBiasTimeStamp=0 , nHighTimeStamp=0"
              u" , nLowTimeStamp=0 , nMessage=1 , nMessageHandle=0 , varParams(0) =p"
              u" , varDBParams(0) =c");
    m_library.ClearFailures();
    const Text sBefore = inner.VexonError();
    EXPECT_TRUE(inner.RobotLevelStop());
    EXPECT_EQ(inner.VexonError(), sBefore);
    EXPECT_EQ(g_Comm().VexonError(), u"") << "the outer object has no failures of its own";
}

TEST_F(cVexonCommTest, RecordWithEmptyArraysLeavesTheDetail) {
    cVexonComm& inner = Linked();
    m_library.Fail(u"StopProgram");
    inner.RobotLevelStop();
    const Text sBefore = inner.VexonError();
    MessageRecord record = memory::ScriptedLinkLibrary::FailureRecord(u"another");
    record.varDBParams = LinkArray{};
    m_library.Fail(u"ReadVar", record);
    Text sValue;
    EXPECT_FALSE(inner.ShowVar(u"$A", sValue));
    EXPECT_TRUE(WasCalled(u"GetLastErrorRecord(LNK_TqxLib.SyncVar)"));
    EXPECT_EQ(inner.VexonError(), sBefore);
}

TEST_F(cVexonCommTest, RecordThatCannotBeReadLeavesTheDetail) {
    cVexonComm& inner = Linked();
    Fail(u"StopProgram");
    Fail(u"GetLastErrorRecord");
    EXPECT_FALSE(inner.RobotLevelStop());
    EXPECT_EQ(inner.VexonError(), u"");
}

// Each operation's failure is trapped, and its detail asked of the object that failed.
TEST_F(cVexonCommTest, EveryGuardedOperationTakesTheDetailFromItsObject) {
    struct Row {
        TextView sFailing, sObject;
        bool (*call)(cVexonComm&);
    };
    static Text sText;
    static const Row rows[] = {
        {u"WriteVar", u"SyncVar", [](cVexonComm& c) { return c.SetVar(u"$A", u"1"); }},
        {u"ReadVar", u"SyncVar", [](cVexonComm& c) { return c.ShowVar(u"$A", sText); }},
        {u"InfoOff", u"AsyncVar",
         [](cVexonComm& c) { return c.SetInfoOn(u"$A", u"") && c.SetInfoOff(u"$A"); }},
        {u"ListDirectory", u"SyncFile", [](cVexonComm& c) { return c.GetRobotDirectory(sText); }},
        {u"CopyFile", u"SyncFile",
         [](cVexonComm& c) { return c.DownLoadDiskToRobot(u"C:\\x.src"); }},
        {u"CopyFile", u"SyncFile",
         [](cVexonComm& c) { return c.DownLoadDiskToRobot(u"C:\\x.src|TQX:\\R1\\y.src"); }},
        {u"WriteFileFromMemory", u"SyncFile",
         [](cVexonComm& c) { return c.DownLoadMemToRobot(u"x.src", u"x"); }},
        {u"CopyFile", u"SyncFile",
         [](cVexonComm& c) { return c.UpLoadFromRobotToDisk(u"x.src", sText); }},
        {u"ReadFileToMemory", u"SyncFile",
         [](cVexonComm& c) { return c.UpLoadFromRobotToMem(u"x.src", sText); }},
        {u"DeleteFile", u"SyncFile", [](cVexonComm& c) { return c.DeleteRobotProgram(u"x.src"); }},
        {u"StopProgram(1)", u"SyncSelect", [](cVexonComm& c) { return c.RobotLevelStop(); }},
        {u"StopProgram(0)", u"SyncSelect", [](cVexonComm& c) { return c.ControlLevelStop(); }},
        {u"SelectProgram", u"SyncSelect",
         [](cVexonComm& c) { return c.RunControlLevel(u"/R1/MAIN"); }},
        {u"ResolvePath", u"SyncFile",
         [](cVexonComm& c) { return c.SelectModul(sText = u"x.src", u""); }},
        {u"SelectProgram", u"SyncSelect",
         [](cVexonComm& c) { return c.SelectModul(sText = u"x.src", u""); }},
        {u"CancelProgram", u"SyncSelect", [](cVexonComm& c) { return c.CancelModul(); }},
        {u"RestartIo", u"SyncIo", [](cVexonComm& c) { return c.IO_Restart(1); }},
    };
    m_library.PutFile(u"TQX:\\R1\\x.src", "x");
    m_library.SetVariable(u"$A", u"1");
    for (const Row& row : rows) {
        SCOPED_TRACE(Printable(row.sFailing));
        sText = u"C:\\Temp";
        g_Comm().ExitVexonComm();
        m_library.ClearFailures();
        cVexonComm& inner = Linked();
        m_library.Fail(row.sFailing, memory::ScriptedLinkLibrary::FailureRecord(row.sObject));
        EXPECT_FALSE(row.call(inner));
        EXPECT_TRUE(WasCalled(u"GetLastErrorRecord(LNK_TqxLib." + Text(row.sObject) + u")"));
        EXPECT_NE(inner.VexonError().find(u"bstrCause=" + Text(row.sObject) + u" "), Text::npos);
    }
}

}  // namespace
}  // namespace nomira::testing
