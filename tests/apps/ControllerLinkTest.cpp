#include "apps/nomiractl/ControllerLink.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "adapters/memory/MemoryMachine.h"
#include "adapters/memory/ScriptedLinkLibrary.h"
#include "apps/nomiractl/Refusal.h"
#include "link/cVexonComm.h"
#include "testing/TextPrinting.h"

namespace nomira::companion {
namespace {

using Texts = std::vector<Text>;

class ControllerLinkTest : public ::testing::Test {
  protected:
    ControllerLinkTest() { SetLinkLibrary(&m_library); }
    ~ControllerLinkTest() override {
        g_Comm().ExitVexonComm();
        SetLinkLibrary(nullptr);
    }

    // The words of the refusal; empty without one.
    static std::string WordsOf(const std::function<void()>& work) {
        try {
            work();
        } catch (const Refusal& refusal) {
            return refusal.what();
        }
        return {};
    }
    static bool Contains(const std::string& sText, const std::string& sPart) {
        return sText.find(sPart) != std::string::npos;
    }
    Texts CallsOf(TextView sOperation) const {
        Texts calls;
        for (const Text& sCall : m_library.calls)
            if (sCall.starts_with(sOperation)) calls.push_back(sCall);
        return calls;
    }
    std::size_t Connections() const {
        return CallsOf(u"CreateLinkObject(LNK_TqxLib.SyncVar").size();
    }

