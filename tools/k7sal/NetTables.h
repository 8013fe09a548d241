// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Network facts as tables.
#pragma once

#include "Document.h"

namespace K7Tool {

/// "192.168.1.2/24"; "-" for no address
std::string withPrefix(const Json& address, const Json& length);

std::string linkText(const Json& link);

/// A counter of one direction; "-" when the kernel counts nothing for the interface.
std::string counterText(const Json& direction, const char* key);

/// Interfaces with their addresses, then their traffic.
/// @param captured says why a captured tree leaves cells empty
std::string interfaceTables(const Json& interfaces, bool captured);

/// Why a captured tree leaves cells empty; nothing for the running system.
std::string missingNote(bool captured);

std::string dnsTables(const Json& dns);

} // namespace K7Tool
