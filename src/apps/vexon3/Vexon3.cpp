#include "apps/vexon3/Vexon3.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <asio/signal_set.hpp>
#include <csignal>
#include <exception>
#include <filesystem>
#include <fstream>

#include "adapters/posix/Prefix.h"
#include "adapters/rpc/Connection.h"
#include "adapters/rpc/RpcLinkLibrary.h"
#include "apps/vexon3/FileSpace.h"
#include "apps/vexon3/Scenario.h"
#include "apps/vexon3/Seed.h"
#include "apps/vexon3/Server.h"
#include "apps/vexon3/SocketPlace.h"

namespace nomira::simulator {
namespace {

namespace fs = std::filesystem;

constexpr const char* kDescription =
    "Plays the robot controller's middleware: variables, programs, messages, and what can go\n"
    "wrong with them. nomira finds it running by its name, and talks to it over the socket.";

constexpr const char* kFooter =
    "The prefix is $NOMIRA_PREFIX, or $XDG_DATA_HOME/nomira, or ~/.local/share/nomira.\n"
    "docs/controller.md describes scenario and socket. SIGTERM and SIGINT end the simulator.\n"
    "\n"
    "Exit status: 0 ended by a signal, 1 it can't run, 2 wrong usage.";

struct Options {
    fs::path root, socket, scenario, log, state;
};

void AddOptions(CLI::App& app, Options& options) {
    app.footer(kFooter);
    app.set_version_flag("--version", NOMIRA_VERSION);
    app.add_option("--root", options.root,
                   "The folder of the controller's files (default: controller in the prefix)")
        ->type_name("DIR");
    app.add_option("--socket", options.socket,
                   "Where to listen (default: run/vexon3.sock in the prefix)")
        ->type_name("PATH");
    app.add_option("--scenario", options.scenario, "What to play")->type_name("FILE");
    app.add_option("--log", options.log, "Where to log each call (default: the error stream)")
        ->type_name("FILE");
    app.add_option("--state", options.state,
                   "Show the state of the simulator that listens on this socket, as JSON")
        ->type_name("SOCKET");
}

void FillDefaults(Options& options) {
    const fs::path prefix = posix::Prefix::RootFromEnvironment();
    if (options.root.empty()) options.root = prefix / "controller";
    if (options.socket.empty()) options.socket = rpc::DefaultSocket(prefix);
}

void ShowState(const fs::path& socket, std::ostream& out) {
    rpc::Connection connection(socket);
    out << connection.Call("sim.state", rpc::Json::object()).dump(2) << '\n';
}

std::ofstream OpenLog(const fs::path& file) {
    std::ofstream log;
    if (file.empty()) return log;
    log.open(file, std::ios::app);
    if (!log) throw std::runtime_error(file.string() + ": can't be written; give another --log");
    return log;
}

void Serve(const Options& options, std::ostream& err) {
    std::ofstream file = OpenLog(options.log);
    std::ostream& log = options.log.empty() ? err : file;
    const auto note = [&log](const std::string& sLine) { log << sLine << std::endl; };

    const Scenario scenario =
        options.scenario.empty() ? Scenario{} : ReadScenario(options.scenario);
    asio::io_context context;
    SocketPlace place(context, options.socket);
    const FileSpace files(options.root);
    SeedPrograms(scenario, files);

    asio::signal_set signals(context, SIGTERM, SIGINT);
    signals.async_wait([&context](std::error_code, int) { context.stop(); });
    Server server(place.Acceptor(), files, scenario, note);
    note("listening on " + options.socket.string());
    context.run();
    note("ended");
}

}  // namespace

ExitCode RunVexon3(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) {
    Options options;
    CLI::App app(kDescription, "vexon3.exe");
    AddOptions(app, options);
    try {
        app.parse(
            std::vector<std::string>(args.rbegin(), args.rend()));  // as the parser wants them
    } catch (const CLI::ParseError& error) {
        return app.exit(error, out, err) == 0 ? ExitCode::Done : ExitCode::WrongUsage;
    }
    try {
        FillDefaults(options);
        if (options.state.empty())
            Serve(options, err);
        else
            ShowState(options.state, out);
        return ExitCode::Done;
    } catch (const std::exception& error) {
        err << "vexon3.exe: " << error.what() << '\n';
        return ExitCode::Failed;
    }
}

}  // namespace nomira::simulator
