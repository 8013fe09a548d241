// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Address values: texts, masks, order, stored forms.
#include "Core/K7EthDevInfo.h"
#include "Core/K7InetAddress.h"
#include "Core/K7MacAddressFormatter.h"
#include "Foundation/J3JsonArchive.h"
#include "Foundation/J3MemoryStream.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>

using namespace Kivo;

namespace {

const uint8 MAC[] = {0x00, 0x11, 0x22, 0xAA, 0xBB, 0xCC};

std::string textOf(const J3Object& object) { return object.toString().to_string(); }

template <class T>
T parsed(const char* text)
{
    T value;
    EXPECT_TRUE(value.fromString(text)) << text;
    return value;
}

/// Both overloads take @p text and give @p expected, or both refuse it and change nothing.
template <class T>
void expectText(const char* text, const char* expected, const T& before)
{
    T narrow = before;
    T wide = before;
    EXPECT_EQ(narrow.fromString(text), expected != nullptr) << text;
    EXPECT_EQ(wide.fromString(J3String(text)), expected != nullptr) << text;
    EXPECT_EQ(narrow, wide) << text;
    EXPECT_EQ(textOf(narrow), expected ? expected : textOf(before)) << text;
}

/// The stream form is @p bytes, both stored forms read back, and a cut stream changes nothing.
template <class T>
void expectStored(const T& value, const std::vector<uint8>& bytes, const char* json)
{
    J3MemoryStream stream;
    value.serializeTo(&stream);
    EXPECT_EQ(std::vector<uint8>(stream.buffer(), stream.buffer() + stream.size()), bytes);
    J3MemoryStream whole(bytes.data(), static_cast<uint32>(bytes.size()));
    T read;
    read.deserializeFrom(&whole);
    EXPECT_EQ(read, value);
    for (uint32 size = 0; size < bytes.size(); ++size) {
        J3MemoryStream cut(bytes.data(), size);
        T untouched;
        EXPECT_THROW(untouched.deserializeFrom(&cut), J3RangeException) << size;
        EXPECT_EQ(untouched, T()) << size;
    }
    J3JsonArchive archive;
    value.archiveTo(&archive);
    EXPECT_EQ(archive.toJson(), json);
    T unarchived;
    unarchived.unarchiveFrom(&archive);
    EXPECT_EQ(unarchived, value);
    J3JsonArchive empty;
    EXPECT_THROW(unarchived.unarchiveFrom(&empty), J3RangeException);
    EXPECT_EQ(unarchived, value);
}

} // namespace

TEST(K7IPv4Address, TakesDottedQuadsOnly)
{
    const K7IPv4Address before(0x01020304);
    for (const char* good : {"0.0.0.0", "127.0.0.1", "255.255.255.255", "10.20.30.40"})
        expectText(good, good, before);
    for (const char* bad : {"", "1.2.3", "1.2.3.4.5", "256.1.1.1", "1.2.3.4 ", " 1.2.3.4", "01.2.3.4", "1..3.4",
                            "0x7f.0.0.1", "2130706433", "1.2.3.-4", "localhost", "::1", "\xEF\xBC\x91.2.3.4",
                            "1.2.3.4                                                                    "})
        expectText(bad, nullptr, before);
    K7IPv4Address address = before;
    EXPECT_FALSE(address.fromString(static_cast<const char*>(nullptr)));
    EXPECT_FALSE(address.fromString(J3String(std::wstring(L"1.2.3.5\0", 8))));
    EXPECT_EQ(address, before);
}

TEST(K7IPv4Address, RefusesOctetsOutOfRange)
{
    K7IPv4Address address;
    EXPECT_FALSE(address.isValid());
    EXPECT_TRUE(address.set(192, 168, 0, 255));
    EXPECT_EQ(address.value(), 0xC0A800FFU);
    EXPECT_FALSE(address.set(192, 168, 256, 1));
    EXPECT_FALSE(address.set(-1, 168, 0, 1));
    EXPECT_EQ(textOf(address), "192.168.0.255");
}

TEST(K7IPv4Address, ConvertsToNetworkOrder)
{
    const K7IPv4Address address(0x0A000001);
    const uint32 network = address.networkValue();
    const uint8 bytes[] = {10, 0, 0, 1};
    EXPECT_EQ(std::memcmp(&network, bytes, sizeof(bytes)), 0);
    K7IPv4Address back;
    back.setNetworkValue(network);
    EXPECT_EQ(back, address);
}

