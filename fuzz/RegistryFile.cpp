// The registry's text format over any bytes. Whatever stands in the file, something comes out:
// keys with their parents, and findings that name lines of the file.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "adapters/posix/RegistryText.h"
#include "langtools/CodePage.h"

namespace nomira {
namespace {

void Require(bool bHolds) {
    if (!bHolds) std::abort();
}

void CheckParents(const posix::RegistryText& text) {
    for (const auto& [path, values] : text.keys) {
        const std::size_t nLast = path.second.rfind(u'\\');
        if (nLast == Text::npos) continue;
        Require(text.keys.contains({path.first, path.second.substr(0, nLast)}));
    }
}

void CheckFindings(const posix::RegistryText& text, std::string_view bytes) {
    const auto nBreaks =
        std::count_if(bytes.begin(), bytes.end(), [](char c) { return c == '\n' || c == '\r'; });
    int nLine = 0;
    for (const posix::RegistryFinding& finding : text.findings) {
        Require(finding.nLine >= nLine && finding.nLine <= nBreaks + 1);
        Require(!finding.sWhat.empty());
        nLine = finding.nLine;
    }
}

}  // namespace
}  // namespace nomira

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t nSize) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), nSize);
    const auto text = nomira::posix::ParseRegistryText(bytes, nomira::Windows1252());
    nomira::CheckParents(text);
    nomira::CheckFindings(text, bytes);
    return 0;
}
