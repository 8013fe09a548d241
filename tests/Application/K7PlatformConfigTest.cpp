// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The platform configuration and its one copy in the process.
#include "Application/K7PlatformConfig.h"

#include "OS/System/OS.h"

#include <gtest/gtest.h>

using namespace Kivo;
using OS = K7SystemUtil::OS;

TEST(K7PlatformConfig, BeginsWithTheUsualIntervals)
{
    const K7PlatformConfig& config = OS::getPlatformConfig();
    EXPECT_EQ(config.appendCheckInterval(), 3000);
    EXPECT_EQ(config.forceCleanupFrameWritersInterval(), 3600000);
    EXPECT_EQ(config.partialFlushInterval(), 2000);
    EXPECT_EQ(config.storageGroupCount(), 1);
    EXPECT_FALSE(config.isUsingParallelAppender());
    EXPECT_EQ(config.threadParam(7), nullptr);
}

TEST(K7PlatformConfig, KeepsAnEntryUntilItIsChanged)
{
    K7PlatformConfig config(true, 4);
    EXPECT_TRUE(config.addThreadParam(7, 0x3, 50, J3Thread::POLICY_REALTIME_RR));
    EXPECT_FALSE(config.addThreadParam(7, 0x1, 10, J3Thread::POLICY_NORMAL));
    ASSERT_NE(config.threadParam(7), nullptr);
    EXPECT_EQ(config.threadParam(7)->priority(), 50U);
    config.threadParam(7)->setPriority(60);
    EXPECT_EQ(config.threadParam(8), nullptr);

    OS::setPlatformConfig(config);
    const K7PlatformConfig& handedDown = OS::getPlatformConfig();
    EXPECT_TRUE(handedDown.isUsingParallelAppender());
    EXPECT_EQ(handedDown.storageGroupCount(), 4);
    EXPECT_EQ(handedDown.threadParam(7)->priority(), 60U);
    EXPECT_EQ(handedDown.threadParam(7)->policy(), J3Thread::POLICY_REALTIME_RR);
}
