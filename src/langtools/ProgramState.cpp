#include "langtools/ProgramState.h"

#include <vector>

namespace nomira {
namespace {

std::vector<void (*)()>& Resets() {
    static std::vector<void (*)()> resets;
    return resets;
}

}  // namespace

OnProgramReset::OnProgramReset(void (*reset)()) {
    Resets().push_back(reset);
}

void ResetProgramState() {
    for (const auto reset : Resets())
        reset();
}

}  // namespace nomira
