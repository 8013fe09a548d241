// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Strict conversion of texts to integers.
#pragma once

#include "Core/K7CoreApi.h"
#include "Foundation/J3String.h"

#include <concepts>

namespace Kivo::K7 {

/// What a text can be cast to: the signed and unsigned integer types, char, bool and the character types excepted.
template <class T>
concept CastTarget = std::same_as<T, signed char> || std::same_as<T, unsigned char> || std::same_as<T, short> ||
    std::same_as<T, unsigned short> || std::same_as<T, int> || std::same_as<T, unsigned int> || std::same_as<T, long> ||
    std::same_as<T, unsigned long> || std::same_as<T, long long> || std::same_as<T, unsigned long long>;

/// Convert a text that is one number of the integer type T as a whole.
/// @param out         takes the number; unchanged on failure
/// @param text        an optional '-' (for a signed T) and digits; a '+' is refused
/// @param hexadecimal whether the digits are hexadecimal, in either case, with or without a leading "0x"
/// @param trim        whether white space around the number is passed over; otherwise it is refused
/// @return false for any other text and for a number that T cannot hold
template <CastTarget T>
K7CORE_API bool castFrom(T* out, const J3String& text, bool hexadecimal = false, bool trim = false);

/// The same, where a failure is a J3Exception that quotes the text.
template <CastTarget T>
K7CORE_API void castFromThrowable(T* out, const J3String& text, bool hexadecimal = false, bool trim = false);

} // namespace Kivo::K7
