// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The machine as a whole: its names, its kernel, its load.
#pragma once

#include "Inventory/Column.h"
#include "Inventory/Listing.h"

#include <optional>

namespace Kivo::Inventory {

/// The machine as a whole.
struct Host {
    std::optional<std::string> name;
    std::optional<std::string> model;                   ///< the device tree's, or the firmware's
    std::optional<std::vector<std::string>> compatible; ///< the device tree's, the most exact name first
    std::optional<std::string> serialNumber;            ///< the device tree's
    std::optional<std::string> osName;                  ///< "Debian GNU/Linux 12 (bookworm)"
    std::optional<std::string> kernelVersion;           ///< "6.1.0"
    std::optional<std::string> kernelRelease;           ///< "6.1.0-56-arm64"
    std::optional<std::string> kernelText;              ///< with its compiler and build
    std::optional<std::string> architecture;            ///< "aarch64"
    std::optional<std::string> commandLine;             ///< the kernel's
    std::optional<Real> uptime;                         ///< in seconds
    std::optional<Real> load1;                          ///< threads that run or wait, on average over a minute
    std::optional<Real> load5;
    std::optional<Real> load15;
    std::optional<uint64> threadsRunning;
    std::optional<uint64> threads;
};

template <>
K7INVENTORY_API std::span<const Column<Host>> columns<Host>();

/// *Source*: `/proc/sys/kernel/hostname`, `osrelease` and `arch` (`uname` before kernel 6.1), `/proc/version`,
/// `cmdline`, `uptime` and `loadavg`, `/etc/os-release`, `/sys/firmware/devicetree/base`, `/sys/class/dmi/id`
[[nodiscard]] K7INVENTORY_API Reading<Host> readHost();

} // namespace Kivo::Inventory
