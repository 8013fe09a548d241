// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Calendar time, its texts, and ticks.
#include "Foundation/J3Time.h"

#include "Foundation/J3Thread.h"
#include "Foundation/J3TickUtil.h"
#include "Foundation/J3TimeFormatter.h"

#include <gtest/gtest.h>

using namespace Kivo;

TEST(J3Time, PrintsLocalTimeBeforeAndAfter2038AndNoticesAnotherZone)
{
    const std::tuple<const char*, std::time_t, const wchar_t*> times[] = {
        {"UTC", -2, L"1969-12-31 23:59:58"},
        {"UTC", 2147483648, L"2038-01-19 03:14:08"},
        {"EST5", 1'000'000'000, L"2001-09-08 20:46:40"},
        {"UTC", std::numeric_limits<std::time_t>::max(), L""},
    };
    for (const auto& [zone, seconds, text] : times) {
        setenv("TZ", zone, 1);
        const J3Time time = J3Time::from_time_t(seconds);
        EXPECT_EQ(time.to_time_t(), seconds);
        EXPECT_EQ(time.toString(), text);
    }
    unsetenv("TZ");
}

TEST(J3Time, InvalidTimeHasNoTextAndSortsFirst)
{
    J3Time time = J3Time::from_time_t(5);
    time.makeInvalid();
    EXPECT_TRUE(time.to_time_t() == -1 && time < J3Time::from_time_t(-1));
    EXPECT_EQ(J3TimeFormatter(L"x%Y").formatTime(time), L"");
}

TEST(J3TimeFormatter, PrintsTextsOfAnyLengthUpToItsLimit)
{
    const J3Time time = J3Time::from_time_t(1'000'000'000);
    EXPECT_EQ(J3TimeFormatter(L"\uD55C %Y%m%%").formatTime(time), L"\uD55C 200109%");
    constexpr std::size_t LIMIT = J3TimeFormatter::MAX_LENGTH;
    for (const std::size_t length : {std::size_t{63}, LIMIT, LIMIT + 1}) {
        const J3String text = J3TimeFormatter(std::wstring(length - 4, L'x') + L"%Y").formatTime(time);
        EXPECT_EQ(text.length(), length > LIMIT ? 0 : length);
    }
}

TEST(J3TickUtil, CountsMillisecondsAndSurvivesTheWrap)
{
    EXPECT_EQ(J3TickUtil::diffTick(0xFFFFFFF0, 0x10), 0x20U);
    const uint32 start = J3TickUtil::currentTick();
    J3Thread::sleep(100);
    const uint32 elapsed = J3TickUtil::diffTick(start, J3TickUtil::currentTick());
    EXPECT_TRUE(elapsed >= 80 && elapsed < 30'000) << elapsed; // the clock is as coarse as the timer interrupt
}
