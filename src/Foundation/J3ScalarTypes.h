// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The one list of the scalar types that streams, archives and records handle.
#pragma once

#include "Foundation/J3Types.h"

/// Expands X(Name, Type) for every integer width: X(Int8, int8) ... X(Uint64, uint64).
#define J3_INTEGER_TYPES(X)                                                                                            \
    X(Int8, int8)                                                                                                      \
    X(Int16, int16)                                                                                                    \
    X(Int32, int32)                                                                                                    \
    X(Int64, int64)                                                                                                    \
    X(Uint8, uint8)                                                                                                    \
    X(Uint16, uint16)                                                                                                  \
    X(Uint32, uint32)                                                                                                  \
    X(Uint64, uint64)

/// Expands X(Name, Type) for X(Float32, float32) and X(Float64, float64).
#define J3_FLOAT_TYPES(X)                                                                                              \
    X(Float32, float32)                                                                                                \
    X(Float64, float64)

/// Expands X(Name, Type) for bool, the integers and the floats, in this order. Operations are named after Name:
/// readUint32, writeUint32.
#define J3_SCALAR_TYPES(X)                                                                                             \
    X(Bool, bool)                                                                                                      \
    J3_INTEGER_TYPES(X)                                                                                                \
    J3_FLOAT_TYPES(X)
