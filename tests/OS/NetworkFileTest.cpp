// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What is read from files about the network, and the resolver file as it is written.
#include "support/SystemTree.h"

#include "OS/System/Network.h"

#include <gtest/gtest.h>

#include <csignal>

#include <sys/resource.h>

using namespace Kivo;
using namespace K7Test;
using Network = K7SystemUtil::Network;

namespace {

/// A file's text, and what is answered about an interface.
struct Case {
    std::string text;
    J3String answer;
    std::string devName = "eth0";
};

void expectAnswers(const char* path, const std::vector<Case>& cases, J3String (*ask)(const char* devName))
{
    for (const Case& test : cases) {
        TemporaryTree tree;
        tree.file(path, test.text);
        EXPECT_EQ(ask(test.devName.c_str()), test.answer) << test.text;
    }
}

J3String countersOf(const char* devName)
{
    Network::NetDevIoStat stat;
    const auto& [rx, tx] = std::tie(stat.rx, stat.tx);
    if (!Network::getNetDevIoStat(devName, &stat))
        return L"none";
    return J3String().format(L"%s: %llu %llu %u %u %u %u %u %u %u %u, %llu %llu %u %u %u %u %u %u %u %u", stat.devName,
                             rx.bytes, rx.packets, rx.errs, rx.drop, rx.fifo, rx.colls, rx.carrier, rx.frame,
                             rx.compressed, rx.multicast, tx.bytes, tx.packets, tx.errs, tx.drop, tx.fifo, tx.colls,
                             tx.carrier, tx.frame, tx.compressed, tx.multicast);
}

constexpr const char* RESOLVER = "/etc/resolv.conf";
const std::string UNSET = "# nameserver not set";

/// The whole resolver file, given the lines of the first server of each family.
std::string rendered(const std::string& ipv4, const std::string& ipv6)
{
    return ipv4 +
           "\n# nameserver not set\n"
           "nameserver 8.8.8.8  ##< google IPv4 DNS1.\n"
           "nameserver 8.8.4.4  ##< google IPv4 DNS2.\n\n" +
           ipv6 +
           "\n# nameserver not set\n"
           "nameserver 2001:4860:4860::8888  ##< google IPv6 DNS1.\n"
           "nameserver 2001:4860:4860::8844  ##< google IPv6 DNS2.\n\n"
           "options timeout:1 attempts:2\n\n";
}

/// Why the operation that gave @p result failed.
J3String reason(bool result) { return result ? J3String(L"it answered") : K7SystemUtil::lastFailure().reason; }

} // namespace

TEST(NetworkCaptured, BoardAnswersFromItsFilesAlone)
{
    const FixtureRoot board("virt-board");
    K7IPv4Address ipv4;
    std::vector<J3String> addresses;
    EXPECT_EQ(Network::getDefaultGateway("eth0").toString(), L"10.0.2.2");
    EXPECT_EQ(Network::getDefaultGatewayV6("eth1").toString() + Network::getSubnetMaskV6("eth0").toString(),
              L"fe80::2fec0::");
    EXPECT_EQ(countersOf("eth1"), L"eth1: 114 1 0 0 0 0 0 0 0 2, 602 7 0 0 0 0 0 0 0 0");
    for (const J3String& seen :
         {reason(Network::getIpAddress("lo", &ipv4)), reason(Network::getNetworkLink("lo")),
          reason(Network::getAddrInfo(&addresses, L"::1")), reason(Network::testConnectivity("lo", "::1", 1))})
        EXPECT_EQ(seen, L"needs the live system");
}

