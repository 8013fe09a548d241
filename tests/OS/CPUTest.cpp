// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Core counts and interrupt counts of captured and made machines.
#include "OS/System/CPU.h"

#include "support/SystemTree.h"

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <memory>
#include <optional>
#include <sstream>

using namespace Kivo;
using namespace K7Test;
using CPU = K7SystemUtil::CPU;
using Row = std::vector<J3String>;

namespace {

constexpr const char* PRESENT = "/sys/devices/system/cpu/present";
constexpr const char* INTERRUPTS = "/proc/interrupts";

constexpr const char* FOUR_CORES = R"(            CPU0       CPU1       CPU2       CPU3       
   0:         46          0          0          0  IR-IO-APIC    2-edge      timer
   8:          0          0          1          0  IR-IO-APIC    8-edge      rtc0
 LOC: 4294967295 4294967296          7          1   Local timer interrupts
IPI1:1794000000 1723000000          1          1       Function call interrupts
 ERR:          5
 MIS:          2   APIC timer misses
   8:        100        100        100        100  second of its label
)";

using File = std::unique_ptr<FILE, int (*)(FILE*)>;

File open(const std::filesystem::path& path) { return {std::fopen(path.c_str(), "re"), std::fclose}; }

std::vector<Row> rowsOf(FILE* file)
{
    std::vector<Row> rows;
    for (Row row; CPU::readLineFromProcInterrupts(&row, file);)
        rows.push_back(row);
    return rows;
}

/// The text of the J3String that an operation throws.
template <class Operation>
std::optional<J3String> thrownBy(Operation operation)
{
    try {
        operation();
    } catch (const J3String& message) {
        return message;
    }
    return std::nullopt;
}

} // namespace

TEST(CPU, CountsThePresentCores)
{
    const struct {
        const char* present;
        int32 count;
    } cases[] = {
        {"0-3\n", 4},
        {"0-7", 8},
        {"0-1\n", 2},
        {"0\n", 0},
        {"0-3,6-7\n", 4},
        {"0,2-3\n", 0},
        {"\n", 0},
        {"garbage\n", 0},
        {"-1\n", 0},
        {"0--1\n", 0},
        {"99999999999\n", 0},
        {"0-2147483646\n", 2147483647},
        {"0-2147483647\n", 2147483647},
        {"0-99999999999999999999999\n", 2147483647},
        {"0--99999999999\n", -2147483647},
        {"0-\n3\n", 0},
    };

    TemporaryTree tree;
    for (const auto& [present, count] : cases) {
        tree.file(PRESENT, present);
        EXPECT_EQ(CPU::coreCount(), count) << present;
    }
    tree.file(PRESENT, "0-3" + std::string(5000, ' '));
    EXPECT_EQ(CPU::coreCount(), 4);
}

TEST(CPU, ThrowsTheMessageOfAFileThatCannotBeRead)
{
    const auto interrupts = [] { (void)CPU::interruptCountOf(L"LOC"); };
    TemporaryTree tree;
    const std::size_t descriptors = openDescriptors();
    EXPECT_EQ(thrownBy(CPU::coreCount), L"can't open \"/sys/devices/system/cpu/present\"");
    EXPECT_EQ(thrownBy(interrupts), L"can't open \"/proc/interrupts\"");
    EXPECT_EQ(K7SystemUtil::lastFailure().operation, L"CPU::interruptCountOf");

    tree.file(INTERRUPTS, FOUR_CORES);
    EXPECT_EQ(thrownBy(interrupts), L"can't open \"/sys/devices/system/cpu/present\"");
    tree.file(PRESENT, "");
    EXPECT_EQ(thrownBy(CPU::coreCount), L"can't read \"/sys/devices/system/cpu/present\"");
    EXPECT_EQ(openDescriptors(), descriptors);
}

TEST(CPU, SumsTheColumnsOfTheFirstRowOfALabel)
{
    const struct {
        const char* name;
        uint64 count;
    } cases[] = {
        {"0", 46}, {"8", 1},    {"LOC", 8589934599}, {"IPI1", 3517000002}, {"ERR", 5}, {"MIS", 2},
        {"LO", 0}, {"LOC:", 0}, {"loc", 0},          {"CPU0", 0},          {"", 0},    {"timer", 0},
    };

    TemporaryTree tree;
    tree.file(INTERRUPTS, FOUR_CORES).file(PRESENT, "0-3\n");
    for (const auto& [name, count] : cases)
        EXPECT_EQ(CPU::interruptCountOf(name), count) << name;
    for (const char* text : {"", "\n", "LOC: 1 2", "\n\n\n", "CPU0\n:", "CPU0\n LOC:"}) {
        tree.file(INTERRUPTS, text);
        EXPECT_EQ(CPU::interruptCountOf(L"LOC"), 0U) << text;
    }
}

TEST(CPU, SumsAsManyColumnsAsCoresArePresent)
{
    const struct {
        const char* present;
        uint64 count;
    } cases[] = {{"0-1\n", 8589934591}, {"0-2147483647\n", 8589934599}, {"0\n", 0}, {"0--5\n", 0}};

    TemporaryTree tree;
    tree.file(INTERRUPTS, FOUR_CORES);
    for (const auto& [present, count] : cases) {
        tree.file(PRESENT, present);
        EXPECT_EQ(CPU::interruptCountOf(L"LOC"), count) << present;
    }
}

