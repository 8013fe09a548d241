// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Column tables: what a record's fields are called, and how they are read.
#include "Inventory/Column.h"

namespace Kivo::Inventory {

const char* symbolOf(Unit unit)
{
    switch (unit) {
    case Unit::NONE:
        return "";
    case Unit::BYTES:
        return "B";
    case Unit::KIBIBYTES:
        return "KiB";
    case Unit::SECONDS:
        return "s";
    case Unit::MEGABITS_PER_SECOND:
        return "Mbit/s";
    case Unit::MEGAHERTZ:
        return "MHz";
    case Unit::CELSIUS:
        return "°C";
    case Unit::VOLTS:
        return "V";
    case Unit::REVOLUTIONS_PER_MINUTE:
        return "rpm";
    case Unit::PERCENT:
        return "%";
    }
    return "";
}

} // namespace Kivo::Inventory
