// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Socket addresses, raw sockets and TCP channels, on loopback only.
#include "Core/SocketChannel.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>

#include <arpa/inet.h>
#include <fcntl.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

using namespace Kivo;

namespace {

/// A listening TCP socket on loopback, at a port of the kernel's choice.
class Listener {
public:
    explicit Listener(const SocketAddress& host, int backlog = 8)
        : _fd(socket(host.family(), SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_storage bound{};
        socklen_t size = sizeof(bound);
        _ready = bind(_fd, static_cast<const sockaddr*>(host.data()), host.size()) == 0 && listen(_fd, backlog) == 0 &&
                 getsockname(_fd, reinterpret_cast<sockaddr*>(&bound), &size) == 0 && _address.assign(&bound, size);
    }

    ~Listener() { close(_fd); }

    bool isReady() const { return _ready; }

    int fd() const { return _fd; }

    const SocketAddress& address() const { return _address; }

private:
    int _fd;
    bool _ready;
    SocketAddress _address;
};

auto descriptorCount()
{
    using std::filesystem::directory_iterator;
    return std::distance(directory_iterator("/proc/self/fd"), directory_iterator());
}

std::string textOf(const SocketAddress& address) { return address.toString().to_string(); }

/// An ICMP echo request with its checksum.
constexpr char ECHO_REQUEST[] = {8, 0, '\xF7', '\xFD', 0, 1, 0, 1};

} // namespace

TEST(SocketAddress, TakesNumericHostsWithoutALookUp)
{
    EXPECT_EQ(textOf(SocketAddress(L"127.0.0.1", 80)), "127.0.0.1:80");
    EXPECT_EQ(textOf(SocketAddress(L"0.0.0.0")), "0.0.0.0:0");
    const SocketAddress ipv6(L"FE80:0::1", 65535);
    EXPECT_EQ(textOf(ipv6), "[fe80::1]:65535");
    EXPECT_EQ(ipv6.hostText().to_string(), "fe80::1");
    EXPECT_EQ(ipv6.port(), 65535);
    EXPECT_EQ(ipv6.family(), AF_INET6);
    for (const char* bad : {"", "localhost", "127.0.0", "1.2.3.4:80", "[::1]", "fe80::1%lo"})
        EXPECT_FALSE(SocketAddress(bad, 80).isValid()) << bad;
    EXPECT_EQ(textOf(SocketAddress()), "");
    EXPECT_EQ(SocketAddress().port(), 0);
}

TEST(SocketAddress, TakesTheScopeOfALinkLocalAddressFromTheInterface)
{
    const auto scope = [](const SocketAddress& address) {
        return static_cast<const sockaddr_in6*>(address.data())->sin6_scope_id;
    };
    EXPECT_EQ(scope(SocketAddress(L"fe80::1", 0, false, L"lo")), if_nametoindex("lo"));
    EXPECT_EQ(scope(SocketAddress(L"2001:db8::1", 0, false, L"lo")), 0U);
    EXPECT_FALSE(SocketAddress(L"fe80::1", 0, false, L"no such ifce").isValid());
    EXPECT_TRUE(SocketAddress(L"127.0.0.1", 0, false, L"no such ifce").isValid());
}

TEST(SocketAddress, LooksNamesUpWhenAsked)
{
    const SocketAddress numeric(L"::1", 8, true);
    EXPECT_EQ(textOf(numeric), "[::1]:8");
    const SocketAddress named(L"localhost", 80, true);
    if (!named.isValid())
        GTEST_SKIP() << "this machine does not know localhost";
    EXPECT_EQ(named.port(), 80);
    const std::string host = named.hostText().to_string();
    EXPECT_TRUE(host == "127.0.0.1" || host == "::1") << host;
}

TEST(SocketAddress, TakesWholeSystemAddressesOfTheTwoFamilies)
{
    sockaddr_in system{};
    system.sin_family = AF_INET;
    system.sin_port = htons(7);
    system.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    SocketAddress address(L"::1", 9);
    EXPECT_FALSE(address.assign(nullptr, sizeof(system)));
    EXPECT_FALSE(address.assign(&system, sizeof(system) - 1));
    system.sin_family = AF_UNIX;
    EXPECT_FALSE(address.assign(&system, sizeof(system)));
    EXPECT_EQ(textOf(address), "[::1]:9");
    system.sin_family = AF_INET;
    EXPECT_TRUE(address.assign(&system, sizeof(system)));
    EXPECT_EQ(textOf(address), "127.0.0.1:7");
}

TEST(SocketApiWrapper, DeliversDatagramsWithTheirSender)
{
    const int fd = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const SocketAddress any(L"127.0.0.1");
    ASSERT_EQ(bind(fd, static_cast<const sockaddr*>(any.data()), any.size()), 0);
    sockaddr_storage bound{};
    socklen_t size = sizeof(bound);
    getsockname(fd, reinterpret_cast<sockaddr*>(&bound), &size);
    SocketAddress self;
    ASSERT_TRUE(self.assign(&bound, size));

    EXPECT_EQ(SocketApiWrapper::sendTo(fd, "abcdef", 6, self), 6);
    char buffer[4] = "";
    SocketAddress from;
    EXPECT_EQ(SocketApiWrapper::recvFrom(fd, buffer, sizeof(buffer), from), 4);
    EXPECT_EQ(std::string(buffer, 4), "abcd");
    EXPECT_EQ(textOf(from), textOf(self));

    EXPECT_LT(SocketApiWrapper::sendTo(fd, "x", 1, SocketAddress()), 0);
    EXPECT_EQ(errno, EINVAL);
    fcntl(fd, F_SETFL, O_NONBLOCK);
    EXPECT_LT(SocketApiWrapper::recvFrom(fd, buffer, sizeof(buffer), from), 0);
    EXPECT_EQ(errno, EAGAIN);
    EXPECT_EQ(textOf(from), textOf(self)) << "unchanged on failure";
    SocketApiWrapper::closeSocket(fd);
    EXPECT_LT(SocketApiWrapper::sendTo(fd, "x", 1, self), 0);
    EXPECT_EQ(errno, EBADF);
}

TEST(SocketApiWrapper, OpensRawSocketsForIcmpOnly)
{
    for (const int protocol : {0, 1, 3, -1}) {
        errno = 0;
        EXPECT_EQ(SocketApiWrapper::createRawSocket(protocol), SocketApiWrapper::INVALID_FD);
        EXPECT_EQ(errno, EPROTONOSUPPORT);
    }
    const int fd = SocketApiWrapper::createRawSocket(SocketApiWrapper::RAW_ICMP);
    if (fd == SocketApiWrapper::INVALID_FD && (errno == EPERM || errno == EACCES))
        GTEST_SKIP() << "raw sockets need CAP_NET_RAW";
    ASSERT_NE(fd, SocketApiWrapper::INVALID_FD);
    EXPECT_TRUE(fcntl(fd, F_GETFD) & FD_CLOEXEC);

    // A raw socket on loopback receives its own request first, behind an IP header.
    const SocketAddress loopback(L"127.0.0.1");
    ASSERT_EQ(SocketApiWrapper::sendTo(fd, ECHO_REQUEST, sizeof(ECHO_REQUEST), loopback), 8);
    const timeval limit{2, 0};
    setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof(limit));
    char datagram[256];
    SocketAddress from;
    EXPECT_GE(SocketApiWrapper::recvFrom(fd, datagram, sizeof(datagram), from), 28);
    EXPECT_EQ(datagram[0], 0x45);
    EXPECT_EQ(from.hostText().to_string(), "127.0.0.1");
    SocketApiWrapper::closeSocket(fd);
}

