// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// A text as Lua takes it, without an allocation where it is short.
#pragma once

#ifndef K7SAL_PROJECT
#error "private to this project"
#endif

#include "Foundation/J3String.h"

#include <algorithm>

namespace Kivo {

/// The UTF-8 form of a text, for as long as this object lives.
class LuaText {
public:
    /// @throws std::bad_alloc for a long or a non-ASCII text
    explicit LuaText(const J3String& text)
    {
        const std::wstring& wide = text.wstring();
        const auto isAscii = [](wchar_t character) { return static_cast<uint32>(character) < 0x80; };
        if (wide.size() < sizeof _short && std::all_of(wide.begin(), wide.end(), isAscii)) {
            *std::transform(wide.begin(), wide.end(), _short, [](wchar_t c) { return static_cast<char>(c); }) = '\0';
        } else {
            _long = text.to_string();
            _text = _long.c_str();
        }
    }

    LuaText(const LuaText&) = delete;
    LuaText& operator=(const LuaText&) = delete;

    [[nodiscard]] const char* c_str() const { return _text; }

private:
    char _short[128];
    std::string _long;
    const char* _text = _short;
};

} // namespace Kivo
