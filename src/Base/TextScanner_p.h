// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Takes text from outside apart: lines, words, fields, numbers. The one way to do it in every layer.
#pragma once

#ifndef K7SAL_PROJECT
#error "private to this project"
#endif

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>

namespace Kivo {

/// The number that @p text begins with, 0 for none, the type's largest (or smallest) when it does not fit.
template <class T>
T leadingNumber(std::string_view text, int base = 10)
{
    T value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
    if (error != std::errc::result_out_of_range)
        return value;
    return text.starts_with('-') ? std::numeric_limits<T>::min() : std::numeric_limits<T>::max();
}

/// The number that @p text is as a whole; T may be a floating type, whose text then has no base.
template <class T>
std::optional<T> wholeNumber(std::string_view text, int base = 10)
{
    T value{};
    const char* const end = text.data() + text.size();
    std::from_chars_result result{};
    if constexpr (std::numeric_limits<T>::is_integer)
        result = std::from_chars(text.data(), end, value, base);
    else
        result = std::from_chars(text.data(), end, value);
    if (result.ec != std::errc() || result.ptr != end)
        return std::nullopt;
    return value;
}

/// White space as the C locale has it.
constexpr bool isSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

constexpr bool isDecimalDigit(char c) { return c >= '0' && c <= '9'; }

constexpr bool isHexaDigit(char c) { return isDecimalDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'); }

/// @p text without the white space at its ends.
inline std::string_view trimmed(std::string_view text)
{
    while (!text.empty() && isSpace(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isSpace(text.back()))
        text.remove_suffix(1);
    return text;
}

/// Walks over one text. The conversions named after scanf's do what scanf does, without its undefined overflows; none
/// depends on the process's locale, and none reads beyond the text.
class TextScanner {
public:
    explicit TextScanner(std::string_view text) : _rest(text) {}

    /// What has not been taken yet.
    [[nodiscard]] std::string_view rest() const { return _rest; }
    [[nodiscard]] bool atEnd() const { return _rest.empty(); }

    /// Take the next line, without its line feed. @return false at the end of the text
    bool line(std::string_view* line)
    {
        if (_rest.empty())
            return false;
        *line = _rest.substr(0, _rest.find('\n'));
        _rest.remove_prefix(std::min(line->size() + 1, _rest.size()));
        return true;
    }

    /// Take what stands before the next @p delimiter, and the delimiter. @return false, taking nothing, without one
    bool until(char delimiter, std::string_view* text)
    {
        const std::size_t at = _rest.find(delimiter);
        if (at == std::string_view::npos)
            return false;
        *text = _rest.substr(0, at);
        _rest.remove_prefix(at + 1);
        return true;
    }

    /// Take the next piece between any of @p delimiters, dropping empty ones. @return false when there is none
    bool field(std::string_view* field, std::string_view delimiters = " \t\n")
    {
        // Character by character: the sets are so small that the library's searches cost more.
        const auto isDelimiter = [delimiters](char c) {
            return std::any_of(delimiters.begin(), delimiters.end(), [c](char delimiter) { return c == delimiter; });
        };
        const auto begin = std::find_if_not(_rest.begin(), _rest.end(), isDelimiter);
        const auto end = std::find_if(begin, _rest.end(), isDelimiter);
        *field = {begin, end};
        _rest = {end, _rest.end()};
        return !field->empty();
    }

    /// Take @p text when it comes next.
    bool literal(std::string_view text)
    {
        if (!_rest.starts_with(text))
            return false;
        _rest.remove_prefix(text.size());
        return true;
    }

    void skipSpace()
    {
        while (!_rest.empty() && isSpace(_rest.front()))
            _rest.remove_prefix(1);
    }

    /// "%16s": the next word, at most @p limit bytes of it.
    bool word(std::string_view* word, std::size_t limit = std::string_view::npos)
    {
        skipSpace();
        const auto end = std::find_if(_rest.begin(), _rest.begin() + clamp(limit), isSpace);
        *word = {_rest.begin(), end};
        _rest.remove_prefix(word->size());
        return !word->empty();
    }

    /// "%*s"
    bool skipWord()
    {
        std::string_view ignored;
        return word(&ignored);
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
        std::uint64_t magnitude = 0;
        const auto [stop, error] = std::from_chars(begin, end, magnitude, base);
        if (error == std::errc::invalid_argument)
            return false;
        if (error == std::errc::result_out_of_range)
            magnitude = ~std::uint64_t{0};
        *value = static_cast<T>(negative ? 0 - magnitude : magnitude);
        _rest.remove_prefix(static_cast<std::size_t>(stop - _rest.data()));
        return true;
    }

    /// "%*x"
    bool skipNumber(int base = 10)
    {
        std::uint64_t ignored = 0;
        return number(&ignored, base);
    }

    /// "%lf" of a finite number.
    bool real(double* value)
    {
        skipSpace();
        double found = 0;
        const auto [stop, error] = std::from_chars(_rest.data(), _rest.data() + _rest.size(), found);
        if (error != std::errc() || !(found - found == 0)) // infinite, or not a number
            return false;
        *value = found;
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

private:
    [[nodiscard]] std::ptrdiff_t clamp(std::size_t limit) const
    {
        return static_cast<std::ptrdiff_t>(std::min(limit, _rest.size()));
    }

    std::string_view _rest;
};

} // namespace Kivo
