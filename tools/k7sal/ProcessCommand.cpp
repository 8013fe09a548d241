// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// k7sal process: lists, finds, tests and ends processes by the text of their program name.
#include "Command.h"
#include "Show.h"

#include "Inventory/Process.h"
#include "OS/System/Shell.h"

#include <iostream>

#include <unistd.h>

namespace K7Tool {

using namespace Kivo;
using namespace Kivo::Inventory;

namespace {

const Section& processes() { return *findSection(SectionKey::PROCESSES); }

/// The processes with a text in their program name, without this one.
Listing<Process> matching(const Session& session, const std::string& name)
{
    Listing<Process> found = name.empty() ? listProcesses() : findProcesses(name);
    if (session.isLive())
        std::erase_if(found.records, [](const Process& process) { return process.pid == ::getpid(); });
    return found;
}

/// What a command says when it is not known which processes there are. @return EXIT_FAILED
int cannotTell(const std::string& command, const Listing<Process>& processes)
{
    return processes.problems.empty() ? failed(command, "there is no list of processes to look into")
                                      : reportProblems(processes.problems);
}

std::string nobodyHas(const std::string& name) { return "no process has \"" + name + "\" in its program name"; }

int list(const Session& session, const std::string& name, const ColumnOption& columns)
{
    if (columns.asksForHelp())
        return showColumns({&processes()});
    Listing<Process> found = matching(session, name);
    if (!found.known && found.problems.empty())
        return cannotTell("process list", found);
    Sheet sheet = sheetOf(processes(), collected(std::move(found)));
    columns.applyTo(sheet);
    return showDocument(session, {std::move(sheet)}, columns.detail());
}

int find(const Session& session, const std::string& name)
{
    const Listing<Process> found = matching(session, name);
    if (!found.known)
        return cannotTell("process find", found);
    if (session.json) {
        Sheet sheet = sheetOf(processes(), collected(found));
        return std::max(showDocument(session, {std::move(sheet)}, Detail::USUAL),
                        static_cast<int>(found.records.empty() ? EXIT_FAILED : EXIT_DONE));
    }
    for (const Process& process : found.records)
        std::cout << process.pid << "\n";
    return found.records.empty() ? failed("process find", nobodyHas(name)) : reportProblems(found.problems);
}

int alive(const Session& session, const std::string& name)
{
    const Listing<Process> found = matching(session, name);
    if (found.records.empty() && (!found.known || !found.problems.empty()))
        return cannotTell("process alive", found);
    const bool is = !found.records.empty();
    if (session.json) {
        Json document = emptyDocument(found.problems);
        document["alive"] = is;
        printJson(document);
    } else {
        std::cout << (is ? "alive" : "not alive") << "\n";
    }
    return is ? EXIT_DONE : EXIT_FAILED;
}

int kill(const Session& session, const std::string& name)
{
    refuseRoot(session, "process kill");
    const Listing<Process> all = findProcesses(name);
    for (const Process& process : all.records)
        if (process.pid == ::getpid())
            return failed("process kill", "\"" + name + "\" is in this tool's own program name; give a longer part");
    if (!all.known)
        return cannotTell("process kill", all);
    if (all.records.empty())
        return failed("process kill", nobodyHas(name));
    K7SystemUtil::Shell::killProcess(name.c_str());
    const Listing<Process> left = findProcesses(name);
    if (!left.known)
        return cannotTell("process kill", left);
    if (!left.records.empty())
        return failed("process kill", "process " + std::to_string(left.records.front().pid) +
                                          " could not be ended; is the privilege missing?");
    return EXIT_DONE;
}

/// Declare a command about processes of one name.
template <class Run>
void declareNamed(CLI::App& command, Session& session, const char* verb, const char* help, Run run)
{
    CLI::App* const sub = command.add_subcommand(verb, help);
    const auto name = std::make_shared<std::string>();
    sub->add_option("name", *name, "A part of the program name (the first argument)")
        ->required()
        ->check([](const std::string& text) { return text.empty() ? "is empty" : ""; });
    sub->callback([&session, name, run] { session.exitCode = run(session, *name); });
}

} // namespace

void declareProcess(CLI::App& command, Session& session)
{
    command.require_subcommand(1);
    CLI::App* const lister = command.add_subcommand("list", "Show processes and what they use of the machine");
    const auto name = std::make_shared<std::string>();
    const auto columns = std::make_shared<ColumnOption>();
    lister->add_option("name", *name, "Only those with this part in the program name (the first argument)");
    columns->declare(*lister);
    lister->callback([&session, name, columns] { session.exitCode = list(session, *name, *columns); });
    declareNamed(command, session, "find", "Print the numbers of matching processes", find);
    declareNamed(command, session, "alive", "Check whether a matching process runs", alive);
    declareNamed(command, session, "kill", "End every matching process", kill);
}

} // namespace K7Tool
