// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Temperatures, fans, voltages and currents, with their limits.
#include "Inventory/Sensor.h"

#include "Inventory/detail/NumberParser_p.h"
#include "Inventory/detail/SensorParser_p.h"
#include "Inventory/detail/Source_p.h"

#include <algorithm>
#include <cerrno>
#include <set>

namespace Kivo::Inventory {

namespace {

constexpr ColumnInfo value(const char* key, const char* heading, const char* help, uint16 traits = PLAIN)
{
    return {key, heading, help, Unit::NONE, Align::RIGHT, traits};
}

constexpr Column<Sensor> COLUMNS[] = {
    column<&Sensor::id>(
        {"id", "sensor", "Device and sensor as the kernel numbers them", Unit::NONE, Align::LEFT, IDENTITY}),
    column<&Sensor::device>({"device", "device", "Name that the device's driver gives it"}),
    column<&Sensor::label>({"label", "label", "What the sensor measures"}),
    column<&Sensor::kind>({"kind", "kind", "Whether it is a temperature, a fan, a voltage or a current"}),
    column<&Sensor::value>(value("value", "value", "Reading now", VOLATILE)),
    column<&Sensor::unit>({"unit", "unit", "Unit of the reading and of the limits"}),
    column<&Sensor::low>(value("low", "low", "Lowest reading that is in order")),
    column<&Sensor::passive>(value("passive", "passive", "Reading above which the system is slowed down to cool")),
    column<&Sensor::high>(value("high", "high", "Highest reading that is in order")),
    column<&Sensor::critical>(value("critical", "critical", "Reading at which damage threatens")),
    column<&Sensor::alarm>(
        {"alarm", "alarm", "Whether the device says that a limit is passed", Unit::NONE, Align::LEFT, VOLATILE}),
};

/// What a device answers while it has no reading: it is asleep, or no sensor is connected.
constexpr Source::Silent NO_READING = {EAGAIN, ENODATA, EINVAL, ENXIO};

std::optional<Real> smaller(const std::optional<Real>& left, const std::optional<Real>& right)
{
    return left && (!right || left->value <= right->value) ? left : right;
}

/// Reads every sensor into one listing.
class SensorReader {
public:
    SensorReader() : _source("sensors", &_listing.problems) {}

    Listing<Sensor> readAll()
    {
        const auto zones = devices("/sys/class/thermal", "thermal_zone");
        const auto monitors = devices("/sys/class/hwmon", "hwmon");
        _listing.known = zones || monitors;
        for (const std::string& zone : zones.value_or(Names()))
            readZone(zone);
        for (const std::string& monitor : monitors.value_or(Names()))
            readMonitor(monitor, zones.has_value());
        return std::move(_listing);
    }

private:
    using Names = std::vector<std::string>;

    /// One kind of a hardware monitor's sensors.
    struct Kind {
        std::string_view prefix;
        const char* name;
        const char* unit;
        bool isThousandths;
    };
    static constexpr Kind KINDS[] = {
        {"temp", "temperature", "°C", true},
        {"fan", "fan", "rpm", false},
        {"in", "voltage", "V", true},
        {"curr", "current", "A", true},
    };

    /// The devices of a class in the order of their numbers; other devices share the directory.
    std::optional<Names> devices(const std::string& directory, std::string_view prefix)
    {
        auto names = _source.names(directory);
        if (!names)
            return std::nullopt;
        std::erase_if(*names, [&](const std::string& name) { return !name.starts_with(prefix); });
        std::sort(names->begin(), names->end(), standsBefore);
        return names;
    }

    std::optional<Real> reading(const std::string& path, bool isThousandths)
    {
        const auto number = _source.number(path, 10, NO_READING);
        if (!number)
            return std::nullopt;
        return isThousandths ? thousandths(*number, 1) : Real{static_cast<float64>(*number), 0};
    }

    void readZone(const std::string& zone);
    void readTrips(const std::string& directory, Sensor* sensor);
    void readMonitor(const std::string& monitor, bool hasZones);
    void readMonitored(const std::string& directory, const std::set<std::string>& attributes, const std::string& name,
                       const Kind& kind, Sensor* sensor);

