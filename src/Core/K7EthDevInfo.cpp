// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Names and addresses of one network device.
#include "Core/K7EthDevInfo.h"

namespace Kivo {

K7EthDevInfo* K7EthDevInfo::clone() const { return new K7EthDevInfo(*this); }

J3String K7EthDevInfo::toString() const
{
    return J3String().format(L"%@,%@,%@,%@,%@", &_devName, &_ifceName, &_ipv4Address, &_ipv6Address, &_macAddress);
}

void K7EthDevInfo::setDevName(const J3String& name)
{
    _devName = name;
    narrowNames();
}

void K7EthDevInfo::setIfceName(const J3String& name)
{
    _ifceName = name;
    narrowNames();
}

void K7EthDevInfo::narrowNames()
{
    _narrowDevName = _devName.to_string();
    _narrowIfceName = _ifceName.to_string();
}

} // namespace Kivo
