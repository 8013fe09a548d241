// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Reading single facts below the system root, and interrupting a command.
#pragma once

#include "Command.h"

#include <atomic>
#include <chrono>

namespace K7Tool {

/// A one-line attribute file, without white space at its ends; null when there is none.
Json attribute(const std::string& path);

/// An attribute that is a whole number; null when it is none.
Json number(const std::string& path);

/// The last component of a link's target: the name of a driver behind ".../driver"; null when there is no link.
Json linkName(const std::string& path);

/// The names in a directory, in ascending order; none when it cannot be read.
std::vector<std::string> namesIn(const std::string& directory);

/// A fact as a cell: "-" for one that could not be had.
std::string cell(const Json& fact);

/// Ends the waiting of a command when the user presses Ctrl-C, instead of ending the tool.
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
