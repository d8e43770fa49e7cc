#include "adapters/posix/PosixDesktop.h"

#include <signal.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <string>

#include "testing/TemporaryFolder.h"
#include "testing/TextPrinting.h"

namespace nomira::posix {
namespace {

namespace fs = std::filesystem;
using nomira::testing::TemporaryFolder;

// A first instance in a process of its own, with one window; it lives until it is ended.
class OtherProcess {
  public:
    OtherProcess(const fs::path& folder, TextView sTitle) {
        int ends[2];
        if (::pipe(ends) != 0) throw std::runtime_error("no pipe");
        m_nId = ::fork();
        if (m_nId == 0) RunChild(folder, sTitle, ends[1]);
        ::close(ends[1]);
        char cReady = 0;
        m_bReady = ::read(ends[0], &cReady, 1) == 1;
        ::close(ends[0]);
    }
    ~OtherProcess() { End(); }
    OtherProcess(const OtherProcess&) = delete;
    OtherProcess& operator=(const OtherProcess&) = delete;

    bool IsReady() const { return m_bReady; }
    void End() {
        if (m_nId <= 0) return;
        ::kill(m_nId, SIGKILL);
        ::waitpid(m_nId, nullptr, 0);
        m_nId = 0;
    }

  private:
    [[noreturn]] static void RunChild(const fs::path& folder, TextView sTitle, int nReady) {
        PosixDesktop desktop(folder);
        if (desktop.PreviousInstance()) ::_exit(1);
        desktop.AnnounceWindow(sTitle);
        if (::write(nReady, "x", 1) != 1) ::_exit(1);
        ::close(nReady);
        for (;;)
            ::pause();
    }

