// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Reports of violated preconditions.
#include "Foundation/J3Assert.h"

#include <gtest/gtest.h>

#include <cerrno>

using namespace Kivo;

TEST(J3Assert, WritesOneLineAndKeepsErrno)
{
    testing::internal::CaptureStderr();
    errno = EBUSY;
    j3assertFunc(L"dest", L"dest is\nNull! \x20AC", L"copy", L"OS/Misc", 12);
    EXPECT_EQ(errno, EBUSY);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "OS/Misc:12: copy: dest is Null! \xE2\x82\xAC (dest)\n");
}

TEST(J3Assert, HandsReportsToAHandlerWithItsContext)
{
    using Text = const J3String&;
    std::string report;
    J3AssertFunc::setHandler(
        [](void* context, Text expression, Text message, Text function, Text path, int) {
            *static_cast<std::string*>(context) +=
                (expression + L"|" + message + L"|" + function + L"|" + path).to_string();
        },
        &report);
    const int* const dest = nullptr;
    const int size = 128;
    EXPECT_FALSE(J3_REQUIRE_ARGUMENT(dest, "A/B"));
    EXPECT_FALSE(J3_REQUIRE(size > 0 && size < 128, "invalid size", "A/C"));
    EXPECT_TRUE(J3_REQUIRE_ARGUMENT(&size, "A/B"));
    EXPECT_EQ(J3AssertFunc::setHandler(nullptr), nullptr) << "it had a context";
    EXPECT_EQ(report, "dest|dest is Null!|TestBody|A/Bsize > 0 && size < 128|invalid size|TestBody|A/C");
}
