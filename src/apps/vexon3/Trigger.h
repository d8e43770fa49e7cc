// Which calls of the program a line of the scenario is about.
#pragma once

#include <optional>
#include <string>

#include "langtools/Text.h"

namespace nomira::simulator {

class Trigger {
  public:
    // `sOperation`, such as "CopyFile", exactly. `sPattern`, with the wildcards * and ?, is for the
    // call's arguments as the log has them, in any case. `nCall` counts the calls that match from
    // 1; without it each of them counts.
    Trigger(std::string sOperation, Text sPattern, std::optional<int> nCall);

    // Tells the trigger of a call; true if it is a call that it is about.
    bool Sees(std::string_view sOperation, TextView sArguments);

    const std::string& Operation() const { return m_sOperation; }

  private:
    std::string m_sOperation;
    Text m_sPattern;
    std::optional<int> m_nCall;
    int m_nSeen = 0;
};

}  // namespace nomira::simulator
