// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Runs the command line tool and takes what it prints.
#include "support/ToolRun.h"

#include <gtest/gtest.h>

#include <array>
#include <thread>

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace K7Test {

namespace {

using Pipe = std::array<int, 2>;

Pipe makePipe()
{
    Pipe ends{};
    EXPECT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
    return ends;
}

void readBoth(int output, int errors, Outcome* outcome)
{
    pollfd sources[] = {{output, POLLIN, 0}, {errors, POLLIN, 0}};
    std::string* const texts[] = {&outcome->output, &outcome->errors};
    for (int open = 2; open > 0 && ::poll(sources, 2, -1) > 0;)
        for (int i = 0; i < 2; ++i) {
            if (sources[i].revents == 0)
                continue;
            char buffer[4096];
            const ssize_t count = ::read(sources[i].fd, buffer, sizeof buffer);
            if (count > 0) {
                texts[i]->append(buffer, static_cast<std::size_t>(count));
            } else {
                sources[i].fd = -1;
                --open;
            }
        }
}

} // namespace

Outcome runTool(const std::vector<std::string>& arguments, int interruptAfterMs)
{
    std::vector<std::string> words = {"k7sal"};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    for (std::string& word : words)
        argv.push_back(word.data());
    argv.push_back(nullptr);

    const Pipe output = makePipe();
    const Pipe errors = makePipe();
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, errors[1], STDERR_FILENO);
    pid_t pid = -1;
    EXPECT_EQ(::posix_spawn(&pid, K7_TOOL, &actions, nullptr, argv.data(), environ), 0) << K7_TOOL;
    ::posix_spawn_file_actions_destroy(&actions);
    ::close(output[1]);
    ::close(errors[1]);

    std::thread interrupter;
    if (interruptAfterMs > 0)
        interrupter = std::thread([=] {
            ::usleep(static_cast<useconds_t>(interruptAfterMs) * 1000);
            ::kill(pid, SIGINT);
        });
    Outcome outcome;
    readBoth(output[0], errors[0], &outcome);
    ::close(output[0]);
    ::close(errors[0]);
    if (interrupter.joinable())
        interrupter.join();
    int status = 0;
    ::waitpid(pid, &status, 0);
    outcome.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return outcome;
}

} // namespace K7Test
