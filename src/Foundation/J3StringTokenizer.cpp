// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Splits a text at delimiter characters.
#include "Foundation/J3StringTokenizer.h"

#include "Foundation/J3Assert.h"

#include <algorithm>

namespace Kivo {

J3StringTokenizer::J3StringTokenizer(const J3String& text, const J3String& delimiters, bool keepEmpty)
    : _text(text.wstring()), _delimiters(delimiters.wstring()), _keepEmpty(keepEmpty)
{}

bool J3StringTokenizer::getToken(J3String* out)
{
    if (!out) {
        J3_REPORT("out", "out is Null!", "Foundation/J3StringTokenizer");
        return false;
    }
    while (!_finished) {
        const std::size_t begin = _position;
        const std::size_t end = std::min(_text.find_first_of(_delimiters, begin), _text.size());
        _finished = end == _text.size();
        _position = end + 1;
        if (end != begin || _keepEmpty) {
            *out = _text.substr(begin, end - begin);
            return true;
        }
    }
    return false;
}

} // namespace Kivo
