// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Ends the waiting of a command when the user presses Ctrl-C, instead of ending the tool.
#pragma once

#include <chrono>

namespace K7Tool {

/// While one lives, SIGINT and SIGTERM are noted, and a second one ends the tool.
class Interrupt {
public:
    Interrupt();
    ~Interrupt();
    Interrupt(const Interrupt&) = delete;
    Interrupt& operator=(const Interrupt&) = delete;

    [[nodiscard]] static bool came();

    /// Wait, but not beyond the interrupt. @return false when it has come
    static bool sleep(std::chrono::milliseconds time);
};

} // namespace K7Tool
