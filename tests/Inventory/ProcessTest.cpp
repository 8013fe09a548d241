// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Processes: their files, made trees of them, and those of the sandbox.
#include "Inventory/Process.h"

#include "support/Sandbox.h"
#include "support/SystemTree.h"

#include "Inventory/detail/ProcessParser_p.h"

#include <gtest/gtest.h>

#include <algorithm>

#include <unistd.h>

using namespace Kivo;
using namespace Kivo::Inventory;
using namespace K7Test;

namespace {

const std::string NUMBERS = " S 7 0 0 0 -1 4194560 225 1429 0 0 300 72 5 82 20 0 3 0 4 2138112 343";

const Process* find(const Listing<Process>& listing, int32 pid)
{
    const auto found = std::find_if(listing.records.begin(), listing.records.end(),
                                    [pid](const Process& process) { return process.pid == pid; });
    return found == listing.records.end() ? nullptr : &*found;
}

} // namespace

TEST(Process, NameEndsAtTheLastParenthesis)
{
    for (const std::string name : {"init", "a) R 1 (b", "", "\n \x1b[31m", "((((((((((((((("}) {
        const std::string text = "1 (" + name + ")" + NUMBERS;
        const auto stat = parseProcessStat(text);
        ASSERT_TRUE(stat) << text;
        EXPECT_EQ(stat->name, name);
        EXPECT_EQ(stat->state, "sleeping");
        EXPECT_EQ(stat->parent, 7);
        EXPECT_EQ(stat->threads, 3U);
        EXPECT_EQ(stat->processorTime, 3.72);
        EXPECT_EQ(stat->startTime, 0.04);
    }
}

TEST(Process, StatisticsThatAreCutAreRefused)
{
    const std::string whole = "1 (init)" + NUMBERS;
    for (std::size_t size = 0; size < whole.find(" 4 2138112"); ++size)
        EXPECT_FALSE(parseProcessStat(whole.substr(0, size))) << size;
    EXPECT_FALSE(parseProcessStat(") 1 ("));
}

TEST(Process, ArgumentsEndInZeroBytes)
{
    using namespace std::string_literals;
    const std::string text = "/bin/busybox\0sh\0\0/init\0\0"s;
    const auto arguments = parseProcessArguments(text);
    ASSERT_TRUE(arguments);
    EXPECT_EQ(arguments->program, "/bin/busybox");
    EXPECT_EQ(arguments->line, "/bin/busybox sh  /init");
    EXPECT_FALSE(parseProcessArguments(""));
    EXPECT_FALSE(parseProcessArguments("\0sh"s));
}

TEST(ProcessCaptured, WhatIsNotCapturedIsMissing)
{
    TemporaryTree tree;
    EXPECT_FALSE(listProcesses().known);
    tree.file("/proc/10/stat", "10 (init)" + NUMBERS).file("/proc/10/cmdline", std::string("/init\0-s\0", 9));
    tree.file("/proc/10/status", "Name:\tinit\nUid:\t0\t1000\t0\t0\nVmRSS:\t    1372 kB\n");
    tree.file("/proc/9/cmdline", "/sbin/recorder").file("/proc/8/stat", "junk").directory("/proc/x1");
    const auto listing = listProcesses();
    ASSERT_EQ(listing.records.size(), 3U);
    EXPECT_EQ(listing.records[0].pid, 8);
    EXPECT_EQ(listing.records[1].program, "/sbin/recorder");
    EXPECT_EQ(listing.records[1].name, std::nullopt);
    EXPECT_EQ(listing.records[2].commandLine, "/init -s");
    EXPECT_EQ(listing.records[2].user, 1000U);
    EXPECT_EQ(listing.records[2].resident, 1372U);
    EXPECT_EQ(listing.records[2].openFiles, std::nullopt);
    ASSERT_EQ(listing.problems.size(), 1U);
    EXPECT_EQ(listing.problems[0].subject, "/proc/8/stat");
    EXPECT_EQ(findProcesses("init").records.size(), 1U);
    EXPECT_EQ(findProcesses("").records.size(), 2U);
}

TEST(ProcessLive, ShowsThisProcessAndWhatItStarts)
{
    K7_REQUIRE_SANDBOX();
    const pid_t sleeper = startSleeper("odd) R 1 (name");
    const auto listing = listProcesses();
    EXPECT_TRUE(listing.problems.empty());
    const Process* const self = find(listing, ::getpid());
    ASSERT_TRUE(self);
    EXPECT_EQ(self->state, "running");
    EXPECT_EQ(self->user, ::geteuid());
    EXPECT_EQ(self->openFiles, openDescriptors());
    EXPECT_GT(self->resident, 100U);
    const Process* const started = find(listing, sleeper);
    ASSERT_TRUE(started);
    EXPECT_EQ(started->parent, ::getpid());
    EXPECT_EQ(findProcesses("odd) R 1 (name").records.size(), 1U);
    EXPECT_TRUE(findProcesses("no such program").records.empty());
}
