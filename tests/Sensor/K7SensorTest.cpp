// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Sensors in a chain, asked through their base.
#include "Sensor/K7Sensor.h"

#include <gtest/gtest.h>

using namespace Kivo;

namespace {

/// Counts its checks and reports each as an event of its own type.
class CountingSensor : public K7Sensor {
public:
    using K7Sensor::K7Sensor;

    bool isEnable() const override { return true; }

    K7Event check() override { return K7Event(static_cast<int32>(sensorType()), ++_checks); }

    void reset() override { _checks = 0; }

private:
    uint32 _checks = 0;
};

class RenamedSensor : public CountingSensor {
public:
    using CountingSensor::CountingSensor;

    uint32 id() const override { return 42; }
};

} // namespace

TEST(K7Sensor, HasAnIdentifierOrNone)
{
    EXPECT_FALSE(CountingSensor(2).isValid());
    EXPECT_TRUE(CountingSensor(2, 0).isValid());
    EXPECT_EQ(CountingSensor(2, 7).id(), 7U);
    EXPECT_EQ(CountingSensor(2, 7).toString(), L"K7Sensor");
}

TEST(K7Sensor, IsCheckedAlongItsChain)
{
    CountingSensor last(3, 1);
    RenamedSensor first(2, 0);
    first.setNextSensor(&last);
    std::vector<int32> types;
    for (int round = 0; round < 2; ++round)
        for (K7Sensor* sensor = &first; sensor; sensor = sensor->nextSensor())
            types.push_back(sensor->check().type());
    EXPECT_EQ(types, (std::vector<int32>{2, 3, 2, 3}));
    EXPECT_EQ(last.check().channel(), 3U);
    last.reset();
    EXPECT_EQ(last.check().channel(), 1U);
}

TEST(K7Sensor, ReportsItsHealthUnderItsOwnIdentifier)
{
    CountingSensor plain(2, 7);
    RenamedSensor renamed(2, 7);
    EXPECT_EQ(plain.checkHealth(1).channel(), 7U);
    EXPECT_EQ(renamed.checkHealth(1).channel(), 42U);
    EXPECT_FALSE(renamed.checkHealth(1).hasEvent());
}
