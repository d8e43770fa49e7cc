#include "frame/entry/RunProgram.h"

#include <stdexcept>

#include "adapters/memory/MemoryMachine.h"
#include "langtools/ProgramEnd.h"
#include "langtools/RuntimeError.h"
#include "testing/ForwardingPorts.h"
#include "testing/TextPrinting.h"
#include "testing/UnavailableEngine.h"
#include "ui/formlayer/FormLayer.h"

namespace nomira {
namespace {

using memory::MessageBoxShown;

class RunProgramTest : public ::testing::Test {
  protected:
    memory::MemoryMachine machine;
    testing::UnavailableEngine engine;
};

TEST_F(RunProgramTest, ADoneRunGivesNought) {
    for (const TextView sCommandLine :
         {u"word", u"word|", u"TEXT_INTO_DB|x|C:\\missing.txt", u"TEXT_INTO_DB|x", u""}) {
        machine.UseCommandLine(Text(sCommandLine));
        EXPECT_EQ(RunProgram(), 0) << testing::Printable(sCommandLine);
    }
}

TEST_F(RunProgramTest, ARunTimeFailureShowsTheBoxAndGivesOne) {
    machine.files.PutDirectory(u"C:\\R1");
    machine.UseCommandLine(u"UPDATE_USERFILES|one|C:\\R1\\prog.src");
    EXPECT_EQ(RunProgram(), 1);
    EXPECT_EQ(machine.desktop.boxes,
              (std::vector<MessageBoxShown>{{u"Run-time error '75':\r\n\r\nPath/File access error",
                                             u"Nomira", BoxIcon::None}}));
}

TEST_F(RunProgramTest, AFailingStartShowsTheBoxToo) {
    machine.registry.SetString(RegistryRoot::CurrentUser, u"Software\\Orvo\\Database", u"Language",
                               u"German");
    EXPECT_EQ(RunProgram(), 1);
    ASSERT_EQ(machine.desktop.boxes.size(), 1U);
    EXPECT_EQ(machine.desktop.boxes[0].sText, u"Run-time error '13':\r\n\r\nType mismatch");
    EXPECT_FALSE(AnyFormVisible());
}

TEST_F(RunProgramTest, AFormOnTheScreenIsServedUntilTheLoopEnds) {
    memory::RecordingView view;
    SetView(&view);
    bool bShown = false;
    view.onEventLoop = [&] { bShown = AnyFormVisible(); };
    EXPECT_EQ(RunProgram(), 0);
    EXPECT_TRUE(bShown);
    EXPECT_EQ(view.Count(memory::ViewEvent::Kind::EventLoop), 1);
}

TEST_F(RunProgramTest, ABatchRunHasNoEventLoop) {
    memory::RecordingView view;
    SetView(&view);
    machine.UseCommandLine(u"word|");
    EXPECT_EQ(RunProgram(), 0);
    EXPECT_EQ(view.Count(memory::ViewEvent::Kind::EventLoop), 0);
}

TEST_F(RunProgramTest, AFailureOfAHandlerShowsTheBox) {
    memory::RecordingView view;
    SetView(&view);
    view.onEventLoop = [] { Raise(ErrorNumber::PathNotFound); };
    EXPECT_EQ(RunProgram(), 1);
    ASSERT_EQ(machine.desktop.boxes.size(), 1U);
    EXPECT_EQ(machine.desktop.boxes[0].sText, u"Run-time error '76':\r\n\r\nPath not found");
}

TEST_F(RunProgramTest, TheOperatorEndsTheProgramWithoutAWord) {
    memory::RecordingView view;
    SetView(&view);
    view.onEventLoop = [] { EndProgram(); };
    EXPECT_EQ(RunProgram(), 0);
    EXPECT_TRUE(machine.desktop.boxes.empty());
}

TEST_F(RunProgramTest, OtherFailuresPass) {
    class Broken : public testing::ForwardingRegistry {
      public:
        using ForwardingRegistry::ForwardingRegistry;
        std::int32_t OpenKey(RegistryRoot, TextView, KeyHandle&) override {
            throw std::runtime_error("the registry's file is broken");
        }
    };
    Broken registry(machine.registry);
    Platform platform = testing::PortsOf(machine);
    platform.registry = &registry;
    SetPlatform(platform);
    EXPECT_THROW(RunProgram(), std::runtime_error);
    EXPECT_TRUE(machine.desktop.boxes.empty());
}

}  // namespace
}  // namespace nomira
