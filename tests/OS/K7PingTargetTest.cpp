// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What a network quality test pings: text and stored forms.
#include "OS/Network/Testing/K7PingTarget.h"

#include "support/RecordForms.h"

using namespace Kivo;

TEST(K7PingTarget, HasOneFormOfEachKindForEver)
{
    const K7InetAddress address(K7IPv4Address(0xC0A80001));
    K7PingTarget target;
    EXPECT_EQ(target.toString(), L"-1,");
    target.setAddress(address);
    target.setChannel(7);
    EXPECT_EQ(target.toString(), L"7,192.168.0.1");
    J3JsonArchive archive;
    address.archiveTo(&archive);
    const std::vector<uint8> bytes = {0, 0, 0, 7, 4, 192, 168, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    K7Test::expectForms(target, bytes, R"({"1":7,"2":)" + archive.toJson() + "}");
    target.makeInvalid();
    EXPECT_EQ(target, K7PingTarget());
}
