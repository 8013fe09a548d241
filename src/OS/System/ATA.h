// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What an ATA disk says of itself.
#pragma once

#include "OS/System/K7SystemUtilClass.h"

namespace Kivo {

/// Asks ATA and SATA disks who they are.
class K7SAL_API K7SystemUtil::ATA {
public:
    ATA() = delete;

    /// @{
    /// The size in bytes of the buffer that identifyAtaHdd() is given, terminator included; it never writes more.
    static constexpr uint32 MODEL_SIZE = 41;
    static constexpr uint32 SERIAL_SIZE = 31;
    /// @}

    /// Ask a disk for its model and serial number.
    ///
    /// Both are cut at their ends to what is alphanumeric, see Misc::swapAndTrim(). The serial number is taken with the
    /// ten bytes behind it, which are blank or zero on most disks.
    /// @param model   takes #MODEL_SIZE bytes; becomes empty when the disk gives none
    /// @param serial  takes #SERIAL_SIZE bytes; becomes empty when the disk gives none
    /// @param devPath the disk's device node on the running machine, "/dev/sda"
    /// @return false, with both texts as they were, when the node cannot be opened or the disk rejects the command, as
    ///     those behind USB bridges do
    /// *Source*: HDIO_DRIVE_CMD. *Threads*: any. *Privilege*: reading the node and CAP_SYS_RAWIO. *Cost*: a disk that
    /// sleeps may be woken.
    static bool identifyAtaHdd(char* model, char* serial, const char* devPath);
};

} // namespace Kivo
