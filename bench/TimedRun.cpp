// Runs a command once and prints what it took: wall seconds, processor seconds, and the peak of
// its memory in KiB. Small on purpose: a process starts with the peak of the one that made it, so
// that measuring from a big one would measure that.
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <chrono>
#include <cstdio>
#include <cstring>

extern char** environ;

namespace {

using Clock = std::chrono::steady_clock;

double Seconds(const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

}  // namespace

int main(int nArguments, char** arguments) {
    if (nArguments < 2) {
        std::fputs("usage: timed_run COMMAND [ARGUMENT...]\n", stderr);
        return 2;
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);

    const Clock::time_point start = Clock::now();
    pid_t pid = 0;
    const int nError = posix_spawnp(&pid, arguments[1], &actions, nullptr, arguments + 1, environ);
    if (nError != 0) {
        std::fprintf(stderr, "timed_run: %s: %s\n", arguments[1], std::strerror(nError));
        return 2;
    }
    int nStatus = 0;
    rusage usage{};
    wait4(pid, &nStatus, 0, &usage);
    const std::chrono::duration<double> wall = Clock::now() - start;
    if (!WIFEXITED(nStatus) || WEXITSTATUS(nStatus) != 0) {
        std::fprintf(stderr, "timed_run: %s failed\n", arguments[1]);
        return 1;
    }
    std::printf("%.6f %.6f %ld\n", wall.count(), Seconds(usage.ru_utime) + Seconds(usage.ru_stime),
                usage.ru_maxrss);
    return 0;
}
