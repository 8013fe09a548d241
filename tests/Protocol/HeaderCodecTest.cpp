// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The IPv4 and ICMP header codecs against packets whose bytes and checksums are known.
#include "support/RecordForms.h"

#include "Protocol/Network/K7IPv4Header.h"
#include "Protocol/Network/K7IcmpHeader.h"

#include <arpa/inet.h>

using namespace Kivo;

using Bytes = std::vector<uint8>;

// A UDP datagram's header from 192.168.0.1 to 192.168.0.199, and an echo request's.
const Bytes IPV4_WIRE = {0x45, 0x10, 0,    0x73, 0x12, 0x34, 0x40, 0,    0x40, 17,
                         0xA6, 0x1D, 0xc0, 0xa8, 0,    1,    0xc0, 0xa8, 0,    0xc7};
const Bytes ICMP_WIRE = {8, 0, 0x34, 0x1d, 0x12, 0x34, 0, 1, 0x5f, 0x5e, 0x10, 0, 0, 0x0f, 0x42, 0x40};

TEST(HeaderCodec, ChecksumsAsDefined)
{
    const std::pair<Bytes, uint16> known[] = {
        {{0x00, 0x01, 0xf2, 0x03, 0xf4, 0xf5, 0xf6, 0xf7}, 0x220d}, // the example of RFC 1071
        {{0x00, 0x01, 0xf2, 0x03, 0xf4, 0xf5, 0xf6}, 0x2304},       // the odd byte is the first of its word
        {{0xFF, 0xFF, 0xFF, 0xFF, 0, 1}, 0xfffe},                   // both carries of the fold
        {IPV4_WIRE, 0},
    };
    for (const auto& [bytes, sum] : known)
        EXPECT_EQ(ntohs(k7InternetChecksum(bytes.data(), static_cast<uint32>(bytes.size()))), sum);
    const Bytes ones(260, 1);
    for (uint32 count = 0; count < ones.size(); ++count)
        EXPECT_EQ(ntohs(k7InternetChecksum(ones.data(), count)), 0xFFFF - 0x100 * ((count + 1) / 2) - count / 2)
            << count;
    const Bytes beyond32Bits(1'000'007, 0xFF);
    EXPECT_EQ(ntohs(k7InternetChecksum(beyond32Bits.data(), 1'000'007)), 0x00FF);
}

TEST(HeaderCodec, CompilesAndPrintsAnEcho)
{
    K7IcmpHeader echo;
    echo.setType(K7_ICMP_ECHO_REQUEST);
    echo.setId(htons(0x1234));
    echo.setSeqNum(htons(1));
    echo.seTimestamp1(htonl(1600000000));
    echo.seTimestamp2(htonl(1000000));
    echo.setChksum(0x5555);
    echo.setData(Bytes(1024, 0xAA));
    Bytes message(3000, 1);
    echo.compileTo(&message);
    ASSERT_EQ(message.size(), 1024U);
    EXPECT_EQ(Bytes(message.begin(), message.begin() + 16), ICMP_WIRE);
    EXPECT_EQ(Bytes(message.begin() + 16, message.end()), Bytes(1008, 0xAA));
    EXPECT_EQ(echo.calcChksum(message.data(), 1024), 0);
    EXPECT_EQ(echo.toString(), L"{8,0,0x5555,0x1234,0x0001,0x5f5e1000,0x000f4240}") << "from network order";
}

TEST(HeaderCodec, CompilesAndPrintsAnIPv4Header)
{
    K7IPv4Header header;
    header.setHeaderLength(0xF4); // the halves of this class, not the wire's
    header.setVersion(0xF5);
    header.setTos(0x10);
    header.setLength(htons(0x73));
    header.setId(htons(0x1234));
    header.setFragmentOffset(htons(MASK_DONT_FRAG_FLAG));
    header.setTtl(64);
    header.setProtocol(17);
    header.setSourceIp(inet_addr("192.168.0.1"));
    header.setDestIp(inet_addr("192.168.0.199"));
    header.setDataSize(K7_IPV4_HEADER_SIZE);
    Bytes message;
    header.compileTo(&message);
    EXPECT_EQ(message, IPV4_WIRE);
    EXPECT_TRUE(header.loadFrom(message.data(), 20));
    EXPECT_EQ(header.toString(), L"{5,4,16,29440,13330,64,64,17,0x1DA6,0x0100A8C0,0xC700A8C0}") << "as stored";
    EXPECT_EQ(header.sourceAddress() + header.destAddress(), L"192.168.0.1192.168.0.199");
}

TEST(HeaderCodec, RefusesMessagesShorterThanTheHeaderAndCompilesToNoNull)
{
    K7IcmpHeader echo(ICMP_WIRE.data(), 16);
    EXPECT_FALSE(K7IPv4Header().copyFrom(IPV4_WIRE.data(), 19));
    EXPECT_FALSE(echo.loadFrom(nullptr, 16));
    EXPECT_FALSE(echo.copyFrom(IPV4_WIRE.data(), 15));
    EXPECT_EQ(echo, K7IcmpHeader(ICMP_WIRE.data(), 16));
    EXPECT_FALSE(echo.verifyChksum()) << "intact, so that the sum is 0 and the field is not";
    const Bytes zeroSum = {0, 0, 0, 0, 0xFF, 0xFF, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    EXPECT_TRUE(K7IcmpHeader(zeroSum.data(), 16).verifyChksum()) << "carries 0, sums up to 0";
    testing::internal::CaptureStderr();
    echo.compileTo(nullptr);
    EXPECT_NE(testing::internal::GetCapturedStderr().find("dest is Null!"), std::string::npos);
}

TEST(HeaderCodec, HasOneFormOfEachKindForEver)
{
    Bytes stored = ICMP_WIRE;
    stored.insert(stored.end(), {0, 0, 0, 18});
    stored.insert(stored.end(), ICMP_WIRE.begin(), ICMP_WIRE.end());
    stored.insert(stored.end(), {0xAA, 0xBB});
    const std::string wire = "[8,0,52,29,18,52,0,1,95,94,16,0,0,15,66,64";
    K7Test::expectForms(K7IcmpHeader(&stored[20], 18), stored,
                        R"({"1":)" + wire + R"(],"2":18,"3":)" + wire + ",170,187]}");
    K7Test::expectForms(K7IcmpHeader(), Bytes(20), R"({"1":[0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0],"2":0})");
}
