// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The kernel's version and uptime.
#pragma once

#include "Base/TextScanner_p.h"
#include "Core/K7Version.h"

namespace Kivo {

/// Read the numbers of "Linux version %d.%d.%d", each modulo 256.
/// @return false, with @p version as it was, when there are not three
bool parseKernelVersion(std::string_view line, K7Version* version);

/// Seconds since boot; 0 for a text that is not a number, or not one of seconds.
double parseUptime(std::string_view line);

} // namespace Kivo
