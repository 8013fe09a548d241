// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The namespaces that a test program runs in, so that nothing it does reaches the machine.
#pragma once

#include <gtest/gtest.h>

#include <string>

namespace K7Test {

/// Whether this process runs in its own user, mount, network, process and host-name namespaces, as root there, with
/// /proc and /sys of its own and loopback up.
bool isSandboxed();

/// Why it does not, when it does not.
const char* sandboxProblem();

/// Start a process of the sandbox that sleeps under a name of the test's choice; what is left running goes with it.
pid_t startSleeper(std::string name);

} // namespace K7Test

/// Leave a test that has effects, or needs a network of its own, when there is no sandbox to have them in.
#define K7_REQUIRE_SANDBOX()                                                                                           \
    if (!K7Test::isSandboxed())                                                                                        \
    GTEST_SKIP() << "no sandbox: " << K7Test::sandboxProblem()