TEST(NetworkCaptured, GatewayIsOfTheFirstDefaultRouteThatHasOne)
{
    const std::string route = "eth0\t00000000\t0100A8C0\t0003\t0\t0\t0\t00000000\t0\t0\t0\n";
    std::string thousands;
    for (int i = 0; i < 5000; ++i)
        thousands += "eth0\t0002000A\t00000000\t0001\t0\t0\t0\t00FFFFFF\t0\t0\t0" + std::string(70, ' ') + "\n";
    const std::vector<Case> cases = {
        {"Iface\tDestination\tGateway\tFlags\tRefCnt\tUse\tMetric\tMask\n" + thousands + route, L"192.168.0.1"},
        {"eth1\t0\t0100A8C0\t3\t0\t0\t0\t0", L"192.168.0.1", "eth10"},
        {"eth10\t0\t0100A8C0\t3\t0\t0\t0\t0", L"0.0.0.0", "eth1"},
        {"eth0\t00000000\t0200A8C0\t0001\t0\t0\t0\t00000000\n" + route, L"192.168.0.1"}, // no gateway bit
        {"eth0\t0000000A\t0200A8C0\t0003\t0\t0\t0\t00000000\n" + route, L"192.168.0.1"}, // a destination
        {"eth0\t00000000\t0200A8C0\t0003\t0\t0\t0\t000000FF\n" + route, L"192.168.0.1"}, // a mask
        {"eth0\t00000000\t0200A8C0\t0003\t0\t0\t0\n" + route, L"192.168.0.1"},           // too short
        {std::string(510, 'x') + route, L"0.0.0.0"},
        {std::string(511, 'x') + route, L"192.168.0.1"}, // a line of more than 511 bytes counts as several
    };
    expectAnswers("/proc/net/route", cases,
                  [](const char* name) { return Network::getDefaultGateway(name).toString(); });
}

TEST(NetworkCaptured, GatewayOfIPv6IsTheFirstNextHop)
{
    const std::string zeros(32, '0');
    const std::string route = zeros + " 00 " + zeros + " 00 fe800000000000000000000000000002 00000400 00000001 0 ";
    const std::vector<Case> cases = {
        {route + "00450003     eth1\n", L"fe80::2", "eth10"},
        {route + "00450003 enp0s31f6\n", L"fe80::2", "enp0s31f6"}, // the name is cut at eight bytes
        {route + "00450001     eth0\n" + route, L"::"},
        {zeros + " 00 " + zeros + " 00 " + zeros + " 0 1 0 3 wan\n" + route + "3 eth0\n", L"fe80::2"},
        {zeros + " 00 " + zeros + " 00 fe80000000000000zz00000000000002 0 1 0 3 eth0\n", L"::"},
    };
    expectAnswers("/proc/net/ipv6_route", cases,
                  [](const char* name) { return Network::getDefaultGatewayV6(name).toString(); });
}

TEST(NetworkCaptured, SubnetOfIPv6IsTheFirstAddressCutAtItsPrefix)
{
    const std::string address = "20010db8000100020003000400050006 1f4 "; // of interface 500
    const std::vector<Case> cases = {
        {address + "40 00 80     eth\n", L"2001:db8:1:2::"},
        {address + "00 00 80     eth0\nfe800000000000000000000000000001 02 0a 20 80 eth0\n", L"fe80::"},
        {address + "40 00 80     eth01\n", L"::"},
        {"20010db8 02 40 00 80     eth0\n", L"::"},
    };
    expectAnswers("/proc/net/if_inet6", cases,
                  [](const char* name) { return Network::getSubnetMaskV6(name).toString(); });
}

TEST(NetworkCaptured, TrafficIsThatOfTheLineOfTheInterface)
{
    const std::string heading = "Inter-|   Receive    |  Transmit\n face |bytes    packets |bytes\n";
    const std::string counters = "18446744073709551615 2 3 4294967300 5 6 7 8 9 10 11 12 13 14 15 16\n";
    const J3String answer = L": 18446744073709551615 2 3 4 5 0 0 6 7 8, 9 10 11 12 13 14 15 0 16 0";
    const std::vector<Case> cases = {
        {heading + "  eth0:" + counters, L"eth0" + answer},
        {heading + " face: " + counters, L"face" + answer, "face"},
        {"eth0:" + counters + "eth0:" + counters, L"none"}, // headings, whatever they say
        {heading + "eth1:" + counters, L"none", "eth10"},
        {heading + "eth0: 7 8\neth0:" + counters, L"eth0" + answer},
        {heading + std::string(35, 'n') + ":" + counters, J3String(std::string(31, 'n').c_str()) + answer,
         std::string(32, 'n')},
    };
    expectAnswers("/proc/net/dev", cases, countersOf);
}

