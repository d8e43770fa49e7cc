#include "apps/nomiractl/Nomiractl.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <exception>
#include <functional>
#include <memory>
#include <sstream>

#include "adapters/posix/NativeName.h"
#include "adapters/rpc/ControllerName.h"
#include "apps/nomiractl/CodePageName.h"
#include "apps/nomiractl/Commands.h"
#include "apps/nomiractl/Completion.h"
#include "apps/nomiractl/HelpText.h"
#include "apps/nomiractl/Interrupt.h"
#include "apps/nomiractl/ManPages.h"
#include "apps/nomiractl/ReadingCommandLine.h"
#include "apps/nomiractl/Words.h"
#include "apps/nomiractl/WritingCommandLine.h"
#include "langtools/RuntimeError.h"

namespace nomira::companion {
namespace {

constexpr const char* kDescription =
    "Moves the long names of a robot controller's signals between the message database and text\n"
    "files, as nomira does, and tells what it did.";

constexpr const char* kPaths =
    "Paths on the command line are this system's own. Without --prefix, the prefix is\n"
    "$NOMIRA_PREFIX, or $XDG_DATA_HOME/nomira, or ~/.local/share/nomira; its registry.reg and\n"
    "nomira.conf apply. A text file is in the 8-bit code page (1252) with CR LF line ends, unless\n"
    "--code-page, --encoding or --eol tell otherwise.\n"
    "The controller's middleware is looked for on run/vexon3.sock in the prefix.";

std::string Footer() {
    std::ostringstream footer;
    footer << "Exit status:\n";
    PrintExitCodes(footer);
    footer << "Where something was refused or failed, nothing was changed; rewrite and controller\n"
              "leave what they name as it is, and do the others.\n\n"
           << kPaths;
    return footer.str();
}

// The command line, and what it asks for.
class Arguments {
  public:
    Arguments() : m_app(kDescription, "nomiractl") {
        m_app.formatter(std::make_shared<HelpText>());
        m_app.footer(Footer());
        m_app.fallthrough();
        m_app.require_subcommand(1);
        m_app.set_version_flag("--version", NOMIRA_VERSION);
        AddCommonOptions();
        AddDatabaseCommands();
        AddImport();
        AddExport();
        AddRewrite();
        AddHarvest();
        AddController();
        AddReadingCommands(m_app, m_options, [this](Command command) { m_command = command; });
        AddWritingCommands(m_app, m_options, [this](Command command) { m_command = command; });
        AddCommandsOnItself();
    }

    void Parse(std::vector<std::string> args) {
        m_args = args;
        m_options.words = args;
        std::reverse(args.begin(), args.end());  // as the parser wants them
        m_app.parse(args);
        if (m_options.bJson && m_command == ExportTextFile && m_options.file == "-")
            throw CLI::ValidationError("--json", "needs a file as the export's target");
        if (m_options.bJson && m_options.bDiff)
            throw CLI::ValidationError("--json", "not with --diff: both are written to the output");
        if (m_command == RewriteOnRobot && m_options.bAll != m_options.names.empty())
            throw CLI::ValidationError("controller rewrite", "needs programs, or --all");
        CheckTarget();
    }

    // For --help as well as for errors.
    ExitCode Explain(const CLI::ParseError& error, std::ostream& out, std::ostream& err) const {
        const auto unknown = FindUnknownWord(m_app, m_args);
        const bool bHelp = error.get_exit_code() == 0;
        if (unknown && !unknown->bOption && !bHelp)
            fmt::print(err, "There is no command {}\nRun with --help for more information.\n",
                       unknown->sWord);
        else
            m_app.exit(error, out, err);
        if (bHelp) return ExitCode::Done;
        if (unknown) PrintMeant(*unknown, err);
        return ExitCode::WrongUsage;
    }

    ExitCode Run(Streams streams) const {
        if (m_command) return m_command(m_options, streams);
        streams.out << m_answer;
        if (!m_manFolder.empty())
            WriteManPages(ManPages(m_app, NOMIRA_VERSION, kPaths), m_manFolder);
        return ExitCode::Done;
    }

  private:
    static void PrintMeant(const UnknownWord& unknown, std::ostream& err) {
        std::error_code ignored;
        if (!unknown.sMeant.empty())
            fmt::print(err, "Did you mean {}?\n", unknown.sMeant);
        else if (unknown.bOption && std::filesystem::exists(unknown.sWord, ignored))
            fmt::print(err, "For the file of that name write ./{}\n", unknown.sWord);
    }

