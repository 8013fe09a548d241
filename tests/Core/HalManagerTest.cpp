// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What the host says of its board, while the process exits too.
#include "Core/HalManager.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <thread>

using namespace Kivo;

namespace {

/// Uses the library where it is destroyed.
struct LateUser {
    ~LateUser()
    {
        const J3String name = J3Singleton<HalManager>::get()->internalModelName();
        if (name.to_string(STD_LOCALE_UTF8) != "board")
            std::_Exit(3);
    }
};

} // namespace

TEST(HalManager, ServesStaticAndThreadLocalDestructorsAndThreadsThatStillRun)
{
    const auto exitWithUsers = [] {
        static LateUser staticUser; // made before the instance
        thread_local LateUser threadUser;
        static_cast<void>(threadUser);
        J3Singleton<HalManager>::get()->setInternalModelName(L"board");
        std::thread([] {
            for (;;)
                static_cast<void>(J3Singleton<HalManager>::get()->internalModelName());
        }).detach();
        std::exit(0);
    };
    EXPECT_EXIT(exitWithUsers(), testing::ExitedWithCode(0), "");
}
