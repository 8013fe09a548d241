// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Every section: its column table, its failures, and what a captured tree tells of it.
#include "Inventory/Section.h"

#include "support/SystemTree.h"

#include "OS/System/K7SystemUtilClass.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <set>

#include <sys/resource.h>

using namespace Kivo;
using namespace Kivo::Inventory;
using namespace K7Test;

namespace {

const std::pair<Unit, const char*> SUFFIXES[] = {
    {Unit::BYTES, "_bytes"},     {Unit::KIBIBYTES, "_kib"},
    {Unit::SECONDS, "_seconds"}, {Unit::MEGABITS_PER_SECOND, "_mbit_per_s"},
    {Unit::MEGAHERTZ, "_mhz"},   {Unit::CELSIUS, "_celsius"},
    {Unit::VOLTS, "_volts"},     {Unit::REVOLUTIONS_PER_MINUTE, "_rpm"},
    {Unit::PERCENT, "_percent"},
};

void expectColumns(const std::string& where, const std::vector<ColumnInfo>& columns)
{
    std::set<std::string> keys;
    for (const ColumnInfo& column : columns) {
        const std::string key = column.key;
        SCOPED_TRACE(where + "." + key);
        EXPECT_TRUE(keys.insert(key).second) << "is there twice";
        EXPECT_EQ(key.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789_"), std::string::npos);
        EXPECT_STRNE(column.heading, "");
        EXPECT_STRNE(column.help, "");
        EXPECT_FALSE(std::string_view(column.help).ends_with('.'));
        for (const auto& [unit, suffix] : SUFFIXES)
            EXPECT_TRUE(unit != column.unit || ("_" + key).ends_with(suffix)) << "does not end in " << suffix;
        if (column.nested)
            expectColumns(where + "." + key, column.nested());
    }
}

/// Lets one read fail as if no descriptor were left, and counts reads.
class FailingRead {
public:
    /// @param index the read that fails, from 0 on; none when it is larger than any
    explicit FailingRead(std::size_t index)
    {
        s_index = index;
        s_count = 0;
        ::getrlimit(RLIMIT_NOFILE, &s_usual);
        _before = K7SystemUtil::setReadObserver(&observe);
    }
    ~FailingRead()
    {
        K7SystemUtil::setReadObserver(_before);
        ::setrlimit(RLIMIT_NOFILE, &s_usual);
    }
    FailingRead(const FailingRead&) = delete;
    FailingRead& operator=(const FailingRead&) = delete;

    [[nodiscard]] static std::size_t count() { return s_count; }
    [[nodiscard]] static const std::string& path() { return s_path; }

private:
    static void observe(const char* path, K7SystemUtil::ReadKind)
    {
        rlimit limit = s_usual;
        if (s_count == s_index) {
            limit.rlim_cur = 0;
            s_path = path;
        }
        ::setrlimit(RLIMIT_NOFILE, &limit);
        ++s_count;
    }

    static inline std::size_t s_index;
    static inline std::size_t s_count;
    static inline std::string s_path;
    static inline rlimit s_usual;
    K7SystemUtil::ReadObserver _before;
};

constexpr std::size_t NEVER = ~std::size_t{0};

} // namespace

TEST(Section, DescribesEveryColumn)
{
    std::set<std::string> keys;
    for (const Section& section : sections()) {
        EXPECT_TRUE(keys.insert(section.key).second) << section.key << " is there twice";
        EXPECT_EQ(findSection(section.key), &section);
        const auto columns = section.columns();
        expectColumns(section.key, columns);
        const auto isIdentity = [](const ColumnInfo& column) { return column.has(IDENTITY); };
        EXPECT_EQ(std::any_of(columns.begin(), columns.end(), isIdentity), section.shape == Shape::LIST) << section.key;
    }
    EXPECT_EQ(findSection("memories"), nullptr);
}

TEST(SectionCaptured, TellsNothingOfAnEmptyTree)
{
    const TemporaryTree tree;
    for (const Section& section : sections()) {
        SCOPED_TRACE(section.key);
        const Collected collected = section.collect();
        EXPECT_TRUE(collected.problems.empty());
        EXPECT_EQ(collected.known, section.shape == Shape::RECORD);
        EXPECT_EQ(collected.rows.size(), section.shape == Shape::RECORD ? 1U : 0U);
        for (const auto& row : collected.rows)
            for (const Value& value : row)
                EXPECT_FALSE(value.isKnown());
    }
}

TEST(SectionCaptured, TellsEveryReadThatFails)
{
    const FixtureRoot board("virt-board");
    for (const Section& section : sections()) {
        std::size_t reads = 0;
        {
            const FailingRead none(NEVER);
            EXPECT_TRUE(section.collect().problems.empty()) << section.key;
            reads = FailingRead::count();
        }
        EXPECT_GT(reads, 0U) << section.key;
        for (std::size_t index = 0; index < reads; ++index) {
            const FailingRead failing(index);
            const auto problems = section.collect().problems;
            EXPECT_TRUE(std::any_of(problems.begin(), problems.end(),
                                    [](const Problem& problem) { return problem.errorCode == EMFILE; }))
                << section.key << ": " << FailingRead::path();
        }
    }
}

TEST(SectionLive, TellsTheSameOfThisMachineAsOfATreeOfItAndLeavesNoDescriptorOpen)
{
    const std::size_t before = openDescriptors();
    for (const Section& section : sections()) {
        const auto columns = section.columns();
        const Collected live = section.collect();
        for (const auto& row : live.rows)
            ASSERT_EQ(row.size(), columns.size()) << section.key;
        if (section.onRequest)
            continue; // processes come and go
        K7SystemUtil::setSystemRoot(L"/");
        const Collected replayed = section.collect();
        K7SystemUtil::setSystemRoot(L"");
        EXPECT_EQ(live.known, replayed.known) << section.key;
        ASSERT_EQ(live.rows.size(), replayed.rows.size()) << section.key;
        for (std::size_t row = 0; row < live.rows.size(); ++row)
            for (std::size_t column = 0; column < columns.size(); ++column) {
                const bool mayDiffer = columns[column].has(VOLATILE) || columns[column].has(LIVE_ONLY);
                EXPECT_TRUE(mayDiffer || live.rows[row][column] == replayed.rows[row][column])
                    << section.key << "." << columns[column].key << " of row " << row;
            }
    }
    EXPECT_EQ(openDescriptors(), before);
}
