// The controller's variables: names in any case, each with one text as its value.
#pragma once

#include <map>
#include <vector>

#include "langtools/Text.h"

namespace nomira::simulator {

struct Variable {
    Text sName;  // as first written
    Text sValue;
};

class Variables {
  public:
    // Makes the variable where it isn't there.
    void Set(TextView sName, TextView sValue);

    // Each throws OperationFailed if there is no such variable.
    const Text& Read(TextView sName) const;
    void Write(TextView sName, TextView sValue);

    // All, by name.
    std::vector<Variable> All() const;

  private:
    std::map<Text, Variable> m_variables;  // by name in upper case
};

}  // namespace nomira::simulator
