// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Address of either family.
#pragma once

#include "Core/K7IPv4Address.h"
#include "Core/K7IPv6Address.h"

namespace Kivo {

/// An IPv4 or an IPv6 address, or none. Addresses are ordered by family first: none, IPv4, IPv6.
/// *Threads*: a value, as an int.
class K7CORE_API K7InetAddress : public J3Record<K7InetAddress> {
public:
    K7InetAddress() = default;

    K7InetAddress(const K7IPv4Address& address) : _family(IPV4), _ipv4(address) {}

    K7InetAddress(const K7IPv6Address& address) : _family(IPV6), _ipv6(address) {}

    [[nodiscard]] K7InetAddress* clone() const override;

    /// The address's own text; empty for none.
    [[nodiscard]] J3String toString() const override;

    /// Take an address of the family that the text has. @return false, changing nothing, for any other text
    /// @{
    bool fromString(const J3String& text);
    bool fromString(const char* text);
    /// @}

    /// Become no address.
    void makeInvalid() { *this = K7InetAddress(); }

    /// Whether there is an address and it is set, 0.0.0.0 and :: not being so.
    [[nodiscard]] bool isValid() const { return _ipv4.isValid() || _ipv6.isValid(); }

    [[nodiscard]] bool isIPv4() const { return _family == IPV4; }

    [[nodiscard]] bool isIPv6() const { return _family == IPV6; }

    /// The address when it is of that family, one that is not set otherwise.
    [[nodiscard]] const K7IPv4Address& ipv4Address() const { return _ipv4; }

    [[nodiscard]] const K7IPv6Address& ipv6Address() const { return _ipv6; }

    /// Refuse a family that is not known, and an address of the other one beside it.
    void validate() const;

    static auto fields(auto& self) { return std::tie(self._family, self._ipv4, self._ipv6); }

    friend std::strong_ordering operator<=>(const K7InetAddress& left, const K7InetAddress& right)
    {
        return fields(left) <=> fields(right);
    }

private:
    enum Family : uint8 { NONE = 0, IPV4 = 4, IPV6 = 6 };

    Family _family = NONE;
    K7IPv4Address _ipv4;
    K7IPv6Address _ipv6;
};

} // namespace Kivo
