// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Asks the kernel's routing socket for whole lists.
#pragma once

#ifndef K7SAL_BUILD
#error "private to libK7SAL"
#endif

#include "Foundation/J3Types.h"

#include <string>

namespace Kivo {

/// Ask the running kernel for a list. Raises a reason when it does not give it.
/// @param type   RTM_GETLINK, RTM_GETADDR
/// @param family AF_INET and so on; AF_UNSPEC for all
/// @return the messages of the answer, for NetlinkMessages
[[nodiscard]] std::string netlinkDump(uint16 type, uint8 family);

} // namespace Kivo
