// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Threads that do one piece of work again and again.
#include "support/TestLooper.h"

#include <gtest/gtest.h>

using namespace Kivo;

TEST(J3Looper, LoopsOnOverExceptionsStandsStillWhileSuspendedAndCanBeQuitThen)
{
    TestLooper looper;
    looper.suspend();
    looper.run(true);
    looper.waits.wait(false);
    EXPECT_EQ(looper.loops, 0) << "it was suspended from the beginning";
    looper.resume();
    while (looper.loops < 10)
        J3Thread::sleep(1);
    looper.suspend();
    looper.waits.wait(false);
    const int loops = looper.loops;
    J3Thread::sleep(50);
    looper.quit();
    looper.join();
    EXPECT_EQ(looper.loops, loops);
}