    pid_t m_nId = 0;
    bool m_bReady = false;
};

TEST(PosixDesktopTest, AnotherProcessHoldsTheLockUntilItDies) {
    TemporaryFolder folder;
    OtherProcess other(folder.Path(), u"Nomira");
    ASSERT_TRUE(other.IsReady());
    PosixDesktop desktop(folder.Path());
    EXPECT_TRUE(desktop.PreviousInstance());
    EXPECT_TRUE(desktop.FindWindow(u"Nomira"));
    other.End();
    EXPECT_EQ(desktop.FindWindow(u"Nomira"), std::nullopt);
    EXPECT_FALSE(desktop.PreviousInstance());
    EXPECT_EQ(desktop.FindWindow(u"Nomira"), std::nullopt);
}

TEST(PosixDesktopTest, WhatAKilledInstanceLeavesIsTakenOver) {
    TemporaryFolder folder;
    OtherProcess(folder.Path(), u"Nomira").End();
    ASSERT_TRUE(fs::exists(folder / ".instance.sock"));
    PosixDesktop first(folder.Path()), second(folder.Path());
    EXPECT_FALSE(first.PreviousInstance());
    second.ActivateByTitle(u"Nomira");
    EXPECT_EQ(first.TakeRequests(),
              (std::vector<WindowRequest>{{WindowRequest::Kind::Activate, u"Nomira"}}));
}

TEST(PosixDesktopTest, TheLockMakesTheFolder) {
    TemporaryFolder folder;
    PosixDesktop desktop(folder / "deep/prefix");
    EXPECT_FALSE(desktop.PreviousInstance());
    EXPECT_TRUE(fs::exists(folder / "deep/prefix/.instance.lock"));
}

TEST(PosixDesktopTest, WhereNoLockCanBeMadeThereIsNoPreviousInstance) {
    TemporaryFolder folder;
    folder.Put("file", "");
    PosixDesktop desktop(folder / "file/prefix");
    EXPECT_FALSE(desktop.PreviousInstance());
    desktop.ActivateByTitle(u"Nomira");
    EXPECT_EQ(desktop.FindWindow(u"Nomira"), std::nullopt);
}

TEST(PosixDesktopTest, AnInstanceThatEndsMakesRoomForTheNext) {
    TemporaryFolder folder;
    {
        PosixDesktop first(folder.Path());
        EXPECT_FALSE(first.PreviousInstance());
    }
    EXPECT_FALSE(fs::exists(folder / ".instance.sock"));
    PosixDesktop next(folder.Path());
    EXPECT_FALSE(next.PreviousInstance());
}

TEST(PosixDesktopTest, ASecondInstanceThatEndsLeavesTheFirstReachable) {
    TemporaryFolder folder;
    PosixDesktop first(folder.Path());
    ASSERT_FALSE(first.PreviousInstance());
    {
        PosixDesktop second(folder.Path());
        EXPECT_TRUE(second.PreviousInstance());
    }
    PosixDesktop third(folder.Path());
    third.ActivateByTitle(u"x");
    EXPECT_EQ(first.TakeRequests().size(), 1U);
}

TEST(PosixDesktopTest, ThePrefixMayLieDeeperThanASocketsNameReaches) {
    TemporaryFolder folder;
    const fs::path deep = folder.Path() / std::string(100, 'a') / std::string(100, 'b');
    PosixDesktop first(deep), second(deep);
    ASSERT_FALSE(first.PreviousInstance());
    first.AnnounceWindow(u"Nomira");
    second.ActivateByTitle(u"Nomira");
    const auto window = second.FindWindow(u"Nomira");
    ASSERT_TRUE(window);
    second.BringWindowToTop(*window);
    using Kind = WindowRequest::Kind;
    EXPECT_EQ(first.TakeRequests(),
              (std::vector<WindowRequest>{{Kind::Activate, u"Nomira"}, {Kind::Raise, u"Nomira"}}));
    EXPECT_TRUE(first.TakeRequests().empty());
}

TEST(PosixDesktopTest, WindowsAnnouncedBeforeTheLockAreFoundToo) {
    TemporaryFolder folder;
    PosixDesktop first(folder.Path()), second(folder.Path());
    first.AnnounceWindow(u"A");
    ASSERT_FALSE(first.PreviousInstance());
    EXPECT_TRUE(second.FindWindow(u"A"));
    EXPECT_TRUE(first.FindWindow(u"A"));
}

TEST(PosixDesktopTest, WhatIsNoRequestIsPassedOver) {
    TemporaryFolder folder;
    PosixDesktop first(folder.Path()), second(folder.Path());
    ASSERT_FALSE(first.PreviousInstance());
    const Descriptor socket(::socket(AF_UNIX, SOCK_DGRAM, 0));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, (folder / ".instance.sock").c_str(),
                 sizeof address.sun_path - 1);
    for (const std::string_view bytes : {"rubbish", "", "activate"}) {
        ASSERT_EQ(::sendto(socket.Get(), bytes.data(), bytes.size(), 0,
                           reinterpret_cast<const sockaddr*>(&address), sizeof address),
                  static_cast<ssize_t>(bytes.size()));
    }
    second.ActivateByTitle(u"");
    EXPECT_EQ(first.TakeRequests(),
              (std::vector<WindowRequest>{{WindowRequest::Kind::Activate, u""}}));
}

TEST(PosixDesktopTest, ABoxIsALineOnTheErrorStream) {
    TemporaryFolder folder;
    std::FILE* errors = std::tmpfile();
    PosixDesktop desktop(folder.Path(), errors);
    desktop.ShowMessageBox(u"Run-time error '53':\r\n\r\nFile not found", u"Nomira", BoxIcon::None);
    desktop.ShowMessageBox(u"x", u"", BoxIcon::None);
    // Written already, not only held by the stream.
    struct stat status;
    ASSERT_EQ(::fstat(::fileno(errors), &status), 0);
    const std::string sExpected = "Nomira: Run-time error '53':\n\nFile not found\nNomira: x\n";
    EXPECT_EQ(status.st_size, static_cast<off_t>(sExpected.size()));
    std::rewind(errors);
    std::string sWritten(sExpected.size(), ' ');
    EXPECT_EQ(std::fread(sWritten.data(), 1, sWritten.size(), errors), sWritten.size());
    EXPECT_EQ(sWritten, sExpected);
    std::fclose(errors);
}

}  // namespace
}  // namespace nomira::posix
