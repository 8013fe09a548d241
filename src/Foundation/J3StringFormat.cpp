// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The printf engine of J3String.
#include "Foundation/J3Assert.h"
#include "Foundation/J3String.h"
#include "Foundation/J3StringFormat_p.h"
#include "Foundation/J3TextCodec_p.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <iterator>
#include <string_view>
#include <type_traits>

#include <locale.h>

namespace Kivo {
namespace {

using namespace J3Format;

// The calling thread's number format is the C locale's while this lives.
class CLocaleScope {
public:
    CLocaleScope() : _previous(uselocale(cLocale())) {}

    CLocaleScope(const CLocaleScope&) = delete;
    CLocaleScope& operator=(const CLocaleScope&) = delete;

    ~CLocaleScope() { uselocale(_previous); }

private:
    // Not given back: the C library has this one locale built in, and late destructors may still print.
    static locale_t cLocale()
    {
        static const locale_t locale = newlocale(LC_ALL_MASK, "C", nullptr);
        return locale;
    }

    locale_t _previous;
};

// Write the digits of a number so that they stop before end. Gives where they begin.
template <unsigned Base>
wchar_t* writeDigits(uint64 value, wchar_t* end, wchar_t ten = L'a')
{
    do {
        const auto digit = static_cast<wchar_t>(value % Base);
        *--end = digit < 10 ? L'0' + digit : ten + digit - 10;
        value /= Base;
    } while (value != 0);
    return end;
}

// "00" to "99", for two digits at a time.
constexpr auto DIGIT_PAIRS = [] {
    std::array<std::array<wchar_t, 2>, 100> pairs{};
    for (std::size_t i = 0; i < pairs.size(); ++i)
        pairs[i] = {static_cast<wchar_t>(L'0' + i / 10), static_cast<wchar_t>(L'0' + i % 10)};
    return pairs;
}();

template <>
inline wchar_t* writeDigits<10>(uint64 value, wchar_t* end, [[maybe_unused]] wchar_t ten)
{
    for (; value >= 100; value /= 100) {
        end -= 2;
        std::copy_n(DIGIT_PAIRS[value % 100].data(), 2, end);
    }
    if (value < 10) {
        *--end = static_cast<wchar_t>(L'0' + value);
        return end;
    }
    end -= 2;
    std::copy_n(DIGIT_PAIRS[value].data(), 2, end);
    return end;
}

// One run of the engine. The text grows on the stack first, apart from its target, so that arguments may alias that.
class Formatter {
public:
    Formatter(std::wstring_view format, std::va_list arguments) : _arguments(arguments) { print(format); }

    [[nodiscard]] const wchar_t* data() const { return _text.data(); }

    [[nodiscard]] std::size_t size() const { return _text.size(); }

private:
    void print(std::wstring_view format);
    bool print(const Conversion& conversion);
    void printDecimal(bool negative, uint32 magnitude);
    void printInteger(const Conversion& conversion, uint64 value);
    template <class Float>
    void printFloat(const Conversion& conversion, Float value);
    void printCharacter();
    void printPointer(const Conversion& conversion);
    void printNarrow(const Conversion& conversion);
    void printWide(const Conversion& conversion);
    void printObject(const Conversion& conversion);
    void pad(const Conversion& conversion, std::size_t begin);

