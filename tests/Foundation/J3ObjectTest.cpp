// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Guarded calls, assertion reports, the singleton.
#include "Foundation/J3Assert.h"
#include "Foundation/J3Exception.h"
#include "Foundation/J3Singleton.h"
#include "Foundation/J3Time.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <stdexcept>
#include <thread>

using namespace Kivo;

namespace {

struct Thrower : J3Object {
    void exception() { throw J3RangeException(L"out of range", 0, 3, 4); }

    void object() { throw J3String(L"a text"); }

    void standard() { throw std::runtime_error("runtime"); }

    void other() { throw 42; }
};

// Fails at the first attempt, and is slow at the second.
struct Shared {
    static inline std::atomic<int> attempts = 0;

    Shared()
    {
        if (attempts++ == 0)
            throw std::runtime_error("not yet");
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
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

TEST(J3Assert, WritesOneLineAndKeepsErrno)
{
    testing::internal::CaptureStderr();
    errno = EBUSY;
    j3assertFunc(L"dest", L"dest is\nNull! \x20AC", L"copy", L"OS/Misc", 12);
    EXPECT_EQ(errno, EBUSY);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "OS/Misc:12: copy: dest is Null! \xE2\x82\xAC (dest)\n");
}

TEST(J3Singleton, IsMadeOnceUnderContentionAndAgainAfterAThrow)
{
    EXPECT_THROW(static_cast<void>(J3Singleton<Shared>::get()), std::runtime_error);
    std::vector<Shared*> instances(8);
    std::vector<std::jthread> threads;
    for (Shared*& instance : instances)
        threads.emplace_back([&instance] { instance = J3Singleton<Shared>::get(); });
    threads.clear();
    EXPECT_EQ(Shared::attempts, 2);
    EXPECT_EQ(instances, std::vector<Shared*>(8, J3Singleton<Shared>::get()));
}
