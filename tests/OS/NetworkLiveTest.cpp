// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Queries on real devices of the sandbox, beside what sysfs and ethtool say, and what can be reached through them.
#include "support/Sandbox.h"
#include "support/SystemTree.h"
#include "support/VethPair.h"

#include "Core/K7SystemError.h"
#include "OS/System/Network.h"

#include <algorithm>
#include <fstream>
#include <optional>
#include <thread>

#include <arpa/inet.h>
#include <net/if.h>
#include <unistd.h>

using namespace Kivo;
using namespace K7Test;
using Network = K7SystemUtil::Network;

namespace {

std::string attributeOf(const std::string& devName, const std::string& attribute)
{
    std::string text;
    std::ifstream("/sys/class/net/" + devName + "/" + attribute) >> text;
    return text;
}

/// Two connected devices, the first with addresses. No test may leave a descriptor open.
class NetworkLive : public ::testing::Test {
protected:
    static constexpr const char* DEVICE = "k7fifteen-bytes";
    static constexpr const char* PEER = "k7peer";

    void SetUp() override
    {
        K7_REQUIRE_SANDBOX();
        pair.emplace(DEVICE, PEER);
        ASSERT_TRUE(ip("addr add 10.77.0.1/20 dev k7fifteen-bytes\naddr add fd00:77::1/64 dev k7fifteen-bytes nodad"));
        waitForState("up");
        descriptors = openDescriptors();
    }

    void TearDown() override
    {
        if (pair) {
            EXPECT_EQ(openDescriptors(), descriptors);
        }
    }

    static void waitForState(const std::string& state)
    {
        for (int turns = 0; turns < 500 && attributeOf(DEVICE, "operstate") != state; ++turns)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }

