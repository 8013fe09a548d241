// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Conversion between wide text and its narrow encodings.
#pragma once

#ifndef J3Foundation_BUILD
#error "private to J3Foundation"
#endif

#include <locale>
#include <string>
#include <string_view>

namespace Kivo::J3TextCodec {

constexpr wchar_t REPLACEMENT = 0xFFFD;

/// Whether @p character is a Unicode scalar value: no surrogate, and not beyond U+10FFFF.
constexpr bool isScalar(wchar_t character)
{
    const auto code = static_cast<char32_t>(character);
    return code < 0xD800 || (code > 0xDFFF && code <= 0x10FFFF);
}

/// Decode UTF-8; each longest ill-formed piece of a sequence becomes one U+FFFD.
/// @param out room for as many characters as @p text has bytes
/// @return the number of characters written
std::size_t decodeUtf8(std::string_view text, wchar_t* out);
std::wstring decodeUtf8(std::string_view text);

/// The text without a sequence that its end cuts off.
std::string_view withoutCutSequence(std::string_view text);

std::string encodeUtf8(std::wstring_view text);

/// Convert with the locale's own character conversion facet.
std::wstring decode(std::string_view text, const std::locale& encoding);
std::string encode(std::wstring_view text, const std::locale& encoding);

/// Convert with iconv; the result is empty when it does not know the encoding. Throws a J3Exception when the system
/// gives no descriptor to find that out with.
std::wstring decode(std::string_view text, const std::string& encodingName);
std::string encode(std::wstring_view text, const std::string& encodingName);

} // namespace Kivo::J3TextCodec
