// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The PCI table of a captured board and of made trees, its order and its texts.
#include "OS/System/PCI.h"

#include "support/SystemTree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

using namespace Kivo;
using namespace K7Test;
using PCI = K7SystemUtil::PCI;
using DeviceInfo = PCI::DeviceInfo;
using Address = DeviceInfo::Address;

namespace {

constexpr int32 TABLE_SIZE = 16;

void addDevice(TemporaryTree* tree, const std::string& name, const std::string& vendor, const std::string& device)
{
    const std::string top = PCI::PCI_DEVICE_INFO_PATH + ('/' + name);
    tree->file(top + "/vendor", vendor).file(top + "/device", device);
}

/// The texts of the table's filled entries.
std::vector<std::string> table()
{
    std::vector<std::string> texts;
    for (int32 i = 0; i < TABLE_SIZE && PCI::getDeviceInfo(i).isValid(); ++i)
        texts.push_back(PCI::getDeviceInfo(i).toString().to_string());
    return texts;
}

} // namespace

TEST(PCI, ListsTheBoardThroughItsLinks)
{
    const FixtureRoot root("virt-board");
    PCI::init();
    const std::size_t descriptors = openDescriptors();
    ASSERT_TRUE(PCI::updatePciDeviceInfo());
    EXPECT_EQ(openDescriptors(), descriptors);
    EXPECT_EQ(table(),
              (std::vector<std::string>{"0000:00:00.0 1b360008", "0000:00:01.0 80862922", "0000:00:02.0 1b36000d",
                                        "0000:00:03.0 808610d3", "0000:00:04.0 1af41000", "0000:00:05.0 1af41009"}));
    EXPECT_EQ(PCI::getDeviceCount(0x8086, 0x10d3), 1);
    EXPECT_EQ(PCI::getDeviceCount(0x8086, 0x1000), 0);
    EXPECT_EQ(PCI::getDeviceCount(-1, -1), 10);
}

TEST(PCI, KeepsTheSixteenLowestAddresses)
{
    std::vector<std::string> names = {"0001:00:00.0"};
    for (const char* bus : {"00", "01", "ff"})
        for (const char* place : {"00.0", "00.7", "0a.0", "0b.1", "1f.0", "1f.2"})
            names.push_back(std::string("0000:") + bus + ':' + place);
    names.emplace_back("0001:02:00.0");
    ASSERT_EQ(names.size(), 20U);
    std::vector<std::string> expected = names;
    std::sort(expected.begin(), expected.end());
    expected.resize(TABLE_SIZE);
    for (std::string& name : expected)
        name += " 80861533";

    std::shuffle(names.begin(), names.end(), std::mt19937(7));
    TemporaryTree tree;
    for (const std::string& name : names)
        addDevice(&tree, name, "0x8086\n", "0x1533\n");
    ASSERT_TRUE(PCI::updatePciDeviceInfo());
    EXPECT_EQ(table(), expected);
    EXPECT_EQ(PCI::getDeviceCount(0x8086, 0x1533), TABLE_SIZE);
    EXPECT_EQ(PCI::getDeviceCount(-1, -1), 0);
}

TEST(PCI, SkipsEntriesThatDoNotParse)
{
    TemporaryTree tree;
    for (const char* name : {"slot", "0000:00:02", "0000:00:02.0.1", "0000:00:0g.0", "0000:00:-2.0", ":.:.",
                             "0000:00:02.0 ", "0000:00:02.ffffffffff"})
        addDevice(&tree, name, "0x8086\n", "0x1533\n");
    const char* const unreadable[] = {"", "\n", "0x", "garbage\n", "0xgarbage\n", "-1\n", "0xffffffffff\n"};
    char name[] = "0000:00:03.0";
    for (const char* contents : unreadable) {
        addDevice(&tree, name, contents, "0x1533\n");
        ++name[11];
    }
    tree.file("/sys/bus/pci/devices/0000:00:04.0/vendor", "0x8086\n");
    tree.directory("/sys/bus/pci/devices/0000:00:05.0/vendor").file("/sys/bus/pci/devices/0000:00:05.0/device", "1\n");
    tree.link("/sys/bus/pci/devices/0000:00:06.0", "../../../devices/gone");
    addDevice(&tree, "10000:e1:00.0", "8086\n", " 0x0A54 \n");
    addDevice(&tree, "0000:00:07.0", "0x0000", "0x0000");
    ASSERT_TRUE(PCI::updatePciDeviceInfo());
    EXPECT_EQ(table(), (std::vector<std::string>{"0000:00:07.0 00000000", "10000:e1:00.0 80860a54"}));
}

