// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The IPv4 and ICMP header codecs against packets whose bytes and checksums are known.
#include "support/RecordForms.h"

#include "Protocol/Network/K7IPv4Header.h"
#include "Protocol/Network/K7IcmpHeader.h"

#include <gtest/gtest.h>

#include <memory>
#include <random>

#include <arpa/inet.h>
#include <sys/resource.h>

using namespace Kivo;
using namespace K7Test;

namespace {

using Bytes = std::vector<uint8>;

// A UDP datagram's header from 192.168.0.1 to 192.168.0.199, whose checksum is 0xb861.
constexpr const char* IPV4_WIRE = "45000073000040004011b861c0a80001c0a800c7";
constexpr const char* ICMP_WIRE = "0800341d123400015f5e1000000f4240";

/// The checksum by its definition: big-endian words, one at a time, every carry taken back at once. In wire order.
std::string naiveChecksum(const Bytes& bytes)
{
    uint32 sum = 0;
    for (std::size_t i = 0; i < bytes.size(); i += 2) {
        sum += static_cast<uint32>(bytes[i] << 8 | (i + 1 < bytes.size() ? bytes[i + 1] : 0));
        if (sum > 0xFFFF)
            sum -= 0xFFFF;
    }
    const auto result = static_cast<uint16>(~sum);
    const uint8 wire[] = {static_cast<uint8>(result >> 8), static_cast<uint8>(result)};
    return hexOf(wire, sizeof wire);
}

std::string checksum(const Bytes& bytes)
{
    const uint16 result = K7IcmpHeader().calcChksum(bytes.data(), static_cast<uint32>(bytes.size()));
    EXPECT_EQ(K7IPv4Header().calcChksum(bytes.data(), static_cast<uint32>(bytes.size())), result);
    uint8 wire[2];
    std::memcpy(wire, &result, sizeof wire);
    return hexOf(wire, sizeof wire);
}

K7IPv4Header ipv4()
{
    const Bytes wire = bytesOf(IPV4_WIRE);
    return {wire.data(), K7_IPV4_HEADER_SIZE};
}

K7IcmpHeader icmp(const std::string& payload = "")
{
    const Bytes wire = bytesOf(ICMP_WIRE + payload);
    return {wire.data(), static_cast<uint32>(wire.size())};
}

/// The most memory that this process ever held.
long peakKilobytes()
{
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

std::vector<std::string> s_reports;

/// Collects what is reported as a violated precondition while it lives.
struct ReportedAssertions {
    ReportedAssertions()
    {
        s_reports.clear();
        J3AssertFunc::setHandler([](const J3String& expression, const J3String& message, const J3String& function,
                                    const J3String& path, int) {
            s_reports.push_back(J3String(expression + L"|" + message + L"|" + function + L"|" + path).to_string());
        });
    }

    ~ReportedAssertions() { J3AssertFunc::setHandler(nullptr); }
};

} // namespace

TEST(HeaderCodec, ChecksumsKnownPackets)
{
    EXPECT_EQ(checksum(bytesOf("0001f203f4f5f6f7")), "220d"); // the example of RFC 1071
    EXPECT_EQ(checksum(bytesOf("450000730000400040110000c0a80001c0a800c7")), "b861");
    EXPECT_EQ(checksum(bytesOf(IPV4_WIRE)), "0000");
    EXPECT_EQ(checksum(bytesOf("0001f203f4f5f6")), "2304"); // the odd byte is the first of its word
    EXPECT_EQ(checksum({}), "ffff");
    EXPECT_EQ(checksum({0, 0, 0}), "ffff");
    EXPECT_EQ(checksum({0xFF, 0xFF}), "0000");
    EXPECT_EQ(checksum({0xFF, 0xFF, 0xFF, 0xFF, 0, 1}), "fffe"); // both carries of the fold
}

TEST(HeaderCodec, ChecksumsEveryLengthAndAlignmentAsDefined)
{
    std::mt19937 random(7);
    Bytes pool(300);
    for (uint8& byte : pool)
        byte = static_cast<uint8>(random());
    for (std::size_t start = 0; start < 9; ++start)
        for (std::size_t length = 0; length < 260; ++length) {
            const Bytes bytes(pool.begin() + static_cast<long>(start),
                              pool.begin() + static_cast<long>(start + length));
            ASSERT_EQ(checksum(bytes), naiveChecksum(bytes)) << start << "+" << length;
            const uint16 inPlace = K7IcmpHeader().calcChksum(pool.data() + start, static_cast<uint32>(length));
            ASSERT_EQ(inPlace, K7IcmpHeader().calcChksum(bytes.data(), static_cast<uint32>(length)));
        }
    for (const std::size_t length : {131069U, 131074U, 1U << 20, (1U << 20) + 7}) { // around and beyond a 32-bit sum
        const Bytes bytes(length, 0xFF);
        EXPECT_EQ(checksum(bytes), naiveChecksum(bytes)) << length;
    }
}

TEST(HeaderCodec, CompilesAnEchoLikeTheWire)
{
    K7IcmpHeader header;
    header.setType(K7_ICMP_ECHO_REQUEST);
    header.setId(htons(0x1234));
    header.setSeqNum(htons(1));
    header.seTimestamp1(htonl(1600000000));
    header.seTimestamp2(htonl(1000000));
    header.setChksum(0x5555);
    header.setData(Bytes(1024, 0xAA));

    Bytes message(3000, 1);
    const uint8* const buffer = message.data();
    header.compileTo(&message);

    ASSERT_EQ(message.size(), 1024U);
    EXPECT_EQ(message.data(), buffer) << "the capacity of the destination is used";
    EXPECT_EQ(hexOf(message.data(), 16), ICMP_WIRE);
    EXPECT_EQ(Bytes(message.begin() + 16, message.end()), Bytes(1008, 0xAA));
    EXPECT_EQ(header.calcChksum(message.data(), 1024), 0);
    EXPECT_EQ(header.chksum(), 0x5555);
}

TEST(HeaderCodec, CompilesAnIPv4HeaderLikeTheWire)
{
    K7IPv4Header header;
    header.setVersionAndHdrLen(0x45);
    header.setLength(htons(0x73));
    header.setFragmentOffset(htons(MASK_DONT_FRAG_FLAG));
    header.setTtl(64);
    header.setProtocol(17);
    header.setSourceIp(inet_addr("192.168.0.1"));
    header.setDestIp(inet_addr("192.168.0.199"));
    header.setDataSize(K7_IPV4_HEADER_SIZE);
    Bytes message;
    header.compileTo(&message);
    EXPECT_EQ(hexOf(message.data(), message.size()), IPV4_WIRE);
}

TEST(HeaderCodec, ReportsWhatCannotBeCompiled)
{
    const ReportedAssertions reported;
    K7IPv4Header header;
    Bytes message{1, 2, 3};
    header.compileTo(nullptr);
    header.setDataSize(K7_IPV4_HEADER_SIZE - 1);
    header.compileTo(&message);
    EXPECT_EQ(header.calcChksum(nullptr, 4), 0xFFFF);
    EXPECT_EQ(message, (Bytes{1, 2, 3}));
    const std::string path = "Protocol/Network/K7HeaderWithData";
    EXPECT_EQ(s_reports, (std::vector<std::string>{
                             "dest|dest is Null!|compileTo|" + path,
                             "_data.size() >= HEADER_SIZE|_data is shorter than the header!|compileTo|" + path,
                             "bytes|bytes is Null!|calcChksum|" + path}));
}

TEST(HeaderCodec, VerifiesTheStoredChecksumAgainstTheSumOverAll)
{
    EXPECT_FALSE(ipv4().verifyChksum()) << "intact, so that the sum is 0 and the field is not";
    K7IPv4Header header = ipv4();
    header.setChksum(0);
    EXPECT_TRUE(header.verifyChksum());
    const Bytes zeroSum = bytesOf("00000000ffff00000000000000000000"); // carries 0, sums up to 0xffff
    EXPECT_TRUE(K7IcmpHeader(zeroSum.data(), 16).verifyChksum());
}

TEST(HeaderCodec, TakesEveryFieldFromItsPlaceOnTheWire)
{
    const Bytes wire = bytesOf("010203040506600708090a0b0c0d0e0f10111213");
    const K7IPv4Header header(wire.data(), 20);
    EXPECT_EQ(header.version(), 1);
    EXPECT_EQ(header.headerLength(), 0);
    EXPECT_EQ(header.tos(), 2);
    EXPECT_EQ(header.length(), htons(0x0304));
    EXPECT_EQ(header.id(), htons(0x0506));
    EXPECT_EQ(header.fragmentOffset(), htons(0x6007));
    EXPECT_EQ(header.ttl(), 8);
    EXPECT_EQ(header.protocol(), 9);
    EXPECT_EQ(header.chksum(), htons(0x0A0B));
    EXPECT_EQ(header.sourceAddress(), L"12.13.14.15");
    EXPECT_EQ(header.destAddress(), L"16.17.18.19");

    const K7IcmpHeader echo = icmp();
    EXPECT_EQ(echo.type(), K7_ICMP_ECHO_REQUEST);
    EXPECT_EQ(echo.code(), 0);
    EXPECT_EQ(echo.chksum(), htons(0x341D));
    EXPECT_EQ(echo.id(), htons(0x1234));
    EXPECT_EQ(echo.seqNum(), htons(1));
    EXPECT_EQ(echo.timeStamp1(), htonl(1600000000));
    EXPECT_EQ(echo.timeStamp2(), htonl(1000000));
}

TEST(HeaderCodec, KeepsTheHalvesOfTheFirstByteApart)
{
    K7IPv4Header header;
    header.setVersion(4);
    header.setHeaderLength(5);
    EXPECT_EQ(streamFormOf(header).substr(0, 2), "54");
    header.setVersion(0xF6);
    EXPECT_EQ(header.headerLength(), 5);
    EXPECT_EQ(header.version(), 6);
    header.setHeaderLength(0xF2);
    EXPECT_EQ(header.headerLength(), 2);
    EXPECT_EQ(header.version(), 6);
}

TEST(HeaderCodec, ReadsTheFragmentFieldAsStored)
{
    K7IPv4Header header;
    header.setFragmentOffset(0x4000 | 0x1234);
    EXPECT_TRUE(header.isDontFragment());
    EXPECT_FALSE(header.isMoreFragments());
    EXPECT_EQ(header.fragmentPosition(), 0x1234);
    header.setFragmentOffset(0xBFFF);
    EXPECT_FALSE(header.isDontFragment());
    EXPECT_TRUE(header.isMoreFragments());
    EXPECT_EQ(header.fragmentPosition(), 0x1FFF);
}

TEST(HeaderCodec, RefusesAMessageShorterThanTheHeader)
{
    const Bytes zeros(32, 0);
    K7IPv4Header network = ipv4();
    K7IcmpHeader echo = icmp();
    EXPECT_FALSE(network.copyFrom(zeros.data(), 19));
    EXPECT_FALSE(network.loadFrom(nullptr, 20));
    EXPECT_FALSE(echo.loadFrom(zeros.data(), 15));
    EXPECT_FALSE(echo.copyFrom(nullptr, 1024));
    EXPECT_EQ(network, ipv4());
    EXPECT_EQ(echo, icmp());
    EXPECT_EQ(K7IcmpHeader(zeros.data(), 15), K7IcmpHeader());

    EXPECT_TRUE(echo.loadFrom(zeros.data(), 32));
    EXPECT_EQ(echo.data(), zeros);
}

TEST(HeaderCodec, ComparesHeaderAndData)
{
    K7IcmpHeader other;
    other.copyFrom(icmp("aabb"));
    EXPECT_EQ(other, icmp("aabb"));
    EXPECT_NE(other, icmp("aabc"));
    other.setSeqNum(2);
    EXPECT_NE(other, icmp("aabb"));
    EXPECT_EQ(*std::unique_ptr<K7IcmpHeader>(other.clone()), other);
    other.makeInvalid();
    EXPECT_EQ(other, K7IcmpHeader());
    K7IPv4Header fresh;
    fresh.makeInvalid();
    EXPECT_GE(fresh.data().capacity(), K7_IPV4_HEADER_SIZE);
}

TEST(HeaderCodec, PrintsIPv4RawAndIcmpFromNetworkOrder)
{
    K7IPv4Header header;
    header.setVersionAndHdrLen(0x54);
    header.setTos(1);
    header.setLength(84);
    header.setId(65535);
    header.setFragmentOffset(0x4000);
    header.setTtl(64);
    header.setProtocol(1);
    header.setChksum(0xABC);
    header.setSourceIp(0x0100A8C0);
    header.setDestIp(0xFEDCBA98);
    EXPECT_EQ(header.toString(), L"{4,5,1,84,65535,16384,64,1,0x0ABC,0x0100A8C0,0xFEDCBA98}");
    EXPECT_EQ(icmp().toString(), L"{8,0,0x341d,0x1234,0x0001,0x5f5e1000,0x000f4240}");
}

TEST(HeaderCodec, HasOneStreamAndArchiveFormForEver)
{
    EXPECT_EQ(streamFormOf(icmp("aabb")), std::string(ICMP_WIRE) + "00000012" + ICMP_WIRE + "aabb");
    EXPECT_EQ(streamFormOf(ipv4()), std::string(IPV4_WIRE) + "00000014" + IPV4_WIRE);
    EXPECT_EQ(streamFormOf(K7IcmpHeader()), std::string(40, '0'));
    K7IcmpHeader header;
    header.setType(5);
    EXPECT_EQ(archiveFormOf(header), R"({"1":[5,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0],"2":0})");
    header.setData({7, 255});
    EXPECT_EQ(archiveFormOf(header), R"({"1":[5,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0],"2":2,"3":[7,255]})");
}

TEST(HeaderCodec, SurvivesItsFormsWholeAndCut)
{
    expectSurvivesItsForms(icmp("aabbcc"), icmp());
    expectSurvivesItsForms(K7IcmpHeader(), icmp());
    expectSurvivesItsForms(ipv4(), K7IPv4Header());
}

TEST(HeaderCodec, RefusesALengthBeyondTheStreamBeforeAllocating)
{
    const Bytes hostile = bytesOf(ICMP_WIRE + std::string("ffffffff") + ICMP_WIRE);
    J3MemoryStream stream(hostile.data(), static_cast<uint32>(hostile.size()));
    K7IcmpHeader header = icmp();
    const long before = peakKilobytes();
    EXPECT_THROW(header.deserializeFrom(&stream), J3RangeException);
    EXPECT_EQ(header, icmp());
    EXPECT_LT(peakKilobytes() - before, 64 * 1024);
}

TEST(HeaderCodec, RefusesAnArchiveThatContradictsItself)
{
    const std::string bytes16 = R"("1":[0,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15])";
    for (const std::string& items :
         {std::string(), std::string(R"("1":[0,1],"2":0)"), bytes16, bytes16 + R"(,"2":1)", bytes16 + R"(,"2":-1)",
          bytes16 + R"(,"2":3,"3":[1,2])", bytes16 + R"(,"2":4294967295,"3":[1])", bytes16 + R"(,"2":1,"3":[256])"}) {
        J3JsonArchive archive;
        ASSERT_TRUE(archive.fromJson("{" + items + "}"));
        K7IcmpHeader header = icmp("aabb");
        EXPECT_THROW(header.unarchiveFrom(&archive), J3RangeException) << items;
        EXPECT_EQ(header, icmp("aabb")) << items;
    }
}
