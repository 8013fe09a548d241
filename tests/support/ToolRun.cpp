// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Runs the command line tool and takes what it prints.
#include "support/ToolRun.h"

#include <gtest/gtest.h>

#include <fstream>

#include <pty.h>
#include <signal.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace K7Test {

namespace {

/// Take what was written to a file without a name, and close it.
std::string takeContents(int fd)
{
    std::ifstream file("/proc/self/fd/" + std::to_string(fd));
    ::close(fd);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<char*> pointersTo(std::vector<std::string>& words)
{
    std::vector<char*> pointers;
    for (std::string& word : words)
        pointers.push_back(word.data());
    pointers.push_back(nullptr);
    return pointers;
}

int exitCode(int status) { return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status); }

Outcome run(const char* program, std::vector<std::string> arguments, int interruptAfterMs)
{
    const std::vector<char*> argv = pointersTo(arguments);
    const int output = ::memfd_create("output", MFD_CLOEXEC);
    const int errors = ::memfd_create("errors", MFD_CLOEXEC);
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, errors, STDERR_FILENO);
    pid_t pid = -1;
    EXPECT_EQ(::posix_spawn(&pid, program, &actions, nullptr, argv.data(), environ), 0) << program;
    ::posix_spawn_file_actions_destroy(&actions);
    if (interruptAfterMs > 0 && pid > 0) {
        ::usleep(static_cast<useconds_t>(interruptAfterMs) * 1000);
        ::kill(pid, SIGINT);
    }
    int status = -1;
    ::waitpid(pid, &status, 0);
    return {exitCode(status), takeContents(output), takeContents(errors)};
}

} // namespace

Outcome runTool(std::vector<std::string> arguments, int interruptAfterMs)
{
    arguments.insert(arguments.begin(), "k7sal");
    return run(K7_TOOL, std::move(arguments), interruptAfterMs);
}

Outcome runShell(const std::string& command)
{
    ::setenv("K7SAL", K7_TOOL, 1);
    return run("/bin/sh", {"sh", "-c", command}, 0);
}

std::string runOnTerminal(std::vector<std::string> arguments, const Window& window)
{
    winsize size{};
    size.ws_row = window.rows;
    size.ws_col = window.columns;
    arguments.insert(arguments.begin(), "k7sal");
    const std::vector<char*> argv = pointersTo(arguments);
    std::vector<std::string> environment = window.environment;
    const std::vector<char*> env = pointersTo(environment);
    int terminal = -1;
    const pid_t pid = ::forkpty(&terminal, nullptr, nullptr, &size);
    EXPECT_GE(pid, 0);
    if (pid == 0) {
        ::execve(K7_TOOL, argv.data(), env.data());
        ::_exit(127);
    }
    std::string sent;
    char buffer[4096];
    for (ssize_t count = 0; (count = ::read(terminal, buffer, sizeof buffer)) > 0;) // EIO once the tool has gone
        sent.append(buffer, static_cast<std::size_t>(count));
    ::close(terminal);
    int status = -1;
    ::waitpid(pid, &status, 0);
    EXPECT_EQ(exitCode(status), 0) << sent;
    return sent;
}

} // namespace K7Test
