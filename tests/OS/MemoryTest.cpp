// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The memory table: what is read, when, and what a collision gives.
#include "OS/System/Memory.h"

#include "support/RecordingRunner.h"
#include "support/SystemTree.h"

#include "Foundation/J3Thread.h"

#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <future>
#include <thread>

#include <sys/wait.h>
#include <unistd.h>

using namespace Kivo;
using namespace K7Test;
using Memory = K7SystemUtil::Memory;

static constexpr const char* MEMINFO = "/proc/meminfo";

static std::string meminfo(int free)
{
    return "MemTotal:        1000840 kB\nMemFree:         " + std::to_string(free) + " kB\n";
}

TEST(MemoryTableCaptured, ReadsTheCountersOfACapturedBoard)
{
    const FixtureRoot board("virt-board");
    EXPECT_EQ(Memory::getMemTotal(), 1000840U);
    EXPECT_EQ(Memory::getMemFree(), 874196U);
    EXPECT_EQ(Memory::getBuffers(), 0U);
    EXPECT_EQ(Memory::getCached(), 73868U);
    EXPECT_EQ(Memory::getSwapCached(), 0U);
    EXPECT_EQ(Memory::getVmallocUsed(), 5084U);
    EXPECT_EQ(Memory::getVmallocTotal(), static_cast<uint32>(133143592960ULL));
    EXPECT_EQ(Memory::counterOf(L"VmallocTotal"), 133143592960ULL);
    EXPECT_EQ(Memory::counterOf(L"MemAvailable"), 848676U);
    EXPECT_EQ(K7SystemUtil::lastFailure().operation, L"");
    EXPECT_EQ(Memory::counterOf(L"MemAvail"), 0U);
    EXPECT_EQ(K7SystemUtil::lastFailure().reason, L"there is no such counter");
}

TEST(MemoryLive, TellsTheTotalOfTheRunningMachine)
{
    std::string name;
    uint32 total = 0;
    std::ifstream(MEMINFO) >> name >> total;
    ASSERT_EQ(name, "MemTotal:");
    EXPECT_EQ(Memory::getMemTotal(), total);
}

TEST(MemoryTableCaptured, TakesLinesOfEveryShapeWithinTheFirst2048Bytes)
{
    const std::pair<std::string, uint32> cases[] = {{"MemFree\t:\t13", 13},
                                                    {"MemFree 14 kB", 14},
                                                    {"MemFree: kB", 0},
                                                    {"MemFree: 4294967297 kB", 1},
                                                    {"MemFree: 16\r\nMemFree: 17", 17},
                                                    {std::string(2000, '\n') + "MemFree: 18", 0}};
    for (const auto& [line, free] : cases) {
        TemporaryTree tree;
        tree.file(MEMINFO, "HugePages_Total:                              0\n" + line + "\n");
        EXPECT_EQ(Memory::getMemFree(), free) << line;
    }
}

TEST(MemoryTableCaptured, ReadsTheFileOnceASecondAndKeepsTheTableWhenItIsShort)
{
    TemporaryTree tree;
    tree.file(MEMINFO, meminfo(1));
    EXPECT_EQ(Memory::getMemFree(), 1U);
    tree.file(MEMINFO, meminfo(2));
    EXPECT_EQ(Memory::getMemFree(), 1U);
    J3Thread::sleep(1100);
    EXPECT_EQ(Memory::getMemFree(), 2U);
    tree.file(MEMINFO, "MemFree:                   8 kB\n"); // 32 bytes
    J3Thread::sleep(1100);
    EXPECT_EQ(Memory::getMemFree(), 2U);
    EXPECT_EQ(K7SystemUtil::lastFailure().operation, L"Memory::getMemFree");
}

TEST(MemoryTableCaptured, ForgetsAnotherRootAndAnyRowsBeyondItsRoom)
{
    {
        TemporaryTree tree;
        std::string text;
        for (int row = 0; row < 400; ++row)
            text += std::to_string(row) + ":1\n";
        tree.file(MEMINFO, text.substr(0, 2000) + "\nMemFree: 7\n" + std::string(33, 'x') + ": 1\n");
        EXPECT_EQ(Memory::getMemFree(), 7U);
        EXPECT_EQ(Memory::counterOf(L"100"), 1U);
    }
    TemporaryTree tree;
    tree.file(MEMINFO, "MemTotal:        1000840 kB\nSwapFree:  5000000000 kB\n");
    EXPECT_EQ(Memory::getMemFree(), 0U);
    EXPECT_EQ(Memory::counterOf(L"100"), 0U);
    EXPECT_EQ(Memory::counterOf(L"SwapFree"), 5000000000U);
}

/// The observer runs inside the refresh: the collision is certain, not a matter of luck.
class MemoryCaptured : public testing::Test {
protected:
    MemoryCaptured()
    {
        _tree.file(MEMINFO, meminfo(9));
        K7SystemUtil::setReadObserver(
            [](void* self, const char*, K7SystemUtil::ReadKind) {
                static_cast<MemoryCaptured*>(self)->duringRefresh();
            },
            this);
    }

    ~MemoryCaptured() override { K7SystemUtil::setReadObserver(nullptr); }

    std::function<void()> duringRefresh;

private:
    TemporaryTree _tree;
};

TEST_F(MemoryCaptured, GivesZeroWhileAnotherThreadRefreshes)
{
    uint32 seen = 1;
    duringRefresh = [&] { std::thread([&] { seen = Memory::getMemFree(); }).join(); };
    EXPECT_EQ(Memory::getMemFree(), 9U);
    EXPECT_EQ(seen, 0U);
}

TEST_F(MemoryCaptured, WorksInAChildForkedDuringARefresh)
{
    std::promise<void> refreshing;
    std::promise<void> done;
    duringRefresh = [&] {
        refreshing.set_value();
        done.get_future().wait();
    };
    std::jthread refresher([] { Memory::refresh(); });
    refreshing.get_future().wait();
    const pid_t child = ::fork();
    if (child == 0) {
        duringRefresh = [] {};
        ::_exit(Memory::getMemFree() == 9 ? 0 : 1);
    }
    done.set_value();
    int status = -1;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

TEST(MemoryTableCaptured, ServesManyThreads)
{
    TemporaryTree tree;
    tree.file(MEMINFO, meminfo(11));
    std::vector<std::jthread> threads;
    EXPECT_EQ(Memory::getMemFree(), 11U);
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([] {
            for (int turn = 0; turn < 2000; ++turn)
                if (const uint32 free = Memory::getMemFree(); free != 11) { // no refresh is due: getters do not collide
                    ADD_FAILURE() << free;
                    return;
                }
        });
}

TEST(MemoryTableCaptured, DropsTheCachesThroughTheHostsRunner)
{
    RecordingRunner runner;
    Memory::dropSystemCachedBuffers();
    EXPECT_EQ(runner.commands(), std::vector<std::string>{"sync; sync; echo 3 > /proc/sys/vm/drop_caches"});
}
