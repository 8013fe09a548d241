// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Processes.
#pragma once

#include "Inventory/Column.h"
#include "Inventory/Listing.h"

#include <optional>

namespace Kivo::Inventory {

/// A process. What another user's process keeps to itself is missing.
struct Process {
    int32 pid = 0;
    std::optional<std::string> name;        ///< the kernel's short name, at most 15 bytes
    std::optional<std::string> program;     ///< the first argument; none of a kernel thread
    std::optional<std::string> commandLine; ///< all arguments with blanks between them, at most 4 KiB
    std::optional<std::string> state;       ///< "running", "sleeping"
    std::optional<int32> parent;            ///< 0 for none
    std::optional<uint32> user;             ///< effective user id
    std::optional<uint32> threads;
    std::optional<uint64> resident;       ///< main memory in use, in KiB; none of a kernel thread
    std::optional<float64> processorTime; ///< seconds of all its threads
    std::optional<float64> startTime;     ///< seconds after the start of the machine
    std::optional<uint64> openFiles;      ///< descriptors
};

template <>
K7INVENTORY_API std::span<const Column<Process>> columns<Process>();

/// Every process in ascending order of its number. One that ends meanwhile is left out.
/// *Source*: `/proc/N/stat`, `status`, `cmdline` and `fd`. *Privilege*: that of the superuser to count the open files
/// of other users' processes. *Cost*: three opens and a directory per process
[[nodiscard]] K7INVENTORY_API Listing<Process> listProcesses();

/// The processes with a text in their program name, as K7SystemUtil::Shell::getProcessIds() finds them.
/// @param needle empty, it is found in every program name
[[nodiscard]] K7INVENTORY_API Listing<Process> findProcesses(const std::string& needle);

} // namespace Kivo::Inventory
