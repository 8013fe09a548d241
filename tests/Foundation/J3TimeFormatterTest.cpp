// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Texts of times.
#include "Foundation/J3TimeFormatter.h"

#include "Foundation/J3Time.h"

#include <gtest/gtest.h>

using namespace Kivo;

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
