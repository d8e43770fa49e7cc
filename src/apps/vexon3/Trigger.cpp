#include "apps/vexon3/Trigger.h"

#include <utility>

#include "platform/FileNamePattern.h"

namespace nomira::simulator {

Trigger::Trigger(std::string sOperation, Text sPattern, std::optional<int> nCall)
    : m_sOperation(std::move(sOperation)), m_sPattern(std::move(sPattern)), m_nCall(nCall) {}

bool Trigger::Sees(std::string_view sOperation, TextView sArguments) {
    if (sOperation != m_sOperation || !MatchesFileName(sArguments, m_sPattern)) return false;
    if (!m_nCall) return true;
    return m_nSeen <= *m_nCall && ++m_nSeen == *m_nCall;
}

}  // namespace nomira::simulator
