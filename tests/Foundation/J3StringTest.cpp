// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The wide text: encodings, search, numbers, storage, tokens.
#include "Foundation/J3String.h"

#include "Foundation/J3Exception.h"
#include "Foundation/J3MemoryStream.h"
#include "Foundation/J3StringTokenizer.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <vector>

#include <unistd.h>

using namespace Kivo;
using namespace std::string_literals;

namespace {

// Long enough for several blocks of the ASCII lane on either side of what is put between.
const std::string asciiBytes(75, 'x');
const std::wstring asciiText(75, L'x');

J3String fromBytes(const std::string& bytes) { return J3String::from_string(bytes, STD_LOCALE_UTF8); }

std::vector<std::wstring> tokens(const J3String& text, const J3String& delimiters, bool keepEmpty)
{
    J3StringTokenizer tokenizer(text, delimiters, keepEmpty);
    std::vector<std::wstring> all;
    for (J3String token; tokenizer.getToken(&token);)
        all.push_back(token.wstring());
    return all;
}

using Tokens = std::vector<std::wstring>;

} // namespace

TEST(J3String, ConvertsEveryLengthOfUtf8Sequence)
{
    const std::string bytes =
        "a\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF\xF0\x90\x80\x80\xF4\x8F\xBF\xBF";
    const std::wstring text = {0x61, 0x7F, 0x80, 0x7FF, 0x800, 0xD7FF, 0xE000, 0xFFFF, 0x10000, 0x10FFFF};
    EXPECT_EQ(J3String(bytes.c_str()).wstring(), text);
    EXPECT_EQ(J3String(text).to_string(), bytes);
    EXPECT_EQ(fromBytes(asciiBytes + bytes + asciiBytes).wstring(), asciiText + text + asciiText);
    EXPECT_EQ(J3String(asciiText + text + asciiText).to_string(STD_LOCALE_UTF8), asciiBytes + bytes + asciiBytes);
}

TEST(J3String, ReplacesEachLongestIllFormedPieceOnce)
{
    const struct {
        std::string bytes;
        std::wstring text;
    } cases[] = {
        {"a\x80z", L"a\xFFFDz"},                           // a stray continuation
        {"\xC0\xAF", L"\xFFFD\xFFFD"},                     // overlong in two
        {"\xE0\x80\xAF", L"\xFFFD\xFFFD\xFFFD"},           // overlong in three
        {"\xF0\x80\x80\xAF", L"\xFFFD\xFFFD\xFFFD\xFFFD"}, // overlong in four
        {"\xED\xA0\x80", L"\xFFFD\xFFFD\xFFFD"},           // a surrogate
        {"\xF4\x90\x80\x80", L"\xFFFD\xFFFD\xFFFD\xFFFD"}, // beyond U+10FFFF
        {"\xF5\xFE\xFF", L"\xFFFD\xFFFD\xFFFD"},           // bytes that never occur
        {"\xE2\x82z", L"\xFFFDz"},                         // cut by another character
        {"\xF0\x9F\x98\xE2\x82\xAC", L"\xFFFD\x20AC"},     // cut by a lead byte
        {"ab\xC3", L"ab\xFFFD"},                           // cut by the end, in two, three and four
        {"ab\xE2\x82", L"ab\xFFFD"},                       //
        {"ab\xF0\x9F\x98", L"ab\xFFFD"},                   //
    };

    for (const auto& [bytes, text] : cases) {
        EXPECT_EQ(fromBytes(bytes).wstring(), text) << testing::PrintToString(bytes);
        EXPECT_EQ(fromBytes(asciiBytes + bytes).wstring(), asciiText + text) << testing::PrintToString(bytes);
    }
}

TEST(J3String, EncodesWhatIsNoCharacterAsReplacement)
{
    const std::wstring text = {0xD800, 0xDFFF, 0x110000, static_cast<wchar_t>(-1), L'z'};
    EXPECT_EQ(J3String(text).to_string(), "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBDz");
}

