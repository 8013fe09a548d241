// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Interface queries on real devices of the sandbox, beside what sysfs and the ethtool feature list say.
#include "support/Sandbox.h"
#include "support/SystemTree.h"
#include "support/VethPair.h"

#include "Core/K7SystemError.h"
#include "OS/System/Network.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstring>
#include <fstream>
#include <functional>
#include <thread>

#include <arpa/inet.h>
#include <linux/ethtool.h>
#include <linux/sockios.h>
#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

using namespace Kivo;
using namespace K7Test;
using Network = K7SystemUtil::Network;

namespace {

std::string attributeOf(const std::string& devName, const std::string& attribute)
{
    std::ifstream file("/sys/class/net/" + devName + "/" + attribute);
    std::string text;
    file >> text;
    return text;
}

bool becomesTrue(const std::function<bool()>& condition)
{
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return true;
}

void askEthtool(const char* devName, void* question)
{
    const int fd = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    ifreq request{};
    std::strcpy(request.ifr_name, devName);
    request.ifr_data = static_cast<char*>(question);
    EXPECT_EQ(::ioctl(fd, SIOCETHTOOL, &request), 0);
    ::close(fd);
}

/// Whether a feature of the device is active, by its name in the kernel's list of them; -1 when it is not there.
int featureOf(const char* devName, const std::string& feature)
{
    constexpr uint32 BLOCKS = 8;

    struct {
        uint32 command = ETHTOOL_GSTRINGS;
        uint32 set = ETH_SS_FEATURES;
        uint32 count = 0;
        char text[32 * BLOCKS][ETH_GSTRING_LEN];
    } names;

    struct {
        uint32 command = ETHTOOL_GFEATURES;
        uint32 size = BLOCKS;
        ethtool_get_features_block block[BLOCKS];
    } features;

    askEthtool(devName, &names);
    askEthtool(devName, &features);
    for (uint32 i = 0; i < names.count; ++i)
        if (names.text[i] == feature)
            return static_cast<int>(features.block[i / 32].active >> i % 32 & 1);
    return -1;
}

std::vector<std::string> s_traces;

void noteTrace(const J3String& tag, int errorCode)
{
    s_traces.push_back(tag.to_string() + (errorCode != 0 ? " / " + std::to_string(errorCode) : ""));
}

/// Two connected devices with addresses, "k7wan" and "k7peer".
class Veth : public ::testing::Test {
protected:
    static constexpr const char* DEVICE = "k7wan";
    static constexpr const char* PEER = "k7peer";

    void SetUp() override
    {
        K7_REQUIRE_SANDBOX();
        pair = std::make_unique<VethPair>(DEVICE, PEER);
        ASSERT_EQ(pair->problem(), 0);
        ASSERT_EQ(addAddress(DEVICE, "10.77.0.1", 20), 0);
        ASSERT_EQ(addAddress(DEVICE, "fd00:77::1", 64), 0);
        ASSERT_TRUE(becomesTrue([] { return attributeOf(DEVICE, "operstate") == "up"; }));
    }

    std::unique_ptr<VethPair> pair;
};

} // namespace

TEST_F(Veth, ShowsItsAddresses)
{
    K7IPv4Address ipv4;
    K7IPv4Address mask;
    K7IPv6Address ipv6;
    ASSERT_TRUE(Network::getIpAddress(DEVICE, &ipv4));
    EXPECT_EQ(ipv4.toString(), L"10.77.0.1");
    ASSERT_TRUE(Network::getIpAddress(DEVICE, &ipv6));
    EXPECT_TRUE(ipv6.toString() == L"fd00:77::1" || ipv6.value64MSB() == 0xFE80000000000000)
        << ipv6.toString().to_string();
    ASSERT_TRUE(Network::getSubnetMask(DEVICE, &mask));
    EXPECT_EQ(mask.toString(), L"255.255.240.0");
    EXPECT_FALSE(Network::getIpAddress(PEER, &ipv4));
    EXPECT_EQ(K7SystemUtil::lastFailure().operation, L"");
    EXPECT_EQ(ipv4.toString(), L"10.77.0.1");

    const J3String network = Network::getSubnetMaskV6(DEVICE).toString();
    EXPECT_TRUE(network == L"fd00:77::" || network == L"fe80::") << network.to_string();
}

