// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What the printf engine is built from: conversions, their arguments, and the text they grow.
#pragma once

#ifndef J3Foundation_BUILD
#error "private to J3Foundation"
#endif

#include "Foundation/J3Types.h"

#include <algorithm>
#include <cstdarg>
#include <iterator>
#include <memory>
#include <string_view>
#include <type_traits>

namespace Kivo::J3Format {

// Wider fields and longer precisions count as this, so that no format exhausts memory.
constexpr int LONGEST_FIELD = 65535;

enum class Length { INT, CHAR, SHORT, LONG, LONG_LONG, INTMAX, SIZE, DIFFERENCE };

struct Conversion {
    bool left = false;
    bool plus = false;
    bool space = false;
    bool alternate = false;
    bool zero = false;
    int width = 0;
    int precision = -1;
    Length length = Length::INT;
    wchar_t specifier = 0;
};

// An argument list that can be handed on by reference.
class Arguments {
public:
    explicit Arguments(std::va_list list) { va_copy(_list, list); }

    Arguments(const Arguments&) = delete;
    Arguments& operator=(const Arguments&) = delete;

    ~Arguments() { va_end(_list); }

    template <class T>
    T next()
    {
        return va_arg(_list, T); // NOLINT(clang-analyzer-valist.Uninitialized): the constructor copies it
    }

    // The next integer widened to 64 bits, by its sign if it has one.
    uint64 nextInteger(Length length, bool isSigned)
    {
        switch (length) {
        case Length::CHAR:
            return widened<signed char>(next<int>(), isSigned);
        case Length::SHORT:
            return widened<short>(next<int>(), isSigned);
        case Length::LONG:
            return widened<long>(next<long>(), isSigned);
        case Length::LONG_LONG:
            return widened<long long>(next<long long>(), isSigned);
        case Length::INTMAX:
            return widened<std::intmax_t>(next<std::intmax_t>(), isSigned);
        case Length::SIZE:
            return widened<std::make_signed_t<std::size_t>>(next<std::size_t>(), isSigned);
        case Length::DIFFERENCE:
            return widened<std::ptrdiff_t>(next<std::ptrdiff_t>(), isSigned);
        case Length::INT:
            break;
        }
        return widened<int>(next<int>(), isSigned);
    }

private:
    template <class Signed, class Passed>
    static uint64 widened(Passed value, bool isSigned)
    {
        return isSigned ? static_cast<uint64>(static_cast<int64>(static_cast<Signed>(value)))
                        : static_cast<uint64>(static_cast<std::make_unsigned_t<Signed>>(value));
    }

    std::va_list _list;
};

// Takes a conversion apart up to and with its specifier, which stays 0 when the format ends before it.
class ConversionReader {
public:
    ConversionReader(const wchar_t* at, const wchar_t* end, Arguments* arguments)
        : _at(at), _end(end), _arguments(arguments)
    {}

    // Gives where the format goes on.
    const wchar_t* read(Conversion* out)
    {
        readFlags(out);
        out->width = readNumber();
        if (out->width < 0) {
            out->left = true;
            out->width = -out->width;
        }
        if (take(L'.'))
            out->precision = std::max(readNumber(), -1);
        out->length = readLength();
        if (_at != _end)
            out->specifier = *_at++;
        return _at;
    }

private:
    [[nodiscard]] wchar_t peek() const { return _at != _end ? *_at : L'\0'; }

    bool take(wchar_t character)
    {
        if (peek() != character)
            return false;
        ++_at;
        return true;
    }

    void readFlags(Conversion* out)
    {
        for (;; ++_at) {
            switch (peek()) {
            case L'-':
                out->left = true;
                continue;
            case L'+':
                out->plus = true;
                continue;
            case L' ':
                out->space = true;
                continue;
            case L'#':
                out->alternate = true;
                continue;
            case L'0':
                out->zero = true;
                continue;
            case L'\'': // grouping: the C locale has none
                continue;
            default:
                return;
            }
        }
    }

    // The digits that follow, a `*`'s argument, or 0.
    int readNumber()
    {
        if (take(L'*'))
            return std::clamp(_arguments->next<int>(), -LONGEST_FIELD, LONGEST_FIELD);
        int number = 0;
        for (; peek() >= L'0' && peek() <= L'9'; ++_at)
            number = std::min(number * 10 + static_cast<int>(peek() - L'0'), LONGEST_FIELD);
        return number;
    }

    Length readLength()
    {
        switch (peek()) {
        case L'h':
            ++_at;
            return take(L'h') ? Length::CHAR : Length::SHORT;
        case L'l':
            ++_at;
            return take(L'l') ? Length::LONG_LONG : Length::LONG;
        case L'q':
        case L'L':
            ++_at;
            return Length::LONG_LONG;
        case L'j':
            ++_at;
            return Length::INTMAX;
        case L'z':
            ++_at;
            return Length::SIZE;
        case L't':
            ++_at;
            return Length::DIFFERENCE;
        default:
            return Length::INT;
        }
    }

    const wchar_t* _at;
    const wchar_t* _end;
    Arguments* _arguments;
};

// Text that grows on the stack first and does not initialise what is about to be written.
class TextBuffer {
public:
    TextBuffer() = default;
    TextBuffer(const TextBuffer&) = delete;
    TextBuffer& operator=(const TextBuffer&) = delete;

    [[nodiscard]] wchar_t* data() { return _data; }

    [[nodiscard]] const wchar_t* data() const { return _data; }

    [[nodiscard]] std::size_t size() const { return _size; }

    // Add room for some characters and give its place.
    wchar_t* extend(std::size_t count)
    {
        if (count > _capacity - _size)
            grow(count);
        wchar_t* const at = _data + _size;
        _size += count;
        return at;
    }

    void append(std::wstring_view text)
    {
        wchar_t* to = extend(text.size());
        for (const wchar_t character : text) // mostly a few, for which a call costs more
            *to++ = character;
    }

    // Add what stands before a character, and give where that is, or the end.
    const wchar_t* appendUntil(wchar_t stop, const wchar_t* at, const wchar_t* end)
    {
        wchar_t* to = extend(static_cast<std::size_t>(end - at));
        while (at != end && *at != stop)
            *to++ = *at++;
        truncate(static_cast<std::size_t>(to - _data));
        return at;
    }

    void append(std::string_view ascii) { std::copy(ascii.begin(), ascii.end(), extend(ascii.size())); }

    void append(std::size_t count, wchar_t character) { std::fill_n(extend(count), count, character); }

    // Drop what lies beyond a size.
    void truncate(std::size_t size) { _size = size; }

private:
    void grow(std::size_t count)
    {
        const std::size_t capacity = std::max(_capacity * 2, _size + count);
        std::unique_ptr<wchar_t[]> large(new wchar_t[capacity]);
        std::copy_n(_data, _size, large.get());
        _large = std::move(large);
        _data = _large.get();
        _capacity = capacity;
    }

    wchar_t _room[256];
    std::unique_ptr<wchar_t[]> _large;
    wchar_t* _data = _room;
    std::size_t _capacity = std::size(_room);
    std::size_t _size = 0;
};

} // namespace Kivo::J3Format
