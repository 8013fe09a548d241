// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// IPv4 address value.
#pragma once

#include "Core/K7CoreApi.h"
#include "Foundation/J3Record.h"

namespace Kivo {

/// An IPv4 address. 0.0.0.0 stands for "not set" and is not valid.
/// *Threads*: a value, as an int.
class K7CORE_API K7IPv4Address : public J3Record<K7IPv4Address> {
public:
    K7IPv4Address() = default;

    /// @param value the address in host byte order, 0x7F000001 for 127.0.0.1
    explicit K7IPv4Address(uint32 value) : _value(value) {}

    [[nodiscard]] K7IPv4Address* clone() const override;

    /// The dotted quad, of an address that is not set too.
    [[nodiscard]] J3String toString() const override;

    [[nodiscard]] bool isValid() const { return _value != 0; }

    /// Take four octets, the most significant first. @return false, changing nothing, when one is not 0 to 255
    bool set(int first, int second, int third, int fourth);

    /// Take a dotted quad of four decimal numbers without leading zeros. @return false, changing nothing, for any other
    /// text and for null
    /// @{
    bool fromString(const J3String& text);
    bool fromString(const char* text);
    /// @}

    /// The address in host byte order.
    [[nodiscard]] uint32 value() const { return _value; }

    void setValue(uint32 value) { _value = value; }

    /// The address in network byte order, as the kernel's in_addr has it.
    /// @{
    [[nodiscard]] uint32 networkValue() const;
    void setNetworkValue(uint32 value);
    /// @}

    static auto fields(auto& self) { return std::tie(self._value); }

    friend std::strong_ordering operator<=>(const K7IPv4Address& left, const K7IPv4Address& right)
    {
        return left._value <=> right._value;
    }

private:
    uint32 _value = 0;
};

} // namespace Kivo
