// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Socket addresses, raw sockets and TCP channels, on loopback only.
#include "Core/SocketChannel.h"

#include <gtest/gtest.h>

#include <cerrno>

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
        if (bind(fd, static_cast<const sockaddr*>(wanted.data()), wanted.size()) == 0 &&
            getsockname(fd, reinterpret_cast<sockaddr*>(&bound), &size) == 0)
            address.assign(&bound, size);
    }

    ~BoundSocket() { SocketApiWrapper::closeSocket(fd); }

    int fd;
    SocketAddress address;
};

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
    const SocketAddress local(L"fe80::1", 0, false, L"lo");
    EXPECT_EQ(static_cast<const sockaddr_in6*>(local.data())->sin6_scope_id, if_nametoindex("lo"));
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
    EXPECT_EQ(from.toString(), self.address.toString());
    EXPECT_TRUE(SocketApiWrapper::recvFrom(self.fd, buffer, sizeof(buffer), from, false) < 0 && errno == EAGAIN);
    EXPECT_TRUE(SocketApiWrapper::sendTo(self.fd, "x", 1, SocketAddress()) < 0 && errno == EINVAL);
}

TEST(SocketChannel, ConnectsOverBothFamilies)
{
    for (const wchar_t* host : {L"127.0.0.1", L"::1"}) {
        const BoundSocket listener(host, SOCK_STREAM);
        if (!listener.address.isValid() || listen(listener.fd, 1) != 0)
            GTEST_SKIP() << "no loopback address of this family";
        SocketChannel channel;
        ASSERT_TRUE(channel.connect(listener.address, 2000)) << errno;
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
    const int free = dup(STDIN_FILENO); // the lowest that is free
    close(free);
    const SocketAddress closedPort = BoundSocket(L"127.0.0.1", SOCK_STREAM).address;
    {
        SocketChannel channel;
        EXPECT_TRUE(!channel.connect(closedPort, 1000) && errno == ECONNREFUSED);
        EXPECT_TRUE(!channel.connect(SocketAddress()) && errno == EAFNOSUPPORT);
        EXPECT_TRUE(channel.open(AF_INET) && channel.open(AF_INET)) << "opened over an open one";
        channel.setInterfaceName(L"lo-and-far-too-long-a-name");
        EXPECT_TRUE(!channel.open(AF_INET) && errno == ENODEV);
    }
    EXPECT_EQ(fcntl(free, F_GETFD), -1);
}
