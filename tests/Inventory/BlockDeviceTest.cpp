// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Block devices of a captured board and of made trees.
#include "Inventory/BlockDevice.h"

#include "support/SystemTree.h"

#include "Inventory/detail/DiskstatsParser_p.h"

#include <gtest/gtest.h>

using namespace Kivo;
using namespace Kivo::Inventory;
using namespace K7Test;

TEST(BlockDevice, StatisticsOfEveryKernelAreTakenApart)
{
    DiskstatsParser rows("   8 0 sda 1 2 3 4 5 6 7 8 9 10 11\n"
                         "   8 1 sda1 1 2 3 4\n"
                         "junk\n"
                         " 259 0 nvme0n1 1 0 4294967296 0 0 0 0 0 0 0 0 0 0 0 0 0 0");
    DiskstatsRow row{};
    ASSERT_TRUE(rows.next(&row));
    EXPECT_EQ(row.name, "sda");
    EXPECT_EQ(row.traffic.reads, 1U);
    EXPECT_EQ(row.traffic.readBytes, 3U * 512);
    EXPECT_EQ(row.traffic.writes, 5U);
    EXPECT_EQ(row.traffic.writtenBytes, 7U * 512);
    EXPECT_EQ(row.traffic.busyTime, 10U);
    ASSERT_TRUE(rows.next(&row));
    EXPECT_EQ(row.name, "nvme0n1");
    EXPECT_EQ(row.traffic.readBytes, uint64{1} << 41U);
    EXPECT_FALSE(rows.next(&row));
}

TEST(BlockDeviceCaptured, TellsWhatTheBoardHas)
{
    const FixtureRoot board("virt-board");
    const auto listing = listBlockDevices();
    EXPECT_TRUE(listing.problems.empty());
    ASSERT_EQ(listing.records.size(), 3U);
    const BlockDevice& disk = listing.records[0];
    EXPECT_EQ(disk.name, "sda");
    EXPECT_EQ(disk.size, uint64{256} << 20U);
    EXPECT_EQ(disk.model, "BENCH HD 256");
    EXPECT_EQ(disk.removable, false);
    ASSERT_TRUE(disk.traffic);
    EXPECT_EQ(disk.traffic->readBytes, 4096U);
    EXPECT_EQ(listing.records[2].removable, true);
}

TEST(BlockDeviceCaptured, LeavesOutEmptyOnesAndRefusesImpossibleSizes)
{
    TemporaryTree tree;
    EXPECT_FALSE(listBlockDevices().known);
    tree.file("/sys/block/a-empty/size", "0\n").file("/sys/block/b-largest/size", "36028797018963967\n");
    tree.file("/sys/block/c-2^55/size", "36028797018963968\n").file("/sys/block/d-negative/size", "-1\n");
    tree.directory("/sys/block/e-none").file("/sys/block/cciss!c0d0/size", "2\n");
    tree.file("/proc/diskstats", "104 0 cciss/c0d0 1 0 2 0 0 0 0 0 0 1500 0\n");
    const auto listing = listBlockDevices();
    ASSERT_EQ(listing.records.size(), 5U);
    EXPECT_EQ(listing.records[0].size, 36028797018963967U * 512);
    EXPECT_EQ(listing.records[1].size, std::nullopt);
    ASSERT_TRUE(listing.records[2].traffic);
    EXPECT_EQ(listing.records[2].traffic->busyTime, 1500U);
    EXPECT_EQ(listing.records[3].size, std::nullopt);
    EXPECT_EQ(listing.records[4].size, std::nullopt);
    ASSERT_EQ(listing.problems.size(), 2U);
    EXPECT_EQ(listing.problems[0].subject, "/sys/block/c-2^55/size");
    EXPECT_EQ(listing.problems[1].subject, "/sys/block/d-negative/size");
}

TEST(BlockDeviceCaptured, AnEndlessModelIsCut)
{
    TemporaryTree tree;
    tree.file("/sys/sparse", "model");
    std::filesystem::resize_file(tree.real("/sys/sparse"), std::uintmax_t{8} << 40U);
    for (int disk = 10; disk < 70; ++disk) {
        const std::string top = "/sys/block/sd" + std::to_string(disk);
        tree.file(top + "/size", "2").link(top + "/device/model", "/sys/sparse");
    }
    const auto listing = listBlockDevices();
    ASSERT_EQ(listing.records.size(), 60U);
    ASSERT_TRUE(listing.records.back().model);
    EXPECT_EQ(listing.records.back().model->size(), 256U);
}
