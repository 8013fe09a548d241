// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Threads, loopers and their manager.
#include "Foundation/J3Exception.h"
#include "Foundation/J3Looper.h"

#include <gtest/gtest.h>

#include <fstream>
#include <thread>

#include <sched.h>

using namespace Kivo;

namespace {

/// A looper that throws every time, and notes its hooks.
class TestLooper : public J3Looper {
public:
    explicit TestLooper(const J3String& name = L"test") : J3Looper(name) {}

    ~TestLooper() override
    {
        quit();
        join();
    }

    std::string hooks; ///< to be looked at when the thread does not run
    std::atomic<int> loops = 0;
    std::atomic<bool> waits = false;

protected:
    void starting() override { note("starting"); }

    void started() override { note("started"); }

    void looperFunc() override
    {
        join(); // nobody waits for himself
        sleep(1);
        throw J3Exception(L"every time");
    }

    void exceptionCaught(J3Exception&) override { ++loops; }

    void suspended() override
    {
        waits = true;
        waits.notify_all();
    }

    void resumed() override { waits = false; }

    void finished() override { note("finished"); }

    void terminated() override { note("terminated"); }

private:
    void note(const std::string& hook) { hooks += hook + (isRunning() ? "+ " : "- "); }
};

} // namespace

TEST(J3Thread, RunsUntilItIsAskedToEndAndCanBeRunAgain)
{
    TestLooper thread;
    std::string hooks;
    for (int round = 0; round < 50; ++round) {
        ASSERT_TRUE(thread.run(round % 2 == 0)); // a quit() right behind it is not lost
        EXPECT_FALSE(thread.run(true)) << "it runs already";
        thread.quit();
        const std::jthread other([&] { thread.join(); });
        thread.join();
        EXPECT_FALSE(thread.isRunning());
        hooks += "starting- started+ finished+ terminated- ";
    }
    EXPECT_EQ(thread.hooks, hooks);
}

TEST(J3Thread, IsScheduledAsItIsToldAndKeepsTheErrorOfARefusal)
{
    const int processor = sched_getcpu();
    if (processor >= 32)
        GTEST_SKIP() << "this is none of the first 32 processors";
    TestLooper thread;
    thread.setAffinityMask(1U << processor);
    thread.setPolicy(J3Thread::POLICY_REALTIME, 1000);
    EXPECT_TRUE(thread.run(true) && thread.schedulingError() == EINVAL) << "it runs all the same";
    cpu_set_t used;
    ASSERT_EQ(sched_getaffinity(static_cast<pid_t>(thread.threadId()), sizeof(used), &used), 0);
    EXPECT_TRUE(CPU_COUNT(&used) == 1 && CPU_ISSET(processor, &used));
}

TEST(J3Thread, IsFoundWhileItRunsAndShowsWholeCharactersOfItsName)
{
    TestLooper thread(L"fourteen-bytes\u00e9");
    thread.run(true);
    const uint32 id = thread.threadId();
    EXPECT_EQ(J3ThreadManager::defaultManager()->findThread(id), &thread);
    std::string shown;
    std::ifstream("/proc/self/task/" + std::to_string(id) + "/comm") >> shown;
    EXPECT_EQ(shown, "fourteen-bytes");
    thread.quit();
    thread.join();
    EXPECT_EQ(J3ThreadManager::defaultManager()->findThread(id), nullptr);
}

TEST(J3Looper, LoopsOnOverExceptionsStandsStillWhileSuspendedAndCanBeQuitThen)
{
    TestLooper looper;
    looper.suspend();
    looper.run(true);
    looper.waits.wait(false);
    EXPECT_EQ(looper.loops, 0) << "it was suspended from the beginning";
    looper.resume();
    while (looper.loops < 10)
        J3Thread::sleep(1);
    looper.suspend();
    looper.waits.wait(false);
    const int loops = looper.loops;
    J3Thread::sleep(50);
    looper.quit();
    looper.join();
    EXPECT_EQ(looper.loops, loops);
}