TEST(NetworkCaptured, LinkSpeedsAreThree)
{
    const std::vector<Case> cases = {{"10\n", L"10"},   {"100\n", L"100"}, {"1000 \r\n\n", L"1000"},
                                     {"2500\n", L"77"}, {"-1\n", L"77"},   {"", L"unknown"}};
    expectAnswers("/sys/class/net/eth0/speed", cases, [](const char* devName) {
        int32 speed = 77;
        return Network::getEthernetLinkSpeed(devName, &speed) ? J3String().format(L"%d", speed) : L"unknown";
    });
}

TEST(NetworkCaptured, NameServersAreTakenFromLinesOfEveryShape)
{
    const std::vector<Case> cases = {
        {"nameserver 10.0.0.1\nnameserver 10.0.0.2\nnameserver 10.0.0.3\n", L"10.0.0.1 10.0.0.2 :: ::"},
        {"nameserver\t \t10.0.0.1\t# mine\r\nnameserver fd00::1", L"10.0.0.1 0.0.0.0 fd00::1 ::"},
        {"nameserver fe80::1%eth0\nnameserver ::g\nnameserver fd00::1\n", L"0.0.0.0 0.0.0.0 fe80::1 fd00::1"},
        {"# nameserver 10.0.0.1\n nameserver 10.0.0.2\nnameserver10.0.0.3\n", L"0.0.0.0 0.0.0.0 :: ::"},
        {"nameserver \nnameserver 10.0.0.256\nnameserver 10.1\n", L"10.0.0.1 0.0.0.0 :: ::"},
        {"nameserver " + std::string(256, '0') + "1\nnameserver 10.1\n", L"0.0.0.0 10.0.0.1 :: ::"}, // cut to zeros
        {std::string(19, '\n') + "nameserver 10.0.0.1\nnameserver 10.0.0.2\n", L"10.0.0.1 0.0.0.0 :: ::"},
    };
    expectAnswers(RESOLVER, cases, [](const char*) {
        const K7IPv4Address ipv4[] = {Network::getDnsIpAddress(0, true), Network::getDnsIpAddress(0, false)};
        const K7IPv6Address ipv6[] = {Network::getDnsIpAddressV6(0, true), Network::getDnsIpAddressV6(0, false)};
        return J3String().format(L"%@ %@ %@ %@", &ipv4[0], &ipv4[1], &ipv6[0], &ipv6[1]);
    });
}

TEST(NetworkCaptured, NameServersAreWrittenAndKept)
{
    TemporaryTree tree;
    const K7IPv4Address ipv4(0xC0A80001);
    Network::ResolverFile written;
    Network::setDnsIpAddress(ipv4);
    EXPECT_EQ(K7SystemUtil::lastFailure().operation, L"Network::setDnsIpAddress") << "there is no place for the file";
    EXPECT_EQ(K7SystemUtil::lastFailure().subject, RESOLVER);
    tree.directory("/var/nvr");
    EXPECT_TRUE(Network::writeResolverFile(&written));
    EXPECT_EQ(written.path, "/var/nvr/resolv.conf");
    EXPECT_EQ(written.errorCode, ENOENT);
    EXPECT_EQ(tree.contents("/var/nvr/resolv.conf"), rendered("nameserver 192.168.0.1", UNSET));

    tree.file(RESOLVER, std::string(5000, '#'));
    Network::setDnsIpAddress(K7IPv6Address(0xFD00000000000000, 0x53));
    EXPECT_EQ(tree.contents(RESOLVER), rendered("nameserver 192.168.0.1", "nameserver fd00::53"));
    Network::clearDnsIpAddress();
    EXPECT_EQ(tree.contents(RESOLVER), rendered(UNSET, "nameserver fd00::53"));
    EXPECT_EQ(Network::getDnsIpAddress(0, true).toString(), L"8.8.8.8");
    Network::clearDnsIpAddressV6();
    EXPECT_EQ(tree.contents(RESOLVER), rendered(UNSET, UNSET));
}

