// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Address of a socket.
#include "Core/SocketAddress.h"

#include "Core/K7AsciiText_p.h"

#include <cstring>
#include <memory>

#include <arpa/inet.h>
#include <net/if.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>

namespace Kivo {
namespace {

template <class T>
T nativeFrom(const void* address)
{
    T native;
    std::memcpy(&native, address, sizeof(native));
    return native;
}

} // namespace

SocketAddress::SocketAddress(const J3String& host, uint16 port, bool resolve, const J3String& ifceName)
{
    static_assert(sizeof(sockaddr_in6) == CAPACITY && sizeof(sockaddr_in) <= CAPACITY);
    const bool found = setNumeric(K7AsciiText(host).c_str(), port) || (resolve && lookUp(host, port));
    if (found && !ifceName.isEmpty() && !setScope(ifceName))
        *this = SocketAddress();
}

bool SocketAddress::setNumeric(const char* host, uint16 port)
{
    sockaddr_in ipv4{};
    if (inet_pton(AF_INET, host, &ipv4.sin_addr) == 1) {
        ipv4.sin_family = AF_INET;
        ipv4.sin_port = htons(port);
        return assign(&ipv4, sizeof(ipv4));
    }
    sockaddr_in6 ipv6{};
    if (inet_pton(AF_INET6, host, &ipv6.sin6_addr) == 1) {
        ipv6.sin6_family = AF_INET6;
        ipv6.sin6_port = htons(port);
        return assign(&ipv6, sizeof(ipv6));
    }
    return false;
}

bool SocketAddress::lookUp(const J3String& host, uint16 port)
{
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = AI_NUMERICSERV;
    addrinfo* found = nullptr;
    if (getaddrinfo(host.to_string().c_str(), std::to_string(port).c_str(), &hints, &found) != 0)
        return false;
    const std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> owner(found, freeaddrinfo);
    return assign(found->ai_addr, found->ai_addrlen);
}

bool SocketAddress::setScope(const J3String& ifceName)
{
    if (family() != AF_INET6)
        return true;
    auto address = nativeFrom<sockaddr_in6>(_storage);
    if (!IN6_IS_ADDR_LINKLOCAL(&address.sin6_addr))
        return true;
    address.sin6_scope_id = if_nametoindex(ifceName.to_string().c_str());
    return address.sin6_scope_id != 0 && assign(&address, sizeof(address));
}

J3String SocketAddress::hostText() const
{
    char text[INET6_ADDRSTRLEN] = "";
    if (family() == AF_INET) {
        const auto address = nativeFrom<sockaddr_in>(_storage);
        inet_ntop(AF_INET, &address.sin_addr, text, sizeof(text));
    } else if (family() == AF_INET6) {
        const auto address = nativeFrom<sockaddr_in6>(_storage);
        inet_ntop(AF_INET6, &address.sin6_addr, text, sizeof(text));
    }
    return text;
}

uint16 SocketAddress::port() const
{
    // Both families have the port at the same place; of no address it is 0.
    static_assert(offsetof(sockaddr_in, sin_port) == offsetof(sockaddr_in6, sin6_port));
    return ntohs(nativeFrom<uint16>(_storage + offsetof(sockaddr_in, sin_port)));
}

J3String SocketAddress::toString() const
{
    const J3String host = hostText();
    return isValid() ? J3String().format(family() == AF_INET6 ? L"[%@]:%u" : L"%@:%u", &host, port()) : host;
}

int SocketAddress::family() const { return isValid() ? nativeFrom<sa_family_t>(_storage) : AF_UNSPEC; }

bool SocketAddress::assign(const void* address, uint32 size)
{
    if (!address || size < sizeof(sa_family_t))
        return false;
    const auto family = nativeFrom<sa_family_t>(address);
    const std::size_t needed = family == AF_INET    ? sizeof(sockaddr_in)
                               : family == AF_INET6 ? sizeof(sockaddr_in6)
                                                    : CAPACITY + 1;
    if (needed > CAPACITY || size < needed)
        return false;
    std::memcpy(_storage, address, needed);
    _size = static_cast<uint32>(needed);
    return true;
}

} // namespace Kivo
