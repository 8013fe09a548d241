// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The wide text: encodings, search, comparison, numbers.
#include "Foundation/J3String.h"

#include "Foundation/J3Exception.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <fstream>
#include <unordered_set>

#include <sys/resource.h>

using namespace Kivo;
using namespace std::string_literals;

// Long enough for several blocks of the ASCII lane on either side of what is put between.
static const std::string ASCII_BYTES(75, 'x');
static const std::wstring ASCII_TEXT(75, L'x');

TEST(J3String, ConvertsEveryLengthOfUtf8Sequence)
{
    const std::string bytes =
        "\x01\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF\xF0\x90\x80\x80\xF4\x8F\xBF\xBF";
    const std::wstring text = {1, 0x7F, 0x80, 0x7FF, 0x800, 0xD7FF, 0xE000, 0xFFFF, 0x10000, 0x10FFFF};
    EXPECT_EQ(J3String((ASCII_BYTES + bytes + ASCII_BYTES).c_str()).wstring(), ASCII_TEXT + text + ASCII_TEXT);
    EXPECT_EQ(J3String(ASCII_TEXT + text + ASCII_TEXT).to_string(), ASCII_BYTES + bytes + ASCII_BYTES);
    EXPECT_EQ(J3String(text).to_string(std::locale("C.utf8")), bytes);
    EXPECT_EQ(J3String::from_string(bytes, std::locale("C.utf8")).wstring(), text);
}

TEST(J3String, ReplacesEachLongestIllFormedPieceOnce)
{
    const std::pair<std::string, std::wstring> cases[] = {
        {"a\x80z", L"a\xFFFDz"},                           // a stray continuation
        {"\xC0\xAF", L"\xFFFD\xFFFD"},                     // overlong in two
        {"\xED\xA0\x80", L"\xFFFD\xFFFD\xFFFD"},           // a surrogate
        {"\xF4\x90\x80\x80", L"\xFFFD\xFFFD\xFFFD\xFFFD"}, // beyond U+10FFFF
        {"\xF0\x9F\x98\xE2\x82\xAC", L"\xFFFD\x20AC"},     // cut by a lead byte
        {"ab\xF0\x9F\x98", L"ab\xFFFD"},                   // cut by the end
    };
    for (const auto& [bytes, text] : cases)
        EXPECT_EQ(J3String((ASCII_BYTES + bytes).c_str()).wstring(), ASCII_TEXT + text);
    const std::wstring noCharacters = {0xD800, 0xDFFF, 0x110000, static_cast<wchar_t>(-1), L'z'};
    EXPECT_EQ(J3String(noCharacters).to_string(), "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBDz");
}

TEST(J3String, LocaleServesWideFileStreams)
{
    const std::string path = testing::TempDir() + "J3StringTest";
    std::wstring text;
    for (int line = 0; line < 3000; ++line)
        text += L"\xE4\x20AC\x1F600 line\n"; // sequences lie across the ends of the stream's buffers
    std::wfstream file(path, std::ios::in | std::ios::out | std::ios::trunc);
    std::remove(path.c_str());
    file.imbue(STD_LOCALE_UTF8);
    file << text << std::flush;
    file.seekg(0);
    EXPECT_EQ(std::wstring(std::istreambuf_iterator<wchar_t>(file), {}), text);
}

TEST(J3String, ConvertsByEncodingName)
{
    const std::tuple<std::string, std::string, std::wstring> cases[] = {
        {"EUC-KR", "\xC7\xD1\xB1\xDB", L"\xD55C\xAE00"},
        {"ISO-2022-KR", "\x1B$)C\x0EGQ1[\x0F", L"\xD55C\xAE00"}, // with the way back to the initial state
        {"ISO-8859-1", "a\0b"s, std::wstring(L"a\0b", 3)},
        {"CP1258", "abc", L"abc"}, // its decoder holds a character back that an accent may follow
    };
    for (const auto& [encoding, bytes, text] : cases) {
        EXPECT_EQ(J3String(text).to_string(encoding), bytes) << encoding;
        EXPECT_EQ(J3String::from_string(bytes, encoding).wstring(), text) << encoding;
    }
    for (const std::string unknown : {"no-such-encoding", "", "//TRANSLIT", "?"})
        EXPECT_EQ(J3String(L"abc").to_string(unknown) + J3String::from_string("abc", unknown).to_string(), "");
}