TEST(J3String, KeepsNulCharactersInside)
{
    const std::string bytes = "a\0b\0"s;
    EXPECT_EQ(fromBytes(bytes).length(), 4U);
    EXPECT_EQ(fromBytes(bytes).to_string(), bytes);
    EXPECT_EQ(J3String::from_string(bytes, "ISO-8859-1").to_string("ISO-8859-1"), bytes);
    EXPECT_EQ(J3String::from_string(bytes, std::locale("C.utf8")).to_string(std::locale("C.utf8")), bytes);
}

TEST(J3String, TakesNullForEmpty)
{
    EXPECT_TRUE(J3String(static_cast<const char*>(nullptr)).isEmpty());
    EXPECT_TRUE(J3String(static_cast<const wchar_t*>(nullptr)).isEmpty());
    EXPECT_TRUE(J3String(nullptr, STD_LOCALE_UTF8).isEmpty());
    EXPECT_FALSE(J3String() == static_cast<const wchar_t*>(nullptr));
}

TEST(J3String, ConvertsByTheFacetOfAnyLocale)
{
    const J3String text(L"gr\xFC\xDF \x20AC \x1F600");
    EXPECT_EQ(text.to_string(std::locale("C.utf8")), text.to_string());
    EXPECT_EQ(J3String::from_string(text.to_string(), std::locale("C.utf8")), text);
    EXPECT_EQ(text.to_string(std::locale::classic()), "gr?? ? ?");
    EXPECT_EQ(J3String::from_string("a\xC3\xA9z", std::locale("C.utf8")), L"a\xE9z");
    EXPECT_EQ(J3String::from_string("a\xFFz", std::locale("C.utf8")), L"a\xFFFDz");
    EXPECT_EQ(J3String::from_string("az\xC3", std::locale("C.utf8")), L"az\xFFFD");

    const std::wstring large = asciiText + text.wstring() + asciiText + asciiText + asciiText + text.wstring();
    EXPECT_EQ(J3String::from_string(J3String(large).to_string(), std::locale("C.utf8")).wstring(), large);
    EXPECT_EQ(J3String(large).to_string(std::locale("C.utf8")), J3String(large).to_string());
}

TEST(J3String, ConvertsByEncodingName)
{
    const J3String korean(L"\xD55C\xAE00");
    EXPECT_EQ(korean.to_string("EUC-KR"), "\xC7\xD1\xB1\xDB");
    EXPECT_EQ(J3String::from_string("\xC7\xD1\xB1\xDB", "EUC-KR"), korean);
    EXPECT_EQ(korean.to_string("ISO-2022-KR"), "\x1B$)C\x0EGQ1[\x0F"); // with the way back to the initial state
    EXPECT_EQ(J3String::from_string(korean.to_string("UTF-16LE"), "UTF-16LE"), korean);
    EXPECT_EQ(
        J3String::from_string(J3String(asciiText + asciiText + asciiText + asciiText).to_string("UTF-16"), "UTF-16")
            .wstring(),
        asciiText + asciiText + asciiText + asciiText);
}

TEST(J3String, MarksWhatANamedEncodingCannotHold)
{
    EXPECT_EQ(J3String(L"1\x20AC 2\x1F600\x1F600").to_string("ISO-8859-1"), "1? 2??");
    EXPECT_EQ(J3String(L"a\x1F600z").to_string("ISO-2022-KR"), "\x1B$)Ca?z");
    EXPECT_EQ(J3String(std::wstring{0xD800, L'a'}).to_string("UTF-16BE"), "\0?\0a"s);
    EXPECT_EQ(J3String::from_string("a\xFF\xC7\xD1", "EUC-KR"), L"a\xFFFD\xD55C");
    EXPECT_EQ(J3String::from_string("a\xC7", "EUC-KR"), L"a\xFFFD");
    EXPECT_EQ(J3String::from_string("\xDC\x00\x00z"s, "UTF-16BE"), L"\xFFFDz");
}

