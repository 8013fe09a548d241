// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Which connector of the recorder a disk hangs on: storage on USB ports.
#include "OS/System/Platform/Linux/detail/ScsiLinkParser_p.h"
#include "OS/System/Platform/Linux/detail/Sysfs_p.h"
#include "OS/System/SCSI.h"
#include "OS/System/Shell.h"

namespace Kivo {

namespace {

using SCSI = K7SystemUtil::SCSI;

constexpr std::string_view HOST = "host";
constexpr std::string_view DISK = "sd";

/// Find an entry by the beginning of its name. @return an empty text when there is none
std::string entryOf(const char* directory, std::string_view begin)
{
    char name[SCSI::MAX_NAME_SIZE];
    const std::string text(begin);
    return SCSI::findSubDir(directory, text.c_str(), static_cast<int32>(text.size()), name) ? name : std::string();
}

/// The SCSI host that stands for one USB storage device.
struct UsbHost {
    std::string name;   ///< of the interface, "2-1:1.0"
    J3String directory; ///< of the interface, in the driver's directory
    int32 number;       ///< of the host
};

/// Find the host of the first interface whose name begins with @p begin.
bool findUsbHost(const std::string& begin, UsbHost* host)
{
    host->name = entryOf(SCSI::USB_STORAGE_PATH, begin);
    if (host->name.empty())
        return false;
    const std::string directory = pathOf(L"%s/%s", SCSI::USB_STORAGE_PATH, host->name.c_str());
    const std::string hostName = entryOf(directory.c_str(), HOST);
    if (hostName.empty())
        return false;
    host->directory = directory.c_str();
    host->number = leadingNumber<int32>(std::string_view(hostName).substr(HOST.size()));
    return true;
}

std::string portPrefix(int32 bus, int32 port) { return pathOf(L"%d-%d", bus, port); }

/// Read the attribute that @p format names of the device at an interface.
bool readUsbText(const wchar_t* format, int32 bus, int32 port, int32 subPort, char* text)
{
    require(bus >= 0 && port >= 0 && text, "invalid input parameters");
    UsbHost host;
    if (!findUsbHost(pathOf(L"%d-%d:%d.0", bus, port, subPort), &host))
        return false;
    const std::string path = pathOf(format, &host.directory, host.number, host.number, host.number);
    putText(text, requireLine(path, SCSI::MAX_LINE_SIZE), SCSI::MAX_LINE_SIZE);
    return true;
}

bool rescanUsbHost(const SCSI::UsbIndexToDev& dev)
{
    UsbHost host;
    if (dev._bus < 0 || dev._port < 0 || !findUsbHost(portPrefix(dev._bus, dev._port), &host))
        return false;
    require(isUsbName(host.name), "is not the name of a USB interface", host.name);
    const J3String path = J3String().format(L"%@/host%d/target%d:0:0/%d:0:0:0/rescan", &host.directory, host.number,
                                            host.number, host.number);
    return K7SystemUtil::Shell::runCommand(L"echo 1 > %@", &path) == 0;
}

} // namespace

bool SCSI::getUsbVersion(const char* dev, char* out, uint32 outSize)
{
    return attempt("SCSI::getUsbVersion", [&] {
        require(out && outSize > 1, "invalid input parameters");
        requireDeviceName(dev);
        const std::string target = requireLink(pathOf(L"/sys/block/%s", dev));
        const std::string usbDevice(parseUsbDevice(target));
        if (usbDevice.empty())
            return false;
        const uint32 size = std::min(outSize, MAX_LINE_SIZE);
        putText(out, requireLine(pathOf(L"/sys/bus/usb/devices/%s/version", usbDevice.c_str()), size), size);
        return true;
    });
}

bool SCSI::getUsbStoragePath(int32 bus, int32 port, int32 /*subPort*/, char* devPath)
{
    return attempt("SCSI::getUsbStoragePath", [&] {
        require(bus >= 0 && port >= 0 && devPath, "invalid input parameters");
        UsbHost host;
        if (!findUsbHost(portPrefix(bus, port), &host))
            return false;
        const std::string blocks =
            pathOf(L"%@/host%d/target%d:0:0/%d:0:0:0/block", &host.directory, host.number, host.number, host.number);
        const std::string disk = entryOf(blocks.c_str(), DISK);
        if (disk.empty())
            return false;
        putText(devPath, pathOf(L"/dev/%s", disk.c_str()), MAX_PATH_SIZE);
        return true;
    });
}

bool SCSI::getUsbStorageVendor(int32 bus, int32 port, int32 subPort, char* vendor)
{
    return attempt("SCSI::getUsbStorageVendor",
                   [&] { return readUsbText(L"%@/host%d/target%d:0:0/%d:0:0:0/vendor", bus, port, subPort, vendor); });
}

bool SCSI::getUsbStorageModel(int32 bus, int32 port, int32 subPort, char* model)
{
    return attempt("SCSI::getUsbStorageModel",
                   [&] { return readUsbText(L"%@/host%d/target%d:0:0/%d:0:0:0/model", bus, port, subPort, model); });
}

void SCSI::rescanUsb()
{
    const Operation operation("SCSI::rescanUsb"); // one port's failure does not keep it from the others
    for (int32 index = 0; index < MAX_SUPPORTED_USB_PORT_COUNT; ++index)
        attempt("SCSI::rescanUsb", [&] { return rescanUsbHost(USB_INDEX_TO_DEV[index]); });
}

bool SCSI::updateUsbDeviceInfo()
{
    return attempt("SCSI::updateUsbDeviceInfo", [] {
        std::vector<std::string> names;
        requireCall(listSystemDirectory(USB_DEVICE_INFO_PATH, &names), "can't list the directory",
                    USB_DEVICE_INFO_PATH);
        UsbPortNames ports;
        UsbIndexToDev dev;
        for (const std::string& name : names) {
            if (!ports.take(name, &dev))
                continue;
            const auto isAt = [&](int32 bus, int32 port) { return dev._bus == bus && dev._port == port; };
            if (isAt(1, 1))
                USB_INDEX_TO_DEV[0] = dev;
            else if (isAt(1, 2) || isAt(3, 1) || isAt(4, 1))
                USB_INDEX_TO_DEV[1] = dev;
        }
    });
}

} // namespace Kivo