TEST(CPU, SplitsRowsIntoLabelCountsAndDescription)
{
    TemporaryTree tree(false);
    tree.file(INTERRUPTS, std::string(FOUR_CORES) + "\n  19:          8       MSI 16384 Edge      ahci[0000:00:01.0]");
    const File file = open(tree.real(INTERRUPTS));
    const std::vector<Row> rows = rowsOf(file.get());
    ASSERT_EQ(rows.size(), 10U);
    EXPECT_EQ(rows[0], (Row{L"CPU0", L"CPU1", L"CPU2", L"CPU3"}));
    EXPECT_EQ(rows[1], (Row{L"0", L"46", L"0", L"0", L"0", L"IR-IO-APIC", L"2-edge", L"timer"}));
    EXPECT_EQ(rows[4], (Row{L"IPI1", L"1794000000", L"1723000000", L"1", L"1", L"Function", L"call", L"interrupts"}));
    EXPECT_EQ(rows[5], (Row{L"ERR", L"5"}));
    EXPECT_EQ(rows[8], Row());
    EXPECT_EQ(rows[9], (Row{L"19", L"8", L"MSI", L"16384", L"Edge", L"ahci[0000:00:01.0]"}));
}

TEST(CPU, CountsWhatTheRowsReadOneByOneAddUpTo)
{
    const std::string odd =
        "x\n\n:\n: 1 2\nA: -1 +2 3x 99999999999999999999999\nB:1:2 3\n C \t:4 5\nD:\nLOC: 9\n  E: 6 7";
    TemporaryTree tree;
    tree.file(INTERRUPTS, FOUR_CORES + odd).file(PRESENT, "0-3\n");
    const File file = open(tree.real(INTERRUPTS));
    std::map<J3String, uint64> sums;
    std::vector<Row> rows = rowsOf(file.get());
    rows.erase(rows.begin());
    for (const Row& row : rows) {
        uint64 sum = 0;
        for (std::size_t i = 1; i <= 4 && i < row.size(); ++i)
            sum += row[i].toUint64();
        if (!row.empty())
            sums.emplace(row[0], sum);
    }
    EXPECT_EQ(sums.size(), 13U);
    EXPECT_EQ(sums[L"E"], 13U);
    for (const auto& [label, sum] : sums)
        EXPECT_EQ(CPU::interruptCountOf(label), sum) << label.to_string();
}

TEST(CPU, LeavesTheTokensAloneAtTheEndAndRefusesNullArguments)
{
    TemporaryTree tree(false);
    tree.file(INTERRUPTS, "");
    const File file = open(tree.real(INTERRUPTS));
    Row tokens{L"kept"};
    EXPECT_FALSE(CPU::readLineFromProcInterrupts(&tokens, file.get()));
    EXPECT_FALSE(CPU::readLineFromProcInterrupts(&tokens, nullptr));
    EXPECT_FALSE(CPU::readLineFromProcInterrupts(nullptr, file.get()));
    EXPECT_EQ(tokens, Row{L"kept"});
}

TEST(CPU, CountsTheBoardAsAnotherReaderDoes)
{
    const FixtureRoot root("virt-board");
    ASSERT_EQ(CPU::coreCount(), 2);
    std::ifstream file(std::string(K7_FIXTURES) + "/virt-board/proc/interrupts");
    std::string line;
    std::getline(file, line);
    uint64 total = 0;
    while (std::getline(file, line)) {
        std::istringstream words(line);
        std::string label;
        uint64 counts[2] = {};
        words >> label >> counts[0] >> counts[1];
        label.pop_back();
        EXPECT_EQ(CPU::interruptCountOf(label.c_str()), counts[0] + counts[1]) << label;
        total += counts[0] + counts[1];
    }
    EXPECT_EQ(total, 7938U);
}

TEST(CPU, CountsRowsOfAnyLength)
{
    constexpr int CORES = 128;
    constexpr int ROWS = 300;
    std::ostringstream text;
    std::vector<uint64> sums(ROWS);
    for (int core = 0; core < CORES; ++core)
        text << "        CPU" << core;
    for (int row = 0; row < ROWS; ++row) {
        text << "\n " << row << ":";
        for (int core = 0; core < CORES; ++core) {
            const uint64 count = 10000000000000ULL * static_cast<unsigned>(row) + static_cast<unsigned>(core);
            sums[static_cast<std::size_t>(row)] += count;
            text << "  " << count;
        }
        text << "  GICv3 " << row << " Level     uart";
    }
    TemporaryTree tree;
    tree.file(INTERRUPTS, text.str()).file(PRESENT, "0-127\n");
    ASSERT_GT(text.str().size() / ROWS, 2000U);
    for (int row = 0; row < ROWS; row += 13)
        EXPECT_EQ(CPU::interruptCountOf(std::to_string(row).c_str()), sums[static_cast<std::size_t>(row)]) << row;

    const File file = open(tree.real(INTERRUPTS));
    const std::vector<Row> rows = rowsOf(file.get());
    ASSERT_EQ(rows.size(), ROWS + 1U);
    EXPECT_EQ(rows[0].size(), 128U);
    EXPECT_EQ(rows[ROWS].size(), 1U + CORES + 4U);
    EXPECT_EQ(rows[ROWS][CORES], L"2990000000000127");
}

TEST(CPU, HasNoReadingOfTheBoard)
{
    int32 alarm = 5;
    int32 temperature = 5;
    EXPECT_FALSE(CPU::getTempAlarm(&alarm));
    EXPECT_FALSE(CPU::getTempValue(&temperature));
    EXPECT_FALSE(CPU::getTempValue(nullptr));
    EXPECT_EQ(alarm, 0);
    EXPECT_EQ(temperature, 0);
    EXPECT_EQ(CPU::modelType(), 0);
}
