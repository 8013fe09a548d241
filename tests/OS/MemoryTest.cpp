// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The memory table: what is read, when, and what a collision gives.
#include "OS/System/Memory.h"

#include "support/RecordingRunner.h"
#include "support/SystemTree.h"

#include "Foundation/J3Thread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <fstream>
#include <thread>

#include <sys/stat.h>

using namespace Kivo;
using namespace K7Test;
using Memory = K7SystemUtil::Memory;

static constexpr const char* MEMINFO = "/proc/meminfo";

static std::string meminfo(int free)
{
    return "MemTotal:        1000840 kB\nMemFree:         " + std::to_string(free) + " kB\n";
}

TEST(Memory, ReadsTheCountersOfACapturedBoard)
{
    const FixtureRoot board("virt-board");
    EXPECT_TRUE(Memory::getMemTotal() == 1000840 && Memory::getMemFree() == 874196 && Memory::getBuffers() == 0);
    EXPECT_TRUE(Memory::getCached() == 73868 && Memory::getSwapCached() == 0 && Memory::getVmallocUsed() == 5084);
    EXPECT_EQ(Memory::getVmallocTotal(), static_cast<uint32>(133143592960ULL));
}

TEST(Memory, TellsTheTotalOfTheRunningMachine)
{
    std::string name;
    uint32 total = 0;
    std::ifstream(MEMINFO) >> name >> total;
    EXPECT_TRUE(name == "MemTotal:" && Memory::getMemTotal() == total) << name << total;
}

TEST(Memory, TakesLinesOfEveryShapeWithinTheFirst2048Bytes)
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

TEST(Memory, ReadsTheFileOnceASecondAndKeepsTheTableWhenItIsShort)
{
    TemporaryTree tree;
    tree.file(MEMINFO, meminfo(1));
    EXPECT_EQ(Memory::getMemFree(), 1U);
    tree.file(MEMINFO, meminfo(2));
    EXPECT_TRUE(Memory::getMemTotal() == 1000840 && Memory::getMemFree() == 1);
    J3Thread::sleep(1100);
    EXPECT_EQ(Memory::getMemFree(), 2U);
    tree.file(MEMINFO, "MemFree:                   8 kB\n"); // 32 bytes
    J3Thread::sleep(1100);
    EXPECT_EQ(Memory::getMemFree(), 2U);
    EXPECT_EQ(K7SystemUtil::lastFailure().operation, L"Memory::getMemFree");
}

/// The observer runs inside the refresh, with the table's lock held: the collision is certain, not a matter of luck.
TEST(Memory, GivesZeroWhileAnotherThreadRefreshes)
{
    TemporaryTree tree;
    tree.file(MEMINFO, meminfo(9));
    static std::atomic<uint32> seenDuringRefresh = 1;
    K7SystemUtil::setReadObserver([](const char*, K7SystemUtil::ReadKind) {
        std::thread([] { seenDuringRefresh = Memory::getMemFree(); }).join();
    });
    EXPECT_EQ(Memory::getMemFree(), 9U);
    K7SystemUtil::setReadObserver(nullptr);
    EXPECT_EQ(seenDuringRefresh, 0U);
}

TEST(Memory, ServesManyThreads)
{
    TemporaryTree tree;
    tree.file(MEMINFO, meminfo(11));
    std::vector<std::jthread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([] {
            for (int turn = 0; turn < 2000; ++turn)
                EXPECT_EQ(Memory::getMemFree() % 11, 0U);
        });
}

TEST(Memory, DropsTheCachesThroughTheHostsRunner)
{
    RecordingRunner runner;
    Memory::dropSystemCachedBuffers();
    EXPECT_EQ(runner.commands(), std::vector<std::string>{"sync; sync; echo 3 > /proc/sys/vm/drop_caches"});
}

/// A captured tree comes from outside: none of its links may lead out of it, and no odd file may make a reader wait.
TEST(SystemRoot, ReadsNothingOutsideTheTreeAndNeverWaits)
{
    TemporaryTree outside(false);
    const std::string secret = outside.file("/secret", "secret").real("/secret");
    TemporaryTree tree;
    tree.link("/absolute", secret).link("/relative", "../../../../../../../.." + secret).link("/loop", "loop");
    tree.file("/etc/value", "inside").link("/inside", "/etc/value").directory("/empty");
    ASSERT_EQ(::mkfifo(tree.real("/fifo").c_str(), 0600), 0);

    J3String text(L"unchanged");
    for (const wchar_t* path : {L"/absolute", L"/relative", L"/loop", L"/fifo", L"/empty", L"/missing", L""})
        EXPECT_FALSE(K7SystemUtil::readFile(path, &text)) << J3String(path).to_string();
    EXPECT_EQ(text, L"unchanged");
    EXPECT_TRUE(K7SystemUtil::readFile(L"/inside", &text) && text == L"inside");
    EXPECT_TRUE(K7SystemUtil::readLink(L"/inside", &text) && text == L"/etc/value");
}
