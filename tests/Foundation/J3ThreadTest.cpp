// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Threads, loopers, their manager and the locks.
#include "Foundation/J3Exception.h"
#include "Foundation/J3Looper.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <functional>
#include <stdexcept>
#include <system_error>

#include <sched.h>
#include <unistd.h>

namespace Kivo {

namespace {

/// Wait until @p condition holds, for as long as a very slow machine may take.
bool eventually(const std::function<bool()>& condition)
{
    for (int i = 0; i < 6000; ++i) {
        if (condition())
            return true;
        J3Thread::sleep(5);
    }
    return false;
}

/// A thread that does what it is given, and notes its hooks.
class TestThread : public J3Thread {
public:
    explicit TestThread(std::function<void(TestThread&)> work, const J3String& name = L"test",
                        J3ThreadManager* manager = J3ThreadManager::defaultManager())
        : J3Thread(name, manager), _work(std::move(work))
    {}

    ~TestThread() override
    {
        quit();
        join();
    }

    std::string hooks; ///< to be looked at when the thread does not run

protected:
    void starting() override { note("starting"); }

    void started() override { note("started"); }

    void threadFunc() override { _work(*this); }

    void finished() override { note("finished"); }

    void terminated() override { note("terminated"); }

    void exceptionCaught(J3Exception& exception) override { note(exception.what()); }

    void unknownExceptionCaught() override { note("unknown"); }

private:
    void note(const std::string& hook) { hooks += hook + (isRunning() ? "+ " : "- "); }

    std::function<void(TestThread&)> _work;
};

void untilQuit(TestThread& thread)
{
    while (!thread.isQuitRequested())
        J3Thread::sleep(1);
}

TEST(J3Thread, RunsUntilItIsAskedToEndAndCanBeRunAgain)
{
    TestThread thread(untilQuit);
    for (int round = 0; round < 2; ++round) {
        EXPECT_TRUE(thread.run(true));
        EXPECT_TRUE(thread.isRunning());
        EXPECT_NE(thread.threadId(), 0U);
        EXPECT_FALSE(thread.run(true)) << "it runs already";

        thread.quit();
        thread.join();
        EXPECT_FALSE(thread.isRunning());
        EXPECT_EQ(thread.threadId(), 0U);
    }
    const std::string one = "starting- started+ finished+ terminated- ";
    EXPECT_EQ(thread.hooks, one + one);
}

TEST(J3Thread, RunsAgainWithoutAJoinOnceItHasEnded)
{
    std::atomic<int> rounds = 0;
    TestThread thread([&](TestThread&) { ++rounds; });
    for (int round = 0; round < 100; ++round)
        ASSERT_TRUE(eventually([&] { return thread.run(round % 2 == 0); }));
    thread.join();
    EXPECT_EQ(rounds, 100);
}

TEST(J3Thread, QuitRightAfterRunIsNotLost)
{
    for (int round = 0; round < 100; ++round) {
        TestThread thread(untilQuit);
        ASSERT_TRUE(thread.run(false));
        thread.quit();
        thread.join();
    }
}

TEST(J3Thread, JoinReturnsAtOnceForTheThreadItselfAndForOneThatNeverRan)
{
    TestThread thread([](TestThread& self) { self.join(); });
    thread.join();
    EXPECT_TRUE(thread.run(true));
    thread.join();
}

TEST(J3Thread, EveryJoinWaitsForTheEnd)
{
    TestThread worker(untilQuit);
    ASSERT_TRUE(worker.run(true));
    std::atomic<int> early = 0;
    const auto joinAndLook = [&](TestThread&) {
        worker.join();
        early += worker.isRunning() ? 1 : 0;
    };
    TestThread first(joinAndLook);
    TestThread second(joinAndLook);
    first.run(true);
    second.run(true);
    worker.quit();
    first.join();
    second.join();
    EXPECT_EQ(early, 0);
}

TEST(J3Thread, WhatItThrowsGoesToItsHooks)
{
    TestThread known([](TestThread&) { throw J3Exception(L"broken"); });
    TestThread unknown([](TestThread&) { throw 5; });
    known.run(true);
    unknown.run(true);
    known.join();
    unknown.join();
    EXPECT_EQ(known.hooks, "starting- started+ broken+ finished+ terminated- ");
    EXPECT_EQ(unknown.hooks, "starting- started+ unknown+ finished+ terminated- ");
}

TEST(J3Thread, ShowsWholeCharactersOfItsNameInTheKernel)
{
    const std::pair<const wchar_t*, const char*> names[] = {
        {L"short", "short"},
        {L"exactly-15-byte", "exactly-15-byte"},
        {L"longer-than-15-bytes", "longer-than-15-"},
        {L"fourteen-bytes\u00e9", "fourteen-bytes"},
    };
    for (const auto& [name, shown] : names) {
        char kernelName[16] = "";
        TestThread thread([&](TestThread&) { pthread_getname_np(pthread_self(), kernelName, sizeof(kernelName)); },
                          name);
        thread.run(true);
        thread.join();
        EXPECT_STREQ(kernelName, shown);
    }
}

TEST(J3Thread, RunsOnTheProcessorsOfItsMask)
{
    cpu_set_t allowed;
    ASSERT_EQ(sched_getaffinity(0, sizeof(allowed), &allowed), 0);
    std::size_t processor = 0;
    while (processor < 32 && !CPU_ISSET(processor, &allowed))
        ++processor;
    if (processor == 32)
        GTEST_SKIP() << "none of the first 32 processors may be used here";

    const auto isOnlyThere = [&](const J3Thread& thread) {
        cpu_set_t used;
        return sched_getaffinity(static_cast<pid_t>(thread.threadId()), sizeof(used), &used) == 0 &&
               CPU_COUNT(&used) == 1 && CPU_ISSET(processor, &used);
    };
    TestThread before(untilQuit);
    before.setAffinityMask(1U << processor);
    before.run(true);
    EXPECT_TRUE(isOnlyThere(before));
    EXPECT_EQ(before.schedulingError(), 0);

    TestThread after(untilQuit);
    after.run(true);
    after.setAffinityMask(1U << processor);
    EXPECT_TRUE(isOnlyThere(after));
}

TEST(J3Thread, KeepsTheErrorOfAPolicyThatTheKernelRefuses)
{
    TestThread thread(untilQuit);
    thread.setPolicy(J3Thread::POLICY_REALTIME, 1000);
    EXPECT_TRUE(thread.run(true)) << "it runs all the same";
    EXPECT_EQ(thread.schedulingError(), EINVAL);
    thread.quit();
    thread.join();

    thread.setPolicy(J3Thread::POLICY_NORMAL, 50);
    EXPECT_TRUE(thread.run(true));
    EXPECT_EQ(thread.schedulingError(), 0);
}

TEST(J3ThreadManager, FindsAThreadForAsLongAsItRuns)
{
    J3ThreadManager manager;
    J3Thread* foundByItself = nullptr;
    TestThread thread(
        [&](TestThread& self) {
            foundByItself = manager.findThread(static_cast<uint32>(gettid()));
            untilQuit(self);
        },
        L"found", &manager);
    thread.run(true);
    const uint32 id = thread.threadId();
    EXPECT_EQ(manager.findThread(id), &thread);
    EXPECT_EQ(J3ThreadManager::defaultManager()->findThread(id), nullptr);
    thread.quit();
    thread.join();
    EXPECT_EQ(foundByItself, &thread);
    EXPECT_EQ(manager.findThread(id), nullptr);
}

TEST(J3ThreadManager, DefaultIsUsedUnlessNoneIsAskedFor)
{
    TestThread registered(untilQuit);
    TestThread nowhere(untilQuit, L"nowhere", nullptr);
    registered.run(true);
    nowhere.run(true);
    EXPECT_EQ(J3ThreadManager::defaultManager()->findThread(registered.threadId()), &registered);
    EXPECT_EQ(J3ThreadManager::defaultManager()->findThread(nowhere.threadId()), nullptr);
}

/// A looper that counts its work.
class TestLooper : public J3Looper {
public:
    TestLooper() : J3Looper(L"looper", nullptr) {}

