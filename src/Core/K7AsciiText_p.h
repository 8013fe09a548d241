// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Narrow copy of a short text, made without allocating.
#pragma once

#ifndef K7Core_BUILD
#error "private to libK7Core"
#endif

#include "Foundation/J3String.h"

namespace Kivo {

/// A text of plain ASCII characters for the system's parsers; one that is too long for an address or an interface name
/// or has any other character, a NUL included, is the empty text, which they refuse.
class K7AsciiText {
public:
    explicit K7AsciiText(const J3String& text)
    {
        if (text.length() >= sizeof(_text))
            return;
        char* next = _text;
        for (const wchar_t character : text.wstring()) {
            if (character <= 0 || character >= 0x80) {
                _text[0] = '\0';
                return;
            }
            *next++ = static_cast<char>(character);
        }
        *next = '\0';
    }

    [[nodiscard]] const char* c_str() const { return _text; }

private:
    char _text[64] = "";
};

} // namespace Kivo