TEST(NetworkCaptured, NameServersAreListedWithTheirLines)
{
    TemporaryTree tree;
    std::vector<Network::NameServer> servers;
    std::string path;
    tree.file("/var/nvr/resolv.conf",
              "\n" + std::string(20000, '#') + "nameserver 10.9.9.9\n" + rendered(UNSET, UNSET));
    ASSERT_TRUE(Network::listNameServers(&servers, &path));
    EXPECT_EQ(path, "/var/nvr/resolv.conf");
    std::string lines;
    for (const Network::NameServer& server : servers)
        lines += std::to_string(server.line) + (server.isBuiltIn ? " built in, " : ", ");
    EXPECT_EQ(lines, "5 built in, 6 built in, 10 built in, 11 built in, ");
}

TEST(NetworkCaptured, NameServersOfTheOtherFamilyAreAdopted)
{
    TemporaryTree tree;
    tree.file(RESOLVER, "nameserver 10.0.0.1\nnameserver fd00::53\n" + rendered(UNSET, UNSET));
    EXPECT_TRUE(Network::adoptDnsIpAddresses());
    Network::setDnsIpAddress(K7IPv4Address(0xC0A80001));
    EXPECT_EQ(tree.contents(RESOLVER), rendered("nameserver 192.168.0.1", "nameserver fd00::53"));
    tree.file(RESOLVER, "nameserver 10.0.0.1\nnameserver 10.0.0.2\nnameserver 10.0.0.3\n");
    EXPECT_TRUE(Network::adoptDnsIpAddresses());
    Network::clearDnsIpAddressV6();
    EXPECT_EQ(Network::getDnsIpAddress(0, true).toString(), L"10.0.0.1");
    EXPECT_EQ(Network::getDnsIpAddress(0, false).toString(), L"10.0.0.2");
}

TEST(NetworkCaptured, ResolverFileOutlivesAFailedWrite)
{
    TemporaryTree tree;
    tree.file(RESOLVER, "nameserver 10.0.0.1\n");
    ::signal(SIGXFSZ, SIG_IGN);
    rlimit before{};
    ::getrlimit(RLIMIT_FSIZE, &before);
    const rlimit small{64, before.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &small);
    const bool written = Network::writeResolverFile();
    ::setrlimit(RLIMIT_FSIZE, &before);
    EXPECT_FALSE(written);
    EXPECT_EQ(K7SystemUtil::lastFailure().errorCode, EFBIG);
    EXPECT_EQ(K7SystemUtil::lastFailure().subject, RESOLVER);
    EXPECT_EQ(tree.contents(RESOLVER), "nameserver 10.0.0.1\n");
}

TEST(NetworkCaptured, InterfacesAreJoinedFromTheirFiles)
{
    TemporaryTree tree;
    std::vector<Network::Interface> found;
    const std::string counters = ":5000000000 2 4294967300 4 5 6 7 8 9 10 11 12 13 14 15 16\n";
    tree.file("/proc/net/dev", "heading:\nheading:\neth0" + counters + "eth1: 1 2\n");
    tree.file("/proc/net/if_inet6", "fe800000000000000000000000000001 1f4 40 20 80 eth0\n"
                                    "00000000000000000000000000000001 1f4 80 10 80 eth0\n"
                                    "fd000000000000000000000000000002 1f4 40 00 80 eth0\n"
                                    "fd000000000000000000000000000003 1f4 81 00 80 eth0\n");
    ASSERT_TRUE(Network::listInterfaces(&found));
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found[0].index, 500U);
    EXPECT_EQ(found[0].received->bytes, 5000000000U);
    EXPECT_EQ(found[0].received->errs, 4294967300U);
    std::vector<Network::AddressScope> scopes;
    for (const auto& address : *found[0].ipv6)
        scopes.push_back(address.scope);
    using enum Network::AddressScope;
    EXPECT_EQ(scopes, (std::vector{GLOBAL, LINK, HOST})) << "the wider scope comes first";
    EXPECT_FALSE(found[1].received) << "its line is cut";
    EXPECT_TRUE(found[1].ipv6->empty());

    std::string many = "heading\nheading\n";
    for (std::size_t i = 0; i <= Network::MAX_INTERFACES; ++i)
        many += "e" + std::to_string(i) + counters;
    tree.file("/proc/net/dev", many);
    EXPECT_FALSE(Network::listInterfaces(&found));
    EXPECT_EQ(found.size(), Network::MAX_INTERFACES);
}

