// Runs a program as a process of its own and gathers what it leaves behind.
#pragma once

#include <fcntl.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace nomira::testing {

struct ProcessOutcome {
    int nStatus = -1;  // the exit status; 128 and the signal's number if one ended it
    std::string sOut;
    std::string sErr;
};

namespace internal {

// An unnamed file for one of the process's streams: unlike a pipe it never fills up.
class StreamFile {
  public:
    StreamFile() : m_file(std::tmpfile()) {
        if (!m_file) throw std::runtime_error("no temporary file");
    }
    ~StreamFile() { std::fclose(m_file); }
    StreamFile(const StreamFile&) = delete;
    StreamFile& operator=(const StreamFile&) = delete;

    int Descriptor() const { return fileno(m_file); }
    std::string Text() const {
        std::string sText;
        std::rewind(m_file);
        for (int c = std::fgetc(m_file); c != EOF; c = std::fgetc(m_file))
            sText += static_cast<char>(c);
        return sText;
    }

  private:
    std::FILE* m_file;
};

}  // namespace internal

using Environment = std::vector<std::pair<std::string, std::string>>;

// The program gets the arguments, no standard input, and the environment of this process with the
// given variables added.
inline ProcessOutcome RunProcess(const std::string& sProgram,
                                 const std::vector<std::string>& arguments,
                                 const Environment& environment) {
    const internal::StreamFile out, err;
    std::vector<char*> argv{const_cast<char*>(sProgram.c_str())};
    for (const std::string& sArgument : arguments)
        argv.push_back(const_cast<char*>(sArgument.c_str()));
    argv.push_back(nullptr);

    const pid_t nChild = fork();
    if (nChild < 0) throw std::runtime_error("no process");
    if (nChild == 0) {
        for (const auto& [sName, sValue] : environment)
            setenv(sName.c_str(), sValue.c_str(), 1);
        dup2(open("/dev/null", O_RDONLY), STDIN_FILENO);
        dup2(out.Descriptor(), STDOUT_FILENO);
        dup2(err.Descriptor(), STDERR_FILENO);
        execv(sProgram.c_str(), argv.data());
        _exit(127);
    }
    int nState = 0;
    waitpid(nChild, &nState, 0);
    const int nStatus = WIFEXITED(nState) ? WEXITSTATUS(nState) : 128 + WTERMSIG(nState);
    return {nStatus, out.Text(), err.Text()};
}

}  // namespace nomira::testing
