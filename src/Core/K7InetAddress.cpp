// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Address of either family.
#include "Core/K7InetAddress.h"

#include "Core/K7AsciiText_p.h"

namespace Kivo {

K7InetAddress* K7InetAddress::clone() const { return new K7InetAddress(*this); }

J3String K7InetAddress::toString() const
{
    return isIPv4() ? _ipv4.toString() : isIPv6() ? _ipv6.toString() : J3String();
}

void K7InetAddress::unarchiveFrom(J3Archive* archive)
{
    K7InetAddress read(*this);
    read.J3Record::unarchiveFrom(archive);
    takeRead(read);
}

void K7InetAddress::deserializeFrom(J3Stream* stream)
{
    K7InetAddress read(*this);
    read.J3Record::deserializeFrom(stream);
    takeRead(read);
}

void K7InetAddress::takeRead(const K7InetAddress& read)
{
    const bool known = read._family == NONE || read._family == IPV4 || read._family == IPV6;
    if (!known || (read._ipv4.isValid() && !read.isIPv4()) || (read._ipv6.isValid() && !read.isIPv6()))
        throw J3RangeException(L"address family", NONE, IPV6, read._family);
    *this = read;
}

bool K7InetAddress::fromString(const J3String& text) { return fromString(K7AsciiText(text).c_str()); }

bool K7InetAddress::fromString(const char* text)
{
    K7IPv4Address ipv4;
    K7IPv6Address ipv6;
    if (ipv4.fromString(text))
        *this = ipv4;
    else if (ipv6.fromString(text))
        *this = ipv6;
    else
        return false;
    return true;
}

} // namespace Kivo
