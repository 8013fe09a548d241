// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Exceptions recorded as texts.
#include "Core/K7ExceptionCatcher.h"

#include "Foundation/J3Exception.h"

#include <gtest/gtest.h>

#include <stdexcept>

using namespace Kivo;

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
