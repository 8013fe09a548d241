// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Runs the command line tool and takes what it prints.
#include "support/ToolRun.h"

#include <gtest/gtest.h>

#include <fstream>

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

} // namespace

Outcome runTool(std::vector<std::string> arguments, int interruptAfterMs)
{
    arguments.insert(arguments.begin(), "k7sal");
    std::vector<char*> argv;
    for (std::string& word : arguments)
        argv.push_back(word.data());
    argv.push_back(nullptr);
    const int output = ::memfd_create("output", MFD_CLOEXEC);
    const int errors = ::memfd_create("errors", MFD_CLOEXEC);
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, errors, STDERR_FILENO);
    pid_t pid = -1;
    EXPECT_EQ(::posix_spawn(&pid, K7_TOOL, &actions, nullptr, argv.data(), environ), 0) << K7_TOOL;
    ::posix_spawn_file_actions_destroy(&actions);
    if (interruptAfterMs > 0 && pid > 0) {
        ::usleep(static_cast<useconds_t>(interruptAfterMs) * 1000);
        ::kill(pid, SIGINT);
    }
    int status = -1;
    ::waitpid(pid, &status, 0);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), takeContents(output),
            takeContents(errors)};
}

} // namespace K7Test
