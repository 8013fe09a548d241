// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Conversions on narrow byte strings, their reports, and random numbers.
#include "OS/System/Misc.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>

using namespace Kivo;
using Misc = K7SystemUtil::Misc;
using namespace std::string_literals;

namespace {

/// What becomes of @p text when a disk reports it, with the bytes of every pair exchanged.
std::string swapAndTrim(std::string text, int32 size)
{
    for (std::size_t i = 0; i + 1 < text.size(); i += 2)
        std::swap(text[i], text[i + 1]);
    char dest[48] = {};
    dest[41] = '#';
    Misc::swapAndTrim(dest, text.data(), size);
    EXPECT_EQ(dest[41], '#');
    return dest;
}

} // namespace

TEST(Misc, SwapsAndTrimsDeviceTexts)
{
    const std::pair<std::string, const char*> cases[] = {
        {"  A1 B  ", "A1 B"}, {"-X--Y-", "X--Y"}, {"A\tB\177C\001", "A.B.C"}, {"\351A\377B", "A\377B"}, {"AB?", "AB"},
        {"AB\0\1CD"s, "AB"},  {"-/._ \t", ""}};
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(swapAndTrim(text, static_cast<int32>(text.size())), expected) << text;
    EXPECT_EQ(swapAndTrim(std::string(30, '.') + "1234567890AB", 42), "1234567890");
    EXPECT_LT(Misc::fnComparator("sda1", "sda12"), 0);
    EXPECT_GT(Misc::fnComparator("sda\xE9", "sda1"), 0);
}

TEST(Misc, WritesAndReadsHexadecimalDigits)
{
    std::vector<uint8> bytes(256);
    std::iota(bytes.begin(), bytes.end(), uint8{0});
    std::vector<char> text(513, '#');
    Misc::binaryToHexaString(text.data(), bytes.data(), 256);
    EXPECT_STREQ(&text[500], "FAFBFCFDFEFF");
    std::vector<uint8> back(256);
    EXPECT_EQ(Misc::hexaStringToBinary(back.data(), text.data()), 256);
    EXPECT_EQ(back, bytes);
    EXPECT_EQ(Misc::hexaStringToBinary(back.data(), "afAfZ10"), 2);
    EXPECT_EQ(back[0], 0xAF);
    for (const char* none : {"", "1", "0x10", " 1", "/0", ":0", "@0", "G0", "`0", "g0"})
        EXPECT_EQ(Misc::hexaStringToBinary(back.data(), none), 0) << none;
}

TEST(Misc, DrawsNumbersBelowTheMaximumAnewEachTime)
{
    std::vector<uint32> first;
    std::vector<uint32> second{1, 2, 3};
    Misc::getRandNumber(&first, 1000, 10);
    Misc::getRandNumber(&second, 1000, 10);
    EXPECT_EQ(second.size(), 1000U);
    EXPECT_NE(first, second);
    EXPECT_EQ(*std::max_element(first.begin(), first.end()), 9U);
    Misc::getRandNumber(&first, 2, 0);
    EXPECT_EQ(first, (std::vector<uint32>{0, 0}));
}

TEST(Misc, ReportsWhatItIsGivenAndStaysInBounds)
{
    testing::internal::CaptureStderr();
    Misc::swapAndTrim(nullptr, nullptr, 2);
    EXPECT_EQ(Misc::fnComparator(nullptr, nullptr), 0);
    Misc::binaryToHexaString(nullptr, nullptr, 1);
    EXPECT_EQ(Misc::hexaStringToBinary(nullptr, nullptr), 0);
    Misc::getRandNumber(nullptr, 1, 1);
    EXPECT_EQ(swapAndTrim(std::string(200, 'A'), 128) + swapAndTrim("AB", -2147483647), std::string(40, 'A'));
    char text[] = "##";
    Misc::binaryToHexaString(text, reinterpret_cast<const uint8*>("A"), -1);
    EXPECT_STREQ(text, "");
    const std::string reports = testing::internal::GetCapturedStderr();
    EXPECT_EQ(std::count(reports.begin(), reports.end(), '\n'), 12) << reports;
    for (const char* report : {"dest is Null! (dest)", "src is Null! (src)", "p1 is Null! (p1)", "p2 is Null! (p2)",
                               "invalid size (size > 0 && size < 128)", "invalid srcLength (srcLength > 0)"})
        EXPECT_NE(reports.find(report), std::string::npos) << report << reports;
}
