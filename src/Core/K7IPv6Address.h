// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// IPv6 address value.
#pragma once

#include "Core/K7CoreApi.h"
#include "Foundation/J3Record.h"

namespace Kivo {

/// An IPv6 address without a scope. The unspecified address :: stands for "not set" and is not valid.
/// *Threads*: a value, as an int.
class K7CORE_API K7IPv6Address : public J3Record<K7IPv6Address> {
public:
    static constexpr uint32 SIZE = 16; ///< bytes of an address

    K7IPv6Address() = default;

    K7IPv6Address(uint64 msb, uint64 lsb) : _msb(msb), _lsb(lsb) {}

    [[nodiscard]] K7IPv6Address* clone() const override;

    /// The shortest form in lower case, "fe80::1".
    [[nodiscard]] J3String toString() const override;

    [[nodiscard]] bool isValid() const { return (_msb | _lsb) != 0; }

    void clear() { _msb = _lsb = 0; }

    /// Take any of the text forms that inet_pton knows. @return false, changing nothing, for any other text, for one
    /// with a scope or a prefix length, and for null
    /// @{
    bool fromString(const J3String& text);
    bool fromString(const char* text);
    /// @}

    /// Set one half.
    /// @param half  0 for the more significant one, 1 for the less significant one; any other changes nothing
    /// @param value the half's number, 0xFE80000000000000 for "fe80:0:0:0"
    void setValue64(int half, uint64 value);

    [[nodiscard]] uint64 value64MSB() const { return _msb; }

    [[nodiscard]] uint64 value64LSB() const { return _lsb; }

    /// Keep the first @p prefixLength bits and clear the others; 128 and more keep all.
    void maskSubnet(uint32 prefixLength);

    /// The bytes in network order, as the kernel's in6_addr has them.
    [[nodiscard]] std::array<uint8, SIZE> bytes() const;

    /// Take SIZE bytes in network order; null is reported and changes nothing.
    void setBytes(const uint8* bytes);

    static auto fields(auto& self) { return std::tie(self._msb, self._lsb); }

    friend std::strong_ordering operator<=>(const K7IPv6Address& left, const K7IPv6Address& right)
    {
        return fields(left) <=> fields(right);
    }

private:
    uint64 _msb = 0;
    uint64 _lsb = 0;
};

} // namespace Kivo
