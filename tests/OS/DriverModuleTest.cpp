// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Commands to kernel modules.
#include "OS/System/DriverModule.h"

#include "support/RecordingRunner.h"

#include <gtest/gtest.h>

using namespace Kivo;
using namespace K7Test;
using DriverModule = K7SystemUtil::DriverModule;
using Commands = std::vector<std::string>;

TEST(DriverModuleLive, RunsModprobeByTheRunner)
{
    EXPECT_FALSE(DriverModule::load("8021q"));
    RecordingRunner runner;
    EXPECT_TRUE(DriverModule::load("8021q"));
    EXPECT_TRUE(DriverModule::unload("8021q"));
    EXPECT_FALSE(DriverModule::load(nullptr));
    EXPECT_FALSE(DriverModule::unload(""));
    EXPECT_EQ(runner.commands(), (Commands{"modprobe 8021q", "modprobe -r 8021q"}));
    runner.result = 256;
    EXPECT_FALSE(DriverModule::load("missing"));
    EXPECT_EQ(K7SystemUtil::lastFailure().reason, L"the command gave 256");
}
