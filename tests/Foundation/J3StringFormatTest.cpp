// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The printf engine, beside the C library's.
#include "Foundation/J3String.h"

#include <climits>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <limits>

using namespace Kivo;

namespace {

// Expect of one conversion what the C library prints for it.
template <class... Values>
void expectAsPrintf(const std::string& format, Values... values)
{
    char expected[8192];
    ASSERT_LT(std::snprintf(expected, sizeof expected, format.c_str(), values...), int{sizeof expected});
    EXPECT_EQ(J3String().format(J3String(format.c_str()).c_str(), values...).to_string(), expected) << format;
}

class Unprintable : public J3Object {
public:
    J3String toString() const override
    {
        return J3String().format(L"<%d>", 7); // the engine is entered while it runs
    }
};

template <class... Values>
std::wstring formatted(const wchar_t* format, Values... values)
{
    return J3String().format(format, values...).wstring();
}

} // namespace

TEST(J3StringFormat, PrintsIntegersAsPrintf)
{
    const char* const flags[] = {"", "-", "+", " ", "#", "0", "+ ", "-0", "+0", " 0", "#0", "-#", "-+ #0", "'"};
    const char* const sizes[] = {"", "1", "8", "30", ".", ".0", ".1", ".5", ".30", "8.3", "8.12", "30.12"};
    for (const char* flag : flags)
        for (const char* size : sizes)
            for (const char conversion : {'d', 'i', 'u', 'o', 'x', 'X'}) {
                const std::string head = std::string("[%") + flag + size;
                const auto tail = [&](const char* length) { return head + length + conversion + "]"; };
                for (const int value : {0, 1, -1, 255, 123456, INT_MAX, INT_MIN}) {
                    expectAsPrintf(tail(""), value);
                    expectAsPrintf(tail("h"), value);
                    expectAsPrintf(tail("hh"), value);
                }
                for (const long long value : {0LL, -1LL, 1234567890123LL, LLONG_MAX, LLONG_MIN}) {
                    expectAsPrintf(tail("ll"), value);
                    expectAsPrintf(tail("q"), value);
                    expectAsPrintf(tail("l"), static_cast<long>(value));
                    expectAsPrintf(tail("j"), static_cast<intmax_t>(value));
                    expectAsPrintf(tail("z"), static_cast<size_t>(value));
                    expectAsPrintf(tail("t"), static_cast<ptrdiff_t>(value));
                }
            }
}

TEST(J3StringFormat, PrintsFloatsAsPrintf)
{
    constexpr double infinity = std::numeric_limits<double>::infinity();
    for (const char* flag : {"", "-", "+", " ", "#", "0", "+0", "-+ #0"})
        for (const char* size : {"", "9", "2.1", ".0", ".1", "30.12", ".200"})
            for (const char conversion : {'a', 'A', 'e', 'E', 'f', 'F', 'g', 'G'}) {
                const std::string head = std::string("[%") + flag + size;
                for (const double value : {0.0, -0.0, 0.25, -2.5, 1e100, 1.0e-5, infinity, -infinity, std::nan("")}) {
                    expectAsPrintf(head + conversion + "]", value);
                    expectAsPrintf(head + "L" + conversion + "]", static_cast<long double>(value));
                }
            }
}

TEST(J3StringFormat, PrintsTextsCharactersAndPointersAsPrintf)
{
    for (const char* field : {"", "10", "-10", ".2", "10.2", "-10.2", ".0", "."}) {
        expectAsPrintf(std::string("[%") + field + "s]", "text");
        expectAsPrintf(std::string("[%") + field + "ls]", L"text");
        expectAsPrintf(std::string("[%") + field + "S]", L"text");
    }
    for (const char* field : {"", "5", "-5"}) {
        expectAsPrintf(std::string("[%") + field + "c]", 'x');
        expectAsPrintf(std::string("[%") + field + "lc]", wint_t{L'x'});
    }
    int object = 0;
    for (const char* field : {"", "30", "-30", "030"})
        for (void* pointer : {static_cast<void*>(&object), static_cast<void*>(nullptr)})
            expectAsPrintf(std::string("[%") + field + "p]", pointer);
    expectAsPrintf("100%% of %d%%", 5);
}

TEST(J3StringFormat, TakesWidthsAndPrecisionsFromArguments)
{
    expectAsPrintf("[%*d|%-*d|%*d]", 6, 1, 6, 2, -6, 3);
    expectAsPrintf("[%.*d|%.*d|%.*d]", 4, 1, 0, 0, -4, 3);
    expectAsPrintf("[%*.*f|%*.*s]", 9, 2, 3.14159, -6, 2, "text");
    expectAsPrintf("[%.*f|%.*s]", -3, 3.14159, -1, "text");
}

TEST(J3StringFormat, KeepsManyArgumentsOfMixedKindsInStep)
{
    expectAsPrintf("%d %f %s %lld %Lf %hhd %c %g %zu %d %f %s %f %f %f %f %f %f %d", 1, 2.0, "three", 4LL, 5.0L, 6, '7',
                   8.0, size_t{9}, 10, 11.0, "12", 13.0, 14.0, 15.0, 16.0, 17.0, 18.0, 19);
}