TEST(SocketChannel, ConnectsOverBothFamilies)
{
    for (const wchar_t* host : {L"127.0.0.1", L"::1"}) {
        const Listener listener{SocketAddress(host)};
        if (!listener.isReady())
            GTEST_SKIP() << "no loopback address of this family";
        SocketChannel channel;
        EXPECT_FALSE(channel.isOpen());
        ASSERT_TRUE(channel.connect(listener.address(), 2000)) << std::strerror(errno);
        EXPECT_TRUE(fcntl(channel.fd(), F_GETFD) & FD_CLOEXEC);
        EXPECT_FALSE(fcntl(channel.fd(), F_GETFL) & O_NONBLOCK) << "blocks as before";
        const int peer = accept4(listener.fd(), nullptr, nullptr, SOCK_CLOEXEC);
        ASSERT_GE(peer, 0);
        channel.close(true);
        char byte = 0;
        EXPECT_EQ(read(peer, &byte, 1), 0) << "the peer sees the end";
        close(peer);
    }
}

TEST(SocketChannel, BindsToItsInterfaceBeforeItConnects)
{
    const Listener listener(SocketAddress(L"127.0.0.1"));
    ASSERT_TRUE(listener.isReady());
    SocketChannel channel;
    channel.setInterfaceName(L"lo");
    EXPECT_TRUE(channel.connect(listener.address())) << std::strerror(errno);
    char name[IFNAMSIZ] = "";
    socklen_t size = sizeof(name);
    EXPECT_EQ(getsockopt(channel.fd(), SOL_SOCKET, SO_BINDTODEVICE, name, &size), 0);
    EXPECT_STREQ(name, "lo");
    for (const wchar_t* missing : {L"nosuchifce", L"lo-and-far-too-long-a-name"}) {
        channel.setInterfaceName(missing);
        EXPECT_FALSE(channel.open(AF_INET));
        EXPECT_EQ(errno, ENODEV);
        EXPECT_FALSE(channel.isOpen());
    }
}