    memory::MemoryMachine m_machine;
    memory::ScriptedLinkLibrary m_library{m_machine.files};
};

TEST_F(ControllerLinkTest, EndsWithTheCommand) {
    {
        const ControllerLink link("/run/s");
        EXPECT_TRUE(g_Comm().IsVexonConnected());
    }
    EXPECT_FALSE(g_Comm().IsVexonConnected());
}

TEST_F(ControllerLinkTest, NobodyThereIsARefusalWithTheRemedy) {
    for (bool* pMissing : {&m_library.bMiddlewareRuns, &m_library.bInstalled}) {
        *pMissing = false;
        const std::string sWords = WordsOf([] { const ControllerLink link("/run/s"); });
        EXPECT_TRUE(Contains(sWords, "/run/s")) << sWords;
        EXPECT_TRUE(Contains(sWords, "start its middleware")) << sWords;
        EXPECT_TRUE(Contains(sWords, "vexon3.exe")) << sWords;
    }
}

TEST_F(ControllerLinkTest, ListsWithTheMasksOfTheLink) {
    m_library.listings[u"TQX:\\\\R1\\Program\\"] = {u"a.src", u"b.dat"};
    m_library.listings[u"TQX:\\\\R1\\*."] = {u"Program"};
    ControllerLink link("/run/s");
    EXPECT_EQ(link.Files(u"R1\\Program"), (Texts{u"a.src", u"b.dat"}));
    EXPECT_EQ(link.Directories(u"R1"), (Texts{u"Program"}));
    m_library.Fail(u"ListDirectory");
    EXPECT_TRUE(Contains(WordsOf([&] { link.Files(u"R1"); }), "can't be listed"));
}

// The controller in memory has no file of this system's to copy; what it is asked for counts.
TEST_F(ControllerLinkTest, SendsToTheTargetBehindABar) {
    ControllerLink link("/run/s");
    WordsOf([&] { link.Send("/disk/x.src", u"TQX:\\R1\\Program\\y.src"); });
    WordsOf([&] { link.Send("/disk/x.src"); });
    EXPECT_EQ(CallsOf(u"CopyFile"), (Texts{u"CopyFile(/disk/x.src, TQX:\\R1\\Program\\y.src, 64)",
                                           u"CopyFile(/disk/x.src, TQX:\\R1\\x.src, 64)"}));
}

TEST_F(ControllerLinkTest, FetchesIntoTheFolder) {
    m_library.PutFile(u"TQX:\\R1\\Program\\x.src", "x");
    ControllerLink link("/run/s");
    WordsOf([&] { link.Fetch(u"x.src", "/disk"); });
    EXPECT_EQ(CallsOf(u"CopyFile"),
              (Texts{u"CopyFile(TQX:\\R1\\Program\\x.src, /disk\\x.src, 4160)"}));
}

TEST_F(ControllerLinkTest, NamesThatTheLinkWouldTakeForSomethingElseNeverReachIt) {
    ControllerLink link("/run/s");
    for (const TextView sName :
         {u"", u"x", u"..", u"R1\\x.src", u"../x.src", u"C:x.src", u"*.src", u"a|b.src"})
        EXPECT_TRUE(Contains(WordsOf([&] { link.Fetch(sName, "/disk"); }), "no program's name"));
    for (const char* sFile : {"/disk/x|y.src", "/disk/*.src", "/a?b/x.src"})
        EXPECT_TRUE(Contains(WordsOf([&] { link.Send(sFile); }), "| * ?")) << sFile;
    EXPECT_TRUE(Contains(WordsOf([&] { link.Send("/disk/x"); }), "no program's name"));
    EXPECT_TRUE(Contains(WordsOf([&] { link.Send("/disk/x\\y.src"); }), "backslash"));
    for (const TextView sTarget : {u"TQX:", u"TQX:\\", u"TQX:x.src", u"TQX:\\R1\\..\\x.src",
                                   u"TQX:\\R1\\a|b.src", u"C:\\x.src"})
        EXPECT_TRUE(Contains(WordsOf([&] { link.Send("/disk/x.src", sTarget); }),
                             "no path of the controller"));
    EXPECT_EQ(CallsOf(u"ResolvePath"), Texts{});
    EXPECT_EQ(CallsOf(u"CopyFile"), Texts{});
}

TEST_F(ControllerLinkTest, AFailureIsToldWithTheLinksDetail) {
    ControllerLink link("/run/s");
    m_library.Fail(u"ReadVar", memory::ScriptedLinkLibrary::FailureRecord(u"no\nrights"));
    const std::string sWords = WordsOf([&] { link.Read(u"$X"); });
    EXPECT_TRUE(Contains(sWords, "can't be read: Error: bDBCause=False , bstrCause=no?rights"))
        << sWords;
}

TEST_F(ControllerLinkTest, AVeryLongDetailIsCut) {
    ControllerLink link("/run/s");
    m_library.Fail(u"ReadVar", memory::ScriptedLinkLibrary::FailureRecord(Text(5000, u'x')));
    const std::string sWords = WordsOf([&] { link.Read(u"$X"); });
    EXPECT_LT(sWords.size(), 1100U);
    EXPECT_TRUE(sWords.ends_with("xxx...")) << sWords;
}

// The link itself keeps the last detail where there is no new one.
TEST_F(ControllerLinkTest, AnEarlierDetailIsNotToldAgain) {
    ControllerLink link("/run/s");
    m_library.Fail(u"ReadVar($X", memory::ScriptedLinkLibrary::FailureRecord(u"first"));
    m_library.Fail(u"ReadVar($Y", {});
    EXPECT_TRUE(Contains(WordsOf([&] { link.Read(u"$X"); }), "first"));
    EXPECT_EQ(WordsOf([&] { link.Read(u"$Y"); }), "can't be read, and the link gives no reason");
}

TEST_F(ControllerLinkTest, AFailureLeavesANewLinkBehindIt) {
    m_library.SetVariable(u"$X", u"1");
    ControllerLink link("/run/s");
    m_library.Fail(u"ReadVar");
    EXPECT_NE(WordsOf([&] { link.Read(u"$X"); }), "");
    EXPECT_EQ(Connections(), 2U);
    m_library.ClearFailures();
    EXPECT_EQ(link.Read(u"$X"), u"1");
    EXPECT_EQ(Connections(), 2U);
}

TEST_F(ControllerLinkTest, AControllerThatGoesAndComesBackIsFoundAgain) {
    m_library.SetVariable(u"$X", u"1");
    ControllerLink link("/run/s");
    m_library.bMiddlewareRuns = false;
    m_library.Fail(u"ReadVar");
    EXPECT_TRUE(Contains(WordsOf([&] { link.Read(u"$X"); }), "can't be read"));
    EXPECT_TRUE(Contains(WordsOf([&] { link.Read(u"$X"); }), "no controller answers"));
    m_library.bMiddlewareRuns = true;
    m_library.ClearFailures();
    EXPECT_EQ(link.Read(u"$X"), u"1");
}

TEST_F(ControllerLinkTest, VariablesAreNamedInAnyCase) {
    m_library.SetVariable(u"$X", u"1");
    ControllerLink link("/run/s");
    link.Write(u"$x", u"a = b");
    EXPECT_EQ(m_library.Variable(u"$X"), u"a = b");
    EXPECT_EQ(link.Read(u"$x"), u"a = b");
}

TEST(ControllerDirectoryTest, EveryWayToWriteOneIsUnderstood) {
    for (const char* sRoot : {"", "R1", "r1", "\\R1\\", "/R1/", "TQX:\\R1", "tqx:\\r1\\", "TQX:"})
        EXPECT_EQ(ControllerDirectory(sRoot), u"R1") << sRoot;
    for (const char* sProgram : {"Program", "Program\\", "R1\\Program", "R1/Program",
                                 "TQX:\\R1\\Program\\", "/R1/Program/"})
        EXPECT_EQ(ControllerDirectory(sProgram), u"R1\\Program") << sProgram;
    EXPECT_EQ(ControllerDirectory("R1\\a\\b"), u"R1\\a\\b");
    EXPECT_EQ(ControllerDirectory("R10"), u"R1\\R10");
}

TEST(ControllerDirectoryTest, WhatIsNoneIsRefused) {
    for (const char* sNone : {"..", "R1\\..", "a\\\\b", "C:\\x", "*", "R1\\*.", "a|b"})
        EXPECT_THROW(ControllerDirectory(sNone), Refusal) << sNone;
}

}  // namespace
}  // namespace nomira::companion
