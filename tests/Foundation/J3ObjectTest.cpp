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
#include <utility>
#include <vector>

using namespace Kivo;

namespace {

std::string reports;

void collectReport(const J3String& what, const J3String& message, const J3String& where, const J3String&, int)
{
    reports += (what + L"|" + message + L"|" + where + L"\n").to_string();
}

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

TEST(J3Object, ReportsWhateverAGuardedOperationThrows)
{
    const auto before = J3AssertFunc::setHandler(collectReport);
    Thrower thrower;
    for (const auto operation : {&Thrower::exception, &Thrower::object, &Thrower::standard, &Thrower::other})
        thrower.performWithoutException(static_cast<void (J3Object::*)()>(operation));
    EXPECT_EQ(J3AssertFunc::setHandler(before), collectReport);
    const std::string where = "|performWithoutException\n";
    EXPECT_EQ(std::exchange(reports, {}), "no exception|out of range" + where + "no exception|a text" + where +
                                              "no exception|runtime" + where + "no exception|unknown exception" +
                                              where);
}

TEST(J3Object, ReportsAMissingStreamAndGoesOn)
{
    const auto before = J3AssertFunc::setHandler(collectReport);
    J3String(L"text").serializeTo(nullptr);
    J3Time().deserializeFrom(nullptr);
    J3AssertFunc::setHandler(before);
    EXPECT_EQ(std::exchange(reports, {}),
              "stream|stream is Null!|serializeTo\nstream|stream is Null!|deserializeFrom\n");
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
