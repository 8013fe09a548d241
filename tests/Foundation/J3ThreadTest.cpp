// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Threads and their manager.
#include "support/TestLooper.h"

#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <thread>

#include <sched.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace Kivo;

namespace {

/// A thread that runs what a test gives it.
class TestThread : public J3Thread {
public:
    explicit TestThread(std::function<void()> function) : work(std::move(function)) {}

    ~TestThread() override
    {
        quit();
        join();
    }

    std::function<void()> work;
    std::string hooks;

protected:
    void threadFunc() override { work(); }
    void finished() override { hooks += "finished "; }
    void terminated() override { hooks += isRunning() ? "running" : "terminated"; }
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
        GTEST_SKIP() << "this is not one of the first 32 processors";
    TestLooper thread;
    thread.setAffinityMask(1U << processor);
    thread.setPolicy(J3Thread::POLICY_REALTIME, 1000);
    EXPECT_TRUE(thread.run(true)) << "it runs all the same";
    EXPECT_EQ(thread.schedulingError(), EINVAL);
    cpu_set_t used;
    ASSERT_EQ(sched_getaffinity(static_cast<pid_t>(thread.threadId()), sizeof(used), &used), 0);
    EXPECT_EQ(CPU_COUNT(&used), 1);
    EXPECT_TRUE(CPU_ISSET(processor, &used));
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

TEST(J3Thread, LeftByPthreadExitOrCancellationIsStoppedAndForgotten)
{
    uint32 id = 0;
    TestThread thread({});
    const auto cancel = [] {
        pthread_cancel(pthread_self());
        pthread_testcancel();
    };
    for (const std::function<void()>& leave : {std::function<void()>([] { pthread_exit(nullptr); }), {cancel}}) {
        thread.hooks.clear();
        thread.work = [&] {
            id = thread.threadId();
            leave();
        };
        ASSERT_TRUE(thread.run(true));
        thread.join();
        EXPECT_EQ(thread.hooks, "terminated");
        EXPECT_FALSE(thread.isRunning());
        EXPECT_EQ(J3ThreadManager::defaultManager()->findThread(id), nullptr);
    }
}

TEST(J3Thread, RunGivesFalseWhenTheSystemHasNoThread)
{
    pthread_attr_t before;
    pthread_attr_t huge;
    ASSERT_EQ(pthread_getattr_default_np(&before), 0);
    pthread_attr_init(&huge);
    ASSERT_EQ(pthread_attr_setstacksize(&huge, std::size_t{1} << 46), 0);
    ASSERT_EQ(pthread_setattr_default_np(&huge), 0);
    TestThread thread([] {});
    EXPECT_FALSE(thread.run(true));
    EXPECT_FALSE(thread.isRunning());
    pthread_setattr_default_np(&before);
    EXPECT_TRUE(thread.run(true)) << "it is not spoilt";
}

TEST(J3Thread, ChildAfterForkKnowsTheThreadThatForkedAndNoOther)
{
    TestLooper other;
    ASSERT_TRUE(other.run(true));
    const uint32 otherId = other.threadId();
    int status = -1;
    TestThread thread([&] {
        const auto* const manager = J3ThreadManager::defaultManager();
        const uint32 parentId = thread.threadId();
        const pid_t child = fork();
        if (child == 0) {
            const auto self = static_cast<uint32>(gettid());
            other.join(); // does not wait for a thread that is not there
            const bool known = thread.isRunning() && thread.threadId() == self && manager->findThread(self) == &thread;
            const bool gone = !other.isRunning() && !manager->findThread(otherId) && !manager->findThread(parentId);
            _exit((known ? 0 : 1) + (gone ? 0 : 2));
        }
        waitpid(child, &status, 0);
    });
    ASSERT_TRUE(thread.run(true));
    thread.join();
    EXPECT_EQ(status, 0);
    EXPECT_TRUE(other.isRunning());
}
