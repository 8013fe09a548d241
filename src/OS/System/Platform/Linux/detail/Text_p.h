// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// From narrow text to wide, and texts cut to length.
#pragma once

#ifndef K7SAL_BUILD
#error "private to libK7SAL"
#endif

#include "Base/TextScanner_p.h"
#include "Foundation/J3String.h"

#include <cstring>

namespace Kivo {

inline J3String toWide(std::string_view text) { return J3String::from_string(std::string(text), STD_LOCALE_UTF8); }

/// At most @p limit bytes of a UTF-8 text, never a part of a character.
inline std::string_view cutText(std::string_view text, std::size_t limit)
{
    if (text.size() <= limit)
        return text;
    while (limit != 0 && (static_cast<unsigned char>(text[limit]) & 0xC0U) == 0x80)
        --limit;
    return text.substr(0, limit);
}

/// Put as much of @p text into @p out, terminated, as there is room for.
template <std::size_t Size>
void copyText(char (&out)[Size], std::string_view text)
{
    text = cutText(text, Size - 1);
    std::memcpy(out, text.data(), text.size());
    out[text.size()] = '\0';
}

} // namespace Kivo