TEST(NetworkCaptured, RoutesWithoutAPrefixAreLeftOut)
{
    TemporaryTree tree;
    std::vector<Network::Route> found;
    const std::string zeros(32, '0');
    tree.file("/proc/net/route", "Iface\tDestination\tGateway\tFlags\tRefCnt\tUse\tMetric\tMask\n"
                                 "eth0\t0000000A\t00000000\t0001\t0\t0\t0\t0000FFFF\t0\t0\t0\n"
                                 "eth0\t0000000A\t00000000\t0001\t0\t0\t0\t00FF00FF\t0\t0\t0\n");
    tree.file("/proc/net/ipv6_route", zeros + " 40 " + zeros + " 00 " + zeros + " 100 1 0 1 eth0.longname\n" + zeros +
                                          " 81 " + zeros + " 00 " + zeros + " 0 1 0 3 eth0\n");
    ASSERT_TRUE(Network::listRoutes(&found));
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found[0].prefixLength, 16U);
    EXPECT_EQ(found[1].prefixLength, 64U);
    EXPECT_EQ(found[1].metric, 256U);
    EXPECT_EQ(found[1].interfaceName, "eth0.longname");
}

TEST(NetworkCaptured, FilesThatCannotBeReadToTheirEndAreFailures)
{
    TemporaryTree tree;
    std::vector<Network::Route> routes;
    std::vector<Network::NameServer> servers;
    bool leased = false;
    for (const char* const path : {"/proc/net/route", "/etc/resolv.conf", "/var/nvr/udhcpc-wan.stat"}) {
        tree.file(path, "nameserver 10.0.0.1\n");
        std::filesystem::resize_file(tree.real(path), 1ULL << 30U);
    }
    EXPECT_FALSE(Network::listRoutes(&routes));
    EXPECT_EQ(K7SystemUtil::lastFailure().subject, L"/proc/net/route");
    EXPECT_FALSE(Network::listNameServers(&servers));
    EXPECT_EQ(K7SystemUtil::lastFailure().subject, RESOLVER);
    EXPECT_EQ(Network::getDnsIpAddress(0, true).toString(), L"10.0.0.1") << "it is in the first 20 lines";
    EXPECT_FALSE(Network::getWanDhcpcLeaseResult(&leased)) << "no number is in the first 20 lines";
    EXPECT_EQ(K7SystemUtil::lastFailure().operation, L"");
}

/// A link that leads to itself can be opened by nobody, not even by root.
TEST(NetworkCaptured, FilesThatCannotBeOpenedAreFailures)
{
    TemporaryTree tree;
    K7IPv4Address ipv4;
    bool leased = false;
    EXPECT_FALSE(Network::getGateway("eth0", &ipv4));
    EXPECT_EQ(K7SystemUtil::lastFailure().operation, L"") << "a file that is not there is an answer";
    for (const char* const path : {"/proc/net/route", "/proc/net/if_inet6", "/etc/resolv.conf", "/proc/net/sockstat",
                                   "/var/nvr/udhcpc-wan.stat", "/sys/class/net/eth0/speed"})
        tree.link(path, path);
    int32 speed = 0;
    const auto expectFailure = [](auto, const char* operation, const char* subject) {
        const K7SystemUtil::Failure failure = K7SystemUtil::lastFailure();
        EXPECT_EQ(failure.operation, J3String(operation));
        EXPECT_EQ(failure.subject, J3String(subject)) << operation;
        EXPECT_EQ(failure.errorCode, ELOOP) << operation;
    };
    expectFailure(Network::getDefaultGateway("eth0"), "Network::getDefaultGateway", "/proc/net/route");
    expectFailure(Network::getSubnetMaskV6("eth0"), "Network::getSubnetMaskV6", "/proc/net/if_inet6");
    expectFailure(Network::getDnsIpAddress(0, true), "Network::getDnsIpAddress", RESOLVER);
    expectFailure(Network::getUsedSocketCount(), "Network::getUsedSocketCount", "/proc/net/sockstat");
    expectFailure(Network::getWanDhcpcLeaseResult(&leased), "Network::getWanDhcpcLeaseResult",
                  "/var/nvr/udhcpc-wan.stat");
    expectFailure(Network::getEthernetLinkSpeed("eth0", &speed), "Network::getEthernetLinkSpeed",
                  "/sys/class/net/eth0/speed");
}

