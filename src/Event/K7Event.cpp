// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What a sensor's check gives.
#include "Event/K7Event.h"

namespace Kivo {

K7Event::K7Event(int32 type, std::shared_ptr<J3Event> extra)
    : _type(type), _channel(NO_CHANNEL), _extra(std::move(extra))
{}

K7Event::K7Event(int32 type, uint32 channel, std::shared_ptr<J3Event> extra)
    : _type(type), _channel(channel), _extra(std::move(extra))
{
    setType(type);
    setChannel(channel);
}

void K7Event::setType(int32 type)
{
    _type = type;
    if (_extra)
        _extra->setType(type);
}

void K7Event::setChannel(uint32 channel)
{
    _channel = channel;
    if (_extra)
        _extra->setChannel(channel);
}

std::shared_ptr<J3Event> K7Event::makeJ3Event() const
{
    constexpr uint8 LEVEL = 0;
    constexpr uint16 VALUE = 65535;
    return _extra ? _extra : std::make_shared<J3Event>(_type, _channel, LEVEL, VALUE);
}

J3String K7Event::toString() const { return J3String().format(L"{ type: %d, channel: %u }", _type, _channel); }

} // namespace Kivo
