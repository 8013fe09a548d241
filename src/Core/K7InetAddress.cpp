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

void K7InetAddress::validate() const
{
    const bool known = _family == NONE || _family == IPV4 || _family == IPV6;
    if (!known || (_ipv4.isValid() && !isIPv4()) || (_ipv6.isValid() && !isIPv6()))
        throw J3RangeException(L"address family", NONE, IPV6, _family);
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
