// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The Internet checksum.
#include "Protocol/Network/K7HeaderWithData.h"

namespace Kivo {

// The sum is taken in 32-bit words, which fold to the same 16 bits because 2^16 = 1 modulo 2^16 - 1. The longest input
// has 2^30 of them, so that 64 bits never overflow.
uint16 k7InternetChecksum(const uint8* bytes, uint32 length)
{
    uint64 sum = 0;
    const auto add = [&sum](const uint8* from, std::size_t count) {
        uint64 words = 0;
        std::memcpy(&words, from, count);
        sum += (words & 0xFFFFFFFF) + (words >> 32);
    };
    for (; length >= sizeof(uint64); bytes += sizeof(uint64), length -= sizeof(uint64))
        add(bytes, sizeof(uint64));
    if (length > 0)
        add(bytes, length);
    while (sum > 0xFFFF)
        sum = (sum & 0xFFFF) + (sum >> 16);
    return static_cast<uint16>(~sum);
}

} // namespace Kivo
