// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Address values: texts, masks, stored forms.
#include "Core/K7EthDevInfo.h"
#include "Core/K7InetAddress.h"
#include "Core/K7MacAddressFormatter.h"
#include "Foundation/J3MemoryStream.h"

#include <gtest/gtest.h>

using namespace Kivo;

namespace {

constexpr uint64 ALL = ~uint64{0};
const uint8 MAC[] = {0x00, 0x11, 0x22, 0xAA, 0xBB, 0xCC};

/// Both overloads take each text and write it as @p expected, or, without one, refuse it and change nothing.
template <class T>
void expectText(const T& before, const char* expected, std::initializer_list<const char*> texts)
{
    for (const char* text : texts) {
        T narrow = before;
        T wide = before;
        EXPECT_EQ(narrow.fromString(text), expected != nullptr) << text;
        EXPECT_EQ(wide.fromString(J3String(text)), expected != nullptr) << text;
        EXPECT_EQ(narrow, wide) << text;
        EXPECT_EQ(narrow.toString(), expected ? J3String(expected) : before.toString()) << text;
    }
    EXPECT_FALSE(T().fromString(static_cast<const char*>(nullptr)));
}

} // namespace

TEST(K7Addresses, TakeOneWholeTextOfTheirKind)
{
    const K7IPv4Address ipv4(0x01020304);
    expectText(ipv4, "255.255.255.0", {"255.255.255.0"});
    expectText(ipv4, nullptr,
               {"", "1.2.3", "1.2.3.4.5", "256.1.1.1", "1.2.3.4 ", "01.2.3.4", "0x7f.0.0.1", "\xEF\xBC\x91.2.3.4"});
    const K7IPv6Address ipv6(1, 2);
    expectText(ipv6, "fe80::211:22ff:fe33:4455", {"FE80:0:0:0:0211:22FF:FE33:4455"});
    expectText(ipv6, nullptr, {"", ":", "1::2::3", "1:2:3:4:5:6:7", "12345::", "fe80::1%lo", "::1/64", "1.2.3.4"});
    expectText(K7InetAddress(ipv4), "fe80::1", {"fe80::1"});
    expectText(K7InetAddress(ipv4), nullptr, {"", "10.0.0", "1:2"});
    const K7MacAddress mac(MAC);
    expectText(mac, "01:23:45:67:89:ab", {"01:23:45:67:89:aB", "01-23-45-67-89-AB"});
    expectText(mac, nullptr, {"", "01:23:45:67:89", "01:23:45:67:89:ab:cd", "01:23-45:67:89:ab", "01:23:45:67:89:-a"});
    EXPECT_FALSE(K7IPv4Address().fromString(J3String(std::wstring(L"1.2.3.5\0", 8))));
    EXPECT_FALSE(K7IPv4Address().set(192, 168, 256, 1) || K7IPv4Address().set(-1, 168, 0, 1));
}

TEST(K7IPv6Address, MasksAtEveryPrefixLength)
{
    const uint64 cases[][3] = {{0, 0, 0},       {1, ALL << 63, 0},     {64, ALL, 0}, {127, ALL, ALL << 1},
                               {128, ALL, ALL}, {UINT32_MAX, ALL, ALL}};
    for (const auto& [length, msb, lsb] : cases) {
        K7IPv6Address address(ALL, ALL);
        address.maskSubnet(static_cast<uint32>(length));
        EXPECT_EQ(address, K7IPv6Address(msb, lsb)) << length;
    }
}

TEST(K7InetAddress, RefusesToReadAnUnknownFamilyOrTwoAddresses)
{
    for (const auto& [family, lastByte] : {std::pair<uint8, uint8>{5, 0}, {4, 1}, {0, 0}}) {
        uint8 image[21] = {family, 10};
        image[20] = lastByte;
        J3MemoryStream stream(image, sizeof(image));
        K7InetAddress address;
        EXPECT_THROW(address.deserializeFrom(&stream), J3RangeException);
        EXPECT_EQ(address, K7InetAddress());
    }
}

TEST(K7MacAddressFormatter, WritesGroups)
{
    const K7MacAddress mac(MAC);
    EXPECT_EQ(K7MacAddressFormatter(L"-", true, 1, 99).formatAddress(mac), L"00-11-22-AA-BB-CC");
    EXPECT_EQ(K7MacAddressFormatter(L".", false, 2, 6).formatAddress(mac), L"0011.22aa.bbcc");
    EXPECT_EQ(K7MacAddressFormatter(L":", false, 0, 3).formatAddress(mac), L"001122");
}

TEST(K7EthDevInfo, GivesNarrowNamesOfWhatWasSetOrRead)
{
    K7EthDevInfo info;
    info.setDevName(L"eth0");
    EXPECT_FALSE(info.isValid());
    info.setIfceName(L"br\u00FC");
    J3MemoryStream stream;
    info.serializeTo(&stream);
    stream.moveTo(0);
    K7EthDevInfo read;
    read.deserializeFrom(&stream);
    EXPECT_TRUE(read == info && read.isValid());
    EXPECT_STREQ(read.ifceNameCStr(), "br\xC3\xBC");
}
