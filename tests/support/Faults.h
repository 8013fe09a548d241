// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What a test can do to the libraries below its program: set their clock, and let their memory run out.
#pragma once

#include <chrono>
#include <cstdint>

namespace K7Test {

/// Set the time of day, as clock_gettime(), gettimeofday() and the kernel's stamps on received messages show it, for
/// this process alone.
void setClockBy(std::chrono::nanoseconds difference);

/// Let operator new throw in one thread, at every @p interval th call. @param thread its kernel id; 0 for none
void failAllocations(std::uint32_t thread, int interval);

} // namespace K7Test