    ~TestLooper() override
    {
        quit();
        join();
    }

    std::atomic<int> loops = 0;
    std::atomic<int> failures = 0;
    std::atomic<bool> waits = false;

protected:
    void looperFunc() override
    {
        J3Thread::sleep(1);
        if (++loops % 2 == 0)
            throw std::runtime_error("every second time");
    }

    void suspended() override { waits = true; }

    void resumed() override { waits = false; }

    void stdExceptionCaught(std::exception&) override { ++failures; }
};

TEST(J3Looper, LoopsOnOverExceptions)
{
    TestLooper looper;
    EXPECT_TRUE(looper.run(true));
    EXPECT_TRUE(eventually([&] { return looper.loops > 10; }));
    looper.quit();
    looper.join();
    EXPECT_EQ(looper.failures, looper.loops / 2);
}

TEST(J3Looper, StandsStillWhileSuspended)
{
    TestLooper looper;
    looper.run(true);
    looper.suspend();
    EXPECT_TRUE(looper.isSuspended());
    ASSERT_TRUE(eventually([&] { return looper.waits.load(); }));
    const int loops = looper.loops;
    J3Thread::sleep(50);
    EXPECT_EQ(looper.loops, loops);

    looper.resume();
    EXPECT_FALSE(looper.isSuspended());
    EXPECT_TRUE(eventually([&] { return looper.loops > loops && !looper.waits; }));
}

TEST(J3Looper, CanBeQuitWhileSuspended)
{
    TestLooper looper;
    looper.suspend();
    looper.run(true);
    ASSERT_TRUE(eventually([&] { return looper.waits.load(); }));
    looper.quit();
    looper.join();
    EXPECT_FALSE(looper.isRunning());
    EXPECT_EQ(looper.loops, 0) << "it was suspended from the beginning";
}

TEST(J3Lock, IsHeldByOneThreadAtATime)
{
    J3Lock lock;
    bool taken = true;
    {
        const std::lock_guard guard(lock);
        TestThread other([&](TestThread&) { taken = lock.tryLock(); });
        other.run(true);
        other.join();
    }
    EXPECT_FALSE(taken);
    EXPECT_TRUE(lock.tryLock());
    lock.unlock();
}

TEST(J3RecursiveMutex, IsTakenAgainByItsHolderUnlessToldOtherwise)
{
    const J3RecursiveMutex recursive;
    recursive.lock();
    recursive.lock();
    recursive.unlock();
    recursive.unlock();

    const J3RecursiveMutex strict(false);
    strict.lock();
    EXPECT_THROW(strict.lock(), std::system_error);
    strict.unlock();
}

TEST(J3Condition, WaitsForASignalOrForTheTime)
{
    J3Mutex mutex;
    J3Condition condition;
    bool ready = false;
    const std::lock_guard guard(mutex);
    EXPECT_FALSE(condition.waitFor(mutex, 1)) << "nobody signals";

    TestThread other([&](TestThread&) {
        const std::lock_guard otherGuard(mutex);
        ready = true;
        condition.signal();
    });
    other.run(false);
    while (!ready && condition.waitFor(mutex, 30'000)) {
    }
    EXPECT_TRUE(ready);
}

} // namespace

} // namespace Kivo
