// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Commands to kernel modules and to the trace recorder.
#include "OS/System/DriverModule.h"

#include "support/RecordingRunner.h"
#include "support/SystemTree.h"

#include "OS/System/Debugging.h"

#include <gtest/gtest.h>

#include <ctime>
#include <string>
#include <vector>

#include <time.h>

using namespace Kivo;
using namespace K7Test;
using Debugging = K7SystemUtil::Debugging;
using DriverModule = K7SystemUtil::DriverModule;
using Commands = std::vector<std::string>;

TEST(DriverModule, RunsModprobeByTheRunner)
{
    RecordingRunner runner;
    EXPECT_TRUE(DriverModule::load("8021q"));
    EXPECT_TRUE(DriverModule::unload("8021q"));
    EXPECT_EQ(runner.commands(), (Commands{"modprobe 8021q", "modprobe -r 8021q"}));
    runner.result = 256;
    EXPECT_FALSE(DriverModule::load("missing"));
    EXPECT_EQ(K7SystemUtil::lastFailure().reason, L"\"modprobe missing\" gave 256");
    EXPECT_FALSE(DriverModule::unload("missing"));
}

TEST(DriverModule, FailsWithoutANameOrARunner)
{
    EXPECT_FALSE(DriverModule::load("8021q"));
    RecordingRunner runner;
    EXPECT_FALSE(DriverModule::load(nullptr));
    EXPECT_FALSE(DriverModule::unload(""));
    EXPECT_EQ(runner.commands(), Commands());
}

TEST(Debugging, SwitchesTheRecorder)
{
    RecordingRunner runner;
    EXPECT_TRUE(Debugging::start(0));
    EXPECT_TRUE(Debugging::stop(0));
    EXPECT_FALSE(Debugging::init(0));
    EXPECT_FALSE(Debugging::cleanup(0));
    const std::string on = "echo c > /proc/dt10proc";
    const std::string off = "echo 0 > /proc/dt10proc";
    EXPECT_EQ(runner.commands(), (Commands{on, off, on, off}));
    runner.result = -1;
    EXPECT_FALSE(Debugging::start(0));
    EXPECT_FALSE(Debugging::stop(0));
}

TEST(Debugging, KnowsOneRecorderOnly)
{
    TemporaryTree tree;
    tree.file("/proc/dt10proc_status", "1");
    RecordingRunner runner;
    for (const int32 id : {1, -1}) {
        for (const auto operation :
             {Debugging::init, Debugging::cleanup, Debugging::start, Debugging::stop, Debugging::isWorking})
            EXPECT_FALSE(operation(id));
        EXPECT_FALSE(Debugging::dumpTo(id, L"/mnt"));
    }
    EXPECT_EQ(runner.commands(), Commands());
}

TEST(Debugging, WorksWhenItsStatusBeginsWithOne)
{
    TemporaryTree tree;
    EXPECT_FALSE(Debugging::isWorking(0));
    const std::pair<const char*, bool> cases[] = {{"1\n", true}, {"1", true},    {"10", true}, {"0\n", false},
                                                  {"", false},   {"\n1", false}, {"c", false}, {" 1", false}};
    for (const auto& [status, working] : cases) {
        tree.file("/proc/dt10proc_status", status);
        EXPECT_EQ(Debugging::isWorking(0), working) << status;
    }
}

TEST(Debugging, DumpsIntoAFileNamedAfterTheLocalTime)
{
    ::setenv("TZ", "XYZ-5:30", 1);
    ::tzset();
    RecordingRunner runner;
    const time_t before = ::time(nullptr);
    EXPECT_TRUE(Debugging::dumpTo(0, L"/mnt/käse/"));
    const time_t after = ::time(nullptr);
    ASSERT_EQ(runner.commands().size(), 1U);
    tm local{};
    const char* const end =
        ::strptime(runner.commands()[0].c_str(), "ProcFileOutput /mnt/käse//dt10_%Y%m%d%H%M%S.dat", &local);
    ASSERT_NE(end, nullptr) << runner.commands()[0];
    EXPECT_STREQ(end, "");
    const time_t stamped = ::mktime(&local);
    EXPECT_GE(stamped, before);
    EXPECT_LE(stamped, after);
    runner.result = 1;
    EXPECT_FALSE(Debugging::dumpTo(0, L"/mnt"));
}
