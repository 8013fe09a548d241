// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What happened, on which channel, and how severe it is.
#pragma once

#include "Foundation/J3Record.h"

namespace Kivo {

/// An event as it is passed on: its type and channel, a level and a further value that belong to the type.
class J3_API J3Event : public J3Record<J3Event> {
public:
    J3Event() = default;
    J3Event(int32 type, uint32 channel, uint8 level, uint16 value);

    [[nodiscard]] int32 type() const { return _type; }

    [[nodiscard]] uint32 channel() const { return _channel; }

    [[nodiscard]] uint8 level() const { return _level; }

    [[nodiscard]] uint16 value() const { return _value; }

    void setType(int32 type) { _type = type; }

    void setChannel(uint32 channel) { _channel = channel; }

    void setLevel(uint8 level) { _level = level; }

    void setValue(uint16 value) { _value = value; }

    [[nodiscard]] J3Event* clone() const override;

    /// "{ type: 5, channel: 2, level: 0, value: 65535 }"
    [[nodiscard]] J3String toString() const override;

    static auto fields(auto& self) { return std::tie(self._type, self._channel, self._level, self._value); }

private:
    int32 _type = 0;
    uint32 _channel = 0;
    uint8 _level = 0;
    uint16 _value = 0;
};

} // namespace Kivo
