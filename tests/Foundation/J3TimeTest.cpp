// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Calendar time, its texts, and ticks.
#include "Foundation/J3Time.h"

#include "Foundation/J3MemoryStream.h"
#include "Foundation/J3Thread.h"
#include "Foundation/J3TickUtil.h"
#include "Foundation/J3TimeFormatter.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace Kivo {

namespace {

/// Sets the process's time zone for one test.
class J3TimeTest : public testing::Test {
protected:
    J3TimeTest() { setZone("UTC"); }

    ~J3TimeTest() override
    {
        unsetenv("TZ");
        tzset();
    }

    static void setZone(const char* zone) { setenv("TZ", zone, 1); }
};

TEST_F(J3TimeTest, PrintsBeforeAndAfter2038)
{
    const std::pair<std::time_t, const wchar_t*> times[] = {
        {0, L"1970-01-01 00:00:00"},
        {-1, L"1969-12-31 23:59:59"},
        {2147483647, L"2038-01-19 03:14:07"},
        {2147483648, L"2038-01-19 03:14:08"},
        {253402300799, L"9999-12-31 23:59:59"},
    };
    for (const auto& [seconds, text] : times) {
        const J3Time time = J3Time::from_time_t(seconds);
        EXPECT_TRUE(time.isValid());
        EXPECT_EQ(time.to_time_t(), seconds);
        EXPECT_EQ(time.toString(), text);
    }
}

TEST_F(J3TimeTest, PrintsLocalTimeAndNoticesAnotherZone)
{
    const J3Time time = J3Time::from_time_t(1'000'000'000);
    setZone("KST-9");
    EXPECT_EQ(time.toString(), L"2001-09-09 10:46:40");
    setZone("EST5");
    EXPECT_EQ(time.toString(), L"2001-09-08 20:46:40");
}

TEST_F(J3TimeTest, InvalidTimeHasNoTextAndSortsFirst)
{
    J3Time time;
    EXPECT_FALSE(time.isValid());
    EXPECT_EQ(time.to_time_t(), -1);
    EXPECT_TRUE(time.toString().isEmpty());
    EXPECT_TRUE(J3TimeFormatter(L"x%Y").formatTime(time).isEmpty());
    EXPECT_LT(time, J3Time::from_time_t(-1));

    time.setUtcTime(5);
    EXPECT_EQ(time, J3Time::from_time_t(5));
    time.makeInvalid();
    EXPECT_EQ(time, J3Time());
}

TEST_F(J3TimeTest, InvalidStateComesBackFromAStream)
{
    J3MemoryStream stream;
    stream.writeObject(J3Time());
    stream.writeObject(J3Time::from_time_t(2147483648));
    EXPECT_EQ(stream.size(), 16U);
    stream.moveTo(0);
    J3Time invalid = J3Time::from_time_t(1);
    J3Time valid;
    stream.readObject(&invalid);
    stream.readObject(&valid);
    EXPECT_FALSE(invalid.isValid());
    EXPECT_EQ(valid.to_time_t(), 2147483648);
}

TEST_F(J3TimeTest, YearBeyondTheCalendarHasNoText)
{
    EXPECT_TRUE(J3Time::from_time_t(std::numeric_limits<std::time_t>::max()).toString().isEmpty());
}

TEST_F(J3TimeTest, FormatterPrintsTextsOfAnyLengthUpToItsLimit)
{
    const J3Time time = J3Time::from_time_t(1'000'000'000);
    EXPECT_EQ(J3TimeFormatter(L"%Y%m%d%H%M%S").formatTime(time), L"20010909014640");
    EXPECT_EQ(J3TimeFormatter(L"\uD55C %d%%").formatTime(time), L"\uD55C 09%");
    EXPECT_TRUE(J3TimeFormatter(L"").formatTime(time).isEmpty());

    const auto padded = [&](std::size_t length) {
        return J3TimeFormatter(std::wstring(length - 4, L'x') + L"%Y").formatTime(time);
    };
    EXPECT_EQ(padded(62).length(), 62U);
    EXPECT_EQ(padded(63).length(), 63U);
    EXPECT_EQ(padded(64).length(), 64U);
    EXPECT_EQ(padded(J3TimeFormatter::MAX_LENGTH).length(), J3TimeFormatter::MAX_LENGTH);
    EXPECT_TRUE(padded(J3TimeFormatter::MAX_LENGTH + 1).isEmpty());
    EXPECT_TRUE(J3TimeFormatter(L"%999999999Y").formatTime(time).isEmpty());
}

TEST(J3TickUtil, DifferenceSurvivesTheWrap)
{
    EXPECT_EQ(J3TickUtil::diffTick(0xFFFFFFF0, 0x10), 0x20U);
    EXPECT_EQ(J3TickUtil::diffTick(5, 5), 0U);
    EXPECT_EQ(J3TickUtil::diffTick(10, 250), 240U);
}

TEST(J3TickUtil, CountsMilliseconds)
{
    const uint32 start = J3TickUtil::currentTick();
    J3Thread::sleep(100);
    const uint32 elapsed = J3TickUtil::diffTick(start, J3TickUtil::currentTick());
    EXPECT_GE(elapsed, 80U) << "the clock is as coarse as the kernel's timer interrupt";
    EXPECT_LT(elapsed, 30'000U);
}

} // namespace

} // namespace Kivo
