// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Base of all sensors.
#pragma once

#include "Event/K7Event.h"

namespace Kivo {

/// Base of all sensors: an identifier and a type, a place in a chain of sensors, and the checks that give events. It
/// has no archive and no stream form. *Threads*: as its subclass says.
class K7SAL_API K7Sensor : public J3Object {
public:
    /// The identifier of a sensor that has none.
    static constexpr uint32 NO_ID = 0xFFFFFFFF;

    /// @param type the application's number for this kind of sensor
    /// @param id   the sensor's identifier; NO_ID for none
    explicit K7Sensor(uint32 type, uint32 id = NO_ID);
    ~K7Sensor() override;

    [[nodiscard]] J3String toString() const override; ///< "K7Sensor", whatever the sensor

    [[nodiscard]] virtual uint32 id() const;

    /// Whether the sensor has an identifier.
    [[nodiscard]] virtual bool isValid() const;

    /// Whether the sensor is to be checked.
    [[nodiscard]] virtual bool isEnable() const = 0;

    /// Ask the sensor for an event; one of type 0 is none.
    virtual K7Event check() = 0;

    /// Ask whether the sensor itself works. The base has nothing to tell: no event, with id() as its channel.
    /// @param argument the subclass's own; the base does not use it
    virtual K7Event checkHealth(uint32 argument);

    /// Bring the sensor back to its first state.
    virtual void reset() = 0;

    [[nodiscard]] uint32 sensorType() const { return _type; }

    /// The next sensor of the chain, null at its end.
    [[nodiscard]] K7Sensor* nextSensor() const { return _nextNode; }

    /// Chain a sensor behind this one.
    /// @param next not owned; must live as long as the chain is walked. Null ends the chain here
    void setNextSensor(K7Sensor* next) { _nextNode = next; }

private:
    uint32 _id;
    uint32 _type;
    K7Sensor* _nextNode = nullptr;
};

} // namespace Kivo
