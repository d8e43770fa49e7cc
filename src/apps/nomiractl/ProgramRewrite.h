// The companion's way through one program: the core changes each fold header, this decides nothing
// but what happens to the bytes around it. Unlike `nomira`, a file keeps its line ends.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "apps/nomiractl/CollectingDesktop.h"
#include "apps/nomiractl/Plan.h"
#include "langtools/Text.h"

namespace nomira::companion {

struct ProgramLine {
    std::string_view body;
    std::string_view end;  // "\r\n", "\r", or nothing behind a last line
};

// The lines of a program, as the core reads them: CR LF or a lone CR ends one.
std::vector<ProgramLine> CutLines(std::string_view bytes);

struct LineChange {
    std::int64_t nLine;  // one-based
    std::string sOld;    // bytes of the file, without the line end
    std::string sNew;
    std::size_t nPlace;  // of the line's first byte in the file, zero-based
};

// Something to tell about a line: a name that the controller would refuse, or why the whole
// program can't be worked.
struct LineFinding {
    std::int64_t nLine;
    Text sText;
};

struct RewritePlan {
    std::string sNewBytes;  // the whole program; empty if nothing changes
    std::vector<LineChange> changes;
    std::vector<LineFinding> refused;
    // A fold header on which the program's own run would end, with the reason. Nothing of the
    // program is changed then.
    std::optional<LineFinding> stopped;
};

// How the lines are looked at: Quick leaves those out that are no headers for sure.
enum class LookAt { Quick, EveryLine };

// Works out what becomes of a program: through the core's fold forms and the message database,
// with message boxes turned into findings. `desktop` must be the platform's desktop. A line ends at
// CR LF or a lone CR.
RewritePlan PlanRewrite(std::string_view bytes, CollectingDesktop& desktop,
                        LookAt lookAt = LookAt::Quick);

// The lines of a program that pieces of a plan lie in, one piece in each.
std::vector<LineChange> LineChanges(std::string_view bytes, const std::vector<BytesChange>& pieces);

// The changes as a unified diff with three lines around them; empty without a change. The names
// stand in the head, as "--- a/NAME". Bytes are passed on as they are.
std::string UnifiedDiff(std::string_view sName, std::string_view bytes,
                        const std::vector<LineChange>& changes);

}  // namespace nomira::companion
