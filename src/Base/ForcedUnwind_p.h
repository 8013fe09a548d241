// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What a thread is unwound with that is left by pthread_exit() or cancellation.
#pragma once

#ifndef K7SAL_PROJECT
#error "private to this project"
#endif

#include <cxxabi.h>

namespace Kivo {

/// Caught ahead of everything else only to be thrown again: the C library ends a process that stops it.
using ForcedUnwind = abi::__forced_unwind;

} // namespace Kivo

/// Marks a function that catches a ForcedUnwind by reference: it has no object, which a sanitizer takes for a fault.
#define K7_CATCHES_FORCED_UNWIND __attribute__((no_sanitize("null")))
