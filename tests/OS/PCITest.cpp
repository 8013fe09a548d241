// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The PCI table of a captured board and of made trees, its order and its texts.
#include "OS/System/PCI.h"

#include "support/SystemTree.h"

#include <gtest/gtest.h>

using namespace Kivo;
using namespace K7Test;
using PCI = K7SystemUtil::PCI;
using Texts = std::vector<std::string>;

namespace {

void addDevice(TemporaryTree* tree, const std::string& name, const std::string& vendor = "0x8086\n")
{
    const std::string top = PCI::PCI_DEVICE_INFO_PATH + ('/' + name);
    tree->file(top + "/vendor", vendor).file(top + "/device", "0x1533\n");
}

/// The texts of the table's filled entries.
Texts table()
{
    Texts texts;
    for (int32 i = 0; PCI::getDeviceInfo(i).isValid(); ++i)
        texts.push_back(PCI::getDeviceInfo(i).toString().to_string());
    return texts;
}

} // namespace

TEST(PCICaptured, ListsTheBoardThroughItsLinks)
{
    const FixtureRoot root("virt-board");
    const std::size_t descriptors = openDescriptors();
    ASSERT_TRUE(PCI::updatePciDeviceInfo());
    EXPECT_EQ(openDescriptors(), descriptors);
    EXPECT_EQ(table(), (Texts{"0000:00:00.0 1b360008", "0000:00:01.0 80862922", "0000:00:02.0 1b36000d",
                              "0000:00:03.0 808610d3", "0000:00:04.0 1af41000", "0000:00:05.0 1af41009"}));
    EXPECT_EQ(PCI::getDeviceCount(0x8086, 0x10d3), 1);
    EXPECT_EQ(PCI::getDeviceCount(-1, -1), 10);
    EXPECT_FALSE(PCI::getDeviceInfo(16).isValid());
    EXPECT_FALSE(PCI::getDeviceInfo(-1).isValid());
}

TEST(PCICaptured, KeepsTheSixteenLowestAddressesInOrder)
{
    TemporaryTree tree;
    addDevice(&tree, "0001:00:00.0");
    Texts expected;
    for (const std::string bus : {"0000:00:", "0000:01:", "0000:fe:", "0000:ff:"})
        for (const char* place : {"00.0", "00.7", "0a.0", "1f.2"}) {
            addDevice(&tree, bus + place);
            expected.push_back(bus + place + " 80861533");
        }
    PCI::rescan();
    EXPECT_EQ(table(), expected);
    std::vector<PCI::DeviceInfo> devices;
    ASSERT_TRUE(PCI::listDevices(&devices));
    ASSERT_EQ(devices.size(), 17U);
    EXPECT_EQ(devices.back().toString(), L"0001:00:00.0 80861533");
    std::filesystem::remove_all(tree.real(PCI::PCI_DEVICE_INFO_PATH));
    EXPECT_FALSE(PCI::updatePciDeviceInfo());
    EXPECT_EQ(table(), Texts());
}

TEST(PCICaptured, SkipsEntriesThatDoNotParse)
{
    TemporaryTree tree;
    for (const char* name : {"slot", "0:0:2", "0:0:2.0.1", "0:0:0g.0", "0:0:-2.0", "0:0:0.ffffffffff"})
        addDevice(&tree, name);
    std::string name = "0:0:3.0";
    for (const char* vendor : {"", "\n", "0x", "junk\n", "-1\n", "0xffffffffff\n", " 2F \n"}) {
        ++name.back();
        addDevice(&tree, name, vendor);
    }
    tree.directory("/sys/bus/pci/devices/0:0:5.0/vendor").link("/sys/bus/pci/devices/0:0:6.0", "../gone");
    ASSERT_TRUE(PCI::updatePciDeviceInfo());
    EXPECT_EQ(table(), Texts{"0000:00:03.7 002f1533"});
    std::vector<PCI::DeviceInfo> devices;
    ASSERT_TRUE(PCI::listDevices(&devices));
    ASSERT_EQ(devices.size(), 9U);
    EXPECT_EQ(devices[0]._vendorId, -1); // kept, with what could be read
    EXPECT_EQ(devices[0]._deviceId, 0x1533);
    EXPECT_EQ(K7SystemUtil::lastFailure().operation, L"");
}
