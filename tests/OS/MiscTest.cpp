// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Conversions on narrow byte strings, their reports, and random numbers.
#include "OS/System/Misc.h"

#include "support/SystemTree.h"

#include "Foundation/J3Assert.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>
#include <utility>

using namespace Kivo;
using Misc = K7SystemUtil::Misc;

namespace {

/// What a conversion with a text of its own can hold; whatever lies behind must stay '#'.
struct Dest {
    char text[64];

    explicit Dest(std::size_t zeroed) : text() { std::fill(text + zeroed, std::end(text), '#'); }
};

std::string swapAndTrim(const std::string& src, int32 size)
{
    Dest dest(41);
    Misc::swapAndTrim(dest.text, src.data(), size);
    EXPECT_EQ(std::count(dest.text + 41, std::end(dest.text), '#'), 64 - 41);
    return {dest.text, strnlen(dest.text, 41)};
}

/// @p text as a disk reports it: the bytes of every pair exchanged.
std::string swapped(std::string text)
{
    for (std::size_t i = 0; i + 1 < text.size(); i += 2)
        std::swap(text[i], text[i + 1]);
    return text;
}

std::string swapAndTrim(const std::string& text) { return swapAndTrim(swapped(text), static_cast<int32>(text.size())); }

std::vector<std::string> s_reports;

/// Collects reports instead of printing them, as "function: expression: message".
class MiscReports : public ::testing::Test {
protected:
    MiscReports() : _previous(J3AssertFunc::setHandler(record)) { s_reports.clear(); }

    ~MiscReports() override { J3AssertFunc::setHandler(_previous); }

    static std::vector<std::string> taken() { return std::exchange(s_reports, {}); }

private:
    static void record(const J3String& expression, const J3String& message, const J3String& function,
                       const J3String& path, int line)
    {
        EXPECT_EQ(path, L"OS/System/Platform/Linux/Misc");
        EXPECT_GT(line, 0);
        s_reports.push_back(function.to_string() + ": " + expression.to_string() + ": " + message.to_string());
    }

    J3AssertFunc::Handler _previous;
};

using Reports = std::vector<std::string>;

} // namespace

TEST(Misc, SwapsAndTrimsDeviceTexts)
{
    const std::string blanks(10, ' ');
    const std::string forty = "0123456789012345678901234567890123456789";
    const std::string cases[][2] = {
        {"  A1 B  ", "A1 B"},
        {"VIRTUAL DISK    ", "VIRTUAL DISK"},
        {"X ", "X"},
        {" X", "X"},
        {"--X--Y--", "X--Y"},
        {"A\tB\177C\001", "A.B.C"},
        {"A\351\377B", "A\351\377B"},
        {"\351AB\377", "AB"},
        {std::string("AB\0\1CD", 6), "AB"},
        {std::string("\0\0AB", 4), "AB"},
        {forty, forty},
        {forty + "ABCDEFGH", forty},
        {blanks + forty, forty.substr(0, 30)},
        {forty.substr(0, 39) + " Z", forty.substr(0, 39)},
        {std::string(40, ' ') + "AB", ""},
        {"        ", ""},
        {"-/._ \t", ""},
    };
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(swapAndTrim(text), expected) << text;
}

TEST(Misc, SwapsTheBytesOfWholePairsOnly)
{
    EXPECT_EQ(swapAndTrim("  1AB   ", 8), "A1 B");
    EXPECT_EQ(swapAndTrim("BADC", 3), "AB");
}

TEST(Misc, TrimsIntoNoMoreThanTheTextWithoutATerminator)
{
    Dest dest(0);
    Misc::swapAndTrim(dest.text, "BA", 2);
    EXPECT_EQ(std::string(dest.text, 3), "AB#");
    Misc::swapAndTrim(dest.text, "  ", 2);
    EXPECT_EQ(std::string(dest.text, 2), std::string("\0B", 2));
}

TEST(Misc, SortsFixedSizeTexts)
{
    char names[][8] = {"sdb", "sda12", "", "sda1", "nvme0n1", "sda\xE9", "sda"};
    std::qsort(names, std::size(names), sizeof *names, Misc::fnComparator);
    const std::vector<std::string> sorted(std::begin(names), std::end(names));
    EXPECT_EQ(sorted, (std::vector<std::string>{"", "nvme0n1", "sda", "sda1", "sda12", "sda\xE9", "sdb"}));
}

TEST(Misc, WritesTwoUpperCaseDigitsAByte)
{
    const uint8 bytes[] = {0x0A, 0xFF, 0x00, 0x9C};
    Dest dest(0);
    Misc::binaryToHexaString(dest.text, bytes, 2);
    EXPECT_STREQ(dest.text, "0AFF");
    EXPECT_EQ(dest.text[5], '#');
    Misc::binaryToHexaString(dest.text, bytes, 4);
    EXPECT_STREQ(dest.text, "0AFF009C");
}

TEST(Misc, ReadsPairsOfDigitsUpToTheFirstThatIsNone)
{
    const struct {
        const char* text;
        std::vector<uint8> bytes;
    } cases[] = {
        {"0AFF", {0x0A, 0xFF}},
        {"aBcDeF", {0xAB, 0xCD, 0xEF}},
        {"0AfZ10", {0x0A}},
        {"Zf10", {}},
        {"12345", {0x12, 0x34}},
        {"1", {}},
        {"", {}},
        {"0x10", {}},
        {" 1", {}},
        {"+1", {}},
        {"12 4", {0x12}},
        {"\xEF\xBC\x91", {}},
        {"/0", {}},
        {":0@0G0`0g0", {}},
    };

    for (const auto& [text, bytes] : cases) {
        std::vector<uint8> dest(8, 0xEE);
        const int32 count = Misc::hexaStringToBinary(dest.data(), text);
        ASSERT_EQ(static_cast<std::size_t>(count), bytes.size()) << text;
        EXPECT_TRUE(std::equal(bytes.begin(), bytes.end(), dest.begin())) << text;
        EXPECT_EQ(dest[bytes.size()], 0xEE) << text;
    }
}

