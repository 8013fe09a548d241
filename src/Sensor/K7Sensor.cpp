// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Base of all sensors.
#include "Sensor/K7Sensor.h"

namespace Kivo {

K7Sensor::K7Sensor(uint32 type, uint32 id) : _id(id), _type(type) {}

K7Sensor::~K7Sensor() = default;

J3String K7Sensor::toString() const { return L"K7Sensor"; }

uint32 K7Sensor::id() const { return _id; }

bool K7Sensor::isValid() const { return _id != NO_ID; }

K7Event K7Sensor::checkHealth(uint32) { return K7Event(0, id()); }

} // namespace Kivo
