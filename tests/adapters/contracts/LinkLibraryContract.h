// What every adapter of LinkLibrary must do. A rig brings one, with a controller behind it and a
// disk beside it, and tells what has arrived there:
//
//     LinkLibrary& Port();
//     void StopMiddleware();                        // nothing can be reached from now on
//     void SetVariable(TextView sName, TextView sValue);
//     Text Variable(TextView sName);                // of the controller
//     void PutProgram(TextView sPath, std::string_view bytes);  // below "TQX:\R1\"
//     std::optional<std::string> Program(TextView sPath);       // nullopt if it isn't there
//     Text DiskPath(TextView sName);                // where files are copied from and to
//     void PutOnDisk(TextView sName, std::string_view bytes);
//     std::string OnDisk(TextView sName);
//     // Calls of programs and I/O that reached the controller, in order, as u"StopProgram(1)",
//     // u"CancelProgram(0)", u"SelectProgram(PATH, PARAMETERS, 0)", u"RestartIo(12, 2, 0)".
//     std::vector<Text> Commands();
//     void SendMessage(const MessageRecord& message);  // of the controller to its consumers
//     // Lets callbacks through until `done` says true; false if it never does.
//     bool ServeUntil(const std::function<bool()>& done);
#pragma once

#include <algorithm>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "adapters/contracts/ExpectRaises.h"
#include "link/LinkLibrary.h"
#include "testing/TextPrinting.h"

namespace nomira::testing {

// Writes down the reports of watches.
class RecordingVarCallback : public IVOCallbackVar {
  public:
    using Report = std::pair<std::int32_t, Text>;
    std::vector<Report> reports;

    bool HasReport(std::int32_t nId, TextView sValue) const {
        return std::ranges::count(reports, Report(nId, sValue)) != 0;
    }
    void OnSetInfo(std::int32_t nID, TextView bstrVal) override {
        reports.emplace_back(nID, bstrVal);
    }
    void OnSetMultiVar(std::int32_t) override {}
    void OnSetVar(std::int32_t) override {}
    void OnShowMultiVar(std::int32_t, const LinkValue&) override {}
    void OnShowVar(std::int32_t, TextView) override {}
};

class RecordingConsumer : public IVOConsumeMessage {
  public:
    std::vector<MessageRecord> messages;
    void OnAddMessage(const MessageRecord& message) override { messages.push_back(message); }
    void OnAddDialog(const MessageRecord&) override {}
    void OnSubMessage(std::int32_t) override {}
};

class SilentErrorCallback : public IOCallbackError {
  public:
    void OnDialog(std::int32_t, const MessageRecord&) override {}
    void OnError(std::int32_t, const MessageRecord&) override {}
};

template <typename Rig>
class LinkLibraryContract : public ::testing::Test {
  protected:
    static constexpr std::int32_t kToController = 64;
    static constexpr std::int32_t kFromController = 4160;

    std::unique_ptr<LinkFactory> Factory() { return m_rig.Port().CreateFactory(); }

    template <typename Object>
    std::unique_ptr<Object> Make(TextView sProgId) {
        auto object = Factory()->CreateLinkObject(sProgId, u"Contract");
        auto* typed = dynamic_cast<Object*>(object.get());
        if (!typed)
            throw std::logic_error("the factory makes another object than it was asked for");
        object.release();
        return std::unique_ptr<Object>(typed);
    }
    std::unique_ptr<SyncVar> Variables() { return Make<SyncVar>(kSyncVarId); }
    std::unique_ptr<SyncFile> Files() { return Make<SyncFile>(kSyncFileId); }
    std::unique_ptr<SyncSelect> Programs() { return Make<SyncSelect>(kSyncSelectId); }

