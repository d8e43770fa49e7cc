// Puts what a scenario says into the controller before it starts.
#pragma once

#include "apps/vexon3/FileSpace.h"
#include "apps/vexon3/Scenario.h"

namespace nomira::simulator {

// The scenario's programs, below R1; they replace files of the same name. Throws ScenarioError for
// a program that can't be put there.
void SeedPrograms(const Scenario& scenario, const FileSpace& files);

}  // namespace nomira::simulator
