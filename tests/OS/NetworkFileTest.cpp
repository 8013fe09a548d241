// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What is read from the kernel's files about interfaces: gateways, prefixes, counters, speeds, sockets.
#include "support/SystemTree.h"

#include "OS/System/Network.h"

#include <gtest/gtest.h>

using namespace Kivo;
using namespace K7Test;
using Network = K7SystemUtil::Network;

namespace {

constexpr const char* ROUTE_HEADING =
    "Iface\tDestination\tGateway \tFlags\tRefCnt\tUse\tMetric\tMask\t\tMTU\tWindow\tIRTT\n";
constexpr const char* DEV_HEADING =
    "Inter-|   Receive                                                |  Transmit\n"
    " face |bytes    packets errs drop fifo frame compressed multicast|bytes    packets errs drop fifo colls carrier "
    "compressed\n";
constexpr const char* ZEROS = "00000000000000000000000000000000";

J3String gatewayOf(const char* devName) { return Network::getDefaultGateway(devName).toString(); }

J3String gatewayV6Of(const char* devName) { return Network::getDefaultGatewayV6(devName).toString(); }

/// Why the operation that gave @p result failed.
J3String reason(bool result) { return result ? J3String(L"it answered") : K7SystemUtil::lastFailure().reason; }

std::string routeV6(const std::string& nextHop, const std::string& flags, const std::string& name)
{
    return std::string(ZEROS) + " 00 " + ZEROS + " 00 " + nextHop + " 00000400 00000001 00000000 " + flags + "     " +
           name + "\n";
}

} // namespace

TEST(NetworkFiles, ReadsACapturedBoard)
{
    const FixtureRoot board("virt-board");
    EXPECT_EQ(gatewayOf("eth0"), L"10.0.2.2");
    EXPECT_EQ(gatewayOf("eth1"), L"0.0.0.0");
    EXPECT_EQ(gatewayV6Of("eth1"), L"fe80::2");
    EXPECT_EQ(Network::getSubnetMaskV6("eth0").toString(), L"fec0::");
    EXPECT_EQ(Network::getSubnetMaskV6("lo").toString(), L"::1");

    int32 speed = 7;
    EXPECT_TRUE(Network::getEthernetLinkSpeed("eth0", &speed));
    EXPECT_EQ(speed, 7);
    EXPECT_TRUE(Network::getEthernetLinkSpeed("eth1", &speed));
    EXPECT_EQ(speed, 1000);

    Network::NetDevIoStat stat;
    ASSERT_TRUE(Network::getNetDevIoStat("eth1", &stat));
    EXPECT_STREQ(stat.devName, "eth1");
    EXPECT_EQ(stat.rx.bytes, 114U);
    EXPECT_EQ(stat.rx.multicast, 2U);
    EXPECT_EQ(stat.tx.bytes, 602U);
    EXPECT_EQ(stat.tx.packets, 7U);
}

TEST(NetworkFiles, AnswersNothingAboutTheRunningSystemUnderARoot)
{
    const FixtureRoot board("virt-board");
    K7IPv4Address ipv4;
    K7IPv6Address ipv6;
    K7MacAddress mac;
    J3String name;
    std::vector<J3String> addresses;
    bool on = false;
    for (const J3String& seen :
         {reason(Network::getIpAddress("lo", &ipv4)), reason(Network::getIpAddress("lo", &ipv6)),
          reason(Network::getSubnetMask("lo", &ipv4)), reason(Network::getMacAddress(&mac, "lo")),
          reason(Network::getNetworkLink("lo")), reason(Network::getEthernetLink("lo", &on)),
          reason(Network::getEthernetToolSG("lo", &on)), reason(Network::setEthernetToolSG("lo", on)),
          reason(Network::getAddrInfo(&addresses, L"127.0.0.1")), reason(Network::testConnectivity("lo", "::1", 1)),
          reason(Network::getHostName(&name, "lo"))})
        EXPECT_EQ(seen, L"needs the live system");
}