TEST(J3String, GivesNothingForAnUnknownEncoding)
{
    for (const char* name : {"no-such-encoding", "", "//TRANSLIT", "?"}) {
        EXPECT_EQ(J3String(L"abc").to_string(std::string(name)), "") << name;
        EXPECT_TRUE(J3String::from_string("abc", std::string(name)).isEmpty()) << name;
    }
}

TEST(J3String, LocaleServesWideFileStreams)
{
    const auto path = std::filesystem::temp_directory_path() / ("J3StringTest." + std::to_string(getpid()));
    std::wstring text;
    for (int line = 0; line < 3000; ++line)
        text += L"\xE4\x20AC\x1F600 line\n"; // sequences lie across the ends of the stream's buffers
    std::wofstream out(path, std::ios::binary);
    out.imbue(STD_LOCALE_UTF8);
    out << text;
    out.close();
    EXPECT_TRUE(out.good());
    EXPECT_EQ(std::filesystem::file_size(path), J3String(text).to_string().size());

    std::wifstream in(path, std::ios::binary);
    in.imbue(STD_LOCALE_UTF8);
    std::wostringstream read;
    read << in.rdbuf();
    EXPECT_TRUE(read.str() == text);
    std::filesystem::remove(path);
}

TEST(J3String, FindsFromAPosition)
{
    const J3String text(L"abcabc");
    EXPECT_EQ(text.find(L"bc"), 1U);
    EXPECT_EQ(text.find(L"bc", 1), 1U);
    EXPECT_EQ(text.find(L"bc", 2), 4U);
    EXPECT_EQ(text.find(L"bc", 5), J3String::NPOS);
    EXPECT_EQ(text.find(L"abcabcd"), J3String::NPOS);
    EXPECT_EQ(text.find(L"a", J3String::NPOS), J3String::NPOS);
    EXPECT_EQ(text.find(L"", 6), 6U);
    EXPECT_EQ(text.find(L"", 7), J3String::NPOS);
}

TEST(J3String, CutsSubstrings)
{
    const J3String text(L"abcdef");
    EXPECT_EQ(text.substring(2, 3), L"cde");
    EXPECT_EQ(text.substring(4), L"ef");
    EXPECT_EQ(text.substring(4, 100), L"ef");
    EXPECT_EQ(text.substring(0, 0), L"");
    EXPECT_EQ(text.substring(6), L"");
    EXPECT_EQ(text.substring(J3String::NPOS, J3String::NPOS), L"");
}

TEST(J3String, ReplacesOneOrAll)
{
    const auto replaced = [](const wchar_t* text, const wchar_t* what, const wchar_t* with, bool all) {
        return J3String(text).replace(what, with, all).wstring();
    };
    EXPECT_EQ(replaced(L"a.b.c", L".", L"::", false), L"a::b.c");
    EXPECT_EQ(replaced(L"a.b.c", L".", L"::", true), L"a::b::c");
    EXPECT_EQ(replaced(L"aaaa", L"aa", L"a", true), L"aa"); // what was put in is not looked at again
    EXPECT_EQ(replaced(L"abc", L"abc", L"", true), L"");
    EXPECT_EQ(replaced(L"abc", L"d", L"x", true), L"abc");
    EXPECT_EQ(replaced(L"abc", L"", L"x", true), L"abc");

    J3String self(L"ab");
    EXPECT_EQ(self.replace(L"b", self, true), L"aab");
    EXPECT_EQ(self.replace(self, L"x", true), L"x");
}

TEST(J3String, Trims)
{
    EXPECT_EQ(J3String(L" \t\r\n\v\fa b \t\r\n").trimLeft().trimRight(), L"a b");
    EXPECT_EQ(J3String(L"  ").trimLeft(), L"");
    EXPECT_EQ(J3String(L"  ").trimRight(), L"");
    EXPECT_EQ(J3String(L"").trimLeft().trimRight(), L"");
}

