// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Codec of the ICMP echo header.
#include "Protocol/Network/K7IcmpHeader.h"

#include <arpa/inet.h>

namespace Kivo {

K7IcmpHeader* K7IcmpHeader::clone() const { return new K7IcmpHeader(*this); }

J3String K7IcmpHeader::toString() const
{
    return J3String().format(L"{%u,%u,0x%04x,0x%04x,0x%04x,0x%08x,0x%08x}", type(), code(), ntohs(chksum()),
                             ntohs(id()), ntohs(seqNum()), ntohl(timeStamp1()), ntohl(timeStamp2()));
}

} // namespace Kivo
