// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// USB storage on the front panel.
#pragma once

#include "OS/System/K7SystemUtilClass.h"

#include <atomic>

namespace Kivo {

/// Finds the storage device behind a USB port, mounts it at "/usbdisk" and unmounts it; resets devices that the kernel
/// could not enumerate.
///
/// A port is named by an index, 0 to 3, whose wiring K7SystemUtil::SCSI knows.
/// *Threads*: the mount point and the kind of file system last found belong to the process: callers take turns.
class K7SAL_API K7SystemUtil::USB {
public:
    USB() = delete;

    /// Find the storage device behind a port, and its partitions.
    /// @param index   of the port, 0 to 3
    /// @param devPath becomes the disk, "/dev/sda"; empty when there is none
    /// @param usable  becomes whether a partition can be mounted; FS::MAX_PARTITION_COUNT entries
    /// @param sizes   becomes the partitions' sizes in bytes; FS::MAX_PARTITION_COUNT entries
    /// @return false when there is no device or no usable partition on it, and when it cannot be read, which is a
    ///     failure
    /// *Privilege*: that of reading and writing the device.
    static bool getStorageInfo(int index, J3String* devPath, bool* usable, uint64* sizes);

    /// Describe the storage device behind a port.
    /// @param index of the port, 0 to 3
    /// @param desc  becomes vendor and model in printable ASCII, "Kingston DataTraveler", or one of them; "N/A" when
    ///              neither can be read
    /// @return whether anything is known
    static bool getStorageDesc(int index, J3String* desc);

    /// Mount, for reading and writing, the first port's device that has a usable partition: partition 1 when it is
    /// usable, else the whole disk.
    /// @return whether it is mounted now; false when there is none
    /// *Privilege*: CAP_SYS_ADMIN. *Cost*: 2.5 s when it cannot be mounted.
    static bool start();

    /// Mount a partition of one port's device.
    /// @param index     of the port, 0 to 3
    /// @param partition from 0 on; FS::MAX_PARTITION_COUNT for the whole disk
    /// @param writable  false to mount it for reading alone
    /// *Privilege*: CAP_SYS_ADMIN. *Cost*: 2.5 s when it cannot be mounted.
    static bool start(int index, unsigned int partition, bool writable);

    /// Unmount what start() has mounted. *Cost*: 500 ms when it is in use.
    static void finish();

    /// Tell whether a path exists while the storage device is mounted: start(), look, finish().
    /// @param path absolute, "/usbdisk/update.bin"
    static bool checkExistence(const char* path);

    /// Let the kernel look anew at the storage devices, as SCSI::rescanUsb() does.
    static void rescan();

    /// Unload and load the driver of one kind of host controllers.
    /// @param hcType 1 for "ohci_hcd", 2 for "ehci_hcd", any other for "xhci_hcd"
    static void reloadDriver(int hcType);

    /// Reset a USB device, as if it had been taken out and put in again.
    /// @param usbDevNode its node, "/dev/bus/usb/001/004"
    /// @return whether the node could be opened; what the reset gives does not matter
    /// *Source*: the ioctl USBDEVFS_RESET. *Privilege*: that of writing the node.
    static bool resetDevice(const char* usbDevNode);

    /// Reset the hub at whose port the kernel last failed to enumerate a device, by the last ten lines of its log.
    ///
    /// The log is read by the host's command runner, with Shell::runCommandEx(). Does nothing while a system root is
    /// set, where hubs have another machine's numbers.
    /// @return false when there is no such message
    static bool resetLastErroredDevice();

    /// @{
    /// Give the wiring of a port: its bus, its port on the bus, and the port on the hub behind that.
    /// @param index of the port
    /// @return -1 for an index outside 0 to 7 and for one that is not wired
    [[nodiscard]] static int32 indexToBus(int index);
    [[nodiscard]] static int32 indexToPort(int index);
    [[nodiscard]] static int32 indexToSubPort(int index);
    /// @}

private:
    static std::atomic<int32> s_fsType;
};

} // namespace Kivo