TEST_F(Veth, ShowsItsHardwareAddress)
{
    K7MacAddress mac;
    ASSERT_TRUE(Network::getMacAddress(&mac, DEVICE));
    EXPECT_EQ(mac.toString().to_string(), attributeOf(DEVICE, "address"));
    EXPECT_TRUE(Network::isValidMacAddress(mac));
    EXPECT_EQ(Network::getDefaultLinkLocalAddressV4(DEVICE, nullptr).toString(),
              J3String().format(L"169.254.%u.%u", mac.bytes()[4], mac.bytes()[5]));
    EXPECT_EQ(Network::getDefaultLinkLocalAddressV6(DEVICE, nullptr), Network::getDefaultLinkLocalAddressV6("", &mac));
}

TEST_F(Veth, ShowsItsGateways)
{
    ASSERT_EQ(addDefaultRoute(DEVICE, "10.77.0.254"), 0);
    ASSERT_EQ(addDefaultRoute(DEVICE, "fd00:77::fe"), 0);
    EXPECT_EQ(Network::getDefaultGateway(DEVICE).toString(), L"10.77.0.254");
    EXPECT_EQ(Network::getDefaultGatewayV6(DEVICE).toString(), L"fd00:77::fe");
    EXPECT_FALSE(Network::getDefaultGateway(PEER).isValid());
}

TEST_F(Veth, LosesItsLinkWithThePeer)
{
    bool link = false;
    EXPECT_TRUE(Network::getNetworkLink(DEVICE));
    ASSERT_TRUE(Network::getEthernetLink(DEVICE, &link));
    EXPECT_TRUE(link);

    ASSERT_EQ(setDeviceUp(PEER, false), 0);
    ASSERT_TRUE(becomesTrue([] { return attributeOf(DEVICE, "operstate") != "up"; }));
    EXPECT_EQ(attributeOf(DEVICE, "carrier"), "0");
    EXPECT_FALSE(Network::getNetworkLink(DEVICE));
    EXPECT_EQ(K7SystemUtil::lastFailure().operation, L"");
    ASSERT_TRUE(Network::getEthernetLink(DEVICE, &link));
    EXPECT_FALSE(link);

    link = true;
    EXPECT_FALSE(Network::getEthernetLink(PEER, &link)) << "it has no address";
    EXPECT_FALSE(link);
    ASSERT_EQ(setDeviceUp(DEVICE, false), 0);
    EXPECT_FALSE(Network::getNetworkLink(DEVICE));
    EXPECT_FALSE(Network::getNetworkLink("k7none"));
}

TEST_F(Veth, LeavesASpeedAloneThatItDoesNotKnow)
{
    int32 speed = 3;
    ASSERT_EQ(attributeOf(DEVICE, "speed"), "10000");
    EXPECT_TRUE(Network::getEthernetLinkSpeed(DEVICE, &speed));
    EXPECT_EQ(speed, 3);
    ASSERT_EQ(setDeviceUp(DEVICE, false), 0);
    EXPECT_FALSE(Network::getEthernetLinkSpeed(DEVICE, &speed));
}

