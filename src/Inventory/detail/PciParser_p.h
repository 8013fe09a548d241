// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What the attributes of a PCI function mean.
#pragma once

#ifndef K7SAL_PROJECT
#error "private to this project"
#endif

#include "Foundation/J3Types.h"

#include <optional>
#include <string>
#include <string_view>

namespace Kivo::Inventory {

/// What a class code of three bytes says, in words: "SATA controller".
[[nodiscard]] std::string pciClassName(uint32 classCode);

/// The lanes of a link. @return nothing when it has none or they are unknown
[[nodiscard]] std::optional<uint32> parsePciLinkWidth(std::string_view text);

/// The GT/s of a link. @return nothing when it is unknown
[[nodiscard]] std::optional<float64> parsePciLinkSpeed(std::string_view text);

} // namespace Kivo::Inventory