TEST(Misc, ReadsBackEveryByteItWrote)
{
    std::vector<uint8> bytes(100000);
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<uint8>(i * 7 + i / 256);
    std::string text(2 * bytes.size() + 1, '#');
    Misc::binaryToHexaString(text.data(), bytes.data(), static_cast<int32>(bytes.size()));
    std::vector<uint8> back(bytes.size());
    EXPECT_EQ(Misc::hexaStringToBinary(back.data(), text.c_str()), static_cast<int32>(bytes.size()));
    EXPECT_EQ(back, bytes);
}

TEST(Misc, DrawsNumbersBelowTheMaximum)
{
    std::vector<uint32> numbers{1, 2, 3};
    Misc::getRandNumber(&numbers, 1000, 10);
    ASSERT_EQ(numbers.size(), 1000U);
    for (uint32 digit = 0; digit < 10; ++digit)
        EXPECT_GT(std::count(numbers.begin(), numbers.end(), digit), 0) << digit;
    EXPECT_LT(*std::max_element(numbers.begin(), numbers.end()), 10U);

    Misc::getRandNumber(&numbers, 3, 1);
    EXPECT_EQ(numbers, (std::vector<uint32>{0, 0, 0}));
    Misc::getRandNumber(&numbers, 2, 0);
    EXPECT_EQ(numbers, (std::vector<uint32>{0, 0}));
    Misc::getRandNumber(&numbers, 0, 10);
    EXPECT_TRUE(numbers.empty());
}

TEST(Misc, SeedsEveryDrawAnew)
{
    const std::size_t descriptors = K7Test::openDescriptors();
    std::vector<uint32> first;
    std::vector<uint32> second;
    Misc::getRandNumber(&first, 8, 0xFFFFFFFF);
    Misc::getRandNumber(&second, 8, 0xFFFFFFFF);
    EXPECT_NE(first, second);
    EXPECT_EQ(K7Test::openDescriptors(), descriptors);
}

TEST_F(MiscReports, NullPointersAreReportedAndLeftAlone)
{
    Dest dest(0);
    uint8 byte = 0;
    Misc::swapAndTrim(nullptr, "BA", 2);
    EXPECT_EQ(taken(), Reports{"swapAndTrim: dest: dest is Null!"});
    Misc::swapAndTrim(dest.text, nullptr, 2);
    EXPECT_EQ(taken(), Reports{"swapAndTrim: src: src is Null!"});

    EXPECT_EQ(Misc::fnComparator(nullptr, "a"), 0);
    EXPECT_EQ(taken(), Reports{"fnComparator: p1: p1 is Null!"});
    EXPECT_EQ(Misc::fnComparator("a", nullptr), 0);
    EXPECT_EQ(taken(), Reports{"fnComparator: p2: p2 is Null!"});

    Misc::binaryToHexaString(nullptr, &byte, 1);
    EXPECT_EQ(taken(), Reports{"binaryToHexaString: dest: dest is Null!"});
    Misc::binaryToHexaString(dest.text, nullptr, 1);
    EXPECT_EQ(taken(), Reports{"binaryToHexaString: src: src is Null!"});

    EXPECT_EQ(Misc::hexaStringToBinary(nullptr, "00"), 0);
    EXPECT_EQ(taken(), Reports{"hexaStringToBinary: dest: dest is Null!"});
    EXPECT_EQ(Misc::hexaStringToBinary(&byte, nullptr), 0);
    EXPECT_EQ(taken(), Reports{"hexaStringToBinary: src: src is Null!"});

    Misc::getRandNumber(nullptr, 1, 1);
    EXPECT_EQ(taken(), Reports{"getRandNumber: dest: dest is Null!"});
    EXPECT_EQ(std::count(dest.text, std::end(dest.text), '#'), 64);
}

TEST_F(MiscReports, InvalidSizesAreReportedAndStayInBounds)
{
    const std::string text(4096, 'A');
    EXPECT_EQ(swapAndTrim(text, 127), std::string(40, 'A'));
    EXPECT_EQ(swapAndTrim(text, 1), "");
    EXPECT_EQ(taken(), Reports());
    for (const int32 size : {128, 129, 4096}) {
        EXPECT_EQ(swapAndTrim(text, size), std::string(40, 'A')) << size;
        EXPECT_EQ(taken(), Reports{"swapAndTrim: size > 0 && size < 128: invalid size"}) << size;
    }
    for (const int32 size : {0, -1, -2147483647}) {
        EXPECT_EQ(swapAndTrim(text, size), "") << size;
        EXPECT_EQ(taken(), Reports{"swapAndTrim: size > 0 && size < 128: invalid size"}) << size;

        Dest dest(0);
        const uint8 byte = 0xAB;
        Misc::binaryToHexaString(dest.text, &byte, size);
        EXPECT_EQ(std::string(dest.text, 2), std::string("\0#", 2)) << size;
        EXPECT_EQ(taken(), Reports{"binaryToHexaString: srcLength > 0: invalid srcLength"}) << size;
    }
}
