// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The PCI functions of the machine.
#include "OS/System/PCI.h"

#include "OS/System/Platform/Linux/detail/Attempt_p.h"
#include "OS/System/Platform/Linux/detail/PciParser_p.h"
#include "OS/System/Platform/Linux/detail/SystemFile_p.h"

#include <algorithm>

namespace Kivo {

namespace {

using DeviceInfo = K7SystemUtil::PCI::DeviceInfo;

constexpr std::size_t IDENTIFIER_LINE_SIZE = 256;

int32 readIdentifier(const std::string& path)
{
    SystemFile file(path);
    char line[IDENTIFIER_LINE_SIZE - 1];
    return file ? parsePciIdentifier(file.readInto(line, sizeof line)) : -1;
}

struct Entry {
    DeviceInfo::Address address;
    std::string path;
};

std::vector<Entry> listEntries(const char* directory)
{
    std::vector<std::string> names;
    requireCall(listSystemDirectory(directory, &names), "can't list the directory", directory);
    std::vector<Entry> entries;
    for (const std::string& name : names)
        if (const DeviceInfo::Address address = parsePciAddress(name); address.isValid())
            entries.push_back({address, std::string(directory) + '/' + name});
    std::stable_sort(entries.begin(), entries.end(),
                     [](const Entry& left, const Entry& right) { return left.address < right.address; });
    return entries;
}

} // namespace

constinit DeviceInfo K7SystemUtil::PCI::INDEX_TO_PCI_DEVICE_INFO[MAX_DEVICE_COUNT];

bool DeviceInfo::Address::isValid() const { return _domain != -1 && _bus != -1 && _device != -1 && _function != -1; }

uint32 DeviceInfo::Address::key() const
{
    return static_cast<uint32>(_domain) << 16 | (static_cast<uint32>(_bus) & 255) << 8 |
           (static_cast<uint32>(_device) & 31) << 3 | (static_cast<uint32>(_function) & 7);
}

J3String DeviceInfo::Address::toString() const
{
    return J3String().format(L"%04x:%02x:%02x.%01x", _domain, _bus, _device, _function);
}

bool DeviceInfo::isValid() const { return _addr.isValid() && _vendorId != -1 && _deviceId != -1; }

J3String DeviceInfo::toString() const
{
    const J3String address = _addr.toString();
    return J3String().format(L"%@ %04x%04x", &address, _vendorId, _deviceId);
}

void K7SystemUtil::PCI::init() {}

bool K7SystemUtil::PCI::listDevices(std::vector<DeviceInfo>* devices)
{
    return attempt("PCI::listDevices", [devices] {
        require(devices, "devices is null");
        std::vector<DeviceInfo> found;
        for (const Entry& entry : listEntries(PCI_DEVICE_INFO_PATH))
            found.emplace_back(entry.address, readIdentifier(entry.path + "/vendor"),
                               readIdentifier(entry.path + "/device"));
        *devices = std::move(found);
    });
}

bool K7SystemUtil::PCI::updatePciDeviceInfo()
{
    return attempt("PCI::updatePciDeviceInfo", [] {
        std::fill(std::begin(INDEX_TO_PCI_DEVICE_INFO), std::end(INDEX_TO_PCI_DEVICE_INFO), DeviceInfo());
        std::vector<DeviceInfo> devices;
        const bool listed = listDevices(&devices);
        DeviceInfo* next = std::begin(INDEX_TO_PCI_DEVICE_INFO);
        for (const DeviceInfo& device : devices)
            if (device.isValid() && next != std::end(INDEX_TO_PCI_DEVICE_INFO))
                *next++ = device;
        return listed;
    });
}

void K7SystemUtil::PCI::rescan()
{
    attempt("PCI::rescan", [] { return updatePciDeviceInfo(); });
}

int32 K7SystemUtil::PCI::getDeviceCount(int32 vendorId, int32 deviceId)
{
    const auto isOfKind = [&](const DeviceInfo& device) {
        return device._vendorId == vendorId && device._deviceId == deviceId;
    };
    return static_cast<int32>(
        std::count_if(std::begin(INDEX_TO_PCI_DEVICE_INFO), std::end(INDEX_TO_PCI_DEVICE_INFO), isOfKind));
}

DeviceInfo K7SystemUtil::PCI::getDeviceInfo(int32 index)
{
    if (index < 0 || index >= MAX_DEVICE_COUNT)
        return {};
    return INDEX_TO_PCI_DEVICE_INFO[index];
}

} // namespace Kivo
