// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Guarded calls and missing arguments.
#include "Foundation/J3Exception.h"
#include "Foundation/J3Time.h"

#include <gtest/gtest.h>

#include <stdexcept>

using namespace Kivo;

namespace {

struct Thrower : J3Object {
    void exception() { throw J3RangeException(L"out of range", 0, 3, 4); }

    void object() { throw J3String(L"a text"); }

    void standard() { throw std::runtime_error("runtime"); }

    void other() { throw 42; }
};

} // namespace

TEST(J3Object, ReportsWhateverAGuardedOperationThrowsAndAMissingStream)
{
    testing::internal::CaptureStderr();
    Thrower thrower;
    for (const auto operation : {&Thrower::exception, &Thrower::object, &Thrower::standard, &Thrower::other})
        thrower.performWithoutException(static_cast<void (J3Object::*)()>(operation));
    J3String(L"text").serializeTo(nullptr);
    J3Time().deserializeFrom(nullptr);
    const std::string reports = testing::internal::GetCapturedStderr();
    for (const char* report : {"performWithoutException: out of range (", "performWithoutException: a text (",
                               "performWithoutException: runtime (", "performWithoutException: unknown exception (",
                               " serializeTo: stream is Null! (stream)", "deserializeFrom: stream is Null! (stream)"})
        EXPECT_NE(reports.find(report), std::string::npos) << report << " in\n" << reports;
}
