#include <poll.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <iostream>

#include "apps/nomiractl/Nomiractl.h"

namespace {

using nomira::companion::ExitCode;

// A reader that has left, as head does when it has enough, is no failure.
bool ReaderHasLeft() {
    pollfd output{STDOUT_FILENO, POLLOUT, 0};
    return ::poll(&output, 1, 0) == 1 && (output.revents & POLLERR) != 0;
}

// What a command has written may still wait in the stream.
ExitCode Flushed(ExitCode exit) {
    std::cout.flush();
    if (std::cout || ReaderHasLeft()) return exit;
    std::fputs("nomiractl: the output can't be written\n", stderr);
    return Graver(exit, ExitCode::Files);
}

}  // namespace

int main(int nArguments, char** arguments) {
    // A file that may not grow any further fails like a full disk, instead of ending the process.
    std::signal(SIGXFSZ, SIG_IGN);
    std::ios::sync_with_stdio(false);
    const std::vector<std::string> args(arguments + 1, arguments + nArguments);
    return static_cast<int>(Flushed(nomira::companion::RunNomiractl(args, std::cout, std::cerr)));
}