TEST(J3StringFormat, HoldsAbsurdFieldsToABound)
{
    EXPECT_EQ(formatted(L"%2147483647d", 1).size(), 65535U);
    EXPECT_EQ(formatted(L"%99999999999999999999d", 1).size(), 65535U);
    EXPECT_EQ(formatted(L"%*d", INT_MAX, 1).size(), 65535U);
    EXPECT_EQ(formatted(L"%*d", INT_MIN, 1).back(), L' ');
    EXPECT_EQ(formatted(L"%.2147483647d", 1).size(), 65535U);
    EXPECT_EQ(formatted(L"%.*f", INT_MAX, 1.0).size(), 65537U);
    EXPECT_EQ(formatted(L"%.*s", INT_MIN, "text"), L"text");
}

TEST(J3StringFormat, CountsBytesOfNarrowTextAndLeavesCutCharactersOut)
{
    const char* const euros = "\xE2\x82\xAC\xE2\x82\xAC";
    EXPECT_EQ(formatted(L"[%.6s]", euros), L"[\x20AC\x20AC]");
    EXPECT_EQ(formatted(L"[%.5s]", euros), L"[\x20AC]");
    EXPECT_EQ(formatted(L"[%.3s]", euros), L"[\x20AC]");
    EXPECT_EQ(formatted(L"[%.2s]", euros), L"[]");
    EXPECT_EQ(formatted(L"[%4s|%-4s]", euros, euros), L"[  \x20AC\x20AC|\x20AC\x20AC  ]");
    EXPECT_EQ(formatted(L"[%.9s]", "a\xE2\x82"), L"[a\xFFFD]");
    const char unterminated[] = {'a', 'b', 'c'};
    EXPECT_EQ(formatted(L"%.3s", unterminated), L"abc");
}

TEST(J3StringFormat, PrintsCodePoints)
{
    EXPECT_EQ(formatted(L"%c%c%C", 0x20AC, 0x1F600, 'x'), L"\x20AC\x1F600x");
    EXPECT_EQ(formatted(L"%c|%c|%c", -1, 0xD800, 0x110000), L"\xFFFD|\xFFFD|\xFFFD");
    EXPECT_EQ(formatted(L"a%cb", 0), std::wstring(L"a\0b", 3));
}

TEST(J3StringFormat, PrintsObjectsByTheirText)
{
    const J3String text(L"abc");
    const Unprintable object;
    EXPECT_EQ(formatted(L"[%@|%6@|%-6@|%.2@]", &text, &text, &text, &text), L"[abc|   abc|abc   |ab]");
    EXPECT_EQ(formatted(L"%@ %@", static_cast<const J3Object*>(&object), &text), L"<7> abc");
}

TEST(J3StringFormat, PrintsNullPointers)
{
    const void* const null = nullptr;
    EXPECT_EQ(formatted(L"%s %S %ls %@ %8s", null, null, null, null, null), L"(null) (null) (null) (null)   (null)");
    EXPECT_EQ(J3String(L"before").format(nullptr), L"");
    EXPECT_EQ(J3String(L"before").appendf(nullptr), L"before");
}

TEST(J3StringFormat, CopiesWhatItDoesNotKnow)
{
    EXPECT_EQ(formatted(L"50% &%y%-5k %d", 1), L"50% &%y%-5k 1");
    EXPECT_EQ(formatted(L"end %"), L"end %");
    EXPECT_EQ(formatted(L"end %-08.3ll"), L"end %-08.3ll");
    int stored = 77;
    EXPECT_EQ(formatted(L"%n%d", &stored, 5), L"%n5");
    EXPECT_EQ(stored, 77);
}

TEST(J3StringFormat, LetsArgumentsAliasTheString)
{
    J3String text(L"abc");
    EXPECT_EQ(text.format(L"<%@|%S>", &text, text.c_str()), L"<abc|abc>");
    EXPECT_EQ(text.appendf(L"%@", &text), L"<abc|abc><abc|abc>");
    EXPECT_EQ(text.format(L"%.1S", text.c_str() + 1), L"a");
    text = L"%d%%";
    EXPECT_EQ(text.format(text.c_str(), 5), L"5%");
}

TEST(J3StringFormat, OutgrowsItsFirstRoom)
{
    const std::wstring large(5000, L'y');
    EXPECT_EQ(formatted(L"%S%d%S", large.c_str(), 1, large.c_str()), large + L"1" + large);
    EXPECT_EQ(formatted(L"%5100S", large.c_str()), std::wstring(100, L' ') + large);
}

TEST(J3StringFormat, AppendsThroughTheFreeFunction)
{
    const auto print = [](std::wstring* out, std::wstring format, ...) {
        std::va_list arguments;
        va_start(arguments, format);
        _j3_wstring_vformat(out, format, arguments);
        va_end(arguments);
    };
    std::wstring out = L"a";
    print(&out, std::wstring(L"%d\0%d", 5), 1, 2); // the format's length is its own, not its terminator's
    EXPECT_EQ(out, std::wstring(L"a1\0002", 4));
}
