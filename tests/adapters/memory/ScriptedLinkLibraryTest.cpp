#include "adapters/memory/ScriptedLinkLibrary.h"

#include "langtools/RuntimeError.h"
#include "testing/Raised.h"
#include "testing/TextPrinting.h"

namespace nomira::memory {
namespace {

using nomira::testing::Raised;
using Texts = std::vector<Text>;

class ScriptedLinkLibraryTest : public ::testing::Test {
  protected:
    MemoryFiles disk;
    ScriptedLinkLibrary library{disk};
};

TEST_F(ScriptedLinkLibraryTest, WritesDownCallsAndReleases) {
    library.SetVariable(u"$A", u"1");
    {
        const auto factory = library.CreateFactory();
        const auto object = factory->CreateLinkObject(kSyncVarId, u"Form");
        dynamic_cast<SyncVar&>(*object).WriteVar(u"$A", u"2");
        object->GetLastErrorRecord();
    }
    EXPECT_EQ(library.calls,
              (Texts{u"CreateFactory()", u"CreateLinkObject(LNK_TqxLib.SyncVar, Form)",
                     u"WriteVar($A, 2)", u"GetLastErrorRecord(LNK_TqxLib.SyncVar)",
                     u"Release(LNK_TqxLib.SyncVar)", u"Release(factory)"}));
}

TEST_F(ScriptedLinkLibraryTest, FailsTheCallsThatBeginAsTold) {
    const auto factory = library.CreateFactory();
    library.Fail(u"CreateLinkObject(LNK_TqxLib.SyncIo");
    EXPECT_EQ(Raised([&] { factory->CreateLinkObject(kSyncIoId, u"Form"); }),
              ErrorNumber::LinkFailure);
    const auto object = factory->CreateLinkObject(kSyncSelectId, u"Form");
    auto& programs = dynamic_cast<SyncSelect&>(*object);
    library.Fail(u"StopProgram(1)", ScriptedLinkLibrary::FailureRecord(u"stuck"));
    EXPECT_EQ(Raised([&] { programs.StopProgram(0); }), std::nullopt);
    EXPECT_EQ(Raised([&] { programs.StopProgram(1); }), ErrorNumber::LinkFailure);
    EXPECT_EQ(programs.GetLastErrorRecord(), ScriptedLinkLibrary::FailureRecord(u"stuck"));
    library.ClearFailures();
    EXPECT_EQ(Raised([&] { programs.StopProgram(1); }), std::nullopt);
}

TEST_F(ScriptedLinkLibraryTest, AnswersToAPathAsItIsAskedFor) {
    library.PutFile(u"TQX:\\R1\\a.src", "x");
    library.listings[u"TQX:\\\\R1\\"] = {u"told"};
    library.lookUps[u"/R1/a.src"] = u"told as well";
    const auto object = library.CreateFactory()->CreateLinkObject(kSyncFileId, u"Form");
    auto& files = dynamic_cast<SyncFile&>(*object);
    EXPECT_EQ(files.ListDirectory(u"TQX:\\\\R1\\", 0, 5), Texts{u"told"});
    EXPECT_EQ(files.ListDirectory(u"TQX:\\R1\\", 0, 5), Texts{u"a.src"});
    EXPECT_EQ(files.ResolvePath(u"/R1/a.src"), u"told as well");
    EXPECT_EQ(files.ResolvePath(u"/R1/A.SRC"), u"TQX:\\R1\\a.src");
}

TEST_F(ScriptedLinkLibraryTest, MayBeMissingOnTheMachine) {
    library.bInstalled = false;
    EXPECT_EQ(Raised([&] { library.CreateFactory(); }), ErrorNumber::CannotCreateObject);
}

TEST_F(ScriptedLinkLibraryTest, ConsumersGoWithTheirSubscription) {
    class Consumer : public IVOConsumeMessage {
        void OnAddMessage(const MessageRecord&) override {}
        void OnAddDialog(const MessageRecord&) override {}
        void OnSubMessage(std::int32_t) override {}
    };
    auto object = library.CreateFactory()->CreateLinkObject(kAdviseMessageId, u"Form");
    dynamic_cast<AdviseMessage&>(*object).Advise(std::make_shared<Consumer>(), 311);
    EXPECT_EQ(library.consumers.size(), 1U);
    object.reset();
    EXPECT_TRUE(library.consumers.empty());
}

}  // namespace
}  // namespace nomira::memory
