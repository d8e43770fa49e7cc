#include "apps/nomiractl/Terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <iostream>

namespace nomira::companion {
namespace {

constexpr std::size_t kUsualWidth = 80;
constexpr std::string_view kMore = "...";

bool BeginsCharacter(char c) {
    return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U;
}

}  // namespace

bool IsTerminal(const std::ostream& out) {
    if (out.rdbuf() == std::cout.rdbuf()) return ::isatty(STDOUT_FILENO) == 1;
    if (out.rdbuf() == std::cerr.rdbuf()) return ::isatty(STDERR_FILENO) == 1;
    return false;
}

std::size_t TerminalWidth() {
    winsize size{};
    if (::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) return size.ws_col;
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