TEST(J3String, ReadsLeadingNumbers)
{
    const struct {
        const wchar_t* text;
        int32 int32Value;
        uint64 uint64Value;
    } cases[] = {
        {L"", 0, 0},
        {L"abc", 0, 0},
        {L"0x10", 0, 0},
        {L" \t+42abc", 42, 42},
        {L"010", 10, 10},
        {L"-1", -1, 0xFFFFFFFFFFFFFFFF},
        {L"2147483648", 2147483647, 2147483648},
        {L"-99999999999999999999", -2147483648, 0xFFFFFFFFFFFFFFFF},
        {L"18446744073709551615", 2147483647, 0xFFFFFFFFFFFFFFFF},
        {L"18446744073709551616", 2147483647, 0xFFFFFFFFFFFFFFFF},
    };

    for (const auto& [text, int32Value, uint64Value] : cases) {
        EXPECT_EQ(J3String(text).toInt32(), int32Value) << J3String(text).to_string();
        EXPECT_EQ(J3String(text).toUint64(), uint64Value) << J3String(text).to_string();
    }
}

TEST(J3String, OrdersAndHashesByContents)
{
    EXPECT_LT(J3String(L"a"), J3String(L"b"));
    EXPECT_LT(J3String(L"a"), J3String(L"aa"));
    EXPECT_EQ(J3String(L"a") + L"b", L"ab");
    EXPECT_EQ(J3String(L"ab").hash(), (J3String(L"a") + L"b").hash());
}

TEST(J3String, KeepsItsStreamForm)
{
    J3MemoryStream stream;
    J3String(L"\x20ACz").serializeTo(&stream);
    const std::string bytes(reinterpret_cast<const char*>(stream.buffer()), stream.size());
    EXPECT_EQ(bytes, "\0\0\0\4\xE2\x82\xACz"s);
    stream.moveTo(0);
    J3String back;
    back.deserializeFrom(&stream);
    EXPECT_EQ(back, L"\x20ACz");
}

TEST(J3String, RefusesAStreamCutAnywhere)
{
    const std::string whole = "\0\0\0\4abcd"s;
    for (uint32 size = 0; size < whole.size(); ++size) {
        J3MemoryStream stream(whole.data(), size);
        J3String text(L"before");
        EXPECT_THROW(text.deserializeFrom(&stream), J3RangeException) << size;
        EXPECT_EQ(text, L"before") << size;
    }
    const std::string absurd = "\xFF\xFF\xFF\xFF"s;
    J3MemoryStream stream(absurd.data(), static_cast<uint32>(absurd.size()));
    EXPECT_THROW(J3String().deserializeFrom(&stream), J3RangeException);
}

TEST(J3StringTokenizer, DropsEmptyTokensUnlessAsked)
{
    EXPECT_EQ(tokens(L",a;;b,", L",;", false), (Tokens{L"a", L"b"}));
    EXPECT_EQ(tokens(L",a;;b,", L",;", true), (Tokens{L"", L"a", L"", L"b", L""}));
    EXPECT_EQ(tokens(L"", L",", false), Tokens{});
    EXPECT_EQ(tokens(L"", L",", true), Tokens{L""});
    EXPECT_EQ(tokens(L",,,", L",", false), Tokens{});
    EXPECT_EQ(tokens(L"a,b", L"", false), Tokens{L"a,b"});
}

TEST(J3StringTokenizer, LeavesTheOutputAloneAtTheEnd)
{
    J3StringTokenizer tokenizer(L"a", L",", false);
    J3String token;
    EXPECT_TRUE(tokenizer.getToken(&token));
    EXPECT_FALSE(tokenizer.getToken(&token));
    EXPECT_FALSE(tokenizer.getToken(&token));
    EXPECT_EQ(token, L"a");
}
