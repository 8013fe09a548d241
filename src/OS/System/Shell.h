// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Commands, and other processes.
#pragma once

#include "Foundation/J3Lock.h"
#include "OS/System/K7SystemUtilClass.h"

#include <atomic>

namespace Kivo {

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

        virtual int32 channel() = 0;
        virtual void setChannel(int32 channel) = 0;
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

    // Each runs a command by the host's runner and gives what that gives; -1 when none is installed and for a null
    // command or format. What a runner throws passes through. Formats are those of J3String::format().
    // *Cost*: waits for the delegated command that runs already, then for this one.
    static int32 runCommand(const char* command);
    static int32 runCommand(const J3String& command);
    static int32 runCommand(const wchar_t* format, ...);
    static int32 runCommandEx(const char* command, CoutListener* listener);
    static int32 runCommandEx(const J3String& command, CoutListener* listener);
    static int32 runCommandEx(CoutListener* listener, const wchar_t* format, ...);

    /// Run a command whose output is wanted. @param output handed to the host's runner untouched
    static int32 runCommandFromShell(const char* command, char* output);

    // Each starts "/bin/sh -c" on a command, with this process's standard streams, and waits for its end.
    // The result is the raw status word of waitpid(): a shell that exits with 3 gives 768. It is -1 when no process
    // could be made and for a null command or format, and 0 when /bin/sh itself cannot be started.
    // *Source*: vfork(2), execlp(3), waitpid(2). *Cost*: the command's time; the caller's memory size does not matter.
    static int32 runCommandEx(const char* command);
    static int32 runCommandEx(const J3String& command);
    static int32 runCommandEx(const wchar_t* format, ...);

    /// Read the process id in a pid file: decimal, hexadecimal after "0x", octal after "0".
    /// @return the number that the first line begins with, 0 when there is none; -1 when the file cannot be opened
    static int32 readProcessId(const char* pidFile);

    /// Find a process by a text in its program name, the first argument of its command line.
    /// @param needle the text; empty, it is found in every program name
    /// @return the first match in the text order of the ids ("1", "10", "2"); -1 for none
    /// A process that was started this very moment, as one that has ended, has no command line and is not found.
    /// *Source*: /proc/N/cmdline. *Cost*: one open and one read for each process.
    static int32 getProcessId(const char* needle);

    /// Tell whether a process lives and has a text in its program name.
    /// @param pidFile where its id stands; may be null
    /// @param pid     its id when @p pidFile is null. A negative one, from here or from the file, is looked up by
    ///                @p needle; 0 is no process.
    static bool isAliveProcess(const char* needle, const char* pidFile, int32 pid);

    /// Kill every process that getProcessId() finds, with SIGKILL: at most 30, one each 80 ms.
    ///
    /// Does nothing for an empty @p needle, which every process matches, and while a system root is set, where the ids
    /// are another machine's. *Privilege*: that of kill(2). *Cost*: 80 ms a process; 2.4 s when one cannot be killed.
    static void killProcess(const char* needle);

    /// Name the calling thread and the processor it runs on: "recorder[2]", after the name of its J3Thread;
    /// "main-process[0]" for the thread that loaded the library, "unknown-thread[1]" for any other.
    /// @return valid until the same thread's next call
    static const char* currentThreadName();

private:
    static J3Lock s_runCommandLock;
    static const int32 s_mainThreadId;
    static std::atomic<ImplFunction0> _implFunction0;
    static std::atomic<ImplFunction1> _implFunction1;
};

} // namespace Kivo
