// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Commands, and other processes.
#include "OS/System/Shell.h"

#include "Foundation/J3Thread.h"
#include "Foundation/J3ThreadManager.h"
#include "OS/System/Platform/Linux/detail/Attempt_p.h"
#include "OS/System/Platform/Linux/detail/SystemFile_p.h"
#include "OS/System/Platform/Linux/detail/Text_p.h"

#include <algorithm>
#include <cstdlib>

#include <sched.h>
#include <signal.h>
#include <sys/wait.h>

namespace Kivo {

namespace {

constexpr std::size_t PID_FILE_LINE_SIZE = 100;
constexpr std::size_t COMMAND_LINE_SIZE = 255;
constexpr int KILL_ROUNDS = 30;
constexpr uint32 KILL_INTERVAL_MS = 80;

bool isProcessName(std::string_view name)
{
    return std::all_of(name.begin(), name.end(), [](char c) { return c >= '0' && c <= '9'; });
}

/// Whether the program name in a command line's file holds @p needle. The arguments are separated by zero bytes, so
/// that a text read as C reads it ends with the first: "/usr/sbin/ntpd\0-g\0". A kernel thread has no command line.
bool hasProgramName(const std::string& path, std::string_view needle)
{
    SystemFile file(path);
    char buffer[COMMAND_LINE_SIZE - 1];
    std::string_view line = file ? file.readInto(buffer, sizeof buffer) : std::string_view();
    if (line.empty())
        return false;
    line = line.substr(0, line.find('\0'));
    line = line.substr(0, line.find('\n'));
    return line.find(needle) != std::string_view::npos;
}

/// Run a delegated command, alone in the process.
template <class Function, class... Arguments>
int32 runDelegated(const J3Lock& lock, const std::atomic<Function>& runner, const char* command, Arguments... arguments)
{
    const std::lock_guard<const J3Lock> held(lock);
    return attemptOr("Shell::runCommand", -1, [&] {
        const Function function = runner.load(std::memory_order_acquire);
        require(function, "no command runner is installed");
        require(command, "command is null");
        return function(command, arguments...);
    });
}

} // namespace

J3Lock K7SystemUtil::Shell::s_runCommandLock;
const int32 K7SystemUtil::Shell::s_mainThreadId = ::gettid();
std::atomic<K7SystemUtil::Shell::ImplFunction0> K7SystemUtil::Shell::_implFunction0{nullptr};
std::atomic<K7SystemUtil::Shell::ImplFunction1> K7SystemUtil::Shell::_implFunction1{nullptr};

K7SystemUtil::Shell::CoutListener::~CoutListener() = default;

void K7SystemUtil::Shell::setImplFunction0(ImplFunction0 function)
{
    _implFunction0.store(function, std::memory_order_release);
}

void K7SystemUtil::Shell::setImplFunction1(ImplFunction1 function)
{
    _implFunction1.store(function, std::memory_order_release);
}

int32 K7SystemUtil::Shell::runCommand(const char* command) { return runCommandEx(command, nullptr); }

int32 K7SystemUtil::Shell::runCommand(const J3String& command) { return runCommand(command.to_string().c_str()); }

int32 K7SystemUtil::Shell::runCommandEx(const char* command, CoutListener* listener)
{
    return runDelegated(s_runCommandLock, _implFunction0, command, listener);
}

int32 K7SystemUtil::Shell::runCommandEx(const J3String& command, CoutListener* listener)
{
    return runCommandEx(command.to_string().c_str(), listener);
}

int32 K7SystemUtil::Shell::runCommandFromShell(const char* command, char* output)
{
    return runDelegated(s_runCommandLock, _implFunction1, command, output);
}

int32 K7SystemUtil::Shell::runCommandEx(const char* command)
{
    return attemptOr("Shell::runCommandEx", -1, [command] {
        require(command, "command is null");
        int status = -1;
        const pid_t child = ::vfork(); // NOLINT(clang-analyzer-security.insecureAPI.vfork): nothing but exec follows
        if (child == 0) {
            ::execlp("/bin/sh", "sh", "-c", command, nullptr);
            ::_exit(0);
        }
        requireCall(child > 0, "vfork() failed");
        retried([&] { return ::waitpid(child, &status, 0); });
        return status;
    });
}

int32 K7SystemUtil::Shell::runCommandEx(const J3String& command) { return runCommandEx(command.to_string().c_str()); }

// A format and its arguments as a command.
#define K7_FORMATTED(command, format)                                                                                  \
    if (!(format))                                                                                                     \
        return -1;                                                                                                     \
    J3String command;                                                                                                  \
    std::va_list arguments;                                                                                            \
    va_start(arguments, format);                                                                                       \
    (command).vformat(format, arguments);                                                                              \
    va_end(arguments)

int32 K7SystemUtil::Shell::runCommand(const wchar_t* format, ...)
{
    K7_FORMATTED(command, format);
    return runCommand(command);
}

int32 K7SystemUtil::Shell::runCommandEx(CoutListener* listener, const wchar_t* format, ...)
{
    K7_FORMATTED(command, format);
    return runCommandEx(command, listener);
}

int32 K7SystemUtil::Shell::runCommandEx(const wchar_t* format, ...)
{
    K7_FORMATTED(command, format);
    return runCommandEx(command);
}

#undef K7_FORMATTED

int32 K7SystemUtil::Shell::readProcessId(const char* pidFile)
{
    return attemptOr("Shell::readProcessId", -1, [pidFile] {
        require(pidFile, "pidFile is null");
        SystemLines lines(pidFile, PID_FILE_LINE_SIZE);
        requireCall(static_cast<bool>(lines), "can't open the pid file");
        std::string_view line;
        lines.next(&line);
        return static_cast<int32>(std::strtol(std::string(line).c_str(), nullptr, 0));
    });
}

int32 K7SystemUtil::Shell::getProcessId(const char* needle)
{
    return attemptOr("Shell::getProcessId", -1, [needle] {
        require(needle, "needle is null");
        std::vector<std::string> names;
        requireCall(listSystemDirectory("/proc", &names), "can't list /proc");
        std::string path;
        for (const std::string& name : names) {
            if (isProcessName(name) && hasProgramName(path.assign("/proc/").append(name).append("/cmdline"), needle))
                return leadingNumber<int32>(name);
        }
        throw Reason{"no such process"};
    });
}

bool K7SystemUtil::Shell::isAliveProcess(const char* needle, const char* pidFile, int32 pid)
{
    return attempt("Shell::isAliveProcess", [=]() mutable {
        require(needle, "needle is null");
        if (pidFile)
            pid = readProcessId(pidFile);
        if (pid < 0)
            pid = getProcessId(needle);
        require(pid >= 1 && hasProgramName("/proc/" + std::to_string(pid) + "/cmdline", needle), "no such process");
    });
}

void K7SystemUtil::Shell::killProcess(const char* needle)
{
    if (!hasText(needle) || hasSystemRoot())
        return;
    for (int round = 0; round < KILL_ROUNDS; ++round) {
        const int32 pid = getProcessId(needle);
        if (pid == -1)
            return;
        ::kill(pid, SIGKILL);
        J3Thread::sleep(KILL_INTERVAL_MS);
    }
}

const char* K7SystemUtil::Shell::currentThreadName()
{
    thread_local std::string result;
    std::string name;
    const int32 id = ::gettid();
    const J3Thread* const thread = J3ThreadManager::defaultManager()->findThread(static_cast<uint32>(id));
    if (thread && !thread->name().isEmpty())
        name = thread->name().to_string();
    else
        name = id == s_mainThreadId ? "main-process" : "unknown-thread";
    result = name + "[" + std::to_string(::sched_getcpu()) + "]";
    return result.c_str(); // NOLINT(clang-analyzer-cplusplus.InnerPointer): changed by the next call only
}

} // namespace Kivo
