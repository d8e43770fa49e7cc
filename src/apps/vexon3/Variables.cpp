#include "apps/vexon3/Variables.h"

#include "apps/vexon3/OperationFailed.h"
#include "langtools/BasicText.h"

namespace nomira::simulator {

void Variables::Set(TextView sName, TextView sValue) {
    const auto place = m_variables.try_emplace(UCase(sName), Variable{Text(sName), {}}).first;
    place->second.sValue = sValue;
}

const Text& Variables::Read(TextView sName) const {
    const auto found = m_variables.find(UCase(sName));
    if (found == m_variables.end()) throw OperationFailed(Trouble::NoSuchVariable, sName);
    return found->second.sValue;
}

void Variables::Write(TextView sName, TextView sValue) {
    Read(sName);
    Set(sName, sValue);
}

std::vector<Variable> Variables::All() const {
    std::vector<Variable> all;
    for (const auto& [sKey, variable] : m_variables)
        all.push_back(variable);
    return all;
}

}  // namespace nomira::simulator
