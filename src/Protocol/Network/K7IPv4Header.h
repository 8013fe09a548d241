// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Codec of the IPv4 header.
#pragma once

#include "Protocol/Network/K7HeaderWithData.h"

namespace Kivo {

enum K7IPv4HeaderConst : uint32 {
    K7_IPV4_HEADER_SIZE = 20,
    K7_IPV4_HEADER_OPTIONS_SIZE = 40,
    K7_IPV4_HEADER_FULL_SIZE = 60
};

enum K7IPv4HeaderMaskBits : uint16 {
    MASK_VERSION = 0x0F,
    MASK_HEADER_LEN = 0xF0,
    MASK_MORE_FRAG_FLAG = 0x2000,
    MASK_DONT_FRAG_FLAG = 0x4000,
    MASK_OFFFRAG = 0x1FFF
};

/// The 20 bytes of an IPv4 header without options.
struct IPv4HeaderInfo {
    uint8 _verAndHdrLen; ///< MASK_VERSION and MASK_HEADER_LEN
    uint8 _tos;
    uint16 _length;
    uint16 _id;
    uint16 _fragmentOffset; ///< MASK_MORE_FRAG_FLAG, MASK_DONT_FRAG_FLAG and MASK_OFFFRAG
    uint8 _ttl;
    uint8 _protocol;
    uint16 _chksum;
    uint32 _srcIp;
    uint32 _dstIp;
};

static_assert(sizeof(IPv4HeaderInfo) == K7_IPV4_HEADER_SIZE);

/// An IPv4 header and the message that it was read from or is sent with.
///
/// This class keeps the version in the low half of the first byte and the header length in the high half, so that
/// version() of a header from the wire, where the halves stand the other way round, is its length in words.
/// *Threads*: a value, as a std::vector.
class K7SAL_API K7IPv4Header : public K7HeaderWithData<K7IPv4Header, IPv4HeaderInfo> {
public:
    K7IPv4Header() = default;

    /// Take a message as copyFrom(raw, length) does; an empty header when that refuses it.
    K7IPv4Header(const uint8* raw, uint32 length) { copyFrom(raw, length); }

    [[nodiscard]] K7IPv4Header* clone() const override;

    /// "{version,header length,tos,length,id,fragment,ttl,protocol,0xCHKSUM,0xSOURCE,0xDESTINATION}", every value as
    /// stored, the last three in upper-case hexadecimal.
    [[nodiscard]] J3String toString() const override;

    [[nodiscard]] uint8 version() const { return info()._verAndHdrLen & MASK_VERSION; }

    [[nodiscard]] uint8 headerLength() const { return (info()._verAndHdrLen & MASK_HEADER_LEN) >> 4; }

    [[nodiscard]] uint8 tos() const { return info()._tos; }

    [[nodiscard]] uint16 length() const { return info()._length; }

    [[nodiscard]] uint16 id() const { return info()._id; }

    [[nodiscard]] uint16 fragmentOffset() const { return info()._fragmentOffset; }

    [[nodiscard]] uint8 ttl() const { return info()._ttl; }

    [[nodiscard]] uint8 protocol() const { return info()._protocol; }

    [[nodiscard]] uint16 chksum() const { return info()._chksum; }

    [[nodiscard]] uint32 srcIp() const { return info()._srcIp; }

    [[nodiscard]] uint32 dstIp() const { return info()._dstIp; }

    // The parts of fragmentOffset(), as stored.
    [[nodiscard]] bool isMoreFragments() const { return (info()._fragmentOffset & MASK_MORE_FRAG_FLAG) != 0; }

    [[nodiscard]] bool isDontFragment() const { return (info()._fragmentOffset & MASK_DONT_FRAG_FLAG) != 0; }

    [[nodiscard]] uint16 fragmentPosition() const { return info()._fragmentOffset & MASK_OFFFRAG; }

    /// The addresses as dotted text: the four bytes as they lie on the wire.
    [[nodiscard]] J3String sourceAddress() const;
    [[nodiscard]] J3String destAddress() const;

    void setVersionAndHdrLen(uint8 both) { info()._verAndHdrLen = both; }

    /// Replace the low, or the high, half of the first byte by the low four bits given.
    void setVersion(uint8 version);
    void setHeaderLength(uint8 length);

    void setTos(uint8 tos) { info()._tos = tos; }

    void setLength(uint16 length) { info()._length = length; }

    void setId(uint16 id) { info()._id = id; }

    void setFragmentOffset(uint16 flagsAndOffset) { info()._fragmentOffset = flagsAndOffset; }

    void setTtl(uint8 ttl) { info()._ttl = ttl; }

    void setProtocol(uint8 protocol) { info()._protocol = protocol; }

    void setChksum(uint16 chksum) { info()._chksum = chksum; }

    void setSourceIp(uint32 address) { info()._srcIp = address; }

    void setDestIp(uint32 address) { info()._dstIp = address; }
};

} // namespace Kivo
