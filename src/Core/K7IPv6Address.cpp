// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// IPv6 address value.
#include "Core/K7IPv6Address.h"

#include "Core/K7AsciiText_p.h"

#include <arpa/inet.h>

namespace Kivo {
namespace {

/// The bits that a prefix of @p length, clamped to 0 to 64, leaves of one half.
uint64 halfMask(uint32 length) { return length == 0 ? 0 : length >= 64 ? ~uint64{0} : ~uint64{0} << (64 - length); }

} // namespace

K7IPv6Address* K7IPv6Address::clone() const { return new K7IPv6Address(*this); }

J3String K7IPv6Address::toString() const
{
    char text[INET6_ADDRSTRLEN];
    return inet_ntop(AF_INET6, bytes().data(), text, sizeof(text));
}

bool K7IPv6Address::fromString(const J3String& text) { return fromString(K7AsciiText(text).c_str()); }

bool K7IPv6Address::fromString(const char* text)
{
    uint8 address[SIZE];
    if (!text || inet_pton(AF_INET6, text, address) != 1)
        return false;
    setBytes(address);
    return true;
}

void K7IPv6Address::setValue64(int half, uint64 value)
{
    if (half == 0)
        _msb = value;
    else if (half == 1)
        _lsb = value;
}

void K7IPv6Address::maskSubnet(uint32 prefixLength)
{
    _msb &= halfMask(prefixLength);
    _lsb &= halfMask(prefixLength > 64 ? prefixLength - 64 : 0);
}

std::array<uint8, K7IPv6Address::SIZE> K7IPv6Address::bytes() const
{
    std::array<uint8, SIZE> bytes{};
    for (uint32 i = 0; i < 8; ++i) {
        bytes[i] = static_cast<uint8>(_msb >> (56 - 8 * i));
        bytes[i + 8] = static_cast<uint8>(_lsb >> (56 - 8 * i));
    }
    return bytes;
}

void K7IPv6Address::setBytes(const uint8* bytes)
{
    if (!J3_REQUIRE_ARGUMENT(bytes, "Core/K7IPv6Address"))
        return;
    for (uint32 i = 0; i < 8; ++i) {
        _msb = _msb << 8 | bytes[i];
        _lsb = _lsb << 8 | bytes[i + 8];
    }
}

} // namespace Kivo
