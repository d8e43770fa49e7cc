// Runs a program on a terminal of its own, as a user would see it.
#pragma once

#include <pty.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <vector>

#include "testing/RunProcess.h"

namespace nomira::testing {

class TerminalRun {
  public:
    // A line for the shell, on a terminal of 80 columns.
    TerminalRun(const std::string& sLine, const Environment& environment) {
        const winsize size{.ws_row = 25, .ws_col = 80, .ws_xpixel = 0, .ws_ypixel = 0};
        m_nChild = forkpty(&m_nTerminal, nullptr, nullptr, &size);
        if (m_nChild < 0) throw std::runtime_error("no terminal");
        if (m_nChild > 0) return;
        for (const auto& [sName, sValue] : environment)
            setenv(sName.c_str(), sValue.c_str(), 1);
        execl("/bin/sh", "sh", "-c", sLine.c_str(), nullptr);
        _exit(127);
    }
    ~TerminalRun() {
        if (m_nTerminal >= 0) close(m_nTerminal);
        if (m_nChild <= 0) return;
        kill(m_nChild, SIGKILL);
        waitpid(m_nChild, nullptr, 0);
    }
    TerminalRun(const TerminalRun&) = delete;
    TerminalRun& operator=(const TerminalRun&) = delete;

    // Types; Ctrl-C is "\x03".
    void Type(const std::string& sKeys) const {
        if (write(m_nTerminal, sKeys.data(), sKeys.size()) < 0)
            throw std::runtime_error("the terminal is gone");
    }
    bool HasEnded() const {
        siginfo_t info{};
        return waitid(P_PID, static_cast<id_t>(m_nChild), &info, WEXITED | WNOHANG | WNOWAIT) !=
                   0 ||
               info.si_pid != 0;
    }
    // Waits until this has come onto the screen; false if the program has ended before.
    bool Await(const std::string& sPart) {
        while (m_sSeen.find(sPart) == std::string::npos)
            if (!ReadMore()) return false;
        return true;
    }
    // Waits for the end. The status is the exit status, or 128 and the signal's number.
    int Finish() {
        while (ReadMore()) {
        }
        int nState = 0;
        waitpid(m_nChild, &nState, 0);
        m_nChild = 0;
        return WIFEXITED(nState) ? WEXITSTATUS(nState) : 128 + WTERMSIG(nState);
    }
    // All bytes that have come so far.
    const std::string& Seen() const { return m_sSeen; }
    // The rows that are on the screen in the end, blanks at their ends cut.
    std::vector<std::string> Rows() const {
        std::vector<std::string> rows(1);
        std::size_t nColumn = 0;
        for (const char c : m_sSeen) {
            if (c == '\n') {
                rows.emplace_back();
                nColumn = 0;
            } else if (c == '\r') {
                nColumn = 0;
            } else {
                if (nColumn == rows.back().size()) rows.back() += ' ';
                rows.back()[nColumn++] = c;
            }
        }
        for (std::string& sRow : rows)
            sRow.resize(sRow.find_last_not_of(' ') + 1);
        return rows;
    }

  private:
    bool ReadMore() {
        std::array<char, 4096> buffer;
        ssize_t nRead;
        do {
            nRead = read(m_nTerminal, buffer.data(), buffer.size());
        } while (nRead < 0 && errno == EINTR);
        if (nRead <= 0) return false;  // a terminal that nobody holds any more gives an error
        m_sSeen.append(buffer.data(), static_cast<std::size_t>(nRead));
        return true;
    }

    int m_nTerminal = -1;
    pid_t m_nChild = 0;
    std::string m_sSeen;
};

}  // namespace nomira::testing
