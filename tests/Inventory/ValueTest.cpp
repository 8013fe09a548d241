// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Values of records, whatever their type.
#include "Inventory/Value.h"

#include "Inventory/detail/NumberParser_p.h"

#include <gtest/gtest.h>

#include <limits>

using namespace Kivo;
using namespace Kivo::Inventory;

TEST(Value, HoldsWhatItIsMadeOf)
{
    EXPECT_EQ(*Value(true).as<bool>(), true);
    EXPECT_EQ(*Value(-7).as<int64>(), -7);
    EXPECT_EQ(*Value(std::numeric_limits<uint64>::max()).as<uint64>(), std::numeric_limits<uint64>::max());
    EXPECT_EQ(*Value(Real{0.5, 2}).as<Real>(), (Real{0.5, 2}));
    EXPECT_EQ(*Value("eth0").as<std::string>(), "eth0");
    EXPECT_EQ(Value(std::vector<std::string>{"a", "b"}), Value(List{"a", "b"}));
}

TEST(Value, IsUnknownWithoutAFact)
{
    for (const Value& value : {Value(), Value(std::optional<bool>()), Value(static_cast<const char*>(nullptr))})
        EXPECT_FALSE(value.isKnown());
    EXPECT_TRUE(Value(std::optional(false)).isKnown());
    EXPECT_TRUE(Value(List()).isKnown()); // none, which is a fact
}

TEST(Value, IsANumberWhenItIsOne)
{
    EXPECT_EQ(Value(-1).number(), -1.0);
    EXPECT_EQ(Value(Real{1.5, 1}).number(), 1.5);
    EXPECT_EQ(Value(true).number(), std::nullopt);
    EXPECT_EQ(Value("1").number(), std::nullopt);
}

TEST(NumberParser, KeepsTheDecimalsThatAreWritten)
{
    const std::pair<const char*, Real> cases[] = {{"0.08", {0.08, 2}}, {"14", {14, 0}}, {"-1.500", {-1.5, 3}}};
    for (const auto& [text, real] : cases)
        EXPECT_EQ(parseReal(text), real) << text;
    for (const char* text : {"", "nan", "inf", "-inf", "1e5", "1.5x", ".", "1 2", "--1"})
        EXPECT_EQ(parseReal(text), std::nullopt) << text;
}

TEST(NumberParser, DropsOnlyTheZerosAtTheEndOfThousandths)
{
    EXPECT_EQ(thousandths(45000, 1), (Real{45, 1}));
    EXPECT_EQ(thousandths(45123, 1), (Real{45.123, 3}));
    EXPECT_EQ(thousandths(-5500), (Real{-5.5, 1}));
    EXPECT_EQ(thousandths(1800000), (Real{1800, 0}));
    EXPECT_EQ(thousandths(0), (Real{0, 0}));
}
