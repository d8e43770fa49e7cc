#include "apps/nomiractl/Terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <iostream>
#include <optional>

namespace nomira::companion {
namespace {

constexpr std::size_t kUsualWidth = 80;
constexpr std::string_view kMore = "...";

// Of the process's own streams.
std::optional<int> DescriptorOf(const std::ostream& out) {
    if (out.rdbuf() == std::cout.rdbuf()) return STDOUT_FILENO;
    if (out.rdbuf() == std::cerr.rdbuf()) return STDERR_FILENO;
    return std::nullopt;
}

bool BeginsCharacter(char c) {
    return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U;
}

}  // namespace

bool IsTerminal(const std::ostream& out) {
    const std::optional<int> nFd = DescriptorOf(out);
    return nFd && ::isatty(*nFd) == 1;
}

std::size_t TerminalWidth(const std::ostream& out) {
    winsize size{};
    const std::optional<int> nFd = DescriptorOf(out);
    if (nFd && ::ioctl(*nFd, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) return size.ws_col;
    return kUsualWidth;
}

std::string CutToWidth(std::string_view sText, std::size_t nWidth) {
    std::size_t nCharacters = 0;
    std::size_t nCut = sText.size();  // behind the last character that leaves room for kMore
    for (std::size_t n = 0; n < sText.size(); ++n) {
        if (!BeginsCharacter(sText[n])) continue;
        if (nCharacters + kMore.size() == nWidth) nCut = n;
        if (++nCharacters > nWidth) return std::string(sText.substr(0, nCut)).append(kMore);
    }
    return std::string(sText);
}

}  // namespace nomira::companion
