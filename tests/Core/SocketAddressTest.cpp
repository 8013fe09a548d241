// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Addresses of sockets.
#include "Core/SocketAddress.h"

#include <gtest/gtest.h>

#include <net/if.h>
#include <netinet/in.h>

using namespace Kivo;

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
