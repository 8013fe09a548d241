// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Sensors of made machines.
#include "Inventory/Sensor.h"

#include "support/SystemTree.h"

#include "Inventory/detail/SensorParser_p.h"

#include <gtest/gtest.h>

using namespace Kivo;
using namespace Kivo::Inventory;
using namespace K7Test;

namespace {

/// A board with a thermal zone that a monitor shows once more, and a chip that an old driver keeps.
class Board {
public:
    Board()
    {
        const std::string zone = "/sys/class/thermal/thermal_zone0/";
        _tree.directory("/sys/class/thermal/cooling_device0")
            .file(zone + "type", "cpu-thermal\n")
            .file(zone + "temp", "45500\n")
            .file(zone + "trip_point_0_type", "passive\n")
            .file(zone + "trip_point_0_temp", "85000\n")
            .file(zone + "trip_point_1_type", "passive\n")
            .file(zone + "trip_point_1_temp", "75000\n")
            .file(zone + "trip_point_2_type", "critical\n")
            .file(zone + "trip_point_2_temp", "105000\n")
            .file(zone + "trip_point_3_type", "hot\n")
            .file(zone + "trip_point_3_temp", "-274000\n")
            .file("/sys/class/hwmon/hwmon0/name", "cpu_thermal\n")
            .file("/sys/class/hwmon/hwmon0/temp1_input", "45500\n")
            .link("/sys/class/hwmon/hwmon0/device", "../../thermal/thermal_zone0");
        for (const auto& [name, contents] : MONITOR)
            _tree.file(std::string("/sys/class/hwmon/hwmon10/") + name, contents);
        _tree.link("/sys/class/hwmon/hwmon2/device", "../../../devices/1-0048")
            .file("/sys/devices/1-0048/name", "lm75\n")
            .file("/sys/devices/1-0048/temp1_input", "31250\n");
    }

private:
    static constexpr std::pair<const char*, const char*> MONITOR[] = {
        {"name", "nct7802\n"},    {"temp10_input", "40000\n"},  {"temp2_input", "52125\n"}, {"temp2_label", "SoC\n"},
        {"temp2_max", "85000\n"}, {"temp2_crit", "95000\n"},    {"temp2_max_alarm", "0\n"}, {"temp2_crit_alarm", "1\n"},
        {"fan1_input", "2940\n"}, {"fan1_min", "1000\n"},       {"in3_input", "3312\n"},    {"in3_min", "3000\n"},
        {"in3_max", "3600\n"},    {"temp3_input", "-128000\n"}, {"temp3_fault", "1\n"},     {"intrusion0_alarm", "1\n"},
        {"pwm1", "128\n"},
    };
    TemporaryTree _tree;
};

} // namespace

TEST(SensorCaptured, ListsZonesThenMonitorsByTheirNumbers)
{
    const Board board;
    const auto listing = listSensors();
    EXPECT_TRUE(listing.known);
    EXPECT_TRUE(listing.problems.empty());
    std::vector<std::string> ids;
    for (const Sensor& sensor : listing.records)
        ids.push_back(sensor.id);
    EXPECT_EQ(ids, (std::vector<std::string>{"thermal_zone0", "hwmon2/temp1", "hwmon10/temp2", "hwmon10/temp3",
                                             "hwmon10/temp10", "hwmon10/fan1", "hwmon10/in3"}));
}

TEST(SensorCaptured, HasReadingsAndLimits)
{
    const Board board;
    const auto sensors = listSensors().records;
    ASSERT_EQ(sensors.size(), 7U);
    const Sensor& zone = sensors[0];
    EXPECT_EQ(zone.device, "cpu-thermal");
    EXPECT_EQ(zone.value, (Real{45.5, 1}));
    EXPECT_EQ(zone.passive, (Real{75, 1}));
    EXPECT_EQ(zone.high, std::nullopt);
    EXPECT_EQ(zone.critical, (Real{105, 1}));
    EXPECT_EQ(sensors[1].device, "lm75");
    EXPECT_EQ(sensors[1].value, (Real{31.25, 2}));
    const Sensor& chip = sensors[2];
    EXPECT_EQ(chip.label, "SoC");
    EXPECT_EQ(chip.value, (Real{52.125, 3}));
    EXPECT_EQ(chip.high, (Real{85, 1}));
    EXPECT_EQ(chip.critical, (Real{95, 1}));
    EXPECT_EQ(chip.alarm, true);
    EXPECT_EQ(sensors[3].value, std::nullopt); // nothing is connected
    EXPECT_EQ(sensors[4].alarm, std::nullopt);
    EXPECT_EQ(sensors[5].value, (Real{2940, 0}));
    EXPECT_EQ(sensors[5].low, (Real{1000, 0}));
    EXPECT_STREQ(sensors[5].unit, "rpm");
    EXPECT_EQ(sensors[6].value, (Real{3.312, 3}));
    EXPECT_EQ(sensors[6].high, (Real{3.6, 1}));
}

TEST(SensorCaptured, KeepsASensorThatCannotBeRead)
{
    TemporaryTree tree;
    tree.directory("/sys/class/hwmon/hwmon0/temp1_input").file("/sys/class/hwmon/hwmon0/temp2_input", "hot\n");
    tree.file("/sys/class/hwmon/hwmon0/temp3_input", "20000\n");
    const auto listing = listSensors();
    ASSERT_EQ(listing.records.size(), 3U);
    EXPECT_EQ(listing.records[0].value, std::nullopt);
    EXPECT_EQ(listing.records[2].value, (Real{20, 1}));
    ASSERT_EQ(listing.problems.size(), 2U);
    EXPECT_EQ(listing.problems[0].errorCode, EISDIR);
    EXPECT_EQ(listing.problems[1].reason, "is not a number");
}

TEST(SensorParser, OrdersDevicesByNumber)
{
    EXPECT_TRUE(standsBefore("hwmon9", "hwmon10"));
    EXPECT_FALSE(standsBefore("hwmon10", "hwmon9"));
    EXPECT_TRUE(standsBefore("temp1_crit", "temp1_input"));
    const auto name = parseNumberedName("trip_point_12_temp");
    ASSERT_TRUE(name.has_value());
    EXPECT_EQ(name->prefix, "trip_point_");
    EXPECT_EQ(name->number, 12U);
    EXPECT_EQ(name->suffix, "_temp");
    for (const char* text : {"", "name", "1temp", "temp99999999999_input"})
        EXPECT_FALSE(parseNumberedName(text)) << text;
}
