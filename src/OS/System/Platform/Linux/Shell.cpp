// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Commands, and other processes.
#include "OS/System/Shell.h"

#include "Foundation/J3Thread.h"
#include "Foundation/J3ThreadManager.h"
#include "OS/System/Platform/Linux/detail/Attempt_p.h"
#include "OS/System/Platform/Linux/detail/ProcessLock_p.h"
#include "OS/System/Platform/Linux/detail/ShellParser_p.h"
#include "OS/System/Platform/Linux/detail/SystemFile_p.h"
#include "OS/System/Platform/Linux/detail/Text_p.h"

#include <algorithm>

#include <pthread.h>
#include <sched.h>
#include <signal.h>
#include <sys/wait.h>

namespace Kivo {

namespace {

constexpr std::size_t PID_FILE_LINE_SIZE = 100;
constexpr std::size_t COMMAND_LINE_SIZE = 255;
constexpr int KILL_ROUNDS = 30;
constexpr uint32 KILL_INTERVAL_MS = 80;
constexpr std::size_t LONGEST_THREAD_NAME = 480;

/// Run a delegated command, alone in the process.
template <class Function, class... Arguments>
int32 runDelegated(const char* operation, const ProcessLock& lock, const std::atomic<Function>& runner,
                   const char* command, Arguments... arguments)
{
    const std::lock_guard<const ProcessLock> held(lock);
    Operation underWay(operation);
    const Function function = runner.load(std::memory_order_acquire);
    if (!function || !command) {
        noteFailure({function ? "command is null" : "no command runner is installed"});
        return -1;
    }
    try {
        const int32 result = function(command, arguments...);
        if (result == 0)
            underWay.succeeded();
        else
            noteFailure({"the command gave " + std::to_string(result), 0, command});
        return result;
    } catch (...) {
        noteFailure({"the command runner raised an exception", 0, command});
        throw;
    }
}

int32 nullFormat(const char* operation)
{
    return attemptOr(operation, -1, []() -> int32 { throw Reason{"format is null"}; });
}

std::string describedStatus(int32 status)
{
    if (WIFSIGNALED(status))
        return "the command was ended by signal " + std::to_string(WTERMSIG(status));
    return "the command exited with " + std::to_string(WEXITSTATUS(status));
}

int32 runDirect(const char* command)
{
    int status = -1;
    const pid_t child = ::vfork(); // NOLINT(clang-analyzer-security.insecureAPI.vfork): nothing but exec follows
    if (child == 0) {
        ::execlp("/bin/sh", "sh", "-c", command, nullptr);
        ::_exit(0);
    }
    requireCall(child > 0, "vfork() failed", command);
    const pid_t ended = retried([&] { return ::waitpid(child, &status, 0); });
    requireCall(ended == child, "waitpid() failed", command);
    return status;
}

/// Whether the program name of a process holds @p needle; nothing, once that is noted, when it cannot be read. A
/// process that is gone has no name.
std::optional<bool> hasProgramName(int32 pid, std::string_view needle)
{
    SystemFile file("/proc/" + std::to_string(pid) + "/cmdline");
    char buffer[COMMAND_LINE_SIZE - 1];
    const std::string_view line = file ? file.readInto(buffer, sizeof buffer) : std::string_view();
    if (line.empty() && errno != 0 && errno != ENOENT && errno != ESRCH) {
        noteFailure({"can't read the command line", errno, file.path()});
        return std::nullopt;
    }
    return !line.empty() && parseProgramName(line).find(needle) != std::string_view::npos;
}

/// The processes in the text order of their numbers.
std::vector<int32> processIds()
{
    std::vector<std::string> names;
    requireCall(listSystemDirectory("/proc", &names), "can't list the directory", "/proc");
    std::vector<int32> ids;
    for (const std::string& name : names)
        if (isProcessName(name))
            ids.push_back(leadingNumber<int32>(name));
    return ids;
}

int32 pidIn(const char* pidFile)
{
    require(pidFile, "pidFile is null");
    SystemLines lines(pidFile, PID_FILE_LINE_SIZE);
    lines.opened();
    std::string_view line;
    lines.next(&line);
    return lines.failed() ? -1 : parsePidLine(line);
}

/// The same for a file that need not be there: -1 then.
int32 pidInIfThere(const char* pidFile)
{
    try {
        return pidIn(pidFile);
    } catch (const Reason& reason) {
        if (reason.errorCode != ENOENT)
            noteFailure(reason);
        return -1;
    }
}

/// Send SIGKILL until nothing is found.
void killAll(const char* needle)
{
    int error = 0;
    for (int round = 0; round < KILL_ROUNDS; ++round) {
        const int32 pid = K7SystemUtil::Shell::getProcessId(needle);
        if (pid == -1)
            return;
        error = ::kill(pid, SIGKILL) == 0 ? 0 : errno;
        J3Thread::sleep(KILL_INTERVAL_MS);
    }
    throw Reason{error != 0 ? "kill() failed" : "more processes than 30", error, needle};
}

} // namespace

J3Immortal<ProcessLock> K7SystemUtil::Shell::s_runCommandLock;
int32 K7SystemUtil::Shell::s_mainThreadId = ::gettid();
constinit std::atomic<K7SystemUtil::Shell::ImplFunction0> K7SystemUtil::Shell::_implFunction0{nullptr};
constinit std::atomic<K7SystemUtil::Shell::ImplFunction1> K7SystemUtil::Shell::_implFunction1{nullptr};
const int K7SystemUtil::Shell::_forkHandler = ::pthread_atfork(nullptr, nullptr, &Shell::resumeAfterFork);

void K7SystemUtil::Shell::resumeAfterFork()
{
    s_mainThreadId = ::gettid();
    s_runCommandLock->freeAfterFork();
}

K7SystemUtil::Shell::CoutListener::~CoutListener() = default;

void K7SystemUtil::Shell::setImplFunction0(ImplFunction0 function)
{
    _implFunction0.store(function, std::memory_order_release);
}

void K7SystemUtil::Shell::setImplFunction1(ImplFunction1 function)
{
    _implFunction1.store(function, std::memory_order_release);
}

int32 K7SystemUtil::Shell::runCommand(const char* command)
{
    return runDelegated("Shell::runCommand", *s_runCommandLock, _implFunction0, command, nullptr);
}

int32 K7SystemUtil::Shell::runCommand(const J3String& command) { return runCommand(command.to_string().c_str()); }

int32 K7SystemUtil::Shell::runCommandEx(const char* command, CoutListener* listener)
{
    return runDelegated("Shell::runCommandEx", *s_runCommandLock, _implFunction0, command, listener);
}

int32 K7SystemUtil::Shell::runCommandEx(const J3String& command, CoutListener* listener)
{
    return runCommandEx(command.to_string().c_str(), listener);
}

int32 K7SystemUtil::Shell::runCommandEx(const wchar_t* command, CoutListener* listener)
{
    if (!command)
        return runCommandEx(static_cast<const char*>(nullptr), listener);
    return runCommandEx(J3String(command), listener);
}

int32 K7SystemUtil::Shell::runCommandFromShell(const char* command, char* output)
{
    return runDelegated("Shell::runCommandFromShell", *s_runCommandLock, _implFunction1, command, output);
}

int32 K7SystemUtil::Shell::runCommandEx(const char* command)
{
    int32 status = -1;
    attempt("Shell::runCommandEx", [&] {
        require(command, "command is null");
        status = runDirect(command);
        if (status != 0)
            throw Reason{describedStatus(status), 0, command};
    });
    return status;
}

int32 K7SystemUtil::Shell::runCommandEx(const J3String& command) { return runCommandEx(command.to_string().c_str()); }

// A format and its arguments as a command.
#define K7_FORMATTED(operation, command, format)                                                                       \
    if (!(format))                                                                                                     \
        return nullFormat(operation);                                                                                  \
    J3String command;                                                                                                  \
    std::va_list arguments;                                                                                            \
    va_start(arguments, format);                                                                                       \
    (command).vformat(format, arguments);                                                                              \
    va_end(arguments)

int32 K7SystemUtil::Shell::runCommand(const wchar_t* format, ...)
{
    K7_FORMATTED("Shell::runCommand", command, format);
    return runCommand(command);
}

int32 K7SystemUtil::Shell::runCommandEx(CoutListener* listener, const wchar_t* format, ...)
{
    K7_FORMATTED("Shell::runCommandEx", command, format);
    return runCommandEx(command, listener);
}

int32 K7SystemUtil::Shell::runCommandEx(const wchar_t* format, ...)
{
    K7_FORMATTED("Shell::runCommandEx", command, format);
    return runCommandEx(command);
}

#undef K7_FORMATTED

int32 K7SystemUtil::Shell::exitCodeOf(int32 status)
{
    if (WIFEXITED(status))
        return WEXITSTATUS(status);
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : -1;
}

int32 K7SystemUtil::Shell::readProcessId(const char* pidFile)
{
    return attemptOr("Shell::readProcessId", -1, [pidFile] { return pidIn(pidFile); });
}

bool K7SystemUtil::Shell::listProcessIds(std::vector<int32>* ids)
{
    return attempt("Shell::listProcessIds", [ids] {
        require(ids, "ids is null");
        std::vector<int32> found = processIds();
        std::sort(found.begin(), found.end());
        *ids = std::move(found);
    });
}

int32 K7SystemUtil::Shell::getProcessId(const char* needle)
{
    return attemptOr("Shell::getProcessId", -1, [needle] {
        require(needle, "needle is null");
        const std::vector<int32> ids = processIds();
        const auto match = std::find_if(ids.begin(), ids.end(),
                                        [&](int32 pid) { return hasProgramName(pid, needle).value_or(false); });
        return match == ids.end() ? -1 : *match;
    });
}

bool K7SystemUtil::Shell::getProcessIds(const char* needle, std::vector<int32>* ids)
{
    return attempt("Shell::getProcessIds", [&] {
        require(needle, "needle is null");
        require(ids, "ids is null");
        std::vector<int32> candidates = processIds();
        std::sort(candidates.begin(), candidates.end());
        ids->clear();
        bool allRead = true;
        for (const int32 pid : candidates) {
            const std::optional<bool> matches = hasProgramName(pid, needle);
            allRead = allRead && matches;
            if (matches.value_or(false))
                ids->push_back(pid);
        }
        return allRead;
    });
}

bool K7SystemUtil::Shell::isAliveProcess(const char* needle, const char* pidFile, int32 pid)
{
    return attempt("Shell::isAliveProcess", [=]() mutable {
        require(needle, "needle is null");
        if (pidFile)
            pid = pidInIfThere(pidFile);
        if (pid < 0)
            pid = getProcessId(needle);
        return pid >= 1 && hasProgramName(pid, needle).value_or(false);
    });
}

void K7SystemUtil::Shell::killProcess(const char* needle)
{
    attempt("Shell::killProcess", [needle] {
        require(hasText(needle), "needle is empty");
        requireLiveSystem();
        killAll(needle);
    });
}

const char* K7SystemUtil::Shell::currentThreadName()
{
    static constinit thread_local char t_name[LONGEST_THREAD_NAME + 32]{};
    const int32 id = ::gettid();
    const J3Thread* const thread = J3ThreadManager::defaultManager()->findThread(static_cast<uint32>(id));
    std::string name = id == s_mainThreadId ? "main-process" : "unknown-thread";
    if (thread && !thread->name().isEmpty())
        name = cutText(thread->name().to_string(), LONGEST_THREAD_NAME);
    copyText(t_name, name + "[" + std::to_string(::sched_getcpu()) + "]");
    return t_name;
}

} // namespace Kivo
