// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// k7sal: the library from the command line, on a board or on a tree captured from one.
#include "Command.h"
#include "CommandRunner.h"

#include "OS/System/K7SystemUtilClass.h"

#include <cstring>
#include <iostream>

namespace K7Tool {

void addJsonOption(CLI::App& command, Session& session)
{
    command.add_flag("--json", session.json, "Print one JSON document instead of text");
}

void refuseRoot(const Session& session, const std::string& command)
{
    if (!session.root.empty())
        throw CLI::ValidationError(command, "changes the machine and cannot be used with --root");
}

int failed(const std::string& what, const std::string& reason, int errorCode)
{
    std::cerr << "k7sal: " << what << " failed: " << reason;
    if (errorCode != 0)
        std::cerr << " (" << std::strerror(errorCode) << ")";
    std::cerr << "\n";
    return EXIT_NOT;
}

int failed(const std::string& what)
{
    const Kivo::K7SystemUtil::Failure failure = Kivo::K7SystemUtil::lastFailure();
    return failed(what, failure.operation.isEmpty() ? "unknown reason" : failure.reason.to_string(), failure.errorCode);
}

void printJson(const Json& document)
{
    std::cout << document.dump(2, ' ', false, Json::error_handler_t::replace) << "\n";
}

} // namespace K7Tool

int main(int argc, char** argv)
{
    using namespace K7Tool;
    Session session;
    CLI::App app("System facts and network tests of a recorder board, live or from a captured tree.", "k7sal");
    app.set_version_flag("--version", K7SAL_VERSION);
    app.require_subcommand(1);
    app.fallthrough();
    app.failure_message([](const CLI::App* failing, const CLI::Error& error) {
        return "k7sal: " + std::string(error.what()) + "\nRun '" +
               (failing->get_parent() ? "k7sal " + failing->get_name() : "k7sal") + " --help' for the right use.\n";
    });
    app.add_option("--root", session.root, "Read the tree captured below this directory instead of this machine")
        ->check(CLI::ExistingDirectory)
        ->each([](const std::string& directory) { Kivo::K7SystemUtil::setSystemRoot(directory.c_str()); });
    addReportCommand(app, session);
    addCaptureCommand(app, session);
    addProcessCommand(app, session);
    addNetCommand(app, session);
    addDnsCommand(app, session);
    addPingCommand(app, session);
    installCommandRunner();
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? EXIT_DONE : EXIT_USAGE;
    } catch (const std::exception& error) {
        return failed("the command", error.what());
    }
    std::cout << std::flush;
    return std::cout ? session.exitCode : failed("output", "standard output cannot be written");
}
