// The findings of a check for people and for other programs.
#pragma once

#include <ostream>
#include <string>

#include "apps/nomiractl/Findings.h"

namespace nomira::companion {

enum class FindingFormat { Text, Json, Sarif, Junit };

// FILE:LINE:COLUMN: SEVERITY: SENTENCE [RULE], and a line of totals unless `bQuiet`.
void PrintText(const Findings& findings, std::size_t nKnown, bool bQuiet, bool bColour,
               std::ostream& out);
// `bPredict`: with what becomes of each line.
void PrintJson(const Findings& findings, std::size_t nKnown, bool bPredict, std::ostream& out);
// SARIF 2.1.0.
void PrintSarif(const Findings& findings, std::ostream& out);
// A test suite per file, a test case per finding, which fails unless it is a note; a file without
// findings has a case that passes.
void PrintJunit(const Findings& findings, std::ostream& out);

}  // namespace nomira::companion
