// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What the header codecs share: a fixed header as its wire bytes, and the message it belongs to.
#pragma once

#include "K7SALApi.h"

#include "Foundation/J3Record.h"

#include <cstring>
#include <vector>

namespace Kivo {

/// Compute the Internet checksum (RFC 1071) over @p length bytes, in 16-bit words of host byte order. A last odd byte
/// counts as a word whose other byte is 0.
/// @return the one's complement of the folded sum; stored in host order, it stands right on the wire
[[nodiscard]] K7SAL_API uint16 k7InternetChecksum(const uint8* bytes, uint32 length);

/// Base of a codec for one kind of header: the header, readable as raw bytes and as named fields, and a whole message.
///
/// The header is the wire image: it is copied to and from the wire byte for byte, and an accessor of a field reads or
/// writes it as it lies there, without a conversion of byte order.
/// @tparam Derived the codec
/// @tparam Info    the header's fields in wire layout, one of them `_chksum`
template <class Derived, class Info>
class K7HeaderWithData : public J3Record<Derived> {
public:
    static constexpr uint32 HEADER_SIZE = sizeof(Info);

    /// Take a message as received: the header from its first bytes, the data from all of it, header included.
    /// @param raw    the message, not part of this codec's own data()
    /// @param length its length in bytes
    /// @return false, changing nothing, when @p raw is null or @p length is less than a header
    bool copyFrom(const uint8* raw, uint32 length)
    {
        if (!raw || length < HEADER_SIZE)
            return false;
        std::memcpy(_header.bytes.data(), raw, HEADER_SIZE);
        _data.assign(raw, raw + length);
        return true;
    }

    /// The same as copyFrom(raw, length).
    bool loadFrom(const uint8* raw, uint32 length) { return copyFrom(raw, length); }

    void copyFrom(const Derived& other) { static_cast<Derived&>(*this) = other; }

    /// Zero the header and drop the data, keeping room for a header.
    void makeInvalid()
    {
        _header = {};
        _data.clear();
        _data.reserve(HEADER_SIZE);
    }

    /// The whole message, with room for the header in front.
    [[nodiscard]] const std::vector<uint8>& data() const { return _data; }

    void setData(const std::vector<uint8>& data) { _data = data; }

    void setDataSize(uint32 size) { _data.resize(size); }

    /// Write the message as it goes out: data() with the header laid over its front and the checksum, computed over all
    /// of it, in its place. The stored checksum takes no part and is not changed.
    /// @param dest takes the message, exactly as long as data(). It is left as it was, and the violation reported, when
    ///             data() is shorter than the header.
    /// *Cost*: allocates only when @p dest has less capacity than data() needs.
    void compileTo(std::vector<uint8>* dest) const
    {
        if (!dest) {
            J3_REPORT("dest", "dest is Null!", SOURCE_PATH);
            return;
        }
        if (_data.size() < HEADER_SIZE) {
            J3_REPORT("_data.size() >= HEADER_SIZE", "_data is shorter than the header!", SOURCE_PATH);
            return;
        }
        Info header = _header.info;
        header._chksum = 0;
        *dest = _data;
        std::memcpy(dest->data(), &header, HEADER_SIZE);
        header._chksum = calcChksum(dest->data(), static_cast<uint32>(dest->size()));
        std::memcpy(dest->data(), &header, HEADER_SIZE);
    }

    /// The Internet checksum of any bytes, see k7InternetChecksum(). Null is reported and counts as no bytes.
    [[nodiscard]] uint16 calcChksum(const uint8* bytes, uint32 length) const
    {
        if (!bytes && length > 0) {
            J3_REPORT("bytes", "bytes is Null!", SOURCE_PATH);
            length = 0;
        }
        return k7InternetChecksum(bytes, length);
    }

    /// Whether the checksum over all of data(), its checksum field included, equals the stored one. An intact message
    /// sums up to 0, so this is true of it only when it carries the checksum 0.
    [[nodiscard]] bool verifyChksum() const
    {
        return calcChksum(_data.data(), static_cast<uint32>(_data.size())) == _header.info._chksum;
    }

    static auto fields(auto& self) { return std::tie(self._header.bytes, self._data); }

protected:
    K7HeaderWithData() = default;

    [[nodiscard]] const Info& info() const { return _header.info; }

    [[nodiscard]] Info& info() { return _header.info; }

private:
    static constexpr const char* SOURCE_PATH = "Protocol/Network/K7HeaderWithData";

    union Header {
        Info info;
        std::array<uint8, HEADER_SIZE> bytes;
    };

    static_assert(std::is_trivially_copyable_v<Info> && std::has_unique_object_representations_v<Info>,
                  "the fields are the wire image: no padding, nothing to construct");

    Header _header{};
    std::vector<uint8> _data;
};

} // namespace Kivo