TEST(PCI, RefillsTheTableEveryTime)
{
    {
        TemporaryTree tree;
        addDevice(&tree, "0000:00:01.0", "0x8086\n", "0x1533\n");
        addDevice(&tree, "0000:00:02.0", "0x8086\n", "0x1533\n");
        PCI::rescan();
        EXPECT_EQ(PCI::getDeviceCount(0x8086, 0x1533), 2);
        std::filesystem::remove_all(tree.real("/sys/bus/pci/devices/0000:00:01.0"));
        PCI::rescan();
        EXPECT_EQ(table(), std::vector<std::string>{"0000:00:02.0 80861533"});
    }
    const TemporaryTree empty;
    EXPECT_FALSE(PCI::updatePciDeviceInfo());
    EXPECT_EQ(K7SystemUtil::lastFailure().operation, L"PCI::updatePciDeviceInfo");
    EXPECT_EQ(PCI::getDeviceCount(-1, -1), TABLE_SIZE);
}

TEST(PCI, GivesAnInvalidEntryForAnyOtherIndex)
{
    const FixtureRoot root("virt-board");
    ASSERT_TRUE(PCI::updatePciDeviceInfo());
    EXPECT_TRUE(PCI::getDeviceInfo(5).isValid());
    for (const int32 index : {6, 15, 16, -1, 2147483647, -2147483647 - 1})
        EXPECT_FALSE(PCI::getDeviceInfo(index).isValid()) << index;
}

TEST(PCIAddress, IsValidWithoutAnyMinusOne)
{
    EXPECT_TRUE(Address(0, 0, 0, 0).isValid());
    for (const Address& address :
         {Address(), Address(-1, 0, 0, 0), Address(0, -1, 0, 0), Address(0, 0, -1, 0), Address(0, 0, 0, -1)}) {
        EXPECT_FALSE(address.isValid());
        EXPECT_FALSE(DeviceInfo(address, 0, 0).isValid());
    }
    EXPECT_TRUE(DeviceInfo(Address(0, 0, 0, 0), 0, 0).isValid());
    EXPECT_FALSE(DeviceInfo(Address(0, 0, 0, 0), -1, 0).isValid());
    EXPECT_FALSE(DeviceInfo(Address(0, 0, 0, 0), 0, -1).isValid());
    EXPECT_FALSE(DeviceInfo().isValid());
}

TEST(PCIAddress, OrdersByDomainBusDeviceAndFunction)
{
    const Address ascending[] = {{0, 0, 0, 0}, {0, 0, 0, 7},   {0, 0, 1, 0}, {0, 0, 0x1f, 2},
                                 {0, 1, 0, 0}, {0, 255, 0, 0}, {1, 0, 0, 0}, {0xFFFF, 0, 0, 0}};
    for (const Address& left : ascending)
        for (const Address& right : ascending) {
            EXPECT_EQ(left < right, &left < &right) << left.toString().to_string();
            EXPECT_EQ(left <= right, &left <= &right);
            EXPECT_EQ(left > right, &left > &right);
            EXPECT_EQ(left >= right, &left >= &right);
            EXPECT_EQ(left == right, &left == &right);
            EXPECT_EQ(left != right, &left != &right);
        }
}

TEST(PCIAddress, ComparesOrderByThePackedKeyAndEqualityByAllFields)
{
    const Address low(0, 1, 2, 3);
    const Address aliases[] = {{0x10000, 1, 2, 3}, {0, 0x101, 2, 3}, {0, 1, 0x22, 3}, {0, 1, 2, 0xB}};
    for (const Address& alias : aliases) {
        EXPECT_FALSE(low < alias || low > alias);
        EXPECT_TRUE(low <= alias && low >= alias);
        EXPECT_TRUE(low != alias);
    }
}

TEST(PCIAddress, HasTheTextsOfTheKernel)
{
    EXPECT_EQ(Address(0, 0, 0x1f, 2).toString(), L"0000:00:1f.2");
    EXPECT_EQ(Address(0x10000, 0xe1, 0, 0).toString(), L"10000:e1:00.0");
    EXPECT_EQ(DeviceInfo(Address(0, 3, 0, 0), 0x8086, 0x1533).toString(), L"0000:03:00.0 80861533");
    EXPECT_EQ(DeviceInfo(Address(0, 3, 0, 0), 0x1, 0x2f).toString(), L"0000:03:00.0 0001002f");
}
