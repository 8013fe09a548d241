// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// PCI functions of a captured board and of made trees, and what their attributes mean.
#include "Inventory/PciFunction.h"

#include "support/SystemTree.h"

#include "Inventory/detail/PciParser_p.h"

#include <gtest/gtest.h>

#include <cerrno>

using namespace Kivo;
using namespace Kivo::Inventory;
using namespace K7Test;

TEST(PciFunction, ClassNamesGoFromTheParticularToTheGeneral)
{
    EXPECT_EQ(pciClassName(0x010601), "SATA controller");
    EXPECT_EQ(pciClassName(0x018000), "Storage controller");
    EXPECT_EQ(pciClassName(0x060400), "PCI bridge");
    EXPECT_EQ(pciClassName(0x068000), "Bridge");
    EXPECT_EQ(pciClassName(0x130000), "Class 19");
}

TEST(PciFunction, AnUnknownLinkHasNeitherWidthNorSpeed)
{
    EXPECT_EQ(parsePciLinkWidth("16\n"), 16U);
    EXPECT_EQ(parsePciLinkSpeed("8.0 GT/s PCIe\n"), 8.0);
    EXPECT_EQ(parsePciLinkSpeed("2.5 GT/s\n"), 2.5);
    for (const char* text : {"", "0", "255", "-1", "x4", "4 lanes", "99999999999"})
        EXPECT_EQ(parsePciLinkWidth(text), std::nullopt) << text;
    for (const char* text : {"", "Unknown", "Unknown speed", "8", "8.0 MT/s", "-1 GT/s", "inf GT/s", "1e999 GT/s"})
        EXPECT_EQ(parsePciLinkSpeed(text), std::nullopt) << text;
}

TEST(PciFunctionCaptured, TellsWhatTheBoardHas)
{
    const FixtureRoot board("virt-board");
    const auto listing = listPciFunctions();
    EXPECT_TRUE(listing.known);
    EXPECT_TRUE(listing.problems.empty());
    ASSERT_EQ(listing.records.size(), 6U);
    const PciFunction& bridge = listing.records[0];
    EXPECT_EQ(bridge.address, "0000:00:00.0");
    EXPECT_EQ(bridge.driver, std::nullopt);
    const PciFunction& network = listing.records[3];
    EXPECT_EQ(network.vendorId, "8086");
    EXPECT_EQ(network.deviceId, "10d3");
    EXPECT_EQ(network.subsystemDeviceId, "0000");
    EXPECT_EQ(network.className(), "Ethernet controller");
    EXPECT_EQ(network.driver, "e1000e");
    EXPECT_EQ(network.link.width, std::nullopt);
    EXPECT_EQ(network.interrupt, 27U);
}

TEST(PciFunctionCaptured, ListsThemAllAndKeepsTheOnesThatAreBroken)
{
    TemporaryTree tree;
    EXPECT_FALSE(listPciFunctions().known);
    EXPECT_TRUE(listPciFunctions().problems.empty());
    const std::string top = "/sys/bus/pci/devices/";
    for (int bus = 10; bus < 50; ++bus)
        tree.file(top + "0000:" + std::to_string(bus) + ":00.0/vendor", "0x8086\n");
    tree.file(top + "0000:99:00.0/vendor", "junk\n").directory(top + "0000:99:00.0/device");
    const auto listing = listPciFunctions();
    ASSERT_EQ(listing.records.size(), 41U);
    EXPECT_EQ(listing.records.front().vendorId, "8086");
    EXPECT_EQ(listing.records.back().vendorId, std::nullopt);
    ASSERT_EQ(listing.problems.size(), 2U);
    EXPECT_EQ(listing.problems[0].subject, top + "0000:99:00.0/vendor");
    EXPECT_EQ(listing.problems[1].subject, top + "0000:99:00.0/device");
}
