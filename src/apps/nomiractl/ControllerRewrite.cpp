#include <fmt/format.h>

#include <deque>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "adapters/posix/NativeName.h"
#include "apps/nomiractl/Commands.h"
#include "apps/nomiractl/ControllerLink.h"
#include "apps/nomiractl/DatabaseWork.h"
#include "apps/nomiractl/Interrupt.h"
#include "apps/nomiractl/Machine.h"
#include "apps/nomiractl/PrivateFolder.h"
#include "apps/nomiractl/ProgressBar.h"
#include "apps/nomiractl/ReplaceFile.h"
#include "apps/nomiractl/RewriteRun.h"
#include "apps/nomiractl/Words.h"
#include "langtools/BasicText.h"

namespace nomira::companion {
namespace {

namespace fs = std::filesystem;

// Far more than a controller has; a middleware that makes them up without end is stopped here.
constexpr std::size_t kMostDirectories = 10'000;

struct Program {
    Text sDirectory;  // empty if the user has named the program
    Text sName;
};

bool IsProgram(TextView sName) {
    constexpr TextView kExtension = u".src";
    return sName.size() >= kExtension.size() &&
           EqualNoCase(sName.substr(sName.size() - kExtension.size()), kExtension);
}

// The directories of the controller, from its root down.
std::deque<Text> AllDirectories(ControllerLink& link) {
    std::deque<Text> directories{ControllerDirectory({})};
    std::set<Text> known{UCase(directories.front())};
    for (std::size_t n = 0; n < directories.size(); ++n) {
        for (const Text& sInner : link.Directories(directories[n])) {
            Text sPath = directories[n] + u"\\" + sInner;
            if (known.insert(UCase(sPath)).second) directories.push_back(std::move(sPath));
        }
        if (directories.size() > kMostDirectories)
            throw Refusal(fmt::format("the controller has more than {} directories; name the"
                                      " programs instead",
                                      kMostDirectories),
                          ExitCode::Controller);
    }
    return directories;
}

std::vector<Program> AllPrograms(ControllerLink& link) {
    std::vector<Program> programs;
    for (const Text& sDirectory : AllDirectories(link))
        for (Text& sName : link.Files(sDirectory))
            if (IsProgram(sName)) programs.push_back({sDirectory, std::move(sName)});
    return programs;
}

std::vector<Program> NamedPrograms(const Options& options) {
    std::vector<Program> programs;
    for (const std::string& sName : options.names)
        programs.push_back({{}, posix::FromNative(sName)});
    return programs;
}

// The controller finds programs by name, and of two with the same name always the same one.
class RobotPrograms {
  public:
    RobotPrograms(ControllerLink& link, RewriteRun& run) : m_link(link), m_run(run) {}

    void Rewrite(const Program& program) {
        if (!m_worked.insert(UCase(program.sName)).second) return PassOver(program);
        const fs::path file = m_folder.Path() / posix::ToNative(program.sName);
        m_run.Rewrite(
            ShownWhole(program.sName),
            [&] {
                m_link.Fetch(program.sName, m_folder.Path());
                return ReadProgram(file);
            },
            [&](const RewritePlan& plan, const std::string&) {
                const fs::path old = m_oldPrograms.Path() / file.filename();
                fs::copy_file(file, old);
                ReplaceFile(file, plan.sNewBytes);
                m_sent.push_back(old);
                m_link.Send(file);
            });
    }

    // For a run that is broken off: sends the old programs back, each found by its name again. One
    // that the controller doesn't take is kept on the disk, and all of these are told.
    void SendBackOldOnes() {
        std::string sKept;
        for (const fs::path& old : m_sent) {
            try {
                m_link.Send(old);
            } catch (const Refusal& refusal) {
                sKept += fmt::format(
                    "\nnomiractl: {}: {}; it may have its new names there, and as"
                    " it was it is kept as {}",
                    Shown(posix::FromNative(old.filename().string())), refusal.what(),
                    old.string());
            }
        }
        if (sKept.empty()) return;
        m_oldPrograms.Keep();
        throw Interruption("interrupted; these programs could not be sent back:" + sKept);
    }

  private:
    // One that the user has named twice is done already.
    void PassOver(const Program& program) {
        if (program.sDirectory.empty()) return;
        m_run.AddFailure(ShownWhole(program.sDirectory + u"\\" + program.sName),
                         "the controller has another program of this name, and finds only one of"
                         " them; rename one");
    }

    ControllerLink& m_link;
    RewriteRun& m_run;
    PrivateFolder m_folder;
    PrivateFolder m_oldPrograms;
    std::vector<fs::path> m_sent;  // the old ones of those that the controller has new
    std::set<Text> m_worked;
};

}  // namespace

ExitCode RewriteOnRobot(const Options& options, Streams streams) {
    const InterruptWatch watch;
    Machine machine(options);
    machine.PrintWarnings(streams.err);
    // A database that can't be read would look like one without names.
    DatabaseWork database(machine.Database(), machine.Engine(), DatabaseUse::Read);
    database.ReadItems();
    ControllerLink link(machine.ControllerSocket());
    const std::vector<Program> programs = options.bAll ? AllPrograms(link) : NamedPrograms(options);
    ProgressBar bar(ScreenFor(options, streams), "rewrite", ProgressUnit::Programs,
                    programs.size());
    StreamsAboveBar above(streams, bar);
    RewriteRun run(options, above.All(), machine.Boxes(), database);
    RobotPrograms robot(link, run);
    try {
        for (const Program& program : programs) {
            robot.Rewrite(program);
            bar.Step();
        }
    } catch (const Interruption&) {
        robot.SendBackOldOnes();
        throw;
    }
    return run.Finish();
}

}  // namespace nomira::companion
