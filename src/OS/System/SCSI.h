// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Which connector of the recorder a disk hangs on, and what sysfs tells about it.
#pragma once

#include "OS/System/K7SystemUtilClass.h"

#include <compare>

namespace Kivo {

/// Tells for a block device ("sda") which connector of the recorder it hangs on, an internal SATA bay, an external
/// eSATA port or a USB port, and reads what sysfs knows of it.
///
/// A device's SCSI address is classified by three address ranges. These, the numbers of hosts and channels and the
/// wiring of the USB ports are the board's: the application sets them once at start-up.
///
/// Devices are named as in `/sys/block`, without "/dev/"; a name with a slash, "." and ".." are no device. Numbers are
/// decimal. A result of false (-1, 0) leaves outputs as they were; lastFailure() is empty when that is the answer ("not
/// a USB disk", "has no SCSI address") and tells the path when something could not be read.
///
/// *Source*: sysfs, below the system root. *Threads*: nothing is locked: configure before other threads call in, then
/// any; updateUsbDeviceInfo() configures, too. *Cost*: a few reads of sysfs.
class K7SAL_API K7SystemUtil::SCSI {
public:
    /// What a host adapter's ports are.
    enum HostIfTypes : int32 {
        HOST_IF_SATA = 0,  ///< internal bays
        HOST_IF_ESATA = 1, ///< external ports, up to four disks behind each host
        HOST_IF_USB = 2,
        HOST_IF_TYPE_COUNT = 3
    };

    enum Consts : int32 { MAX_SUPPORTED_DISK_COUNT = 32, MAX_SUPPORTED_USB_PORT_COUNT = 4 };

    /// @{
    /// The size in bytes of the buffer that an operation is given, terminator included; no operation writes more.
    static constexpr uint32 MAX_LINE_SIZE = 256; ///< a vendor's or a model's text
    static constexpr uint32 MAX_NAME_SIZE = 256; ///< the name of a directory entry
    static constexpr uint32 MAX_PATH_SIZE = 64;  ///< "/dev/sda", "/sys/bus/pci/devices/0000:01:00.0"
    /// @}

    /// The place of a device in the kernel's SCSI layer.
    struct K7SAL_API Address {
        int32 _host = 0;
        int32 _channel = 0;
        int32 _id = 0;
        int32 _lun = 0;

        constexpr Address() = default;

        constexpr Address(int32 host, int32 channel, int32 id, int32 lun)
            : _host(host), _channel(channel), _id(id), _lun(lun)
        {}

        /// Equal in all four numbers.
        friend constexpr bool operator==(const Address&, const Address&) = default;

        /// By one unsigned key: host (its low 10 bits), channel (10 bits), id (10 bits) and lun (2 bits), in this
        /// order. Larger numbers are folded, so addresses that differ can be equivalent here.
        friend constexpr std::weak_ordering operator<=>(const Address& left, const Address& right)
        {
            return left.key() <=> right.key();
        }

    private:
        [[nodiscard]] constexpr uint32 key() const
        {
            return packed(_host, _channel, _id) | (static_cast<uint32>(_lun) & 3);
        }
    };

    /// Where a USB port of the front panel is wired.
    struct K7SAL_API UsbIndexToDev {
        int32 _bus = -1;
        int32 _port = -1;
        int32 _subPort = -1;

        constexpr UsbIndexToDev() = default;

        constexpr UsbIndexToDev(int32 bus, int32 port, int32 subPort) : _bus(bus), _port(port), _subPort(subPort) {}

        /// Become wired to a bus, port and sub-port.
        constexpr void set(int32 bus, int32 port, int32 subPort) { *this = UsbIndexToDev(bus, port, subPort); }

        /// Become wired nowhere: -1 in all three.
        constexpr void reset() { *this = UsbIndexToDev(); }

        /// Equal in all three numbers.
        friend constexpr bool operator==(const UsbIndexToDev&, const UsbIndexToDev&) = default;

        /// By one unsigned key: bus, port and sub-port, 10 bits each, as addresses are compared.
        friend constexpr std::weak_ordering operator<=>(const UsbIndexToDev& left, const UsbIndexToDev& right)
        {
            return left.key() <=> right.key();
        }

    private:
        [[nodiscard]] constexpr uint32 key() const { return packed(_bus, _port, _subPort); }
    };

    SCSI() = delete;

    static constexpr const char* USB_DEVICE_PATH = "/sys/bus/usb/drivers/usb";
    static constexpr const char* USB_STORAGE_PATH = "/sys/bus/usb/drivers/usb-storage";
    static constexpr const char* USB_DEVICE_INFO_PATH = "/sys/bus/usb/devices";
    static constexpr const char* BLOCK_DEVICE_PATH = "/sys/block";
    static constexpr const char* PCI_DEVICE_PATH = "/sys/bus/pci/devices";

