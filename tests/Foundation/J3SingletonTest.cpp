// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The one instance of a class.
#include "Foundation/J3Singleton.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>
#include <vector>

using namespace Kivo;

namespace {

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
