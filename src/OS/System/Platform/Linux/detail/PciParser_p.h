// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Names and identifiers of PCI functions.
#pragma once

#include "Base/TextScanner_p.h"
#include "OS/System/PCI.h"

namespace Kivo {

/// The address that an entry of the directory is named after; an invalid one for any other name.
K7SystemUtil::PCI::DeviceInfo::Address parsePciAddress(std::string_view name);

/// A vendor's or a device's number in the first line of @p text, -1 for anything else.
int32 parsePciIdentifier(std::string_view text);

} // namespace Kivo