TEST(SocketChannel, SaysWhyItCannotConnectAndLeaksNothing)
{
    const auto before = descriptorCount();
    SocketAddress closedPort;
    {
        const Listener listener(SocketAddress(L"127.0.0.1"));
        ASSERT_TRUE(listener.isReady());
        closedPort = listener.address();
    }
    for (int i = 0; i < 3; ++i) {
        SocketChannel channel;
        EXPECT_FALSE(channel.connect(closedPort));
        EXPECT_EQ(errno, ECONNREFUSED);
        EXPECT_FALSE(channel.connect(closedPort, 1000));
        EXPECT_EQ(errno, ECONNREFUSED);
        EXPECT_FALSE(channel.connect(SocketAddress()));
        EXPECT_EQ(errno, EAFNOSUPPORT);
        EXPECT_FALSE(channel.isOpen());
        EXPECT_TRUE(channel.open(AF_INET) && channel.open(AF_INET6)) << "opened over an open one";
    }
    EXPECT_EQ(descriptorCount(), before);
}

TEST(SocketChannel, GivesUpWhenTheTimeHasPassed)
{
    // The kernel ignores connection requests beyond a full queue of a listener that never accepts.
    const Listener listener(SocketAddress(L"127.0.0.1"), 0);
    ASSERT_TRUE(listener.isReady());
    SocketChannel channels[8];
    const auto start = std::chrono::steady_clock::now();
    int failed = 0;
    for (SocketChannel& channel : channels) {
        if (channel.connect(listener.address(), 100))
            continue;
        EXPECT_EQ(errno, ETIMEDOUT);
        EXPECT_FALSE(channel.isOpen());
        if (++failed == 2)
            break;
    }
    if (failed == 0)
        GTEST_SKIP() << "this kernel's queue does not fill";
    const auto passed = std::chrono::steady_clock::now() - start;
    EXPECT_GE(passed, std::chrono::milliseconds(100 * failed));
    EXPECT_LT(passed, std::chrono::seconds(5));
}