TEST_F(Veth, CountsItsTraffic)
{
    constexpr int PACKETS = 100;
    const std::string payload(1000, 'p');
    const auto count = [](const char* name) {
        return std::stoull(attributeOf(DEVICE, std::string("statistics/") + name));
    };
    Network::NetDevIoStat before;
    ASSERT_TRUE(Network::getNetDevIoStat(DEVICE, &before));

    const int fd = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const int on = 1;
    ASSERT_EQ(::setsockopt(fd, SOL_SOCKET, SO_BROADCAST, &on, sizeof on), 0);
    sockaddr_in broadcast{AF_INET, htons(9), {}, {}};
    ASSERT_EQ(::inet_pton(AF_INET, "10.77.15.255", &broadcast.sin_addr), 1);
    for (int i = 0; i < PACKETS; ++i)
        ASSERT_EQ(
            ::sendto(fd, payload.data(), payload.size(), 0, reinterpret_cast<sockaddr*>(&broadcast), sizeof broadcast),
            static_cast<ssize_t>(payload.size()));
    ::close(fd);

    Network::NetDevIoStat after;
    ASSERT_TRUE(Network::getNetDevIoStat(DEVICE, &after));
    EXPECT_GE(after.tx.packets, before.tx.packets + PACKETS);
    EXPECT_GE(after.tx.bytes, before.tx.bytes + PACKETS * (payload.size() + 42));
    EXPECT_LT(after.tx.bytes, before.tx.bytes + PACKETS * (payload.size() + 42) + 10000);
    EXPECT_LE(after.tx.bytes, count("tx_bytes"));
    EXPECT_LE(after.rx.packets, count("rx_packets"));
    Network::NetDevIoStat peer;
    ASSERT_TRUE(Network::getNetDevIoStat(PEER, &peer));
    EXPECT_GE(peer.rx.bytes, after.tx.bytes);
}

TEST_F(Veth, SwitchesItsScatterGather)
{
    for (const bool wanted : {false, true, false}) {
        bool on = !wanted;
        ASSERT_TRUE(Network::setEthernetToolSG(DEVICE, wanted));
        ASSERT_TRUE(Network::getEthernetToolSG(DEVICE, &on));
        EXPECT_EQ(on, wanted);
        EXPECT_EQ(featureOf(DEVICE, "tx-scatter-gather"), wanted);
    }
    EXPECT_FALSE(Network::setEthernetToolSG("lo", false));
    EXPECT_EQ(K7SystemUtil::lastFailure().reason, L"ioctl(SIOCETHTOOL) failed");
    EXPECT_EQ(K7SystemUtil::lastFailure().errorCode, EOPNOTSUPP);
}

/// The speeds are laid over the devices' own: no device of a sandbox has such a link.
TEST_F(Veth, GathersAtTheSpeedsAtWhichItMay)
{
    const struct {
        const char* device;
        const char* speed;
        std::vector<std::string> traces;
    } cases[] = {
        {DEVICE, "1000\n", {"WAN: LINK_SPEED 1000 Mbps"}},
        {DEVICE, "100\n", {"WAN: LINK_SPEED 100 Mbps", "WAN: ETHTOOL_SET_SG: 'Off' SUCCESS"}},
        {DEVICE, "10\n", {"WAN: LINK_SPEED 10 Mbps"}},
        {DEVICE, "2500\n", {}},
        {DEVICE, "1000\n", {"WAN: LINK_SPEED 1000 Mbps", "WAN: ETHTOOL_SET_SG: 'On' SUCCESS"}},
        {"lo", "100\n", {"WAN: LINK_SPEED 100 Mbps", "WAN: ETHTOOL_SET_SG: 'Off' FAILED / 95"}},
    };

    ASSERT_TRUE(Network::setEthernetToolSG(DEVICE, true));
    K7SystemError::setHandler(noteTrace);
    for (const auto& test : cases) {
        const CoveredFile speed(std::string("/sys/class/net/") + test.device + "/speed", test.speed);
        K7EthDevInfo info;
        info.setDevName(test.device);
        s_traces.clear();
        Network::fixupBugForEthernetFeatureSG(&info);
        EXPECT_EQ(s_traces, test.traces) << test.speed;
    }
    EXPECT_EQ(featureOf(DEVICE, "tx-scatter-gather"), 1);

    s_traces.clear();
    TemporaryTree tree;
    tree.file("/sys/class/net/eth0/speed", "1000\n");
    K7EthDevInfo captured;
    captured.setDevName(L"eth0");
    Network::fixupBugForEthernetFeatureSG(&captured);
    Network::fixupBugForEthernetFeatureSG(nullptr);
    K7SystemError::setHandler(nullptr);
    EXPECT_EQ(s_traces, (std::vector<std::string>{"WAN: LINK_SPEED 1000 Mbps", "WAN: ETHTOOL_GET_SG: FAILED"}));
}

