// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Texts from outside made fit for a terminal, and numbers made fit for a person.
#pragma once

#include <cstdio>
#include <string>
#include <string_view>

namespace K7Tool {

/// @p text with a question mark for whatever a terminal would act on: control characters, C1 and DEL included, marks of
/// direction, separators of lines, and bytes that are not UTF-8. What a device or a captured file says of itself must
/// not drive the reader's terminal.
[[nodiscard]] std::string printable(std::string_view text);

/// JSON text, which has such characters inside strings alone, with escapes in their place.
[[nodiscard]] std::string jsonSafe(std::string_view json);

/// How many columns of a terminal a printable UTF-8 text takes.
[[nodiscard]] std::size_t columnsOf(std::string_view text);

/// @p text in at most so many columns; what was cut is shown by "..." where that has room.
[[nodiscard]] std::string fitted(std::string text, std::size_t width);

/// std::snprintf() of numbers and short texts, at most 127 bytes.
template <class... Arguments>
[[nodiscard]] std::string formatted(const char* format, Arguments... arguments);

/// "412.3 MiB", "1500 B"; "0 B" for what is not positive
[[nodiscard]] std::string sizeText(double bytes);

/// "2 d 03 h 05 min", "14 s", "-1 h 00 min"; "0 s" for what is not a number
[[nodiscard]] std::string durationText(double seconds);

/// "[####......]" for a part of a whole
[[nodiscard]] std::string bar(double part, double whole, std::size_t width = 24);

template <class... Arguments>
std::string formatted(const char* format, Arguments... arguments)
{
    char buffer[128];
    return std::snprintf(buffer, sizeof buffer, format, arguments...) < 0 ? std::string() : std::string(buffer);
}

} // namespace K7Tool
