// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Names and addresses of one network device.
#pragma once

#include "Core/K7IPv4Address.h"
#include "Core/K7IPv6Address.h"
#include "Core/K7MacAddress.h"

namespace Kivo {

/// What is known of one network device: the device ("eth0"), the interface that carries its addresses, which may be
/// another one (a bridge, a PPP link), and the addresses.
class K7CORE_API K7EthDevInfo : public J3Record<K7EthDevInfo> {
public:
    K7EthDevInfo() = default;

    [[nodiscard]] K7EthDevInfo* clone() const override;

    /// "eth0,br0,192.168.0.2,fe80::1,00:11:22:aa:bb:cc"
    [[nodiscard]] J3String toString() const override;

    /// Whether both names are set.
    [[nodiscard]] bool isValid() const { return !_devName.isEmpty() && !_ifceName.isEmpty(); }

    void setDevName(const J3String& name);
    void setIfceName(const J3String& name);

    [[nodiscard]] const J3String& devName() const { return _devName; }

    [[nodiscard]] const J3String& ifceName() const { return _ifceName; }

    /// The names in UTF-8; valid until either name is set or the record is read again.
    [[nodiscard]] const char* devNameCStr() const { return _narrowDevName.c_str(); }

    [[nodiscard]] const char* ifceNameCStr() const { return _narrowIfceName.c_str(); }

    [[nodiscard]] const K7IPv4Address& ipv4Address() const { return _ipv4Address; }

    [[nodiscard]] const K7IPv6Address& ipv6Address() const { return _ipv6Address; }

    [[nodiscard]] const K7MacAddress& macAddress() const { return _macAddress; }

    void setIpv4Address(const K7IPv4Address& address) { _ipv4Address = address; }

    void setIpv6Address(const K7IPv6Address& address) { _ipv6Address = address; }

    void setMacAddress(const K7MacAddress& address) { _macAddress = address; }

    /// Let the narrow names follow what was read.
    void validate() { narrowNames(); }

    static auto fields(auto& self)
    {
        return std::tie(self._devName, self._ifceName, self._ipv4Address, self._ipv6Address, self._macAddress);
    }

    friend std::strong_ordering operator<=>(const K7EthDevInfo& left, const K7EthDevInfo& right)
    {
        return fields(left) <=> fields(right);
    }

private:
    void narrowNames();

    J3String _devName;
    J3String _ifceName;
    K7IPv4Address _ipv4Address;
    K7IPv6Address _ipv6Address;
    K7MacAddress _macAddress;
    std::string _narrowDevName;
    std::string _narrowIfceName;
};

} // namespace Kivo
