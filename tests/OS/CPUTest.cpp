// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Core counts and interrupt counts of captured and made machines.
#include "OS/System/CPU.h"

#include "support/SystemTree.h"

#include <gtest/gtest.h>

#include <memory>

using namespace Kivo;
using namespace K7Test;
using CPU = K7SystemUtil::CPU;

constexpr const char* PRESENT = "/sys/devices/system/cpu/present";
constexpr const char* INTERRUPTS = "/proc/interrupts";
constexpr const char* FOUR_CORES = R"(            CPU0       CPU1       CPU2       CPU3       
 LOC: 4294967295 4294967296          7          1   Local timer interrupts
IPI1:1794000000 1723000000          1          1       Function call interrupts
 MIS:          2   APIC timer misses
 LOC:        100        100        100        100   second of its label
)";

TEST(CPUCaptured, CountsThePresentCores)
{
    TemporaryTree tree;
    const std::pair<const char*, int32> cases[] = {{"0-7,9\n", 8}, {"0\n", 0}, {"0-99999999999", 2147483647}};
    for (const auto& [present, count] : cases) {
        tree.file(PRESENT, present);
        EXPECT_EQ(CPU::coreCount(), count) << present;
    }
}

TEST(CPUCaptured, ThrowsTheMessageOfAFileThatCannotBeRead)
{
    TemporaryTree tree;
    EXPECT_THROW(static_cast<void>(CPU::interruptCountOf(L"LOC")), J3String);
    EXPECT_EQ(K7SystemUtil::lastFailure().reason, L"can't open \"/proc/interrupts\"");
    tree.file(INTERRUPTS, FOUR_CORES).file(PRESENT, "");
    EXPECT_THROW(static_cast<void>(CPU::interruptCountOf(L"LOC")), J3String);
    EXPECT_EQ(K7SystemUtil::lastFailure().reason, L"can't read \"/sys/devices/system/cpu/present\"");
}

TEST(CPUCaptured, SumsTheColumnsOfTheFirstRowOfALabel)
{
    TemporaryTree tree;
    tree.file(INTERRUPTS, FOUR_CORES).file(PRESENT, "0-3\n");
    const std::pair<const char*, uint64> cases[] = {
        {"LOC", 8589934599}, {"IPI1", 3517000002}, {"MIS", 2}, {"LO", 0}, {"CPU0", 0}};
    for (const auto& [name, count] : cases)
        EXPECT_EQ(CPU::interruptCountOf(name), count) << name;
    tree.file(PRESENT, "0\n");
    EXPECT_EQ(CPU::interruptCountOf(L"LOC"), 0U);
}

TEST(CPUCaptured, TakesRowsOfAnyLength)
{
    std::string text;
    for (int core = 0; core < 128; ++core)
        text += " CPU" + std::to_string(core);
    text += "\n\n  7:";
    for (int core = 0; core < 128; ++core)
        text += "   9999999999";
    text += "   GICv3  7 Level     uart\nIPI1:5";
    TemporaryTree tree;
    tree.file(INTERRUPTS, text).file(PRESENT, "0-127\n");
    EXPECT_EQ(CPU::interruptCountOf(L"7"), 128 * 9999999999);

    const std::unique_ptr<FILE, int (*)(FILE*)> file(::fmemopen(text.data(), text.size(), "r"), std::fclose);
    std::vector<J3String> tokens;
    std::vector<std::size_t> sizes;
    while (CPU::readLineFromProcInterrupts(&tokens, file.get()))
        sizes.push_back(tokens.size());
    EXPECT_EQ(sizes, (std::vector<std::size_t>{128, 0, 1 + 128 + 4, 2}));
}

TEST(CPUCaptured, LeavesOutColumnsOfCoresThatAreOffline)
{
    TemporaryTree tree;
    tree.file(PRESENT, "0-3\n");
    tree.file(INTERRUPTS, "           CPU0       CPU1       \n"
                          " 41:         10         20   MSI 16384 Edge      ahci[0000:00:01.0]\n"
                          "IPI0:         1          2       Rescheduling interrupts\n"
                          "Err:          7\n"
                          "NMI:          3  4711 faults\n\n");
    EXPECT_EQ(CPU::interruptCountOf(L"41"), 30U);
    std::vector<CPU::Interrupt> rows;
    ASSERT_TRUE(CPU::readInterrupts(&rows));
    const std::tuple<const char*, uint64, const char*> expected[] = {{"41", 30, "MSI 16384 Edge ahci[0000:00:01.0]"},
                                                                     {"IPI0", 3, "Rescheduling interrupts"},
                                                                     {"Err", 7, ""},
                                                                     {"NMI", 4714, "faults"}};
    ASSERT_EQ(rows.size(), std::size(expected));
    for (std::size_t i = 0; i < rows.size(); ++i) {
        EXPECT_EQ(rows[i].label, std::get<0>(expected[i]));
        EXPECT_EQ(rows[i].total, std::get<1>(expected[i]));
        EXPECT_EQ(rows[i].description, std::get<2>(expected[i]));
    }
}