    // What needs nothing but the command line.
    void AddCommandsOnItself() {
        CLI::App* version = Add(m_app, "version", "Show the version", nullptr);
        version->callback([this] {
            m_answer = m_options.bJson ? fmt::format("{{\"version\": \"{}\"}}\n", NOMIRA_VERSION)
                                       : fmt::format("nomiractl {}\n", NOMIRA_VERSION);
        });
        CLI::App* completion =
            Add(m_app, "completion", "Write the completion script of a shell", nullptr);
        completion->add_option("SHELL", m_options.sShell, "bash, zsh or fish")
            ->required()
            ->check(CLI::IsMember({"bash", "zsh", "fish"}));
        completion->callback([this] { m_answer = CompletionScript(m_app, m_options.sShell); });
        CLI::App* man = Add(m_app, "man", "Write the manual pages into a folder", nullptr);
        man->group("");  // for the build, which installs them
        man->add_option("DIR", m_manFolder, "The folder; made where it isn't there")->required();
    }

    void CheckTarget() const {
        if (m_options.target.empty()) return;
        if (!rpc::IsControllerPath(posix::FromNative(m_options.target)))
            throw CLI::ValidationError("--to",
                                       "needs a path of the controller, as TQX:\\R1\\x.src");
        if (m_options.names.size() > 1 && !m_options.target.ends_with('\\'))
            throw CLI::ValidationError("--to",
                                       "needs a directory for several files, as TQX:\\R1\\");
    }

    void AddCommonOptions() {
        m_app
            .add_option("--prefix", m_options.prefix, "The folder that stands for C: and registry")
            ->type_name("DIR");
        m_app
            .add_option("--db", m_options.database,
                        "The message database (default: where the prefix has"
                        " C:\\tqx\\data\\orvo_con.mdb)")
            ->type_name("PATH");
        m_app
            .add_option("--customer", m_options.customer,
                        "Work as for this customer, whatever the registry says; VW selects the"
                        " customer's keys, \"\" the standard ones")
            ->type_name("NAME");
        AddCodePage();
        m_app.add_flag("--json", m_options.bJson, "Report as JSON");
        m_app.add_flag("--quiet", m_options.bQuiet, "Report errors and warnings only");
    }

    void AddCodePage() {
        m_app
            .add_option_function<std::string>(
                "--code-page",
                [this](const std::string& sName) {
                    m_options.codePage = CodePageOfName(sName);
                    if (!m_options.codePage)
                        throw CLI::ValidationError(
                            "--code-page",
                            fmt::format("\"{}\" is no 8-bit code page of this system; give one as"
                                        " 1252, 1250 or 8859-15",
                                        sName));
                },
                "The 8-bit code page of text files and programs, as 1252, 1250, 1251, 8859-1 or"
                " 8859-15 (default: the one of nomira.conf, else 1252)")
            ->type_name("NAME");
    }

    CLI::App* Add(CLI::App& parent, const char* sName, const char* sWhat, Command command) {
        CLI::App* sub = parent.add_subcommand(sName, sWhat);
        sub->callback([this, command] { m_command = command; });
        return sub;
    }

    void AddDatabaseCommands() {
        CLI::App* db = m_app.add_subcommand("db", "Make a message database, or look at one");
        db->require_subcommand(1);
        db->fallthrough();
        CLI::App* create = Add(*db, "create", "Make a new, empty message database", CreateDatabase);
        create->add_option("PATH", m_options.file, "The file to make; must not exist")->required();
        AddStoreFormat(*create, m_options);
        CLI::App* info =
            Add(*db, "info", "Tell what a database holds and whether it is whole", ShowDatabase);
        info->add_option("PATH", m_options.database, "The database (default: as for --db)");
        AddDatabaseKeeping(*db, m_options, [this](Command command) { m_command = command; });
    }

    void AddImport() {
        CLI::App* import =
            Add(m_app, "import", "Bring a text file into the database: everything, or nothing",
                ImportTextFile);
        import->add_option("FILE", m_options.file, "The text file; - for the standard input")
            ->required();
        AddTextForm(*import, m_options);
        import->add_flag("--overwrite", m_options.bOverwrite,
                         "First remove what the file replaces: all signals if it has any, all"
                         " welding channels if it has any");
        import->add_flag("--dry-run", m_options.bDryRun, "Report, but change nothing");
        import->add_flag("--diff", m_options.bDiff, "Show the texts that go and come");
        AddPlanOptions(*import, m_options);
    }

    void AddExport() {
        CLI::App* command =
            Add(m_app, "export", "Write all texts of the database to a text file", ExportTextFile);
        command->add_option("FILE", m_options.file, "The file to write; - for the standard output")
            ->required();
        AddTextForm(*command, m_options);
    }

