// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// IPv4 address value.
#include "Core/K7IPv4Address.h"

#include "Core/K7AsciiText_p.h"

#include <arpa/inet.h>

namespace Kivo {

K7IPv4Address* K7IPv4Address::clone() const { return new K7IPv4Address(*this); }

J3String K7IPv4Address::toString() const
{
    return J3String().format(L"%u.%u.%u.%u", _value >> 24, _value >> 16 & 0xFF, _value >> 8 & 0xFF, _value & 0xFF);
}

bool K7IPv4Address::set(int first, int second, int third, int fourth)
{
    uint32 value = 0;
    for (const int octet : {first, second, third, fourth}) {
        if (octet < 0 || octet > 255)
            return false;
        value = value << 8 | static_cast<uint32>(octet);
    }
    _value = value;
    return true;
}

bool K7IPv4Address::fromString(const J3String& text) { return fromString(K7AsciiText(text).c_str()); }

bool K7IPv4Address::fromString(const char* text)
{
    in_addr address{};
    if (!text || inet_pton(AF_INET, text, &address) != 1)
        return false;
    setNetworkValue(address.s_addr);
    return true;
}

uint32 K7IPv4Address::networkValue() const { return htonl(_value); }

void K7IPv4Address::setNetworkValue(uint32 value) { _value = ntohl(value); }

} // namespace Kivo
