// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Codec of the IPv4 header.
#include "Protocol/Network/K7IPv4Header.h"

#include "Core/K7IPv4Address.h"

namespace Kivo {

namespace {

J3String dottedText(uint32 networkValue)
{
    K7IPv4Address address;
    address.setNetworkValue(networkValue);
    return address.toString();
}

} // namespace

K7IPv4Header* K7IPv4Header::clone() const { return new K7IPv4Header(*this); }

J3String K7IPv4Header::toString() const
{
    return J3String().format(L"{%u,%u,%u,%u,%u,%u,%u,%u,0x%04X,0x%08X,0x%08X}", version(), headerLength(), tos(),
                             length(), id(), fragmentOffset(), ttl(), protocol(), chksum(), srcIp(), dstIp());
}

J3String K7IPv4Header::sourceAddress() const { return dottedText(srcIp()); }

J3String K7IPv4Header::destAddress() const { return dottedText(dstIp()); }

void K7IPv4Header::setVersion(uint8 version)
{
    setVersionAndHdrLen(static_cast<uint8>((info()._verAndHdrLen & MASK_HEADER_LEN) | (version & MASK_VERSION)));
}

void K7IPv4Header::setHeaderLength(uint8 length)
{
    setVersionAndHdrLen(static_cast<uint8>((length << 4 & MASK_HEADER_LEN) | version()));
}

} // namespace Kivo
