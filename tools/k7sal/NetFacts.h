// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What the library sees of network interfaces and name servers, as JSON.
#pragma once

#include "Document.h"

namespace K7Tool {

/// The interfaces of this network namespace, or of the captured tree, in the kernel's order.
std::vector<std::string> interfaceNames();

/// The facts of one interface; what only a live system can tell is null in a captured tree.
Json interfaceFacts(const std::string& name);

/// The same for every interface.
Json networkFacts();

/// The name servers in force and what the DHCP client reported.
Json dnsFacts();

/// The interface of the IPv4 default route; empty when there is none.
std::string defaultInterface();

} // namespace K7Tool