TEST(J3String, MarksWhatAnEncodingCannotHold)
{
    EXPECT_EQ(J3String(L"gr\xFC\xDF \x20AC").to_string(std::locale::classic()), "gr?? ?");
    EXPECT_EQ(J3String(L"a\x1F600z").to_string("ISO-2022-KR"), "\x1B$)Ca?z");
    EXPECT_EQ(J3String::from_string("a\xFFz\xC3", std::locale("C.utf8")), L"a\xFFFDz\xFFFD");
    EXPECT_EQ(J3String::from_string("a\xFF\xC7\xD1\xC7", "EUC-KR"), L"a\xFFFD\xD55C\xFFFD");
    EXPECT_EQ(J3String::from_string("\xDC\x00\x00z"s, "UTF-16BE"), L"\xFFFDz");
}

TEST(J3String, FindsCutsAndReplaces)
{
    const J3String text(L"abcabc");
    EXPECT_EQ(text.find(L"bc", 1), 1U);
    EXPECT_EQ(text.find(L"bc", 2), 4U);
    EXPECT_EQ(text.find(L"bc", 5), J3String::NPOS);
    EXPECT_EQ(text.substring(2, 3) + text.substring(4, 100) + text.substring(7, J3String::NPOS), L"cabbc");
    EXPECT_EQ(J3String(text).replace(L"b", L"::", false), L"a::cabc");
    EXPECT_EQ(J3String(text).replace(L"b", L"bb", true), L"abbcabbc"); // what was put in is not looked at again
    EXPECT_EQ(J3String(text).replace(L"", L"x", true), text);
    EXPECT_EQ(J3String(L" \t\r\n\v\fa b \t\r\n").trimLeft().trimRight(), L"a b");
}

TEST(J3String, ReadsLeadingNumbers)
{
    const std::tuple<const wchar_t*, int32, uint64> cases[] = {
        {L"0x10", 0, 0},
        {L" \t+042abc", 42, 42},
        {L"-99999999999999999999", -2147483648, 0xFFFFFFFFFFFFFFFF},
        {L"18446744073709551616", 2147483647, 0xFFFFFFFFFFFFFFFF},
    };
    for (const auto& [text, narrow, wide] : cases) {
        EXPECT_EQ(J3String(text).toInt32(), narrow) << text;
        EXPECT_EQ(J3String(text).toUint64(), wide) << text;
    }
}

TEST(J3String, TellsAnEncodingThatCannotBeLoadedFromAnUnknownOne)
{
    // The sanitizer looks at an exception's type through a pipe the first time, for which it needs descriptors.
    EXPECT_THROW(throw J3Exception(L"first"), J3Exception);
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
    const rlimit none{0, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    int32 error = 0;
    try {
        static_cast<void>(J3String(L"\xD55C").to_string("EUC-KR"));
    } catch (const J3Exception& exception) {
        error = exception.errorCode();
    }
    setrlimit(RLIMIT_NOFILE, &before);
    EXPECT_EQ(error, EMFILE);
    EXPECT_EQ(J3String(L"\xD55C").to_string("EUC-KR"), "\xC7\xD1");
}

TEST(J3String, ServesRangesUnorderedContainersAndNullTexts)
{
    const J3String text = J3String::from_string(std::string_view("\xE2\x82\xAC!?", 4));
    EXPECT_EQ(std::wstring(text.begin(), text.end()), L"\x20AC!");
    EXPECT_TRUE((std::unordered_set<J3String>{text}).contains(L"\x20AC!"));
    const wchar_t* const null = nullptr;
    EXPECT_EQ(J3String(), null);
    EXPECT_NE(text, null);
}