TEST(Gateway, TakesTheFirstDefaultRouteWithAGateway)
{
    const struct {
        const char* what;
        const char* lines;
        const char* devName;
        const wchar_t* gateway;
    } cases[] = {
        {"a name in the file begins the wanted one", "eth1\t0\t0100A8C0\t3\t0\t0\t0\t0", "eth10", L"192.168.0.1"},
        {"but not the other way round", "eth10\t0\t0100A8C0\t3\t0\t0\t0\t0", "eth1", L"0.0.0.0"},
        {"no gateway bit", "eth0\t00000000\t0100A8C0\t0001\t0\t0\t0\t00000000", "eth0", L"0.0.0.0"},
        {"other flags besides", "eth0\t00000000\t0100A8C0\t0207\t0\t0\t0\t00000000", "eth0", L"192.168.0.1"},
        {"a destination", "eth0\t00A8C000\t0100A8C0\t0003\t0\t0\t0\t00000000", "eth0", L"0.0.0.0"},
        {"a mask", "eth0\t00000000\t0100A8C0\t0003\t0\t0\t0\t000000FF", "eth0", L"0.0.0.0"},
        {"a short line before", "eth0\t0\t0200A8C0\t3\t0\t0\t0\neth0\t0\t0100A8C0\t3\t0\t0\t0\t0", "eth0",
         L"192.168.0.1"},
        {"no number", "eth0\tzero\t0200A8C0\t3\t0\t0\t0\t0", "eth0", L"0.0.0.0"},
        {"blanks for tabs", "  eth0 0 0100A8C0 3 0 0 0 0", "eth0", L"192.168.0.1"},
        {"the first of two", "eth0\t0\t0100A8C0\t3\t0\t0\t0\t0\neth0\t0\t0200A8C0\t3\t0\t0\t0\t0", "eth0",
         L"192.168.0.1"},
        {"nothing", "", "eth0", L"0.0.0.0"},
    };

    for (const auto& test : cases) {
        TemporaryTree tree;
        tree.file("/proc/net/route", std::string(ROUTE_HEADING) + test.lines + "\n");
        EXPECT_EQ(gatewayOf(test.devName), test.gateway) << test.what;
    }
}

TEST(Gateway, IsFoundBehindThousandsOfRoutes)
{
    TemporaryTree tree;
    std::string routes = ROUTE_HEADING;
    for (int i = 0; i < 5000; ++i)
        routes += "eth0\t0002000A\t00000000\t0001\t0\t0\t0\t00FFFFFF\t0\t0\t0" + std::string(70, ' ') + "\n";
    tree.file("/proc/net/route", routes + "eth0\t00000000\t0202000A\t0003\t0\t0\t0\t00000000\t0\t0\t0\n");
    EXPECT_EQ(gatewayOf("eth0"), L"10.0.2.2");
}

/// A line of more than 511 bytes counts as several: the 512th byte begins the next one.
TEST(Gateway, SeesALongLineAsItsPieces)
{
    const std::string route = "eth0\t0\t0100A8C0\t3\t0\t0\t0\t0\n";
    for (const auto& [filler, gateway] : {std::pair(511, L"192.168.0.1"), {510, L"0.0.0.0"}, {1022, L"192.168.0.1"}}) {
        TemporaryTree tree;
        tree.file("/proc/net/route", std::string(static_cast<std::size_t>(filler), 'x') + route);
        EXPECT_EQ(gatewayOf("eth0"), gateway) << filler;
    }
}

TEST(Gateway, ReadsIPv6Routes)
{
    const std::string hop = "fe800000000000000000000000000002";

    const struct {
        const char* what;
        std::string lines;
        const char* devName;
        const wchar_t* gateway;
    } cases[] = {
        {"a gateway", routeV6(hop, "00450003", "eth0"), "eth0", L"fe80::2"},
        {"a prefix of the name", routeV6(hop, "00450003", "eth1"), "eth10", L"fe80::2"},
        {"the name cut at eight bytes", routeV6(hop, "00450003", "enp0s31f6"), "enp0s31f6", L"fe80::2"},
        {"no gateway bit", routeV6(hop, "00450001", "eth0"), "eth0", L"::"},
        {"another device first", routeV6(ZEROS, "00000003", "wan") + routeV6(hop, "00000003", "eth0"), "eth0",
         L"fe80::2"},
        {"no digits", routeV6("fe80000000000000zz00000000000002", "00000003", "eth0"), "eth0", L"::"},
        {"a short line", routeV6(hop, "", ""), "eth0", L"::"},
    };

    for (const auto& test : cases) {
        TemporaryTree tree;
        tree.file("/proc/net/ipv6_route", test.lines);
        EXPECT_EQ(gatewayV6Of(test.devName), test.gateway) << test.what;
    }
}

TEST(SubnetMask, IsTheFirstIPv6AddressCutAtItsPrefix)
{
    const struct {
        const char* lines;
        const wchar_t* mask;
    } cases[] = {
        {"20010db8000100020003000400050006 02 40 00 80     eth1\n", L"2001:db8:1:2::"},
        {"20010db8000100020003000400050006 02 80 00 80     eth1\n", L"2001:db8:1:2:3:4:5:6"},
        {"20010db8000100020003000400050006 02 44 00 80     eth1\n", L"2001:db8:1:2::"},
        {"20010db8000100020003000400050006 02 00 00 80     eth1\n"
         "fe800000000000000000000000000001 02 0a 20 80     eth\n",
         L"fe80::"},
        {"20010db8000100020003000400050006 02 40 00 80     eth10\n", L"::"},
        {"20010db8 02 40 00 80     eth1\n", L"::"},
        {"20010db8000100020003000400050006 02 40\n", L"::"},
    };

    for (const auto& test : cases) {
        TemporaryTree tree;
        tree.file("/proc/net/if_inet6", test.lines);
        EXPECT_EQ(Network::getSubnetMaskV6("eth1").toString(), test.mask) << test.lines;
    }
}