    TextBuffer _text;
    Arguments _arguments;
};

void Formatter::print(std::wstring_view format)
{
    const wchar_t* const end = format.data() + format.size();
    for (const wchar_t* at = format.data();;) {
        const wchar_t* const percent = _text.appendUntil(L'%', at, end);
        if (percent == end)
            return;
        if (end - percent > 1 && (percent[1] == L'd' || percent[1] == L'u')) { // bare, as most are
            const auto value = _arguments.next<uint32>();
            const bool negative = percent[1] == L'd' && static_cast<int32>(value) < 0;
            printDecimal(negative, negative ? 0 - value : value);
            at = percent + 2;
            continue;
        }
        Conversion conversion;
        at = ConversionReader(percent + 1, end, &_arguments).read(&conversion);
        const std::size_t begin = _text.size();
        if (print(conversion))
            pad(conversion, begin);
        else
            _text.append({percent, at});
    }
}

bool Formatter::print(const Conversion& conversion)
{
    const bool isLong = conversion.length == Length::LONG || conversion.length == Length::LONG_LONG;
    switch (conversion.specifier) {
    case L'd':
    case L'i':
        printInteger(conversion, _arguments.nextInteger(conversion.length, true));
        return true;
    case L'u':
    case L'o':
    case L'x':
    case L'X':
        printInteger(conversion, _arguments.nextInteger(conversion.length, false));
        return true;
    case L'a':
    case L'A':
    case L'e':
    case L'E':
    case L'f':
    case L'F':
    case L'g':
    case L'G':
        if (conversion.length == Length::LONG_LONG)
            printFloat(conversion, _arguments.next<long double>());
        else
            printFloat(conversion, _arguments.next<double>());
        return true;
    case L'c':
    case L'C':
        printCharacter();
        return true;
    case L's':
        isLong ? printWide(conversion) : printNarrow(conversion);
        return true;
    case L'S':
        printWide(conversion);
        return true;
    case L'@':
        printObject(conversion);
        return true;
    case L'p':
        printPointer(conversion);
        return true;
    case L'%':
        _text.append(1, L'%');
        return true;
    case L'n': // takes its argument, so that those behind it stay in step, and stores nothing
        static_cast<void>(_arguments.next<void*>());
        return false;
    default:
        return false;
    }
}

void Formatter::printDecimal(bool negative, uint32 magnitude)
{
    wchar_t room[12];
    wchar_t* const end = std::end(room);
    wchar_t* begin = writeDigits<10>(magnitude, end);
    if (negative)
        *--begin = L'-';
    _text.append({begin, end});
}

void Formatter::printInteger(const Conversion& conversion, uint64 value)
{
    const bool isSigned = conversion.specifier == L'd' || conversion.specifier == L'i';
    const bool isOctal = conversion.specifier == L'o';
    const bool isUpper = conversion.specifier == L'X';
    const bool isDecimal = isSigned || conversion.specifier == L'u';
    std::wstring_view prefix;
    if (isSigned && static_cast<int64>(value) < 0) {
        prefix = L"-";
        value = -value;
    } else if (isSigned && conversion.plus)
        prefix = L"+";
    else if (isSigned && conversion.space)
        prefix = L" ";
    else if (conversion.alternate && !isDecimal && !isOctal && value != 0)
        prefix = isUpper ? std::wstring_view(L"0X") : L"0x";

    wchar_t room[24];
    wchar_t* const end = std::end(room);
    wchar_t* begin = isDecimal ? writeDigits<10>(value, end)
                     : isOctal ? writeDigits<8>(value, end)
                               : writeDigits<16>(value, end, isUpper ? L'A' : L'a');
    if (value == 0 && conversion.precision == 0)
        begin = end;

    const int count = static_cast<int>(end - begin);
    int zeros = std::max(conversion.precision - count, 0);
    if (isOctal && conversion.alternate && zeros == 0 && (count == 0 || *begin != L'0'))
        zeros = 1;
    if (conversion.zero && !conversion.left && conversion.precision < 0)
        zeros = std::max(zeros, conversion.width - count - static_cast<int>(prefix.size()));
    if (!prefix.empty())
        _text.append(prefix);
    if (zeros > 0)
        _text.append(static_cast<std::size_t>(zeros), L'0');
    _text.append({begin, end});
}

template <class Float>
void Formatter::printFloat(const Conversion& conversion, Float value)
{
    std::string format = "%";
    const auto flag = [&](bool given, const char* text) { format += given ? text : ""; };
    flag(conversion.left, "-");
    flag(conversion.plus, "+");
    flag(conversion.space, " ");
    flag(conversion.alternate, "#");
    flag(conversion.zero, "0");
    format += std::is_same_v<Float, long double> ? "*.*L" : "*.*";
    format += static_cast<char>(conversion.specifier);

    const CLocaleScope scope;
    const auto print = [&](char* room, std::size_t size) {
        return static_cast<std::size_t>(
            std::max(std::snprintf(room, size, format.c_str(), conversion.width, conversion.precision, value), 0));
    };
    std::array<char, 128> room;
    const std::size_t length = print(room.data(), room.size());
    if (length < room.size())
        return _text.append(std::string_view(room.data(), length));
    std::string large(length, '\0');
    print(large.data(), length + 1);
    _text.append(std::string_view(large));
}

void Formatter::printCharacter()
{
    const auto character = static_cast<wchar_t>(_arguments.next<int>());
    _text.append(1, J3TextCodec::isScalar(character) ? character : J3TextCodec::REPLACEMENT);
}

void Formatter::printPointer(const Conversion& conversion)
{
    const auto address = reinterpret_cast<std::uintptr_t>(_arguments.next<void*>());
    if (address == 0)
        return _text.append(L"(nil)");
    Conversion hexadecimal = conversion;
    hexadecimal.alternate = true;
    printInteger(hexadecimal, address);
}

void Formatter::printNarrow(const Conversion& conversion)
{
    const char* const argument = _arguments.next<const char*>();
    if (!argument)
        return _text.append(L"(null)");
    std::string_view text;
    if (conversion.precision < 0) {
        text = argument;
    } else {
        const auto most = static_cast<std::size_t>(conversion.precision);
        text = {argument, strnlen(argument, most)};
        if (text.size() == most)
            text = J3TextCodec::withoutCutSequence(text);
    }
    const std::size_t begin = _text.size();
    _text.truncate(begin + J3TextCodec::decodeUtf8(text, _text.extend(text.size())));
}

void Formatter::printWide(const Conversion& conversion)
{
    const wchar_t* const text = _arguments.next<const wchar_t*>();
    if (!text)
        return _text.append(L"(null)");
    _text.append({text, conversion.precision < 0 ? std::wcslen(text)
                                                 : wcsnlen(text, static_cast<std::size_t>(conversion.precision))});
}

void Formatter::printObject(const Conversion& conversion)
{
    const J3Object* const object = _arguments.next<const J3Object*>();
    if (!object)
        return _text.append(L"(null)");
    const J3String text = object->toString();
    const std::size_t most =
        conversion.precision < 0 ? text.wstring().size() : static_cast<std::size_t>(conversion.precision);
    _text.append(std::wstring_view(text.wstring()).substr(0, most));
}

void Formatter::pad(const Conversion& conversion, std::size_t begin)
{
    const std::size_t length = _text.size() - begin;
    const auto width = static_cast<std::size_t>(conversion.width);
    if (length >= width)
        return;
    _text.append(width - length, L' ');
    if (!conversion.left)
        std::rotate(_text.data() + begin, _text.data() + begin + length, _text.data() + _text.size());
}

std::wstring_view viewOf(const wchar_t* text) { return text ? std::wstring_view(text) : std::wstring_view(); }

} // namespace

void _j3_wstring_vformat(std::wstring* out, const std::wstring& format, std::va_list arguments)
{
    if (!J3_REQUIRE_ARGUMENT(out, "Foundation/J3StringFormat"))
        return;
    const Formatter formatted(format, arguments);
    out->append(formatted.data(), formatted.size());
}

J3String& J3String::format(const wchar_t* format, ...)
{
    std::va_list arguments;
    va_start(arguments, format);
    vformat(format, arguments);
    va_end(arguments);
    return *this;
}

J3String& J3String::appendf(const wchar_t* format, ...)
{
    std::va_list arguments;
    va_start(arguments, format);
    const Formatter formatted(viewOf(format), arguments);
    va_end(arguments);
    _text.append(formatted.data(), formatted.size());
    return *this;
}

J3String& J3String::vformat(const wchar_t* format, std::va_list arguments)
{
    const Formatter formatted(viewOf(format), arguments);
    _text.assign(formatted.data(), formatted.size());
    return *this;
}

} // namespace Kivo
