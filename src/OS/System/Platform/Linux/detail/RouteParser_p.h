// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The lines of /proc/net/route and /proc/net/ipv6_route.
#pragma once

#include "OS/System/Network.h"

#include <string_view>

namespace Kivo {

/// Take a line of `/proc/net/route` that is a default route with a gateway through an interface whose name begins
/// @p devName. Most lines are told from it by their first two fields.
/// @param gateway takes the address in network byte order
bool parseDefaultRoute(std::string_view line, std::string_view devName, uint32* gateway);

/// Take a line of `/proc/net/ipv6_route` that is a route with a gateway through an interface whose name, cut at eight
/// bytes, begins @p devName.
bool parseGatewayV6(std::string_view line, std::string_view devName, K7IPv6Address* gateway);

/// Take any line of `/proc/net/route` but its heading.
/// @return false when it is not a route, or its mask is not that of a prefix
bool parseRoute(std::string_view line, K7SystemUtil::Network::Route* route);

/// Take any line of `/proc/net/ipv6_route`.
bool parseRouteV6(std::string_view line, K7SystemUtil::Network::Route* route);

} // namespace Kivo
