// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Messages of the routing socket, whole and broken.
#include "OS/System/Platform/Linux/detail/NetlinkParser_p.h"

#include <gtest/gtest.h>

using namespace Kivo;

namespace {

using namespace std::string_literals;

/// A number as the kernel lays it out.
template <class T>
std::string bytes(T value)
{
    return {reinterpret_cast<const char*>(&value), sizeof value};
}

std::string padded(std::string text) { return text.append((4 - text.size() % 4) % 4, '\0'); }

std::string attribute(uint16 type, const std::string& value)
{
    return padded(bytes<uint16>(static_cast<uint16>(4 + value.size())) + bytes(type) + value);
}

/// An ifinfomsg of interface 7 that is up, with IFLA_IFNAME, ADDRESS, MTU, OPERSTATE and CARRIER_CHANGES.
const std::string LINK = bytes<uint32>(0) + bytes<uint32>(7) + bytes<uint32>(0x1) + bytes<uint32>(0) +
                         attribute(3, "eth0\0"s) + attribute(1, "\x52\x54\0\x11\x22\x01"s) +
                         attribute(4, bytes<uint32>(1500)) + attribute(16, "\6") + attribute(35, bytes<uint32>(2));

/// An ifaddrmsg of interface 7, prefix length 24, link scope, with IFA_ADDRESS 10.0.0.2 and IFA_LOCAL 10.0.0.1.
const std::string ADDRESS =
    "\2\x18\0\xFD"s + bytes<uint32>(7) + attribute(1, "\x0A\0\0\2"s) + attribute(2, "\x0A\0\0\1"s);

std::string message(uint16 type, const std::string& payload)
{
    return padded(bytes(static_cast<uint32>(16 + payload.size())) + bytes(type) + bytes<uint16>(2) + bytes<uint64>(0) +
                  payload);
}

} // namespace

TEST(NetlinkParser, TakesALinkApart)
{
    const auto row = parseLink(LINK);
    ASSERT_TRUE(row);
    EXPECT_EQ(row->name, "eth0");
    EXPECT_EQ(row->index, 7U);
    EXPECT_EQ(row->flags, 1U);
    ASSERT_TRUE(row->macAddress);
    EXPECT_EQ(row->macAddress->bytes()[5], 1);
    EXPECT_EQ(row->mtu, 1500U);
    EXPECT_EQ(row->state, "up");
    EXPECT_EQ(row->carrierChanges, 2U);
    EXPECT_EQ(parseLink(LINK + attribute(16, "\7"))->state, std::nullopt) << "a state that has no name yet";
}

TEST(NetlinkParser, TakesTheOwnAddressOfAPointToPointLink)
{
    const auto row = parseAddressV4(ADDRESS);
    ASSERT_TRUE(row);
    EXPECT_EQ(row->address.value(), 0x0A000001U);
    EXPECT_EQ(row->index, 7U);
    EXPECT_EQ(row->prefixLength, 24U);
    EXPECT_EQ(row->scope, 0xFD);
    EXPECT_FALSE(parseAddressV4("\x0A"s + ADDRESS.substr(1))) << "of another family";
}

TEST(NetlinkParser, NothingIsTakenFromWhatIsCut)
{
    const std::size_t nameEnd = LINK.find("eth0") + 5;
    for (std::size_t size = 0; size < LINK.size(); ++size)
        EXPECT_EQ(parseLink(std::string(LINK, 0, size)).has_value(), size >= nameEnd) << size;
    for (std::size_t size = 0; size < ADDRESS.size(); ++size)
        EXPECT_FALSE(parseAddressV4(std::string(ADDRESS, 0, size))) << size;
    for (const uint16 length : {uint16{0}, uint16{3}, uint16{0xFFFF}})
        EXPECT_FALSE(parseLink(LINK.substr(0, 16) + bytes(length) + LINK.substr(18))) << length;
}

TEST(NetlinkParser, MessagesEndWithTheLastWholeOne)
{
    const std::string datagram = message(16, "12345") + message(3, "");
    for (std::size_t size = 0; size <= datagram.size(); ++size) {
        const std::string cut(datagram, 0, size);
        NetlinkMessages messages(cut);
        NetlinkMessage found;
        std::size_t count = 0;
        for (; messages.next(&found); ++count)
            EXPECT_EQ(found.type, count == 0 ? 16 : 3);
        EXPECT_EQ(count, size < 21 ? 0U : size < datagram.size() ? 1U : 2U) << size;
    }
}
