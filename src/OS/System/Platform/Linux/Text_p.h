// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Small pure helpers on narrow text.
#pragma once

#ifndef K7SAL_BUILD
#error "private to libK7SAL"
#endif

#include "Foundation/J3String.h"

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
        const std::size_t begin = _rest.find_first_not_of(_delimiters);
        if (begin == std::string_view::npos)
            return false;
        _rest.remove_prefix(begin);
        *field = _rest.substr(0, _rest.find_first_of(_delimiters));
        _rest.remove_prefix(field->size());
        return true;
    }

private:
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
