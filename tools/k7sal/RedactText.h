// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Takes texts apart for stand-ins: words, lines, hexadecimal bytes, prefix lengths.
#pragma once

#include "Redact.h"

#include "Base/TextScanner_p.h"

#include <algorithm>
#include <bit>

#include <arpa/inet.h>

namespace K7Tool {

using namespace Kivo;

constexpr bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
constexpr bool isAlnum(char c) { return isDecimalDigit(c) || isLetter(c); }
constexpr char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

inline std::string lowered(std::string_view text)
{
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(), lower);
    return result;
}

inline std::string hexOf(const std::vector<std::uint8_t>& bytes, bool upper, char separator = '\0')
{
    const char* const digits = upper ? "0123456789ABCDEF" : "0123456789abcdef";
    std::string text;
    for (const std::uint8_t byte : bytes) {
        if (separator != '\0' && !text.empty())
            text += separator;
        text += digits[byte >> 4U];
        text += digits[byte & 15U];
    }
    return text;
}

/// The bytes that hexadecimal digits spell; @p text has an even number of them.
inline std::vector<std::uint8_t> bytesOf(std::string_view text)
{
    std::vector<std::uint8_t> bytes;
    for (std::size_t at = 0; at + 2 <= text.size(); at += 2)
        bytes.push_back(wholeNumber<std::uint8_t>(text.substr(at, 2), 16).value_or(0));
    return bytes;
}

inline bool isHexa(std::string_view text, std::size_t length)
{
    return text.size() == length && std::all_of(text.begin(), text.end(), isHexaDigit);
}

inline bool hasUpperHexa(std::string_view text)
{
    return std::any_of(text.begin(), text.end(), [](char c) { return c >= 'A' && c <= 'F'; });
}

inline IpBytes toIpBytes(const std::vector<std::uint8_t>& bytes)
{
    IpBytes address{};
    std::copy_n(bytes.begin(), std::min(bytes.size(), address.size()), address.begin());
    return address;
}

/// The length of a netmask, when the address can be one.
inline std::optional<unsigned> maskLength(const IpBytes& address)
{
    std::uint32_t mask = 0;
    for (std::size_t byte = 0; byte < 4; ++byte)
        mask = mask << 8U | address[byte];
    const auto length = static_cast<unsigned>(std::countl_one(mask));
    return length >= 8 && length + static_cast<unsigned>(std::countr_zero(mask)) >= 32 ? std::optional(length)
                                                                                       : std::nullopt;
}

/// The length of "/24" at the beginning of @p text.
inline std::optional<unsigned> prefixLength(std::string_view text)
{
    TextScanner scanner(text);
    unsigned length = 0;
    if (!scanner.literal("/") || scanner.atEnd() || !isDecimalDigit(scanner.rest().front()) || !scanner.number(&length))
        return std::nullopt;
    return length;
}

/// Hand each word of a text to @p take, and copy what is between them.
template <class Take>
void forEachWord(std::string_view text, std::string* out, bool (*isDelimiter)(char), Take&& take)
{
    while (!text.empty()) {
        const auto begin = std::find_if_not(text.begin(), text.end(), isDelimiter);
        if (out)
            out->append(text.begin(), begin);
        const auto end = std::find_if(begin, text.end(), isDelimiter);
        if (begin != end)
            take(std::string_view(begin, end));
        text = {end, text.end()};
    }
}

template <class Take>
void forEachLine(std::string_view text, std::string* out, Take&& take)
{
    forEachWord(
        text, out, [](char c) { return c == '\n'; }, take);
}

inline bool isBlank(char c) { return c == ' ' || c == '\t'; }

} // namespace K7Tool
