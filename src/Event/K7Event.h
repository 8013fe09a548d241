// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What a sensor's check gives.
#pragma once

#include "K7SALApi.h"

#include "Foundation/J3Event.h"
#include "Foundation/J3String.h"

#include <memory>

namespace Kivo {

/// What a sensor's check gives: an event's type and channel, and optionally a J3Event with more, which is shared with
/// whoever else holds it and kept to the same type and channel. It has no archive and no stream form.
/// *Threads*: a value, as a std::shared_ptr.
class K7SAL_API K7Event : public J3Object {
public:
    /// The channel of an event that is not about one.
    static constexpr uint32 NO_CHANNEL = 65535;

    /// @param type  what happened; 0 is no event
    /// @param extra more about it, which keeps its own type and channel here; may be empty
    explicit K7Event(int32 type, std::shared_ptr<J3Event> extra = {});

    /// @param type    what happened; 0 is no event
    /// @param channel where it happened
    /// @param extra   more about it, which takes this type and channel; may be empty
    K7Event(int32 type, uint32 channel, std::shared_ptr<J3Event> extra = {});

    [[nodiscard]] int32 type() const { return _type; }
    [[nodiscard]] uint32 channel() const { return _channel; }

    /// @{ Change this event, and what it shares with it.
    void setType(int32 type);
    void setChannel(uint32 channel);
    /// @}

    /// Whether there is an event: the type is not 0.
    [[nodiscard]] bool hasEvent() const { return _type != 0; }

    /// Whether the sensor has another state than before; once set, it stays.
    [[nodiscard]] bool statusChanged() const { return _sensorStatusChanged; }
    void setSensorStatusChanged() { _sensorStatusChanged = true; }

    /// Give what the event shares, or a new J3Event of its type and channel (level 0, value 65535) when it has none.
    [[nodiscard]] std::shared_ptr<J3Event> makeJ3Event() const;

    /// "{ type: 5, channel: 65535 }"
    [[nodiscard]] J3String toString() const override;

private:
    int32 _type;
    uint32 _channel;
    std::shared_ptr<J3Event> _extra;
    bool _sensorStatusChanged = false;
};

} // namespace Kivo