    /// The storage group of each disk number.
    static int32 DISK_NUMBER_TO_STORAGE_GROUP_ID[MAX_SUPPORTED_DISK_COUNT];

    /// The wiring of each USB index: four that are configured, and as many again that hold -1.
    static UsbIndexToDev USB_INDEX_TO_DEV[2 * MAX_SUPPORTED_USB_PORT_COUNT];

    /// First and last address of each HostIfTypes.
    static Address HOST_ADDRESS_RANGES[HOST_IF_TYPE_COUNT][2];

    static bool IS_ESATA_SUPPORT;  ///< whether the board has eSATA ports
    static uint32 SATA_HOST_COUNT; ///< SATA host adapters
    static uint32 SATA_CHNL_COUNT; ///< channels of each of them
    static uint32 SATA_CHNL_BEGIN; ///< number of the first channel
    static int32 SATA_PORT_0;      ///< port number of the first internal SATA port
    static int32 ESATA_PORT_0;     ///< port number of the first eSATA port
    static int32 USB_PORT_0;       ///< port number of the first USB port

    /// Set the board's SATA figures.
    /// @param sataHostCount    SATA host adapters
    /// @param sataChannelCount channels of each of them
    /// @param sataChannelBegin number of the first channel
    /// @param eSataSupport     whether the board has eSATA ports
    static void init(uint32 sataHostCount, uint32 sataChannelCount, uint32 sataChannelBegin, bool eSataSupport);

    /// Set whether the board has eSATA ports.
    static void setESataSupport(bool isSupported);

    /// Tell whether the board has eSATA ports.
    static bool isESataSupport();

    /// Set where a USB index, 0 to 7, is wired; any other index is ignored.
    static void setUsbIndexToDev(uint32 index, const UsbIndexToDev& dev);

    /// Set the addresses of a kind of host.
    /// @param hostIf a HostIfTypes; any other is reported through j3assertFunc and stores nothing
    /// @param begin  the first address
    /// @param end    the last one; USB has no last one, see isHostAddressRange()
    static void setHostAddressRange(int32 hostIf, const Address& begin, const Address& end);

    /// @{
    /// Give a number of a USB index's wiring. @return -1 for an index below 0 or above 7, and for one not wired
    static int32 getUsbIndexToBus(int32 index);
    static int32 getUsbIndexToPort(int32 index);
    static int32 getUsbIndexToSubPort(int32 index);
    /// @}

    /// Give the storage group of a disk: by the table for 0 to 31, the number's lowest bit for any other.
    static int32 diskNumberToStorageGroupId(int32 diskNumber);

    /// Tell whether an address belongs to a kind of host: not before its first address and not behind its last one, in
    /// the order of addresses. Every address from the first USB address on is USB.
    /// @param hostIf a HostIfTypes; any other is reported through j3assertFunc and has no address
    /// @param address the address in question
    static bool isHostAddressRange(int32 hostIf, const Address& address);

    /// Find a device's SCSI address, the first component of its link in `/sys/block` that is four numbers between
    /// colons ("6:0:0:0").
    ///
    /// On an eSATA host, a disk behind a bridge of revision "0961" is one channel lower than the link says.
    /// @param dev the device's name
    /// @param out becomes the address
    /// @return false for a device without one (NVMe, virtio, loop)
    static bool getAddress(const char* dev, Address* out);

    /// @{
    /// Tell whether a device's address is one of this kind of host. The eSATA form needs eSATA support.
    static bool isSataHddStorage(const char* dev);
    static bool isESataHddStorage(const char* dev);
    static bool isUsbStorage(const char* dev);
    /// @}

    /// Find the number of a device's SCSI host. @return -1 when it has no address
    static int32 getSataHost(const char* dev);

    /// Find the number of a disk: SATA channels are counted over all hosts, eSATA disks four to a host; for any other
    /// it is the host's number.
    /// @param dev    the device's name
    /// @param number becomes the disk's number
    static bool getDiskNumber(const char* dev, int32* number);

    /// Find the port of a SATA or eSATA disk, from #SATA_PORT_0 or #ESATA_PORT_0 on. @return false for any other
    /// @param dev  the device's name
    /// @param port becomes the port's number
    static bool getPortNumber(const char* dev, int32* port);

    /// Look whether there is a disk in an internal SATA port, that is at channel, id and lun 0 of the port's host.
    /// @param port    from #SATA_PORT_0 to below #ESATA_PORT_0
    /// @param present becomes whether there is one
    static bool getPortStatus(int32 port, bool* present);

    /// Read the speed of a SATA link.
    /// @param link counted from 0 (the kernel counts from 1)
    /// @return 2 for 3.0 Gbit/s, 1 for 1.5 Gbit/s, 0 for any other, no link, and when it cannot be read
    static int32 sataLinkType(int32 link);

