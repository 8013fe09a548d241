// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// k7sal process: finds, tests and ends processes by the text of their first argument.
#include "Command.h"

#include "OS/System/Shell.h"

#include <fstream>
#include <iostream>

#include <unistd.h>

namespace K7Tool {

using Shell = Kivo::K7SystemUtil::Shell;

namespace {

struct Named {
    std::string name;
};

std::string ownFirstArgument()
{
    std::ifstream file("/proc/self/cmdline");
    std::string text;
    std::getline(file, text, '\0');
    return text;
}

int find(const std::string& name)
{
    const Kivo::int32 pid = Shell::getProcessId(name.c_str());
    if (pid < 0)
        return failed("process find", "no process has \"" + name + "\" in its program name");
    std::cout << pid << "\n";
    return EXIT_DONE;
}

int alive(const std::string& name)
{
    const bool is = Shell::isAliveProcess(name.c_str(), nullptr, -1);
    std::cout << (is ? "alive" : "not alive") << "\n";
    return is ? EXIT_DONE : EXIT_FAILED;
}

int kill(const Session& session, const std::string& name)
{
    refuseRoot(session, "process kill");
    if (ownFirstArgument().find(name) != std::string::npos)
        return failed("process kill", "\"" + name + "\" is in this tool's own program name; give a longer part");
    if (Shell::getProcessId(name.c_str()) < 0)
        return failed("process kill", "no process has \"" + name + "\" in its program name");
    Shell::killProcess(name.c_str());
    const Kivo::int32 left = Shell::getProcessId(name.c_str());
    if (left >= 0)
        return failed("process kill",
                      "process " + std::to_string(left) + " could not be ended; is the privilege missing?");
    return EXIT_DONE;
}

} // namespace

void declareProcess(CLI::App& command, Session& session)
{
    command.require_subcommand(1);
    const auto add = [&](const char* verb, const char* help, auto run) {
        CLI::App* const sub = command.add_subcommand(verb, help);
        const auto named = std::make_shared<Named>();
        sub->add_option("name", named->name, "A part of the program name (the first argument)")
            ->required()
            ->check(CLI::Validator([](std::string& text) { return text.empty() ? "is empty" : ""; }, "TEXT"));
        sub->callback([&session, named, run] { session.exitCode = run(session, named->name); });
    };
    add("find", "Print the process number", [](const Session&, const std::string& name) { return find(name); });
    add("alive", "Tell whether it is running", [](const Session&, const std::string& name) { return alive(name); });
    add("kill", "End every such process", kill);
}

} // namespace K7Tool
