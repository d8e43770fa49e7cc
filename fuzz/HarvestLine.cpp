// One line of an assignment file, taken apart as the harvest does. Only a number that is too long
// may come out as a failure; and no part may be longer than the line can make it.

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string_view>

#include "langtools/BasicText.h"
#include "langtools/CodePage.h"
#include "langtools/RuntimeError.h"
#include "userprogram/HarvestLine.h"

namespace nomira {
namespace {

void RequireTrimmed(TextView sPart) {
    if (Trim(sPart) != sPart) throw std::logic_error("a part has blanks around it");
}

void TakeApart(std::string_view bytes) {
    Text sLine = RewriteLine(Windows1252().Decode(bytes));
    const bool bSignal = IsSignalLine(sLine);
    if (bSignal && InStr(sLine, u"=") == 0) throw std::logic_error("a signal line without '='");
    const Text sName = CutSignalName(sLine);
    RequireTrimmed(sName);
    RequireTrimmed(CutSymbol(sLine));
    RequireTrimmed(CutLongText(sLine));
    const Text sOnce = CollapseBlanks(sLine);
    if (CollapseBlanks(sOnce) != sOnce) throw std::logic_error("blanks collapse twice");
    if (!ClassifySignal(sName).empty()) SignalNumber(sName);
}

}  // namespace
}  // namespace nomira

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t nSize) {
    try {
        nomira::TakeApart({reinterpret_cast<const char*>(data), nSize});
    } catch (const nomira::RuntimeError& error) {
        if (error.Number() != nomira::ErrorNumber::Overflow) throw;
    }
    return 0;
}
