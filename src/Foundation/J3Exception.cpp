// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Exceptions of the foundation.
#include "Foundation/J3Exception.h"

namespace Kivo {

J3Exception::J3Exception(const J3String& message, int32 errorCode)
    : _message(message), _what(message.to_string()), _errorCode(errorCode)
{}

J3Exception::~J3Exception() = default;

J3RangeException::J3RangeException(const J3String& message, int64 begin, int64 end, int64 position)
    : J3Exception(message), _begin(begin), _end(end), _position(position)
{}

J3RangeException::~J3RangeException() = default;

} // namespace Kivo
