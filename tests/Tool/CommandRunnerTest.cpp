// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The tool's command runner: lines, results and the bound on what it stores.
#include "CommandRunner.h"

#include "OS/System/Shell.h"

#include <gtest/gtest.h>

using Shell = Kivo::K7SystemUtil::Shell;

namespace {

struct Lines final : Shell::CoutListener {
    std::vector<std::string> texts;

    Kivo::int32 channel() override { return 0; }
    void setChannel(Kivo::int32) override {}
    void resultChanged(const char* text, Kivo::int32) override { texts.emplace_back(text); }
};

} // namespace

TEST(CommandRunner, StreamsLinesAndGivesTheExitCode)
{
    K7Tool::installCommandRunner();
    Lines lines;
    EXPECT_EQ(Shell::runCommandEx("echo one; echo two >&2; printf three; exit 7", &lines), 7);
    EXPECT_EQ(lines.texts, (std::vector<std::string>{"one", "two", "three"}));
    EXPECT_EQ(Shell::runCommand("kill -9 $$"), 128 + 9);
    EXPECT_EQ(Shell::runCommand("no-such-command-anywhere 2>/dev/null"), 127);
}

TEST(CommandRunner, StoresNoMoreThanItsBound)
{
    K7Tool::installCommandRunner();
    std::string output(K7Tool::MAX_CAPTURED_OUTPUT + 100, '?');
    EXPECT_EQ(Shell::runCommandFromShell("yes | head -c 100000", output.data()), 0);
    EXPECT_EQ(output.substr(0, 4), "y\ny\n");
    EXPECT_EQ(output[K7Tool::MAX_CAPTURED_OUTPUT - 1], '\0');
    EXPECT_EQ(output[K7Tool::MAX_CAPTURED_OUTPUT], '?');
}
