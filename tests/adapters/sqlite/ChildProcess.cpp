#include "adapters/sqlite/ChildProcess.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <stdexcept>

namespace nomira::testing {
namespace {

std::array<int, 2> Pipe() {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
    return ends;
}

bool WriteByte(int nFile, char c) {
    return ::write(nFile, &c, 1) == 1;
}

}  // namespace

void ChildProcess::Line::Say(char c) const {
    if (!WriteByte(m_nOut, c)) ::_exit(2);
}

bool ChildProcess::Line::Hear() const {
    char c = 0;
    return ::read(m_nIn, &c, 1) == 1;
}

ChildProcess::ChildProcess(const std::function<void(const Line&)>& routine) {
    const std::array<int, 2> toChild = Pipe();
    const std::array<int, 2> fromChild = Pipe();
    m_nProcess = ::fork();
    if (m_nProcess < 0) throw std::runtime_error("no process");
    if (m_nProcess == 0) {
        ::close(toChild[1]);
        ::close(fromChild[0]);
        try {
            routine(Line(toChild[0], fromChild[1]));
        } catch (...) {
            ::_exit(1);
        }
        ::_exit(0);
    }
    ::close(toChild[0]);
    ::close(fromChild[1]);
    m_nOut = toChild[1];
    m_nIn = fromChild[0];
}

ChildProcess::~ChildProcess() {
    Kill();
    ::close(m_nIn);
    ::close(m_nOut);
}

void ChildProcess::Say() const {
    WriteByte(m_nOut, '.');
}

char ChildProcess::Hear() const {
    char c = 0;
    return ::read(m_nIn, &c, 1) == 1 ? c : '\0';
}

void ChildProcess::Kill() {
    if (m_nProcess < 0) return;
    ::kill(m_nProcess, SIGKILL);
    Join();
}

bool ChildProcess::Join() {
    int nStatus = 0;
    ::waitpid(m_nProcess, &nStatus, 0);
    m_nProcess = -1;
    return WIFEXITED(nStatus) && WEXITSTATUS(nStatus) == 0;
}

}  // namespace nomira::testing
