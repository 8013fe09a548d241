// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The memory table: what is read, when, and what a collision gives.
#include "OS/System/Memory.h"

#include "support/RecordingRunner.h"
#include "support/SystemTree.h"

#include <gtest/gtest.h>

#include <atomic>
#include <fstream>
#include <thread>
#include <vector>

#include <sys/stat.h>

using namespace Kivo;
using namespace K7Test;
using Memory = K7SystemUtil::Memory;

namespace {

constexpr const char* MEMINFO = "/proc/meminfo";

std::string meminfo(int free)
{
    return "MemTotal:        1000840 kB\nMemFree:         " + std::to_string(free) + " kB\n";
}

void waitUntilDue() { std::this_thread::sleep_for(std::chrono::milliseconds(1100)); }

} // namespace

TEST(Memory, ReadsTheCountersOfACapturedBoard)
{
    const FixtureRoot board("virt-board");
    EXPECT_EQ(Memory::getMemTotal(), 1000840U);
    EXPECT_EQ(Memory::getMemFree(), 874196U);
    EXPECT_EQ(Memory::getBuffers(), 0U);
    EXPECT_EQ(Memory::getCached(), 73868U);
    EXPECT_EQ(Memory::getVmallocTotal(), static_cast<uint32>(133143592960ULL));
    EXPECT_EQ(Memory::getVmallocUsed(), 5084U);
}

TEST(Memory, TakesLinesOfEveryShape)
{
    const struct {
        const char* line;
        uint32 free;
    } cases[] = {
        {"MemFree: 12 kB", 12},
        {"MemFree\t:\t13", 13},
        {"MemFree 14 kB", 14},
        {"MemFree:", 0},
        {"MemFree: kB", 0},
        {"MemFree: 15kB", 15},
        {"MemFree: 4294967297 kB", 1},
        {"MemFree: 16\r\nMemFree: 17", 17},
        {"MemFree: 99999999999999999999999", 0xFFFFFFFF},
        {"memfree: 18", 0},
    };
    for (const auto& test : cases) {
        TemporaryTree tree;
        tree.file(MEMINFO, std::string("HugePages_Total:                   0\n") + test.line + "\n");
        EXPECT_EQ(Memory::getMemFree(), test.free) << test.line;
    }
}

TEST(Memory, ReadsTheFileOnceASecond)
{
    TemporaryTree tree;
    tree.file(MEMINFO, meminfo(1));
    EXPECT_EQ(Memory::getMemFree(), 1U);
    tree.file(MEMINFO, meminfo(2));
    EXPECT_EQ(Memory::getMemTotal(), 1000840U);
    EXPECT_EQ(Memory::getMemFree(), 1U);
    waitUntilDue();
    EXPECT_EQ(Memory::getMemFree(), 2U);
}

TEST(Memory, KeepsTheTableWhenTheFileIsShortOrGone)
{
    TemporaryTree tree;
    tree.file(MEMINFO, meminfo(7));
    EXPECT_EQ(Memory::getMemFree(), 7U);
    tree.file(MEMINFO, "MemFree:                  8 kB\n"); // 31 bytes
    waitUntilDue();
    EXPECT_EQ(Memory::getMemFree(), 7U);
    std::filesystem::remove(tree.real(MEMINFO));
    waitUntilDue();
    EXPECT_EQ(Memory::getMemFree(), 7U);
    EXPECT_EQ(Memory::getSwapCached(), 0U);
}

TEST(Memory, ReadsAtMost2048Bytes)
{
    TemporaryTree tree;
    std::string text = meminfo(3);
    while (text.size() < 2048)
        text += "Filler:   1 kB\n";
    tree.file(MEMINFO, text + "Cached: 5 kB\n");
    EXPECT_EQ(Memory::getMemFree(), 3U);
    EXPECT_EQ(Memory::getCached(), 0U);
}

/// The observer runs inside the refresh, with the table's lock held: the collision is certain, not a matter of luck.
TEST(Memory, GivesZeroWhileAnotherThreadRefreshes)
{
    TemporaryTree tree;
    tree.file(MEMINFO, meminfo(9));
    static std::atomic<uint32> seenDuringRefresh;
    seenDuringRefresh = 1;
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
    std::vector<std::thread> threads;
    std::atomic<int> wrong{0};
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&] {
            for (int turn = 0; turn < 2000; ++turn) {
                const uint32 value = Memory::getMemFree();
                wrong += value != 11 && value != 0;
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(Memory::getMemFree(), 11U);
}

TEST(Memory, SaysWhyTheFileCouldNotBeRead)
{
    TemporaryTree tree;
    tree.directory(MEMINFO);
    Memory::refresh();
    EXPECT_EQ(K7SystemUtil::lastFailure().operation, L"Memory::refresh");
    EXPECT_EQ(Memory::getMemTotal(), 0U);
}

TEST(Memory, AgreesWithTheRunningKernel)
{
    std::ifstream file(MEMINFO);
    std::string key;
    uint32 total = 0;
    file >> key >> total;
    EXPECT_EQ(Memory::getMemTotal(), total);
    EXPECT_GT(Memory::getMemFree(), 0U);
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
    outside.file("/secret", "secret");
    TemporaryTree tree;
    tree.link("/absolute", outside.real("/secret").string());
    tree.link("/relative", "../../../../../../../../../../" + outside.real("/secret").string());
    tree.link("/loop", "loop");
    tree.file("/etc/value", "inside").link("/inside", "/etc/value").directory("/empty");
    ASSERT_EQ(::mkfifo(tree.real("/fifo").c_str(), 0600), 0);

    J3String text(L"unchanged");
    for (const wchar_t* path : {L"/absolute", L"/relative", L"/loop", L"/empty", L"/missing", L""})
        EXPECT_FALSE(K7SystemUtil::readFile(path, &text)) << J3String(path).to_string();
    EXPECT_EQ(text, L"unchanged");
    EXPECT_TRUE(K7SystemUtil::readFile(L"/fifo", &text));
    EXPECT_EQ(text, L"");
    EXPECT_TRUE(K7SystemUtil::readFile(L"/inside", &text));
    EXPECT_EQ(text, L"inside");
    EXPECT_FALSE(K7SystemUtil::readFile(L"/inside", nullptr));

    std::vector<J3String> names;
    EXPECT_TRUE(K7SystemUtil::listDirectory(L"/", &names));
    EXPECT_EQ(names, (std::vector<J3String>{L"absolute", L"empty", L"etc", L"fifo", L"inside", L"loop", L"relative"}));
    EXPECT_TRUE(K7SystemUtil::readLink(L"/inside", &text));
    EXPECT_EQ(text, L"/etc/value");
}
