// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Codec of the ICMP echo header.
#pragma once

#include "Protocol/Network/K7HeaderWithData.h"

namespace Kivo {

/// The header's size, and where the quoted original datagram begins within messages of the kinds named.
enum K7IcmpHeaderConst : uint32 {
    K7_ICMP_HEADER_SIZE = 16,
    K7_ICMP_HEADER_OFFSET_DEST_UNREACHABLE = 8,
    K7_ICMP_HEADER_OFFSET_SRC_QUENCH = 8,
    K7_ICMP_HEADER_OFFSET_REDIRECT = 4,
    K7_ICMP_HEADER_OFFSET_TTL_EQUALS = 8
};

enum K7IcmpType : uint8 {
    K7_ICMP_ECHO_REPLY = 0,
    K7_ICMP_DEST_UNREACHABLE = 3,
    K7_ICMP_SOURCE_QUENCH = 4,
    K7_ICMP_REDIRECT = 5,
    K7_ICMP_ECHO_REQUEST = 8,
    K7_ICMP_TIME_EXCEEDED = 11,
    K7_ICMP_PARAMETER_PROBLEM = 12,
    K7_ICMP_TIMESTAMP_REQUEST = 13,
    K7_ICMP_TIMESTAMP_REPLY = 14,
    K7_ICMP_INFO_REQUEST = 15,
    K7_ICMP_INFO_REPLY = 16,
    K7_ICMP_ADDRESS_REQUEST = 17,
    K7_ICMP_ADDRESS_REPLY = 18
};

/// The 16 bytes in front of an echo message: the ICMP header and two timestamps of the sender's.
struct IcmpHeaderInfo {
    uint8 _type;
    uint8 _code;
    uint16 _chksum;
    uint16 _id;
    uint16 _seqNum;
    uint32 _timeStamp1;
    uint32 _timeStamp2;
};

static_assert(sizeof(IcmpHeaderInfo) == K7_ICMP_HEADER_SIZE);

/// An ICMP header and the message that it was read from or is sent with.
/// *Threads*: a value, as a std::vector.
class K7SAL_API K7IcmpHeader : public K7HeaderWithData<K7IcmpHeader, IcmpHeaderInfo> {
public:
    K7IcmpHeader() = default;

    /// Take a message as copyFrom(raw, length) does; an empty header when that refuses it.
    K7IcmpHeader(const uint8* raw, uint32 length) { copyFrom(raw, length); }

    [[nodiscard]] K7IcmpHeader* clone() const override;

    /// "{type,code,0xchksum,0xid,0xseqnum,0xtimestamp1,0xtimestamp2}" in lower-case hexadecimal, every value of more
    /// than a byte converted from network order.
    [[nodiscard]] J3String toString() const override;

    [[nodiscard]] uint8 type() const { return info()._type; }

    [[nodiscard]] uint8 code() const { return info()._code; }

    [[nodiscard]] uint16 chksum() const { return info()._chksum; }

    [[nodiscard]] uint16 id() const { return info()._id; }

    [[nodiscard]] uint16 seqNum() const { return info()._seqNum; }

    [[nodiscard]] uint32 timeStamp1() const { return info()._timeStamp1; }

    [[nodiscard]] uint32 timeStamp2() const { return info()._timeStamp2; }

    void setType(uint8 type) { info()._type = type; }

    void setCode(uint8 code) { info()._code = code; }

    void setChksum(uint16 chksum) { info()._chksum = chksum; }

    void setId(uint16 id) { info()._id = id; }

    void setSeqNum(uint16 number) { info()._seqNum = number; }

    void seTimestamp1(uint32 value) { info()._timeStamp1 = value; }

    void seTimestamp2(uint32 value) { info()._timeStamp2 = value; }
};

} // namespace Kivo
