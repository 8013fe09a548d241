// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Ring of counters that rotates on a tick period.
#include "Core/K7CounterWithTick.h"

#include "Core/K7SizeCounterByChannel.h"

#include <gtest/gtest.h>

#include <thread>

using namespace Kivo;

TEST(K7CounterWithTick, KeepsAWholePeriodWithItsTrueRateInThePreviousSlot)
{
    K7CounterWithTick<K7SizeCounterByChannel<4>, 2> ring(1000);
    ring.setChannelCount(1);
    ring.start(0);
    ring.current().add(0, 1, 300);
    ring.current().add(0, 1, 200);
    const uint32 counted = ring.current().id();
    EXPECT_FALSE(ring.rotateIfDue(1000));
    EXPECT_TRUE(ring.rotateIfDue(1250));
    EXPECT_NEAR(ring.previous().counter().getPerSecond(0, ring.prevElapsedTick())[1], 1.6, 0.01);
    ring.start(2000); // clears the current slot alone
    EXPECT_EQ(ring.previous().id(), counted);
    EXPECT_EQ(ring.previous().sizer().getByChannel(0)[1], 500U);
    EXPECT_TRUE(ring.rotateIfDue(3001));
    EXPECT_EQ(ring.current().sizer().getByChannel(0)[1], 0U) << "the slot used again is cleared";
    EXPECT_NE(ring.current().id(), counted) << "under a new identifier";
}

TEST(K7CounterWithTick, ReadsTheTrueRateAfterASlotOfAnyLength)
{
    K7CounterWithTick<K7CounterByChannel<1>, 2> ring(1000);
    ring.setChannelCount(1);
    uint32 now = 0;
    ring.start(now);
    for (const double expected : {25.0, 0.1, 25.0}) {
        if (expected < 1)
            now += 10000; // idle
        do {
            ring.current().add(0, 0);
            now += 40; // 25 a second
        } while (!ring.rotateIfDue(now));
        EXPECT_NEAR(ring.previous().getPerSecond(0, ring.prevElapsedTick())[0], expected, 0.05);
    }
}

TEST(K7CounterWithTick, TakesASlotForAsShortAsItMayHaveBeen)
{
    K7CounterWithTick<K7CounterByChannel<1>, 2> ring(1000, 4);
    ring.start(0);
    EXPECT_TRUE(ring.rotateIfDue(1044));
    EXPECT_EQ(ring.prevElapsedTick(), 962U) << "of 1040 ticks";
    EXPECT_FALSE(ring.rotateIfDue(2044)) << "the next slot begins where this one ended";
}

TEST(K7CounterWithTick, GivesWholeSlotsToReadersBesideTheWriter)
{
    K7CounterWithTick<K7SizeCounterByChannel<1>, 2> ring(0);
    ring.setChannelCount(1);
    ring.start(0);
    std::atomic<bool> done = false;
    const std::jthread writer([&] {
        for (uint32 slot = 1; slot <= 20'000; ++slot) {
            for (int i = 0; i < 3; ++i)
                ring.current().add(0, 0, slot);
            ring.rotateIfDue(slot);
        }
        done = true;
    });
    while (!done) {
        const auto snapshot = ring.previousSnapshot();
        const uint32 count = snapshot.counters.counter().getByChannel(0)[0];
        const uint32 size = snapshot.counters.sizer().getByChannel(0)[0];
        ASSERT_TRUE((count == 0 && size == 0) || (count == 3 && size % 3 == 0 && size > 0)) << count << ' ' << size;
        ASSERT_TRUE(snapshot.slotTime.isValid());
        ASSERT_LE(ring.currentSnapshot().counters.counter().getByChannel(0)[0], 3U);
    }
}
