// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Socket addresses, raw sockets and TCP channels, on loopback only.
#include "Core/SocketChannel.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>

#include <fcntl.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

using namespace Kivo;

namespace {

/// A socket bound to a loopback address, at a port of the kernel's choice.
struct BoundSocket {
    BoundSocket(const wchar_t* host, int type)
    {
        const SocketAddress wanted(host);
        sockaddr_storage bound{};
        socklen_t size = sizeof(bound);
        fd = socket(wanted.family(), type | SOCK_CLOEXEC, 0);
        isReady = bind(fd, static_cast<const sockaddr*>(wanted.data()), wanted.size()) == 0 &&
                  getsockname(fd, reinterpret_cast<sockaddr*>(&bound), &size) == 0 && address.assign(&bound, size);
    }

    ~BoundSocket() { SocketApiWrapper::closeSocket(fd); }

    int fd;
    bool isReady;
    SocketAddress address;
};

auto descriptorCount()
{
    using std::filesystem::directory_iterator;
    return std::distance(directory_iterator("/proc/self/fd"), directory_iterator());
}

} // namespace

TEST(SocketAddress, TakesNumericHostsWithoutALookUp)
{
    EXPECT_EQ(SocketAddress(L"127.0.0.1", 80, true).toString(), L"127.0.0.1:80");
    EXPECT_EQ(SocketAddress(L"FE80:0::1", 65535).toString(), L"[fe80::1]:65535");
    for (const char* bad : {"", "localhost", "127.0.0", "1.2.3.4:80", "[::1]", "fe80::1%lo"})
        EXPECT_EQ(SocketAddress(bad, 80).toString(), L"") << bad;
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

TEST(SocketApiWrapper, DeliversDatagramsWithTheirSender)
{
    const BoundSocket self(L"127.0.0.1", SOCK_DGRAM);
    EXPECT_EQ(SocketApiWrapper::sendTo(self.fd, "abcdef", 6, self.address), 6);
    char buffer[4] = "";
    SocketAddress from;
    EXPECT_EQ(SocketApiWrapper::recvFrom(self.fd, buffer, sizeof(buffer), from), 4);
    EXPECT_EQ(std::string(buffer, 4), "abcd");
    EXPECT_EQ(from.toString(), self.address.toString());
    EXPECT_LT(SocketApiWrapper::recvFrom(self.fd, buffer, sizeof(buffer), from, false), 0);
    EXPECT_EQ(errno, EAGAIN);
    EXPECT_LT(SocketApiWrapper::sendTo(self.fd, "x", 1, SocketAddress()), 0);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(SocketApiWrapper::createRawSocket(1), SocketApiWrapper::INVALID_FD);
    EXPECT_EQ(errno, EPROTONOSUPPORT);
}

TEST(SocketChannel, ConnectsOverBothFamilies)
{
    for (const wchar_t* host : {L"127.0.0.1", L"::1"}) {
        const BoundSocket listener(host, SOCK_STREAM);
        if (!listener.isReady || listen(listener.fd, 1) != 0)
            GTEST_SKIP() << "no loopback address of this family";
        SocketChannel channel;
        ASSERT_TRUE(channel.connect(listener.address, 2000)) << errno;
        EXPECT_TRUE(fcntl(channel.fd(), F_GETFD) & FD_CLOEXEC);
        EXPECT_FALSE(fcntl(channel.fd(), F_GETFL) & O_NONBLOCK) << "blocks as before";
        const int peer = accept4(listener.fd, nullptr, nullptr, SOCK_CLOEXEC);
        channel.close(true);
        char byte = 0;
        EXPECT_EQ(read(peer, &byte, 1), 0) << "the peer sees the end";
        close(peer);
    }
}

TEST(SocketChannel, SaysWhyItFailsAndLeaksNothing)
{
    const auto before = descriptorCount();
    const SocketAddress closedPort = BoundSocket(L"127.0.0.1", SOCK_STREAM).address;
    {
        SocketChannel channel;
        EXPECT_FALSE(channel.connect(closedPort, 1000));
        EXPECT_EQ(errno, ECONNREFUSED);
        EXPECT_FALSE(channel.connect(SocketAddress()));
        EXPECT_EQ(errno, EAFNOSUPPORT);
        EXPECT_TRUE(channel.open(AF_INET) && channel.open(AF_INET)) << "opened over an open one";
        channel.setInterfaceName(L"lo-and-far-too-long-a-name");
        EXPECT_FALSE(channel.open(AF_INET));
        EXPECT_EQ(errno, ENODEV);
    }
    EXPECT_EQ(descriptorCount(), before);
}
