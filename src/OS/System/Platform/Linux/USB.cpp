// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// USB storage on the front panel.
#include "OS/System/USB.h"

#include "Base/UniqueFd_p.h"
#include "Core/K7SystemError.h"
#include "OS/System/DriverModule.h"
#include "OS/System/FS.h"
#include "OS/System/Platform/Linux/detail/KernelMessageParser_p.h"
#include "OS/System/Platform/Linux/detail/Sysfs_p.h"
#include "OS/System/Platform/Linux/detail/Text_p.h"
#include "OS/System/SCSI.h"
#include "OS/System/Shell.h"

#include <algorithm>

#include <linux/usbdevice_fs.h>
#include <sys/ioctl.h>
#include <sys/mount.h>

namespace Kivo {

namespace {

using FS = K7SystemUtil::FS;
using SCSI = K7SystemUtil::SCSI;
using USB = K7SystemUtil::USB;

constexpr const char* MOUNT_POINT = "/usbdisk";
constexpr int MOUNT_RETRIES = 5;
constexpr const char* ENUMERATION_FAILURES = "dmesg | tail -n 10 | grep \"unable to enumerate USB device\"";
constexpr std::size_t MAX_LOG_SIZE = 64U << 10U;

/// The printable ASCII characters of @p text without blanks at its ends.
J3String printable(std::string_view text)
{
    std::string kept;
    std::copy_if(text.begin(), text.end(), std::back_inserter(kept), [](char c) { return c >= ' ' && c <= '~'; });
    return toWide(trimmed(kept));
}

using ReadText = bool (*)(int32 bus, int32 port, int32 subPort, char* text);

/// A text of the device behind a port; empty when it cannot be read.
J3String textOfPort(int index, ReadText read)
{
    char text[SCSI::MAX_LINE_SIZE] = "";
    const bool isRead = read(USB::indexToBus(index), USB::indexToPort(index), USB::indexToSubPort(index), text);
    return isRead ? printable(text) : J3String();
}

J3String partitionPath(const J3String& disk, unsigned int number)
{
    return J3String().format(L"%@%d", &disk, static_cast<int32>(number));
}

bool mountTraced(const char* step, const J3String& device, int fsType, bool writable)
{
    const std::string path = device.to_string();
    const long flags = writable ? MS_MGC_VAL : MS_MGC_VAL | MS_RDONLY;
    if (FS::mount(path.c_str(), MOUNT_POINT, fsType, flags, nullptr, MOUNT_RETRIES))
        return true;
    K7SystemError::trace(step, errno);
    return false;
}

/// The hub's node: the root hub is its bus's first device.
std::string nodeOf(const UsbHub& hub)
{
    int32 device = 1;
    if (!hub.name.empty()) {
        const std::string path = pathOf(L"/sys/bus/usb/devices/%s/devnum", hub.name.c_str());
        const auto number = wholeNumber<int32>(trimmed(requireLine(path, SCSI::MAX_LINE_SIZE)));
        require(number.has_value(), "is not a device number", path);
        device = *number;
    }
    return pathOf(L"/dev/bus/usb/%03d/%03d", hub.bus, device);
}

} // namespace

constinit std::atomic<int32> USB::s_fsType{FS::FS_TYPE_NONE};

bool USB::getStorageInfo(int index, J3String* devPath, bool* usable, uint64* sizes)
{
    return attempt("USB::getStorageInfo", [&] {
        require(devPath, "devPath is null");
        *devPath = J3String();
        require(usable && sizes, "an output is null");
        std::fill_n(usable, FS::MAX_PARTITION_COUNT, false);
        std::fill_n(sizes, FS::MAX_PARTITION_COUNT, uint64{0});
        SCSI::updateUsbDeviceInfo();
        char path[SCSI::MAX_PATH_SIZE] = "";
        int fsType = FS::FS_TYPE_NONE;
        if (!SCSI::getUsbStoragePath(indexToBus(index), indexToPort(index), indexToSubPort(index), path) ||
            !FS::readPartitionInfo(path, usable, sizes, &fsType))
            return false;
        s_fsType = fsType;
        devPath->format(L"%s", path);
        return true;
    });
}

bool USB::getStorageDesc(int index, J3String* desc)
{
    return attempt("USB::getStorageDesc", [&] {
        require(desc, "desc is null");
        const J3String vendor = textOfPort(index, &SCSI::getUsbStorageVendor);
        const J3String model = textOfPort(index, &SCSI::getUsbStorageModel);
        if (vendor.isEmpty() && model.isEmpty()) {
            *desc = L"N/A";
            return false;
        }
        if (vendor.isEmpty() || model.isEmpty())
            desc->format(L"%@", vendor.isEmpty() ? &model : &vendor);
        else
            desc->format(L"%@ %@", &vendor, &model);
        return true;
    });
}

bool USB::start()
{
    return attempt("USB::start", [] {
        J3String disk;
        bool usable[FS::MAX_PARTITION_COUNT];
        uint64 sizes[FS::MAX_PARTITION_COUNT];
        for (int index = 0; index < static_cast<int>(SCSI::MAX_SUPPORTED_USB_PORT_COUNT); ++index)
            if (getStorageInfo(index, &disk, usable, sizes))
                return mountTraced("USB::start(1)", usable[0] ? partitionPath(disk, 1) : disk, s_fsType, true);
        return false;
    });
}

bool USB::start(int index, unsigned int partition, bool writable)
{
    return attempt("USB::start", [&] {
        J3String disk;
        bool usable[FS::MAX_PARTITION_COUNT];
        uint64 sizes[FS::MAX_PARTITION_COUNT];
        if (!getStorageInfo(index, &disk, usable, sizes)) {
            K7SystemError::trace("USB::start(2)", errno);
            return false;
        }
        const J3String device = partition == FS::MAX_PARTITION_COUNT ? disk : partitionPath(disk, partition + 1);
        return mountTraced("USB::start(3)", device, s_fsType, writable);
    });
}

void USB::finish()
{
    attempt("USB::finish", [] {
        s_fsType = FS::FS_TYPE_NONE;
        return FS::umount(MOUNT_POINT, 1);
    });
}

bool USB::checkExistence(const char* path)
{
    return attempt("USB::checkExistence", [path] {
        if (!start())
            return false;
        const bool exists = FS::checkExistence(path);
        finish();
        return exists;
    });
}

void USB::rescan() { SCSI::rescanUsb(); }

void USB::reloadDriver(int hcType)
{
    attempt("USB::reloadDriver", [hcType] {
        const char* const module = hcType == 1 ? "ohci_hcd" : hcType == 2 ? "ehci_hcd" : "xhci_hcd";
        const bool unloaded = DriverModule::unload(module);
        return DriverModule::load(module) && unloaded;
    });
}

bool USB::resetDevice(const char* usbDevNode)
{
    return attempt("USB::resetDevice", [usbDevNode] {
        const char* const path = usbDevNode ? usbDevNode : "";
        constexpr int FLAGS = O_WRONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
        const UniqueFd node(retried([path] { return ::open(path, FLAGS); }));
        if (!node) {
            const int error = errno;
            K7SystemError::trace("USB::resetDevice(2)", error);
            throw Reason{"open() failed", error, path};
        }
        static_cast<void>(retried([&] { return ::ioctl(node.get(), USBDEVFS_RESET); }));
    });
}

bool USB::resetLastErroredDevice()
{
    class MyCoutListener : public Shell::CoutListener {
    public:
        int32 channel() override { return _channel; }
        void setChannel(int32) override {}
        void resultChanged(const char* line, int32) override
        {
            if (line && _lines.size() < MAX_LOG_SIZE)
                _lines += std::string(trimmed(line)) + '\n';
        }
        [[nodiscard]] const std::string& lines() const { return _lines; }

    private:
        int32 _channel = 0;
        std::string _lines;
    };
    return attempt("USB::resetLastErroredDevice", [] {
        requireLiveSystem();
        MyCoutListener listener;
        Shell::runCommandEx(ENUMERATION_FAILURES, &listener);
        const auto hub = parseEnumerationFailure(listener.lines());
        return hub && resetDevice(nodeOf(*hub).c_str());
    });
}

int32 USB::indexToBus(int index) { return SCSI::getUsbIndexToBus(index); }

int32 USB::indexToPort(int index) { return SCSI::getUsbIndexToPort(index); }

int32 USB::indexToSubPort(int index) { return SCSI::getUsbIndexToSubPort(index); }

} // namespace Kivo