TEST(K7IPv6Address, WritesWhatItTakesInTheShortestForm)
{
    const K7IPv6Address before(1, 2);
    const std::pair<const char*, const char*> good[] = {
        {"::", "::"},
        {"::1", "::1"},
        {"FE80:0:0:0:0211:22FF:FE33:4455", "fe80::211:22ff:fe33:4455"},
        {"2001:db8:0:0:1:0:0:1", "2001:db8::1:0:0:1"},
        {"1:2:3:4:5:6:7:8", "1:2:3:4:5:6:7:8"},
        {"::ffff:1.2.3.4", "::ffff:1.2.3.4"},
    };
    for (const auto& [text, expected] : good)
        expectText(text, expected, before);
    for (const char* bad : {"", ":", ":::", "1::2::3", "1:2:3:4:5:6:7", "1:2:3:4:5:6:7:8:9",
                            "12345::", "g::", "fe80::1%lo", "::1/64", "[::1]", " ::1", "1.2.3.4"})
        expectText(bad, nullptr, before);
}

TEST(K7IPv6Address, MasksAtEveryPrefixLength)
{
    constexpr uint64 ALL = ~uint64{0};

    const struct {
        uint32 length;
        uint64 msb, lsb;
    } cases[] = {{0, 0, 0},
                 {1, uint64{1} << 63, 0},
                 {63, ALL << 1, 0},
                 {64, ALL, 0},
                 {65, ALL, uint64{1} << 63},
                 {127, ALL, ALL << 1},
                 {128, ALL, ALL},
                 {129, ALL, ALL},
                 {UINT32_MAX, ALL, ALL}};

    for (const auto& [length, msb, lsb] : cases) {
        K7IPv6Address address(ALL, ALL);
        address.maskSubnet(length);
        EXPECT_EQ(address, K7IPv6Address(msb, lsb)) << length;
    }
}

TEST(K7IPv6Address, SetsTheHalfThatIsNamed)
{
    K7IPv6Address address;
    address.setValue64(0, 0xFE80000000000000);
    address.setValue64(1, 0x0123456789ABCDEF);
    address.setValue64(2, 7);
    address.setValue64(-1, 7);
    EXPECT_EQ(textOf(address), "fe80::123:4567:89ab:cdef");
    EXPECT_EQ(address.value64MSB(), 0xFE80000000000000);
    EXPECT_EQ(address.value64LSB(), 0x0123456789ABCDEFU);
    EXPECT_TRUE(address != K7IPv6Address());
    address.clear();
    EXPECT_FALSE(address.isValid());
}

TEST(K7InetAddress, PicksTheFamilyOfTheText)
{
    const auto ipv4 = parsed<K7InetAddress>("10.0.0.1");
    const auto ipv6 = parsed<K7InetAddress>("fe80::1");
    EXPECT_TRUE(ipv4.isIPv4() && !ipv4.isIPv6() && ipv4.isValid());
    EXPECT_TRUE(ipv6.isIPv6() && !ipv6.isIPv4() && ipv6.isValid());
    EXPECT_EQ(ipv4, K7InetAddress(K7IPv4Address(0x0A000001)));
    EXPECT_EQ(textOf(ipv6), "fe80::1");
    expectText("10.0.0", nullptr, ipv6);
    K7InetAddress address = ipv6;
    EXPECT_TRUE(address.fromString("10.0.0.1"));
    EXPECT_EQ(address, ipv4) << "the other family's address is gone";
    address.makeInvalid();
    EXPECT_EQ(address, K7InetAddress());
    EXPECT_EQ(textOf(address), "");
    EXPECT_FALSE(parsed<K7InetAddress>("0.0.0.0").isValid());
}

TEST(K7MacAddress, TakesSixPairsWithOneKindOfSeparator)
{
    const K7MacAddress before(MAC);
    expectText("01:23:45:67:89:aB", "01:23:45:67:89:ab", before);
    expectText("01-23-45-67-89-AB", "01:23:45:67:89:ab", before);
    for (const char* bad :
         {"", "01:23:45:67:89", "01:23:45:67:89:ab:cd", "01:23-45:67:89:ab", "0123456789ab", "1:23:45:67:89:ab",
          "01:23:45:67:89:ag", "01:23:45:67:89:-a", "01.23.45.67.89.ab", " 01:23:45:67:89:a"})
        expectText(bad, nullptr, before);
    EXPECT_TRUE(before.isValid());
    EXPECT_FALSE(parsed<K7MacAddress>("00:00:00:00:00:00").isValid());
}

