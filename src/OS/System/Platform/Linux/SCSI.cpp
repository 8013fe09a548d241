// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Which connector of the recorder a disk hangs on: the board's tables, and the probes of SATA disks.
#include "OS/System/SCSI.h"

#include "Foundation/J3Assert.h"
#include "OS/System/Platform/Linux/detail/ScsiLinkParser_p.h"
#include "OS/System/Platform/Linux/detail/Sysfs_p.h"

#include <limits>

namespace Kivo {

namespace {

using SCSI = K7SystemUtil::SCSI;

constexpr const char* SOURCE = "OS/System/Platform/Linux/SCSI";
constexpr const char* BRIDGE_REVISION = "0961";
constexpr uint32 DISKS_PER_ESATA_HOST = 4;
constexpr std::size_t SHORT_NAME_LENGTH = 3;
constexpr uint32 NO_DISK = 0xFFFFFFFF;
constexpr uint64 SECTOR_SIZE = 512; // of every "size" file, whatever the disk's own is

uint32 toUnsigned(int32 number) { return static_cast<uint32>(number); }

/// Arithmetic on what comes from outside wraps.
int32 toSigned(uint32 number) { return static_cast<int32>(number); }

bool isIn(const SCSI::Address (&range)[2], const SCSI::Address& address)
{
    return range[0] <= address && range[1] >= address;
}

uint32 eSataDiskNumber(const SCSI::Address& address)
{
    return toUnsigned(address._channel) + (toUnsigned(address._host) - SCSI::SATA_HOST_COUNT) * DISKS_PER_ESATA_HOST;
}

bool isStorageAt(const char* operation, int32 hostIf, const char* dev)
{
    return attempt(operation, [&] {
        SCSI::Address address;
        return SCSI::getAddress(dev, &address) && SCSI::isHostAddressRange(hostIf, address);
    });
}

const SCSI::UsbIndexToDev& wiringOf(int32 index)
{
    static constexpr SCSI::UsbIndexToDev NOWHERE;
    const bool isIndex = index >= 0 && toUnsigned(index) < std::size(SCSI::USB_INDEX_TO_DEV);
    return isIndex ? SCSI::USB_INDEX_TO_DEV[index] : NOWHERE;
}

} // namespace

constinit int32 SCSI::DISK_NUMBER_TO_STORAGE_GROUP_ID[] = {0, 0, 0, 0, 1, 1, 1, 1, 0, 0, 0, 0, 1, 1, 1, 1,
                                                           0, 0, 0, 0, 1, 1, 1, 1, 0, 1, 0, 1, 0, 0, 0, 0};

constinit SCSI::UsbIndexToDev SCSI::USB_INDEX_TO_DEV[] = {{1, 1, 1}, {1, 2, 1}, {3, 1, 1}, {4, 1, 1}, {}, {}, {}, {}};

constinit SCSI::Address SCSI::HOST_ADDRESS_RANGES[][2] = {
    {{0, 0, 0, 0}, {2, 1, 0, 0}},
    {{3, 0, 0, 0}, {6, 3, 0, 0}},
    {{7, 0, 0, 0}, {99, 0, 0, 0}},
};

constinit bool SCSI::IS_ESATA_SUPPORT = false;
constinit uint32 SCSI::SATA_HOST_COUNT = 3;
constinit uint32 SCSI::SATA_CHNL_COUNT = 2;
constinit uint32 SCSI::SATA_CHNL_BEGIN = 0;
constinit int32 SCSI::SATA_PORT_0 = 0;
constinit int32 SCSI::ESATA_PORT_0 = 32;
constinit int32 SCSI::USB_PORT_0 = 64;

void SCSI::init(uint32 sataHostCount, uint32 sataChannelCount, uint32 sataChannelBegin, bool eSataSupport)
{
    SATA_HOST_COUNT = sataHostCount;
    SATA_CHNL_COUNT = sataChannelCount;
    SATA_CHNL_BEGIN = sataChannelBegin;
    setESataSupport(eSataSupport);
}

void SCSI::setESataSupport(bool isSupported) { IS_ESATA_SUPPORT = isSupported; }

bool SCSI::isESataSupport() { return IS_ESATA_SUPPORT; }

void SCSI::setUsbIndexToDev(uint32 index, const UsbIndexToDev& dev)
{
    if (index < std::size(USB_INDEX_TO_DEV))
        USB_INDEX_TO_DEV[index] = dev;
}

void SCSI::setHostAddressRange(int32 hostIf, const Address& begin, const Address& end)
{
    if (hostIf < 0 || hostIf >= HOST_IF_TYPE_COUNT) {
        J3_REPORT("false", "NOT supported HOST interface!", SOURCE);
        return;
    }
    HOST_ADDRESS_RANGES[hostIf][0] = begin;
    HOST_ADDRESS_RANGES[hostIf][1] = end;
}

int32 SCSI::getUsbIndexToBus(int32 index) { return wiringOf(index)._bus; }

int32 SCSI::getUsbIndexToPort(int32 index) { return wiringOf(index)._port; }

int32 SCSI::getUsbIndexToSubPort(int32 index) { return wiringOf(index)._subPort; }

int32 SCSI::diskNumberToStorageGroupId(int32 diskNumber)
{
    if (diskNumber < 0 || diskNumber >= MAX_SUPPORTED_DISK_COUNT)
        return toSigned(toUnsigned(diskNumber) & 1);
    return DISK_NUMBER_TO_STORAGE_GROUP_ID[diskNumber];
}

bool SCSI::isHostAddressRange(int32 hostIf, const Address& address)
{
    switch (hostIf) {
    case HOST_IF_SATA:
    case HOST_IF_ESATA:
        return isIn(HOST_ADDRESS_RANGES[hostIf], address);
    case HOST_IF_USB:
        return HOST_ADDRESS_RANGES[HOST_IF_USB][0] <= address;
    default:
        J3_REPORT("false", "NOT supported HOST_IFCE!", SOURCE);
        return false;
    }
}

bool SCSI::getAddress(const char* dev, Address* out)
{
    return attempt("SCSI::getAddress", [&] {
        require(out, "invalid input parameters");
        requireDeviceName(dev);
        const J3String name(dev);
        const std::string revisionPath = pathOf(L"/sys/block/%@/device/rev", &name);
        std::string revision;
        const int error = readFirstLine(revisionPath.c_str(), MAX_LINE_SIZE, &revision) ? 0 : errno;
        auto address = parseScsiAddress(requireLink(pathOf(L"/sys/block/%@", &name)));
        if (!address)
            return false;
        const Address(&eSata)[2] = HOST_ADDRESS_RANGES[HOST_IF_ESATA];
        if (address->_host >= eSata[0]._host && address->_host <= eSata[1]._host) {
            errno = error;
            requireCall(error == 0 || isAbsent(), "can't read the file", revisionPath);
            if (revision == BRIDGE_REVISION)
                address->_channel = toSigned(toUnsigned(address->_channel) - 1);
        }
        *out = *address;
        return true;
    });
}

bool SCSI::isSataHddStorage(const char* dev) { return isStorageAt("SCSI::isSataHddStorage", HOST_IF_SATA, dev); }

bool SCSI::isESataHddStorage(const char* dev)
{
    return attempt("SCSI::isESataHddStorage",
                   [&] { return IS_ESATA_SUPPORT && isStorageAt("SCSI::isESataHddStorage", HOST_IF_ESATA, dev); });
}

bool SCSI::isUsbStorage(const char* dev) { return isStorageAt("SCSI::isUsbStorage", HOST_IF_USB, dev); }

int32 SCSI::getSataHost(const char* dev)
{
    return attemptOr("SCSI::getSataHost", -1, [&] {
        Address address;
        return getAddress(dev, &address) ? address._host : -1;
    });
}

bool SCSI::getDiskNumber(const char* dev, int32* number)
{
    return attempt("SCSI::getDiskNumber", [&] {
        require(number, "invalid input parameters");
        Address address;
        if (!getAddress(dev, &address))
            return false;
        if (isHostAddressRange(HOST_IF_SATA, address))
            *number =
                toSigned(toUnsigned(address._channel) - SATA_CHNL_BEGIN + toUnsigned(address._host) * SATA_CHNL_COUNT);
        else if (isHostAddressRange(HOST_IF_ESATA, address))
            *number = toSigned(eSataDiskNumber(address));
        else
            *number = address._host;
        return true;
    });
}

bool SCSI::getPortNumber(const char* dev, int32* port)
{
    return attempt("SCSI::getPortNumber", [&] {
        require(port, "invalid input parameters");
        Address address;
        if (!getAddress(dev, &address))
            return false;
        if (isHostAddressRange(HOST_IF_SATA, address))
            *port = toSigned(toUnsigned(address._host) * SATA_CHNL_COUNT - SATA_CHNL_BEGIN + toUnsigned(SATA_PORT_0) +
                             toUnsigned(address._channel));
        else if (isHostAddressRange(HOST_IF_ESATA, address))
            *port = toSigned(toUnsigned(ESATA_PORT_0) + eSataDiskNumber(address));
        else
            return false;
        return true;
    });
}

bool SCSI::getPortStatus(int32 port, bool* present)
{
    return attempt("SCSI::getPortStatus", [&] {
        require(port >= 0 && present, "invalid input parameters");
        require(port < ESATA_PORT_0, "is not an internal SATA port");
        const Address disk(toSigned(toUnsigned(port) - toUnsigned(SATA_PORT_0)), 0, 0, 0);
        *present = isLink(pathOf(L"/sys/class/scsi_disk/%d:%d:%d:%d", disk._host, disk._channel, disk._id, disk._lun));
    });
}

int32 SCSI::sataLinkType(int32 link)
{
    return attemptOr("SCSI::sataLinkType", 0, [&] {
        const int32 number = toSigned(toUnsigned(link) + 1);
        const std::string line = requireLine(pathOf(L"/sys/class/ata_link/link%d/sata_spd", number), MAX_LINE_SIZE);
        return line.starts_with("3.0") ? 2 : line.starts_with("1.5") ? 1 : 0;
    });
}

bool SCSI::getSataModel(const char* dev, char* model)
{
    return attempt("SCSI::getSataModel", [&] {
        require(dev && model, "invalid input parameters");
        const std::size_t length = std::strlen(dev);
        require(length >= SHORT_NAME_LENGTH, "is not the name of a block device", dev);
        const char* const name = dev + length - SHORT_NAME_LENGTH;
        requireDeviceName(name);
        putText(model, requireLine(pathOf(L"/sys/block/%s/device/model", name), MAX_LINE_SIZE), MAX_LINE_SIZE);
    });
}

uint32 SCSI::getSataDiskNumber(int32 index)
{
    return attemptOr("SCSI::getSataDiskNumber", NO_DISK, [&] {
        const J3String disk = J3String().format(L"/sys/class/scsi_disk/%d:0:0:0/device/block/sd", index);
        for (char letter = 'a'; letter <= 'z'; ++letter)
            if (isLink(pathOf(L"%@%c/device", &disk, letter)))
                return static_cast<uint32>(letter - 'a');
        return NO_DISK;
    });
}

int32 SCSI::getSataDiskInfoIndex(int32 index)
{
    return attemptOr("SCSI::getSataDiskInfoIndex", -1, [&] { return toSigned(getSataDiskNumber(index)); });
}

bool SCSI::isIdeHddPartitioned(const char* dev)
{
    return attempt("SCSI::isIdeHddPartitioned", [&] {
        requireDeviceName(dev);
        const SystemFile size(pathOf(L"/sys/block/%s/%s2/size", dev, dev));
        if (!size && isAbsent())
            return false;
        size.opened();
        return true;
    });
}

int32 SCSI::getSataHostBus(const char* dev)
{
    return attemptOr("SCSI::getSataHostBus", -1, [&] {
        Address address;
        if (!getAddress(dev, &address))
            return -1;
        const std::string path = pathOf(L"/sys/class/scsi_host/host%d/unique_id", address._host);
        const auto bus = wholeNumber<int32>(trimmed(requireLine(path, MAX_LINE_SIZE)));
        require(bus.has_value(), "is not a number", path);
        return *bus;
    });
}

uint64 SCSI::getUsbStorageSize(const char* dev, int32 partition)
{
    return attemptOr("SCSI::getUsbStorageSize", uint64{0}, [&] {
        requireDeviceName(dev);
        require(partition >= 0, "invalid input parameters");
        const std::string path = partition == 0 ? pathOf(L"%s/%s/size", BLOCK_DEVICE_PATH, dev)
                                                : pathOf(L"%s/%s/%s%d/size", BLOCK_DEVICE_PATH, dev, dev, partition);
        const auto sectors = wholeNumber<uint64>(trimmed(requireLine(path, MAX_LINE_SIZE)));
        require(sectors && *sectors <= std::numeric_limits<uint64>::max() / SECTOR_SIZE, "is not a size", path);
        return *sectors * SECTOR_SIZE;
    });
}

bool SCSI::getPciPath(int32 bus, char* path)
{
    return attempt("SCSI::getPciPath", [&] {
        require(path, "invalid input parameters");
        const std::string address = pathOf(L"0000:%02d:00.0", bus);
        putText(path, pathOf(L"%s/%s", PCI_DEVICE_PATH, address.c_str()), MAX_PATH_SIZE);
    });
}

bool SCSI::findSubDir(const char* path, const char* subString, int32 count, char* found)
{
    if (!J3_REQUIRE_ARGUMENT(path, SOURCE) || !J3_REQUIRE_ARGUMENT(subString, SOURCE) ||
        !J3_REQUIRE(count, "count is Zero!", SOURCE))
        return false;
    return attempt("SCSI::findSubDir", [&] {
        require(count > 0 && found, "invalid input parameters");
        std::vector<std::string> names;
        requireCall(listSystemDirectory(path, &names), "can't list the directory", path);
        const auto isBefore = [](const std::string& left, const std::string& right) {
            return left.size() != right.size() ? left.size() < right.size() : left < right;
        };
        const std::string* first = nullptr;
        for (const std::string& name : names)
            if (std::strncmp(name.c_str(), subString, static_cast<std::size_t>(count)) == 0 &&
                (!first || isBefore(name, *first)))
                first = &name;
        if (!first)
            return false;
        putText(found, *first, MAX_NAME_SIZE);
        return true;
    });
}

} // namespace Kivo
