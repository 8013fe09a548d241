// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The lines of a resolver file and of the DHCP client's result file.
#pragma once

#include "OS/System/Network.h"

#include <string_view>

namespace Kivo {

/// Take the text of the server from a "nameserver" line. @return an empty text when the line is none or has none
std::string_view parseServerText(std::string_view line);

/// Read an IPv4 server in any form that inet_aton knows, or an IPv6 server without its scope.
/// @return false when the text is not such an address, which may be one that is not set
/// @{
bool parseServer(std::string_view text, K7IPv4Address* address);
bool parseServer(std::string_view text, K7IPv6Address* address);
/// @}

/// Take a server of either family with its scope from a "nameserver" line.
bool parseNameServer(std::string_view line, K7SystemUtil::Network::NameServer* server);

/// Take the number that a line of the DHCP client's result file begins with.
bool parseLeaseResult(std::string_view line, bool* leased);

} // namespace Kivo
