// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Messages of the kernel's log.
#pragma once

#include "Foundation/J3Types.h"

#include <optional>
#include <string>
#include <string_view>

namespace Kivo {

/// A hub as sysfs names it.
struct UsbHub {
    int32 bus;
    std::string name; ///< "1-1.4"; empty for the bus's root hub
};

/// Find the hub at whose port the last device in @p log could not be enumerated. @return nothing when there is no such
///     message
std::optional<UsbHub> parseEnumerationFailure(std::string_view log);

} // namespace Kivo
