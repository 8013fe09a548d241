// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The text of a network address in a record.
#pragma once

#ifndef K7Inventory_BUILD
#error "private to libK7Inventory"
#endif

#include "Core/K7InetAddress.h"

#include <string>

namespace Kivo::Inventory {

template <class Address>
[[nodiscard]] std::string addressText(const Address& address)
{
    return address.toString().to_string();
}

/// The same, nothing for an address that is not set.
template <class Address>
[[nodiscard]] std::optional<std::string> setAddressText(const Address& address)
{
    return address.isValid() ? std::optional(addressText(address)) : std::nullopt;
}

} // namespace Kivo::Inventory