    void AddRewrite() {
        CLI::App* command =
            Add(m_app, "rewrite", "Bring the database's names into the fold headers of programs",
                RewritePrograms);
        command
            ->add_option("PATH", m_options.programs,
                         "Programs, or directories of which all *.src files are taken")
            ->required();
        AddRewriteFlags(*command);
        AddPlanOptions(*command, m_options);
        AddAtomicOption(*command, m_options);
        AddJobsOption(*command, m_options);
    }

    void AddRewriteFlags(CLI::App& command) {
        command.add_flag("--dry-run", m_options.bDryRun, "Report, but change nothing");
        command.add_flag("--diff", m_options.bDiff, "Show the changes as a unified diff");
        command.add_flag("--check", m_options.bCheck,
                         "Change nothing; exit status 1 if something would change");
    }

    void AddHarvest() {
        CLI::App* command =
            Add(m_app, "harvest",
                "Bring a customer's file of signal assignments into the database: everything, or"
                " nothing",
                HarvestAssignments);
        command->add_option("FILE", m_options.file, "The file of assignments")->required();
        command->add_flag("--overwrite", m_options.bOverwrite,
                          "First remove all signals from the database");
        command->add_flag("--with-symbols", m_options.bWithSymbols,
                          "Keep comments of the form \"symbol ; text\" whole");
        command->add_flag("--dry-run", m_options.bDryRun, "Report, but change nothing");
        command->add_flag("--diff", m_options.bDiff, "Show the texts that go and come");
        AddPlanOptions(*command, m_options);
    }

    void AddController() {
        CLI::App* robot = m_app.add_subcommand("controller",
                                               "Work with the programs and variables of the robot"
                                               " controller");
        robot->require_subcommand(1);
        robot->fallthrough();
        CLI::App* list = Add(*robot, "ls", "List the files of a directory", ListController);
        list->add_option("DIR", m_options.directory,
                         "A directory of the controller, as R1\\Program (default: R1)");
        list->add_flag("--dirs", m_options.bDirectories, "List its directories instead");
        AddTransfers(*robot);
        CLI::App* vars = Add(*robot, "vars", "Read or write variables", WorkVariables);
        vars->add_option("NAME", m_options.names, "NAME reads a variable, NAME=VALUE writes it")
            ->required();
        Add(*robot, "sizes", "Show how many signals of each class the controller has", ShowSizes);
        CLI::App* rewrite =
            Add(*robot, "rewrite",
                "Bring the database's names into the fold headers of programs on the controller",
                RewriteOnRobot);
        rewrite->add_option("NAME", m_options.names, "Programs, found by name in all directories");
        rewrite->add_flag("--all", m_options.bAll, "Take all *.src files of all directories");
        AddRewriteFlags(*rewrite);
    }

    void AddTransfers(CLI::App& robot) {
        CLI::App* fetch = Add(robot, "fetch", "Copy programs to the disk", FetchPrograms);
        fetch->add_option("NAME", m_options.names, "Programs, found by name in all directories")
            ->required();
        fetch->add_option("--to", m_options.folder, "The folder to copy to (default: this one)")
            ->type_name("DIR");
        fetch->add_flag("--force", m_options.bForce, "Write over files that are there");
        CLI::App* send =
            Add(robot, "send",
                "Copy programs to where the controller has one of that name, else to its root",
                SendPrograms);
        send->add_option("FILE", m_options.names, "The programs")->required();
        send->add_option("--to", m_options.target,
                         "A path of the controller to copy to instead, as TQX:\\R1\\x.src; one that"
                         " ends in \\ is a directory")
            ->type_name("PATH");
    }

    CLI::App m_app;
    Options m_options;
    std::vector<std::string> m_args;
    Command m_command = nullptr;
    std::string m_answer;  // where there is no command to run
    std::filesystem::path m_manFolder;
};

ExitCode Guarded(const Arguments& arguments, Streams streams) {
    try {
        return arguments.Run(streams);
    } catch (const Refusal& refusal) {
        fmt::print(streams.err, "nomiractl: {}\n", refusal.what());
        return refusal.Exit();
    } catch (const Interruption& interruption) {
        fmt::print(streams.err, "nomiractl: {}\n", interruption.what());
        return ExitCode::Interrupted;
    } catch (const RuntimeError& error) {
        fmt::print(streams.err, "nomiractl: {}\n", Shown(error.Description()));
        return ExitOf(error);
    } catch (const std::exception& error) {
        fmt::print(streams.err, "nomiractl: {}\n", error.what());
    }
    return ExitCode::Refused;
}

}  // namespace

ExitCode RunNomiractl(const std::vector<std::string>& args, std::ostream& out, std::ostream& err,
                      std::istream& in) {
    Arguments arguments;
    try {
        arguments.Parse(args);
    } catch (const CLI::ParseError& error) {
        return arguments.Explain(error, out, err);
    }
    return Guarded(arguments, {out, err, in});
}

}  // namespace nomira::companion
