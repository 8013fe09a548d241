// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Commands, and other processes.
#pragma once

#include "Foundation/J3Immortal.h"
#include "OS/System/K7SystemUtilClass.h"

#include <atomic>
#include <concepts>
#include <vector>

namespace Kivo {

class ProcessLock;

/// Runs shell commands, and finds, tests and kills other processes.
///
/// A command runs in one of two ways. *Delegated* (runCommand(), runCommandFromShell() and runCommandEx() with a
/// listener): the runner that the host has installed does the work, one command at a time in the whole process.
/// *Direct* (runCommandEx() without a listener): /bin/sh is started here, at once, beside whatever else runs.
/// A command goes to the shell as it stands: put texts of the application's own into it, never one from outside.
///
/// *Threads*: any.
class K7SAL_API K7SystemUtil::Shell {
public:
    /// Receives what a delegated command reports; the host's runner decides when, and with what.
    class K7SAL_API CoutListener {
    public:
        CoutListener() = default;
        CoutListener(const CoutListener&) = default;
        CoutListener(CoutListener&&) = default;
        CoutListener& operator=(const CoutListener&) = default;
        CoutListener& operator=(CoutListener&&) = default;
        virtual ~CoutListener();

        /// The number that the host knows the listener's command by.
        virtual int32 channel() = 0;

        /// Take that number.
        virtual void setChannel(int32 channel) = 0;

        /// Take a piece of what the command reports, for example a line of its output.
        virtual void resultChanged(const char* text, int32 value) = 0;
    };

    /// Runs @p command and gives its result, by the host's own convention. @p listener may be null.
    using ImplFunction0 = int32 (*)(const char* command, CoutListener* listener);

    /// Runs @p command and leaves its output in @p output, whose size the host and the caller have agreed on.
    using ImplFunction1 = int32 (*)(const char* command, char* output);

    Shell() = delete;

    /// Install the host's runner for runCommand() and for runCommandEx() with a listener; null uninstalls it.
    /// A runner may not run delegated commands itself: it would wait for its own end.
    static void setImplFunction0(ImplFunction0 function);

    /// Install the host's runner for runCommandFromShell(), in the same way.
    static void setImplFunction1(ImplFunction1 function);

    /// @{
    /// Run a command by the host's runner.
    ///
    /// Formats are those of J3String::format().
    /// @return what the runner gives; -1 when none is installed and for a null command or format. Any result but 0 is a
    ///     failure, "the command gave 3". What a runner throws passes through.
    ///
    /// *Cost*: waits for the delegated command that runs already, then for this one. In a forked child nothing runs
    /// already, whatever other threads of its parent were doing.
    static int32 runCommand(const char* command);
    static int32 runCommand(const J3String& command);
    static int32 runCommand(const wchar_t* format, ...);
    static int32 runCommandEx(const char* command, CoutListener* listener);
    static int32 runCommandEx(const J3String& command, CoutListener* listener);
    static int32 runCommandEx(const wchar_t* command, CoutListener* listener);
    static int32 runCommandEx(CoutListener* listener, const wchar_t* format, ...);
    /// @}

    /// Run a command whose output is wanted.
    /// @param command as for runCommand()
    /// @param output  handed to the host's runner untouched
    /// @return as runCommand()
    static int32 runCommandFromShell(const char* command, char* output);

    /// @{
    /// Start "/bin/sh -c" on a command, with this process's standard streams, and wait for its end.
    ///
    /// @return the raw status word of waitpid(): a shell that exits with 3 gives 768, see exitCodeOf(). It is -1 when
    ///     no process could be made and for a null command or format, and 0 when /bin/sh itself cannot be started.
    ///     Where the host ignores SIGCHLD the command has run to its end, but the kernel keeps no status: -1 with
    ///     ECHILD. Any result but 0 is a failure.
    ///
    /// *Source*: vfork(2), execlp(3), waitpid(2). *Cost*: the command's time; the caller's memory size does not matter.
    static int32 runCommandEx(const char* command);
    static int32 runCommandEx(const J3String& command);
    static int32 runCommandEx(const wchar_t* format, ...);
    /// @}

    /// The same for every argument that is not a listener: a 0 after the format is its argument, not a null listener.
    template <class First, class... Rest>
    requires(!std::convertible_to<First, CoutListener*>) static int32
        runCommandEx(const wchar_t* format, First first, Rest... rest)
    {
        return static_cast<int32 (*)(const wchar_t*, ...)>(&Shell::runCommandEx)(format, first, rest...);
    }

    /// Decode what the direct runCommandEx() gives.
    /// @return the exit code, 0 to 255; 128 and the signal's number for a command that a signal ended; -1 for a status
    ///     that tells neither
    [[nodiscard]] static int32 exitCodeOf(int32 status);

    /// Read the process id in a pid file: decimal, hexadecimal after "0x", octal after "0".
    /// @return the number that the first line begins with, clamped to 32 bits, 0 when there is none; -1 when the file
    ///     cannot be read
    static int32 readProcessId(const char* pidFile);

    /// List the processes.
    /// @param ids becomes their numbers in ascending order
    /// @return false, with @p ids as they were, when /proc cannot be read
    static bool listProcessIds(std::vector<int32>* ids);

    /// Find a process by a text in its program name, the first argument of its command line.
    /// @param needle the text; empty, it is found in every program name
    /// @return the first match in the text order of the ids ("1", "10", "2"); -1 for none, and when there is none among
    ///     those that can be read
    ///
    /// The caller itself is a match like any other. A process that was started this very moment, as one that has ended,
    /// has no command line and is not found.
    /// *Source*: /proc/N/cmdline. *Cost*: one open and one read for each process.
    static int32 getProcessId(const char* needle);

    /// Find all processes that getProcessId() could find.
    /// @param needle as for getProcessId()
    /// @param ids    becomes their numbers in ascending order, those that could be read also when others could not
    /// @return false when a command line could not be read, except that of a process that has ended meanwhile
    static bool getProcessIds(const char* needle, std::vector<int32>* ids);

    /// Tell whether a process lives and has a text in its program name.
    /// @param needle  the text
    /// @param pidFile where its id stands; may be null
    /// @param pid     its id when @p pidFile is null. A negative one, from here or for a file that is not there, is
    ///                looked up by @p needle; 0 is no process.
    static bool isAliveProcess(const char* needle, const char* pidFile, int32 pid);

    /// Kill every process that getProcessId() finds, with SIGKILL: at most 30, one each 80 ms. The caller is killed,
    /// too, when its own program name holds the text.
    ///
    /// Does nothing for an empty @p needle, which every process matches, and while a system root is set, where the ids
    /// are another machine's; both are failures, as is a process that is still there after 30 rounds.
    /// *Privilege*: that of kill(2). *Cost*: 80 ms a process; 2.4 s when one cannot be killed.
    static void killProcess(const char* needle);

    /// Name the calling thread and the processor it runs on: "recorder[2]", after the name of its J3Thread;
    /// "main-process[0]" for the thread that loaded the library and for the thread that a forked child begins with;
    /// "unknown-thread[1]" for any other.
    /// @return valid until the same thread's next call; a name of more than 480 bytes is cut
    static const char* currentThreadName();

private:
    static void resumeAfterFork();

    static J3Immortal<ProcessLock> s_runCommandLock;
    static int32 s_mainThreadId;
    static std::atomic<ImplFunction0> _implFunction0;
    static std::atomic<ImplFunction1> _implFunction1;
    static const int _forkHandler;
};

} // namespace Kivo
