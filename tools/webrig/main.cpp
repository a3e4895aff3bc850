// webrig: the installer engine on Linux. Drives webrig's eight exports over a simulated Windows
// machine, as the engine does on Windows, and shows what they did.

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <iostream>

#include "command_error.h"
#include "install_run.h"
#include "machine_commands.h"
#include "machine_folder.h"
#include "plan.h"
#include "scramble.h"
#include "settings_check.h"

namespace {

using namespace webrig::cli;

constexpr char kVersion[] = "webrig 0.1.0";

struct RunOptions {
    std::string machine;
    std::string log;
    bool verbose = false;
};

void AddMachineOption(CLI::App& command, RunOptions& options) {
    command.add_option("--machine", options.machine,
                       "the machine folder (default: $WEBRIG_MACHINE, else ./webrig-machine)");
}

void AddOutputOptions(CLI::App& command, RunOptions& options) {
    command.add_flag("-v,--verbose", options.verbose, "print webrig's log lines");
    command.add_option("--log", options.log, "write every log line, error and progress to FILE");
}

void AddInstallOptions(CLI::App& command, InstallRequest& request) {
    command.add_option("SETTINGS", request.settingsPath, "the settings file")->required();
    command.add_option("--component", request.components,
                       "install only this component (repeatable; default: all, in file order)");
    command.add_option("--strings", request.stringsPath,
                       "the host's string table: a file of KEY=text lines");
    command.add_option("--property", request.properties,
                       "NAME=VALUE for [NAME] in the settings' values (repeatable)");
    command.add_option("--support-file", request.supportFiles,
                       "a file the installer extracts to [SUPPORTDIR] for the run (repeatable)");
}

OutputOptions OutputFor(const RunOptions& options, const InstallRequest& request, int stream) {
    OutputOptions output;
    output.verbose = options.verbose;
    output.logPath = options.log;
    output.progressBar = ::isatty(stream) == 1;
    output.secrets = SecretValues(ParseProperties(request.properties));
    return output;
}

int Run(int argc, char** argv) {
    CLI::App app{"webrig: dry-run an installer's IIS configuration on a simulated Windows machine",
                 "webrig"};
    app.set_version_flag("--version", kVersion);
    app.require_subcommand(1);
    app.footer("Exit codes: 0 success, 1 the install reported a failure, 2 usage or input error.");
    int exitCode = kSuccess;

    CLI::App* machine = app.add_subcommand("machine", "create or show a simulated machine");
    machine->require_subcommand(1);
    CreateRequest create;
    CLI::App* createCommand = machine->add_subcommand("create", "make a fresh simulated machine");
    createCommand->add_option("DIR", create.folder, "the new machine's folder")->required();
    createCommand->add_option("--iis", create.iis, "IIS version: 7.5, 8.5 or 10")
        ->capture_default_str();
    createCommand->add_option("--os", create.os, "Windows version")->capture_default_str();
    createCommand->add_option("--arch", create.arch, "x86 or x64")->capture_default_str();
    createCommand->add_option("--apphost", create.apphost,
                              "start from this applicationHost.config (a real server's)");
    createCommand->callback([&] { exitCode = CreateMachine(create, std::cout); });

    std::string showFolder;
    bool json = false;
    CLI::App* showCommand = machine->add_subcommand("show", "show a machine's IIS items");
    showCommand->add_option("DIR", showFolder,
                            "the machine folder (default: $WEBRIG_MACHINE, else ./webrig-machine)");
    showCommand->add_flag("--json", json, "JSON for programs");
    showCommand->callback(
        [&] { exitCode = ShowMachine(ChooseMachineFolder(showFolder), json, std::cout); });

    RunOptions options;
    InstallRequest install;
    CLI::App* installCommand =
        app.add_subcommand("install", "install the components of a settings file");
    AddInstallOptions(*installCommand, install);
    AddMachineOption(*installCommand, options);
    AddOutputOptions(*installCommand, options);
    installCommand->add_option("--journal", install.journalPath,
                               "append every created item to FILE, for uninstall and rollback");
    installCommand->callback([&] {
        RunOutput output(std::cout, OutputFor(options, install, STDOUT_FILENO));
        exitCode = RunInstall(ChooseMachineFolder(options.machine), install, output);
    });

    std::string journal;
    for (const bool rollback : {false, true}) {
        CLI::App* removal = app.add_subcommand(
            rollback ? "rollback" : "uninstall",
            rollback ? "remove what the journal's last install created, newest first"
                     : "remove everything the journal lists, newest first");
        removal->add_option("--journal", journal, "the journal of the install")->required();
        AddMachineOption(*removal, options);
        AddOutputOptions(*removal, options);
        removal->callback([&, rollback] {
            RunOutput output(std::cout, OutputFor(options, install, STDOUT_FILENO));
            exitCode = RunRemoval(ChooseMachineFolder(options.machine), journal, rollback, output);
        });
    }

    CLI::App* planCommand =
        app.add_subcommand("plan", "show what an install would change, on a copy of the machine");
    AddInstallOptions(*planCommand, install);
    AddMachineOption(*planCommand, options);
    AddOutputOptions(*planCommand, options);
    planCommand->callback([&] {
        RunOutput output(std::cerr, OutputFor(options, install, STDERR_FILENO));
        exitCode = RunPlan(ChooseMachineFolder(options.machine), install, output, std::cout);
    });

    CLI::App* checkCommand =
        app.add_subcommand("check", "load a settings file and warn about what will go wrong");
    checkCommand->add_option("SETTINGS", install.settingsPath, "the settings file")->required();
    checkCommand->add_option("--strings", install.stringsPath, "the host's string table");
    checkCommand->add_option("--property", install.properties, "NAME=VALUE (repeatable)");
    checkCommand->callback([&] { exitCode = RunCheck(install, std::cout); });

    bool utf16 = false;
    CLI::App* scrambleCommand = app.add_subcommand(
        "scramble", "scramble a password read from standard input, for the settings file");
    scrambleCommand->add_flag("--utf16le", utf16,
                              "write the value as UTF-16LE bytes, to append to a UTF-16 file");
    scrambleCommand->callback([&] { exitCode = ScramblePassword(std::cin, std::cout, utf16); });

    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& done) {
        return app.exit(done);
    } catch (const CLI::ParseError& error) {
        app.exit(error);
        return kInputError;
    } catch (const InputError& error) {
        std::cout.flush();
        std::cerr << "webrig: " << error.what() << "\n";
        return kInputError;
    }
    return exitCode;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return Run(argc, argv);
    } catch (const std::exception& error) {
        std::cout.flush();
        std::cerr << "webrig: " << error.what() << "\n";
        return kInputError;
    }
}
