// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Commands to the trace recorder, and its status.
#include "OS/System/Debugging.h"

#include "support/RecordingRunner.h"
#include "support/SystemTree.h"

#include <gtest/gtest.h>

#include <regex>

using namespace Kivo;
using namespace K7Test;
using Debugging = K7SystemUtil::Debugging;
using Commands = std::vector<std::string>;

TEST(DebuggingLive, SwitchesTheOneRecorder)
{
    RecordingRunner runner;
    for (const int32 id : {0, 1, -1}) {
        EXPECT_EQ(Debugging::start(id), id == 0);
        EXPECT_EQ(Debugging::stop(id), id == 0);
        EXPECT_FALSE(Debugging::init(id));
        EXPECT_FALSE(Debugging::cleanup(id));
    }
    const std::string on = "echo c > /proc/dt10proc";
    const std::string off = "echo 0 > /proc/dt10proc";
    EXPECT_EQ(runner.commands(), (Commands{on, off, on, off}));
    EXPECT_TRUE(Debugging::dumpTo(0, L"/mnt/käse/"));
    EXPECT_FALSE(Debugging::dumpTo(1, L"/mnt"));
    const std::regex dump("ProcFileOutput /mnt/käse//dt10_20\\d{12}\\.dat");
    EXPECT_TRUE(std::regex_match(runner.commands().back(), dump));
}

TEST(DebuggingCaptured, WorksWhenItsStatusBeginsWithOne)
{
    TemporaryTree tree;
    EXPECT_FALSE(Debugging::isWorking(0));
    for (const std::string status : {"0\n", "", "1\n"}) {
        tree.file("/proc/dt10proc_status", status);
        EXPECT_EQ(Debugging::isWorking(0), status == "1\n") << status;
    }
}
