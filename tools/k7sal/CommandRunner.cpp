// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The tool's command runner for the library.
#include "CommandRunner.h"

#include "OS/System/Shell.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <functional>
#include <string>
#include <string_view>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace K7Tool {

using Shell = Kivo::K7SystemUtil::Shell;

namespace {

pid_t spawnShell(const char* command, int output)
{
    std::string shell = "sh";
    std::string option = "-c";
    std::string text = command;
    char* const arguments[] = {shell.data(), option.data(), text.data(), nullptr};
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, output, STDERR_FILENO);
    pid_t pid = -1;
    const int error = ::posix_spawn(&pid, "/bin/sh", &actions, nullptr, arguments, environ);
    ::posix_spawn_file_actions_destroy(&actions);
    return error == 0 ? pid : -1;
}

int waitFor(pid_t pid)
{
    int status = 0;
    while (::waitpid(pid, &status, 0) < 0)
        if (errno != EINTR)
            return -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

/// Run a command and hand over its output as it comes.
int run(const char* command, const std::function<void(std::string_view)>& take)
{
    int ends[2];
    if (!command || ::pipe2(ends, O_CLOEXEC) != 0)
        return -1;
    const pid_t pid = spawnShell(command, ends[1]);
    ::close(ends[1]);
    if (pid > 0) {
        std::array<char, 4096> buffer;
        for (;;) {
            const ssize_t count = ::read(ends[0], buffer.data(), buffer.size());
            if (count > 0)
                take({buffer.data(), static_cast<std::size_t>(count)});
            else if (count == 0 || errno != EINTR)
                break;
        }
    }
    ::close(ends[0]);
    return pid > 0 ? waitFor(pid) : -1;
}

/// Cuts output into lines for a listener.
class LineSplitter {
public:
    explicit LineSplitter(Shell::CoutListener* listener) : _listener(listener) {}

    void take(std::string_view text)
    {
        for (const char byte : text) {
            if (byte != '\n')
                _line += byte;
            if (byte == '\n' || _line.size() == MAX_LINE_LENGTH)
                deliver();
        }
    }

    void finish()
    {
        if (!_line.empty())
            deliver();
    }

private:
    void deliver()
    {
        if (_listener)
            _listener->resultChanged(_line.c_str(), 0);
        _line.clear();
    }

    Shell::CoutListener* _listener;
    std::string _line;
};

Kivo::int32 runForListener(const char* command, Shell::CoutListener* listener)
{
    LineSplitter lines(listener);
    const int result = run(command, [&](std::string_view text) { lines.take(text); });
    lines.finish();
    return result;
}

Kivo::int32 runForOutput(const char* command, char* output)
{
    std::size_t used = 0;
    const int result = run(command, [&](std::string_view text) {
        const std::size_t count = output ? std::min(text.size(), MAX_CAPTURED_OUTPUT - 1 - used) : 0;
        std::copy_n(text.begin(), count, output + used);
        used += count;
    });
    if (output)
        output[used] = '\0';
    return result;
}

} // namespace

void installCommandRunner()
{
    Shell::setImplFunction0(runForListener);
    Shell::setImplFunction1(runForOutput);
}

} // namespace K7Tool
