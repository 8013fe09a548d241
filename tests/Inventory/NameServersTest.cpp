// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Name servers and leases of made trees.
#include "Inventory/NameServers.h"

#include "support/SystemTree.h"

#include <gtest/gtest.h>

using namespace Kivo;
using namespace Kivo::Inventory;
using namespace K7Test;

TEST(NameServersCaptured, TellsWhichOnesTheResolverUses)
{
    TemporaryTree tree;
    tree.file("/etc/resolv.conf", "# nameserver 9.9.9.9\nnameserver 10.0.0.1\nnameserver fe80::1%eth0\n"
                                  "nameserver junk\nnameserver 10.0.0.2\nnameserver fd00::1\n");
    tree.file("/etc/resolv.conf.org", "nameserver 10.0.0.3\n").file("/var/nvr/udhcpc-wan.stat", "1\n");
    const auto reading = readNameServers();
    EXPECT_TRUE(reading.problems.empty());
    const NameServers& record = reading.record;
    EXPECT_EQ(record.file, "/etc/resolv.conf");
    ASSERT_TRUE(record.servers);
    ASSERT_EQ(record.servers->size(), 4U);
    EXPECT_EQ(record.servers->at(1).address, "fe80::1");
    EXPECT_EQ(record.servers->at(1).interface, "eth0");
    EXPECT_TRUE(record.servers->at(2).isUsed);
    EXPECT_FALSE(record.servers->at(3).isUsed) << "the fourth";
    EXPECT_EQ(record.ipv4First, "10.0.0.1");
    EXPECT_EQ(record.ipv4Second, "10.0.0.2");
    EXPECT_EQ(record.ipv6Second, "fd00::1");
    EXPECT_EQ(record.dhcpIpv4, "10.0.0.3");
    EXPECT_NE(record.wanLeased, std::nullopt);
    EXPECT_EQ(record.videoInputLeased, std::nullopt);
}

TEST(NameServersCaptured, NoFileIsNotNoServers)
{
    TemporaryTree tree;
    EXPECT_EQ(readNameServers().record.servers, std::nullopt);
    EXPECT_TRUE(readNameServers().problems.empty());
    tree.file("/etc/resolv.conf", "\n");
    ASSERT_TRUE(readNameServers().record.servers);
    EXPECT_TRUE(readNameServers().record.servers->empty());
    tree.file("/etc/resolv.conf.org", "").link("/var/nvr/udhcpc-vin.stat", "udhcpc-vin.stat");
    const auto reading = readNameServers();
    ASSERT_EQ(reading.problems.size(), 1U) << "a link to itself";
    EXPECT_EQ(reading.problems[0].subject, "/var/nvr/udhcpc-vin.stat");
}