    std::optional<VethPair> pair;
    std::size_t descriptors = 0;
};

/// A bound socket on 127.0.0.1 that never answers by itself.
struct LocalSocket {
    LocalSocket(int type, uint16 port) : fd(::socket(AF_INET, type | SOCK_CLOEXEC, 0))
    {
        const sockaddr_in address{AF_INET, htons(port), {htonl(INADDR_LOOPBACK)}, {}};
        EXPECT_EQ(::bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    }

    ~LocalSocket() { ::close(fd); }

    const int fd;
};

/// Whether a call fails after the limit in ms, and not much later.
template <class Call>
bool timesOut(uint32 limit, Call&& call)
{
    const auto start = std::chrono::steady_clock::now();
    const bool failed = !call();
    const std::chrono::duration<double, std::milli> passed = std::chrono::steady_clock::now() - start;
    return failed && passed.count() > limit - 10.0 && passed.count() < limit + 500.0;
}

} // namespace

TEST_F(NetworkLive, ShowsItsAddresses)
{
    K7IPv4Address ipv4;
    K7IPv6Address ipv6;
    K7MacAddress mac;
    ASSERT_TRUE(ip("route add default via 10.77.0.254\nroute add default via fd00:77::fe"));
    EXPECT_TRUE(Network::getIpAddress(DEVICE, &ipv4));
    EXPECT_EQ(ipv4.toString(), L"10.77.0.1");
    EXPECT_TRUE(Network::getIpAddress(DEVICE, &ipv6));
    EXPECT_EQ(ipv6.toString(), L"fd00:77::1");
    EXPECT_EQ(Network::getSubnetMask(DEVICE).toString(), L"255.255.240.0");
    EXPECT_EQ(Network::getSubnetMaskV6(DEVICE).toString(), L"fd00:77::");
    EXPECT_EQ(Network::getDefaultGateway(DEVICE).toString(), L"10.77.0.254");
    EXPECT_EQ(Network::getDefaultGatewayV6(DEVICE).toString(), L"fd00:77::fe");
    EXPECT_TRUE(Network::getMacAddress(&mac, DEVICE));
    EXPECT_EQ(mac.toString().to_string(), attributeOf(DEVICE, "address"));
    EXPECT_EQ(Network::getDefaultLinkLocalAddressV4(DEVICE, nullptr), Network::getDefaultLinkLocalAddressV4("", &mac));

    EXPECT_FALSE(Network::getIpAddress(PEER, &ipv4));
    EXPECT_EQ(K7SystemUtil::lastFailure().operation, L"");
}

TEST_F(NetworkLive, IsListedWithItsFlags)
{
    std::vector<Network::Interface> found;
    ASSERT_TRUE(Network::listInterfaces(&found));
    const auto own = std::find_if(found.begin(), found.end(), [](const auto& each) { return each.name == DEVICE; });
    ASSERT_NE(own, found.end());
    constexpr uint32 UP = IFF_UP | IFF_RUNNING;
    EXPECT_EQ(own->flags.value_or(0) & UP, UP);
}

TEST_F(NetworkLive, LosesItsLinkWithThePeer)
{
    bool link = false;
    for (const bool expected : {true, false}) {
        EXPECT_EQ(Network::getNetworkLink(DEVICE), expected);
        EXPECT_TRUE(Network::getEthernetLink(DEVICE, &link));
        EXPECT_EQ(link, expected);
        ASSERT_TRUE(ip("link set k7peer down"));
        waitForState("lowerlayerdown");
    }
    link = true;
    EXPECT_FALSE(Network::getEthernetLink(PEER, &link)) << "it has no address";
    EXPECT_FALSE(link);
}

TEST_F(NetworkLive, SwitchesItsScatterGather)
{
    for (const bool wanted : {false, true}) {
        bool on = !wanted;
        EXPECT_TRUE(Network::setEthernetToolSG(DEVICE, wanted));
        EXPECT_TRUE(Network::getEthernetToolSG(DEVICE, &on));
        EXPECT_EQ(on, wanted);
        EXPECT_EQ(std::system("/sbin/ethtool -k k7fifteen-bytes | grep -q 'tx-scatter-gather: on'") == 0, wanted);
    }
}

/// The speeds are laid over the device's own: no device of a sandbox has such a link.
TEST_F(NetworkLive, GathersAtTheSpeedsAtWhichItMay)
{
    static std::vector<std::string> traces;
    K7EthDevInfo info;
    ASSERT_TRUE(Network::setEthernetToolSG(DEVICE, true));
    K7SystemError::setHandler([](const J3String& tag, int) { traces.push_back(tag.to_string()); });
    for (const std::string text : {"1000", "100", "2500", "10", "1000", "lo"}) {
        info.setDevName(text == "lo" ? "lo" : DEVICE);
        const CoveredFile speed("/sys/class/net/" + info.devName().to_string() + "/speed", text == "lo" ? "100" : text);
        Network::fixupBugForEthernetFeatureSG(&info);
    }
    K7SystemError::setHandler(nullptr);
    EXPECT_EQ(traces, (std::vector<std::string>{"WAN: LINK_SPEED 1000 Mbps", "WAN: LINK_SPEED 100 Mbps",
                                                "WAN: ETHTOOL_SET_SG: 'Off' SUCCESS", "WAN: LINK_SPEED 10 Mbps",
                                                "WAN: LINK_SPEED 1000 Mbps", "WAN: ETHTOOL_SET_SG: 'On' SUCCESS",
                                                "WAN: LINK_SPEED 100 Mbps", "WAN: ETHTOOL_SET_SG: 'Off' FAILED"}));
}

TEST_F(NetworkLive, RefreshesADevice)
{
    K7EthDevInfo info;
    bool changed = false;
    info.setIfceName(DEVICE);
    EXPECT_FALSE(Network::updateIpAddress(&info, &changed)) << "the device has no name yet";
    info.setDevName(PEER);
    EXPECT_TRUE(Network::updateIpAddress(&info, &changed));
    EXPECT_TRUE(changed);
    EXPECT_EQ(info.ipv4Address().toString(), L"10.77.0.1");
    EXPECT_EQ(info.ipv6Address().toString(), L"fd00:77::1");
    EXPECT_TRUE(Network::updateIpAddress(&info, &changed));
    EXPECT_FALSE(changed);

    ASSERT_TRUE(ip("addr del fd00:77::1/64 dev k7fifteen-bytes"));
    EXPECT_TRUE(Network::updateIpAddress(&info, &changed));
    EXPECT_TRUE(changed);
    EXPECT_FALSE(info.ipv6Address().isValid());
    ASSERT_TRUE(ip("addr del 10.77.0.1/20 dev k7fifteen-bytes"));
    EXPECT_FALSE(Network::updateIpAddress(&info, nullptr));
    EXPECT_TRUE(Network::updateMacAddress(&info));
    EXPECT_EQ(info.macAddress().toString().to_string(), attributeOf(PEER, "address"));
}

TEST_F(NetworkLive, TellsWhichStepFailed)
{
    K7IPv4Address address;
    const char* const tooLong = "k7fifteen-bytesX"; // the kernel would cut the name and answer for the other
    EXPECT_FALSE(Network::getIpAddress(tooLong, &address));
    EXPECT_FALSE(Network::getSubnetMask(tooLong, &address));
    EXPECT_EQ(K7SystemUtil::lastFailure().reason, L"ioctl(SIOCGIFNETMASK) failed");
    EXPECT_EQ(K7SystemUtil::lastFailure().errorCode, ENODEV);
    EXPECT_EQ(K7SystemUtil::lastFailure().subject, J3String(tooLong));
    EXPECT_FALSE(Network::setEthernetToolSG("lo", false));
    EXPECT_EQ(K7SystemUtil::lastFailure().reason, L"ioctl(SIOCETHTOOL) failed");
}

TEST(AddrInfoLive, ResolvesNumbersAndNames)
{
    K7_REQUIRE_SANDBOX();
    const CoveredFile hosts("/etc/hosts", "192.0.2.7 recorder.test\n");
    const CoveredFile sources("/etc/nsswitch.conf", "hosts: files\n");
    std::vector<J3String> addresses;
    EXPECT_TRUE(Network::getAddrInfo(&addresses, L"2001:db8:0::1"));
    EXPECT_EQ(addresses, std::vector<J3String>{L"2001:db8::1"});
    EXPECT_TRUE(Network::getAddrInfo(&addresses, L"fe80::1%lo"));
    EXPECT_EQ(addresses, std::vector<J3String>{L"fe80::1%lo"});
    EXPECT_TRUE(Network::getAddrInfo(&addresses, L"recorder.test"));
    EXPECT_FALSE(Network::getAddrInfo(&addresses, L"nobody.test"));
    EXPECT_EQ(K7SystemUtil::lastFailure().reason, L"getaddrinfo() failed: Name or service not known");
    EXPECT_EQ(addresses, std::vector<J3String>{L"192.0.2.7"});
}

TEST(AddrInfoLive, DoesNotWaitForASilentNameServer)
{
    K7_REQUIRE_SANDBOX();
    const LocalSocket silent(SOCK_DGRAM, 53);
    const CoveredFile servers("/etc/resolv.conf", "nameserver 127.0.0.1\noptions timeout:30 attempts:5\n");
    const CoveredFile sources("/etc/nsswitch.conf", "hosts: dns\n");
    std::vector<J3String> addresses;
    EXPECT_TRUE(timesOut(Network::ADDR_INFO_TIMEOUT, [&] { return Network::getAddrInfo(&addresses, L"nobody.test"); }));
    EXPECT_EQ(K7SystemUtil::lastFailure().reason, L"getaddrinfo() timed out");
}

TEST_F(NetworkLive, ConnectsToAListenerOfItsSide)
{
    const auto connects = [](const char* devName) { return Network::testConnectivity(devName, "127.0.0.1", 8001); };
    EXPECT_FALSE(connects("lo"));
    EXPECT_EQ(K7SystemUtil::lastFailure().errorCode, ECONNREFUSED);
    const LocalSocket listener(SOCK_STREAM, 8001);
    ASSERT_EQ(::listen(listener.fd, 8), 0);
    EXPECT_TRUE(connects("lo"));
    EXPECT_TRUE(timesOut(Network::CONNECTIVITY_TIMEOUT, [&] { return connects(DEVICE); }));
    EXPECT_EQ(K7SystemUtil::lastFailure().errorCode, ETIMEDOUT);
}
