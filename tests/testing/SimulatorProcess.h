// The controller's simulator as a process of its own, in a folder of its own.
#pragma once

#include <fcntl.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "testing/TemporaryFolder.h"

namespace nomira::testing {

class SimulatorProcess {
  public:
    // Comes back when the simulator listens. Its program is at `sProgram`.
    explicit SimulatorProcess(std::string sProgram, std::vector<std::string> arguments = {})
        : m_sProgram(std::move(sProgram)) {
        Start(std::move(arguments));
    }
    ~SimulatorProcess() { Stop(SIGKILL); }
    SimulatorProcess(const SimulatorProcess&) = delete;
    SimulatorProcess& operator=(const SimulatorProcess&) = delete;

    const std::filesystem::path& Folder() const { return m_folder.Path(); }
    std::filesystem::path Socket() const { return m_folder / "run" / "vexon3.sock"; }
    std::filesystem::path Root() const { return m_folder / "controller"; }
    std::filesystem::path Disk() const { return m_folder / "disk"; }
    pid_t Id() const { return m_nChild; }

    // Ends it, and gives its exit status; 128 and the signal's number if a signal ended it.
    std::optional<int> Stop(int nSignal = SIGTERM) {
        if (m_nChild <= 0) return std::nullopt;
        ::kill(m_nChild, nSignal);
        int nState = 0;
        ::waitpid(m_nChild, &nState, 0);
        m_nChild = -1;
        ::close(m_nLog);
        return WIFEXITED(nState) ? WEXITSTATUS(nState) : 128 + WTERMSIG(nState);
    }

    // A new one on the same folders.
    void Start(std::vector<std::string> arguments = {}) {
        arguments.insert(arguments.begin(),
                         {m_sProgram, "--root", Root().string(), "--socket", Socket().string()});
        std::vector<char*> argv;
        for (std::string& sArgument : arguments)
            argv.push_back(sArgument.data());
        argv.push_back(nullptr);
        int log[2];
        if (::pipe2(log, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
        ::fcntl(log[1], F_SETPIPE_SZ, kLogSize);
        m_nChild = ::fork();
        if (m_nChild == 0) {
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);  // a test that is killed leaves nothing behind
            ::dup2(::open("/dev/null", O_RDWR), STDIN_FILENO);
            ::dup2(log[1], STDERR_FILENO);
            ::execv(m_sProgram.c_str(), argv.data());
            ::_exit(127);
        }
        ::close(log[1]);
        m_nLog = log[0];
        const std::string sFirst = ReadLogLine();
        if (sFirst.find("listening") == std::string::npos)
            throw std::runtime_error("the simulator doesn't start: " + sFirst);
    }

    // The next line of the log; waits for it.
    std::string ReadLogLine() {
        std::string sLine;
        for (char c = 0; ::read(m_nLog, &c, 1) == 1 && c != '\n';)
            sLine += c;
        return sLine;
    }

    static void Put(const std::filesystem::path& file, std::string_view bytes) {
        std::filesystem::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary) << bytes;
    }
    // nullopt if it isn't there.
    static std::optional<std::string> Bytes(const std::filesystem::path& file) {
        std::ifstream in(file, std::ios::binary);
        if (!in) return std::nullopt;
        return std::string(std::istreambuf_iterator<char>(in), {});
    }

  private:
    // A simulator whose log nobody reads waits when it is full.
    static constexpr int kLogSize = 1024 * 1024;

    std::string m_sProgram;
    TemporaryFolder m_folder;
    pid_t m_nChild = -1;
    int m_nLog = -1;
};

}  // namespace nomira::testing
