#include "apps/nomiractl/NameCheck.h"

#include "apps/nomiractl/Words.h"
#include "langtools/BasicText.h"
#include "langtools/CTools.h"
#include "langtools/Matches.h"
#include "langtools/RuntimeError.h"

namespace nomira::companion {
namespace {

constexpr TextView kHeaderEnd = u" State";

bool IsPattern(TextView sName) {
    try {
        Matches({}, sName);
        return true;
    } catch (const RuntimeError&) {
        return false;
    }
}

// Sign by sign: the core's own check is for names of up to 32,767 characters.
void FindRefusedSign(TextView sName, std::vector<NameFinding>& found) {
    for (std::size_t n = 0; n < sName.size(); ++n) {
        if (g_Tools().IsValidTQLComment(sName.substr(n, 1))) continue;
        found.push_back({NameFlaw::RefusedSign, n, Utf8(sName.substr(n, 1))});
        return;
    }
}

void FindPatternSigns(TextView sName, std::vector<NameFinding>& found) {
    if (!IsPattern(sName)) {
        found.push_back({NameFlaw::OpenBracket, sName.rfind(u'['), "["});
        return;
    }
    const std::size_t nSign = sName.find_first_of(kPatternSigns);
    if (nSign == TextView::npos) return;
    const std::string sSign = Utf8(sName.substr(nSign, 1));
    // A refused sign never gets into a program, and so never becomes an old name.
    if (g_Tools().IsValidTQLComment(sName.substr(nSign, 1)))
        found.push_back({NameFlaw::Wildcard, nSign, sSign});
}

}  // namespace

std::vector<NameFinding> FlawsOf(TextView sName) {
    std::vector<NameFinding> found;
    FindRefusedSign(sName, found);
    if (const std::size_t n = sName.find(u'\''); n != TextView::npos)
        found.push_back({NameFlaw::Apostrophe, n, "'"});
    FindPatternSigns(sName, found);
    if (const auto n = InStrNoCase(1, sName, kHeaderEnd); n > 0)
        found.push_back({NameFlaw::State, static_cast<std::size_t>(n - 1), " State"});
    return found;
}

}  // namespace nomira::companion
