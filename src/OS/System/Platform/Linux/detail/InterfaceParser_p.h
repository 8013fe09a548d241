// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The lines of /proc/net/dev, /proc/net/if_inet6 and /proc/net/sockstat.
#pragma once

#include "OS/System/Network.h"

#include <string_view>

namespace Kivo {

/// Split a line of `/proc/net/dev` that is not a heading into the interface's name and what follows the colon.
bool splitCounters(std::string_view line, std::string_view* name, std::string_view* counters);

/// Find what follows the colon in the line of @p devName, of whose name 31 bytes count.
/// @param devName at most 31 bytes
bool findCounters(std::string_view line, std::string_view devName, std::string_view* counters);

/// Take the sixteen counters of an interface, cut to the width that each has in @p stat. @p stat is changed by a line
/// with fewer, too.
bool parseCounters(std::string_view counters, K7SystemUtil::Network::NetDevIoStat* stat);

/// The same, as wide as the kernel counts them.
bool parseCounters(std::string_view counters, K7SystemUtil::Network::Traffic* received,
                   K7SystemUtil::Network::Traffic* sent);

/// A line of `/proc/net/if_inet6`.
struct IPv6Row {
    K7IPv6Address address;
    uint32 index = 0;
    uint32 prefixLength = 0;
    uint32 scope = 0; ///< as the kernel numbers it: 0x00 global, 0x10 host, 0x20 link, 0x40 site
    std::string_view name;
};

bool parseAddressV6(std::string_view line, IPv6Row* row);

/// Take an IPv6 address of 32 hexadecimal digits.
bool parseDigitsV6(std::string_view digits, K7IPv6Address* address);

/// Take the number of sockets in use from the line of `/proc/net/sockstat` that has it.
/// @param count is left as it was when the line has no number
bool parseSocketCount(std::string_view line, int32* count);

} // namespace Kivo
