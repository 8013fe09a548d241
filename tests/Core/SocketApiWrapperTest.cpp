// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Socket calls, on loopback only.
#include "support/BoundSocket.h"

#include <gtest/gtest.h>

#include <cerrno>

using namespace Kivo;

TEST(SocketApiWrapperLive, DeliversDatagramsWithTheirSender)
{
    const BoundSocket self(L"127.0.0.1", SOCK_DGRAM);
    EXPECT_EQ(SocketApiWrapper::sendTo(self.fd, "abcdef", 6, self.address), 6);
    char buffer[4] = "";
    SocketAddress from;
    EXPECT_EQ(SocketApiWrapper::recvFrom(self.fd, buffer, sizeof(buffer), from), 4);
    EXPECT_EQ(from.toString(), self.address.toString());
    EXPECT_LT(SocketApiWrapper::recvFrom(self.fd, buffer, sizeof(buffer), from, false), 0);
    EXPECT_EQ(errno, EAGAIN);
    EXPECT_LT(SocketApiWrapper::sendTo(self.fd, "x", 1, SocketAddress()), 0);
    EXPECT_EQ(errno, EINVAL);
}
