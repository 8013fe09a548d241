// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What tells a machine and its system apart: version texts, the load, names in the device tree.
#pragma once

#ifndef K7SAL_PROJECT
#error "private to this project"
#endif

#include "Inventory/detail/NumberParser_p.h"

#include <string>
#include <vector>

namespace Kivo::Inventory {

/// The release in the text of /proc/version; empty when it is not in its form.
[[nodiscard]] std::string_view parseKernelRelease(std::string_view version);

/// The numbers that a kernel release begins with: "6.1.0" of "6.1.0-56-arm64".
[[nodiscard]] std::string_view parseKernelNumbers(std::string_view release);

/// The value of one name in an os-release file, its quotes removed.
[[nodiscard]] std::optional<std::string> parseOsRelease(std::string_view text, std::string_view name);

/// The texts of a device-tree property, each of which ends in a null byte.
[[nodiscard]] std::vector<std::string> parseTextList(std::string_view bytes);

struct LoadAverages {
    Real one;
    Real five;
    Real fifteen;
    uint64 threadsRunning;
    uint64 threads;
};

[[nodiscard]] std::optional<LoadAverages> parseLoadAverages(std::string_view text);

} // namespace Kivo::Inventory
