// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Name resolution and connections within their time limits.
#include "support/Sandbox.h"
#include "support/SystemTree.h"
#include "support/VethPair.h"

#include "OS/System/Network.h"

#include <gtest/gtest.h>

#include <chrono>

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

using namespace Kivo;
using namespace K7Test;
using Network = K7SystemUtil::Network;

namespace {

/// A bound socket on 127.0.0.1 that never answers by itself.
class LocalSocket {
public:
    LocalSocket(int type, uint16 port) : _fd(::socket(AF_INET, type | SOCK_CLOEXEC, 0))
    {
        sockaddr_in address{AF_INET, htons(port), {htonl(INADDR_LOOPBACK)}, {}};
        socklen_t size = sizeof address;
        EXPECT_EQ(::bind(_fd, reinterpret_cast<sockaddr*>(&address), size), 0);
        EXPECT_EQ(::getsockname(_fd, reinterpret_cast<sockaddr*>(&address), &size), 0);
        _port = ntohs(address.sin_port);
    }

    ~LocalSocket() { ::close(_fd); }

    LocalSocket(const LocalSocket&) = delete;
    LocalSocket& operator=(const LocalSocket&) = delete;

    [[nodiscard]] int fd() const { return _fd; }

    [[nodiscard]] uint16 port() const { return _port; }

private:
    int _fd;
    uint16 _port;
};

template <class Call>
int64 millisecondsOf(Call&& call)
{
    const auto start = std::chrono::steady_clock::now();
    call();
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start).count();
}

int lastError() { return K7SystemUtil::lastFailure().errorCode; }

} // namespace

TEST(AddrInfo, ResolvesNumbersAndNames)
{
    K7_REQUIRE_SANDBOX();
    const CoveredFile hosts("/etc/hosts", "192.0.2.7 recorder.test\n2001:db8::7 recorder.test\n");
    const CoveredFile sources("/etc/nsswitch.conf", "hosts: files\n");
    using Texts = std::vector<J3String>;
    Texts addresses;
    EXPECT_TRUE(Network::getAddrInfo(&addresses, L"127.0.0.1"));
    EXPECT_EQ(addresses, Texts{L"127.0.0.1"});
    EXPECT_TRUE(Network::getAddrInfo(&addresses, L"2001:db8:0::1"));
    EXPECT_EQ(addresses, Texts{L"2001:db8::1"});
    ASSERT_TRUE(Network::getAddrInfo(&addresses, L"recorder.test"));
    std::sort(addresses.begin(), addresses.end());
    EXPECT_EQ(addresses, (Texts{L"192.0.2.7", L"2001:db8::7"}));

    EXPECT_FALSE(Network::getAddrInfo(&addresses, L"nobody.test"));
    EXPECT_EQ(K7SystemUtil::lastFailure().reason, L"getaddrinfo() failed");
    EXPECT_EQ(addresses.size(), 2U);
}

TEST(AddrInfo, DoesNotWaitForASilentNameServer)
{
    K7_REQUIRE_SANDBOX();
    const LocalSocket silent(SOCK_DGRAM, 53);
    const CoveredFile servers("/etc/resolv.conf", "nameserver 127.0.0.1\noptions timeout:30 attempts:5\n");
    const CoveredFile sources("/etc/nsswitch.conf", "hosts: dns\n");
    std::vector<J3String> addresses{L"unchanged"};
    const int64 passed = millisecondsOf([&] { EXPECT_FALSE(Network::getAddrInfo(&addresses, L"nobody.test")); });
    EXPECT_EQ(K7SystemUtil::lastFailure().reason, L"getaddrinfo() timed out");
    EXPECT_EQ(addresses, std::vector<J3String>{L"unchanged"});
    EXPECT_GE(passed, static_cast<int64>(Network::ADDR_INFO_TIMEOUT) - 10);
    EXPECT_LT(passed, static_cast<int64>(Network::ADDR_INFO_TIMEOUT) + 500);
    EXPECT_FALSE(Network::testConnectivity("lo", "nobody.test", 80));
    EXPECT_EQ(K7SystemUtil::lastFailure().reason, L"getaddrinfo() timed out");
}

TEST(Connectivity, FindsAListenerThroughItsInterface)
{
    K7_REQUIRE_SANDBOX();
    const CoveredFile hosts("/etc/hosts", "127.0.0.1 recorder.test\n");
    const CoveredFile sources("/etc/nsswitch.conf", "hosts: files\n");
    const VethPair pair("k7wan", "k7peer");
    ASSERT_EQ(pair.problem(), 0);
    const LocalSocket listener(SOCK_STREAM, 0);
    ASSERT_EQ(::listen(listener.fd(), 8), 0);
    EXPECT_TRUE(Network::testConnectivity("lo", "127.0.0.1", listener.port()));
    EXPECT_TRUE(Network::testConnectivity("lo", "recorder.test", listener.port()));
    EXPECT_FALSE(Network::testConnectivity("k7wan", "127.0.0.1", listener.port()));
    EXPECT_FALSE(Network::testConnectivity("lo0123456789abcdef", "127.0.0.1", listener.port()));
    EXPECT_EQ(lastError(), ENODEV);
    EXPECT_FALSE(Network::testConnectivity("k7none", "127.0.0.1", listener.port()));
    EXPECT_EQ(lastError(), ENODEV);
    EXPECT_FALSE(Network::testConnectivity("lo", "nobody.test", listener.port()));
    EXPECT_EQ(K7SystemUtil::lastFailure().reason, L"getaddrinfo() failed");
}

TEST(Connectivity, IsRefusedWhereNobodyListens)
{
    K7_REQUIRE_SANDBOX();
    const LocalSocket bound(SOCK_STREAM, 0);
    EXPECT_FALSE(Network::testConnectivity("lo", "127.0.0.1", bound.port()));
    EXPECT_EQ(K7SystemUtil::lastFailure().reason, L"connect() failed");
    EXPECT_EQ(lastError(), ECONNREFUSED);
}

TEST(Connectivity, DoesNotWaitForAListenerThatTakesNobody)
{
    K7_REQUIRE_SANDBOX();
    const LocalSocket listener(SOCK_STREAM, 0);
    ASSERT_EQ(::listen(listener.fd(), 0), 0);
    ASSERT_TRUE(Network::testConnectivity("lo", "127.0.0.1", listener.port())) << "fills the queue";
    const int64 passed =
        millisecondsOf([&] { EXPECT_FALSE(Network::testConnectivity("lo", "127.0.0.1", listener.port())); });
    EXPECT_EQ(lastError(), ETIMEDOUT);
    EXPECT_GE(passed, static_cast<int64>(Network::CONNECTIVITY_TIMEOUT) - 10);
    EXPECT_LT(passed, static_cast<int64>(Network::CONNECTIVITY_TIMEOUT) + 500);
}