    /// Read the model of a disk, without its line feed; the kernel fills it up with blanks.
    /// @param dev   at least three characters, of which the last three are the disk's name: "sda", "/dev/sda"
    /// @param model takes #MAX_LINE_SIZE bytes
    static bool getSataModel(const char* dev, char* model);

    /// Find the disk at channel, id and lun 0 of a SCSI host, by its letter: 0 for sda to 25 for sdz.
    /// @return 0xFFFFFFFF when there is none
    static uint32 getSataDiskNumber(int32 index);

    /// The same as a signed number: -1 when there is none.
    static int32 getSataDiskInfoIndex(int32 index);

    /// Tell whether a disk has a second partition that can be looked at, "sda2" of "sda".
    static bool isIdeHddPartitioned(const char* dev);

    /// Read the number in "unique_id" of a device's SCSI host: from 1 on for AHCI ports, 0 for USB. @return -1 when it
    /// cannot be read
    static int32 getSataHostBus(const char* dev);

    /// Read the version of USB that a storage device speaks (the device itself, not the hub before it): " 2.00".
    /// @param dev     the block device's name
    /// @param out     becomes the version, terminated
    /// @param outSize bytes at @p out, at least 2; a longer text is cut
    /// @return false for a device that is not on USB
    static bool getUsbVersion(const char* dev, char* out, uint32 outSize);

    /// Find the disk behind a USB port, directly or through hubs.
    ///
    /// It is the disk of the first interface of the usb-storage driver whose name begins with "BUS-PORT" as text, in
    /// the order of findSubDir(): port 1 also finds what is at port 10 when nothing is at port 1.
    /// @param bus     from 0 on
    /// @param port    from 0 on
    /// @param subPort is not looked at
    /// @param devPath takes #MAX_PATH_SIZE bytes, "/dev/sda"
    static bool getUsbStoragePath(int32 bus, int32 port, int32 subPort, char* devPath);

    /// @{
    /// Read who made the device at interface "BUS-PORT:SUBPORT.0" of the usb-storage driver, and what it is, without
    /// the line feed; the kernel fills texts up with blanks.
    static bool getUsbStorageVendor(int32 bus, int32 port, int32 subPort, char* vendor); ///< takes #MAX_LINE_SIZE bytes
    static bool getUsbStorageModel(int32 bus, int32 port, int32 subPort, char* model);   ///< takes #MAX_LINE_SIZE bytes
    /// @}

    /// Read the size of a disk, or of one of its partitions.
    /// @param dev       the disk's name
    /// @param partition from 1 on; 0 for the whole disk
    /// @return bytes; 0 also when it cannot be read, with lastFailure()
    static uint64 getUsbStorageSize(const char* dev, int32 partition);

    /// Let the kernel look anew at the storage device behind each of the first four USB indices, by running "echo 1 >
    /// .../rescan" with Shell::runCommand(). Indices with nothing behind them are passed over.
    ///
    /// The command is given to the running machine also while a system root is set. *Privilege*: root.
    static void rescanUsb();

    /// Form the path of a PCI bus's first function: "/sys/bus/pci/devices/0000:03:00.0".
    /// @param bus  written as a decimal number of at least two digits
    /// @param path takes #MAX_PATH_SIZE bytes
    static bool getPciPath(int32 bus, char* path);

    /// Take the wiring of the USB indices 0 and 1 from the USB devices that are there.
    ///
    /// Names of exactly 7 characters count, as interfaces without a hub have ("1-1:1.0"), by their bus (the 1st
    /// character), port (the 3rd) and sub-port (the 5th): bus 1 port 1 becomes index 0; bus 1 port 2, bus 3 port 1 and
    /// bus 4 port 1 become index 1, the last one in ascending order.
    /// @return false when the directory cannot be read
    static bool updateUsbDeviceInfo();

    /// Find a directory entry by the beginning of its name.
    ///
    /// sysfs lists in no order of its own: here the shortest name comes first, and names of one length ascend, so that
    /// "1-1:1.0" comes before "1-10:1.0" and "sda" before "sdaa".
    /// @param path      the directory
    /// @param subString what the name begins with
    /// @param count     how many characters of @p subString count, from 1 on; when it has fewer, the name is all of it
    /// @param found     takes #MAX_NAME_SIZE bytes; becomes the first such name
    /// @return false when there is none. A null path or text and a count of 0 are reported through j3assertFunc.
    static bool findSubDir(const char* path, const char* subString, int32 count, char* found);

private:
    static constexpr uint32 packed(int32 first, int32 second, int32 third)
    {
        return static_cast<uint32>(first) << 22 | (static_cast<uint32>(second) & 0x3FF) << 12 |
               (static_cast<uint32>(third) & 0x3FF) << 2;
    }
};

} // namespace Kivo
