// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Processes.
#include "Inventory/Process.h"

#include "Inventory/detail/ProcessParser_p.h"
#include "Inventory/detail/Source_p.h"
#include "OS/System/Attribute.h"
#include "OS/System/Shell.h"

#include <cerrno>

namespace Kivo::Inventory {

namespace {

constexpr const char* WHAT = "processes";
constexpr std::size_t MOST_PROCESSES = 131072;
constexpr std::size_t LONGEST_FILE = 4096; // of stat, status and the part of a command line that is kept

constexpr ColumnInfo text(const char* key, const char* heading, const char* help, uint16 traits = PLAIN)
{
    return {key, heading, help, Unit::NONE, Align::LEFT, traits};
}

constexpr ColumnInfo number(const char* key, const char* heading, const char* help, uint16 traits = PLAIN,
                            Unit unit = Unit::NONE)
{
    return {key, heading, help, unit, Align::RIGHT, traits};
}

template <auto Member>
Value secondsValue(const Process& process)
{
    return process.*Member ? Value(Real{*(process.*Member), 2}) : Value();
}

constexpr Column<Process> COLUMNS[] = {
    column<&Process::pid>(number("pid", "PID", "Number of the process", IDENTITY)),
    column<&Process::name>(text("name", "name", "The kernel's short name of the process")),
    column<&Process::program>(text("program", "program", "First argument of the command line")),
    column<&Process::commandLine>(
        {"command_line", "command line", "All arguments", Unit::NONE, Align::LEFT, DETAIL, Secret::COMMAND_LINE}),
    column<&Process::state>(text("state", "state", "What the process is doing", VOLATILE)),
    column<&Process::parent>(number("parent_pid", "parent", "Number of the process that started it", DETAIL)),
    column<&Process::user>(number("user_id", "user", "Effective user")),
    column<&Process::threads>(number("threads", "threads", "Threads of the process", VOLATILE)),
    column<&Process::resident>(number("resident_kib", "memory", "Main memory in use", VOLATILE, Unit::KIBIBYTES)),
    {number("processor_seconds", "processor", "Processor time of all its threads", COUNTER, Unit::SECONDS),
     &secondsValue<&Process::processorTime>},
    {number("started_seconds", "started", "When it started, after the start of the machine", DETAIL, Unit::SECONDS),
     &secondsValue<&Process::startTime>},
    column<&Process::openFiles>(number("open_files", "files", "Open file descriptors", VOLATILE)),
};

/// Whether the latest failure says that the running machine has no such process any more.
bool isGone()
{
    const int32 code = K7SystemUtil::lastFailure().errorCode;
    return isLive() && (code == ENOENT || code == ESRCH);
}

/// @return nothing for a process that is gone
std::optional<Process> readProcess(Source& source, int32 pid)
{
    const std::string directory = "/proc/" + std::to_string(pid);
    Process process;
    process.pid = pid;
    if (const auto cmdline = source.text(directory + "/cmdline", {ESRCH}, LONGEST_FILE)) {
        if (auto arguments = parseProcessArguments(*cmdline)) {
            process.program = std::string(arguments->program);
            process.commandLine = std::move(arguments->line);
        }
    }
    if (const auto contents = source.text(directory + "/status", {ESRCH}, LONGEST_FILE)) {
        const ProcessStatus status = parseProcessStatus(*contents);
        process.user = status.user;
        process.resident = status.resident;
    }
    std::vector<std::string> descriptors;
    if (K7SystemUtil::Attribute::listNames((directory + "/fd").c_str(), &descriptors))
        process.openFiles = descriptors.size();
    else
        source.noteFailure({ESRCH, EACCES, EPERM});
    // Last: a process that is still there now was there for the other files, too.
    const auto contents = source.text(directory + "/stat", {ESRCH}, LONGEST_FILE);
    if (!contents)
        return isGone() ? std::nullopt : std::optional(process);
    const auto stat = parseProcessStat(*contents);
    if (!stat) {
        source.note("is not a process's statistics", 0, directory + "/stat");
        return process;
    }
    process.name = std::string(stat->name);
    process.state = std::string(stat->state);
    process.parent = stat->parent;
    process.threads = stat->threads;
    process.processorTime = stat->processorTime;
    process.startTime = stat->startTime;
    return process;
}

/// @param list gives the numbers of the processes to read
template <class List>
Listing<Process> processes(List&& list)
{
    Listing<Process> listing;
    Source source(WHAT, &listing.problems);
    std::vector<int32> pids;
    listing.known = list(&pids);
    if (!listing.known)
        source.noteFailure();
    listing.known |= !pids.empty();
    for (const int32 pid : pids) {
        if (listing.records.size() == MOST_PROCESSES) {
            source.note("has more entries than are listed", 0, "/proc");
            break;
        }
        if (auto process = readProcess(source, pid))
            listing.records.push_back(std::move(*process));
    }
    return listing;
}

} // namespace

template <>
std::span<const Column<Process>> columns<Process>()
{
    return COLUMNS;
}

Listing<Process> listProcesses() { return processes(K7SystemUtil::Shell::listProcessIds); }

Listing<Process> findProcesses(const std::string& needle)
{
    return processes(
        [&needle](std::vector<int32>* pids) { return K7SystemUtil::Shell::getProcessIds(needle.c_str(), pids); });
}

} // namespace Kivo::Inventory
