// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Fixed-width types and the export mark of the foundation.
#pragma once

#include <cstddef>
#include <cstdint>

/// Marks what libJ3Foundation exports; everything else is hidden.
#define J3_API __attribute__((visibility("default")))

namespace Kivo {

using int8 = std::int8_t;
using int16 = std::int16_t;
using int32 = std::int32_t;
using int64 = std::int64_t;
using uint8 = std::uint8_t;
using uint16 = std::uint16_t;
using uint32 = std::uint32_t;
using uint64 = std::uint64_t;
using float32 = float;
using float64 = double;

} // namespace Kivo
