// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Line walk over small system files, and taking a line apart as scanf does.
#pragma once

#ifndef K7SAL_BUILD
#error "private to libK7SAL"
#endif

#include "OS/System/Platform/Linux/SystemFile_p.h"

#include <algorithm>
#include <charconv>
#include <string_view>

namespace Kivo {

/// Hand the lines of a file, cut at 511 bytes, to @p take until it returns true.
/// @return false when the file cannot be opened or no line was taken
template <class Take>
bool anyLine(const char* path, Take&& take)
{
    SystemLines lines(path, 512);
    std::string_view line;
    while (lines && lines.next(&line))
        if (take(line))
            return true;
    return false;
}

/// The conversions of scanf over one text, without its undefined overflows.
class Scanner {
public:
    explicit Scanner(std::string_view text) : _rest(text) {}

    /// "%16s": the next word, at most @p limit bytes of it.
    bool word(std::string_view* word, std::size_t limit = std::string_view::npos)
    {
        skipSpace();
        const auto end = std::find_if(_rest.begin(), _rest.begin() + clamp(limit), isSpace);
        *word = {_rest.begin(), end};
        _rest.remove_prefix(word->size());
        return !word->empty();
    }

    /// "%16s" of a word that @p text begins with.
    bool wordAtBeginOf(std::string_view text, std::size_t limit)
    {
        skipSpace();
        std::size_t size = 0;
        for (; size < std::min(limit, _rest.size()) && !isSpace(_rest[size]); ++size)
            if (size == text.size() || _rest[size] != text[size])
                return false;
        _rest.remove_prefix(size);
        return size != 0;
    }

    /// "%*s"
    bool skipWord()
    {
        std::string_view ignored;
        return word(&ignored);
    }

    /// "%u", "%d", "%2x": the next number, from at most @p limit characters. One that is too large for 64 bits is the
    /// largest; the lower bits of the number that fit into T are kept.
    template <class T>
    bool number(T* value, int base = 10, std::size_t limit = std::string_view::npos)
    {
        skipSpace();
        const char* begin = _rest.data();
        const char* const end = begin + clamp(limit);
        const bool negative = begin != end && *begin == '-';
        if (begin != end && (negative || *begin == '+'))
            ++begin;
        uint64 magnitude = 0;
        const auto [stop, error] = std::from_chars(begin, end, magnitude, base);
        if (error == std::errc::invalid_argument)
            return false;
        if (error == std::errc::result_out_of_range)
            magnitude = ~uint64{0};
        *value = static_cast<T>(negative ? 0 - magnitude : magnitude);
        _rest.remove_prefix(static_cast<std::size_t>(stop - _rest.data()));
        return true;
    }

    /// "%x" of 0, which is told without converting what is not.
    bool zero()
    {
        skipSpace();
        if (_rest.starts_with('-') || _rest.starts_with('+'))
            _rest.remove_prefix(1);
        const std::size_t digits = std::min(_rest.find_first_not_of('0'), _rest.size());
        _rest.remove_prefix(digits);
        return digits != 0 && (_rest.empty() || !isHexaDigit(_rest.front()));
    }

    /// "%*x"
    bool skipNumber(int base = 10)
    {
        uint64 ignored = 0;
        return number(&ignored, base);
    }

    static bool isSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

private:
    static bool isHexaDigit(char c)
    {
        return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
    }

    [[nodiscard]] std::ptrdiff_t clamp(std::size_t limit) const
    {
        return static_cast<std::ptrdiff_t>(std::min(limit, _rest.size()));
    }

    void skipSpace()
    {
        while (!_rest.empty() && isSpace(_rest.front()))
            _rest.remove_prefix(1);
    }

    std::string_view _rest;
};

} // namespace Kivo