TEST_F(Veth, RefreshesADevice)
{
    K7EthDevInfo info;
    bool changed = true;
    info.setIfceName(DEVICE);
    EXPECT_FALSE(Network::updateIpAddress(&info, &changed)) << "the device has no name yet";
    info.setDevName(PEER);
    ASSERT_TRUE(Network::updateIpAddress(&info, &changed));
    EXPECT_TRUE(changed);
    EXPECT_EQ(info.ipv4Address().toString(), L"10.77.0.1");
    EXPECT_TRUE(info.ipv6Address().isValid());
    ASSERT_TRUE(Network::updateIpAddress(&info, &changed));
    EXPECT_FALSE(changed);

    info.setIpv6Address(K7IPv6Address(1, 1));
    ASSERT_TRUE(Network::updateIpAddress(&info, &changed));
    EXPECT_TRUE(changed);
    ASSERT_EQ(removeAddress(DEVICE, "10.77.0.1", 20), 0);
    EXPECT_FALSE(Network::updateIpAddress(&info, &changed));
    EXPECT_EQ(info.ipv4Address().toString(), L"10.77.0.1");
    ASSERT_EQ(addAddress(DEVICE, "10.77.0.2", 20), 0);
    ASSERT_TRUE(Network::updateIpAddress(&info, nullptr));
    EXPECT_EQ(info.ipv4Address().toString(), L"10.77.0.2");

    ASSERT_TRUE(Network::updateMacAddress(&info));
    EXPECT_EQ(info.macAddress().toString().to_string(), attributeOf(PEER, "address"));
}

/// The kernel would cut the name and answer for another interface.
TEST(InterfaceNames, ThatAreTooLongNameNoInterface)
{
    K7_REQUIRE_SANDBOX();
    const VethPair pair("k7fifteen-bytes", "k7peer");
    ASSERT_EQ(pair.problem(), 0);
    ASSERT_EQ(addAddress("k7fifteen-bytes", "10.78.0.1", 24), 0);
    for (const auto& [name, known] : {std::pair("k7fifteen-bytes", true), {"k7fifteen-bytesX", false}}) {
        K7IPv4Address address;
        K7MacAddress mac;
        Network::NetDevIoStat stat;
        bool flag = false;
        EXPECT_EQ(Network::getIpAddress(name, &address), known);
        EXPECT_EQ(Network::getSubnetMask(name, &address), known);
        EXPECT_EQ(Network::getMacAddress(&mac, name), known);
        EXPECT_EQ(Network::getEthernetLink(name, &flag), known);
        EXPECT_EQ(Network::getEthernetToolSG(name, &flag), known);
        EXPECT_EQ(Network::getNetDevIoStat(name, &stat), known);
        EXPECT_TRUE(
            becomesTrue([&, wanted = known, devName = name] { return Network::getNetworkLink(devName) == wanted; }));
    }
}

TEST(NetworkFailures, NameTheirStep)
{
    K7_REQUIRE_SANDBOX();
    const auto reason = [](bool result) {
        return result ? J3String(L"it answered") : K7SystemUtil::lastFailure().reason;
    };
    K7IPv4Address mask;
    K7MacAddress mac;
    bool flag = false;
    EXPECT_EQ(reason(Network::getSubnetMask("k7none", &mask)), L"ioctl(SIOCGIFNETMASK) failed");
    EXPECT_EQ(K7SystemUtil::lastFailure().operation, L"Network::getSubnetMask");
    EXPECT_EQ(K7SystemUtil::lastFailure().errorCode, ENODEV);
    EXPECT_EQ(reason(Network::getMacAddress(&mac, "k7none")), L"ioctl(SIOCGIFHWADDR) failed");
    EXPECT_EQ(reason(Network::getEthernetToolSG("k7none", &flag)), L"ioctl(SIOCETHTOOL) failed");
    EXPECT_EQ(reason(Network::setEthernetToolSG("k7none", true)), L"ioctl(SIOCETHTOOL) failed");
    EXPECT_FALSE(Network::getDefaultLinkLocalAddressV6("k7none", nullptr).isValid());
    EXPECT_FALSE(mask.isValid() || mac.isValid());
}

