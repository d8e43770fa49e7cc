// One run of rewrites, program by program, and its report for people and for pipelines: the same
// for programs of the disk and for those of the controller.
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "apps/nomiractl/CollectingDesktop.h"
#include "apps/nomiractl/Commands.h"
#include "apps/nomiractl/DatabaseWork.h"
#include "apps/nomiractl/ProgramRewrite.h"

namespace nomira::companion {

// What became of one program.
struct ProgramReport {
    std::string sName;  // as it is shown
    RewritePlan plan;
    std::string failure;             // why it could not be read or written
    ExitCode exit = ExitCode::Done;  // the failure's
    std::string diff{};              // if the options want one, until it is shown
    bool IsFine() const { return failure.empty() && !plan.stopped; }
};

class RewriteRun {
  public:
    // `desktop` must be the platform's desktop, and `database` the one that is looked up in.
    RewriteRun(const Options& options, Streams streams, CollectingDesktop& desktop,
               const DatabaseWork& database)
        : m_options(options), m_streams(streams), m_desktop(desktop), m_database(database) {}

    using Read = std::function<std::string()>;
    // Gets the bytes that were read. May take the plan's bytes and lines with it; the lines'
    // numbers must stay.
    using Write = std::function<void(RewritePlan& plan, const std::string& sBytes)>;

    // Rewrites the bytes that `read` gives, and hands the plan to `write` if they have changed and
    // the options want more than a look. A Refusal of either is this program's failure, and so is a
    // database that has failed: a name that can't be read would look like one that is empty.
    // Several threads may look at programs at once, if no look-up asks the database.
    ProgramReport Look(const std::string& sName, const Read& read, const Write& write) const;
    // Takes the next program's report, and shows its findings and its diff.
    void Take(ProgramReport report);
    // Both.
    void Rewrite(const std::string& sName, const Read& read, const Write& write) {
        Take(Look(sName, read, write));
    }
    // A program that can't even be read.
    void AddFailure(const std::string& sName, const std::string& sWhy);

    // Reports on the whole, and gives the exit status.
    ExitCode Finish() const;

  private:
    bool ChangesPrograms() const {
        return !m_options.bDryRun && !m_options.bCheck && m_options.planFile.empty();
    }
    bool WantsPlans() const { return ChangesPrograms() || !m_options.planFile.empty(); }
    void PrintJson() const;
    void PrintSummary() const;

    const Options& m_options;
    Streams m_streams;
    CollectingDesktop& m_desktop;
    const DatabaseWork& m_database;
    std::vector<ProgramReport> m_reports;
};

// The bytes of a program on the disk. Throws Refusal, without the path in its words.
std::string ReadProgram(const std::filesystem::path& path);

}  // namespace nomira::companion
