// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Trace of failed system calls.
#include "Core/K7SystemError.h"

#include <gtest/gtest.h>

#include <cerrno>

using namespace Kivo;

TEST(K7SystemError, WritesOneLineUntilAHandlerTakesOver)
{
    errno = EINTR;
    testing::internal::CaptureStderr();
    K7SystemError::trace(L"USB::start(1)", ENODEV);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "USB::start(1): No such device (errno 19)\n");
    EXPECT_EQ(errno, EINTR);
    std::string report;
    K7SystemError::setHandler(
        [](void* context, const J3String& tag, int code) {
            *static_cast<std::string*>(context) = tag.to_string() + std::to_string(code);
        },
        &report);
    K7SystemError::trace(L"USB::resetDevice(2)", EIO);
    EXPECT_EQ(report, "USB::resetDevice(2)5");
    const K7SystemError::Handler ignore = [](const J3String&, int) {};
    EXPECT_EQ(K7SystemError::setHandler(ignore), nullptr) << "the one replaced had a context";
    EXPECT_EQ(K7SystemError::setHandler(nullptr), ignore);
}
