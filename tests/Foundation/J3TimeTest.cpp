// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Calendar time and its text.
#include "Foundation/J3Time.h"

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
    EXPECT_EQ(time.to_time_t(), -1);
    EXPECT_LT(time, J3Time::from_time_t(-1));
    EXPECT_EQ(J3TimeFormatter(L"x%Y").formatTime(time), L"");
}
