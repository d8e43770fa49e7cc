// A display that nobody sees, for tests with windows: the X server Xvfb on a number that it picks
// itself. While the object lives, this process and its children find it as their display.
#pragma once

#include <signal.h>
#include <stdlib.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <stdexcept>
#include <string>

namespace nomira::testing {

class VirtualDisplay {
  public:
    VirtualDisplay() {
        std::array<int, 2> pipe{};
        if (::pipe(pipe.data()) != 0) throw std::runtime_error("no pipe");
        m_nServer = fork();
        if (m_nServer < 0) throw std::runtime_error("no process");
        if (m_nServer == 0) Serve(pipe);
        ::close(pipe[1]);
        m_sName = ":" + ReadLine(pipe[0]);
        ::close(pipe[0]);
        if (m_sName == ":") throw std::runtime_error("Xvfb did not start");
        setenv("DISPLAY", m_sName.c_str(), 1);
        setenv("GDK_BACKEND", "x11", 1);
        // No session of a user is asked for anything.
        setenv("NO_AT_BRIDGE", "1", 1);
        setenv("GTK_THEME", "Adwaita", 1);
        setenv("GSETTINGS_BACKEND", "memory", 1);
        unsetenv("WAYLAND_DISPLAY");
    }
    ~VirtualDisplay() {
        ::kill(m_nServer, SIGTERM);
        ::waitpid(m_nServer, nullptr, 0);
    }
    VirtualDisplay(const VirtualDisplay&) = delete;
    VirtualDisplay& operator=(const VirtualDisplay&) = delete;

    const std::string& Name() const { return m_sName; }

  private:
    [[noreturn]] static void Serve(const std::array<int, 2>& pipe) {
        prctl(PR_SET_PDEATHSIG, SIGTERM);
        ::close(pipe[0]);
        const std::string sPipe = std::to_string(pipe[1]);
        execlp("Xvfb", "Xvfb", "-displayfd", sPipe.c_str(), "-screen", "0", "1280x1024x24",
               "-nolisten", "tcp", "-noreset", nullptr);
        _exit(127);
    }
    static std::string ReadLine(int nDescriptor) {
        std::string sLine;
        char c = 0;
        while (::read(nDescriptor, &c, 1) == 1 && c != '\n')
            sLine += c;
        return sLine;
    }

    pid_t m_nServer = -1;
    std::string m_sName;
};

}  // namespace nomira::testing
