// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Block devices, and what was read from and written to them.
#include "Inventory/BlockDevice.h"

#include "Inventory/detail/DiskstatsParser_p.h"
#include "Inventory/detail/Source_p.h"

#include <algorithm>
#include <limits>
#include <map>

namespace Kivo::Inventory {

namespace {

constexpr const char* WHAT = "block devices";
constexpr const char* BLOCK_DIRECTORY = "/sys/block";

template <auto Member>
Value trafficValue(const BlockDevice& device)
{
    return device.traffic ? Value((*device.traffic).*Member) : Value();
}

template <auto Member>
constexpr Column<BlockDevice> counter(const char* key, const char* heading, const char* help, Unit unit = Unit::NONE,
                                      uint16 traits = PLAIN)
{
    return {{key, heading, help, unit, Align::RIGHT, static_cast<uint16>(COUNTER | traits)}, &trafficValue<Member>};
}

Value busySeconds(const BlockDevice& device)
{
    constexpr float64 MS_PER_SECOND = 1000;
    return device.traffic ? Value(Real{static_cast<float64>(device.traffic->busyTime) / MS_PER_SECOND, 3}) : Value();
}

constexpr Column<BlockDevice> COLUMNS[] = {
    column<&BlockDevice::name>({"name", "name", "The kernel's name of the device", Unit::NONE, Align::LEFT, IDENTITY}),
    column<&BlockDevice::size>({"size_bytes", "size", "Capacity of the device", Unit::BYTES, Align::RIGHT}),
    column<&BlockDevice::model>({"model", "model", "What the device calls itself"}),
    column<&BlockDevice::removable>({"removable", "removable", "Whether the medium can be taken out"}),
    column<&BlockDevice::readOnly>({"read_only", "read only", "Whether the device refuses to be written to"}),
    counter<&BlockTraffic::readBytes>("read_bytes", "read", "Bytes read since the start", Unit::BYTES),
    counter<&BlockTraffic::writtenBytes>("written_bytes", "written", "Bytes written since the start", Unit::BYTES),
    counter<&BlockTraffic::reads>("reads", "reads", "Read requests finished since the start", Unit::NONE, DETAIL),
    counter<&BlockTraffic::writes>("writes", "writes", "Write requests finished since the start", Unit::NONE, DETAIL),
    {{"busy_seconds", "busy", "Time with a request under way since the start", Unit::SECONDS, Align::RIGHT, COUNTER},
     &busySeconds},
};

using TrafficByName = std::map<std::string, BlockTraffic, std::less<>>;

TrafficByName readTraffic(Source& source)
{
    TrafficByName traffic;
    if (const auto diskstats = source.contents("/proc/diskstats")) {
        DiskstatsParser rows(*diskstats);
        for (DiskstatsRow row{}; rows.next(&row);)
            traffic.emplace(row.name, row.traffic);
    }
    return traffic;
}

std::optional<BlockTraffic> trafficOf(const TrafficByName& traffic, std::string name)
{
    std::replace(name.begin(), name.end(), '!', '/'); // a file name has no room for "cciss/c0d0"
    const auto found = traffic.find(name);
    return found == traffic.end() ? std::nullopt : std::optional(found->second);
}

/// The size in bytes. @return nothing when it cannot be read or exceeds 64 bits
std::optional<uint64> readSize(Source& source, const std::string& path)
{
    const auto sectors = source.number(path);
    if (!sectors)
        return std::nullopt;
    if (*sectors < 0 || static_cast<uint64>(*sectors) > std::numeric_limits<uint64>::max() / SECTOR_SIZE) {
        source.note("is not a possible size", 0, path);
        return std::nullopt;
    }
    return static_cast<uint64>(*sectors) * SECTOR_SIZE;
}

} // namespace

template <>
std::span<const Column<BlockDevice>> columns<BlockDevice>()
{
    return COLUMNS;
}

Listing<BlockDevice> listBlockDevices()
{
    Listing<BlockDevice> listing;
    Source source(WHAT, &listing.problems);
    const auto names = source.names(BLOCK_DIRECTORY);
    listing.known = names.has_value();
    if (!names)
        return listing;
    const TrafficByName traffic = readTraffic(source);
    for (const std::string& name : *names) {
        const std::string directory = std::string(BLOCK_DIRECTORY) + "/" + name;
        BlockDevice device;
        device.name = name;
        device.size = readSize(source, directory + "/size");
        if (device.size == uint64{0})
            continue;
        device.model = source.text(directory + "/device/model");
        device.removable = source.flag(directory + "/removable");
        device.readOnly = source.flag(directory + "/ro");
        device.traffic = trafficOf(traffic, name);
        listing.records.push_back(std::move(device));
    }
    return listing;
}

} // namespace Kivo::Inventory
