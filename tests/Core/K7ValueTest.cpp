// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Casts, tick gauge, counters, texts of exceptions, error trace.
#include "Core/K7Cast.h"
#include "Core/K7CounterWithTick.h"
#include "Core/K7ExceptionCatcher.h"
#include "Core/K7SizeCounterByChannel.h"
#include "Core/K7SystemError.h"
#include "Foundation/J3Exception.h"

#include <gtest/gtest.h>

using namespace Kivo;

static std::string s_report;

TEST(K7Cast, TakesOneWholeNumberInRange)
{
    uint8 byte = 42;
    for (const char* bad : {"256", "-1", "+1", "", " 1", "1 ", "1x", "ff", "0x1", "1.0", "\xD9\xA1"})
        EXPECT_FALSE(K7::castFrom(&byte, bad)) << bad;
    for (const char* bad : {"0x", "x1", "0x0x1", "0x-1", "-0x-1", "100", "fg"})
        EXPECT_FALSE(K7::castFrom(&byte, bad, true)) << bad;
    EXPECT_THROW(K7::castFromThrowable(&byte, L"300"), J3Exception);
    EXPECT_EQ(byte, 42) << "unchanged on failure";
    EXPECT_TRUE(K7::castFrom(&byte, " \t0x1f\r\n", true, true) && byte == 0x1F);
    unsigned long long wide = 0;
    EXPECT_FALSE(K7::castFrom(&wide, "18446744073709551616"));
    EXPECT_TRUE(K7::castFrom(&wide, "fe80000000000001", true) && wide == 0xFE80000000000001);
}

TEST(K7TickGuage, IsDueWhenMoreThanItsIntervalHasPassed)
{
    constexpr uint32 START = 0xFFFFFF00; // the tick wraps during the interval
    EXPECT_FALSE(K7TickGuage(1000, false, START).isElapsed(START + 1000));
    EXPECT_TRUE(K7TickGuage(1000, false, START).isElapsed(START + 1001));
    EXPECT_TRUE(K7TickGuage(1000, true, START).isElapsed(START));
}

TEST(K7TickGuage, GivesTheFactorOfARateAndStartsAnew)
{
    const uint32 cases[][3] = {{1000, 2000, 500}, {1000, 0, 10000}, {5120, 5120, 5120}, {UINT32_MAX, 9, UINT32_MAX}};
    for (const auto& [interval, elapsed, expected] : cases) {
        K7TickGuage gauge(interval, true, 500);
        EXPECT_EQ(gauge.setNowConsiderElapsed(100, 500 + elapsed), expected) << interval << ' ' << elapsed;
        EXPECT_FALSE(gauge.isElapsed(500 + elapsed));
    }
}

TEST(K7CounterByChannel, ReportsWhatIsOutOfRangeAndGoesOn)
{
    using Text = const J3String&;
    const auto before = J3AssertFunc::setHandler([](Text, Text message, Text function, Text, int) {
        s_report += function.to_string() + ": " + message.to_string() + '\n';
    });
    K7CounterByChannel<4> counter(1);
    counter.add(0, 3);
    counter.add(0, 4);
    counter.set(1, 0, 7);
    J3AssertFunc::setHandler(before);
    EXPECT_EQ(s_report, "add: index is out of range!\nset: channel is out of range!\n");
    EXPECT_EQ(counter.getByChannel(0), (std::array<unsigned, 4>{0, 0, 0, 1}));
}

TEST(K7CounterWithTick, KeepsAWholePeriodWithItsTrueRateInThePreviousSlot)
{
    K7CounterWithTick<K7SizeCounterByChannel<4>, 2> ring(1000);
    ring.setChannelCount(1);
    ring.start(0);
    ring.current().add(0, 1, 300);
    ring.current().add(0, 1, 200);
    const uint32 counted = ring.current().id();
    EXPECT_TRUE(!ring.rotateIfDue(1000) && ring.rotateIfDue(1250));
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

TEST(K7ExceptionCatcher, RecordsEveryKindOfException)
{
    K7ExceptionCatcher catcher;
    catcher.collect(); // nothing is in flight
    void (*const steps[])() = {[] { throw J3Exception(L"exception"); }, [] { throw J3String(L"text"); },
                               [] { throw std::runtime_error("standard"); }, [] { throw 3; }, [] { throw 2.5; }};
    for (const auto step : steps)
        try {
            step();
        } catch (...) {
            catcher.collect();
        }
    EXPECT_EQ(catcher.text(), L"exception\ntext\nstandard\n3\nunknown exception");
}

TEST(K7SystemError, WritesOneLineUntilAHandlerTakesOver)
{
    errno = EINTR;
    testing::internal::CaptureStderr();
    K7SystemError::trace(L"USB::start(1)", ENODEV);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "USB::start(1): No such device (errno 19)\n");
    EXPECT_EQ(errno, EINTR);
    K7SystemError::setHandler([](const J3String& tag, int code) { s_report = tag.to_string() + std::to_string(code); });
    K7SystemError::trace(L"USB::resetDevice(2)", EIO);
    EXPECT_EQ(s_report, "USB::resetDevice(2)5");
    EXPECT_NE(K7SystemError::setHandler(nullptr), nullptr);
}