    Rig m_rig;
};

TYPED_TEST_SUITE_P(LinkLibraryContract);

// ---- Objects ----

TYPED_TEST_P(LinkLibraryContract, FactoryMakesEachClass) {
    EXPECT_NE(this->template Make<SyncVar>(kSyncVarId), nullptr);
    EXPECT_NE(this->template Make<SyncFile>(kSyncFileId), nullptr);
    EXPECT_NE(this->template Make<SyncEdit>(kSyncEditId), nullptr);
    EXPECT_NE(this->template Make<SyncSelect>(kSyncSelectId), nullptr);
    EXPECT_NE(this->template Make<SyncIo>(kSyncIoId), nullptr);
    EXPECT_NE(this->template Make<AsyncVar>(kAsyncVarId), nullptr);
    EXPECT_NE(this->template Make<AdviseMessage>(kAdviseMessageId), nullptr);
}

TYPED_TEST_P(LinkLibraryContract, UnknownClassFails) {
    const auto factory = this->Factory();
    EXPECT_RAISES(ErrorNumber::LinkFailure,
                  factory->CreateLinkObject(u"LNK_TqxLib.Nothing", u"Contract"));
}

TYPED_TEST_P(LinkLibraryContract, NoObjectComesWithoutTheMiddleware) {
    this->m_rig.StopMiddleware();
    const auto factory = this->Factory();
    EXPECT_RAISES(ErrorNumber::LinkFailure, factory->CreateLinkObject(kSyncVarId, u"Contract"));
}

TYPED_TEST_P(LinkLibraryContract, ObjectsOutliveTheirFactory) {
    this->m_rig.SetVariable(u"$A", u"1");
    auto factory = this->Factory();
    const auto object = factory->CreateLinkObject(kSyncVarId, u"Contract");
    factory.reset();
    EXPECT_EQ(dynamic_cast<SyncVar&>(*object).ReadVar(u"$A"), u"1");
}

// ---- Variables ----

TYPED_TEST_P(LinkLibraryContract, VariablesAreReadAsTheControllerWritesThem) {
    this->m_rig.SetVariable(u"$NUM_OUT", u"4096");
    this->m_rig.SetVariable(u"$NAME[]", u"\"T\u00FCr = a, b\"");
    const auto variables = this->Variables();
    EXPECT_EQ(variables->ReadVar(u"$NUM_OUT"), u"4096");
    EXPECT_EQ(variables->ReadVar(u"$NAME[]"), u"\"T\u00FCr = a, b\"");
}

TYPED_TEST_P(LinkLibraryContract, AWrittenVariableIsTheControllers) {
    this->m_rig.SetVariable(u"$A", u"1");
    const auto variables = this->Variables();
    variables->WriteVar(u"$A", u"2");
    EXPECT_EQ(this->m_rig.Variable(u"$A"), u"2");
    EXPECT_EQ(variables->ReadVar(u"$A"), u"2");
}

// ---- Files ----

TYPED_TEST_P(LinkLibraryContract, ADirectoryListsItsFiles) {
    this->m_rig.PutProgram(u"a.src", "x");
    this->m_rig.PutProgram(u"b.dat", "x");
    this->m_rig.PutProgram(u"Program\\c.src", "x");
    std::vector<Text> names = this->Files()->ListDirectory(u"TQX:\\\\R1\\", 0, 5);
    EXPECT_EQ(std::ranges::count(names, Text(u"a.src")), 1);
    EXPECT_EQ(std::ranges::count(names, Text(u"b.dat")), 1);
}

TYPED_TEST_P(LinkLibraryContract, APathOfADirectoryNeedsNoBackslashAtItsEnd) {
    this->m_rig.PutProgram(u"Program\\c.src", "x");
    EXPECT_EQ(this->Files()->ListDirectory(u"TQX:\\\\R1\\Program", 0, 5),
              (std::vector<Text>{u"c.src"}));
}

TYPED_TEST_P(LinkLibraryContract, TheMaskOfAStarAndAPointListsDirectories) {
    this->m_rig.PutProgram(u"a.src", "x");
    this->m_rig.PutProgram(u"Program\\c.src", "x");
    const std::vector<Text> names = this->Files()->ListDirectory(u"TQX:\\\\R1\\*.", 0, 5);
    EXPECT_EQ(std::ranges::count(names, Text(u"Program")), 1);
    EXPECT_EQ(std::ranges::count(names, Text(u"a.src")), 0);
}

TYPED_TEST_P(LinkLibraryContract, ALookUpFindsAFileWhereverItLies) {
    this->m_rig.PutProgram(u"Program\\c.src", "deep");
    const auto files = this->Files();
    const Text sFull = files->ResolvePath(u"/R1/c.src");
    EXPECT_NE(sFull, u"");
    EXPECT_EQ(files->ReadFileToMemory(sFull, this->kFromController), "deep");
}

TYPED_TEST_P(LinkLibraryContract, ALookUpOfWhatIsNotThereGivesNothing) {
    EXPECT_EQ(this->Files()->ResolvePath(u"/R1/none.src"), u"");
}

TYPED_TEST_P(LinkLibraryContract, AFileIsCopiedToTheController) {
    const std::string bytes("DEF x()\r\n\0\xFC\xFF\r\nEND", 18);
    this->m_rig.PutOnDisk(u"x.src", bytes);
    this->Files()->CopyFile(this->m_rig.DiskPath(u"x.src"), u"TQX:\\R1\\x.src",
                            this->kToController);
    EXPECT_EQ(this->m_rig.Program(u"x.src"), bytes);
}

TYPED_TEST_P(LinkLibraryContract, AFileIsCopiedFromTheController) {
    const std::string bytes("DEF c()\r\n\0\xFC\xFF\r\nEND", 18);
    this->m_rig.PutProgram(u"Program\\c.src", bytes);
    const auto files = this->Files();
    files->CopyFile(files->ResolvePath(u"/R1/c.src"), this->m_rig.DiskPath(u"c.src"),
                    this->kFromController);
    EXPECT_EQ(this->m_rig.OnDisk(u"c.src"), bytes);
}

TYPED_TEST_P(LinkLibraryContract, ACopyGoesBackToWhereTheFileWas) {
    this->m_rig.PutProgram(u"Program\\c.src", "before, and longer");
    this->m_rig.PutOnDisk(u"c.src", "after");
    const auto files = this->Files();
    files->CopyFile(this->m_rig.DiskPath(u"c.src"), files->ResolvePath(u"/R1/c.src"),
                    this->kToController);
    EXPECT_EQ(this->m_rig.Program(u"Program\\c.src"), "after");
    EXPECT_EQ(this->m_rig.Program(u"c.src"), std::nullopt);
}

TYPED_TEST_P(LinkLibraryContract, ACopyReplacesWhatLiesOnTheDisk) {
    this->m_rig.PutProgram(u"c.src", "new");
    this->m_rig.PutOnDisk(u"c.src", "old, and longer");
    const auto files = this->Files();
    files->CopyFile(files->ResolvePath(u"/R1/c.src"), this->m_rig.DiskPath(u"c.src"),
                    this->kFromController);
    EXPECT_EQ(this->m_rig.OnDisk(u"c.src"), "new");
}

TYPED_TEST_P(LinkLibraryContract, ACopyWithoutPathsOrFilesFails) {
    const auto files = this->Files();
    EXPECT_RAISES(ErrorNumber::LinkFailure, files->CopyFile(u"", u"", this->kFromController));
    EXPECT_RAISES(ErrorNumber::LinkFailure,
                  files->CopyFile(this->m_rig.DiskPath(u"none.src"), u"TQX:\\R1\\none.src",
                                  this->kToController));
    EXPECT_RAISES(ErrorNumber::LinkFailure,
                  files->CopyFile(u"TQX:\\R1\\none.src", this->m_rig.DiskPath(u"none.src"),
                                  this->kFromController));
    EXPECT_EQ(this->m_rig.Program(u"none.src"), std::nullopt);
}

TYPED_TEST_P(LinkLibraryContract, AFileComesFromMemoryAndGoesThere) {
    std::string bytes;
    for (int n = 0; n < 256; ++n)
        bytes += static_cast<char>(n);
    const auto files = this->Files();
    files->WriteFileFromMemory(bytes, u"TQX:\\R1\\m.src", this->kFromController);
    EXPECT_EQ(this->m_rig.Program(u"m.src"), bytes);
    EXPECT_EQ(files->ReadFileToMemory(files->ResolvePath(u"/R1/m.src"), this->kFromController),
              bytes);
    EXPECT_RAISES(ErrorNumber::LinkFailure,
                  files->ReadFileToMemory(u"TQX:\\R1\\none.src", this->kFromController));
}

TYPED_TEST_P(LinkLibraryContract, ADeletedFileIsGone) {
    this->m_rig.PutProgram(u"Program\\c.src", "x");
    this->m_rig.PutProgram(u"Program\\d.src", "x");
    const auto files = this->Files();
    files->DeleteFile(files->ResolvePath(u"/R1/c.src"), -1);
    EXPECT_EQ(this->m_rig.Program(u"Program\\c.src"), std::nullopt);
    EXPECT_NE(this->m_rig.Program(u"Program\\d.src"), std::nullopt);
    EXPECT_EQ(files->ResolvePath(u"/R1/c.src"), u"");
    EXPECT_RAISES(ErrorNumber::LinkFailure, files->DeleteFile(u"", -1));
}

// ---- Programs and I/O ----

TYPED_TEST_P(LinkLibraryContract, CommandsReachTheControllerAsTheyAre) {
    const auto programs = this->Programs();
    const auto io = this->template Make<SyncIo>(kSyncIoId);
    programs->SelectProgram(u"/R1/MAIN", u"a=1", 0);
    programs->SelectProgram(u"/R1/OTHER", u"", -1);
    programs->StopProgram(1);
    programs->StopProgram(0);
    programs->CancelProgram(1);
    programs->CancelProgram(0);
    io->RestartIo(12, 2, 0);
    EXPECT_EQ(
        this->m_rig.Commands(),
        (std::vector<Text>{u"SelectProgram(/R1/MAIN, a=1, 0)", u"SelectProgram(/R1/OTHER, , -1)",
                           u"StopProgram(1)", u"StopProgram(0)", u"CancelProgram(1)",
                           u"CancelProgram(0)", u"RestartIo(12, 2, 0)"}));
}

// ---- Watches and messages ----

TYPED_TEST_P(LinkLibraryContract, AWatchReportsNewValuesUnderItsNumber) {
    this->m_rig.SetVariable(u"$A", u"0");
    this->m_rig.SetVariable(u"$B", u"0");
    RecordingVarCallback callback;
    const auto watches = this->template Make<AsyncVar>(kAsyncVarId);
    watches->InfoOn(callback, 7, u"$A", 200);
    watches->InfoOn(callback, 8, u"$B", 200);
    this->m_rig.SetVariable(u"$A", u"one");
    this->m_rig.SetVariable(u"$B", u"two");
    EXPECT_TRUE(this->m_rig.ServeUntil(
        [&] { return callback.HasReport(7, u"one") && callback.HasReport(8, u"two"); }));
    EXPECT_FALSE(callback.HasReport(7, u"two"));
    EXPECT_FALSE(callback.HasReport(8, u"one"));
}

TYPED_TEST_P(LinkLibraryContract, NothingIsReportedUntilEventsAreServed) {
    this->m_rig.SetVariable(u"$A", u"0");
    RecordingVarCallback callback;
    const auto watches = this->template Make<AsyncVar>(kAsyncVarId);
    watches->InfoOn(callback, 7, u"$A", 200);
    this->m_rig.SetVariable(u"$A", u"one");
    EXPECT_TRUE(callback.reports.empty());
    EXPECT_TRUE(this->m_rig.ServeUntil([&] { return callback.HasReport(7, u"one"); }));
}

TYPED_TEST_P(LinkLibraryContract, AStoppedWatchReportsNoMore) {
    this->m_rig.SetVariable(u"$A", u"0");
    this->m_rig.SetVariable(u"$B", u"0");
    RecordingVarCallback callback;
    const auto watches = this->template Make<AsyncVar>(kAsyncVarId);
    watches->InfoOn(callback, 7, u"$A", 200);
    watches->InfoOn(callback, 8, u"$B", 200);
    watches->InfoOff(7);
    this->m_rig.SetVariable(u"$A", u"one");
    this->m_rig.SetVariable(u"$B", u"two");  // behind the other, so that it would be there by now
    EXPECT_TRUE(this->m_rig.ServeUntil([&] { return callback.HasReport(8, u"two"); }));
    EXPECT_FALSE(callback.HasReport(7, u"one"));
}

TYPED_TEST_P(LinkLibraryContract, WatchesEndWithTheirObject) {
    this->m_rig.SetVariable(u"$A", u"0");
    RecordingVarCallback gone, staying;
    auto first = this->template Make<AsyncVar>(kAsyncVarId);
    const auto second = this->template Make<AsyncVar>(kAsyncVarId);
    first->InfoOn(gone, 7, u"$A", 200);
    second->InfoOn(staying, 7, u"$A", 200);
    first.reset();
    this->m_rig.SetVariable(u"$A", u"one");
    EXPECT_TRUE(this->m_rig.ServeUntil([&] { return staying.HasReport(7, u"one"); }));
    EXPECT_TRUE(gone.reports.empty());
}

TYPED_TEST_P(LinkLibraryContract, AMessageReachesTheConsumerThatTheLibraryKeeps) {
    MessageRecord message;
    message.nMessageHandle = 7;
    message.eMessageType = 2;
    message.bDBCause = true;
    message.bstrCause = u"T\u00FCr";
    message.bstrDBMessage = u"m";
    message.bstrDBModule = u"Mod";
    message.nBiasTimeStamp = -60;
    message.nHighTimeStamp = 2;
    message.nLowTimeStamp = 1;
    message.nMessage = 3;
    message.varParams = LinkArray{1, {u"p", u""}};
    const auto advise = this->template Make<AdviseMessage>(kAdviseMessageId);
    auto consumer = std::make_shared<RecordingConsumer>();
    const std::weak_ptr<RecordingConsumer> kept = consumer;
    advise->Advise(std::move(consumer), 311);
    ASSERT_FALSE(kept.expired());
    this->m_rig.SendMessage(message);
    const auto consumerAgain = kept.lock();
    ASSERT_TRUE(this->m_rig.ServeUntil([&] { return !consumerAgain->messages.empty(); }));
    EXPECT_EQ(consumerAgain->messages, (std::vector<MessageRecord>{message}));
}

TYPED_TEST_P(LinkLibraryContract, TheAdviseObjectConfirmsMessagesToo) {
    const auto advise = this->template Make<AdviseMessage>(kAdviseMessageId);
    auto* confirm = dynamic_cast<ConfirmMessage*>(advise.get());
    ASSERT_NE(confirm, nullptr);
    SilentErrorCallback callback;
    EXPECT_NO_THROW(confirm->ConfirmAllMessages(callback, 0, 0));
}

// ---- Failures ----

TYPED_TEST_P(LinkLibraryContract, AFailureLeavesARecordWithItsObject) {
    const auto variables = this->Variables();
    EXPECT_RAISES(ErrorNumber::LinkFailure, variables->ReadVar(u"$NONE"));
    EXPECT_NE(variables->GetLastErrorRecord(), MessageRecord{});

    const auto files = this->Files();
    EXPECT_RAISES(ErrorNumber::LinkFailure, files->CopyFile(u"", u"", this->kFromController));
    EXPECT_NE(files->GetLastErrorRecord(), MessageRecord{});
}

TYPED_TEST_P(LinkLibraryContract, ARecordStaysWhenAnotherObjectFails) {
    const auto variables = this->Variables();
    EXPECT_RAISES(ErrorNumber::LinkFailure, variables->ReadVar(u"$NONE"));
    const MessageRecord record = variables->GetLastErrorRecord();
    const auto files = this->Files();
    EXPECT_RAISES(ErrorNumber::LinkFailure, files->CopyFile(u"", u"", this->kFromController));
    EXPECT_EQ(variables->GetLastErrorRecord(), record);
}

TYPED_TEST_P(LinkLibraryContract, WorkGoesOnBehindAFailure) {
    this->m_rig.SetVariable(u"$A", u"1");
    const auto variables = this->Variables();
    EXPECT_RAISES(ErrorNumber::LinkFailure, variables->ReadVar(u"$NONE"));
    EXPECT_EQ(variables->ReadVar(u"$A"), u"1");
}

REGISTER_TYPED_TEST_SUITE_P(
    LinkLibraryContract, FactoryMakesEachClass, UnknownClassFails,
    NoObjectComesWithoutTheMiddleware, ObjectsOutliveTheirFactory,
    VariablesAreReadAsTheControllerWritesThem, AWrittenVariableIsTheControllers,
    ADirectoryListsItsFiles, APathOfADirectoryNeedsNoBackslashAtItsEnd,
    TheMaskOfAStarAndAPointListsDirectories, ALookUpFindsAFileWhereverItLies,
    ALookUpOfWhatIsNotThereGivesNothing, AFileIsCopiedToTheController,
    AFileIsCopiedFromTheController, ACopyGoesBackToWhereTheFileWas, ACopyReplacesWhatLiesOnTheDisk,
    ACopyWithoutPathsOrFilesFails, AFileComesFromMemoryAndGoesThere, ADeletedFileIsGone,
    CommandsReachTheControllerAsTheyAre, AWatchReportsNewValuesUnderItsNumber,
    NothingIsReportedUntilEventsAreServed, AStoppedWatchReportsNoMore, WatchesEndWithTheirObject,
    AMessageReachesTheConsumerThatTheLibraryKeeps, TheAdviseObjectConfirmsMessagesToo,
    AFailureLeavesARecordWithItsObject, ARecordStaysWhenAnotherObjectFails,
    WorkGoesOnBehindAFailure);

}  // namespace nomira::testing
