// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What happened, on which channel, and how severe it is.
#include "Foundation/J3Event.h"

namespace Kivo {

J3Event::J3Event(int32 type, uint32 channel, uint8 level, uint16 value)
    : _type(type), _channel(channel), _level(level), _value(value)
{}

J3Event* J3Event::clone() const { return new J3Event(*this); }

J3String J3Event::toString() const
{
    return J3String().format(L"{ type: %d, channel: %u, level: %d, value: %d }", _type, _channel, int{_level},
                             int{_value});
}

} // namespace Kivo