TEST(K7MacAddressFormatter, WritesGroups)
{
    const K7MacAddress address(MAC);

    const struct {
        const wchar_t* separator;
        bool upperCase;
        uint32 perGroup, count;
        const char* expected;
    } cases[] = {{L":", false, 1, 6, "00:11:22:aa:bb:cc"},  {L"-", true, 1, 6, "00-11-22-AA-BB-CC"},
                 {L".", false, 2, 6, "0011.22aa.bbcc"},     {L":", false, 0, 6, "001122aabbcc"},
                 {L":", true, 4, 6, "001122AA:BBCC"},       {L":", false, 1, 3, "00:11:22"},
                 {L":", false, 1, 99, "00:11:22:aa:bb:cc"}, {L":", false, 1, 0, ""}};

    for (const auto& c : cases)
        EXPECT_EQ(textOf(K7MacAddressFormatter(c.separator, c.upperCase, c.perGroup, c.count).formatAddress(address)),
                  c.expected);
}

TEST(K7Addresses, AreOrderedAsNumbers)
{
    EXPECT_LT(parsed<K7IPv4Address>("9.255.255.255"), parsed<K7IPv4Address>("10.0.0.0"));
    EXPECT_LT(parsed<K7IPv4Address>("127.0.0.1"), parsed<K7IPv4Address>("128.0.0.0"));
    EXPECT_LT(parsed<K7IPv6Address>("::ffff:0:0:0:0"), parsed<K7IPv6Address>("0:0:1::"));
    EXPECT_LT(parsed<K7MacAddress>("00:ff:ff:ff:ff:ff"), parsed<K7MacAddress>("80:00:00:00:00:00"));
    EXPECT_LT(K7InetAddress(), parsed<K7InetAddress>("0.0.0.0"));
    EXPECT_LT(parsed<K7InetAddress>("255.0.0.0"), parsed<K7InetAddress>("::1"));
}

TEST(K7Addresses, KeepTheirStoredForms)
{
    expectStored(K7IPv4Address(0xC0A80001), {0xC0, 0xA8, 0x00, 0x01}, R"({"1":3232235521})");
    expectStored(K7IPv6Address(0xFE80000000000000, 1), {0xFE, 0x80, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1},
                 R"({"1":18338657682652659712,"2":1})");
    expectStored(K7MacAddress(MAC), {0x00, 0x11, 0x22, 0xAA, 0xBB, 0xCC}, R"({"1":[0,17,34,170,187,204]})");
    expectStored(parsed<K7InetAddress>("10.0.0.1"), {4, 10, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0},
                 R"({"1":4,"2":{"1":167772161},"3":{"1":0,"2":0}})");
    expectStored(parsed<K7InetAddress>("::1"), {6, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1},
                 R"({"1":6,"2":{"1":0},"3":{"1":0,"2":1}})");
}

TEST(K7InetAddress, RefusesToReadAnUnknownFamilyOrTwoAddresses)
{
    const std::vector<uint8> images[] = {{5, 10, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0},
                                         {4, 10, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1},
                                         {0, 10, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}};
    for (const auto& image : images) {
        J3MemoryStream stream(image.data(), static_cast<uint32>(image.size()));
        auto address = parsed<K7InetAddress>("::2");
        EXPECT_THROW(address.deserializeFrom(&stream), J3RangeException);
        EXPECT_EQ(textOf(address), "::2");
    }
}

TEST(K7EthDevInfo, GivesNarrowNamesOfWhatWasSetOrRead)
{
    K7EthDevInfo info;
    EXPECT_STREQ(info.devNameCStr(), "");
    info.setDevName(L"eth0");
    EXPECT_FALSE(info.isValid());
    info.setIfceName(L"br\u00FC");
    info.setIpv4Address(K7IPv4Address(0x0A000001));
    info.setMacAddress(K7MacAddress(MAC));
    EXPECT_TRUE(info.isValid());
    EXPECT_STREQ(info.ifceNameCStr(), "br\xC3\xBC");
    EXPECT_EQ(textOf(info), "eth0,br\xC3\xBC,10.0.0.1,::,00:11:22:aa:bb:cc");

    J3MemoryStream stream;
    info.serializeTo(&stream);
    stream.moveTo(0);
    K7EthDevInfo read;
    read.deserializeFrom(&stream);
    EXPECT_EQ(read, info);
    EXPECT_STREQ(read.devNameCStr(), "eth0");
    const std::unique_ptr<K7EthDevInfo> copy(read.clone());
    EXPECT_STREQ(copy->ifceNameCStr(), info.ifceNameCStr());
    copy->setDevName(L"eth1");
    EXPECT_LT(read, *copy);
}