    Listing<Sensor> _listing;
    Source _source;
};

// thermal_zone0/type "cpu-thermal", temp "45500", trip_point_0_type "passive", trip_point_0_temp "85000"
void SensorReader::readZone(const std::string& zone)
{
    if (!_source.hasRoomAfter(_listing.records.size(), "/sys/class/thermal"))
        return;
    const std::string directory = "/sys/class/thermal/" + zone + "/";
    Sensor sensor;
    sensor.id = zone;
    sensor.kind = KINDS[0].name;
    sensor.unit = KINDS[0].unit;
    sensor.device = _source.text(directory + "type");
    sensor.value = reading(directory + "temp", true);
    readTrips(directory, &sensor);
    _listing.records.push_back(std::move(sensor));
}

void SensorReader::readTrips(const std::string& directory, Sensor* sensor)
{
    for (const std::string& name : _source.names(directory).value_or(Names())) {
        const auto parts = parseNumberedName(name);
        if (!parts || parts->prefix != "trip_point_" || parts->suffix != "_type")
            continue;
        const auto type = _source.text(directory + name);
        const auto limit = reading(directory + "trip_point_" + std::to_string(parts->number) + "_temp", true);
        constexpr float64 ABSOLUTE_ZERO = -273.15;
        constexpr float64 MOST = 1000; // a trip that is switched off lies far outside
        if (!limit || limit->value <= ABSOLUTE_ZERO || limit->value > MOST)
            continue;
        if (type == "passive")
            sensor->passive = smaller(limit, sensor->passive);
        else if (type == "hot")
            sensor->high = smaller(limit, sensor->high);
        else if (type == "critical")
            sensor->critical = smaller(limit, sensor->critical);
    }
}

// hwmon1/name "nct7802", temp2_input "45500", temp2_label "SoC", temp2_max "85000", temp2_max_alarm "0"
void SensorReader::readMonitor(const std::string& monitor, bool hasZones)
{
    std::string directory = "/sys/class/hwmon/" + monitor + "/";
    auto names = _source.names(directory).value_or(Names());
    const bool isNamed = std::binary_search(names.begin(), names.end(), "name");
    const auto owner = _source.linkName(directory + "device");
    if (hasZones && owner && owner->starts_with("thermal_zone"))
        return;              // shows a thermal zone once more
    if (!isNamed && owner) { // old drivers keep the attributes at the device itself
        directory += "device/";
        names = _source.names(directory).value_or(Names());
    }
    const std::set<std::string> attributes(names.begin(), names.end());
    std::sort(names.begin(), names.end(), standsBefore);
    const auto device = _source.text(directory + "name");
    for (const Kind& kind : KINDS)
        for (const std::string& name : names) {
            const auto parts = parseNumberedName(name);
            if (!parts || parts->prefix != kind.prefix || parts->suffix != "_input")
                continue;
            if (!_source.hasRoomAfter(_listing.records.size(), "/sys/class/hwmon"))
                return;
            Sensor sensor;
            const std::string sensorName = name.substr(0, name.find('_'));
            sensor.id = monitor;
            sensor.id.append("/").append(sensorName);
            sensor.device = device;
            readMonitored(directory, attributes, sensorName, kind, &sensor);
            _listing.records.push_back(std::move(sensor));
        }
}

void SensorReader::readMonitored(const std::string& directory, const std::set<std::string>& attributes,
                                 const std::string& name, const Kind& kind, Sensor* sensor)
{
    const auto pathOf = [&](const char* item) {
        return attributes.contains(name + item) ? directory + name + item : std::string();
    };
    const auto limit = [&](const char* item) {
        const std::string path = pathOf(item);
        return path.empty() ? std::nullopt : reading(path, kind.isThousandths);
    };
    const auto flag = [&](const char* item) {
        const std::string path = pathOf(item);
        return path.empty() ? std::nullopt : _source.flag(path, NO_READING);
    };
    sensor->kind = kind.name;
    sensor->unit = kind.unit;
    if (const std::string path = pathOf("_label"); !path.empty())
        sensor->label = _source.text(path, NO_READING);
    if (!flag("_fault").value_or(false))
        sensor->value = limit("_input");
    sensor->low = limit("_min");
    sensor->high = limit("_max");
    sensor->critical = limit("_crit");
    for (const char* item : {"_alarm", "_min_alarm", "_max_alarm", "_crit_alarm"})
        if (const auto alarm = flag(item))
            sensor->alarm = sensor->alarm.value_or(false) || *alarm;
}

} // namespace

template <>
std::span<const Column<Sensor>> columns<Sensor>()
{
    return COLUMNS;
}

Listing<Sensor> listSensors() { return SensorReader().readAll(); }

} // namespace Kivo::Inventory
