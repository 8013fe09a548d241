// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Commands to kernel modules and to the trace recorder.
#include "OS/System/DriverModule.h"

#include "support/RecordingRunner.h"
#include "support/SystemTree.h"

#include "OS/System/Debugging.h"

#include <gtest/gtest.h>

#include <regex>

using namespace Kivo;
using namespace K7Test;
using Debugging = K7SystemUtil::Debugging;
using DriverModule = K7SystemUtil::DriverModule;
using Commands = std::vector<std::string>;

TEST(DriverModule, RunsModprobeByTheRunner)
{
    EXPECT_FALSE(DriverModule::load("8021q"));
    RecordingRunner runner;
    EXPECT_TRUE(DriverModule::load("8021q") && DriverModule::unload("8021q"));
    EXPECT_FALSE(DriverModule::load(nullptr) || DriverModule::unload(""));
    EXPECT_EQ(runner.commands(), (Commands{"modprobe 8021q", "modprobe -r 8021q"}));
    runner.result = 256;
    EXPECT_FALSE(DriverModule::load("missing"));
    EXPECT_EQ(K7SystemUtil::lastFailure().reason, L"the command gave 256");
}

TEST(Debugging, SwitchesTheOneRecorder)
{
    RecordingRunner runner;
    for (const int32 id : {0, 1, -1}) {
        EXPECT_TRUE(Debugging::start(id) == (id == 0) && Debugging::stop(id) == (id == 0));
        EXPECT_FALSE(Debugging::init(id) || Debugging::cleanup(id));
    }
    const std::string on = "echo c > /proc/dt10proc";
    const std::string off = "echo 0 > /proc/dt10proc";
    EXPECT_EQ(runner.commands(), (Commands{on, off, on, off}));
    EXPECT_TRUE(Debugging::dumpTo(0, L"/mnt/käse/") && !Debugging::dumpTo(1, L"/mnt"));
    const std::regex dump("ProcFileOutput /mnt/käse//dt10_20\\d{12}\\.dat");
    EXPECT_TRUE(std::regex_match(runner.commands().back(), dump));
}

TEST(Debugging, WorksWhenItsStatusBeginsWithOne)
{
    TemporaryTree tree;
    EXPECT_FALSE(Debugging::isWorking(0));
    for (const std::string status : {"0\n", "", "1\n"}) {
        tree.file("/proc/dt10proc_status", status);
        EXPECT_EQ(Debugging::isWorking(0), status == "1\n") << status;
    }
}