TEST(Traffic, FillsEveryCounterFromItsColumn)
{
    TemporaryTree tree;
    tree.file("/proc/net/dev",
              std::string(DEV_HEADING) + "  eth0:18446744073709551615 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16\n");
    Network::NetDevIoStat stat;
    ASSERT_TRUE(Network::getNetDevIoStat("eth0", &stat));
    const auto& rx = stat.rx;
    const auto& tx = stat.tx;
    using Values = std::vector<uint64>;
    EXPECT_EQ((Values{rx.bytes, rx.packets, rx.errs, rx.drop, rx.fifo, rx.colls, rx.carrier, rx.frame, rx.compressed,
                      rx.multicast}),
              (Values{~0ULL, 2, 3, 4, 5, 0, 0, 6, 7, 8}));
    EXPECT_EQ((Values{tx.bytes, tx.packets, tx.errs, tx.drop, tx.fifo, tx.colls, tx.carrier, tx.frame, tx.compressed,
                      tx.multicast}),
              (Values{9, 10, 11, 12, 13, 14, 15, 0, 16, 0}));
}

TEST(Traffic, FindsTheLineOfTheInterface)
{
    const std::string counters = " 1 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0\n";

    const struct {
        const char* what;
        std::string text;
        const char* devName;
        bool found;
    } cases[] = {
        {"named as a heading", DEV_HEADING + std::string(" face:") + counters, "face", true},
        {"only a heading", "  eth0:" + counters + "  eth1:" + counters, "eth1", false},
        {"no prefix rule", DEV_HEADING + std::string("eth1:") + counters, "eth10", false},
        {"an alias's name ends at the first colon", DEV_HEADING + std::string("eth0:1:") + counters, "eth0:1", false},
        {"too few, then enough", DEV_HEADING + std::string("eth0: 7 8\neth0:") + counters, "eth0", true},
        {"fifteen values", DEV_HEADING + std::string("eth0: 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15\n"), "eth0", false},
        {"no colon", DEV_HEADING + std::string("eth0 ") + counters, "eth0", false},
        {"the last line without a line feed", DEV_HEADING + std::string("eth0:") + std::string(counters, 0, 32), "eth0",
         true},
        {"names compared over 31 bytes", DEV_HEADING + std::string(35, 'n') + ":" + counters,
         "nnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnZ", true},
        {"an empty file", "", "eth0", false},
    };

    for (const auto& test : cases) {
        TemporaryTree tree;
        tree.file("/proc/net/dev", test.text);
        Network::NetDevIoStat stat{"unchanged", {}, {}};
        EXPECT_EQ(Network::getNetDevIoStat(test.devName, &stat), test.found) << test.what;
        EXPECT_EQ(stat.rx.bytes, test.found ? 1U : 0U) << test.what;
        EXPECT_EQ(stat.devName, std::string(test.found ? std::string_view(test.devName).substr(0, 31) : "unchanged"))
            << test.what;
    }
}

TEST(Traffic, KeepsTheLowerHalfOfALargeErrorCount)
{
    TemporaryTree tree;
    tree.file("/proc/net/dev", std::string(DEV_HEADING) + "eth0: 1 2 3 4294967301 5 6 7 8 9 10 11 12 13 14 15 16\n");
    Network::NetDevIoStat stat;
    ASSERT_TRUE(Network::getNetDevIoStat("eth0", &stat));
    EXPECT_EQ(stat.rx.drop, 5U);
}

TEST(LinkSpeed, KnowsThreeSpeeds)
{
    const struct {
        const char* text;
        bool read;
        int32 speed;
    } cases[] = {{"10\n", true, 10},   {"100\n", true, 100}, {"1000\n", true, 1000}, {"1000 \r\n\n", true, 1000},
                 {"2500\n", true, 77}, {"-1\n", true, 77},   {"\n", true, 77},       {"010\n", true, 77},
                 {" 10\n", true, 77},  {"", false, 77}};

    for (const auto& test : cases) {
        TemporaryTree tree;
        tree.file("/sys/class/net/eth0/speed", test.text);
        int32 speed = 77;
        EXPECT_EQ(Network::getEthernetLinkSpeed("eth0", &speed), test.read) << test.text;
        EXPECT_EQ(speed, test.speed) << test.text;
        EXPECT_FALSE(Network::getEthernetLinkSpeed("eth1", &speed));
    }
}

