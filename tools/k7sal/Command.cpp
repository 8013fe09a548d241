// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The commands, and what they say on standard error.
#include "Command.h"

#include "Text.h"

#include "OS/System/K7SystemUtilClass.h"

#include <cstring>
#include <iostream>

namespace K7Tool {

namespace {

constexpr Command COMMANDS[] = {
    {"report", "Show what the library sees of the machine", declareReport},
    {"capture", "Copy what the library reads of this machine, for --root elsewhere", declareCapture},
    {"watch", "Show interrupts, processor use, disk and network traffic per second", declareWatch},
    {"diff", "Tell two captures apart, or a capture and this machine", declareDiff},
    {"net", "Show network interfaces", declareNet},
    {"dns", "Show or set the name servers", declareDns},
    {"ping", "Grade the network path to IPv4 addresses", declarePing},
    {"process", "List, find, test or end processes", declareProcess},
    {"lua", "Run a Lua script that can ask what the tool can show", declareLua},
};

} // namespace

std::span<const Command> commands() { return COMMANDS; }

void refuseRoot(const Session& session, const std::string& command)
{
    if (!session.isLive())
        throw CLI::ValidationError(command, "changes the machine and cannot be used with --root");
}

int failed(const std::string& what, const std::string& reason, int errorCode, const std::string& subject)
{
    const bool namesSubject = subject.empty() || reason.find(subject) != std::string::npos;
    const std::string cause = errorCode == 0 ? "" : std::string(" (") + std::strerror(errorCode) + ")";
    warn(what + " failed: " + (namesSubject ? "" : subject + ": ") + reason + cause);
    return EXIT_FAILED;
}

int failed(const std::string& what)
{
    const Kivo::K7SystemUtil::Failure failure = Kivo::K7SystemUtil::lastFailure();
    if (failure.operation.isEmpty())
        return failed(what, "unknown reason");
    return failed(what, failure.reason.to_string(), failure.errorCode, failure.subject.to_string());
}

int reportProblems(const std::vector<Kivo::Inventory::Problem>& problems)
{
    std::cout << std::flush;
    for (const Kivo::Inventory::Problem& problem : problems)
        failed(problem.what, problem.reason, problem.errorCode, problem.subject);
    return problems.empty() ? EXIT_DONE : EXIT_FAILED;
}

void warn(const std::string& text) { std::cerr << printable("k7sal: " + text) + "\n"; }

} // namespace K7Tool
