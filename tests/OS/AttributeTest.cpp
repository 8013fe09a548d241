// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Typed reading of small files, links and directories.
#include "OS/System/Attribute.h"

#include "support/SystemTree.h"

#include <gtest/gtest.h>

#include <optional>

using namespace Kivo;
using namespace K7Test;
using Attribute = K7SystemUtil::Attribute;

TEST(AttributeCaptured, TextIsTrimmedAndCutBetweenCharacters)
{
    TemporaryTree tree;
    const std::string limit(4095, 'x');
    const std::pair<std::string, std::string> cases[] = {
        {" a b \n", "a b"}, {"", ""}, {limit + "yz", limit + "y"}, {limit + "\u00e4", limit}};
    for (const auto& [contents, expected] : cases) {
        std::string text;
        tree.file("/text", contents);
        EXPECT_TRUE(Attribute::readText("/text", &text));
        EXPECT_EQ(text, expected);
    }
}

TEST(AttributeCaptured, NumbersAndFlagsAreWhole)
{
    TemporaryTree tree;
    struct Case {
        const char* contents;
        int base;
        std::optional<int64> number;
        std::optional<bool> flag;
    };
    const Case cases[] = {{"12\n", 10, 12, {}},  {"-1\n", 10, -1, {}}, {"0x1f\n", 16, 31, {}},
                          {"1f", 16, 31, {}},    {"1\n", 10, 1, true}, {"0", 10, 0, false},
                          {"Y\n", 10, {}, true}, {"N", 10, {}, false}, {"12 kB\n", 10, {}, {}},
                          {"", 10, {}, {}},      {"0x1f", 10, {}, {}}, {"99999999999999999999", 10, {}, {}}};
    for (const Case& expected : cases) {
        tree.file("/value", expected.contents);
        int64 number = -7;
        const bool isNumber = Attribute::readNumber("/value", &number, expected.base);
        EXPECT_EQ(isNumber, expected.number.has_value()) << expected.contents;
        EXPECT_EQ(number, expected.number.value_or(-7)) << expected.contents;
        bool flag = false;
        const bool isFlag = Attribute::readFlag("/value", &flag);
        EXPECT_EQ(isFlag, expected.flag.has_value()) << expected.contents;
        EXPECT_EQ(flag, expected.flag.value_or(false)) << expected.contents;
    }
}

TEST(AttributeCaptured, LinksAndDirectoriesAreReadAsTheyStand)
{
    TemporaryTree tree;
    tree.link("/device/driver", "../../bus/pci/drivers/ahci").file("/device/b", "").file("/device/a", "");
    std::string text;
    EXPECT_TRUE(Attribute::readLinkName("/device/driver", &text));
    EXPECT_EQ(text, "ahci");
    EXPECT_TRUE(Attribute::readLink("/device/driver", &text));
    EXPECT_EQ(text, "../../bus/pci/drivers/ahci");
    std::vector<std::string> names;
    EXPECT_TRUE(Attribute::listNames("/device", &names));
    EXPECT_EQ(names, (std::vector<std::string>{"a", "b", "driver"}));
    EXPECT_FALSE(Attribute::listNames("/device/a", &names));
    EXPECT_EQ(names.size(), 3U);
}
