// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Small pure helpers on narrow text.
#pragma once

#ifndef K7SAL_BUILD
#error "private to libK7SAL"
#endif

#include "Foundation/J3String.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

namespace Kivo {

inline J3String toWide(std::string_view text) { return J3String::from_string(std::string(text), STD_LOCALE_UTF8); }

/// Cuts a text at any of a set of delimiters, dropping empty pieces.
class Fields {
public:
    explicit Fields(std::string_view text, std::string_view delimiters = " \t\n") : _rest(text), _delimiters(delimiters)
    {}

    bool next(std::string_view* field)
    {
        // Character by character: the sets are so small that the library's searches cost more.
        const auto begin = std::find_if_not(_rest.begin(), _rest.end(), [this](char c) { return isDelimiter(c); });
        const auto end = std::find_if(begin, _rest.end(), [this](char c) { return isDelimiter(c); });
        *field = {begin, end};
        _rest = {end, _rest.end()};
        return !field->empty();
    }

private:
    [[nodiscard]] bool isDelimiter(char c) const
    {
        return std::any_of(_delimiters.begin(), _delimiters.end(), [c](char delimiter) { return c == delimiter; });
    }

    std::string_view _rest;
    std::string_view _delimiters;
};

/// The number that @p text begins with, 0 for none, the type's largest when it does not fit.
template <class T>
T leadingNumber(std::string_view text, int base = 10)
{
    T value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
    return error == std::errc::result_out_of_range ? std::numeric_limits<T>::max() : value;
}

/// The number that @p text is as a whole.
template <class T>
std::optional<T> wholeNumber(std::string_view text, int base = 10)
{
    T value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
    if (error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return value;
}

} // namespace Kivo