TEST(SocketCount, GrowsWithTheSocketsOfTheSystem)
{
    K7_REQUIRE_SANDBOX();
    const int32 before = Network::getUsedSocketCount();
    std::vector<int> sockets;
    for (int i = 0; i < 50; ++i)
        sockets.push_back(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    EXPECT_GE(Network::getUsedSocketCount(), before + 50);
    for (const int fd : sockets)
        ::close(fd);
}

TEST(HostName, IsTheSystemsUnlessItIsTooLong)
{
    K7_REQUIRE_SANDBOX();
    J3String name;
    ASSERT_EQ(::sethostname("recorder-7", 10), 0);
    EXPECT_TRUE(Network::getHostName(&name, nullptr));
    EXPECT_EQ(name, L"recorder-7");
    const std::string longest(64, 'h');
    ASSERT_EQ(::sethostname(longest.data(), longest.size()), 0);
    EXPECT_FALSE(Network::getHostName(&name, nullptr));
    EXPECT_EQ(K7SystemUtil::lastFailure().errorCode, ENAMETOOLONG);
    EXPECT_EQ(name, L"recorder-7");
}

TEST_F(Veth, KeepsNoDescriptorOpen)
{
    TemporaryTree tree(false);
    tree.directory("/etc");
    const auto runAll = [&](const char* devName) {
        K7IPv4Address ipv4;
        K7IPv6Address ipv6;
        K7MacAddress mac;
        J3String name;
        Network::NetDevIoStat stat;
        K7EthDevInfo info;
        std::vector<J3String> addresses;
        bool flag = false;
        int32 speed = 0;
        info.setDevName(devName);
        info.setIfceName(devName);
        Network::getIpAddress(devName, &ipv4);
        Network::getIpAddress(devName, &ipv6);
        Network::getGateway(devName, &ipv4);
        Network::getGateway(devName, &ipv6);
        Network::getSubnetMask(devName, &ipv4);
        Network::getSubnetMask(devName, &ipv6);
        Network::getMacAddress(&mac, devName);
        Network::getNetDevIoStat(devName, &stat);
        Network::getNetworkLink(devName);
        Network::getEthernetLink(devName, &flag);
        Network::getEthernetLinkSpeed(devName, &speed);
        Network::getEthernetToolSG(devName, &flag);
        Network::setEthernetToolSG(devName, flag);
        Network::getUsedSocketCount();
        Network::updateIpAddress(&info, &flag);
        Network::updateMacAddress(&info);
        Network::getAddrInfo(&addresses, L"127.0.0.1");
        Network::testConnectivity("lo", "127.0.0.1", 1);
        Network::testConnectivity("k7none", "127.0.0.1", 1);
        Network::getDnsIpAddress(0, true);
        Network::getAutoDnsIpAddress();
        Network::getWanDhcpcLeaseResult(&flag);
        Network::getHostName(&name, devName);
        K7SystemUtil::setSystemRoot(tree.real("/").c_str());
        Network::clearDnsIpAddress();
        Network::getDnsIpAddressV6(0, false);
        K7SystemUtil::setSystemRoot(L"");
    };
    runAll(DEVICE);
    const std::size_t before = openDescriptors();
    runAll(DEVICE);
    runAll("k7none");
    EXPECT_EQ(openDescriptors(), before);
}
