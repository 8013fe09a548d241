// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Address of a socket.
#pragma once

#include "Core/K7CoreApi.h"
#include "Foundation/J3String.h"

namespace Kivo {

/// An IPv4 or IPv6 host with a port, or none.
/// *Threads*: a value, as an int.
class K7CORE_API SocketAddress {
public:
    SocketAddress() = default;

    /// @param host     an IPv4 or IPv6 address or, with @p resolve, a host name; other texts make no valid address
    /// @param port     in host byte order
    /// @param resolve  whether a host name is looked up; its first address is taken
    /// @param ifceName the interface that a link-local IPv6 address belongs to; other addresses take no notice of it.
    ///                 A name that no interface has makes no valid address.
    /// *Cost*: a few instructions for a numeric host; a look-up blocks as long as getaddrinfo() does.
    explicit SocketAddress(const J3String& host, uint16 port = 0, bool resolve = false, const J3String& ifceName = {});

    [[nodiscard]] bool isValid() const { return _size != 0; }

    /// The numeric host, without the interface of a link-local one; empty for none.
    [[nodiscard]] J3String hostText() const;

    /// The port in host byte order.
    [[nodiscard]] uint16 port() const;

    /// "127.0.0.1:80", "[::1]:80"; empty for none.
    [[nodiscard]] J3String toString() const;

    /// AF_INET, AF_INET6 or, for none, AF_UNSPEC.
    [[nodiscard]] int family() const;

    /// The kernel's sockaddr of the family, and its size in bytes; 0 for none.
    [[nodiscard]] const void* data() const { return _storage; }

    [[nodiscard]] uint32 size() const { return _size; }

    /// Take a sockaddr_in or a sockaddr_in6.
    /// @return false, changing nothing, for another family or when @p size is too small for it
    bool assign(const void* address, uint32 size);

private:
    static constexpr uint32 CAPACITY = 28; ///< a sockaddr_in6

    bool setNumeric(const char* host, uint16 port);
    bool lookUp(const J3String& host, uint16 port);
    bool setScope(const J3String& ifceName);

    alignas(8) uint8 _storage[CAPACITY] = {};
    uint32 _size = 0;
};

} // namespace Kivo