TEST(NetworkCaptured, SocketCountAndDhcpResultsAreReadFromTheirFiles)
{
    expectAnswers("/proc/net/sockstat", {{"TCP: inuse 5\nsockets: used 123\n", L"123"}, {"sockets:\n", L"0"}},
                  [](const char*) { return J3String().format(L"%d", Network::getUsedSocketCount()); });
    expectAnswers("/etc/resolv.conf.org", {{"domain lan\nnameserver 10.0.0.3\nnameserver 10.0.0.4\n", L"10.0.0.3"}},
                  [](const char*) { return Network::getAutoDnsIpAddress().toString(); });
    const std::vector<Case> cases = {{"1\n", L"yes"}, {" \t-1", L"yes"}, {"none\n\n0\n1", L"no"}, {"x1\n", L"none"}};
    expectAnswers("/var/nvr/udhcpc-wan.stat", cases, [](const char*) {
        bool leased = true;
        return J3String(!Network::getWanDhcpcLeaseResult(&leased) ? L"none" : leased ? L"yes" : L"no");
    });
    TemporaryTree tree;
    tree.file("/var/nvr/udhcpc-vin.stat", "1\n");
    EXPECT_TRUE(Network::getVinDhcpcLeaseResult(nullptr));
    EXPECT_FALSE(Network::getWanDhcpcLeaseResult(nullptr));
}

TEST(NetworkCaptured, ArgumentsAreCheckedBeforeAnythingElse)
{
    const TemporaryTree noFiles;
    K7IPv4Address ipv4;
    Network::NetDevIoStat stat;
    EXPECT_EQ(reason(Network::getIpAddress(nullptr, &ipv4)), L"invalid devName");
    EXPECT_EQ(reason(Network::getSubnetMask("", &ipv4)), L"invalid input parameters");
    EXPECT_EQ(reason(Network::testConnectivity("lo", "::1", 0)), L"invalid input parameters");
    EXPECT_EQ(reason(Network::getNetDevIoStat("lo", &stat)), L"fopen() failed");
    EXPECT_EQ(reason(Network::getGateway("lo", static_cast<K7IPv6Address*>(nullptr))), L"invalid input parameters");
    EXPECT_EQ(reason(Network::updateIpAddress(nullptr, nullptr)), L"invalid input parameters");
}

TEST(Network, LinkLocalAddressesAreMadeOfTheHardwareAddress)
{
    const std::tuple<const char*, const wchar_t*, const wchar_t*, bool> cases[] = {
        {"00:11:22:33:44:55", L"169.254.68.85", L"fe80::211:22ff:fe33:4455", true},
        {"01:0a:0b:0c:00:0d", L"169.254.0.13", L"fe80::30a:bff:fe0c:d", false}};
    for (const auto& [text, ipv4, ipv6, valid] : cases) {
        K7MacAddress mac;
        EXPECT_TRUE(mac.fromString(text));
        EXPECT_EQ(Network::getDefaultLinkLocalAddressV4(nullptr, &mac).toString(), ipv4);
        EXPECT_EQ(Network::getDefaultLinkLocalAddressV6(nullptr, &mac).toString(), ipv6);
        EXPECT_EQ(Network::isValidMacAddress(mac), valid) << text;
    }
}
