// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Temperatures, fans, voltages and currents, with their limits.
#pragma once

#include "Inventory/Column.h"
#include "Inventory/Listing.h"

#include <optional>

namespace Kivo::Inventory {

/// A sensor of the machine.
struct Sensor {
    std::string id;                    ///< "thermal_zone0", "hwmon1/temp2"
    std::optional<std::string> device; ///< what the driver calls itself: "cpu-thermal", "nct7802"
    std::optional<std::string> label;  ///< what it measures, if the driver tells
    const char* kind = "";             ///< "temperature", "fan", "voltage" or "current"
    std::optional<Real> value;         ///< none when it has no reading now
    const char* unit = "";             ///< of value and limits: "°C", "rpm", "V" or "A"
    std::optional<Real> low;
    std::optional<Real> passive; ///< above it the system is slowed down to cool
    std::optional<Real> high;
    std::optional<Real> critical;
    std::optional<bool> alarm; ///< whether the device says that a limit is passed
};

template <>
K7INVENTORY_API std::span<const Column<Sensor>> columns<Sensor>();

/// Every sensor: the thermal zones, then what the hardware monitors measure.
/// *Source*: `/sys/class/thermal`, `/sys/class/hwmon`. *Cost*: a device may take milliseconds for a reading.
[[nodiscard]] K7INVENTORY_API Listing<Sensor> listSensors();

} // namespace Kivo::Inventory
