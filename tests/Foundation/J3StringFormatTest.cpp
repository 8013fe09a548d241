// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The printf engine, beside the C library's.
#include "Foundation/J3String.h"

#include <climits>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>

using namespace Kivo;

namespace {

// Expect what the C library prints.
template <class... Values>
void expectAsPrintf(const std::string& format, Values... values)
{
    char expected[1024];
    ASSERT_LT(std::snprintf(expected, sizeof expected, format.c_str(), values...), int{sizeof expected});
    EXPECT_EQ(J3String().format(J3String(format.c_str()).c_str(), values...).to_string(), expected) << format;
}

} // namespace

TEST(J3StringFormat, PrintsIntegersAsPrintf)
{
    for (const std::string flag : {"", "-", "+", " ", "#", "0", "+ ", "-0", "+0", "#0", "-+ #0", "'"})
        for (const char* size : {"", "1", "8", "30", ".0", ".5", ".30", "8.3", "8.12", "30.12"})
            for (const char conversion : {'d', 'i', 'u', 'o', 'x', 'X'})
                for (const long long value : {0LL, 1LL, -1LL, 255LL, 1234567890123LL, LLONG_MAX, LLONG_MIN}) {
                    for (const char* length : {"", "h", "hh"})
                        expectAsPrintf("[%" + flag + size + length + conversion + "]", static_cast<int>(value));
                    for (const char* length : {"l", "ll", "q", "j", "z", "t"})
                        expectAsPrintf("[%" + flag + size + length + conversion + "]", value);
                }
}

TEST(J3StringFormat, PrintsFloatsAsPrintf)
{
    for (const std::string flag : {"", "-", "+", " ", "#", "0", "+0", "-+ #0"})
        for (const char* size : {"", "9", "2.1", ".0", ".1", "30.12", ".200"})
            for (const char conversion : {'a', 'A', 'e', 'E', 'f', 'F', 'g', 'G'})
                for (const double value : {0.0, -0.0, 0.25, -2.5, 1e100, 1.0e-5, HUGE_VAL, -HUGE_VAL, std::nan("")}) {
                    expectAsPrintf("[%" + flag + size + conversion + "]", value);
                    expectAsPrintf("[%" + flag + size + "L" + conversion + "]", static_cast<long double>(value));
                }
}

TEST(J3StringFormat, PrintsTextsCharactersAndPointersAsPrintf)
{
    for (const std::string field : {"", "10", "-10"}) {
        for (const char* precision : {"", ".2", ".0", "."}) {
            expectAsPrintf("[%" + field + precision + "s]", "text");
            expectAsPrintf("[%" + field + precision + "S|%" + field + precision + "ls]", L"text", L"text");
        }
        expectAsPrintf("[%" + field + "c|%" + field + "lc|100%%]", 'x', wint_t{L'x'});
        expectAsPrintf("[%" + field + "p|%" + field + "p]", &field, static_cast<void*>(nullptr));
    }
}

TEST(J3StringFormat, KeepsManyArgumentsOfMixedKindsInStep)
{
    expectAsPrintf("[%*d|%-*d|%*d|%.*d|%.*d]", 6, 1, 6, 2, -6, 3, 4, 1, -4, 3);
    expectAsPrintf("[%*.*f|%*.*s|%.*f|%.*s]", 9, 2, 3.14, -6, 2, "text", -3, 3.14, -1, "text");
    expectAsPrintf("%d %f %s %lld %Lf %hhd %c %g %zu %d %f %s %f %f %f %f %f %f %d", 1, 2.0, "three", 4LL, 5.0L, 6, '7',
                   8.0, size_t{9}, 10, 11.0, "12", 13.0, 14.0, 15.0, 16.0, 17.0, 18.0, 19);
}

TEST(J3StringFormat, HoldsAbsurdFieldsToABound)
{
    for (const wchar_t* format : {L"%99999999999999999999d", L"%.2147483647d"})
        EXPECT_EQ(J3String().format(format, 1).length(), 65535U);
    EXPECT_EQ(J3String().format(L"%*d%.*f", INT_MIN, 1, INT_MAX, 1.0).length(), 65535U + 65537U);
}

TEST(J3StringFormat, CountsBytesOfNarrowTextAndLeavesCutCharactersOut)
{
    const char* const euros = "\xE2\x82\xAC\xE2\x82\xAC";
    EXPECT_EQ(J3String().format(L"[%.5s|%.3s|%.2s]", euros, euros, euros), L"[\x20AC|\x20AC|]");
    const char unterminated[] = {'a', 'b', 'c'};
    EXPECT_EQ(J3String().format(L"%.3s|%.9s|%4s", unterminated, "a\xE2\x82", euros), L"abc|a\xFFFD|  \x20AC\x20AC");
}

TEST(J3StringFormat, PrintsObjectsCodePointsAndNull)
{
    const J3String text(L"abc");
    const void* const null = nullptr;
    EXPECT_EQ(J3String().format(L"[%@|%6@|%-6@|%.2@]", &text, &text, &text, &text), L"[abc|   abc|abc   |ab]");
    EXPECT_EQ(J3String().format(L"%c%C|%c%c", 0x20AC, 0x1F600, 0xD800, 0x110000), L"\x20AC\x1F600|\xFFFD\xFFFD");
    EXPECT_EQ(J3String().format(L"a%cb", 0), std::wstring(L"a\0b", 3));
    EXPECT_EQ(J3String().format(L"%s %S %@ %8s", null, null, null, null), L"(null) (null) (null)   (null)");
    EXPECT_EQ(J3String(L"before").format(nullptr), L"");
}

TEST(J3StringFormat, CopiesWhatItDoesNotKnow)
{
    int stored = 77;
    EXPECT_EQ(J3String().format(L"50% &%y%-5k%n %d%-08.3ll", &stored, 1), L"50% &%y%-5k%n 1%-08.3ll");
    EXPECT_EQ(stored, 77);
}

TEST(J3StringFormat, LetsArgumentsAliasTheStringThatOutgrowsItsRoom)
{
    J3String text(L"abc");
    EXPECT_EQ(text.format(L"<%@|%S>", &text, text.c_str() + 1), L"<abc|bc>");
    EXPECT_EQ(text.appendf(L"%@", &text), L"<abc|bc><abc|bc>");
    const std::wstring large(5000, L'y');
    EXPECT_EQ(J3String().format(L"%S%d%S", large.c_str(), 1, large.c_str()), large + L"1" + large);
}