TEST(SocketCount, IsReadFromItsColumn)
{
    const struct {
        const char* text;
        int32 count;
    } cases[] = {{"sockets: used 123\nTCP: inuse 5\n", 123},
                 {"TCP: inuse 5\nsockets: used 7\n", 7},
                 {"sockets: used\nsockets: used 9\n", 0},
                 {"sockets:\n", 0},
                 {"sockets: used x\n", 0},
                 {"TCP: inuse 5\n", 0}};

    for (const auto& test : cases) {
        TemporaryTree tree;
        tree.file("/proc/net/sockstat", test.text);
        EXPECT_EQ(Network::getUsedSocketCount(), test.count) << test.text;
    }
    const TemporaryTree empty;
    EXPECT_EQ(Network::getUsedSocketCount(), 0);
}

TEST(NetworkArguments, AreCheckedBeforeAnythingElse)
{
    const TemporaryTree noFiles;
    K7IPv4Address ipv4;
    K7IPv6Address ipv6;
    bool on = false;
    uint8 bytes[6];
    Network::NetDevIoStat stat;
    std::vector<J3String> addresses;
    EXPECT_EQ(reason(Network::getIpAddress(nullptr, &ipv4)), L"invalid devName");
    EXPECT_EQ(reason(Network::getIpAddress("lo", static_cast<K7IPv6Address*>(nullptr))), L"invalid input parameters");
    EXPECT_EQ(reason(Network::getMacAddress(bytes, nullptr)), L"invalid devName");
    EXPECT_EQ(reason(Network::getNetDevIoStat("lo", &stat)), L"fopen() failed");
    EXPECT_EQ(K7SystemUtil::lastFailure().errorCode, ENOENT);
    for (const J3String& seen :
         {reason(Network::getSubnetMask("", &ipv4)), reason(Network::getNetDevIoStat("", &stat)),
          reason(Network::getNetworkLink("")), reason(Network::getEthernetLink("lo", nullptr)),
          reason(Network::getEthernetToolSG("lo", nullptr)), reason(Network::setEthernetToolSG(nullptr, true)),
          reason(Network::getMacAddress(static_cast<K7MacAddress*>(nullptr), "lo")),
          reason(Network::getAddrInfo(nullptr, L"::1")), reason(Network::getAddrInfo(&addresses, L"")),
          reason(Network::testConnectivity("lo", "::1", 0)), reason(Network::getHostName(nullptr, "lo"))})
        EXPECT_EQ(seen, L"invalid input parameters");
    for (const J3String& seen :
         {reason(Network::getGateway("", &ipv4)), reason(Network::getGateway(nullptr, &ipv6)),
          reason(Network::getGateway("lo", &ipv4)), reason(Network::getSubnetMask(nullptr, &ipv6)),
          reason(Network::getSubnetMask("lo", &ipv6)), reason(Network::getEthernetLinkSpeed("lo", nullptr)),
          reason(Network::updateIpAddress(nullptr, &on)), reason(Network::updateMacAddress(nullptr))})
        EXPECT_EQ(seen, L"");
    EXPECT_FALSE(Network::getSubnetMask(static_cast<const char*>(nullptr)).isValid());
    EXPECT_FALSE(Network::getDefaultGatewayV6(nullptr).isValid());
}

TEST(LinkLocalAddress, IsMadeOfTheHardwareAddress)
{
    const struct {
        const char* mac;
        const wchar_t* ipv4;
        const wchar_t* ipv6;
    } cases[] = {{"00:11:22:33:44:55", L"169.254.68.85", L"fe80::211:22ff:fe33:4455"},
                 {"02:00:00:00:00:00", L"169.254.0.0", L"fe80::ff:fe00:0"},
                 {"fe:0a:0b:0c:00:0d", L"169.254.0.13", L"fe80::fc0a:bff:fe0c:d"}};

    for (const auto& test : cases) {
        K7MacAddress mac;
        ASSERT_TRUE(mac.fromString(test.mac));
        EXPECT_EQ(Network::getDefaultLinkLocalAddressV4(nullptr, &mac).toString(), test.ipv4);
        EXPECT_EQ(Network::getDefaultLinkLocalAddressV6(nullptr, &mac).toString(), test.ipv6);
    }
    EXPECT_FALSE(Network::getDefaultLinkLocalAddressV4("no-such-device", nullptr).isValid());
}

TEST(MacAddress, IsValidUnlessZeroOrAGroups)
{
    const std::pair<const char*, bool> cases[] = {{"00:00:00:00:00:00", false},
                                                  {"ff:ff:ff:ff:ff:ff", false},
                                                  {"01:00:5e:00:00:01", false},
                                                  {"02:00:00:00:00:00", true},
                                                  {"00:11:22:33:44:55", true}};
    for (const auto& [text, valid] : cases) {
        K7MacAddress mac;
        ASSERT_TRUE(mac.fromString(text));
        EXPECT_EQ(Network::isValidMacAddress(mac), valid) << text;
    }
}
