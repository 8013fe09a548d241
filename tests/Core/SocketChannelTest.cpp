// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// TCP channels, on loopback only.
#include "Core/SocketChannel.h"

#include "support/BoundSocket.h"

#include <gtest/gtest.h>

#include <cerrno>

#include <fcntl.h>
#include <unistd.h>

using namespace Kivo;

TEST(SocketChannelLive, ConnectsOverBothFamilies)
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

TEST(SocketChannelLive, SaysWhyItFailsAndLeaksNothing)
{
    const int free = dup(STDIN_FILENO); // the lowest that is free
    close(free);
    const SocketAddress closedPort = BoundSocket(L"127.0.0.1", SOCK_STREAM).address;
    {
        SocketChannel channel;
        EXPECT_FALSE(channel.connect(closedPort, 1000));
        EXPECT_EQ(errno, ECONNREFUSED);
        EXPECT_FALSE(channel.connect(SocketAddress()));
        EXPECT_EQ(errno, EAFNOSUPPORT);
        EXPECT_TRUE(channel.open(AF_INET));
        EXPECT_TRUE(channel.open(AF_INET)) << "over an open one";
        channel.setInterfaceName(L"lo-and-far-too-long-a-name");
        EXPECT_FALSE(channel.open(AF_INET));
        EXPECT_EQ(errno, ENODEV);
    }
    EXPECT_EQ(fcntl(free, F_GETFD), -1);
}
