// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Splits a text at delimiter characters.
#pragma once

#include "Foundation/J3String.h"

namespace Kivo {

/// Delivers the pieces of a text between any of a set of delimiter characters, in order.
class J3_API J3StringTokenizer {
public:
    /// @param text       what is split; a copy is kept
    /// @param delimiters each of its characters separates
    /// @param keepEmpty  whether the empty pieces between two neighbouring delimiters are delivered too
    J3StringTokenizer(const J3String& text, const J3String& delimiters, bool keepEmpty);

    /// Deliver the next piece. @return false, with @p out untouched, when there is none
    bool getToken(J3String* out);

private:
    std::wstring _text;
    std::wstring _delimiters;
    std::size_t _position = 0;
    bool _keepEmpty;
    bool _finished = false;
};

} // namespace Kivo
